// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// Returns the path of a file in the program directory, which ends with a separator. The path's separator is
/// "/" on every system.
[[nodiscard]] inline QString pathIn(const QString &directory, const QString &fileName)
{
    return QString(directory).replace(u'\\', u'/') + fileName;
}
