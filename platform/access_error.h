// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// Why a file, or the service's key, could not be accessed.
struct AccessError
{
    enum class Kind {
        Missing, ///< nothing has this name
        Failed,  ///< something has this name, or may have it: its content is not known
    };

    Kind kind = Kind::Failed;
    QString text; ///< the reason, for a person
};
