// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/endpoint.h"
#include "console/command.h"

#include <QHash>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <optional>
#include <variant>

/// The command line, checked against the table of commands.
struct Arguments
{
    const Command *command = nullptr;
    QStringList positionals; ///< without the command's own words
    QHash<QString, QStringList> options;

    QVector<client::Endpoint> endpoints;  ///< from --host, --port and --socket; never empty
    std::chrono::milliseconds timeout{0}; ///< for a connection, and for each reply
    bool isTimeoutGiven = false;
    std::optional<std::chrono::milliseconds> wait; ///< the limit for the service to become ready

    [[nodiscard]] bool has(const QString &option) const { return options.contains(option); }
    /// Returns the last value, or nothing without the option.
    [[nodiscard]] std::optional<QString> value(const QString &option) const;
};

/// The output of --help or --version.
struct Answer
{
    QString text;
};

struct UsageError
{
    QString text;
};

/// Parses the command line without the program's name. `localName` is the default socket.
[[nodiscard]] std::variant<Arguments, Answer, UsageError> parseArguments(const QStringList &words,
                                                                         const QString &localName);

/// Parses a drive number: 0 or more.
[[nodiscard]] std::optional<qint32> parseDriveNumber(const QString &text);
