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

using Object = Result<QJsonObject, AccessError>;

/// Fails with a text that names the file.
Object readObject(const QString &path)
{
    const auto content = whole_file::read(path, kMaxFileSize);
    if (!content)
        return AccessError{content.failure().kind, path + QStringLiteral(": ") + content.failure().text};
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(*content, &error);
    if (document.isObject())
        return document.object();
    const QString reason =
        error.error == QJsonParseError::NoError ? QStringLiteral("not a JSON object") : error.errorString();
    return AccessError{AccessError::Kind::Failed, path + QStringLiteral(": ") + reason};
}

/// An option may hold a secret: the file is readable for its owner alone.
Result<void> writeObject(const QString &path, const QJsonObject &object)
{
    const auto written = whole_file::replace(path, QJsonDocument(object).toJson(),
                                             QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return written ? written : Error{path + QStringLiteral(": ") + written.failure().text};
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

    [[nodiscard]] QStringList names() const override { return m_object.keys(); }

private:
    QJsonObject m_object;
};

} // namespace

LinuxServiceKey::LinuxServiceKey(QString path)
    : m_path(std::move(path))
{}

Result<std::unique_ptr<OpenKey>, AccessError> LinuxServiceKey::open()
{
    Object object = readObject(m_path);
    if (!object)
        return object.failure();
    return std::unique_ptr<OpenKey>(std::make_unique<JsonKey>(*std::move(object)));
}

Result<void, AccessError> LinuxServiceKey::write(const QVector<NamedNumber> &values)
{
    const Object read = readObject(m_path);
    if (!read)
        return read.failure();
    QJsonObject object = *read;
    for (const NamedNumber &number : values)
        object.insert(number.name, qint64(number.value));
    if (const auto written = writeObject(m_path, object); !written)
        return AccessError{AccessError::Kind::Failed, written.failure().text};
    return {};
}

Result<void> LinuxServiceKey::create(const QString &imagePath)
{
    const Object read = readObject(m_path);
    if (!read && read.failure().kind == AccessError::Kind::Failed)
        return Error{read.failure().text};
    QJsonObject values = read ? *read : QJsonObject();
    values.insert(QStringLiteral("ImagePath"), imagePath);
    return writeObject(m_path, values);
}
