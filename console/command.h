// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

class Context;

struct Option
{
    QString letter; ///< empty for none
    QString name;
    QString valueName; ///< empty for a switch
    QString text;
};

/// A word and its explanation.
struct Term
{
    QString name;
    QString text;
};

/// All of one command: the command line parser, help, man page and completion are made from these rows.
struct Command
{
    QString name;      ///< one word, or a group and a word
    QString arguments; ///< as in a usage line
    int leastArguments = 0;
    int mostArguments = 0; ///< -1 for any number
    void (*run)(Context &context) = nullptr;
    QString summary;
    QString description; ///< may be empty; a line is a paragraph
    QVector<Option> options;
    /// The arguments that the completion offers; "NAME=" is followed by a value.
    QStringList words;
    /// Names of arguments, with their explanations.
    QVector<Term> terms;
};

/// Returns an option without a letter; an empty `valueName` makes it a switch.
[[nodiscard]] Option option(const char *name, const char *valueName, const char *text);

/// Returns a command that takes `least` to `most` arguments.
[[nodiscard]] Command command(const char *name, const char *arguments, int least, int most,
                              void (*run)(Context &), const char *summary, const char *description = "",
                              const QVector<Option> &options = {});

// The rows of the table. Each function stands in the file under commands/ that has its commands' code.
[[nodiscard]] QVector<Command> driveCommands();
[[nodiscard]] QVector<Command> watchCommands();
[[nodiscard]] QVector<Command> temperatureCommands();
[[nodiscard]] QVector<Command> scanCommands();
[[nodiscard]] QVector<Command> scheduleCommands();
[[nodiscard]] QVector<Command> alertCommands();
[[nodiscard]] QVector<Command> settingsCommands();
[[nodiscard]] QVector<Command> hostsCommands();
[[nodiscard]] QVector<Command> serviceCommands();

/// Returns the table of all commands, in the order of the help.
[[nodiscard]] const QVector<Command> &commands();
[[nodiscard]] const QVector<Option> &commonOptions();

/// Returns the command that `words` begin with, or null. The first word of a group alone names the group's
/// first command.
[[nodiscard]] const Command *findCommand(const QStringList &words);

/// Returns the commands whose first word is `word`.
[[nodiscard]] QVector<Command> commandGroup(const QString &word);
