// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "windows/stand_in_drives.h"

#include "disk/exchange.h"
#include "disk/simulated_machine.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace {

constexpr int kPatienceMs = 60000;

const QString kDriver = QStringLiteral("HalvexStandIn");

QString filePath(unsigned number)
{
    return QString::asprintf("%ls", stand_in::kFilePattern)
        .replace(QLatin1String("%u"), QString::number(number));
}

bool runs(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(kPatienceMs) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

void readSector(Drive &drive, exchange::Registers command, std::uint8_t (&sector)[512])
{
    if (!exchange::ataPassThrough(drive, command,
                                  MutableBytes(reinterpret_cast<char *>(sector), sizeof(sector))))
        qFatal("the dump gives no sector");
}

} // namespace

StandInDrives::StandInDrives()
{
    for (unsigned number = 0; number < stand_in::kDriveNumbers; ++number)
        pull(number);
    QDir().mkpath(QFileInfo(filePath(0)).path());
    const QString driver =
        QDir::toNativeSeparators(QFileInfo(QStringLiteral(HALVEX_STAND_IN)).absoluteFilePath());
    m_loaded = runs(QStringLiteral("sc"), {QStringLiteral("create"), kDriver, QStringLiteral("type="),
                                           QStringLiteral("kernel"), QStringLiteral("start="),
                                           QStringLiteral("demand"), QStringLiteral("binPath="), driver}) &&
               runs(QStringLiteral("net"), {QStringLiteral("start"), kDriver});
}

StandInDrives::~StandInDrives()
{
    runs(QStringLiteral("net"), {QStringLiteral("stop"), kDriver});
    runs(QStringLiteral("sc"), {QStringLiteral("delete"), kDriver});
}

void StandInDrives::put(unsigned number, const stand_in::DriveFile &drive)
{
    // Renamed into place, so that the driver never reads half of it.
    const QString path = filePath(number);
    QFile file(path + QStringLiteral(".new"));
    const auto *const bytes = reinterpret_cast<const char *>(&drive);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes, sizeof(drive)) != qint64(sizeof(drive)))
        qFatal("cannot write %s", qPrintable(file.fileName()));
    file.close();
    pull(number);
    if (!file.rename(path))
        qFatal("cannot put %s in place", qPrintable(path));
}

void StandInDrives::pull(unsigned number)
{
    QFile::remove(filePath(number));
}

stand_in::DriveFile realDrive(const QString &dumpName, const QJsonObject &changes)
{
    QJsonObject entry = changes;
    entry.insert(QStringLiteral("number"), 0);
    entry.insert(QStringLiteral("dump"), QStringLiteral(HALVEX_DRIVES_FIXTURE "/") + dumpName);
    const SimulatedMachine machine({entry});
    const OpenReply opened = machine.drives().open(physicalDrivePath(0));
    stand_in::DriveFile drive{};
    readSector(*opened.drive, exchange::identifyDevice(), drive.identify);
    readSector(*opened.drive, exchange::smartReadData(), drive.smartData);
    readSector(*opened.drive, exchange::smartReadThresholds(), drive.smartThresholds);
    char partition[drive_request::partition::kSize] = {};
    opened.drive->control(drive_request::kPartitionInfo, ByteView(),
                          MutableBytes(partition, sizeof(partition)));
    drive.capacity = ByteView(partition, sizeof(partition)).le64(drive_request::partition::kLength);
    drive.answered = stand_in::kAllKinds;
    drive.mediaType = drive_request::geometry::kFixedMedia;
    return drive;
}
