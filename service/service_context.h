// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/workers.h"
#include "wire/scrambling.h"

struct Platform;
struct ServiceOptions;
struct Settings;
class SettingsStore;

/// The objects that the program entry creates. The entry owns them until the service has ended.
struct ServiceContext
{
    Platform &platform;
    Settings &settings;
    SettingsStore &store;
    const ServiceOptions &options;
    OffsetSource offsets; ///< of scrambled lines
    WorkLimits limits = {};
};
