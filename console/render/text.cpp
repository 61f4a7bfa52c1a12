// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/text.h"

#include <QVector>

#include <algorithm>
#include <iterator>

namespace render {

namespace {

struct Block
{
    uint first;
    uint last;
};

/// The wide and full-width characters of Unicode's EastAsianWidth.txt, in whole blocks.
constexpr Block kWide[] = {
    {0x1100, 0x115F},   // Hangul Jamo, leading consonants
    {0x2E80, 0x303E},   // CJK radicals and punctuation
    {0x3041, 0x33FF},   // Kana, compatibility
    {0x3400, 0x4DBF},   // CJK extension A
    {0x4E00, 0x9FFF},   // CJK
    {0xA000, 0xA4CF},   // Yi
    {0xAC00, 0xD7A3},   // Hangul syllables
    {0xF900, 0xFAFF},   // CJK compatibility
    {0xFE30, 0xFE6F},   // CJK compatibility forms
    {0xFF00, 0xFF60},   // full-width forms
    {0xFFE0, 0xFFE6},   // full-width signs
    {0x1F300, 0x1F64F}, // pictographs, faces
    {0x1F900, 0x1F9FF}, // more pictographs
    {0x20000, 0x3FFFD}, // CJK extensions B and later
};

int columns(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
        return 0;
    default:
        break;
    }
    const bool isWide = std::any_of(std::begin(kWide), std::end(kWide), [character](const Block &block) {
        return character >= block.first && character <= block.last;
    });
    return isWide ? 2 : 1;
}

} // namespace

int columns(const QString &text)
{
    int sum = 0;
    for (const uint character : text.toUcs4())
        sum += columns(character);
    return sum;
}

QString cut(const QString &text, int width)
{
    if (width <= 0 || columns(text) <= width)
        return text;
    QString result;
    int used = 0;
    for (const uint character : text.toUcs4()) {
        used += columns(character);
        if (used > width - 1)
            break;
        result += QString::fromUcs4(&character, 1);
    }
    return result + QStringLiteral("…");
}

QString padded(const QString &text, int width, Align align)
{
    const QString shown = cut(text, width);
    const QString blanks(std::max(0, width - columns(shown)), QLatin1Char(' '));
    return align == Align::Left ? shown + blanks : blanks + shown;
}

} // namespace render
