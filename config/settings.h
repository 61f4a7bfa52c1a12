// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "wire/service_settings.h"

#include <QString>

/// Everything that can be set, and the service-wide alert level. One instance, owned by the program entry;
/// the event loop's thread alone touches it.
struct Settings : ServiceSettings
{
    /// Replaces the settings that consoles may set.
    void set(const ServiceSettings &settings) { ServiceSettings::operator=(settings); }

    qint32 alertLevel = 0; ///< see namespace level; not stored
    QString versionText = QStringLiteral("Halvex Service v 5.0.5");
    QString programDirectory = QStringLiteral("C:/"); ///< ends with a separator
};
