// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// The one place that says what halvexctl takes. --help, the man page, the completion and the command line
/// parser are made from it.
namespace help {

struct Option
{
    QString letter; ///< empty for none
    QString name;
    QString valueName; ///< empty for a switch
    QString text;
};

struct Command
{
    QString name;      ///< one word, or a group and a word
    QString arguments; ///< as in a usage line
    QString summary;
    QString description; ///< may be empty
    QVector<Option> options;
    int leastArguments = 0;
    int mostArguments = 0; ///< -1 for any number
};

struct ExitStatus
{
    int code;
    QString text;
};

/// What the program is for, and whom it asks when it is not told; a sentence each.
[[nodiscard]] QString introduction();
[[nodiscard]] QString defaultService();
[[nodiscard]] QVector<Command> commands();
[[nodiscard]] QVector<Option> commonOptions();
[[nodiscard]] QVector<ExitStatus> exitStatuses();

/// The command that `words` begin with. A group's word alone stands for the group's first command.
[[nodiscard]] std::optional<Command> findCommand(const QStringList &words);

/// How many words of the command line name `command`.
[[nodiscard]] int wordCount(const Command &command, const QStringList &words);

/// The command with its arguments, and the option with its letter and value, as in a usage line.
[[nodiscard]] QString usage(const Command &command);
[[nodiscard]] QString term(const Option &option);

[[nodiscard]] QString overview();
[[nodiscard]] QString commandHelp(const Command &command);
/// The manual page, in the man macros.
[[nodiscard]] QString manPage();
/// A completion script for bash: commands, options, names of settings, and files where one is wanted.
[[nodiscard]] QString bashCompletion();

} // namespace help
