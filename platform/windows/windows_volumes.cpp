// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_volumes.h"

#include "platform/bytes.h"
#include "platform/drive_requests.h"
#include "platform/windows/device_handle.h"
#include "platform/windows/wide_text.h"

#include <iterator>

namespace {

constexpr int kNameSize = 260;
constexpr int kLabelSize = 512;

} // namespace

QStringList WindowsVolumes::volumeNames()
{
    wchar_t name[kNameSize] = {};
    const HANDLE search = FindFirstVolumeW(name, kNameSize);
    if (search == INVALID_HANDLE_VALUE)
        return {};
    QStringList names;
    do
        names.append(QString::fromWCharArray(name));
    while (FindNextVolumeW(search, name, kNameSize));
    FindVolumeClose(search);
    return names;
}

quint32 WindowsVolumes::driveType(const QString &volumeOrLetter)
{
    return GetDriveTypeW(wide(volumeOrLetter));
}

std::optional<VolumeSpace> WindowsVolumes::space(const QString &volumeName)
{
    ULARGE_INTEGER total{};
    ULARGE_INTEGER free{};
    if (!GetDiskFreeSpaceExW(wide(volumeName), nullptr, &total, &free))
        return std::nullopt;
    return VolumeSpace{total.QuadPart, free.QuadPart};
}

std::optional<VolumeInformation> WindowsVolumes::information(const QString &volumeName)
{
    wchar_t label[kLabelSize] = {};
    wchar_t fileSystem[kNameSize] = {};
    DWORD serial = 0;
    if (!GetVolumeInformationW(wide(volumeName), label, kLabelSize, &serial, nullptr, nullptr, fileSystem,
                               kNameSize))
        return std::nullopt;
    return VolumeInformation{QString::fromWCharArray(label), QString::fromWCharArray(fileSystem),
                             quint32(serial)};
}

std::optional<qint32> WindowsVolumes::deviceNumber(const QString &devicePath)
{
    namespace layout = drive_request::device_number;
    const DeviceHandle device(devicePath);
    char answer[layout::kSize] = {};
    DWORD returned = 0;
    if (!device.isOpen() || !DeviceIoControl(device.get(), drive_request::kDeviceNumber, nullptr, 0, answer,
                                             sizeof(answer), &returned, nullptr))
        return std::nullopt;
    return qint32(ByteView(answer, int(returned)).le32(layout::kDeviceNumber));
}

quint32 WindowsVolumes::logicalDrives()
{
    return GetLogicalDrives();
}

std::optional<QString> WindowsVolumes::volumeNameAt(const QString &letterRoot)
{
    wchar_t name[kNameSize] = {};
    if (!GetVolumeNameForVolumeMountPointW(wide(letterRoot), name, kNameSize))
        return std::nullopt;
    return QString::fromWCharArray(name);
}
