// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "platform/program_name.h"
#include "platform/service_key.h"

/// Returns the directory, with its last separator, of a program whose image path is `imagePath`. A path that
/// is shorter than the program's name has none.
[[nodiscard]] QString programDirectoryOf(const QString &imagePath);

/// Reads Port, the two poll intervals and the program directory from the service's key. A value that is
/// missing, of the wrong type or out of range leaves its field as it is. Fails, with nothing read, if the key
/// does not open.
Result<void, AccessError> readServiceValues(ServiceKey &key, Settings &settings);

/// Stores Port and the two poll intervals, in whole seconds and unchecked.
Result<void, AccessError> writeServiceValues(ServiceKey &key, const Settings &settings);
