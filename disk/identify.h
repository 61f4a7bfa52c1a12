// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/storage_descriptor.h"
#include "platform/bytes.h"

#include <QByteArray>
#include <QString>

/// The data of IDENTIFY DEVICE: ata::kSectorSize bytes, counted in 16-bit words as the ATA standard does.
namespace identify {

/// A text field; each word holds two characters, the first in its high byte.
struct TextField
{
    int firstWord;
    int wordCount;
};

inline constexpr TextField kSerialNumber{10, 10};
inline constexpr TextField kFirmwareRevision{23, 4};
inline constexpr TextField kModelNumber{27, 20};

/// Returns the text of `field` up to its first NUL, without white space around it.
[[nodiscard]] QString text(ByteView sector, TextField field);

/// Returns 1 or 0; -1 if the drive does not report it.
[[nodiscard]] qint32 smartSupported(ByteView sector);

/// Returns 1 or 0; 1 if the drive does not report it.
[[nodiscard]] qint32 smartEnabled(ByteView sector);

struct AtaVersion
{
    qint32 major = -1; ///< -1 when not reported
    QString text;      ///< the standard and its revision; empty when not known
};

[[nodiscard]] AtaVersion ataVersion(ByteView sector);

/// Returns a sector for a drive that does not answer IDENTIFY: model and firmware from the system's
/// descriptor, S.M.A.R.T. supported and enabled, no serial number.
[[nodiscard]] QByteArray fromDescriptor(const StorageDescriptor &descriptor);

} // namespace identify
