// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/simulated_drives.h"

#include "platform/drive_requests.h"
#include "platform/simulated/cancellation.h"
#include "platform/simulated/drive_answers.h"
#include "platform/simulated/image_file.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <thread>
#include <utility>

namespace {

bool touchesBadSector(const DriveState &drive, quint64 offset, int size)
{
    constexpr quint64 kBytesPerBadSector = 512;
    const quint64 first = offset / kBytesPerBadSector;
    const quint64 last = (offset + quint64(size) - 1) / kBytesPerBadSector;
    return std::any_of(drive.badSectors.cbegin(), drive.badSectors.cend(),
                       [=](const BadSectors &bad) { return bad.first <= last && first <= bad.last; });
}

/// Returns whether the command reaches the drive and wakes it.
bool wakes(quint32 code, ByteView input)
{
    const bool isCommand = code == drive_request::kAtaPassThrough || code == drive_request::kIdePassThrough ||
                           code == drive_request::kSmartReceiveData ||
                           code == drive_request::kSmartSendCommand || code == drive_request::kPredictFailure;
    return isCommand && requestedCommand(code, input) != AtaCommand::CheckPower;
}

/// An open handle. It holds only the number, so that changes and removal of the drive take effect.
class SimulatedDrive : public Drive
{
public:
    SimulatedDrive(std::shared_ptr<Machine> machine, std::shared_ptr<SimulatedPower> power, int number)
        : m_machine(std::move(machine))
        , m_power(std::move(power))
        , m_number(number)
    {}

    ControlReply control(quint32 code, ByteView input, MutableBytes output) override;
    ReadReply readAt(quint64 offset, MutableBytes buffer) override;
    void cancel() override { m_cancellation.cancel(); }

private:
    /// Returns false if the request never returns.
    [[nodiscard]] bool spend(const RequestCost &cost);
    [[nodiscard]] ReadReply readSectors(const DriveState &drive, quint64 offset, MutableBytes buffer);
    [[nodiscard]] bool readImage(const QString &path, quint64 offset, MutableBytes buffer);

    const std::shared_ptr<Machine> m_machine;
    const std::shared_ptr<SimulatedPower> m_power;
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
    const RequestCost cost = requestCost(*drive, code, input); // the answer may overwrite the input
    if (wakes(code, input))
        m_power->wake(machine, m_number);
    DriveState now = *drive;
    now.sleeping = m_power->isAsleep(machine, *drive);
    const ControlReply reply = answerRequest(now, code, input, output);
    // A request that the driver refuses never reaches the drive.
    if (!spend(reply.ok() ? cost : RequestCost()))
        return {system_error::kOperationAborted, 0};
    return reply;
}

bool SimulatedDrive::spend(const RequestCost &cost)
{
    if (cost.hangs)
        m_cancellation.waitForCancel();
    return m_cancellation.wait(std::chrono::milliseconds(cost.delayMs));
}

ReadReply SimulatedDrive::readAt(quint64 offset, MutableBytes buffer)
{
    const std::shared_ptr<const MachineState> machine = m_machine->state();
    const DriveState *drive = machine->drive(m_number);
    if (!drive)
        return {system_error::kDeviceNotConnected, 0};
    m_power->wake(machine, m_number);
    if (!spend({drive->readDelayMs, drive->hangs.contains(hang_name::kRead)}))
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

/// Fills the buffer from the image, and with zeros from the end of the image to the end of the drive.
bool SimulatedDrive::readImage(const QString &path, quint64 offset, MutableBytes buffer)
{
    const std::optional<int> bytesRead = m_image.open(path) ? m_image.readAt(offset, buffer) : std::nullopt;
    if (!bytesRead)
        return false;
    std::memset(buffer.data() + *bytesRead, 0, std::size_t(buffer.size() - *bytesRead));
    return true;
}

} // namespace

bool SimulatedPower::isAsleep(const std::shared_ptr<const MachineState> &machine, const DriveState &drive)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return drive.sleeping && m_woken[drive.number].lock() != machine;
}

void SimulatedPower::wake(const std::shared_ptr<const MachineState> &machine, int number)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_woken[number] = machine;
}

SimulatedDrives::SimulatedDrives(std::shared_ptr<Machine> machine)
    : m_machine(std::move(machine))
    , m_power(std::make_shared<SimulatedPower>())
{}

OpenReply SimulatedDrives::open(const QString &path)
{
    const int number = physicalDriveNumber(path);
    const std::shared_ptr<const MachineState> machine = m_machine->state();
    const DriveState *drive = machine->drive(number);
    if (!drive)
        return {nullptr, system_error::kFileNotFound};
    while (drive->hangs.contains(hang_name::kOpen))
        std::this_thread::sleep_for(std::chrono::hours(1));
    if (drive->openError != 0)
        return {nullptr, drive->openError};
    return {std::make_unique<SimulatedDrive>(m_machine, m_power, number), system_error::kNone};
}
