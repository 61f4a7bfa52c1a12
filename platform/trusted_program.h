// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "wire/result.h"

/// Returns the path, with its links resolved, of a program that the service may start. Fails if `path` is not
/// absolute, does not name an executable file or, on Linux, if the file or a folder above it does not belong
/// to root or can be written by others: whoever may replace the program would run with the service's rights.
[[nodiscard]] Result<QString> trustedProgram(const QString &path);
