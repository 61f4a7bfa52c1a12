// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "wire/result.h"

#include <QMetaType>
#include <QString>

namespace client {

enum class FailureKind {
    Unreachable,   ///< no listener, or no such host
    TimedOut,      ///< no complete line within the deadline
    Closed,        ///< the connection ended before the reply
    NotUnderstood, ///< not a line of the protocol, or not a reply to the request
    Detecting,     ///< the service detects drives and answers no other request
    Paused,        ///< the service is paused and answers no other request
    Refused,       ///< the service, or a check before the request, refuses what was asked
};

/// The reason for a missing reply. `text` is for a person; it may quote the peer, as visible() writes it.
struct Failure
{
    FailureKind kind = FailureKind::Unreachable;
    QString text;
};

template <typename T>
using Result = ::Result<T, Failure>;

/// Returns `text` with control, format and unassigned characters written as \u{hex}, so that a peer's text
/// cannot move the cursor or hide other text. At most `limit` characters are kept; 0 keeps all.
[[nodiscard]] QString visible(const QString &text, int limit = 0);

} // namespace client

Q_DECLARE_METATYPE(client::Failure)
