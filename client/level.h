// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

namespace client {

/// The service's rating of a drive, and the worst rating of all drives, as the protocol numbers them.
enum class Level {
    NotRated = 0,
    Fine = 1,
    Warning = 2,
    Critical = 3,
};

} // namespace client
