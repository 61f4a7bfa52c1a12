// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/column.h"

#include <QString>

/// The console's texts: pure functions over values and a width, which unit tests can check without a
/// terminal.
namespace render {

struct Style
{
    bool hasColour = false;
    bool hasGraphics = false; ///< bars, maps and charts; off when the output is not a terminal
    int width = 0;            ///< columns; 0 for no limit
};

/// Returns `text` in the colour of `tone`, or unchanged if the style has no colours.
[[nodiscard]] QString painted(const QString &text, client::Tone tone, const Style &style);

} // namespace render
