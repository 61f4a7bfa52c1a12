// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/style.h"

namespace render {

namespace {

using client::Tone;

/// Returns the parameters of the terminal's "select graphic rendition" (ECMA-48, 8.3.117).
QString parameters(Tone tone)
{
    switch (tone) {
    case Tone::Plain:
        return {};
    case Tone::Good:
        return QStringLiteral("32");
    case Tone::Warning:
        return QStringLiteral("33");
    case Tone::Bad:
        return QStringLiteral("1;31");
    case Tone::Dim:
        return QStringLiteral("2");
    case Tone::Strong:
        return QStringLiteral("1");
    }
    return {};
}

} // namespace

QString painted(const QString &text, client::Tone tone, const Style &style)
{
    if (!style.hasColour || tone == Tone::Plain || text.isEmpty())
        return text;
    return QStringLiteral("\033[%1m%2\033[0m").arg(parameters(tone), text);
}

} // namespace render
