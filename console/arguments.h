// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/endpoint.h"
#include "console/help.h"

#include <QHash>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <optional>
#include <variant>

/// The command line, checked against the help's tables.
struct Arguments
{
    help::Command command;
    QStringList positionals; ///< without the command's own words
    QHash<QString, QStringList> options;

    QVector<client::Endpoint> endpoints;  ///< by --host, --port and --socket; never empty
    std::chrono::milliseconds timeout{0}; ///< for a connection, and for each answer
    bool isTimeoutGiven = false;
    std::optional<std::chrono::milliseconds> wait; ///< how long to wait until the service is ready

    [[nodiscard]] bool has(const QString &option) const { return options.contains(option); }
    /// The last value given; nothing when the option was not.
    [[nodiscard]] std::optional<QString> value(const QString &option) const;
};

/// A text that answers the command line at once: --help, --version.
struct Answer
{
    QString text;
};

struct UsageError
{
    QString text;
};

/// `words` is the command line without the program's name; `localName` the socket asked by default.
[[nodiscard]] std::variant<Arguments, Answer, UsageError> parseArguments(const QStringList &words,
                                                                         const QString &localName);

/// A drive's number as a person writes it: 0 and up.
[[nodiscard]] std::optional<qint32> parseDriveNumber(const QString &text);
