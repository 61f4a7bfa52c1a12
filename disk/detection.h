// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/storage_descriptor.h"
#include "platform/drives.h"
#include "wire/result.h"

#include <optional>

/// The requests of a detection to one drive. Each function blocks until the drive answers.
namespace detection {

/// A detection probes the numbers below this one.
inline constexpr int kDetectedNumbers = 99;
/// A count of the drives probes only the numbers below this one.
inline constexpr int kCountedNumbers = 26;

/// Reads geometry, size and device number, without which a drive is not listed. On failure returns the system
/// error; the fields that were read before it are set.
[[nodiscard]] Result<void, quint32> readBasics(Drive &drive, DetectedDrive &device);

[[nodiscard]] bool isFixedDisk(const DetectedDrive &device);

/// Reads the identity that the system keeps, without a request to the drive, and sets model, serial and
/// firmware. Returns nullopt if the system has no descriptor of the drive.
[[nodiscard]] std::optional<StorageDescriptor> describe(Drive &drive, DetectedDrive &device);

/// Reads the identity by the first access method that answers; the last method builds it from the descriptor.
void identify(Drive &drive, const std::optional<StorageDescriptor> &descriptor, DetectedDrive &device);

/// Returns whether `found`, detected again under the path of `known`, can be the same drive. Compares only
/// fields that were read by the same access method.
[[nodiscard]] bool isSameDrive(const DetectedDrive &known, const DetectedDrive &found);

} // namespace detection
