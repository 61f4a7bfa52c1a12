// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/await.h"
#include "client/column.h"
#include "console/arguments.h"
#include "console/output.h"
#include "console/render/table.h"

#include <QJsonDocument>
#include <QTimeZone>

#include <chrono>

enum ExitCode {
    kExitFine = 0,
    kExitUsage = 1,    ///< the command line is wrong, or the service refuses the request
    kExitNoAnswer = 2, ///< no reply, or one that does not fit
    kExitWarning = 3,
    kExitCritical = 4,
};

/// Ends a command; thrown by Context and by commands, caught once in main(). Commands are straight-line code
/// because of it: a command has no cleanup beyond destructors, and no exception passes through Qt.
struct CommandFailure
{
    int exitCode;
    QString text; ///< empty if all is said
};

/// Everything a command works with: the checked command line, the service, and the output.
class Context
{
public:
    Context(Arguments arguments, Output &output);

    [[nodiscard]] const Arguments &arguments() const { return m_arguments; }
    [[nodiscard]] Output &output() { return m_output; }
    [[nodiscard]] const render::Style &style() const { return m_style; }
    [[nodiscard]] bool wantsJson() const { return m_arguments.has(QStringLiteral("json")); }

    /// Returns the reply to `request`. Connects first, with --wait as soon as the service is ready. Throws
    /// CommandFailure without a reply.
    template <typename T>
    [[nodiscard]] T ask(client::Request<T> request)
    {
        return valueOf(tryAsk(std::move(request)));
    }

    /// As ask(), with the failure as a value.
    template <typename T>
    [[nodiscard]] client::Result<T> tryAsk(client::Request<T> request)
    {
        if (m_arguments.isTimeoutGiven)
            request.allowance = {};
        return client::await(m_conversation, request);
    }

    /// Returns the value, or throws CommandFailure with the reason.
    template <typename T>
    [[nodiscard]] T valueOf(client::Result<T> result) const
    {
        if (!result)
            throw failureOf(result.failure());
        return *std::move(result);
    }

    /// Returns the greeting of the connection; connects if that is not done. Throws CommandFailure.
    [[nodiscard]] client::Greeting greeting();

    /// Returns the time zone of the service, or of this machine if the service does not report one.
    [[nodiscard]] QTimeZone zone();

    /// Ends the connection; the next request connects again.
    void disconnect() { m_conversation.close(); }

    /// Waits. Other consoles can use the local socket meanwhile.
    void pause(std::chrono::milliseconds time);

    /// Throws CommandFailure with kExitUsage.
    [[noreturn]] void refuse(const QString &text) const;

    /// Returns the drive number in positional argument `position`; throws CommandFailure if it is not one.
    [[nodiscard]] qint32 driveArgument(int position = 0) const;

    /// Prints `document` with --json, else `lines`.
    void show(const QJsonObject &document, const QStringList &lines);
    void show(const QJsonObject &document, const QString &line) { show(document, QStringList{line}); }

    /// Prints rows as --json or --csv asks for, else as a table, or `whenEmpty` as a note.
    template <typename Row>
    void showTable(const client::Columns<Row> &columns, const QVector<Row> &rows, const QString &whenEmpty)
    {
        if (wantsJson())
            m_output.print(QJsonDocument(client::toArray(columns, rows)));
        else
            showText(columns, rows, whenEmpty);
    }

    /// As above, without --json.
    template <typename Row>
    void showText(const client::Columns<Row> &columns, const QVector<Row> &rows, const QString &whenEmpty)
    {
        if (m_arguments.has(QStringLiteral("csv")))
            m_output.print(client::toCsv(columns, rows));
        else if (rows.isEmpty())
            m_output.note(whenEmpty);
        else
            m_output.print(render::tableLines(columns, rows, m_style));
    }

    /// Reports that a change is done: `text` as a note, {"ok": true} with --json.
    void confirm(const QString &text);

private:
    [[nodiscard]] CommandFailure failureOf(const client::Failure &failure) const;

    Arguments m_arguments;
    Output &m_output;
    client::Conversation m_conversation;
    std::optional<QTimeZone> m_zone;
    render::Style m_style;
};
