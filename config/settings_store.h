// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "disk/device_record.h"
#include "monitor/fault_state.h"
#include "platform/access_error.h"
#include "platform/service_key.h"
#include "wire/result.h"
#include "wire/scrambling.h"

/// Owns the state that outlives the service: the settings and the drives' schedules and scans. It is kept in
/// the service's key and in the settings file in the program directory. Failures are logged at warning when
/// they start, change and end; the service continues with the state in memory. Event loop's thread only.
class SettingsStore
{
public:
    /// Result of readSettings() if the service's key does not open.
    static constexpr int kNoKey = 100;

    /// Borrows `settings` and `key`.
    SettingsStore(Settings &settings, ServiceKey &key, OffsetSource offsets);

    /// Reads the key and then the settings file. If the key does not open: kNoKey, with nothing read, so that
    /// a program outside an installed service runs on its defaults. Else 0.
    int readSettings();

    /// Stores the key's values, and replaces the file as a whole or leaves the old one. A file that could not
    /// be read is set aside under a dated name first; if that fails, nothing is written. Returns false if
    /// anything was not stored; the caller repeats the call later.
    bool writeSettings(const DeviceList &devices);

    /// Gives newly detected drives their stored schedules and scans: those of the file, or if it cannot be
    /// read, those last read or written.
    void readDriveState(DeviceList &devices);

private:
    Result<QByteArray, AccessError> readFile();
    Result<void> writeFile(const QByteArray &bytes);
    Result<void> keepUnreadableFile(const QString &path);
    bool storeKey();

    Settings &m_settings;
    ServiceKey &m_key;
    const OffsetSource m_offsets;
    DeviceList m_devices;            ///< as last read or written
    bool m_fileIsUnreadable = false; ///< the file must not be replaced before it is set aside
    FaultState m_reading{QStringLiteral("Reading the settings file")};
    FaultState m_writing{QStringLiteral("Writing the settings file")};
    FaultState m_keyWriting{QStringLiteral("Storing the port and the intervals in the service's key")};
};

/// Returns the path of the settings file of a program directory, with "/" as its separator.
[[nodiscard]] QString settingsFilePath(const QString &programDirectory);
