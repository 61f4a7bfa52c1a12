// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "scan/scan_tread.h"
#include "scan/scan_workers.h"

#include <QLoggingCategory>
#include <QPointer>
#include <QSemaphore>
#include <QtTest>

#include <atomic>
#include <limits>

using namespace std::chrono_literals;

namespace {

/// What the drives do; shared with the threads that read them.
struct Script
{
    quint32 openError = system_error::kNone;
    bool readable = true;
    bool heedsCancel = true;
    QSemaphore reads; ///< one is taken by each read, which waits for it
    std::atomic<bool> cancelled{false};
    std::atomic<int> started{0}; ///< reads that were begun
    std::atomic<int> opened{0};  ///< drives that are open
    QPointer<QThread> firstReader;
};

class ScriptedDrive : public Drive
{
public:
    explicit ScriptedDrive(Script &script)
        : m_script(script)
    {
        ++m_script.opened;
    }
    ~ScriptedDrive() override { --m_script.opened; }

    ControlReply control(quint32, ByteView, MutableBytes) override
    {
        return {system_error::kInvalidFunction, 0};
    }

    ReadReply readAt(quint64, MutableBytes buffer) override
    {
        ++m_script.started;
        m_script.reads.acquire();
        if (m_script.cancelled)
            return {system_error::kOperationAborted, 0};
        if (!m_script.readable)
            return {system_error::kCrc, 0};
        return {system_error::kNone, buffer.size()};
    }

    void cancel() override
    {
        if (!m_script.heedsCancel)
            return;
        m_script.cancelled = true;
        m_script.reads.release();
    }

private:
    Script &m_script;
};

class ScriptedDrives : public DriveSystem
{
public:
    explicit ScriptedDrives(Script &script)
        : m_script(script)
    {}

    OpenReply open(const QString & /*path*/) override
    {
        if (m_script.openError != system_error::kNone)
            return {nullptr, m_script.openError};
        if (m_script.started == 0)
            m_script.firstReader = QThread::currentThread();
        return {std::make_unique<ScriptedDrive>(m_script), system_error::kNone};
    }

private:
    Script &m_script;
};

const QStringList kTwoPaths{QStringLiteral("\\\\.\\PhysicalDrive0"), QStringLiteral("\\\\.\\PhysicalDrive1")};

/// 300 sectors of the second device, in three blocks.
const ScanRequest kThreeBlocks{1, 65536, 1000, 1299};

constexpr int kPlenty = 1000000;

} // namespace

Q_DECLARE_METATYPE(ScanRequest)
Q_DECLARE_METATYPE(SectorRange)

class TestScanWorkers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusals_data()
    {
        QTest::addColumn<ScanRequest>("request");
        QTest::addColumn<bool>("starts");
        constexpr int k64MiB = 67108864;
        row("smallest block", ScanRequest{0, 512, 0, 0}, true);
        row("block below a sector", ScanRequest{0, 511, 0, 0}, false);
        row("largest block", ScanRequest{0, k64MiB, 0, 0}, true);
        row("block too large", ScanRequest{0, k64MiB + 1, 0, 0}, false);
        row("negative block", ScanRequest{0, -65536, 0, 0}, false);
        row("first beyond last", ScanRequest{0, 512, 2, 1}, false);
        row("negative range", ScanRequest{0, 512, -2, -1}, false);
        row("negative first", ScanRequest{0, 512, -1, 5}, false);
        row("no such device", ScanRequest{2, 512, 0, 0}, false);
        row("negative device", ScanRequest{-1, 512, 0, 0}, false);
    }

    void refusals()
    {
        QFETCH(ScanRequest, request);
        Script script;
        script.reads.release(kPlenty);
        ScriptedDrives drives(script);
        ScanWorkers workers(drives);
        workers.create(kTwoPaths);
        DeviceList devices(2);
        devices[0].scanPercent = 33;
        QTEST(workers.start(request), "starts");
        QTRY_VERIFY(!workers.isRunning(0));
        workers.publish(devices);
        const bool started = script.started > 0;
        QTEST(started, "starts");
        QCOMPARE(devices[0].scanPercent, started ? 100 : 33); // a refused scan leaves the state alone
    }

    void progressAndResult()
    {
        Script script;
        script.readable = false;
        ScriptedDrives drives(script);
        ScanWorkers workers(drives);
        workers.create(kTwoPaths);
        DeviceList devices(2);
        devices[0].scanPercent = 33;
        devices[1].scanPercent = 99;

        QVERIFY(workers.start(kThreeBlocks));
        QVERIFY(workers.isRunning(1));
        QVERIFY(!workers.isRunning(0));
        QVERIFY(!workers.start(kThreeBlocks)); // one scan a device
        workers.publish(devices);
        QCOMPARE(devices[1].scanPercent, 0);
        QCOMPARE(devices[1].scanCurrent, quint64(1000));

        script.reads.release(2);
        QTRY_COMPARE(int(script.started), 3);
        workers.publish(devices);
        QCOMPARE(devices[1].scanPercent, 85);
        QCOMPARE(devices[1].scanFirst, quint64(1000));
        QCOMPARE(devices[1].scanCurrent, quint64(1255));
        QCOMPARE(devices[1].badRanges, (QVector<SectorRange>{{1000, 1127}, {1128, 1255}}));
        const QDateTime started = devices[1].scanTime;
        QVERIFY(started.isValid());

        script.reads.release();
        QTRY_VERIFY(!workers.isRunning(1));
        workers.publish(devices);
        QCOMPARE(devices[1].scanPercent, 100);
        QCOMPARE(devices[1].scanError, 0);
        QCOMPARE(devices[1].badRanges.size(), 3);
        QVERIFY(devices[1].scanTime >= started);
        QCOMPARE(devices[0].scanPercent, 33); // never scanned: keeps what the settings file said
        QCOMPARE(int(script.opened), 0);
    }

    void nextRunStartsAfresh()
    {
        Script script;
        script.readable = false;
        script.reads.release(kPlenty);
        ScriptedDrives drives(script);
        ScanWorkers workers(drives);
        workers.create(kTwoPaths);
        DeviceList devices(2);
        QVERIFY(workers.start(kThreeBlocks));
        QTRY_VERIFY(!workers.isRunning(1));
        script.readable = true;
        QVERIFY(workers.start({1, 512, 5, 5}));
        QTRY_VERIFY(!workers.isRunning(1));
        workers.publish(devices);
        QCOMPARE(devices[1].scanFirst, quint64(5));
        QCOMPARE(devices[1].badRanges.size(), 0);
    }

    void openFailure()
    {
        Script script;
        script.openError = system_error::kAccessDenied;
        ScriptedDrives drives(script);
        ScanWorkers workers(drives);
        workers.create(kTwoPaths);
        DeviceList devices(2);
        QTest::ignoreMessage(QtWarningMsg, "ERROR_ACCESS_DENIED Scan Disk \\\\.\\PhysicalDrive1.");
        QVERIFY(workers.start(kThreeBlocks));
        QTRY_VERIFY(!workers.isRunning(1));
        workers.publish(devices);
        QCOMPARE(devices[1].scanError, 1);
        QVERIFY(devices[1].scanTime.isValid());
        QCOMPARE(devices[1].scanCurrent, quint64(1000));

        script.openError = system_error::kNone;
        script.reads.release(kPlenty);
        QVERIFY(workers.start(kThreeBlocks));
        QTRY_VERIFY(!workers.isRunning(1));
        workers.publish(devices);
        QCOMPARE(devices[1].scanError, 0);
    }

    void stopRightAfterTheStart()
    {
        Script script;
        ScriptedDrives drives(script);
        ScanWorkers workers(drives);
        workers.create(kTwoPaths);
        QVERIFY(workers.start(kThreeBlocks));
        QVERIFY(workers.requestStop(1)); // most likely before the thread has got so far as to open the drive
        QVERIFY(!workers.requestStop(2));
        script.reads.release(kPlenty);
        QTRY_VERIFY(!workers.isRunning(1));
        QCOMPARE(int(script.started), 1);
    }

    void snapshotsAreWhole()
    {
        Script script;
        script.readable = false;
        script.reads.release(kPlenty);
        ScriptedDrives drives(script);
        ScanWorkers workers(drives);
        workers.create(kTwoPaths);
        DeviceList devices(2);
        QVERIFY(workers.start({1, 512, 0, 9999}));
        for (bool running = true; running;) {
            running = workers.isRunning(1);
            workers.publish(devices);
            // Every sector is bad, so the list tells how far the scan was at the same moment.
            if (!devices[1].badRanges.isEmpty())
                QCOMPARE(devices[1].badRanges.last().last, devices[1].scanCurrent);
        }
        QCOMPARE(devices[1].badRanges.size(), 10000);
    }

    void cancelEndsAHangingRead()
    {
        Script script;
        ScriptedDrives drives(script);
        ScanWorkers workers(drives, {0ms, 60s});
        workers.create(kTwoPaths);
        DeviceList devices(2);
        QVERIFY(workers.start(kThreeBlocks));
        QTRY_COMPARE(int(script.started), 1);
        QVERIFY(workers.stopAll(devices));
        QVERIFY(!workers.isRunning(1));
        QCOMPARE(devices[1].scanFirst, quint64(1000));
        QCOMPARE(devices[1].badRanges.size(), 0); // what we cut off ourselves is no bad block
    }

    void driveThatDoesNotLetGoIsLeftBehind()
    {
        Script script;
        script.heedsCancel = false;
        ScriptedDrives drives(script);
        ScanWorkers workers(drives, {0ms, 0ms});
        workers.create(kTwoPaths);
        DeviceList devices(2);
        QVERIFY(workers.start(kThreeBlocks));
        QTRY_COMPARE(int(script.started), 1);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("PhysicalDrive1.*left behind")));
        QVERIFY(!workers.stopAll(devices));
        QVERIFY(!workers.isRunning(1));

        workers.create(kTwoPaths); // the next detection goes on without it
        script.reads.release(kPlenty);
        QVERIFY(workers.start({0, 512, 0, 0}));
        QTRY_VERIFY(!workers.isRunning(0));
        QTRY_VERIFY(!script.firstReader); // and once its drive answers, it ends by itself
        QCOMPARE(int(script.opened), 0);
        QCOMPARE(int(script.started), 2);
    }

    void treadKeepsItsTotals()
    {
        Script script;
        ScriptedDrives drives(script);
        scan_tread tread(drives, 0, QStringLiteral("disk"));
        tread.startScan({1000, 1299});
        QTRY_COMPARE(int(script.started), 1);
        tread.requestStop();
        QLoggingCategory::setFilterRules(QStringLiteral("halvex.scan.debug=true"));
        QTest::ignoreMessage(QtDebugMsg, "Stop Scan Disk disk. Last sector 1127");
        script.reads.release();
        QVERIFY(tread.wait());
        QLoggingCategory::setFilterRules(QString());
        QCOMPARE(tread.totals().sectorsDone, quint64(128));
        QCOMPARE(tread.totals().areasDone, quint64(1));

        script.openError = system_error::kFileNotFound;
        QTest::ignoreMessage(QtWarningMsg, "ERROR_FILE_NOT_FOUND Scan Disk disk.");
        tread.startScan({1000, 1299});
        QVERIFY(tread.wait());
        QVERIFY(tread.totals().openFailed);
        QCOMPARE(tread.totals().sectorsDone, quint64(0));
    }
};

QTEST_GUILESS_MAIN(TestScanWorkers)
#include "tst_scan_workers.moc"
