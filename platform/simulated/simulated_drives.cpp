// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/simulated_drives.h"

#include "platform/simulated/cancellation.h"
#include "platform/simulated/drive_answers.h"
#include "platform/simulated/image_file.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace {

/// The N of "\\.\PhysicalDriveN", in any case; -1 for any other path.
int driveNumber(const QString &path)
{
    static const QString kPrefix = QStringLiteral("\\\\.\\PhysicalDrive");
    if (!path.startsWith(kPrefix, Qt::CaseInsensitive))
        return -1;
    bool isNumber = false;
    const int number = path.mid(kPrefix.size()).toInt(&isNumber);
    const bool exact = isNumber && path.mid(kPrefix.size()) == QString::number(number);
    return exact ? number : -1;
}

bool touchesBadSector(const DriveState &drive, quint64 offset, int size)
{
    constexpr quint64 kBytesPerBadSector = 512;
    const quint64 first = offset / kBytesPerBadSector;
    const quint64 last = (offset + quint64(size) - 1) / kBytesPerBadSector;
    return std::any_of(drive.badSectors.cbegin(), drive.badSectors.cend(),
                       [=](const BadSectors &bad) { return bad.first <= last && first <= bad.last; });
}

/// An open handle. It holds the number only, so that it sees the drive change, and vanish.
class SimulatedDrive : public Drive
{
public:
    SimulatedDrive(std::shared_ptr<Machine> machine, int number)
        : m_machine(std::move(machine))
        , m_number(number)
    {}

    ControlReply control(quint32 code, ByteView input, MutableBytes output) override;
    ReadReply readAt(quint64 offset, MutableBytes buffer) override;
    void cancel() override { m_cancellation.cancel(); }

private:
    [[nodiscard]] ReadReply readSectors(const DriveState &drive, quint64 offset, MutableBytes buffer);
    [[nodiscard]] bool readImage(const QString &path, quint64 offset, MutableBytes buffer);

    const std::shared_ptr<Machine> m_machine;
    const int m_number;
    Cancellation m_cancellation;
    ImageFile m_image; ///< opened by the first read, and again when the drive gets another image
};

ControlReply SimulatedDrive::control(quint32 code, ByteView input, MutableBytes output)
{
    const std::shared_ptr<const MachineState> machine = m_machine->state();
    const DriveState *drive = machine->drive(m_number);
    if (!drive)
        return {system_error::kDeviceNotConnected, 0};
    const std::chrono::milliseconds delay(requestDelayMs(*drive, code, input)); // the answer may overwrite it
    const ControlReply reply = answerRequest(*drive, code, input, output);
    // A request that the driver refuses never gets to the drive.
    if (!m_cancellation.wait(reply.ok() ? delay : std::chrono::milliseconds(0)))
        return {system_error::kOperationAborted, 0};
    return reply;
}

ReadReply SimulatedDrive::readAt(quint64 offset, MutableBytes buffer)
{
    const std::shared_ptr<const MachineState> machine = m_machine->state();
    const DriveState *drive = machine->drive(m_number);
    if (!drive)
        return {system_error::kDeviceNotConnected, 0};
    if (!m_cancellation.wait(std::chrono::milliseconds(drive->readDelayMs)))
        return {system_error::kOperationAborted, 0};
    return readSectors(*drive, offset, buffer);
}

ReadReply SimulatedDrive::readSectors(const DriveState &drive, quint64 offset, MutableBytes buffer)
{
    const quint64 end = drive.capacityBytes - drive.capacityBytes % drive.bytesPerSector;
    if (offset % drive.bytesPerSector != 0 || quint32(buffer.size()) % drive.bytesPerSector != 0)
        return {system_error::kInvalidParameter, 0};
    if (buffer.size() == 0)
        return {};
    if (offset >= end)
        return {system_error::kSectorNotFound, 0};
    const int size = int(std::min(quint64(buffer.size()), end - offset));
    if (touchesBadSector(drive, offset, size))
        return {system_error::kCrc, 0};
    if (drive.image.isEmpty())
        std::memset(buffer.data(), 0, std::size_t(size));
    else if (!readImage(drive.image, offset, MutableBytes(buffer.data(), size)))
        return {system_error::kIoDevice, 0};
    return {system_error::kNone, size};
}

/// Fills the buffer from the image, and with zero bytes where the image ends before the drive does.
bool SimulatedDrive::readImage(const QString &path, quint64 offset, MutableBytes buffer)
{
    const std::optional<int> bytesRead = m_image.open(path) ? m_image.readAt(offset, buffer) : std::nullopt;
    if (!bytesRead)
        return false;
    std::memset(buffer.data() + *bytesRead, 0, std::size_t(buffer.size() - *bytesRead));
    return true;
}

} // namespace

SimulatedDrives::SimulatedDrives(std::shared_ptr<Machine> machine)
    : m_machine(std::move(machine))
{}

OpenReply SimulatedDrives::open(const QString &path)
{
    const int number = driveNumber(path);
    const std::shared_ptr<const MachineState> machine = m_machine->state();
    const DriveState *drive = machine->drive(number);
    if (!drive)
        return {nullptr, system_error::kFileNotFound};
    if (drive->openError != 0)
        return {nullptr, drive->openError};
    return {std::make_unique<SimulatedDrive>(m_machine, number), system_error::kNone};
}
