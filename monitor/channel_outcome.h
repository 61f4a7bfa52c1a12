// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QString>

/// The outcome of a channel's deliveries. Times are UTC, invalid if there was none.
struct ChannelOutcome
{
    QDateTime lastSuccess;
    QDateTime lastFailure;
    QString reason; ///< of the latest delivery, as one line without credentials; empty if it succeeded
};
