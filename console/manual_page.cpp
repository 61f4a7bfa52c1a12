// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/help.h"

namespace help {

namespace {

/// Returns text for roff: no line begins a macro, no backslash an escape, and what a user types can be copied
/// from the page unchanged.
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

QString entries(const QVector<Term> &terms)
{
    QString result;
    for (const Term &term : terms)
        result += QStringLiteral(".TP\n.B %1\n%2\n").arg(roff(term.name), roff(term.text));
    return result;
}

QString section(const Command &command)
{
    QString result = QStringLiteral(".SS %1\n%2\n").arg(roff(usage(command)), roff(command.summary));
    for (const QString &paragraph : command.description.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        result += QStringLiteral(".PP\n%1\n").arg(roff(paragraph));
    return result + entries(command.terms) + entries(terms(command.options));
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
    page += QStringLiteral(".SH OPTIONS\n") + entries(terms(commonOptions()));
    page += QStringLiteral(".SH EXIT STATUS\n") + entries(exitStatuses());
    page += QStringLiteral(".SH ENVIRONMENT\n") + entries(environment());
    page.chop(1);
    return page;
}

} // namespace help
