// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/storage_descriptor.h"
#include "platform/drives.h"
#include "wire/result.h"

#include <optional>

/// What detection asks a drive. Each function blocks until the drive answers.
namespace detection {

/// Drives are looked for under the numbers below this one.
inline constexpr int kDetectedNumbers = 99;
/// The count of the drives looks at the numbers below this one only.
inline constexpr int kCountedNumbers = 26;

/// Reads geometry, size and device number, without which a drive is not listed. On failure returns the system
/// error; the fields that were read before it are set.
[[nodiscard]] Result<void, quint32> readBasics(Drive &drive, DetectedDrive &device);

[[nodiscard]] bool isFixedDisk(const DetectedDrive &device);

/// Reads what the system knows of the drive without asking it, and fills in model, serial and firmware by
/// that. Returns nullopt if the system has no descriptor of it.
[[nodiscard]] std::optional<StorageDescriptor> describe(Drive &drive, DetectedDrive &device);

/// Reads the identity by the first access method that answers; the last is to make it up from the descriptor.
void identify(Drive &drive, const std::optional<StorageDescriptor> &descriptor, DetectedDrive &device);

/// Whether `found`, detected again under the path of `known`, can be the same drive. What was not read, or
/// not by the same access method, is not compared.
[[nodiscard]] bool isSameDrive(const DetectedDrive &known, const DetectedDrive &found);

} // namespace detection
