// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/arguments.h"

#include <QString>

#include <optional>

/// A password as --password-file or --ask-password give it: `text` is nothing when neither was used.
struct Secret
{
    std::optional<QString> text;
    QString error; ///< not empty when it could not be had
};

/// With `isNeeded`, a person is asked when no option says where the password is.
[[nodiscard]] Secret obtainSecret(const Arguments &arguments, const QString &prompt, bool isNeeded = false);
