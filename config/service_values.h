// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "platform/service_key.h"

/// Characters of the service program's file name, extension included. The program directory is the image path
/// without that many characters at its end, so every name of the program has this length.
inline constexpr int kProgramNameLength = 22;

/// The directory, with its last separator, of a program whose image path is `imagePath`. A path that is
/// shorter than the program's name has none.
[[nodiscard]] QString programDirectoryOf(const QString &imagePath);

/// Takes Port, the two poll intervals and the program directory from the service's key. A value that is
/// missing, of the wrong type or out of range leaves its field as it is. False, with nothing read, when the
/// key does not open.
[[nodiscard]] bool readServiceValues(ServiceKey &key, Settings &settings);

/// Stores Port and the two poll intervals, in whole seconds and unchecked. False, with nothing stored, when
/// there is no key.
[[nodiscard]] bool writeServiceValues(ServiceKey &key, const Settings &settings);
