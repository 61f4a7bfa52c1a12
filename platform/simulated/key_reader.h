// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <vector>

/// Reads the keys of one JSON object strictly. A key that is not there leaves its target as it is. What is
/// wrong goes into the shared `problem` as "file: key: reason"; the first problem stays.
class KeyReader
{
public:
    /// `path` is where the object stands in its file ("drives[0]"; empty for the file's own object).
    /// `problem` must outlive the reader.
    KeyReader(QJsonObject object, QString file, QString path, QString &problem);

    /// A whole number; `highest` fits the target's type and lies below 2^53, where JSON numbers are exact.
    template <typename T>
    void whole(const char *key, T &target, qint64 lowest, qint64 highest)
    {
        qint64 value = qint64(target);
        readWhole(key, value, lowest, highest);
        target = T(value);
    }
    void text(const char *key, QString &target);
    void boolean(const char *key, bool &target);
    /// A list of texts, each of them one of `allowed`.
    void words(const char *key, QStringList &target, const QStringList &allowed);
    /// `size` bytes in hexadecimal digits.
    void bytes(const char *key, QByteArray &target, int size);

    /// A reader of the object at `key`, over no keys when there is none.
    [[nodiscard]] KeyReader object(const char *key);
    /// Readers of the objects in the list at `key`.
    [[nodiscard]] std::vector<KeyReader> objects(const char *key);
    /// The list at `key`, empty when there is none.
    [[nodiscard]] QJsonArray list(const char *key);

    [[nodiscard]] bool has(const char *key) const;
    void require(const char *key);
    void fail(const char *key, const QString &reason) const;
    [[nodiscard]] bool ok() const { return m_problem->isEmpty(); }
    [[nodiscard]] const QString &file() const { return m_file; }

    /// Refuses every key that none of the calls above has asked for. Called last.
    void refuseOthers() const;

private:
    [[nodiscard]] QJsonValue take(const char *key);
    [[nodiscard]] QString placeOf(const QString &key) const;
    void failAt(const QString &key, const QString &reason) const;
    void readWhole(const char *key, qint64 &target, qint64 lowest, qint64 highest);

    QJsonObject m_object;
    QString m_file;
    QString m_path;
    QString *m_problem;
    QSet<QString> m_known;
};

/// Whether `value` is a whole number from `lowest` to `highest`.
[[nodiscard]] bool isWhole(const QJsonValue &value, qint64 lowest, qint64 highest);
