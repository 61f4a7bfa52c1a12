// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/mail_transcript.h"

#include <QStringList>

namespace web {

namespace {

/// Returns whether a word of `line` is Base64 that contains `password`: AUTH LOGIN sends it alone, AUTH PLAIN
/// after the user's name.
bool hidesPassword(const QString &line, const QByteArray &password)
{
    for (const QString &word : line.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (QByteArray::fromBase64(word.trimmed().toLatin1()).contains(password))
            return true;
    }
    return false;
}

} // namespace

QString withoutCredentials(const QString &dialogue, const QString &password)
{
    if (password.isEmpty())
        return dialogue;
    QStringList lines = dialogue.split(QLatin1Char('\n'));
    for (QString &line : lines) {
        if (line.contains(password) || hidesPassword(line, password.toUtf8()))
            line = QStringLiteral("(not shown: credentials)");
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace web
