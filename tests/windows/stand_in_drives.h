// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "windows/driver/drive_file.h"

#include <QJsonObject>
#include <QString>

/// The machine's physical drives, as the stand-in driver gives them: it is loaded while this lives, and no
/// other drive is in sight. None is there at first.
class StandInDrives
{
public:
    StandInDrives();
    ~StandInDrives();
    StandInDrives(const StandInDrives &) = delete;
    StandInDrives &operator=(const StandInDrives &) = delete;

    [[nodiscard]] bool areLoaded() const { return m_loaded; }

    void put(unsigned number, const stand_in::DriveFile &drive);
    void pull(unsigned number);

private:
    bool m_loaded = false;
};

/// A healthy drive with the sectors of a real one (tests/fixtures/drives/), except for `changes` to its keys.
[[nodiscard]] stand_in::DriveFile realDrive(const QString &dumpName, const QJsonObject &changes = {});
