// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/smart_sectors.h"
#include "platform/drives.h"

#include <QMutex>
#include <QString>
#include <QThread>

#include <memory>
#include <optional>

/// Which drive's sectors to read, and how.
struct SmartRead
{
    QString path;
    int index = 0; ///< in the device list; some drivers are given it as the drive's number
    AccessMethod method = AccessMethod::None;
    bool withThresholds = true;
};

/// Reads one drive's S.M.A.R.T. sectors on a thread of its own. It knows nothing of the device list: its
/// owner takes the sectors when finishReadSMART() has told that the read is over.
class SMART_thread : public QThread
{
    Q_OBJECT

public:
    /// `drives` outlives the thread.
    SMART_thread(DriveSystem &drives, const SmartRead &read, QObject *parent = nullptr);

    [[nodiscard]] const QString &path() const { return m_read.path; }

    /// Makes the read fail soon, as far as the system can cut off a pending request. Any thread.
    void cancel();

    /// What was read, once; nullopt when the read failed, is not over or was cancelled. Any thread.
    [[nodiscard]] std::optional<SmartSectors> takeSectors();

Q_SIGNALS:
    void finishReadSMART(int index); ///< whether it failed or not
    void needStopTimer(int index);

public Q_SLOTS:
    void closeHeader(); ///< closes the drive; for the reading thread

protected:
    void run() override;

private:
    [[nodiscard]] Drive *openDrive();

    DriveSystem &m_drives;
    const SmartRead m_read;

    QMutex m_mutex; ///< guards what follows; never held during a request
    std::unique_ptr<Drive> m_drive;
    std::optional<SmartSectors> m_sectors;
    bool m_isCancelled = false;
};
