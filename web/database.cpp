// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/database.h"

#include <QByteArray>

#include <sqlite3.h>

#include <memory>

namespace web {

namespace {

struct Finalize
{
    void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
};

using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

int bind(sqlite3_stmt *statement, int place, const QVariant &value)
{
    if (value.type() == QVariant::String) { // also a null QString, which is an empty text
        const QByteArray text = value.toString().toUtf8();
        return sqlite3_bind_text(statement, place, text.constData(), text.size(), SQLITE_TRANSIENT);
    }
    if (!value.isValid())
        return sqlite3_bind_null(statement, place);
    return sqlite3_bind_int64(statement, place, value.toLongLong());
}

sqlite3_stmt *asStatement(void *pointer)
{
    return static_cast<sqlite3_stmt *>(pointer);
}

} // namespace

bool DatabaseRow::isNull(int column) const
{
    return sqlite3_column_type(asStatement(m_statement), column) == SQLITE_NULL;
}

qint64 DatabaseRow::number(int column) const
{
    return sqlite3_column_int64(asStatement(m_statement), column);
}

QString DatabaseRow::text(int column) const
{
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(asStatement(m_statement), column));
    return QString::fromUtf8(bytes, sqlite3_column_bytes(asStatement(m_statement), column));
}

bool Database::open(const QString &path)
{
    close();
    const int code =
        sqlite3_open_v2(path.toUtf8().constData(), &m_handle,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (code != SQLITE_OK) {
        fail(code);
        close();
        return false;
    }
    // NORMAL: a power cut may lose the last transactions, and never damages the file.
    const bool isReady = run("PRAGMA auto_vacuum = INCREMENTAL") && run("PRAGMA journal_mode = WAL") &&
                         run("PRAGMA synchronous = NORMAL") && run("PRAGMA cache_size = -1024");
    if (!isReady)
        close();
    return isReady;
}

void Database::close()
{
    sqlite3_close_v2(m_handle);
    m_handle = nullptr;
}

bool Database::run(const char *sql, const QVariantList &arguments)
{
    return query(sql, arguments, [](const DatabaseRow &) {});
}

bool Database::query(const char *sql, const QVariantList &arguments,
                     const std::function<void(const DatabaseRow &)> &take)
{
    if (!m_handle)
        return false;
    sqlite3_stmt *prepared = nullptr;
    if (const int code = sqlite3_prepare_v2(m_handle, sql, -1, &prepared, nullptr); code != SQLITE_OK)
        return fail(code);
    const Statement statement(prepared);
    for (int i = 0; i < arguments.size(); ++i) {
        if (const int code = bind(prepared, i + 1, arguments.at(i)); code != SQLITE_OK)
            return fail(code);
    }
    while (true) {
        const int code = sqlite3_step(prepared);
        if (code == SQLITE_DONE)
            return true;
        if (code != SQLITE_ROW)
            return fail(code);
        take(DatabaseRow(prepared));
    }
}

bool Database::isDamaged() const
{
    const int primary = m_code & 0xff;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

bool Database::fail(int code)
{
    m_code = code;
    m_error = QString::fromUtf8(m_handle ? sqlite3_errmsg(m_handle) : sqlite3_errstr(code));
    return false;
}

} // namespace web
