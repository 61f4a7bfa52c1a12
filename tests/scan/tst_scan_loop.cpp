// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "scan/scan_loop.h"
#include "scan/scan_progress.h"

#include <QtTest>

#include <limits>
#include <set>

namespace {

/// A read as the drive saw it, in bytes.
struct Read
{
    quint64 offset = 0;
    int length = 0;

    friend bool operator==(const Read &a, const Read &b)
    {
        return a.offset == b.offset && a.length == b.length;
    }
};

/// A drive that costs nothing: reads fail where a bad sector is touched.
class FakeDrive : public Drive
{
public:
    std::set<quint64> badSectors;
    quint64 size = std::numeric_limits<quint64>::max(); ///< bytes; reads across the end are short
    quint32 error = system_error::kCrc;
    QVector<Read> reads;
    std::atomic<bool> stop{false};
    int stopAtRead = -1; ///< this read finds that a stop was requested meanwhile

    ControlReply control(quint32, ByteView, MutableBytes) override
    {
        return {system_error::kInvalidFunction, 0};
    }

    ReadReply readAt(quint64 offset, MutableBytes buffer) override
    {
        reads.append({offset, buffer.size()});
        if (reads.size() == stopAtRead)
            stop = true;
        const auto bad = badSectors.lower_bound(offset / 512);
        if (bad != badSectors.end() && *bad < (offset + quint64(buffer.size())) / 512)
            return {error, 0};
        const quint64 left = offset < size ? size - offset : 0;
        return {system_error::kNone, int(qMin(left, quint64(buffer.size())))};
    }

    void cancel() override {}
};

/// A run, and what it told.
struct Run
{
    ScanTotals totals;
    QVector<SectorRange> blocks;
    QVector<SectorRange> badBlocks;
    QVector<int> percents;
    int pauses = 0;
};

Run scan(FakeDrive &drive, const SectorRange &range, int blockSize)
{
    Run run;
    QByteArray buffer(blockSize, '\0');
    run.totals = scanSurface(drive, range, MutableBytes(buffer), drive.stop,
                             {[&run](const ScanBlock &block) {
                                  run.blocks.append(block.sectors);
                                  run.percents.append(block.percent);
                                  if (!block.readable)
                                      run.badBlocks.append(block.sectors);
                              },
                              [&run] { ++run.pauses; }});
    return run;
}

} // namespace

Q_DECLARE_METATYPE(Read)
Q_DECLARE_METATYPE(SectorRange)

class TestScanLoop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_data()
    {
        QTest::addColumn<SectorRange>("range");
        QTest::addColumn<int>("blockSize");
        QTest::addColumn<QVector<Read>>("reads");
        using Reads = QVector<Read>;
        row("300 sectors", SectorRange{1000, 1299}, 65536,
            Reads{{512000, 65536}, {577536, 65536}, {643072, 22528}});
        row("one sector", SectorRange{7, 7}, 65536, Reads{{3584, 512}});
        row("one block exactly", SectorRange{0, 127}, 65536, Reads{{0, 65536}});
        row("one sector more", SectorRange{0, 128}, 65536, Reads{{0, 65536}, {65536, 512}});
        row("blocks of a sector", SectorRange{1, 2}, 512, Reads{{512, 512}, {1024, 512}});
        row("block that is no whole sectors", SectorRange{0, 4}, 1500,
            Reads{{0, 1024}, {1024, 1024}, {2048, 512}});
        row("beyond 32 bits of sectors", SectorRange{5000000000, 5000000000}, 65536,
            Reads{{2560000000000, 512}});
    }

    void reads()
    {
        QFETCH(SectorRange, range);
        QFETCH(int, blockSize);
        FakeDrive drive;
        const Run run = scan(drive, range, blockSize);
        QTEST(drive.reads, "reads");
        QCOMPARE(run.totals.sectorsDone, range.last - range.first + 1);
        QCOMPARE(run.totals.areasDone, quint64(1));
    }

    void percents_data()
    {
        QTest::addColumn<SectorRange>("range");
        QTest::addColumn<QVector<int>>("percents");
        row("300 sectors", SectorRange{1000, 1299}, QVector<int>{42, 85, 100});
        row("one sector", SectorRange{7, 7}, QVector<int>{100});
        row("two blocks", SectorRange{0, 255}, QVector<int>{49, 100});
    }

    void percents()
    {
        QFETCH(SectorRange, range);
        FakeDrive drive;
        QTEST(scan(drive, range, 65536).percents, "percents");
    }

    void badBlocks_data()
    {
        QTest::addColumn<QVector<quint64>>("badSectors");
        QTest::addColumn<quint64>("size"); // of the drive, in bytes
        QTest::addColumn<QVector<SectorRange>>("badBlocks");
        using Sectors = QVector<quint64>;
        using Ranges = QVector<SectorRange>;
        const quint64 whole = 1000000;
        row("none", Sectors{}, whole, Ranges{});
        row("first sector of a block", Sectors{128}, whole, Ranges{{128, 255}});
        row("last sector of a block", Sectors{127}, whole, Ranges{{0, 127}});
        row("last block", Sectors{299}, whole, Ranges{{256, 299}});
        row("two in one block", Sectors{3, 5}, whole, Ranges{{0, 127}});
        row("neighbours stay apart", Sectors{127, 128}, whole, Ranges{{0, 127}, {128, 255}});
        row("short read at the drive's end", Sectors{}, quint64(299 * 512), Ranges{{256, 299}});
        row("drive vanishes", Sectors{}, quint64(65536), Ranges{{128, 255}, {256, 299}});
    }

    void badBlocks()
    {
        QFETCH(QVector<quint64>, badSectors);
        QFETCH(quint64, size);
        FakeDrive drive;
        drive.badSectors = {badSectors.begin(), badSectors.end()};
        drive.size = size;
        const Run run = scan(drive, {0, 299}, 65536);
        QTEST(run.badBlocks, "badBlocks");
        QCOMPARE(run.blocks, (QVector<SectorRange>{{0, 127}, {128, 255}, {256, 299}}));
    }

    void areas_data()
    {
        QTest::addColumn<SectorRange>("range");
        QTest::addColumn<QVector<quint64>>("badSectors");
        QTest::addColumn<int>("stopAtRead");
        QTest::addColumn<quint64>("areasDone");
        QTest::addColumn<quint64>("badAreas");
        QTest::addColumn<int>("pauses");
        using Sectors = QVector<quint64>;
        const auto row = [](const char *title, const SectorRange &range, const Sectors &bad, int stopAtRead,
                            quint64 areasDone, quint64 badAreas, int pauses) {
            QTest::newRow(title) << range << bad << stopAtRead << areasDone << badAreas << pauses;
        };
        // Blocks of 512 sectors: an area is blocks 1 to 200, the next begins with block 201.
        const SectorRange twoAndAHalf{0, 255999};
        row("all readable", twoAndAHalf, {}, -1, 3, 0, 2);
        row("inside an area", twoAndAHalf, {50000}, -1, 3, 1, 2);
        row("twice in an area", twoAndAHalf, {50000, 60000}, -1, 3, 1, 2);
        row("in two areas", twoAndAHalf, {50000, 150000}, -1, 3, 2, 2);
        row("last block of an area", twoAndAHalf, {102399}, -1, 3, 1, 2);
        // An area is left when a block ends in the next one, and that block's failure still goes to it.
        row("both blocks at a border", twoAndAHalf, {102399, 102400}, -1, 3, 1, 2);
        row("in the area that the range ends in", twoAndAHalf, {255999}, -1, 3, 0, 2);
        row("stop in a bad area", twoAndAHalf, {50000}, 150, 1, 1, 0);
        row("stop in a good area behind a bad one", twoAndAHalf, {50000}, 250, 2, 1, 1);
        row("stop with the first block of an area", twoAndAHalf, {50000}, 201, 2, 1, 1);
        // Areas are counted from the drive's start, not from the range's.
        row("range across a border", {102300, 103400}, {}, -1, 2, 0, 1);
    }

    void areas()
    {
        QFETCH(SectorRange, range);
        QFETCH(QVector<quint64>, badSectors);
        QFETCH(int, stopAtRead);
        FakeDrive drive;
        drive.badSectors = {badSectors.begin(), badSectors.end()};
        drive.stopAtRead = stopAtRead;
        const Run run = scan(drive, range, 262144);
        QTEST(run.totals.areasDone, "areasDone");
        QTEST(run.totals.badAreas, "badAreas");
        QTEST(run.pauses, "pauses");
    }

    void stopEndsAfterTheBlockInHand()
    {
        FakeDrive drive;
        drive.badSectors = {128};
        drive.stopAtRead = 2;
        const Run run = scan(drive, {0, 299}, 65536);
        QCOMPARE(run.blocks, (QVector<SectorRange>{{0, 127}, {128, 255}}));
        QCOMPARE(run.badBlocks, (QVector<SectorRange>{{128, 255}}));
        QCOMPARE(run.totals.sectorsDone, quint64(256));
    }

    void readCutOffByTheStopIsNoBlock()
    {
        FakeDrive drive;
        drive.badSectors = {0, 128};
        drive.error = system_error::kOperationAborted;
        drive.stopAtRead = 2;
        const Run run = scan(drive, {0, 299}, 65536);
        // Aborted without a stop of ours, the first block is the drive's failure.
        QCOMPARE(run.badBlocks, (QVector<SectorRange>{{0, 127}}));
        QCOMPARE(run.totals.sectorsDone, quint64(128));
    }

    void sectorsThatCannotBeSoughtAreBad()
    {
        FakeDrive drive;
        const quint64 last = std::numeric_limits<qint64>::max();
        const Run run = scan(drive, {last - 1, last}, 512);
        QCOMPARE(drive.reads.size(), 0);
        QCOMPARE(run.badBlocks, (QVector<SectorRange>{{last - 1, last - 1}, {last, last}}));
    }

    void rangesBeyondTheCapGrowTheLast()
    {
        QVector<SectorRange> ranges(kMaxBadRanges - 1);
        addBadRange(ranges, {1000, 1127});
        addBadRange(ranges, {1128, 1255});
        addBadRange(ranges, {2000, 2127});
        QCOMPARE(ranges.size(), kMaxBadRanges);
        QCOMPARE(ranges.last(), (SectorRange{1000, 1255}));
    }
};

QTEST_APPLESS_MAIN(TestScanLoop)
#include "tst_scan_loop.moc"
