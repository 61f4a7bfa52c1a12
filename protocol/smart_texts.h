// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"

#include <QByteArray>
#include <QVector>

/// Keeps the text of each drive's attributes, as the reply about all drives contains it, until they change.
class SmartTexts
{
public:
    /// Returns one text for each drive with attributes, in list order.
    [[nodiscard]] QVector<QByteArray> update(const DeviceList &devices);

private:
    struct Entry
    {
        QVector<AttributeEntry> attributes; ///< shares its data with the record's while that does not change
        QByteArray text;
    };

    QVector<Entry> m_entries; ///< in list order
};
