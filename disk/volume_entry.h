// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QVector>

/// A fixed volume as the last enumeration found it.
struct VolumeEntry
{
    qint32 ordinal = 0;       ///< place in the system's enumeration, which counts volumes of every type
    QString volumeName;       ///< with its trailing backslash
    QString root;             ///< "C:\", or a running number if the volume has no letter
    QString label;            ///< empty when unknown
    QString fileSystem;       ///< "Unknown" when unknown
    QString volumeSerial;     ///< "1234-ABCD"; empty when unknown
    qint32 deviceNumber = -1; ///< the disk it lies on; -1 when unknown
    quint64 totalBytes = 0;
    quint64 freeBytes = 0;
};

using VolumeList = QVector<VolumeEntry>;
