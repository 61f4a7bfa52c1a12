// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// The system error codes of the platform seam, with the numbers of Windows (winerror.h). Every backend maps
/// its own system's errors to these.
namespace system_error {

inline constexpr quint32 kNone = 0;
inline constexpr quint32 kInvalidFunction = 1;
inline constexpr quint32 kFileNotFound = 2;
inline constexpr quint32 kAccessDenied = 5;
inline constexpr quint32 kNotEnoughMemory = 8;
inline constexpr quint32 kBadLength = 24;
inline constexpr quint32 kNotReady = 21;
inline constexpr quint32 kCrc = 23;
inline constexpr quint32 kSectorNotFound = 27;
inline constexpr quint32 kGenFailure = 31;
inline constexpr quint32 kHandleEof = 38;
inline constexpr quint32 kNotSupported = 50;
inline constexpr quint32 kInvalidParameter = 87;
inline constexpr quint32 kSemTimeout = 121;
inline constexpr quint32 kInsufficientBuffer = 122;
inline constexpr quint32 kBusy = 170;
inline constexpr quint32 kOperationAborted = 995;
inline constexpr quint32 kServiceRequestTimeout = 1053;
inline constexpr quint32 kServiceAlreadyRunning = 1056;
inline constexpr quint32 kServiceDoesNotExist = 1060;
inline constexpr quint32 kServiceCannotAcceptControl = 1061;
inline constexpr quint32 kServiceNotActive = 1062;
inline constexpr quint32 kNotStartedByManager = 1063; // ERROR_FAILED_SERVICE_CONTROLLER_CONNECT
inline constexpr quint32 kIoDevice = 1117;
inline constexpr quint32 kDeviceNotConnected = 1167;

} // namespace system_error
