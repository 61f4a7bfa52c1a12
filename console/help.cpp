// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/help.h"

#include <QMap>

#include <algorithm>

namespace help {

namespace {

constexpr int kIndent = 2;
constexpr int kTextWidth = 80;
constexpr int kOverviewColumn = 20;
constexpr int kOptionColumn = 28;

const char kIntroduction[] =
    "halvexctl asks a Halvex Service about the drives it watches, and tells it what to do.";
const char kDefaultService[] =
    "Without --host, --port and --socket the service on this machine is asked over its local socket.";

/// %1 the first words, %2 a case for each group, %3 the options of all commands, %4 a case for each command
/// that has options of its own. Words that follow an option count as bare: at worst too much is offered.
const char kCompletionTemplate[] = R"(# bash completion for halvexctl
_halvexctl()
{
    local current=${COMP_WORDS[COMP_CWORD]} bare=() word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $word == -* ]] || bare+=("$word")
    done
    local words=''
    case ${bare[0]} in
        '') words='%1' ;;
%2    esac
    [[ ${#bare[@]} -gt 1 ]] && words=''
    local options='%3'
    case "${bare[*]}" in
%4    esac
    [[ $current == -* ]] && words=$options
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -o default -F _halvexctl halvexctl)";

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

QString optionTerm(const Option &option)
{
    QString term = option.letter.isEmpty() ? QString() : QStringLiteral("-%1, ").arg(option.letter);
    term += QStringLiteral("--") + option.name;
    return option.valueName.isEmpty() ? term : term + QLatin1Char(' ') + option.valueName;
}

QString optionEntries(const QVector<Option> &options)
{
    QString result;
    for (const Option &option : options)
        result += entry(optionTerm(option), option.text, kOptionColumn);
    return result;
}

QString usage(const Command &command)
{
    return (command.name + QLatin1Char(' ') + command.arguments).trimmed();
}

/// Text as roff takes it: no line begins a macro, no backslash an escape.
QString roff(const QString &plain)
{
    QString result = plain;
    result.replace(QLatin1Char('\\'), QStringLiteral("\\e"));
    result.replace(QLatin1Char('-'), QStringLiteral("\\-"));
    if (result.startsWith(QLatin1Char('.')) || result.startsWith(QLatin1Char('\'')))
        result.prepend(QStringLiteral("\\&"));
    return result;
}

QString roffOptions(const QVector<Option> &options)
{
    QString result;
    for (const Option &option : options)
        result += QStringLiteral(".TP\n.B %1\n%2\n").arg(roff(optionTerm(option)), roff(option.text));
    return result;
}

QString optionWords(const QVector<Option> &options)
{
    QStringList words;
    for (const Option &option : options)
        words.append(QStringLiteral("--") + option.name);
    return words.join(QLatin1Char(' '));
}

} // namespace

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
    QString result = wrapped(QString::fromUtf8(kIntroduction), 0) +
                     QStringLiteral("\n\nUsage: halvexctl [OPTION]... COMMAND [ARGUMENT]...\n\n") +
                     wrapped(QString::fromUtf8(kDefaultService), 0) + QStringLiteral("\n\nCommands:\n");
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

QString manPage()
{
    QString page = QStringLiteral(".TH HALVEXCTL 1 \"\" \"Halvex Service " HALVEX_VERSION "\"\n"
                                  ".SH NAME\nhalvexctl \\- console of the Halvex Service\n"
                                  ".SH SYNOPSIS\n.B halvexctl\n[OPTION]... COMMAND [ARGUMENT]...\n"
                                  ".SH DESCRIPTION\n%1\n.PP\n%2\n.SH COMMANDS\n")
                       .arg(roff(QString::fromUtf8(kIntroduction)), roff(QString::fromUtf8(kDefaultService)));
    for (const Command &command : commands()) {
        page += QStringLiteral(".SS %1\n%2\n").arg(roff(usage(command)), roff(command.summary));
        for (const QString &paragraph : command.description.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            page += QStringLiteral(".PP\n%1\n").arg(roff(paragraph));
        page += roffOptions(command.options);
    }
    page +=
        QStringLiteral(".SH OPTIONS\n") + roffOptions(commonOptions()) + QStringLiteral(".SH EXIT STATUS\n");
    for (const ExitStatus &status : exitStatuses())
        page += QStringLiteral(".TP\n.B %1\n%2\n").arg(QString::number(status.code), roff(status.text));
    page += QStringLiteral(
        ".SH ENVIRONMENT\n"
        ".TP\n.B HALVEX_HOME\nThe home directory of the service whose local socket is asked by default.\n"
        ".TP\n.B NO_COLOR\nWhen set and not empty, nothing is written in colour.\n");
    page.chop(1);
    return page;
}

QString bashCompletion()
{
    QStringList firstWords;
    QMap<QString, QStringList> groups;
    QString commandCases;
    for (const Command &command : commands()) {
        const QString first = command.name.section(QLatin1Char(' '), 0, 0);
        const QString second = command.name.section(QLatin1Char(' '), 1);
        if (!firstWords.contains(first))
            firstWords.append(first);
        if (!second.isEmpty())
            groups[first].append(second);
        if (!command.options.isEmpty())
            commandCases += QStringLiteral("        '%1'*) options+=\" %2\" ;;\n")
                                .arg(command.name, optionWords(command.options));
    }
    QString groupCases;
    for (auto group = groups.cbegin(); group != groups.cend(); ++group)
        groupCases += QStringLiteral("        %1) words='%2' ;;\n")
                          .arg(group.key(), group.value().join(QLatin1Char(' ')));
    return QString::fromUtf8(kCompletionTemplate)
        .arg(firstWords.join(QLatin1Char(' ')), groupCases, optionWords(commonOptions()), commandCases);
}

} // namespace help
