// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// The installation's directory and the names in it. $HALVEX_HOME moves it, so that several services run
/// side by side.
namespace home {

inline constexpr char kDefaultDirectory[] = "/var/lib/halvex";

/// Returns an absolute path without a trailing slash.
[[nodiscard]] QString directory();

/// Returns the name of the local client socket: a path in the home directory when $HALVEX_HOME is set, else
/// the plain name.
[[nodiscard]] QString localSocketName();

[[nodiscard]] QString serviceKeyPath(const QString &home);
[[nodiscard]] QString controlSocketPath(const QString &home);
[[nodiscard]] QString lockPath(const QString &home);
[[nodiscard]] QString driveNumbersPath(const QString &home);
/// Returns the image path for the service's key, which makes the home directory the program directory.
[[nodiscard]] QString imagePath(const QString &home);

} // namespace home
