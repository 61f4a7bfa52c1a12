// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/ata_smart.h"

#include "disk/detection.h"
#include "disk/logging.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

/// Returns a read that identifies the drive. It also reads the S.M.A.R.T. data, unless the request needs the
/// drive's place in the device list.
SmartRead probeOf(int number)
{
    SmartRead read;
    read.path = physicalDrivePath(number);
    read.index = number;
    read.probeNumber = number;
    read.identify = true;
    return read;
}

/// Returns a full read by the method that identified the drive.
SmartRead fullReadOf(const DetectedDrive &device, int index)
{
    SmartRead read;
    read.path = device.path;
    read.index = index;
    read.driveNumber = index;
    read.probeNumber = device.probeNumber;
    read.method = device.accessMethod;
    return read;
}

QString nameOf(const DetectedDrive &drive)
{
    return QStringList{QStringLiteral("Drive"), drive.path, drive.model, drive.serial}.join(QLatin1Char(' '));
}

/// Returns whether a request has hung.
bool didNotReturn(const DriveReading &reading)
{
    return reading.error == system_error::kSemTimeout || reading.error == system_error::kBusy;
}

} // namespace

ATA_Smart::ATA_Smart(DriveSystem &drives, Workers &workers, bool leavesAsleep, QObject *parent)
    : QObject(parent)
    , m_drives(drives)
    , m_workers(workers)
    , m_leavesAsleep(leavesAsleep)
{}

void ATA_Smart::detectDevices()
{
    abandonReaders();
    m_deadline.setRemainingTime(m_workers.limits().request);
    m_found.assign(detection::kDetectedNumbers, std::nullopt);
    m_runningReaders = detection::kDetectedNumbers;
    const auto rescan = std::make_shared<std::once_flag>();
    for (int number = 0; number < detection::kDetectedNumbers; ++number) {
        SmartRead read = probeOf(number);
        read.rescan = rescan;
        const auto found = [this, number](const DriveReading &reading) {
            m_found[std::size_t(number)] = reading;
            S_thread_terminated();
        };
        startReader(read, found, m_workers.limits().request);
    }
}

void ATA_Smart::readDrives(bool force, std::function<void(const Readings &)> done)
{
    std::vector<std::optional<SmartRead>> reads;
    for (int i = 0; i < m_devices.size(); ++i)
        reads.push_back(readOf(i, force));
    readAll(reads, std::move(done));
}

/// Returns what to read of the drive; nullopt if this poll leaves it out.
std::optional<SmartRead> ATA_Smart::readOf(int index, bool force) const
{
    const DeviceRecord &device = m_devices.at(index);
    SmartRead read = fullReadOf(device, index);
    read.thresholds = device.smart.fullRead != FullRead::Attributes;
    read.leaveAsleep = m_leavesAsleep && !force;
    read.identify = device.smart.fullRead == FullRead::Never || device.accessMethod == AccessMethod::None;
    const bool isRead = device.smart.fullRead == FullRead::Attributes
                            ? force || device.monitored != 0
                            : !force && device.monitored != 0 && read.identify;
    return isRead ? std::make_optional(read) : std::nullopt;
}

void ATA_Smart::apply(const Readings &readings)
{
    for (int i = 0; i < m_devices.size(); ++i) {
        if (const std::optional<DriveReading> &reading = readings[std::size_t(i)])
            applyReading(m_devices[i], *reading);
    }
}

void ATA_Smart::applyReading(DeviceRecord &device, const DriveReading &reading)
{
    if (reading.device && (reading.sectors || device.accessMethod == AccessMethod::None))
        static_cast<DetectedDrive &>(device) = *reading.device;
    if (reading.isAsleep) {
        device.smart.lastRead = LastRead::Asleep;
        return;
    }
    if (!reading.sectors) {
        device.smart.lastRead = LastRead::Failed;
        if (device.smart.fullRead == FullRead::Attributes || reading.error != system_error::kNotSupported)
            m_faults.failed(device.path, nameOf(device), reading.error);
        return;
    }
    if (reading.sectors->thresholds.isEmpty())
        smart_sectors::applySynchronousRead(device, ByteView(reading.sectors->data));
    else
        smart_sectors::applyFullRead(device, *reading.sectors);
    device.smart.lastRead = LastRead::Answered;
    m_faults.answered(device.path);
}

void ATA_Smart::countDrives(std::function<void(int present, bool changed)> done)
{
    std::vector<std::optional<SmartRead>> reads(detection::kDetectedNumbers);
    const auto rescan = std::make_shared<std::once_flag>();
    for (int number = 0; number < detection::kDetectedNumbers; ++number) {
        if (number >= detection::kCountedNumbers && !listed(number))
            continue;
        SmartRead read = probeOf(number);
        read.data = false;
        read.rescan = rescan;
        reads[std::size_t(number)] = read;
    }
    readAll(reads, [this, done = std::move(done)](const Readings &probes) {
        int present = 0;
        bool hasNew = false; // a swapped drive may have a number of its own
        for (int number = 0; number < detection::kCountedNumbers; ++number) {
            const DriveReading &probe = *probes[std::size_t(number)];
            present += probe.isFixedDisk || (didNotReturn(probe) && listed(number)) ? 1 : 0;
            hasNew = hasNew || (probe.isFixedDisk && !listed(number));
        }
        done(present, present != m_devices.size() || hasNew || !areSameDrives(probes));
    });
}

bool ATA_Smart::areSameDrives(const Readings &probes) const
{
    return std::all_of(m_devices.cbegin(), m_devices.cend(), [&probes](const DeviceRecord &device) {
        const DriveReading &probe = *probes[std::size_t(device.probeNumber)];
        return !probe.device || didNotReturn(probe) || detection::isSameDrive(device, *probe.device);
    });
}

/// Returns null if no listed drive has this number.
const DeviceRecord *ATA_Smart::listed(int probeNumber) const
{
    const auto device =
        std::find_if(m_devices.cbegin(), m_devices.cend(), [probeNumber](const DeviceRecord &candidate) {
            return candidate.probeNumber == probeNumber;
        });
    return device == m_devices.cend() ? nullptr : &*device;
}

void ATA_Smart::terminate_S_thread(int i)
{
    finishReader(i, WorkEnd::TimedOut);
    m_workers.abandon(i);
}

void ATA_Smart::finishedReadSMART(int i)
{
    finishReader(i, WorkEnd::Done);
}

void ATA_Smart::stopTimer(int i)
{
    m_workers.stopLimit(i);
}

void ATA_Smart::S_thread_terminated()
{
    if (--m_runningReaders > 0)
        return;
    if (!m_found.empty())
        listFoundDrives();
    if (m_runningReaders > 0)
        return; // drives whose requests need their place in the list
    m_devices = std::exchange(m_detected, {});
    Q_EMIT finishedScanSMART();
}

/// Fills the new device list, in the order of the numbers.
void ATA_Smart::listFoundDrives()
{
    const Readings found = std::exchange(m_found, {});
    for (int number = 0; number < detection::kDetectedNumbers; ++number) {
        DriveReading reading = *found[std::size_t(number)];
        const DeviceRecord *const former = listed(number);
        if (!reading.device && reading.error == system_error::kBusy && former)
            reading.device = *former; // a drive that hangs keeps its place
        if (reading.device)
            listDrive(reading);
        else if (didNotReturn(reading))
            m_faults.failed(physicalDrivePath(number), QStringLiteral("Drive ") + physicalDrivePath(number),
                            reading.error);
    }
}

void ATA_Smart::listDrive(const DriveReading &reading)
{
    const int index = m_detected.size();
    DeviceRecord device;
    static_cast<DetectedDrive &>(device) = *reading.device;
    m_detected.append(device);
    if (reading.sectors || reading.error != system_error::kNone) {
        applyReading(m_detected[index], reading);
        return;
    }
    if (m_deadline.hasExpired())
        return; // another drive hangs; hasUnreadDrives() reports this one
    ++m_runningReaders;
    const auto done = [this, index](const DriveReading &read) {
        applyReading(m_detected[index], read);
        S_thread_terminated();
    };
    startReader(fullReadOf(device, index), done, std::chrono::milliseconds(m_deadline.remainingTime()));
}

bool ATA_Smart::hasUnreadDrives() const
{
    return std::any_of(m_devices.cbegin(), m_devices.cend(),
                       [](const DeviceRecord &device) { return device.smart.lastRead == LastRead::None; });
}

/// Starts a reader, or adds `done` to an equal read that has not started yet.
void ATA_Smart::startReader(const SmartRead &read, Done done, std::chrono::milliseconds limit)
{
    for (auto &[number, reader] : m_readers) {
        if (reader.thread->task() == read && m_workers.isWaiting(number)) {
            reader.done.push_back(std::move(done));
            return;
        }
    }
    auto thread = std::make_unique<SMART_thread>(m_drives, read);
    SMART_thread *const reader = thread.get();
    const int number =
        m_workers.start(std::move(thread), limit, [this](int work, WorkEnd end) { finishReader(work, end); });
    m_readers[number] = {reader, {std::move(done)}};
}

/// Starts the reads at the same time; passes their results when the last is done.
void ATA_Smart::readAll(const std::vector<std::optional<SmartRead>> &reads,
                        std::function<void(const Readings &)> done)
{
    struct Batch
    {
        Readings readings;
        int running;
        std::function<void(const Readings &)> done;
    };
    const auto running =
        std::count_if(reads.cbegin(), reads.cend(), [](const auto &read) { return bool(read); });
    const auto batch = std::make_shared<Batch>(Batch{Readings(reads.size()), int(running), std::move(done)});
    if (running == 0)
        QMetaObject::invokeMethod(
            this, [batch] { batch->done(batch->readings); }, Qt::QueuedConnection);
    for (std::size_t i = 0; i < reads.size(); ++i) {
        if (!reads[i])
            continue;
        const auto store = [batch, i](const DriveReading &reading) {
            batch->readings[i] = reading;
            if (--batch->running == 0)
                batch->done(batch->readings);
        };
        startReader(*reads[i], store, m_workers.limits().request);
    }
}

void ATA_Smart::abandonReaders()
{
    for (const auto &[number, reader] : std::exchange(m_readers, {}))
        m_workers.abandon(number);
    m_detected.clear();
}

/// Does nothing for a reader that is done or was abandoned.
void ATA_Smart::finishReader(int reader, WorkEnd end)
{
    const auto found = m_readers.find(reader);
    if (found == m_readers.end())
        return;
    DriveReading reading = found->second.thread->reading();
    if (end != WorkEnd::Done)
        reading.error = end == WorkEnd::Hung ? system_error::kBusy : system_error::kSemTimeout;
    const std::vector<Done> receivers = std::move(found->second.done);
    m_readers.erase(found);
    for (const Done &done : receivers)
        done(reading);
}
