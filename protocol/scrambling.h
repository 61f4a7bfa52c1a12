// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// The line scrambling of the console protocol and of the settings file. It keeps text from being read in
/// passing; it is no protection against anyone who wants to read it.

/// Draws the offset of a line to be scrambled: 0 to 99, evenly.
using OffsetSource = std::function<int()>;

/// What unscramble() makes of a line that fails its checks.
inline const QString kScrambleError = QStringLiteral("~ERR");

/// The scrambled line of `text`, without a line end: 8 hex digits of total length, 2 of `offset` (0 to 99),
/// then two a character of the text's Base64.
[[nodiscard]] QByteArray scramble(const QString &text, int offset);

/// The text of a received line from which CR and LF have been removed; kScrambleError when its length
/// header is wrong. Any other line yields some text.
[[nodiscard]] QString unscramble(const QByteArray &line);

/// `text` as it goes to a console: scrambled, ended by CR LF.
[[nodiscard]] QByteArray sendReply(const QString &text, const OffsetSource &offsets);
