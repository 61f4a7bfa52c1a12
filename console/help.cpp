// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/help.h"

#include <algorithm>

namespace help {

namespace {

constexpr int kIndent = 2;
constexpr int kTextWidth = 80;
constexpr int kOverviewColumn = 20;
constexpr int kOptionColumn = 28;

/// `textToWrap` in lines of at most kTextWidth, all but the first behind `column` blanks.
QString wrapped(const QString &textToWrap, int column)
{
    QString result;
    int used = column;
    for (const QString &word : textToWrap.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (used > column && used + 1 + word.size() > kTextWidth) {
            result += QLatin1Char('\n') + QString(column, QLatin1Char(' '));
            used = column;
        } else if (used > column) {
            result += QLatin1Char(' ');
            ++used;
        }
        result += word;
        used += int(word.size());
    }
    return result;
}

/// A term and its explanation in two columns; a long term stands on a line of its own.
QString entry(const QString &term, const QString &explanation, int column)
{
    const QString head = QString(kIndent, QLatin1Char(' ')) + term;
    const QString blanks(column, QLatin1Char(' '));
    const bool isLong = head.size() + kIndent > column;
    return (isLong ? head + QLatin1Char('\n') + blanks : head.leftJustified(column)) +
           wrapped(explanation, column) + QLatin1Char('\n');
}

QString optionEntries(const QVector<Option> &options)
{
    QString result;
    for (const Option &option : options)
        result += entry(term(option), option.text, kOptionColumn);
    return result;
}

} // namespace

QString term(const Option &option)
{
    QString text = option.letter.isEmpty() ? QString() : QStringLiteral("-%1, ").arg(option.letter);
    text += QStringLiteral("--") + option.name;
    return option.valueName.isEmpty() ? text : text + QLatin1Char(' ') + option.valueName;
}

QString usage(const Command &command)
{
    return (command.name + QLatin1Char(' ') + command.arguments).trimmed();
}

std::optional<Command> findCommand(const QStringList &words)
{
    const QVector<Command> all = commands();
    const auto named = [&all](const QString &name) {
        return std::find_if(all.cbegin(), all.cend(), [&](const Command &c) { return c.name == name; });
    };
    const QString group = words.value(0) + QLatin1Char(' ');
    auto found = named(group + words.value(1));
    if (found == all.cend())
        found = named(words.value(0));
    if (found == all.cend() && words.size() == 1)
        found = std::find_if(all.cbegin(), all.cend(),
                             [&](const Command &c) { return c.name.startsWith(group); });
    return found == all.cend() ? std::nullopt : std::optional<Command>(*found);
}

int wordCount(const Command &command, const QStringList &words)
{
    return std::min(int(command.name.count(QLatin1Char(' '))) + 1, int(words.size()));
}

QString overview()
{
    QString result = wrapped(introduction(), 0) +
                     QStringLiteral("\n\nUsage: halvexctl [OPTION]... COMMAND [ARGUMENT]...\n\n") +
                     wrapped(defaultService(), 0) + QStringLiteral("\n\nCommands:\n");
    for (const Command &command : commands())
        result += entry(usage(command), command.summary, kOverviewColumn);
    result += QStringLiteral("\nOptions:\n") + optionEntries(commonOptions());
    result += QStringLiteral("\nExit status:\n");
    for (const ExitStatus &status : exitStatuses())
        result += entry(QString::number(status.code), status.text, 2 * kIndent + 1);
    result.chop(1);
    return result;
}

QString commandHelp(const Command &command)
{
    QString result = QStringLiteral("Usage: halvexctl [OPTION]... %1\n\n%2\n")
                         .arg(usage(command), wrapped(command.summary, 0));
    for (const QString &paragraph : command.description.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        result += QLatin1Char('\n') + wrapped(paragraph, 0) + QLatin1Char('\n');
    if (!command.options.isEmpty())
        result += QStringLiteral("\nOptions of this command:\n") + optionEntries(command.options);
    result += QStringLiteral("\nOptions of all commands:\n") + optionEntries(commonOptions());
    result.chop(1);
    return result;
}

} // namespace help
