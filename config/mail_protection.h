// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"

/// Returns `change` as ProtectMail allows it: a console of the network cannot change how mail is sent, and an
/// empty password of a local one keeps the present password.
[[nodiscard]] ServiceSettings withMailProtected(ServiceSettings change, const ServiceSettings &present,
                                                bool isLocal);
