// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/storage_descriptor.h"

#include "fuzz/fuzz_input.h"

#include <QList>
#include <QtEndian>

namespace {

/// Returns the string at the offset in `field` by the rule: after the fixed part and inside the answer.
QByteArray plainString(const QByteArray &answer, int field)
{
    if (field + 4 > answer.size())
        return {};
    const qint64 offset = qFromLittleEndian<quint32>(answer.constData() + field);
    if (offset < 29 || offset >= answer.size())
        return {};
    return answer.mid(int(offset)).split('\0').first();
}

} // namespace

void fuzz(const QByteArray &answer)
{
    const StorageDescriptor descriptor = storage_descriptor::parse(ByteView(answer));
    require(descriptor.vendor == plainString(answer, 12));
    require(descriptor.product == plainString(answer, 16));
    require(descriptor.revision == plainString(answer, 20));
    require(descriptor.serial == plainString(answer, 24));
    require(descriptor.model().size() <= descriptor.vendor.size() + 1 + descriptor.product.size());
}
