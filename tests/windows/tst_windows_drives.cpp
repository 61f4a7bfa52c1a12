// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "windows/service_installation.h"
#include "windows/stand_in_drives.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <memory>

namespace {

using stand_in::DriveFile;

const QString kDump = QStringLiteral("st500nm0011.json");

QString field(const QString &deviceInfo, int number)
{
    return deviceInfo.section(QLatin1Char(','), 2).section(QLatin1String("~;"), number, number);
}

DriveFile driveWithout(std::uint32_t kinds)
{
    DriveFile drive = realDrive(kDump);
    drive.answered &= ~kinds;
    return drive;
}

DriveFile driveFailing(std::uint32_t kinds)
{
    DriveFile drive = realDrive(kDump);
    drive.failing = kinds;
    return drive;
}

DriveFile removableDrive()
{
    DriveFile drive = realDrive(kDump);
    drive.mediaType = 11;
    return drive;
}

/// A drive that tells its S.M.A.R.T. data by the failure prediction alone.
DriveFile predictingDrive(const QJsonObject &changes = {})
{
    DriveFile drive = realDrive(kDump, changes);
    drive.answered &= ~std::uint32_t(stand_in::kAta | stand_in::kSmart | stand_in::kIde);
    return drive;
}

/// Keys of a drive whose one attribute is its temperature.
QJsonObject temperature(int degrees)
{
    const QJsonObject attribute{{QStringLiteral("id"), 194},
                                {QStringLiteral("flags"), 34},
                                {QStringLiteral("current"), 100},
                                {QStringLiteral("worst"), 100},
                                {QStringLiteral("raw"), degrees}};
    return {{QStringLiteral("smart"), QJsonObject{{QStringLiteral("attributes"), QJsonArray{attribute}}}}};
}

} // namespace

Q_DECLARE_METATYPE(stand_in::DriveFile)

/// The built service on drives that a driver stands for, through the system's own control requests.
class TestWindowsDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_drives = std::make_unique<StandInDrives>();
        QVERIFY(m_drives->areLoaded());
    }

    void init()
    {
        m_service = std::make_unique<ServiceInstallation>();
        QVERIFY(m_service->install());
    }

    void cleanup()
    {
        m_service.reset();
        for (unsigned number = 0; number < stand_in::kDriveNumbers; ++number)
            m_drives->pull(number);
    }

    void findsDrivesBetweenGaps()
    {
        m_drives->put(2, realDrive(kDump));
        DriveFile plain = realDrive(QStringLiteral("st3200820as.json"));
        plain.answered &= ~std::uint32_t(stand_in::kDescriptor);
        m_drives->put(5, plain);
        QVERIFY(m_service->serve());
        QCOMPARE(ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,2"));

        const QString first = ask("DEVINFO]![0");
        QCOMPARE(field(first, 0), QStringLiteral("STAND-IN")); // the descriptor's word comes first ...
        QCOMPARE(field(first, 1), QStringLiteral("C22F-16A816DB"));
        QCOMPARE(field(first, 2), QStringLiteral("R1"));
        QCOMPARE(field(first, 3), QStringLiteral("500107862016"));
        const QString second = ask("DEVINFO]![1");
        QCOMPARE(field(second, 0), QStringLiteral("ST3200820AS")); // ... where there is one
        QCOMPARE(field(second, 1), QStringLiteral("B6C4-1421D808"));
        QCOMPARE(field(second, 2), QStringLiteral("72D0"));
        QCOMPARE(field(second, 7), QStringLiteral("24321")); // cylinders
    }

    void readsByEachMethod_data()
    {
        QTest::addColumn<quint32>("unknown"); // what the driver refuses
        QTest::addColumn<QString>("serial");
        QTest::addColumn<QString>("attributes");
        const QString serial = QStringLiteral("C22F-16A816DB");
        const QString full =
            QStringLiteral("SMARTINFO_OK,0,{1~0~1~82~171057050~63~44;3~0~0~96~0~95~0;4~1~0~100~48~100~20;");
        const QString withoutThresholds =
            QStringLiteral("SMARTINFO_OK,0,{1~0~1~82~171057050~63~0;3~0~0~96~0~95~0;4~1~0~100~48~100~0;");
        constexpr quint32 kAtaAndSmart = stand_in::kAta | stand_in::kSmart;
        QTest::newRow("ATA pass-through") << quint32(stand_in::kSmart | stand_in::kIde) << serial << full;
        QTest::newRow("S.M.A.R.T. drive data") << quint32(stand_in::kAta | stand_in::kIde) << serial << full;
        QTest::newRow("IDE pass-through") << kAtaAndSmart << serial << full;
        QTest::newRow("failure prediction")
            << quint32(kAtaAndSmart | stand_in::kIde) << QString() << withoutThresholds;
    }

    void readsByEachMethod()
    {
        QFETCH(quint32, unknown);
        QFETCH(QString, attributes);
        m_drives->put(1, driveWithout(unknown));
        QVERIFY(m_service->serve());
        QTEST(field(ask("DEVINFO]![0"), 1), "serial");
        const QString reply = ask("SMARTINFO]![0");
        QVERIFY2(reply.startsWith(attributes), qPrintable(reply));
        QCOMPARE(reply.count(QLatin1Char(';')) + 1, 21);
    }

    void judgesEachRefusal_data()
    {
        QTest::addColumn<DriveFile>("drive");
        QTest::addColumn<bool>("isListed");
        QTest::newRow("geometry unknown") << driveWithout(stand_in::kGeometry) << false;
        QTest::newRow("geometry fails") << driveFailing(stand_in::kGeometry) << false;
        QTest::newRow("partition unknown") << driveWithout(stand_in::kPartition) << false;
        QTest::newRow("device number fails") << driveFailing(stand_in::kDeviceNumber) << false;
        QTest::newRow("removable") << removableDrive() << false;
        QTest::newRow("commands aborted")
            << driveFailing(stand_in::kAta | stand_in::kSmart | stand_in::kIde | stand_in::kDescriptor)
            << true;
    }

    void judgesEachRefusal()
    {
        QFETCH(DriveFile, drive);
        QFETCH(bool, isListed);
        m_drives->put(0, drive);
        QVERIFY(m_service->serve());
        QCOMPARE(ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,%1").arg(int(isListed)));
        QCOMPARE(ask("SMARTINFO]![0"),
                 isListed ? QStringLiteral("SMARTINFO_OK,0,{}") : QStringLiteral("SMARTINFO_ERR,[0]"));
    }

    void scansTheSurface()
    {
        constexpr int kSector = 512;
        DriveFile drive = realDrive(kDump, {{QStringLiteral("capacity"), 8 * 1024 * 1024}});
        drive.badBegin = 1001 * kSector;
        drive.badEnd = 1003 * kSector;
        m_drives->put(3, drive);
        QVERIFY(m_service->serve());
        const Outcome start =
            m_service->runConsole({QStringLiteral("scan"), QStringLiteral("start"), QStringLiteral("0"),
                                   QStringLiteral("--block"), QStringLiteral("4096")});
        QVERIFY2(start.exitCode == 0, start.complaint);
        const Outcome followed =
            m_service->runConsole({QStringLiteral("scan"), QStringLiteral("status"), QStringLiteral("0"),
                                   QStringLiteral("--follow"), QStringLiteral("--json")});
        QVERIFY2(followed.exitCode == 0, followed.complaint);
        const QJsonObject scan = QJsonDocument::fromJson(followed.output).array().at(0).toObject();
        QCOMPARE(scan.value(QLatin1String("currentSector")).toInt(), 16383);
        QCOMPARE(scan.value(QLatin1String("badSectors")).toArray(), (QJsonArray{QJsonArray{1000, 1007}}));
    }

    void followsDrivesThatComeAndGo()
    {
        const QStringList lookAgain{QStringLiteral("-command"), QStringLiteral("0")};
        m_drives->put(1, realDrive(kDump));
        m_drives->put(4, realDrive(kDump));
        QVERIFY(m_service->serve());
        QCOMPARE(ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,2"));
        const QString before = ask("SMARTINFO]![0");
        m_drives->pull(1);
        ask("REFRESH");
        QCOMPARE(ask("SMARTINFO]![0"), before); // what was last known of it
        m_service->run(lookAgain);
        QTRY_COMPARE_WITH_TIMEOUT(ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,1"), 60000);
        m_drives->put(1, realDrive(kDump));
        m_service->run(lookAgain);
        QTRY_COMPARE_WITH_TIMEOUT(ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,2"), 60000);
    }

    void givesUpRequestsThatHang()
    {
        DriveFile hung = predictingDrive();
        hung.hanging = stand_in::kPredict;
        m_drives->put(0, hung);
        m_drives->put(1, predictingDrive(temperature(40)));
        QVERIFY(m_service->serve()); // the first read of the hung drive is given up
        QCOMPARE(ask("SMARTINFO]![0"), QStringLiteral("SMARTINFO_OK,0,{}"));
        QCOMPARE(ask("SMARTINFO]![1"), QStringLiteral("SMARTINFO_OK,1,{194~1~0~100~40~100~0}"));

        hung = predictingDrive(temperature(41));
        hung.hanging = stand_in::kPredict;
        m_drives->put(1, hung);
        ask("REFRESH"); // and so is a later one
        QCOMPARE(ask("SMARTINFO]![1"), QStringLiteral("SMARTINFO_OK,1,{194~1~0~100~40~100~0}"));
        // A reader that could not be called back would keep the drive from being asked again.
        m_drives->put(1, predictingDrive(temperature(42)));
        ask("REFRESH");
        QCOMPARE(ask("SMARTINFO]![1"), QStringLiteral("SMARTINFO_OK,1,{194~1~0~100~42~100~0}"));
    }

    void stopsDuringAReadThatHangs()
    {
        DriveFile drive = realDrive(kDump);
        drive.hanging = stand_in::kRead;
        m_drives->put(0, drive);
        QVERIFY(m_service->serve());
        QCOMPARE(ask("STARTSCAN]![0]![65536]![0]![1000"), QStringLiteral("STARTEDSCAN]![0"));
        const Outcome outcome = m_service->run({QStringLiteral("-terminate")});
        QCOMPARE(outcome.complaint, QByteArray());
    }

private:
    QString ask(const char *request) const { return m_service->ask(QString::fromLatin1(request)); }

    std::unique_ptr<StandInDrives> m_drives;
    std::unique_ptr<ServiceInstallation> m_service;
};

QTEST_GUILESS_MAIN(TestWindowsDrives)

#include "tst_windows_drives.moc"
