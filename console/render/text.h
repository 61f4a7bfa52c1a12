// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

namespace render {

enum class Align { Left, Right };

/// Columns that `text` takes on a terminal: two for wide East Asian characters and pictographs, none for
/// marks that combine with the character before them.
[[nodiscard]] int columns(const QString &text);

/// `text`, or as much of it as fits into `width` columns with "…" for the rest. 0 and less leave it whole.
[[nodiscard]] QString cut(const QString &text, int width);

/// `text` cut and filled with blanks to exactly `width` columns.
[[nodiscard]] QString padded(const QString &text, int width, Align align = Align::Left);

} // namespace render
