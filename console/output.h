// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/render/style.h"

#include <QJsonDocument>
#include <QStringList>
#include <QTextStream>

#include <cstdio>

/// Standard output and standard error, in UTF-8 on every system.
class Output
{
public:
    Output();

    /// Writes the result of a command.
    void print(const QString &line);
    void print(const QStringList &lines);
    void print(const QJsonDocument &document);

    /// Writes `lines` on a terminal in place of the `previous` lines that were written last.
    void redraw(const QStringList &lines, int previous);

    /// Fills the screen of the terminal with `lines`.
    void fillScreen(const QStringList &lines);

    /// Writes a remark for a person to standard error, unless setQuiet() was called.
    void note(const QString &line);

    /// Writes an error, after the name of the program.
    void printError(const QString &text);

    void setQuiet() { m_isQuiet = true; }

private:
    QTextStream m_out;
    QTextStream m_err;
    bool m_isQuiet = false;
};

/// Returns the style for standard output, with the present width of the terminal.
[[nodiscard]] render::Style outputStyle();
