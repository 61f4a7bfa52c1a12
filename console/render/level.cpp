// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/level.h"

namespace render {

QString levelText(qint32 level)
{
    switch (level) {
    case 1:
        return QStringLiteral("fine");
    case 2:
        return QStringLiteral("warning");
    case 3:
        return QStringLiteral("critical");
    default:
        return QStringLiteral("not rated");
    }
}

Colour levelColour(qint32 level)
{
    switch (level) {
    case 1:
        return Colour::Good;
    case 2:
        return Colour::Warning;
    case 3:
        return Colour::Bad;
    default:
        return Colour::Dim;
    }
}

Cell levelCell(const client::Drive &drive)
{
    const qint32 level = drive.isRated() ? drive.statusLevel : 0;
    return {levelText(level), levelColour(level)};
}

Cell healthCell(const client::Drive &drive)
{
    if (!drive.isRated())
        return {QStringLiteral("-"), Colour::Dim};
    return {QStringLiteral("%1 %").arg(drive.health), Colour::Plain};
}

Cell temperatureCell(const client::Drive &drive)
{
    if (!drive.hasTemperature)
        return {QStringLiteral("-"), Colour::Dim};
    return {QStringLiteral("%1 °C").arg(drive.temperature), Colour::Plain};
}

} // namespace render
