// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
#include "platform/drive_requests.h"
#include "rows.h"
#include "windows/driver/drive_file.h"
#include "windows/service_installation.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <memory>
#include <windows.h>
#include <winioctl.h>

namespace {

using namespace drive_request;
using stand_in::DriveFile;

const QString kDriver = "HalvexStandIn";

/// Returns a drive of 8 MB with one attribute, its temperature.
DriveFile makeDrive(quint32 refused = 0, quint8 celsius = 40)
{
    DriveFile drive{};
    drive.capacity = 8 * 1024 * 1024;
    drive.refused = refused;
    const QByteArray serial = QByteArray("SERIAL-1").leftJustified(20, ' ');
    const QByteArray model = QByteArray("MODEL-1").leftJustified(40, ' ');
    for (int i = 0; i < serial.size(); ++i)
        drive.identify[20 + (i ^ 1)] = quint8(serial[i]);
    for (int i = 0; i < model.size(); ++i)
        drive.identify[54 + (i ^ 1)] = quint8(model[i]);
    const quint8 slot[] = {194, 34, 0, 100, 99, celsius};
    std::copy(std::begin(slot), std::end(slot), drive.smartData + 2);
    drive.smartThresholds[2] = 194;
    drive.smartThresholds[3] = 20;
    return drive;
}

/// Returns a drive that reports S.M.A.R.T. data by the failure prediction alone, which may hang.
DriveFile predictingDrive(quint8 celsius, quint32 hanging = 0)
{
    DriveFile drive = makeDrive(kAtaPassThrough, celsius);
    drive.hanging = hanging;
    return drive;
}

QString filePath(unsigned number)
{
    return QString::fromWCharArray(stand_in::kFilePattern).mid(4).replace("%u", QString::number(number));
}

void pull(unsigned number)
{
    QFile::remove(filePath(number));
}

void put(unsigned number, const DriveFile &drive)
{
    // Renamed into place, so that the driver never reads half of it.
    const QString written = filePath(number) + ".new";
    writeFile(written, QByteArray(reinterpret_cast<const char *>(&drive), sizeof(drive)));
    pull(number);
    if (!QFile::rename(written, filePath(number)))
        qFatal("cannot put drive %u in place", number);
}

} // namespace

Q_DECLARE_METATYPE(stand_in::DriveFile)

/// The built service on the drives of a stand-in driver, through the system's own control requests.
class TestWindowsDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QDir().mkpath(QFileInfo(filePath(0)).path());
        const QString driver = QDir::toNativeSeparators(QFileInfo(HALVEX_STAND_IN).absoluteFilePath());
        const QStringList service{"create", kDriver,  "type=",    "kernel",
                                  "start=", "demand", "binPath=", driver};
        QCOMPARE(QProcess::execute("sc", service), 0);
        // Wine's service manager can refuse for a moment, while it starts services of its own.
        const auto starts = [] { return QProcess::execute("net", {"start", kDriver}) == 0; };
        QVERIFY(QTest::qWaitFor(starts, kPatienceMs));
    }

    void cleanupTestCase()
    {
        QProcess::execute("net", {"stop", kDriver});
        QProcess::execute("sc", {"delete", kDriver});
    }

    void init()
    {
        for (unsigned number = 0; number < stand_in::kDriveNumbers; ++number)
            pull(number);
        m_service = std::make_unique<ServiceInstallation>();
        QVERIFY(m_service->install());
    }

    void cleanup() { m_service.reset(); }

    void readsByEachMethod_data()
    {
        QTest::addColumn<DriveFile>("drive");
        QTest::addColumn<QString>("device");
        QTest::addColumn<QString>("attributes");
        const QString full = "{194~1~0~100~40~99~20}";
        row("ATA pass-through", makeDrive(), "STAND-IN~;SERIAL-1~;R1", full);
        row("failure prediction", predictingDrive(40), "STAND-IN~;~;R1", "{194~1~0~100~40~99~0}");
        row("without descriptor", makeDrive(kQueryProperty), "MODEL-1~;SERIAL-1~;", full);
    }

    void readsByEachMethod()
    {
        QFETCH(DriveFile, drive);
        QFETCH(QString, device);
        QFETCH(QString, attributes);
        put(3, drive);
        put(5, makeDrive(kDriveGeometry)); // an unknown control code
        QVERIFY(m_service->serve());
        QCOMPARE(ask("DEVCOUNT"), "DEVCOUNT,1");
        const QString info = ask("DEVINFO]![0");
        QVERIFY2(info.startsWith("DEVINFO_OK,0," + device + "~;8388608~;"), qPrintable(info));
        QVERIFY2(info.contains("~;1~;255~;63~;512~;"), qPrintable(info)); // cylinders, tracks, sectors, bytes
        QCOMPARE(ask("SMARTINFO]![0"), "SMARTINFO_OK,0," + attributes);
    }

    /// The system refuses the older partition request for such disks.
    void listsDisksWithAGuidPartitionTable()
    {
        DriveFile drive = makeDrive();
        drive.isGpt = 1;
        drive.capacity = 3ULL << 40;
        put(2, drive);
        drive.refused = IOCTL_DISK_GET_LENGTH_INFO;
        put(4, drive); // without its length the request stays refused
        QVERIFY(m_service->serve());
        QCOMPARE(ask("DEVCOUNT"), "DEVCOUNT,1");
        const QString info = ask("DEVINFO]![0");
        QVERIFY2(info.contains("~;3298534883328~;"), qPrintable(info));
    }

    void scansTheSurface()
    {
        DriveFile drive = makeDrive();
        drive.badBegin = 1001 * 512;
        drive.badEnd = 1003 * 512;
        put(3, drive);
        QVERIFY(m_service->serve());
        m_service->runConsole("scan start 0 --block 4096");
        const QString followed = m_service->runConsole("scan status 0 --follow --json");
        const QJsonObject scan = QJsonDocument::fromJson(followed.toUtf8()).array().at(0).toObject();
        QVERIFY2(scan.value("currentSector").toInt() == 16383, qPrintable(followed));
        QCOMPARE(scan.value("badSectors").toArray(), (QJsonArray{QJsonArray{1000, 1007}}));
    }

    void followsDrivesThatComeAndGo()
    {
        put(1, makeDrive());
        put(4, makeDrive());
        QVERIFY(m_service->serve());
        QCOMPARE(ask("DEVCOUNT"), "DEVCOUNT,2");
        const QString before = ask("SMARTINFO]![0");
        pull(1);
        ask("REFRESH");
        QCOMPARE(ask("SMARTINFO]![0"), before); // its last known values
        m_service->run("-command 0");
        QTRY_COMPARE_WITH_TIMEOUT(ask("DEVCOUNT"), "DEVCOUNT,1", kPatienceMs);
        put(1, makeDrive());
        m_service->run("-command 0");
        QTRY_COMPARE_WITH_TIMEOUT(ask("DEVCOUNT"), "DEVCOUNT,2", kPatienceMs);
    }

    void timesOutHungRequests()
    {
        put(0, predictingDrive(40, kPredictFailure));
        put(1, predictingDrive(40));
        QVERIFY(m_service->serve()); // the first read of the hung drive times out
        QCOMPARE(ask("SMARTINFO]![0"), "SMARTINFO_OK,0,{}");
        QCOMPARE(ask("SMARTINFO]![1"), "SMARTINFO_OK,1,{194~1~0~100~40~99~0}");

        put(1, predictingDrive(41, kPredictFailure));
        ask("REFRESH"); // and so does a later one
        QCOMPARE(ask("SMARTINFO]![1"), "SMARTINFO_OK,1,{194~1~0~100~40~99~0}");
        // A reader that could not be cancelled would keep the drive from being read again.
        put(1, predictingDrive(42));
        ask("REFRESH");
        QCOMPARE(ask("SMARTINFO]![1"), "SMARTINFO_OK,1,{194~1~0~100~42~99~0}");
    }

    /// Wine does not store events, but traces the calls.
    void reportsEvents()
    {
        put(0, makeDrive(0, 70)); // above the critical temperature
        QSettings("HKEY_CURRENT_USER\\Software\\Wine\\Debug", QSettings::NativeFormat)
            .setValue("RelayInclude", "advapi32.RegisterEventSourceW;advapi32.ReportEventW");
        const std::unique_ptr<QProcess> service = m_service->execute("-all,+eventlog,+relay");
        QVERIFY(service);
        const QString port = m_service->key().value("Port").toString();
        m_service->runConsole("settings set logSysEvLog=on --port " + port);
        QCOMPARE(ask("REFRESH"), "REFRESH_OK");
        service->kill();
        QVERIFY(service->waitForFinished(kPatienceMs));
        // Source; then type, category and ID.
        const QString start = "Halvex Service: 00000000 00000000 00000000";
        const QString alert = "Halvex: 00000001 00000000 00000003";
        QCOMPARE(tracedEvents(), QStringList({start, start, alert, alert})); // SET evaluates, too
    }

    void stopsDuringAReadThatHangs()
    {
        DriveFile drive = makeDrive();
        drive.hanging = stand_in::kRead;
        put(0, drive);
        QVERIFY(m_service->serve());
        QCOMPARE(ask("STARTSCAN]![0]![65536]![0]![1000"), "STARTEDSCAN]![0");
        QCOMPARE(m_service->run("-terminate"), QString());
    }

private:
    /// Returns the calls of RegisterEventSourceW and ReportEventW in Wine's trace, an event each.
    static QStringList tracedEvents()
    {
        static const QRegularExpression call("Call "
                                             "advapi32\\.(?:Register\\w+\\(.*L\"(.*)\"\\)|ReportEventW\\(\\w+"
                                             ",(\\w+),(\\w+),(\\w+),.*,00000001,)");
        const QByteArray trace = contentOf(qEnvironmentVariable("HALVEX_TRACE"));
        QStringList events;
        for (auto matches = call.globalMatch(QString::fromUtf8(trace)); matches.hasNext();) {
            const QRegularExpressionMatch match = matches.next();
            if (!match.captured(1).isEmpty())
                events << match.captured(1) + ':';
            else
                events.last() +=
                    QString(" %1 %2 %3").arg(match.captured(2), match.captured(3), match.captured(4));
        }
        return events;
    }

    QString ask(const QString &request) const { return m_service->ask(request); }

    std::unique_ptr<ServiceInstallation> m_service;
};

QTEST_GUILESS_MAIN(TestWindowsDrives)

#include "tst_windows_drives.moc"
