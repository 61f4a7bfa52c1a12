// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// The limits of a pre-failure attribute's normalized value. At or below these a drive is rated as warning or
/// critical, whatever the threshold of the drive itself is.
namespace attribute_limits {

inline constexpr quint32 kWarningValue = 10;
inline constexpr quint32 kCriticalValue = 5;

/// Returns whether a pre-failure attribute with this value makes its drive at least a warning.
[[nodiscard]] constexpr bool isFailing(quint32 value, quint32 threshold)
{
    return value <= threshold || value <= kWarningValue;
}

} // namespace attribute_limits
