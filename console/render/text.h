// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

namespace render {

enum class Align { Left, Right };

/// Returns the number of columns of `text` on a terminal: two for wide East Asian characters and pictographs,
/// none for combining marks.
[[nodiscard]] int columns(const QString &text);

/// Returns `text`, or its beginning and "…" if it is wider than `width`. 0 and less mean no limit.
[[nodiscard]] QString cut(const QString &text, int width);

/// Returns `text` cut or filled with blanks to exactly `width` columns.
[[nodiscard]] QString padded(const QString &text, int width, Align align = Align::Left);

} // namespace render
