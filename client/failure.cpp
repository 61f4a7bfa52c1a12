// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/failure.h"

#include <QVector>

namespace client {

namespace {

bool isHarmless(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format: // direction marks among them: they reorder what stands around them
    case QChar::Other_Surrogate:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

} // namespace

QString visible(const QString &text, int limit)
{
    QString result;
    int count = 0;
    for (const uint character : text.toUcs4()) {
        if (limit > 0 && count++ == limit)
            return result + QStringLiteral("…");
        if (isHarmless(character))
            result += QString::fromUcs4(&character, 1);
        else
            result += QStringLiteral("\\u{%1}").arg(character, 0, 16);
    }
    return result;
}

} // namespace client
