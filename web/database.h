// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

#include <functional>

struct sqlite3;

namespace web {

/// One row of a query's result, valid during the call that gets it.
class DatabaseRow
{
public:
    explicit DatabaseRow(void *statement)
        : m_statement(statement)
    {}

    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] qint64 number(int column) const;
    [[nodiscard]] QString text(int column) const;

private:
    void *m_statement;
};

/// A SQLite file in WAL mode: after a killed process every committed transaction is there. Not thread-safe.
class Database
{
public:
    Database() = default;
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;
    ~Database() { close(); }

    /// Opens or creates the file at `path`. False on failure.
    [[nodiscard]] bool open(const QString &path);
    void close();
    [[nodiscard]] bool isOpen() const { return m_handle != nullptr; }

    /// Runs one statement; `arguments` take the places of its question marks. False on failure.
    [[nodiscard]] bool run(const char *sql, const QVariantList &arguments = {});
    /// Like run(), and passes each row to `take`.
    [[nodiscard]] bool query(const char *sql, const QVariantList &arguments,
                             const std::function<void(const DatabaseRow &)> &take);

    /// Returns the reason of the last failure.
    [[nodiscard]] const QString &error() const { return m_error; }
    /// Returns whether the last failure means that the file's content is damaged.
    [[nodiscard]] bool isDamaged() const;

private:
    bool fail(int code);

    sqlite3 *m_handle = nullptr;
    QString m_error;
    int m_code = 0;
};

} // namespace web
