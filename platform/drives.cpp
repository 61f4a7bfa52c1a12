// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/drives.h"

namespace {

const QLatin1String kPrefix("\\\\.\\PhysicalDrive");

} // namespace

QString physicalDrivePath(int number)
{
    return kPrefix + QString::number(number);
}

int physicalDriveNumber(const QString &path)
{
    if (!path.startsWith(kPrefix, Qt::CaseInsensitive))
        return -1;
    bool isNumber = false;
    const int number = path.midRef(kPrefix.size()).toInt(&isNumber);
    const bool isExact = isNumber && path.midRef(kPrefix.size()) == QString::number(number);
    return isExact ? number : -1;
}
