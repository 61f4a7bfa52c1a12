// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

/// Replaces the file at `path` by `bytes` as a whole, or leaves it as it was, also when the disk is full or
/// the power goes. Empty when it worked, else the reason; may take half a second to find that out.
[[nodiscard]] QString replaceFile(const QString &path, const QByteArray &bytes,
                                  QFileDevice::Permissions permissions = {});
