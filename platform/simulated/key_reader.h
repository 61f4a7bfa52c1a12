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

/// Reads the keys of one JSON object strictly. A missing key leaves its target unchanged. The first error is
/// stored in the shared `problem` as "file: key: reason".
class KeyReader
{
public:
    /// `path` is the place of the object in its file ("drives[0]"; empty for the file's own object).
    /// `problem` must outlive the reader.
    KeyReader(QJsonObject object, QString file, QString path, QString &problem);

    /// Reads a whole number. `highest` fits the target's type and is below 2^53, where JSON numbers are
    /// exact.
    template <typename T>
    void whole(const char *key, T &target, qint64 lowest, qint64 highest)
    {
        qint64 value = qint64(target);
        readWhole(key, value, lowest, highest);
        target = T(value);
    }
    void text(const char *key, QString &target);
    void boolean(const char *key, bool &target);
    /// Reads a list of texts, each of them one of `allowed`.
    void words(const char *key, QStringList &target, const QStringList &allowed);
    /// Reads `size` bytes in hexadecimal digits.
    void bytes(const char *key, QByteArray &target, int size);

    /// Returns a reader of the object at `key`; it has no keys if the object is missing.
    [[nodiscard]] KeyReader object(const char *key);
    /// Returns readers of the objects in the list at `key`.
    [[nodiscard]] std::vector<KeyReader> objects(const char *key);
    /// Returns the list at `key`; empty if it is missing.
    [[nodiscard]] QJsonArray list(const char *key);

    [[nodiscard]] bool has(const char *key) const;
    void require(const char *key);
    void fail(const char *key, const QString &reason) const;
    [[nodiscard]] bool ok() const { return m_problem->isEmpty(); }
    [[nodiscard]] const QString &file() const { return m_file; }

    /// Reports every key that none of the calls above has read. Must be called last.
    void refuseUnknownKeys() const;

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

/// Returns whether `value` is a whole number from `lowest` to `highest`.
[[nodiscard]] bool isWhole(const QJsonValue &value, qint64 lowest, qint64 highest);
