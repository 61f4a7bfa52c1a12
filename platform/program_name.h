// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// The service's name in the service manager, and the source of the events about the service itself.
inline constexpr char kServiceName[] = "Halvex Service";

/// The service program's file name. The program directory is the service's image path without a fixed number
/// of characters, so that number and both names must agree.
inline constexpr int kProgramNameLength = 22;

inline constexpr char kWindowsProgramName[] = "HalvexLocalService.exe";
inline constexpr char kLinuxProgramName[] = "halvex-monitor-service";
static_assert(sizeof(kWindowsProgramName) == kProgramNameLength + 1);
static_assert(sizeof(kLinuxProgramName) == kProgramNameLength + 1);

#ifdef Q_OS_WIN
inline constexpr const char *kProgramName = kWindowsProgramName;
#else
inline constexpr const char *kProgramName = kLinuxProgramName;
#endif
