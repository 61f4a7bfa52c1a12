// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "wire/separators.h"

#include <QString>
#include <QStringList>

/// The reply to an unknown command, or one with too few fields. The list it announces is never sent.
inline const QString kUnknownCommand = QStringLiteral("UNKNOWN COMMAND - Command list:");

/// Returns "WORD,a,b": the form of the short replies.
inline QString shortReply(const char *word, const QStringList &fields)
{
    return QLatin1String(word) + QLatin1Char(',') + fields.join(QLatin1Char(','));
}

/// Returns "WORD]![payload": the form of the list replies.
inline QString listReply(const char *word, const QString &payload)
{
    return QLatin1String(word) + kRequestSeparator + payload;
}

/// Returns "WORD,[1,2]": the form of the replies to an index that is out of range.
inline QString indexError(const char *word, const QStringList &indices)
{
    return QLatin1String(word) + QLatin1String(",[") + indices.join(QLatin1Char(',')) + QLatin1Char(']');
}
