// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/key_reader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

QString wholeNumberReason(qint64 lowest, qint64 highest)
{
    return QStringLiteral("must be a whole number from %1 to %2").arg(lowest).arg(highest);
}

bool isHexadecimal(const QByteArray &digits)
{
    static const QByteArray kDigits = QByteArrayLiteral("0123456789abcdefABCDEF");
    return std::all_of(digits.cbegin(), digits.cend(), [](char c) { return kDigits.contains(c); });
}

} // namespace

KeyReader::KeyReader(QJsonObject object, QString file, QString path, QString &problem)
    : m_object(std::move(object))
    , m_file(std::move(file))
    , m_path(std::move(path))
    , m_problem(&problem)
{}

void KeyReader::text(const char *key, QString &target)
{
    const QJsonValue value = take(key);
    if (value.isUndefined())
        return;
    if (!value.isString())
        return fail(key, QStringLiteral("must be a text"));
    target = value.toString();
}

void KeyReader::boolean(const char *key, bool &target)
{
    const QJsonValue value = take(key);
    if (value.isUndefined())
        return;
    if (!value.isBool())
        return fail(key, QStringLiteral("must be true or false"));
    target = value.toBool();
}

void KeyReader::words(const char *key, QStringList &target, const QStringList &allowed)
{
    if (take(key).isUndefined())
        return;
    QStringList words;
    const QJsonArray items = list(key);
    for (const QJsonValue &item : items) {
        if (!item.isString() || !allowed.contains(item.toString()))
            return fail(key, QStringLiteral("may only hold %1").arg(allowed.join(QStringLiteral(", "))));
        words.append(item.toString());
    }
    target = words;
}

void KeyReader::bytes(const char *key, QByteArray &target, int size)
{
    QString digits;
    text(key, digits);
    if (!has(key) || !ok())
        return;
    const QByteArray latin1 = digits.toLatin1();
    if (digits.size() != 2 * size || !isHexadecimal(latin1))
        return fail(key, QStringLiteral("must be %1 hexadecimal digits").arg(2 * size));
    target = QByteArray::fromHex(latin1);
}

KeyReader KeyReader::object(const char *key)
{
    const QJsonValue value = take(key);
    if (!value.isUndefined() && !value.isObject())
        fail(key, QStringLiteral("must be an object"));
    return {value.toObject(), m_file, placeOf(QLatin1String(key)), *m_problem};
}

std::vector<KeyReader> KeyReader::objects(const char *key)
{
    std::vector<KeyReader> readers;
    const QJsonArray items = list(key);
    for (int i = 0; i < items.size(); ++i) {
        const QString item = QStringLiteral("%1[%2]").arg(QLatin1String(key)).arg(i);
        if (!items.at(i).isObject()) {
            failAt(item, QStringLiteral("must be an object"));
            return {};
        }
        readers.emplace_back(items.at(i).toObject(), m_file, placeOf(item), *m_problem);
    }
    return readers;
}

QJsonArray KeyReader::list(const char *key)
{
    const QJsonValue value = take(key);
    if (!value.isUndefined() && !value.isArray())
        fail(key, QStringLiteral("must be a list"));
    return value.toArray();
}

bool KeyReader::has(const char *key) const
{
    return m_object.contains(QLatin1String(key));
}

void KeyReader::require(const char *key)
{
    if (!has(key))
        fail(key, QStringLiteral("is missing"));
}

void KeyReader::fail(const char *key, const QString &reason) const
{
    failAt(QLatin1String(key), reason);
}

void KeyReader::refuseUnknownKeys() const
{
    const QStringList keys = m_object.keys();
    for (const QString &key : keys) {
        if (!m_known.contains(key))
            failAt(key, QStringLiteral("is not known"));
    }
}

QJsonValue KeyReader::take(const char *key)
{
    m_known.insert(QLatin1String(key));
    return m_object.value(QLatin1String(key));
}

QString KeyReader::placeOf(const QString &key) const
{
    return m_path.isEmpty() ? key : m_path + QLatin1Char('.') + key;
}

void KeyReader::failAt(const QString &key, const QString &reason) const
{
    if (m_problem->isEmpty())
        *m_problem = m_file + QLatin1String(": ") + placeOf(key) + QLatin1String(": ") + reason;
}

void KeyReader::readWhole(const char *key, qint64 &target, qint64 lowest, qint64 highest)
{
    const QJsonValue value = take(key);
    if (value.isUndefined())
        return;
    if (!isWhole(value, lowest, highest))
        return fail(key, wholeNumberReason(lowest, highest));
    target = qint64(value.toDouble());
}

bool isWhole(const QJsonValue &value, qint64 lowest, qint64 highest)
{
    const double number = value.toDouble(NAN);
    return std::floor(number) == number && number >= double(lowest) && number <= double(highest);
}
