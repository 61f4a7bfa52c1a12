// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/scrambling.h"

struct Platform;
struct Settings;
class SettingsStore;

/// What the program entry composes and hands down. The entry owns what the references name and keeps it
/// until the service has ended.
struct ServiceContext
{
    Platform &platform;
    Settings &settings;
    SettingsStore &store;
    OffsetSource offsets; ///< for every line that is scrambled
};
