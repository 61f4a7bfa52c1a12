// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_error.h"

#include <cerrno>

quint32 systemErrorOf(int errnoValue)
{
    switch (errnoValue) {
    case 0:
        return system_error::kNone;
    case ENOENT:
    case ENOTDIR:
        return system_error::kFileNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
        return system_error::kAccessDenied;
    case EINVAL:
        return system_error::kInvalidParameter;
    case ENAMETOOLONG:
        return system_error::kBadLength;
    case ENOTSUP:
    case ENOTTY:
        return system_error::kNotSupported;
    case ETIMEDOUT:
    case EAGAIN:
        return system_error::kSemTimeout;
    case ENODEV:
    case ENXIO:
        return system_error::kDeviceNotConnected;
    case ENODATA: // the block layer's code for a medium error
        return system_error::kCrc;
    case EIO:
        return system_error::kIoDevice;
    default:
        return system_error::kGenFailure;
    }
}

ServiceOutcome failureOf(int errnoValue)
{
    return {systemErrorOf(errnoValue), qt_error_string(errnoValue)};
}
