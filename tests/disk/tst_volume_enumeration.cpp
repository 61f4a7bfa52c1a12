// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/volume_reader.h"

#include "disk/simulated_machine.h"
#include "disk/volume_enumeration.h"

#include <QSemaphore>
#include <QtTest>

namespace {

QString described(const VolumeEntry &entry)
{
    return QString("%1 %2 %3 '%4' %5 '%6' disk %7: %8 of %9")
        .arg(entry.ordinal)
        .arg(entry.volumeName, entry.root, entry.label, entry.fileSystem, entry.volumeSerial)
        .arg(entry.deviceNumber)
        .arg(entry.freeBytes)
        .arg(entry.totalBytes);
}

VolumeList read(VolumeReader &reader)
{
    std::optional<VolumeList> volumes;
    reader.read([&volumes](const VolumeList &list) { volumes = list; });
    return QTest::qWaitFor([&] { return volumes.has_value(); }, 60000) ? *volumes : VolumeList();
}

/// Two volumes, of which the second may hang.
struct TwoVolumes : VolumeSystem
{
    quint64 freeBytes = 1;
    QSemaphore hung{1}; ///< taken while the second volume hangs

    QStringList volumeNames() override { return {"A", "B"}; }
    quint32 driveType(const QString & /*name*/) override { return kFixedDrive; }
    std::optional<VolumeSpace> space(const QString &name) override
    {
        if (name == "B") {
            hung.acquire();
            hung.release();
        }
        return VolumeSpace{10, freeBytes};
    }
    std::optional<VolumeInformation> information(const QString & /*name*/) override { return std::nullopt; }
    std::optional<qint32> deviceNumber(const QString & /*path*/) override { return 0; }
    quint32 logicalDrives() override { return 0; }
    std::optional<QString> volumeNameAt(const QString & /*root*/) override { return std::nullopt; }
};

} // namespace

class TestVolumeEnumeration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void enumerates()
    {
        const QByteArray volumes = R"([
            {"name": "Removable\\", "letters": ["A"], "driveType": 2},
            {"name": "One\\", "letters": ["D"], "label": "System", "fileSystem": "NTFS", "serial": 1223629,
             "deviceNumber": 4, "totalBytes": 500000000000, "freeBytes": 120000000000},
            {"name": "Silent\\", "fails": ["space", "information", "deviceNumber"]},
            {"name": "Optical\\", "driveType": 5},
            {"name": "Two\\", "letters": ["Z", "C"]},
            {"name": "Folder\\"}])";
        const SimulatedMachine machine({}, QJsonDocument::fromJson(volumes).array());
        Workers workers;
        VolumeReader reader(machine.volumes(), workers);
        QStringList list;
        for (const VolumeEntry &entry : read(reader))
            list << described(entry);
        QCOMPARE(list.join(QLatin1Char('\n')),
                 "1 One\\ D:\\ 'System' NTFS '0012-ABCD' disk 4: 120000000000 of 500000000000\n"
                 "2 Silent\\ 1:\\ '' Unknown '' disk -1: 0 of 0\n"
                 "4 Two\\ C:\\ ''  '0000-0000' disk 0: 0 of 0\n"
                 "5 Folder\\ 2:\\ ''  '0000-0000' disk 0: 0 of 0");
    }

    void hungVolumeKeepsItsValues()
    {
        TwoVolumes system;
        Workers workers({std::chrono::seconds(2), {}, {}, {}});
        VolumeReader reader(system, workers);
        QCOMPARE(read(reader).at(1).freeBytes, quint64(1));
        system.hung.acquire();
        system.freeBytes = 2;
        const VolumeList volumes = read(reader);
        system.hung.release();
        QCOMPARE(volumes.at(0).freeBytes, quint64(2));
        QCOMPARE(volumes.at(1).freeBytes, quint64(1));
        QTRY_VERIFY(!workers.isBusy());
        QCOMPARE(read(reader).at(1).freeBytes, quint64(2));
    }

    void assignsToTheFirstDriveOfTheNumber()
    {
        DeviceList devices(3);
        devices[0].deviceNumber = 5;
        devices[1].deviceNumber = 7;
        devices[2].deviceNumber = 5;
        VolumeList volumes;
        for (const int deviceNumber : {7, 5, -1, 5}) {
            volumes.append(VolumeEntry());
            volumes.last().deviceNumber = deviceNumber;
            volumes.last().ordinal = volumes.size();
        }
        for (int round = 0; round < 2; ++round) // the second takes the place of the first
            volume_enumeration::assign(volumes, devices);
        QCOMPARE(devices.at(0).volumes.size(), 2);
        QCOMPARE(devices.at(0).volumes.at(0).ordinal, 2);
        QCOMPARE(devices.at(0).volumes.at(1).ordinal, 4);
        QCOMPARE(devices.at(1).volumes.size(), 1);
        QCOMPARE(devices.at(2).volumes.size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestVolumeEnumeration)
#include "tst_volume_enumeration.moc"
