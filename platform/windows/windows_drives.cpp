// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_drives.h"

#include "platform/drive_requests.h"
#include "platform/windows/ata_header.h"
#include "platform/windows/device_handle.h"

#include <atomic>
#include <utility>
#include <windows.h>
#include <winioctl.h>

namespace {

class WindowsDrive : public Drive
{
public:
    explicit WindowsDrive(std::unique_ptr<DeviceHandle> device)
        : m_device(std::move(device))
    {}

    ControlReply control(quint32 code, ByteView input, MutableBytes output) override;
    ReadReply readAt(quint64 offset, MutableBytes buffer) override;
    void cancel() override;

private:
    ControlReply send(quint32 code, ByteView input, MutableBytes output);
    ControlReply sendWidened(quint32 code, ByteView input, MutableBytes output);
    ControlReply partition(ByteView input, MutableBytes output);
    bool isGpt();

    /// Carries out one system call, unless cancelled. Returns the system error.
    template <typename Call>
    quint32 carryOut(Call call);

    std::unique_ptr<DeviceHandle> m_device;
    // Each side sets its own flag before it reads the other's, so that no request escapes a cancel.
    std::atomic_bool m_isBusy = false;
    std::atomic_bool m_isCancelled = false;
};

template <typename Call>
quint32 WindowsDrive::carryOut(Call call)
{
    m_isBusy = true;
    quint32 error = system_error::kOperationAborted;
    if (!m_isCancelled)
        error = call() ? system_error::kNone : quint32(GetLastError());
    m_isBusy = false;
    return error;
}

ControlReply WindowsDrive::control(quint32 code, ByteView input, MutableBytes output)
{
    constexpr bool is64Bit = sizeof(void *) == 8;
    if (is64Bit && code == drive_request::kAtaPassThrough)
        return sendWidened(code, input, output);
    return code == drive_request::kPartitionInfo ? partition(input, output) : send(code, input, output);
}

ControlReply WindowsDrive::send(quint32 code, ByteView input, MutableBytes output)
{
    DWORD returned = 0;
    const quint32 error = carryOut([&] {
        // The input is only read; the system's declaration lacks the const.
        return DeviceIoControl(m_device->get(), code, const_cast<char *>(input.data()), DWORD(input.size()),
                               output.data(), DWORD(output.size()), &returned, nullptr);
    });
    return {error, returned};
}

ControlReply WindowsDrive::sendWidened(quint32 code, ByteView input, MutableBytes output)
{
    QByteArray request = ata_header::widened(input);
    QByteArray answer(output.size() + ata_header::kWideGrowth, '\0');
    ControlReply reply = send(code, ByteView(request), MutableBytes(answer));
    const ByteView written(answer.constData(), int(std::min(reply.bytesReturned, quint32(answer.size()))));
    const QByteArray narrow = ata_header::narrowed(written);
    output.copyIn(0, ByteView(narrow));
    reply.bytesReturned = quint32(narrow.size());
    return reply;
}

/// The system answers this request only for disks with a classic partition table. Every disk above 2 TiB, and
/// every UEFI boot disk, has a GUID partition table: for these the disk's length is the answer.
ControlReply WindowsDrive::partition(ByteView input, MutableBytes output)
{
    const ControlReply reply = send(drive_request::kPartitionInfo, input, output);
    if (reply.ok() || output.size() < drive_request::partition::kSize || !isGpt())
        return reply;
    QByteArray length(int(sizeof(GET_LENGTH_INFORMATION)), '\0');
    const ControlReply lengthReply = send(IOCTL_DISK_GET_LENGTH_INFO, ByteView(), MutableBytes(length));
    if (!lengthReply.ok())
        return reply;
    output.copyIn(0, ByteView(QByteArray(drive_request::partition::kSize, '\0')));
    output.setLe64(drive_request::partition::kLength, ByteView(length).le64(0));
    return {system_error::kNone, drive_request::partition::kSize};
}

bool WindowsDrive::isGpt()
{
    QByteArray information(int(sizeof(PARTITION_INFORMATION_EX)), '\0');
    const ControlReply reply = send(IOCTL_DISK_GET_PARTITION_INFO_EX, ByteView(), MutableBytes(information));
    return reply.ok() && ByteView(information).le32(0) == quint32(PARTITION_STYLE_GPT); // its first member
}

ReadReply WindowsDrive::readAt(quint64 offset, MutableBytes buffer)
{
    OVERLAPPED position{};
    position.Offset = DWORD(offset);
    position.OffsetHigh = DWORD(offset >> 32);
    DWORD read = 0;
    const quint32 error = carryOut(
        [&] { return ReadFile(m_device->get(), buffer.data(), DWORD(buffer.size()), &read, &position); });
    return {error, int(read)};
}

void WindowsDrive::cancel()
{
    // A request that has passed the check of m_isCancelled may not have reached the system yet.
    constexpr int kTries = 100;
    m_isCancelled = true;
    for (int i = 0; i < kTries && m_isBusy && !CancelIoEx(m_device->get(), nullptr); ++i)
        Sleep(1);
}

} // namespace

OpenReply WindowsDrives::open(const QString &path)
{
    auto device = std::make_unique<DeviceHandle>(path);
    if (!device->isOpen())
        return {nullptr, quint32(GetLastError())};
    return {std::make_unique<WindowsDrive>(std::move(device)), system_error::kNone};
}
