// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/inventory.h"

#include <QStringList>

namespace web::metrics {

/// Returns ata-MODEL_SERIAL with "_" for every character outside A-Za-z0-9._-.
[[nodiscard]] QString deviceName(const QString &model, const QString &serial);

/// Returns the device name of each drive, with -N (its index) after a name that several of them share.
[[nodiscard]] QStringList deviceNames(const QVector<client::Drive> &drives);

} // namespace web::metrics
