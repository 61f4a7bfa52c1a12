// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/command_target.h"

#include <QString>
#include <QStringList>

#include <utility>

/// Between the fields of a request, and behind the reply word of a list reply.
inline const QString kRequestSeparator = QStringLiteral("]![");

/// What an unknown command, or one with too few fields, is answered. The list it announces is never sent.
inline const QString kUnknownCommand = QStringLiteral("UNKNOWN COMMAND - Command list:");

/// What a request is answered: `text`, empty when nothing is to be sent, and behind it what `rest` finds, if
/// it is set.
struct Reply
{
    Reply(QString replyText, LongText replyRest = {}) // NOLINT(google-explicit-constructor): most are a text
        : text(std::move(replyText))
        , rest(std::move(replyRest))
    {}

    QString text;
    LongText rest;
};

/// Carries out a request, split into its fields (at least one). Synchronous but for a reply's rest: REFRESH
/// takes as long as reading every drive, STOPSCAN 100 ms.
[[nodiscard]] Reply processCommand(const QStringList &fields, CommandTarget &target);
