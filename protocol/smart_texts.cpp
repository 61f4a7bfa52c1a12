// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/smart_texts.h"

#include "protocol/payloads.h"

QVector<QByteArray> SmartTexts::update(const DeviceList &devices)
{
    QVector<QByteArray> texts;
    m_entries.resize(devices.size());
    for (int i = 0; i < devices.size(); ++i) {
        const QVector<AttributeEntry> &attributes = devices[i].smart.attributes;
        Entry &entry = m_entries[i];
        if (!entry.attributes.isSharedWith(attributes))
            entry = {attributes, payload::smartAttributes(i, attributes).toLatin1()};
        if (!entry.text.isEmpty())
            texts.append(entry.text);
    }
    return texts;
}
