// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/key_reader.h"

#include <QJsonArray>
#include <QVector>

#include <cmath>
#include <utility>

namespace web {

KeyReader::KeyReader(QJsonObject object, QString place)
    : m_object(std::move(object))
    , m_place(std::move(place))
{}

QString KeyReader::pathOf(const QString &key) const
{
    return m_place.isEmpty() ? key : m_place + QLatin1Char('.') + key;
}

void KeyReader::refuse(const QString &key, const QString &reason)
{
    refuseWhole(QStringLiteral("%1: %2").arg(pathOf(key), reason));
}

void KeyReader::refuseWhole(const QString &fault)
{
    if (!m_fault)
        m_fault = fault;
}

std::optional<QString> KeyReader::fault() const
{
    if (m_fault)
        return m_fault;
    for (const QString &key : m_object.keys()) {
        if (!m_read.contains(key))
            return QStringLiteral("%1: this key is not known").arg(pathOf(key));
    }
    return std::nullopt;
}

QJsonValue KeyReader::take(const QString &key, QJsonValue::Type type, const char *expectation)
{
    m_read.append(key);
    if (!m_object.contains(key))
        return QJsonValue::Undefined;
    QJsonValue value = m_object.value(key);
    if (value.type() == type)
        return value;
    refuse(key, QStringLiteral("must be %1").arg(QLatin1String(expectation)));
    return QJsonValue::Undefined;
}

QString KeyReader::text(const QString &key, const QString &absent)
{
    const QJsonValue value = take(key, QJsonValue::String, "a text");
    return value.isUndefined() ? absent : value.toString();
}

int KeyReader::number(const QString &key, int absent, int lowest, int highest)
{
    const QJsonValue value = take(key, QJsonValue::Double, "a number");
    if (value.isUndefined())
        return absent;
    const double number = value.toDouble();
    if (number >= lowest && number <= highest && std::floor(number) == number)
        return int(number);
    refuse(key, QStringLiteral("must be a whole number from %1 to %2").arg(lowest).arg(highest));
    return absent;
}

QString KeyReader::textOrNull(const QString &key)
{
    m_read.append(key);
    return m_object.value(key).isNull() ? QString() : text(key);
}

std::optional<quint64> KeyReader::numberOrNull(const QString &key, qint64 highest)
{
    m_read.append(key);
    if (!has(key) || m_object.value(key).isNull())
        return std::nullopt;
    const double number = take(key, QJsonValue::Double, "a number").toDouble(-1);
    if (number >= 0 && number <= double(highest) && std::floor(number) == number)
        return quint64(number);
    refuse(key, QStringLiteral("must be a whole number from 0 to %1").arg(highest));
    return std::nullopt;
}

bool KeyReader::flag(const QString &key, bool absent)
{
    return take(key, QJsonValue::Bool, "true or false").toBool(absent);
}

QStringList KeyReader::texts(const QString &key)
{
    QStringList list;
    const QJsonArray items = take(key, QJsonValue::Array, "a list of texts").toArray();
    for (const QJsonValue &item : items) {
        if (!item.isString())
            refuse(key, QStringLiteral("must be a list of texts"));
        list.append(item.toString());
    }
    return list;
}

QJsonObject KeyReader::object(const QString &key)
{
    return take(key, QJsonValue::Object, "an object").toObject();
}

QVector<QJsonObject> KeyReader::objects(const QString &key)
{
    QVector<QJsonObject> list;
    const QJsonArray items = take(key, QJsonValue::Array, "a list of objects").toArray();
    for (const QJsonValue &item : items) {
        if (!item.isObject())
            refuse(key, QStringLiteral("must be a list of objects"));
        list.append(item.toObject());
    }
    return list;
}

} // namespace web
