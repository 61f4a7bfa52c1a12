// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

#include <optional>

/// All of the file at `path`; nullopt when it cannot be read, is longer than `mostBytes` or is no file of its
/// own: opening a pipe or a device in its place could block for ever.
[[nodiscard]] std::optional<QByteArray> readFile(const QString &path, qint64 mostBytes);

/// Replaces the file at `path` by `bytes` as a whole, or leaves it as it was, also when the disk is full or
/// the power goes. Empty when it worked, else the reason; may take half a second to find that out.
[[nodiscard]] QString replaceFile(const QString &path, const QByteArray &bytes,
                                  QFileDevice::Permissions permissions = {});
