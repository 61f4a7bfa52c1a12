// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/output.h"

#include "console/host.h"

namespace {

constexpr char kEraseToLineEnd[] = "\033[K";
constexpr char kEraseToScreenEnd[] = "\033[J";

} // namespace

Output::Output()
    : m_out(stdout)
    , m_err(stderr)
{
    m_out.setCodec("UTF-8");
    m_err.setCodec("UTF-8");
}

void Output::print(const QString &line)
{
    m_out << line << Qt::endl;
}

void Output::print(const QStringList &lines)
{
    for (const QString &line : lines)
        m_out << line << '\n';
    m_out.flush();
}

void Output::print(const QJsonDocument &document)
{
    m_out << QString::fromUtf8(document.toJson());
    m_out.flush();
}

void Output::redraw(const QStringList &lines, int previous)
{
    if (previous > 0)
        m_out << QStringLiteral("\033[%1A").arg(previous);
    for (const QString &line : lines)
        m_out << line << kEraseToLineEnd << '\n';
    m_out << kEraseToScreenEnd << Qt::flush;
}

void Output::fillScreen(const QStringList &lines)
{
    // Each line is erased after its text: a screen that is cleared first flickers.
    m_out << "\033[H" << lines.join(QLatin1String(kEraseToLineEnd) + QStringLiteral("\r\n"))
          << kEraseToLineEnd << kEraseToScreenEnd << Qt::flush;
}

void Output::note(const QString &line)
{
    if (!m_isQuiet)
        m_err << line << Qt::endl;
}

void Output::printError(const QString &text)
{
    m_err << QStringLiteral("halvexctl: ") << text << Qt::endl;
}

render::Style outputStyle()
{
    if (!host::isOutputTerminal())
        return {};
    const bool isDumb = qEnvironmentVariable("TERM") == QLatin1String("dumb");
    // https://no-color.org: set and not empty means no colour
    const bool hasColour = qEnvironmentVariableIsEmpty("NO_COLOR") && !isDumb;
    return {hasColour, true, host::terminalSize().columns};
}
