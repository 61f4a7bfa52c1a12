// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/volume_enumeration.h"

#include <QMap>
#include <QtTest>

namespace {

constexpr quint32 kRemovable = 2;
constexpr quint32 kFixed = 3;

struct FakeVolume
{
    QString name;
    quint32 type = kFixed;
    std::optional<VolumeSpace> space;
    std::optional<VolumeInformation> information;
    std::optional<qint32> deviceNumber;
};

class FakeVolumes : public VolumeSystem
{
public:
    explicit FakeVolumes(const QVector<FakeVolume> &volumes)
        : m_volumes(volumes)
    {}

    /// Mounts volume `index`, or something that is not in the enumeration (-1), at `letter`.
    void mount(char letter, int index, quint32 type = kFixed)
    {
        m_letters.insert(QLatin1Char(letter), {index, type});
    }

    QStringList volumeNames() override
    {
        QStringList names;
        for (const FakeVolume &volume : qAsConst(m_volumes))
            names << volume.name;
        return names;
    }
    quint32 driveType(const QString &volumeOrLetter) override
    {
        if (volumeOrLetter.size() == 2 && volumeOrLetter.endsWith(QLatin1Char(':')))
            return m_letters.value(volumeOrLetter.at(0)).type;
        return find(volumeOrLetter).type;
    }
    std::optional<VolumeSpace> space(const QString &name) override { return find(name).space; }
    std::optional<VolumeInformation> information(const QString &name) override
    {
        return find(name).information;
    }
    std::optional<qint32> deviceNumber(const QString &path) override
    {
        return find(path + QLatin1Char('\\')).deviceNumber;
    }
    quint32 logicalDrives() override
    {
        quint32 mask = 0;
        for (auto it = m_letters.cbegin(); it != m_letters.cend(); ++it)
            mask |= 1U << (it.key().unicode() - 'A');
        return mask;
    }
    std::optional<QString> volumeNameAt(const QString &root) override
    {
        if (root.size() != 3 || !root.endsWith(QStringLiteral(":\\")))
            return std::nullopt;
        return m_volumes.value(m_letters.value(root.at(0)).index).name;
    }

private:
    struct Mount
    {
        int index = -1;
        quint32 type = 0;
    };

    [[nodiscard]] FakeVolume find(const QString &name) const
    {
        for (const FakeVolume &volume : m_volumes) {
            if (volume.name == name)
                return volume;
        }
        return FakeVolume{QString(), 0, {}, {}, {}};
    }

    QVector<FakeVolume> m_volumes;
    QMap<QChar, Mount> m_letters;
};

QString volumeName(int number)
{
    return QStringLiteral("\\\\?\\Volume{%1}\\").arg(number);
}

/// A volume that answers nothing but its type.
FakeVolume silent(int number, quint32 type = kFixed)
{
    FakeVolume volume;
    volume.name = volumeName(number);
    volume.type = type;
    return volume;
}

} // namespace

class TestVolumeEnumeration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsFixedVolumesOnly()
    {
        FakeVolumes volumes({silent(1, kRemovable), silent(2), silent(3, 5), silent(4)});
        const VolumeList list = volume_enumeration::enumerate(volumes);
        QCOMPARE(list.size(), 2);
        QCOMPARE(list.at(0).volumeName, volumeName(2));
        QCOMPARE(list.at(0).ordinal, 1);
        QCOMPARE(list.at(1).ordinal, 3);
    }

    void entry()
    {
        FakeVolumes volumes(
            {{volumeName(1), kFixed, VolumeSpace{500000000000, 120000000000},
              VolumeInformation{QStringLiteral("System"), QStringLiteral("NTFS"), 0x0012ABCD}, 4}});
        const VolumeEntry entry = volume_enumeration::enumerate(volumes).value(0);
        QCOMPARE(entry.label, QStringLiteral("System"));
        QCOMPARE(entry.fileSystem, QStringLiteral("NTFS"));
        QCOMPARE(entry.volumeSerial, QStringLiteral("0012-ABCD"));
        QCOMPARE(entry.deviceNumber, 4);
        QCOMPARE(entry.totalBytes, Q_UINT64_C(500000000000));
        QCOMPARE(entry.freeBytes, Q_UINT64_C(120000000000));
    }

    void entryOfAVolumeThatFails()
    {
        FakeVolumes volumes({silent(1)});
        const VolumeEntry entry = volume_enumeration::enumerate(volumes).value(0);
        QCOMPARE(entry.label, QString());
        QCOMPARE(entry.fileSystem, QStringLiteral("Unknown"));
        QCOMPARE(entry.volumeSerial, QString());
        QCOMPARE(entry.deviceNumber, -1);
        QCOMPARE(entry.totalBytes, Q_UINT64_C(0));
    }

    void roots()
    {
        FakeVolumes volumes({silent(1), silent(2), silent(3), silent(4)});
        volumes.mount('D', 1);
        volumes.mount('C', 3);
        volumes.mount('Z', 3);
        volumes.mount('E', -1);
        volumes.mount('A', 0, kRemovable);
        QStringList roots;
        for (const VolumeEntry &entry : volume_enumeration::enumerate(volumes))
            roots << entry.root;
        QCOMPARE(roots, QStringList({QStringLiteral("1:\\"), QStringLiteral("D:\\"), QStringLiteral("2:\\"),
                                     QStringLiteral("C:\\")}));
    }

    void assignsToTheFirstDriveOfTheNumber()
    {
        DeviceList devices(3);
        devices[0].deviceNumber = 5;
        devices[1].deviceNumber = 7;
        devices[2].deviceNumber = 5;
        VolumeList volumes(4);
        volumes[0].deviceNumber = 7;
        volumes[1].deviceNumber = 5;
        volumes[2].deviceNumber = -1;
        volumes[3].deviceNumber = 5;
        for (int i = 0; i < volumes.size(); ++i)
            volumes[i].ordinal = i;

        for (int round = 0; round < 2; ++round) // the second takes the place of the first
            volume_enumeration::assign(volumes, devices);
        QCOMPARE(devices.at(0).volumes.size(), 2);
        QCOMPARE(devices.at(0).volumes.at(0).ordinal, 1);
        QCOMPARE(devices.at(0).volumes.at(1).ordinal, 3);
        QCOMPARE(devices.at(1).volumes.size(), 1);
        QCOMPARE(devices.at(2).volumes.size(), 0);
    }
};

QTEST_APPLESS_MAIN(TestVolumeEnumeration)
#include "tst_volume_enumeration.moc"
