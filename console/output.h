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

    /// What was asked for.
    void print(const QString &line);
    void print(const QStringList &lines);
    void print(const QJsonDocument &document);

    /// `lines` over the `previous` lines printed last, on a terminal.
    void redraw(const QStringList &lines, int previous);

    /// `lines` from the terminal's upper left corner on, and nothing else.
    void fillScreen(const QStringList &lines);

    /// What a person may want to know besides; silent after setQuiet().
    void note(const QString &line);

    /// Why something was not done, behind the program's name.
    void complain(const QString &text);

    void setQuiet() { m_isQuiet = true; }

private:
    QTextStream m_out;
    QTextStream m_err;
    bool m_isQuiet = false;
};

/// The style that standard output asks for now: its width follows the terminal.
[[nodiscard]] render::Style outputStyle();
