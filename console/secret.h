// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/context.h"

#include <QString>

#include <optional>

[[nodiscard]] Option passwordFileOption();

/// Returns the password that --password-file or --ask-password gives, or nothing without these options; with
/// `isNeeded` the terminal is then asked. Throws CommandFailure.
[[nodiscard]] std::optional<QString> readSecret(const Context &context, const QString &prompt,
                                                bool isNeeded = false);
