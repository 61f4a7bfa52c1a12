// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// How the console writes: pure functions over values and a width, so that what a person sees is tested
/// without a terminal.
namespace render {

struct Style
{
    bool hasColour = false;
    bool hasGraphics = false; ///< bars, maps and charts; off when the output is no terminal
    int width = 0;            ///< columns; 0 for no limit
};

enum class Colour { Plain, Good, Warning, Bad, Dim, Strong };

/// `text` in `colour`, or as it stands when the style has no colours.
[[nodiscard]] QString painted(const QString &text, Colour colour, const Style &style);

} // namespace render
