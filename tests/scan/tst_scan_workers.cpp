// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "scan/scan_workers.h"

#include <QSemaphore>
#include <QSignalSpy>

#include <atomic>

using namespace std::chrono_literals;

namespace {

/// The script of drives, shared with the threads that read them.
class ScriptedDrives : public DriveSystem
{
public:
    quint32 openError = system_error::kNone;
    bool readable = true;
    bool heedsCancel = true;
    QSemaphore reads; ///< each read waits for one permit
    std::atomic<bool> cancelled{false};
    std::atomic<int> started{0}; ///< reads that have started

    OpenReply open(const QString & /*path*/) override;
};

class ScriptedDrive : public Drive
{
public:
    explicit ScriptedDrive(ScriptedDrives &script)
        : m_script(script)
    {}

    ControlReply control(quint32, ByteView, MutableBytes) override { return {}; }

    ReadReply readAt(quint64, MutableBytes buffer) override
    {
        ++m_script.started;
        m_script.reads.acquire();
        if (m_script.cancelled)
            return {system_error::kOperationAborted, 0};
        return {m_script.readable ? system_error::kNone : system_error::kCrc, buffer.size()};
    }

    void cancel() override
    {
        if (!m_script.heedsCancel)
            return;
        m_script.cancelled = true;
        m_script.reads.release();
    }

private:
    ScriptedDrives &m_script;
};

OpenReply ScriptedDrives::open(const QString & /*path*/)
{
    if (openError != system_error::kNone)
        return {nullptr, openError};
    return {std::make_unique<ScriptedDrive>(*this), system_error::kNone};
}

constexpr auto kAgeLong = 1h;

/// Two drives and their scans.
struct Bench
{
    ScriptedDrives script;
    Workers threads;
    ScanWorkers workers;
    DeviceList devices = DeviceList(2);
    int ended = 0;

    explicit Bench(WorkLimits limits = {kAgeLong, kAgeLong, 0ms, 0ms})
        : threads(limits)
        , workers(script, threads)
    {
        for (int i = 0; i < devices.size(); ++i)
            devices[i].path = physicalDrivePath(i);
        devices[0].scan.percent = 33;
        QObject::connect(&workers, &ScanWorkers::ended, [this](int device, const ScanProgress &result) {
            applyProgress(result, devices[device]);
            ++ended;
        });
    }
    ~Bench() { script.reads.release(1000000); } // lets scans end when a test has failed

    bool start(const ScanRequest &request) { return workers.start(request, devices.at(request.device)); }

    /// Starts a scan, and waits for its end.
    void scan(const ScanRequest &request)
    {
        QVERIFY(start(request));
        QTRY_VERIFY(!workers.isRunning(request.device));
    }
};

/// 300 sectors of the second device, in three blocks.
const ScanRequest kThreeBlocks{1, 65536, 1000, 1299};

constexpr int kPlenty = 1000000;
constexpr int k64MiB = 67108864;

} // namespace

Q_DECLARE_METATYPE(ScanRequest)

class TestScanWorkers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusals_data()
    {
        QTest::addColumn<ScanRequest>("request");
        row("block below a sector", ScanRequest{0, 511, 0, 0});
        row("block too large", ScanRequest{0, k64MiB + 1, 0, 0});
        row("first beyond last", ScanRequest{0, 512, 2, 1});
        row("negative first", ScanRequest{0, 512, -1, 5});
    }

    void refusals()
    {
        QFETCH(ScanRequest, request);
        Bench bench;
        QVERIFY(!bench.start(request));
        bench.workers.publish(bench.devices);
        QCOMPARE(bench.devices[0].scan.percent, 33); // a refused scan does not change the state
    }

    void progressAndResult()
    {
        Bench bench;
        bench.script.readable = false;
        const DeviceRecord &device = bench.devices[1];
        QVERIFY(bench.start(kThreeBlocks));
        QVERIFY(!bench.start(kThreeBlocks)); // one scan per device

        bench.script.reads.release(2);
        QTRY_COMPARE(int(bench.script.started), 3);
        bench.workers.publish(bench.devices);
        QCOMPARE(device.scan.percent, 85);
        QCOMPARE(device.scan.first, quint64(1000));
        QCOMPARE(device.scan.current, quint64(1255));
        QCOMPARE(device.scan.badRanges, (QVector<SectorRange>{{1000, 1127}, {1128, 1255}}));
        QVERIFY(device.scan.time.isValid());

        bench.script.reads.release();
        QTRY_COMPARE(bench.ended, 1);
        QVERIFY(!bench.workers.isRunning(1));
        QCOMPARE(device.scan.percent, 100);
        QCOMPARE(device.scan.badRanges.size(), 3);

        // The next run starts from zero.
        bench.script.readable = true;
        bench.script.reads.release();
        bench.scan({1, 512, 5, 5});
        QCOMPARE(device.scan.first, quint64(5));
        QCOMPARE(device.scan.badRanges.size(), 0);
    }

    void openFailure()
    {
        Bench bench;
        const DeviceRecord &device = bench.devices[1];
        bench.script.openError = system_error::kAccessDenied;
        QTest::ignoreMessage(QtWarningMsg, "ERROR_ACCESS_DENIED Scan Disk \\\\.\\PhysicalDrive1.");
        bench.scan(kThreeBlocks);
        QVERIFY(device.scan.hasOpenFailed);
        QVERIFY(device.scan.time.isValid());
        QCOMPARE(device.scan.current, quint64(1000));
    }

    void stopRightAfterTheStart()
    {
        Bench bench;
        QVERIFY(bench.start(kThreeBlocks));
        bench.workers.requestStop(1); // usually before the thread has opened the drive
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
        QVERIFY(bench.start({1, 512, 0, 9999}));
        while (bench.workers.isRunning(1)) {
            bench.workers.publish(bench.devices);
            QCoreApplication::processEvents();
            // Every sector is bad, so the list shows the progress at the same moment.
            if (!device.scan.badRanges.isEmpty())
                QCOMPARE(device.scan.badRanges.last().last, device.scan.current);
        }
        QCOMPARE(device.scan.badRanges.size(), 10000);
    }

    void stopCancelsAReadThatHangs()
    {
        Bench bench({1ms, kAgeLong, 0ms, 0ms});
        QVERIFY(bench.start(kThreeBlocks));
        QTRY_COMPARE(int(bench.script.started), 1);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("PhysicalDrive1.*not answer"));
        bench.workers.requestStop(1);
        QTRY_COMPARE(bench.ended, 1);
        QTRY_VERIFY(!bench.threads.isBusy());
        QCOMPARE(bench.devices[1].scan.first, quint64(1000));
        QCOMPARE(bench.devices[1].scan.badRanges.size(), 0); // a read that was cancelled is not a bad block
    }

    void scanOfADriveThatStopsAnsweringEnds()
    {
        Bench bench({kAgeLong, 300ms, 0ms, 0ms});
        bench.script.heedsCancel = false;
        QVERIFY(bench.start(kThreeBlocks));
        bench.script.reads.release();
        QTRY_COMPARE(int(bench.script.started), 2);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("PhysicalDrive1.*not answer"));
        QTRY_VERIFY(!bench.workers.isRunning(1));
        QCOMPARE(bench.devices[1].scan.current, quint64(1127));

        // The drive gets no second worker until it answers.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("PhysicalDrive1.*not answer"));
        bench.scan(kThreeBlocks);
        QVERIFY(bench.devices[1].scan.hasOpenFailed);
        QCOMPARE(int(bench.script.started), 2);
        bench.script.reads.release(kPlenty);
        QTRY_VERIFY(!bench.threads.isBusy());
        QCOMPARE(int(bench.script.started), 2); // the scan that timed out reads no more
        bench.scan(kThreeBlocks);
        QCOMPARE(bench.devices[1].scan.percent, 100);
    }

    void abandonedScansAreNotReported()
    {
        Bench bench;
        QVERIFY(bench.start(kThreeBlocks));
        bench.workers.abandonAll();
        QVERIFY(!bench.workers.isRunning(1));
        bench.workers.requestStop(1); // of no scan
        bench.script.reads.release(kPlenty);
        QTRY_VERIFY(!bench.threads.isBusy());
        QCOMPARE(bench.ended, 0);
    }
};

QTEST_GUILESS_MAIN(TestScanWorkers)
#include "tst_scan_workers.moc"
