// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "disk/device_record.h"
#include "platform/service_key.h"
#include "protocol/scrambling.h"

/// Where the settings are kept between runs: the service's key, and the settings file in the program
/// directory. Borrows what it is given. Event loop's thread only. Failures are told to the log alone: a
/// service that cannot keep its settings goes on with those it has.
class SettingsStore
{
public:
    /// What readSettings() returns when the service's key does not open.
    static constexpr int kNoKey = 100;

    /// The file is read up to here, in bytes; the settings stand first in it.
    static constexpr qint64 kMaxFileSize = qint64(64) * 1024 * 1024;

    SettingsStore(Settings &settings, ServiceKey &key, OffsetSource offsets);

    /// Reads the key and then the settings file. When the key does not open: kNoKey, with nothing read, so
    /// that a program outside an installed service runs on its defaults. Else 0.
    int readSettings();

    /// Stores the key's values, and replaces the file as a whole or leaves it as it was.
    void writeSettings(const DeviceList &devices);

    /// Gives newly detected drives the scan state and schedule that the file has for them.
    void readDriveState(DeviceList &devices) const;

private:
    Settings &m_settings;
    ServiceKey &m_key;
    const OffsetSource m_offsets;
};

/// The settings file of a program directory, with "/" as its separator.
[[nodiscard]] QString settingsFilePath(const QString &programDirectory);
