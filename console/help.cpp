// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/help.h"

namespace help {

namespace {

constexpr int kIndent = 2;
constexpr int kTextWidth = 80;
constexpr int kCommandColumn = 20;
constexpr int kOptionColumn = 28;
constexpr int kStatusColumn = 5;
constexpr int kExplanationColumn = 6;

/// Returns the text in lines of at most kTextWidth columns, all but the first indented by `column`.
QString wrapped(const QString &text, int column)
{
    QString result;
    int used = column;
    for (const QString &word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
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

/// Returns a term and its explanation in two columns; a long term has a line of its own.
QString entry(const QString &term, const QString &explanation, int column)
{
    const QString head = QString(kIndent, QLatin1Char(' ')) + term;
    const QString blanks(column, QLatin1Char(' '));
    const bool isLong = head.size() + kIndent > column;
    return (isLong ? head + QLatin1Char('\n') + blanks : head.leftJustified(column)) +
           wrapped(explanation, column) + QLatin1Char('\n');
}

/// Returns a heading and its entries; nothing without entries.
QString section(const char *heading, const QVector<Term> &terms, int column = kOptionColumn)
{
    if (terms.isEmpty())
        return {};
    QString result = QStringLiteral("\n%1:\n").arg(QString::fromUtf8(heading));
    for (const Term &term : terms)
        result += entry(term.name, term.text, column);
    return result;
}

QString commandEntries(const QVector<Command> &commands)
{
    QString result;
    for (const Command &command : commands)
        result += entry(usage(command), command.summary, kCommandColumn);
    return result;
}

} // namespace

QString introduction()
{
    return QStringLiteral("halvexctl shows the drives that a Halvex Service monitors, and controls the "
                          "service.");
}

QString defaultService()
{
    return QStringLiteral("Without --host, --port and --socket it asks the service on this machine over the "
                          "local socket.");
}

QVector<Term> exitStatuses()
{
    return {
        {QStringLiteral("0"), QStringLiteral("Success; with status --check: no drive is above level fine.")},
        {QStringLiteral("1"),
         QStringLiteral("The command line is wrong, or the service refuses the request.")},
        {QStringLiteral("2"),
         QStringLiteral("No valid reply: no service at this address, time limit reached, the service detects "
                        "drives or is paused, or another protocol.")},
        {QStringLiteral("3"), QStringLiteral("status --check: a drive is at level warning.")},
        {QStringLiteral("4"), QStringLiteral("status --check: a drive is at level critical.")},
    };
}

QVector<Term> environment()
{
    return {
        {QStringLiteral("HALVEX_HOME"),
         QStringLiteral("The home directory of the service whose local socket is the default.")},
        {QStringLiteral("NO_COLOR"), QStringLiteral("If set and not empty, the output has no colours.")},
    };
}

QVector<Term> terms(const QVector<Option> &options)
{
    QVector<Term> terms;
    for (const Option &option : options) {
        QString name = option.letter.isEmpty() ? QString() : QStringLiteral("-%1, ").arg(option.letter);
        name += QStringLiteral("--") + option.name;
        if (!option.valueName.isEmpty())
            name += QLatin1Char(' ') + option.valueName;
        terms.append({name, option.text});
    }
    return terms;
}

QString usage(const Command &command)
{
    return (command.name + QLatin1Char(' ') + command.arguments).trimmed();
}

QString explanations(const QVector<Term> &terms)
{
    QStringList lines;
    for (const Term &term : terms)
        lines << term.name
              << QString(kExplanationColumn, QLatin1Char(' ')) + wrapped(term.text, kExplanationColumn);
    return lines.join(QLatin1Char('\n'));
}

QString overview()
{
    return wrapped(introduction(), 0) +
           QStringLiteral("\n\nUsage: halvexctl [OPTION]... COMMAND [ARGUMENT]...\n\n") +
           wrapped(defaultService(), 0) + QStringLiteral("\n\nCommands:\n") + commandEntries(commands()) +
           section("Options", terms(commonOptions())) + section("Exit status", exitStatuses(), kStatusColumn);
}

QString commandHelp(const Command &command)
{
    QString result = QStringLiteral("Usage: halvexctl [OPTION]... %1\n\n%2\n")
                         .arg(usage(command), wrapped(command.summary, 0));
    for (const QString &paragraph : command.description.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        result += QLatin1Char('\n') + wrapped(paragraph, 0) + QLatin1Char('\n');
    return result + section("Names", command.terms) +
           section("Options of this command", terms(command.options)) +
           section("Options of all commands", terms(commonOptions()));
}

QString groupHelp(const QVector<Command> &group)
{
    return QStringLiteral("Usage: halvexctl [OPTION]... COMMAND [ARGUMENT]...\n\nCommands:\n") +
           commandEntries(group) +
           QStringLiteral("\nhalvexctl %1 --help shows the options of one of them.\n")
               .arg(group.first().name);
}

} // namespace help
