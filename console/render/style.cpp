// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/style.h"

namespace render {

namespace {

/// The parameters of the terminal's "select graphic rendition" (ECMA-48, 8.3.117).
QString parameters(Colour colour)
{
    switch (colour) {
    case Colour::Plain:
        return {};
    case Colour::Good:
        return QStringLiteral("32");
    case Colour::Warning:
        return QStringLiteral("33");
    case Colour::Bad:
        return QStringLiteral("1;31");
    case Colour::Dim:
        return QStringLiteral("2");
    case Colour::Strong:
        return QStringLiteral("1");
    }
    return {};
}

} // namespace

QString painted(const QString &text, Colour colour, const Style &style)
{
    if (!style.hasColour || colour == Colour::Plain || text.isEmpty())
        return text;
    return QStringLiteral("\033[%1m%2\033[0m").arg(parameters(colour), text);
}

} // namespace render
