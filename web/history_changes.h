// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/history.h"
#include "web/snapshot.h"

namespace web {

/// The records that one poll adds to the history.
struct HistoryChanges
{
    QVector<Event> events;
    QVector<KnownDrive> drives; ///< the new state of every known drive of the service
    struct Attribute
    {
        int drive = 0; ///< position in `drives`
        quint32 id = 0;
        AttributeValue value;
    };
    QVector<Attribute> attributes; ///< values that are new or differ from the known ones
};

/// Returns the identity of each drive of `data`.
[[nodiscard]] QVector<DriveKey> driveKeys(const QString &service, const QVector<client::Drive> &drives);

/// Compares the known drives of a service with what a poll found at `now`. On the first poll ever of a
/// service its drives are not reported as new.
[[nodiscard]] HistoryChanges compare(const QVector<KnownDrive> &known, bool isFirstPoll,
                                     const QString &service, const ServiceData &data, Timestamp now);

/// Returns the event of a change of the service's own state, if there is one.
[[nodiscard]] std::optional<Event> stateEvent(const ServiceSnapshot &before, const ServiceSnapshot &after,
                                              Timestamp now);

} // namespace web
