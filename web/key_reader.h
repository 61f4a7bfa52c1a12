// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace web {

/// Reads the keys of one JSON object strictly and keeps the first fault: a value of the wrong kind, or a key
/// that no read asked for. An absent key leaves the default.
class KeyReader
{
public:
    /// `place` is the path of the object within the document, such as "services[0]"; empty for the root.
    KeyReader(QJsonObject object, QString place);

    [[nodiscard]] bool has(const QString &key) const { return m_object.contains(key); }
    [[nodiscard]] QString text(const QString &key, const QString &absent = {});
    [[nodiscard]] int number(const QString &key, int absent, int lowest, int highest);
    /// A missing or null key yields an empty text, or nullopt for a number. Numbers are 0 or greater.
    [[nodiscard]] QString textOrNull(const QString &key);
    [[nodiscard]] std::optional<quint64> numberOrNull(const QString &key, qint64 highest);
    [[nodiscard]] bool flag(const QString &key, bool absent);
    [[nodiscard]] QStringList texts(const QString &key);
    [[nodiscard]] QJsonObject object(const QString &key);
    [[nodiscard]] QVector<QJsonObject> objects(const QString &key);

    /// Records a fault of `key` unless there is one already.
    void refuse(const QString &key, const QString &reason);
    /// Takes over the fault of an object within this one, unless there is a fault already. The fault names
    /// its own place.
    void refuseWhole(const QString &fault);
    /// Returns "KEY: reason" of the first fault, also for a key that was never read; nullopt if there is
    /// none.
    [[nodiscard]] std::optional<QString> fault() const;
    [[nodiscard]] QString pathOf(const QString &key) const;

private:
    [[nodiscard]] QJsonValue take(const QString &key, QJsonValue::Type type, const char *expectation);

    QJsonObject m_object;
    QString m_place;
    QStringList m_read;
    std::optional<QString> m_fault;
};

} // namespace web
