// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/help.h"

namespace help {

namespace {

/// Text as roff takes it: no line begins a macro, no backslash an escape, and what is typed can be copied
/// from the page character by character.
QString roff(const QString &plain)
{
    QString result = plain;
    result.replace(QLatin1Char('\\'), QStringLiteral("\\e"));
    result.replace(QLatin1Char('-'), QStringLiteral("\\-"));
    result.replace(QLatin1Char('\''), QStringLiteral("\\(aq"));
    result.replace(QLatin1Char('~'), QStringLiteral("\\(ti"));
    if (result.startsWith(QLatin1Char('.')))
        result.prepend(QStringLiteral("\\&"));
    return result;
}

QString entry(const QString &what, const QString &explanation)
{
    return QStringLiteral(".TP\n.B %1\n%2\n").arg(roff(what), roff(explanation));
}

QString entries(const QVector<Option> &options)
{
    QString result;
    for (const Option &option : options)
        result += entry(term(option), option.text);
    return result;
}

QString section(const Command &command)
{
    QString result = QStringLiteral(".SS %1\n%2\n").arg(roff(usage(command)), roff(command.summary));
    for (const QString &paragraph : command.description.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        result += QStringLiteral(".PP\n%1\n").arg(roff(paragraph));
    return result + entries(command.options);
}

} // namespace

QString manPage()
{
    QString page = QStringLiteral(".TH HALVEXCTL 1 \"\" \"Halvex Service " HALVEX_VERSION "\"\n"
                                  ".SH NAME\nhalvexctl \\- console of the Halvex Service\n"
                                  ".SH SYNOPSIS\n.B halvexctl\n[OPTION]... COMMAND [ARGUMENT]...\n"
                                  ".SH DESCRIPTION\n%1\n.PP\n%2\n.SH COMMANDS\n")
                       .arg(roff(introduction()), roff(defaultService()));
    for (const Command &command : commands())
        page += section(command);
    page += QStringLiteral(".SH OPTIONS\n") + entries(commonOptions());
    page += QStringLiteral(".SH EXIT STATUS\n");
    for (const ExitStatus &status : exitStatuses())
        page += entry(QString::number(status.code), status.text);
    page += QStringLiteral(".SH ENVIRONMENT\n");
    page +=
        entry(QStringLiteral("HALVEX_HOME"),
              QStringLiteral("The home directory of the service whose local socket is asked by default."));
    page += entry(QStringLiteral("NO_COLOR"),
                  QStringLiteral("When set and not empty, nothing is written in colour."));
    page.chop(1);
    return page;
}

} // namespace help
