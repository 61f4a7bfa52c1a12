// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

/// The name of the socket or pipe on which the service accepts consoles of its machine.
inline constexpr char kLocalServiceName[] = "HalvexService001";
