// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_service_key.h"

#include "platform/whole_file.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr qint64 kMaxFileSize = 1 << 20; // bytes

/// nullopt when the file is not there or is anything else than a JSON object of a sensible size.
std::optional<QJsonObject> readObject(const QString &path)
{
    const QJsonDocument document =
        QJsonDocument::fromJson(readFile(path, kMaxFileSize).value_or(QByteArray()));
    if (!document.isObject())
        return std::nullopt;
    return document.object();
}

bool writeObject(const QString &path, const QJsonObject &object)
{
    return replaceFile(path, QJsonDocument(object).toJson()).isEmpty();
}

class JsonKey : public OpenKey
{
public:
    explicit JsonKey(QJsonObject object)
        : m_object(std::move(object))
    {}

    [[nodiscard]] std::optional<KeyValue> value(const QString &name) const override
    {
        const QJsonValue found = m_object.value(name);
        if (found.isString())
            return found.toString();
        if (!found.isDouble())
            return std::nullopt;
        const double number = found.toDouble();
        if (number < 0 || number > std::numeric_limits<quint32>::max() || number != std::floor(number))
            return std::nullopt;
        return quint32(number);
    }

private:
    QJsonObject m_object;
};

} // namespace

LinuxServiceKey::LinuxServiceKey(QString path)
    : m_path(std::move(path))
{}

std::unique_ptr<OpenKey> LinuxServiceKey::open()
{
    std::optional<QJsonObject> object = readObject(m_path);
    return object ? std::make_unique<JsonKey>(*std::move(object)) : nullptr;
}

bool LinuxServiceKey::write(const QVector<NamedNumber> &values)
{
    std::optional<QJsonObject> object = readObject(m_path);
    if (!object)
        return false;
    for (const NamedNumber &number : values)
        object->insert(number.name, qint64(number.value));
    return writeObject(m_path, *object);
}

bool LinuxServiceKey::create(const QString &imagePath)
{
    return writeObject(m_path, {{QStringLiteral("ImagePath"), imagePath}});
}
