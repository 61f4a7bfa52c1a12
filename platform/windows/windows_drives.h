// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"

/// The drives of this machine, as CreateFileW opens them.
class WindowsDrives : public DriveSystem
{
public:
    OpenReply open(const QString &path) override;
};
