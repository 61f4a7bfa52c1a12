// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/disk_numbers.h"

#include "platform/linux/logging.h"
#include "platform/whole_file.h"

#include <QDateTime>
#include <QMutexLocker>

#include <utility>

namespace {

constexpr qint64 kMaxFileSize = 1024 * 1024; // bytes

} // namespace

DiskNumbers::DiskNumbers(QString path)
    : m_path(std::move(path))
{}

void DiskNumbers::rescan()
{
    const QMutexLocker scanning(&m_scanMutex);
    load();
    const QVector<BlockDisk> disks = BlockDevices::wholeDisks();
    QVector<number_assignment::Disk> known;
    for (const BlockDisk &disk : disks)
        known.append({disk.identity, disk.node, disk.isRemovable});
    const QVector<int> numbers = number_assignment::assign(m_entries, known);
    QVector<NumberedDisk> numbered;
    for (int i = 0; i < disks.size(); ++i)
        numbered.append({numbers.at(i), disks.at(i)});
    {
        const QMutexLocker lock(&m_mutex);
        m_present = numbered;
    }
    store();
}

QVector<DiskNumbers::NumberedDisk> DiskNumbers::present()
{
    {
        const QMutexLocker lock(&m_mutex);
        if (m_present)
            return *m_present;
    }
    rescan();
    const QMutexLocker lock(&m_mutex);
    return *m_present;
}

std::optional<BlockDisk> DiskNumbers::disk(int number)
{
    for (const NumberedDisk &numbered : present()) {
        if (numbered.number == number)
            return numbered.disk;
    }
    return std::nullopt;
}

std::optional<int> DiskNumbers::numberOf(dev_t device)
{
    const QVector<NumberedDisk> numbered = present();
    QVector<dev_t> disks;
    for (const NumberedDisk &entry : numbered)
        disks.append(entry.disk.device);
    const int place = BlockDevices::diskBelow(device, disks);
    return place < 0 ? std::nullopt : std::optional<int>(numbered.at(place).number);
}

void DiskNumbers::load()
{
    if (std::exchange(m_isLoaded, true) || m_path.isEmpty())
        return;
    const Result<QByteArray, AccessError> file = whole_file::read(m_path, kMaxFileSize);
    if (!file && file.failure().kind == AccessError::Kind::Missing)
        return;
    if (const auto entries = file ? number_assignment::parse(*file) : std::nullopt) {
        m_entries = *entries;
        m_stored = *file;
        return;
    }
    setAside(file ? QStringLiteral("damaged") : file.failure().text);
}

void DiskNumbers::setAside(const QString &reason)
{
    const Result<QString> renamed = whole_file::setAside(m_path, QDateTime::currentDateTime());
    if (renamed)
        qCWarning(lcPlatform, "%s: %s. It is now %s, and drives are numbered afresh.", qUtf8Printable(m_path),
                  qUtf8Printable(reason), qUtf8Printable(*renamed));
    else
        qCWarning(lcPlatform, "%s: %s. Drives are numbered afresh, and their numbers are not stored: %s",
                  qUtf8Printable(m_path), qUtf8Printable(reason), qUtf8Printable(renamed.failure().text));
    m_isWritable = bool(renamed);
}

void DiskNumbers::store()
{
    const QByteArray bytes = number_assignment::format(m_entries);
    if (m_path.isEmpty() || !m_isWritable || bytes == m_stored)
        return;
    if (const Result<void> written = whole_file::replace(m_path, bytes); !written)
        qCWarning(lcPlatform, "%s: %s. Drives may have other numbers after a restart.",
                  qUtf8Printable(m_path), qUtf8Printable(written.failure().text));
    m_stored = bytes; // no new attempt until the numbers change
}
