// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/inventory.h"
#include "console/render/style.h"
#include "console/render/table.h"

namespace render {

/// "fine", "warning", "critical"; "not rated" for 0.
[[nodiscard]] QString levelText(qint32 level);
[[nodiscard]] Colour levelColour(qint32 level);

/// The cells that tables of drives have in common.
[[nodiscard]] Cell levelCell(const client::Drive &drive);
[[nodiscard]] Cell healthCell(const client::Drive &drive);
[[nodiscard]] Cell temperatureCell(const client::Drive &drive);

} // namespace render
