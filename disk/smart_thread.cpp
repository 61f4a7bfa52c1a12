// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_thread.h"

#include "disk/detection.h"
#include "disk/exchange.h"

#include <tuple>
#include <utility>

namespace {

exchange::Outcome readSector(Drive &drive, AccessMethod method, int driveNumber,
                             exchange::Registers registers, QByteArray &sector)
{
    sector.fill('\0', ata::kSectorSize);
    switch (method) {
    case AccessMethod::AtaPassThrough:
        return exchange::ataPassThrough(drive, registers, MutableBytes(sector));
    case AccessMethod::SmartDriveData:
        return exchange::smartDriveCommand(drive, driveNumber, registers, MutableBytes(sector));
    case AccessMethod::IdePassThrough:
        return exchange::idePassThrough(drive, registers, MutableBytes(sector));
    case AccessMethod::StorageDescriptor:
        return exchange::predictFailure(drive, MutableBytes(sector));
    case AccessMethod::None:
        break;
    }
    return {}; // no request: an empty attribute table
}

/// A failure prediction does not contain thresholds.
bool hasThresholds(AccessMethod method)
{
    return method != AccessMethod::StorageDescriptor && method != AccessMethod::None;
}

} // namespace

bool operator==(const SmartRead &left, const SmartRead &right)
{
    const auto values = [](const SmartRead &read) {
        return std::tie(read.path, read.index, read.driveNumber, read.identify, read.probeNumber, read.method,
                        read.data, read.thresholds, read.leaveAsleep, read.rescan);
    };
    return values(left) == values(right);
}

SMART_thread::SMART_thread(DriveSystem &drives, SmartRead read)
    : DriveWorker(drives, read.path)
    , m_read(std::move(read))
{}

DriveReading SMART_thread::reading() const
{
    const QMutexLocker lock(&m_mutex);
    return m_reading;
}

void SMART_thread::run()
{
    if (m_read.rescan)
        std::call_once(*m_read.rescan, [this] { drives().rescan(); });
    DriveWorker::run();
}

void SMART_thread::work(Drive *drive, quint32 openError)
{
    DriveReading reading;
    reading.error = openError;
    if (drive)
        read(*drive, reading);
    publish(reading);
    Q_EMIT needStopTimer(m_read.index);
    Q_EMIT finishReadSMART(m_read.index);
}

void SMART_thread::read(Drive &drive, DriveReading &reading)
{
    reading.isAsleep = m_read.leaveAsleep && exchange::isInStandby(drive);
    if (reading.isAsleep)
        return;
    if (m_read.identify && !identify(drive, reading))
        return;
    const AccessMethod method = m_read.identify ? reading.device->accessMethod : m_read.method;
    if (!m_read.data || (method == AccessMethod::SmartDriveData && m_read.driveNumber < 0))
        return;
    SmartSectors sectors;
    const exchange::Outcome outcome =
        readSector(drive, method, m_read.driveNumber, exchange::smartReadData(), sectors.data);
    if (!outcome) {
        reading.error = outcome.failure();
        return;
    }
    if (m_read.thresholds) {
        sectors.thresholds.fill('\0', ata::kSectorSize);
        reading.sectors = sectors;
        publish(reading); // thresholds that fail, or do not return, count as 0
        QByteArray thresholds;
        if (hasThresholds(method) &&
            readSector(drive, method, m_read.driveNumber, exchange::smartReadThresholds(), thresholds))
            sectors.thresholds = thresholds;
    }
    reading.sectors = sectors;
}

/// Returns whether the drive can be listed. Each step is published, because the next may never return.
bool SMART_thread::identify(Drive &drive, DriveReading &reading)
{
    DetectedDrive device;
    device.path = m_read.path;
    device.probeNumber = m_read.probeNumber;
    const Result<void, quint32> basics = detection::readBasics(drive, device);
    reading.isFixedDisk = detection::isFixedDisk(device);
    if (!basics || !reading.isFixedDisk) {
        reading.error = basics ? system_error::kNotSupported : basics.failure();
        return false;
    }
    reading.device = device;
    publish(reading);
    const std::optional<StorageDescriptor> descriptor = detection::describe(drive, device);
    reading.device = device;
    publish(reading);
    if (!m_read.data && !device.descriptorSerial.isEmpty())
        return true; // the drive remains asleep
    detection::identify(drive, descriptor, device);
    reading.device = device;
    publish(reading);
    return true;
}

void SMART_thread::publish(const DriveReading &reading)
{
    const QMutexLocker lock(&m_mutex);
    m_reading = reading;
}
