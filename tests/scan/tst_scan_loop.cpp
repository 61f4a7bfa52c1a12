// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "scan/scan_loop.h"
#include "scan/scan_progress.h"

#include <limits>
#include <set>

namespace {

/// A drive in memory: a read fails if it touches a bad sector.
class FakeDrive : public Drive
{
public:
    std::set<quint64> badSectors;
    quint64 size = std::numeric_limits<quint64>::max(); ///< bytes; reads across the end are short
    quint32 sector = 512; ///< bytes; a read of anything else than whole ones fails
    int stopAtRead = -1;  ///< during this read a stop is requested
    quint32 error = system_error::kCrc;
    std::atomic<bool> stop{false};
    QStringList reads; ///< offset+length, in bytes

    ControlReply control(quint32, ByteView, MutableBytes) override
    {
        return {system_error::kInvalidFunction, 0};
    }

    ReadReply readAt(quint64 offset, MutableBytes buffer) override
    {
        reads.append(QString("%1+%2").arg(offset).arg(buffer.size()));
        if (reads.size() == stopAtRead)
            stop = true;
        if (offset % sector != 0 || quint32(buffer.size()) % sector != 0)
            return {system_error::kInvalidParameter, 0};
        const auto bad = badSectors.lower_bound(offset / 512);
        if (bad != badSectors.end() && *bad < (offset + quint64(buffer.size())) / 512)
            return {error, 0};
        const quint64 left = offset < size ? size - offset : 0;
        return {system_error::kNone, int(qMin(left, quint64(buffer.size())))};
    }

    void cancel() override {}
};

/// A run and its callbacks.
struct Run
{
    QStringList blocks; ///< with "!" behind those that cannot be read
    QStringList percents;
    int pauses = 0;
};

Run scan(FakeDrive &drive, const SectorRange &range, int blockSize)
{
    Run run;
    const ScanBlocks blocks{blockSize, driveSectorSize(drive.sector)};
    QByteArray buffer(scanBufferSize(blocks), '\0');
    const auto blockDone = [&run](const ScanBlock &block) {
        run.blocks += QString("%1-%2").arg(block.sectors.first).arg(block.sectors.last) +
                      (block.readable ? QString() : QStringLiteral("!"));
        run.percents += QString::number(block.percent);
    };
    scanSurface(drive, range, blocks, MutableBytes(buffer), drive.stop,
                {blockDone, [&run] { ++run.pauses; }});
    return run;
}

QString readsOf(const SectorRange &range, int blockSize, quint32 driveSector = 512)
{
    FakeDrive drive;
    drive.sector = driveSector;
    const Run run = scan(drive, range, blockSize);
    const bool isReadable = run.blocks.join(u' ').count(u'!') == 0;
    return isReadable ? drive.reads.join(u' ') + ": " + run.percents.join(u' ')
                      : QStringLiteral("cannot be read");
}

/// Returns the blocks of a scan of 300 sectors in three blocks.
QString blocksOf(const std::set<quint64> &badSectors, quint64 size, int stopAtRead = -1,
                 quint32 error = system_error::kCrc)
{
    FakeDrive drive;
    drive.badSectors = badSectors;
    drive.size = size;
    drive.stopAtRead = stopAtRead;
    drive.error = error;
    return scan(drive, {0, 299}, 65536).blocks.join(u' ');
}

} // namespace

class TestScanLoop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scans_data()
    {
        QTest::addColumn<QString>("run");
        QTest::addColumn<QString>("expected");
        row("300 sectors", readsOf({1000, 1299}, 65536), "512000+65536 577536+65536 643072+22528: 42 85 100");
        row("one sector", readsOf({7, 7}, 65536), "3584+512: 100");
        row("one block exactly", readsOf({0, 127}, 65536), "0+65536: 100");
        row("one sector more", readsOf({0, 128}, 65536), "0+65536 65536+512: 99 100");
        row("blocks of a sector", readsOf({1, 2}, 512), "512+512 1024+512: 0 100");
        row("block that is no whole sectors", readsOf({0, 4}, 1500), "0+1024 1024+1024 2048+512: 25 75 100");
        row("range and blocks inside sectors of 4096", readsOf({1, 11}, 2560, 4096),
            "0+4096 0+8192 4096+4096: 40 90 100");
        row("block over two sectors of 4096", readsOf({7, 8}, 65536, 4096), "0+8192: 100");
        row("the largest sectors", readsOf({0, 0}, 512, 65536), "0+65536: 100");
        row("sectors of no known size", readsOf({0, 1}, 512, 520), "cannot be read");
        row("beyond 32 bits", readsOf({5000000000, 5000000000}, 65536), "2560000000000+512: 100");

        const quint64 whole = 1000000;
        row("no bad sectors", blocksOf({}, whole), "0-127 128-255 256-299");
        row("first sector of a block", blocksOf({128}, whole), "0-127 128-255! 256-299");
        row("last sector of a block", blocksOf({127}, whole), "0-127! 128-255 256-299");
        row("last block", blocksOf({299}, whole), "0-127 128-255 256-299!");
        row("short read at the drive's end", blocksOf({}, 153088), "0-127 128-255 256-299!");
        row("drive vanishes", blocksOf({}, 65536), "0-127 128-255! 256-299!");
        row("stop ends after the block in progress", blocksOf({128}, whole, 2), "0-127 128-255!");
        // Aborted without a stop of ours, the first block is the drive's failure.
        row("read cut off by the stop is no block",
            blocksOf({0, 128}, whole, 2, system_error::kOperationAborted), "0-127!");
    }

    void scans()
    {
        QFETCH(QString, run);
        QTEST(run, "expected");
    }

    /// Areas of 102400 sectors count from the drive's start; blocks here have 512.
    void pausesWhenItLeavesAnArea()
    {
        FakeDrive drive;
        QCOMPARE(scan(drive, {0, 255999}, 262144).pauses, 2);
        QCOMPARE(scan(drive, {102300, 103400}, 262144).pauses, 1);
        QCOMPARE(scan(drive, {102400, 200000}, 262144).pauses, 0);
    }

    void sectorsBeyondTheLargestOffsetAreBad()
    {
        FakeDrive drive;
        const quint64 last = std::numeric_limits<qint64>::max();
        const Run run = scan(drive, {last - 1, last}, 512);
        QVERIFY(drive.reads.isEmpty());
        QCOMPARE(run.blocks.join(u' ').count(u'!'), 2);
    }

    void rangesBeyondTheCapGrowTheLast()
    {
        QVector<SectorRange> ranges(kMaxBadRanges - 1);
        addBadRange(ranges, {1000, 1127});
        addBadRange(ranges, {1128, 1255});
        addBadRange(ranges, {2000, 2127});
        QCOMPARE(ranges.size(), kMaxBadRanges);
        QVERIFY(ranges.last() == (SectorRange{1000, 1255}));
    }
};

QTEST_APPLESS_MAIN(TestScanLoop)
#include "tst_scan_loop.moc"
