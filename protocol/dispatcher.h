// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QStringList>

class CommandTarget;

/// Between the fields of a request, and behind the reply word of a list reply.
inline const QString kRequestSeparator = QStringLiteral("]![");

/// What an unknown command, or one with too few fields, is answered. The list it announces is never sent.
inline const QString kUnknownCommand = QStringLiteral("UNKNOWN COMMAND - Command list:");

/// Carries out a request, split into its fields (at least one), and returns the text of its reply; empty
/// when nothing is to be sent. Synchronous: REFRESH takes as long as reading every drive, STOPSCAN 100 ms.
[[nodiscard]] QString processCommand(const QStringList &fields, CommandTarget &target);
