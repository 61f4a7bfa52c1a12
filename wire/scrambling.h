// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// The line scrambling of the console protocol and of the settings file. It hides text from a
/// casual look, and is no protection against a reader who knows it.

/// Returns the offset for a line to be scrambled: 0 to 99, evenly distributed.
using OffsetSource = std::function<int()>;

/// The result of unscramble() for a line that fails its checks.
inline const QString kScrambleError = QStringLiteral("~ERR");

/// Returns the scrambled line of `text`, without a line end: 8 hex digits of total length, 2 of `offset`
/// (0 to 99), then two for each character of the text's Base64.
[[nodiscard]] QByteArray scramble(const QString &text, int offset);

/// Returns the text of a received line from which CR and LF have been removed; kScrambleError if its length
/// header is wrong. Any other line yields some text.
[[nodiscard]] QString unscramble(const QByteArray &line);

/// A long line can be scrambled piece by piece: lineHeader(), then lineBody() of each piece of the text.

/// The size in bytes that every piece of a text but the last has to be a multiple of.
inline constexpr int kPieceBytes = 1524;
/// The longest text whose line has a length of 8 hex digits.
inline constexpr qint64 kMaxTextBytes = (qint64{0xFFFFFFFF} - 10) / 8 * 3;

/// Returns the first 10 characters of the line of a text of `textBytes` bytes of UTF-8.
[[nodiscard]] QByteArray lineHeader(qint64 textBytes, int offset);
/// Returns the rest of the line, or the part of it that belongs to a piece.
[[nodiscard]] QByteArray lineBody(const QByteArray &utf8, int offset);

/// Returns `text` as a console receives it: scrambled, ended by CR LF.
[[nodiscard]] QByteArray sendReply(const QString &text, const OffsetSource &offsets);
