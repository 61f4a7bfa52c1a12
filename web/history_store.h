// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/database.h"
#include "web/history.h"
#include "web/history_changes.h"
#include "wire/result.h"

#include <mutex>

namespace web {

struct StoredChange
{
    Timestamp time = 0;
    AttributeValue value;
};

/// The history in one SQLite file. Every function may be called on any thread and may wait for the disk, so
/// none belongs on the event loop's. After a failure the history is as it was before the call.
class HistoryStore
{
public:
    /// `folder` is made where it does not exist.
    explicit HistoryStore(QString folder);

    /// Opens the file. A damaged one is set aside under a dated name and a new one begins. Fails where the
    /// folder or the file cannot be written; each add() tries again.
    [[nodiscard]] Result<void> open();

    /// Returns the drives of all services with their latest values. They take the place of memory at a start.
    [[nodiscard]] QVector<KnownDrive> knownDrives();

    /// Adds `changes` as a whole, or nothing on failure. Sets the `id` of each drive.
    [[nodiscard]] Result<void> add(HistoryChanges &changes, Timestamp now);

    /// Removes what is older than `cutoff`, but each attribute's latest value.
    [[nodiscard]] Result<void> removeBefore(Timestamp cutoff);

    /// Returns the events from `from` to `to`, the newest first, of all services if `service` is empty.
    [[nodiscard]] QVector<Event> events(const QString &service, Timestamp from, Timestamp to, int limit);

    /// Returns the changes of an attribute from `from` to `to`, the oldest first.
    [[nodiscard]] QVector<StoredChange> attributeChanges(const DriveKey &drive, quint32 attribute,
                                                         Timestamp from, Timestamp to);

    /// Returns the drives that are not listed any more, the latest first.
    [[nodiscard]] QVector<KnownDrive> formerDrives();

private:
    [[nodiscard]] bool makeTables();
    [[nodiscard]] Result<void> openFile();
    [[nodiscard]] bool addAll(HistoryChanges &changes, Timestamp now);
    [[nodiscard]] bool saveDrive(KnownDrive &drive);
    [[nodiscard]] Result<void> runAsWhole(const std::function<bool()> &work);
    void setAsideIfDamaged();
    [[nodiscard]] QVector<KnownDrive> readDrives(const char *condition);

    std::mutex m_mutex;
    const QString m_folder;
    Database m_database;
};

} // namespace web
