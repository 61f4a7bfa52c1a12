// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"

/// The ATA pass-through request carried out by the kernel's SG_IO.
namespace sg_io {

/// `input` and `output` are those of IOCTL_ATA_PASS_THROUGH in its 32-bit form; data of at most one sector.
/// `node` names the device in log lines.
[[nodiscard]] ControlReply ataPassThrough(int descriptor, const QString &node, ByteView input,
                                          MutableBytes output);

} // namespace sg_io
