// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "disk/device_record.h"
#include "wire/scrambling.h"

#include <QByteArray>
#include <QDateTime>

/// The settings file: lines "key=value", each scrambled and ended by one line feed. First the settings, then
/// a line "disk=" with each drive's scan schedule and a line "scan=" with its scan state. Scrambled lines are
/// ASCII, so the file is the same in every 8-bit code page.

/// Applies the settings among the lines of `file`; drives' lines and unknown lines are ignored. A value out
/// of its range leaves the field unchanged.
void readSettingsLines(const QByteArray &file, Settings &settings);

/// Gives every drive the scan state and schedule of a drive that was never scanned, at `now`, and applies the
/// drives' lines of `file`, which name drives by their place in the list.
void readDriveState(const QByteArray &file, DeviceList &devices, const QDateTime &now);

/// Gives the drives of `to` the scan state and schedule of the drives at the same places in `from`.
void copyDriveState(const DeviceList &from, DeviceList &to);

/// Returns the content of the whole file. The bytes differ between calls as far as `offsets` does.
[[nodiscard]] QByteArray settingsFileText(const Settings &settings, const DeviceList &devices,
                                          const OffsetSource &offsets);
