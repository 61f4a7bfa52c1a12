// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/ata_smart.h"

#include "disk/detection.h"
#include "disk/logging.h"
#include "disk/smart_sectors.h"

#include <algorithm>

ATA_Smart::ATA_Smart(DriveSystem &drives, QObject *parent)
    : QObject(parent)
    , m_drives(drives)
{}

ATA_Smart::~ATA_Smart()
{
    endReaders();
    for (std::unique_ptr<SMART_thread> &thread : m_leftBehind) {
        if (!thread->isFinished())
            Q_UNUSED(thread.release()); // a running QThread must not be destroyed
    }
}

void ATA_Smart::detectDevices()
{
    endReaders();
    m_givenUp.clear();
    m_devices = detection::detect(m_drives);
}

void ATA_Smart::setTimeLimits(std::chrono::milliseconds read, std::chrono::milliseconds end)
{
    m_readLimit = read;
    m_endLimit = end;
}

int ATA_Smart::countFixedDrives()
{
    return detection::countFixedDrives(m_drives);
}

void ATA_Smart::startReaders()
{
    endReaders();
    if (m_devices.isEmpty()) {
        const auto finish = [this, generation = m_generation] {
            if (generation == m_generation)
                Q_EMIT finishedScanSMART();
        };
        QMetaObject::invokeMethod(this, finish, Qt::QueuedConnection);
        return;
    }
    for (int i = 0; i < m_devices.size(); ++i)
        startReader(i);
}

void ATA_Smart::startReader(int index)
{
    const DeviceRecord &device = m_devices.at(index);
    Reader reader;
    reader.thread =
        std::make_unique<SMART_thread>(m_drives, SmartRead{device.path, index, device.accessMethod});
    reader.watchdog = new SMART_timer(index, this);
    connect(reader.watchdog, &SMART_timer::needTerminated, this, &ATA_Smart::terminate_S_thread);
    connect(reader.thread.get(), &SMART_thread::finishReadSMART, this,
            [this, generation = m_generation](int i) {
                if (generation == m_generation)
                    finishedReadSMART(i);
            });
    reader.thread->start();
    reader.watchdog->start(m_readLimit);
    ++m_runningReaders;
    m_readers.push_back(std::move(reader));
}

void ATA_Smart::endReaders()
{
    ++m_generation;
    m_runningReaders = 0;
    for (const Reader &reader : m_readers) {
        reader.watchdog->stop();
        reader.watchdog->deleteLater(); // this may be a slot that its timeout has called
        reader.thread->cancel();
    }
    const QDeadlineTimer deadline(m_endLimit);
    for (Reader &reader : m_readers)
        letGo(std::move(reader.thread), deadline);
    m_readers.clear();
}

bool ATA_Smart::leftThreadsBehind() const
{
    return std::any_of(m_leftBehind.cbegin(), m_leftBehind.cend(),
                       [](const auto &thread) { return !thread->isFinished(); });
}

void ATA_Smart::terminate_S_thread(int i)
{
    Reader *const reader = readerUnderWay(i);
    if (reader == nullptr)
        return;
    qCWarning(lcDisk) << reader->thread->path() << "does not bring its S.M.A.R.T. data and is given up";
    reader->isDone = true;
    reader->watchdog->stop();
    reader->thread->cancel();
    S_thread_terminated();
}

void ATA_Smart::S_thread_terminated()
{
    if (--m_runningReaders == 0)
        Q_EMIT finishedScanSMART();
}

void ATA_Smart::finishedReadSMART(int i)
{
    Reader *const reader = readerUnderWay(i);
    if (reader == nullptr)
        return;
    reader->isDone = true;
    reader->watchdog->stop();
    if (const std::optional<SmartSectors> sectors = reader->thread->takeSectors())
        smart_sectors::applyFullRead(m_devices[i], *sectors);
    else
        qCDebug(lcDisk) << reader->thread->path() << "has no S.M.A.R.T. data to give";
    S_thread_terminated();
}

void ATA_Smart::stopTimer(int i)
{
    if (Reader *const reader = readerUnderWay(i))
        reader->watchdog->stop();
}

/// Null when there is no such reader, or when it is done: a finish that was queued when the watchdog gave the
/// reader up comes too late.
ATA_Smart::Reader *ATA_Smart::readerUnderWay(int index)
{
    if (index < 0 || std::size_t(index) >= m_readers.size() || m_readers[std::size_t(index)].isDone)
        return nullptr;
    return &m_readers[std::size_t(index)];
}

void ATA_Smart::readSynchronously(bool force)
{
    for (int i = 0; i < m_devices.size(); ++i) {
        DeviceRecord &device = m_devices[i];
        if (device.smartState < 1 || (device.monitored == 0 && !force))
            continue;
        if (const std::optional<SmartSectors> sectors = readNow(i))
            smart_sectors::applySynchronousRead(device, ByteView(sectors->data));
    }
}

/// The data sector alone. A thread reads it, so that a drive that hangs costs its time limit and no more.
std::optional<SmartSectors> ATA_Smart::readNow(int index)
{
    const DeviceRecord &device = m_devices.at(index);
    if (isHung(device.path))
        return std::nullopt; // or each poll would leave one more thread behind
    auto thread =
        std::make_unique<SMART_thread>(m_drives, SmartRead{device.path, index, device.accessMethod, false});
    thread->start();
    const bool wasGivenUp = m_givenUp.remove(device.path);
    if (thread->wait(QDeadlineTimer(wasGivenUp ? std::min(m_readLimit, kSecondReadLimit) : m_readLimit)))
        return thread->takeSectors();
    if (!wasGivenUp)
        qCWarning(lcDisk) << device.path << "does not bring its S.M.A.R.T. data and is given up";
    m_givenUp.insert(device.path);
    thread->cancel();
    letGo(std::move(thread), QDeadlineTimer(m_endLimit));
    return std::nullopt;
}

bool ATA_Smart::isHung(const QString &path) const
{
    return std::any_of(m_leftBehind.cbegin(), m_leftBehind.cend(), [&path](const auto &thread) {
        return thread->path() == path && !thread->isFinished();
    });
}

/// Destroys the thread when it ends in time, else keeps it aside until it does.
void ATA_Smart::letGo(std::unique_ptr<SMART_thread> thread, QDeadlineTimer deadline)
{
    m_leftBehind.erase(std::remove_if(m_leftBehind.begin(), m_leftBehind.end(),
                                      [](const auto &left) { return left->isFinished(); }),
                       m_leftBehind.end());
    if (thread->wait(deadline))
        return;
    qCCritical(lcDisk) << thread->path() << "hangs in a request; its reader is left behind";
    m_leftBehind.push_back(std::move(thread));
}
