// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

namespace web {

/// Returns the dialogue with a mail server without the password, plain or as one of the login methods encodes
/// it. Lines that hold it are replaced as a whole.
[[nodiscard]] QString withoutCredentials(const QString &dialogue, const QString &password);

} // namespace web
