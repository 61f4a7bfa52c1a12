// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "scan/scan_workers.h"

#include <QPointer>
#include <QSemaphore>

#include <atomic>

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

/// Two drives with their workers.
struct Bench
{
    Script script;
    ScriptedDrives drives{script};
    ScanWorkers workers;
    DeviceList devices = DeviceList(2);

    explicit Bench(ScanWorkers::Patience patience = {})
        : workers(drives, patience)
    {
        create();
    }

    void create()
    {
        workers.create({QStringLiteral("\\\\.\\PhysicalDrive0"), QStringLiteral("\\\\.\\PhysicalDrive1")});
    }
};

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
        Bench bench;
        bench.script.reads.release(kPlenty);
        bench.devices[0].scanPercent = 33;
        const bool starts = bench.workers.start(request);
        QTEST(starts, "starts");
        QTRY_VERIFY(!bench.workers.isRunning(0));
        bench.workers.publish(bench.devices);
        QCOMPARE(bench.devices[0].scanPercent, starts ? 100 : 33); // a refused scan leaves the state alone
    }

    void progressAndResult()
    {
        Bench bench;
        bench.script.readable = false;
        bench.devices[0].scanPercent = 33;
        const DeviceRecord &device = bench.devices[1];
        QVERIFY(bench.workers.start(kThreeBlocks));
        QVERIFY(bench.workers.isRunning(1));
        QVERIFY(!bench.workers.isRunning(0));
        QVERIFY(!bench.workers.start(kThreeBlocks)); // one scan a device

        bench.script.reads.release(2);
        QTRY_COMPARE(int(bench.script.started), 3);
        bench.workers.publish(bench.devices);
        QCOMPARE(device.scanPercent, 85);
        QCOMPARE(device.scanFirst, quint64(1000));
        QCOMPARE(device.scanCurrent, quint64(1255));
        QCOMPARE(device.badRanges, (QVector<SectorRange>{{1000, 1127}, {1128, 1255}}));
        const QDateTime started = device.scanTime;
        QVERIFY(started.isValid());

        bench.script.reads.release();
        QTRY_VERIFY(!bench.workers.isRunning(1));
        bench.workers.publish(bench.devices);
        QCOMPARE(device.scanPercent, 100);
        QCOMPARE(device.badRanges.size(), 3);
        QVERIFY(device.scanTime >= started);
        QCOMPARE(bench.devices[0].scanPercent, 33); // never scanned: keeps what the settings file said
        QCOMPARE(int(bench.script.opened), 0);

        // The next run starts afresh.
        bench.script.readable = true;
        bench.script.reads.release();
        QVERIFY(bench.workers.start({1, 512, 5, 5}));
        QTRY_VERIFY(!bench.workers.isRunning(1));
        bench.workers.publish(bench.devices);
        QCOMPARE(device.scanFirst, quint64(5));
        QCOMPARE(device.badRanges.size(), 0);
    }

    void openFailure()
    {
        Bench bench;
        const DeviceRecord &device = bench.devices[1];
        for (const auto &[error, name] : {std::pair(system_error::kAccessDenied, "ERROR_ACCESS_DENIED"),
                                          std::pair(system_error::kFileNotFound, "ERROR_FILE_NOT_FOUND")}) {
            bench.script.openError = error;
            const QByteArray message = QByteArray(name) + " Scan Disk \\\\.\\PhysicalDrive1.";
            QTest::ignoreMessage(QtWarningMsg, message);
            QVERIFY(bench.workers.start(kThreeBlocks));
            QTRY_VERIFY(!bench.workers.isRunning(1));
        }
        bench.workers.publish(bench.devices);
        QCOMPARE(device.scanError, 1);
        QVERIFY(device.scanTime.isValid());
        QCOMPARE(device.scanCurrent, quint64(1000));

        bench.script.openError = system_error::kNone;
        bench.script.reads.release(kPlenty);
        QVERIFY(bench.workers.start(kThreeBlocks));
        QTRY_VERIFY(!bench.workers.isRunning(1));
        bench.workers.publish(bench.devices);
        QCOMPARE(device.scanError, 0);
    }

    void stopRightAfterTheStart()
    {
        Bench bench;
        QVERIFY(bench.workers.start(kThreeBlocks));
        QVERIFY(bench.workers.requestStop(1)); // most likely before the thread has opened the drive
        QVERIFY(!bench.workers.requestStop(2));
        bench.script.reads.release(kPlenty);
        QTRY_VERIFY(!bench.workers.isRunning(1));
        QCOMPARE(int(bench.script.started), 1);
    }

    void snapshotsAreWhole()
    {
        Bench bench;
        bench.script.readable = false;
        bench.script.reads.release(kPlenty);
        const DeviceRecord &device = bench.devices[1];
        QVERIFY(bench.workers.start({1, 512, 0, 9999}));
        for (bool running = true; running;) {
            running = bench.workers.isRunning(1);
            bench.workers.publish(bench.devices);
            // Every sector is bad, so the list tells how far the scan was at the same moment.
            if (!device.badRanges.isEmpty())
                QCOMPARE(device.badRanges.last().last, device.scanCurrent);
        }
        QCOMPARE(device.badRanges.size(), 10000);
    }

    void cancelEndsAHangingRead()
    {
        Bench bench({0ms, 60s});
        QVERIFY(bench.workers.start(kThreeBlocks));
        QTRY_COMPARE(int(bench.script.started), 1);
        QVERIFY(bench.workers.stopAll(bench.devices));
        QVERIFY(!bench.workers.isRunning(1));
        QCOMPARE(bench.devices[1].scanFirst, quint64(1000));
        QCOMPARE(bench.devices[1].badRanges.size(), 0); // what we cut off ourselves is no bad block
    }

    void driveThatDoesNotLetGoIsLeftBehind()
    {
        Bench bench({0ms, 0ms});
        bench.script.heedsCancel = false;
        QVERIFY(bench.workers.start(kThreeBlocks));
        QTRY_COMPARE(int(bench.script.started), 1);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("PhysicalDrive1.*left behind")));
        QVERIFY(!bench.workers.stopAll(bench.devices));
        QVERIFY(!bench.workers.isRunning(1));

        bench.create(); // the next detection goes on without it
        bench.script.reads.release(kPlenty);
        QVERIFY(bench.workers.start({0, 512, 0, 0}));
        QTRY_VERIFY(!bench.workers.isRunning(0));
        QTRY_VERIFY(!bench.script.firstReader); // and once its drive answers, it ends by itself
        QCOMPARE(int(bench.script.opened), 0);
        QCOMPARE(int(bench.script.started), 2);
    }
};

QTEST_GUILESS_MAIN(TestScanWorkers)
#include "tst_scan_workers.moc"
