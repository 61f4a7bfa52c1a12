// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/storage_descriptor.h"

#include "platform/drive_requests.h"

#include <algorithm>

namespace {

namespace layout = drive_request::descriptor;

constexpr quint32 kOutputSize = 4096;

/// Lowest offset of a string: after the first byte of the bus type.
constexpr quint32 kFirstStringOffset = layout::kBusType + 1;

QByteArray stringAt(ByteView answer, int offsetField)
{
    const quint32 offset = answer.le32(offsetField);
    if (offset < kFirstStringOffset || offset >= quint32(answer.size()))
        return {};
    const ByteView rest = answer.mid(int(offset), answer.size());
    const char *const end = std::find(rest.data(), rest.data() + rest.size(), '\0');
    return QByteArray(rest.data(), int(end - rest.data()));
}

} // namespace

QString StorageDescriptor::model() const
{
    const QByteArray productText = product.trimmed();
    return QString::fromLatin1(vendor.isEmpty() ? productText : vendor.trimmed() + ' ' + productText);
}

StorageDescriptor storage_descriptor::parse(ByteView answer)
{
    return {stringAt(answer, layout::kVendorIdOffset), stringAt(answer, layout::kProductIdOffset),
            stringAt(answer, layout::kProductRevisionOffset), stringAt(answer, layout::kSerialNumberOffset)};
}

std::optional<StorageDescriptor> storage_descriptor::query(Drive &drive)
{
    // Property and query type are both 0: the device's own descriptor, in its standard form.
    const QByteArray question(layout::kQuerySize, '\0');
    QByteArray output(kOutputSize, '\0');
    const ControlReply reply =
        drive.control(drive_request::kQueryProperty, ByteView(question), MutableBytes(output));
    if (!reply.ok())
        return std::nullopt;
    return parse(ByteView(output).mid(0, int(std::min(reply.bytesReturned, kOutputSize))));
}
