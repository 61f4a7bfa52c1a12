// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "disk/device_record.h"
#include "protocol/scrambling.h"

#include <QByteArray>
#include <QDateTime>

/// The settings file: lines "key=value", each scrambled and ended by one line feed. First the settings, then
/// a line "disk=" with each drive's scan schedule and a line "scan=" with its scan state. Scrambled lines are
/// ASCII, so the file is the same in every 8-bit code page.

/// Applies the settings among the lines of `file`; drives' lines, and what is no line of ours, are passed
/// over. A value out of its range leaves the field as it is.
void readSettingsLines(const QByteArray &file, Settings &settings);

/// Gives every drive the scan state and schedule of a drive that was never scanned, at `now`, and applies the
/// drives' lines of `file` to those they name by their place in the list.
void readDriveState(const QByteArray &file, DeviceList &devices, const QDateTime &now);

/// The whole file. Two calls give different bytes as far as `offsets` does.
[[nodiscard]] QByteArray settingsFileText(const Settings &settings, const DeviceList &devices,
                                          const OffsetSource &offsets);
