// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/command.h"

#include <QString>

/// Texts made from the table of commands.
namespace help {

/// Returns one sentence each: the purpose of the program, and the service that it asks by default.
[[nodiscard]] QString introduction();
[[nodiscard]] QString defaultService();
/// Returns exit codes as names, with their meaning.
[[nodiscard]] QVector<Term> exitStatuses();
[[nodiscard]] QVector<Term> environment();

/// Returns the command with its arguments, as in a usage line.
[[nodiscard]] QString usage(const Command &command);
/// Returns the options with their letters and values as terms.
[[nodiscard]] QVector<Term> terms(const QVector<Option> &options);

/// Returns each term on a line of its own, and its explanation below it.
[[nodiscard]] QString explanations(const QVector<Term> &terms);

[[nodiscard]] QString overview();
[[nodiscard]] QString commandHelp(const Command &command);
/// Returns the help of several commands with the same first word.
[[nodiscard]] QString groupHelp(const QVector<Command> &group);
/// Returns the manual page, in the man macros.
[[nodiscard]] QString manPage();
/// Returns a completion script for bash.
[[nodiscard]] QString bashCompletion();

} // namespace help
