// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "drive_contract.h"
#include "files.h"
#include "platform/drive_requests.h"
#include "platform/platform.h"
#include "platform/simulated/machine.h"
#include "platform/simulated/simulated_platform.h"
#include "rows.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace drive_request;

namespace {

/// A folder with a machine file, and the platform made from it.
class MachineFolder
{
public:
    /// A wrong key fails the test.
    explicit MachineFolder(const QByteArray &json)
    {
        write("m.json", json);
        const std::optional<QString> problem = simulateMachine(m_platform, path("m.json"));
        QVERIFY2(!problem, qPrintable(problem.value_or(QString())));
    }

    [[nodiscard]] QString path(const char *name) const { return m_folder.filePath(name); }

    /// Overwrites the file in place, so that it keeps its inode.
    void write(const char *name, const QByteArray &content) const { writeFile(path(name), content); }

    [[nodiscard]] Platform &platform() { return m_platform; }
    /// Opens drive 0.
    [[nodiscard]] OpenReply open() { return m_platform.drives->open(physicalDrivePath(0)); }

private:
    QTemporaryDir m_folder;
    Platform m_platform;
};

QByteArray oneDrive(const QByteArray &keys)
{
    return R"({"drives": [{"number": 0, )" + keys + "}]}";
}

/// Returns raw byte 0 of the first attribute, read by the predict-failure request.
int temperature(Drive &drive)
{
    QByteArray output(predict_failure::kSize, '\0');
    drive.control(drive_request::kPredictFailure, ByteView(), MutableBytes(output));
    return ByteView(output).u8(predict_failure::kVendorSpecific + 2 + 5);
}

} // namespace

class TestSimulatedPlatform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheContract()
    {
        MachineFolder folder(oneDrive(R"("capacity": 1048576)"));
        drive_contract::check(*folder.platform().drives, physicalDrivePath(0));
    }

    /// Every content has the same length and modification time, as within one tick of the file system's
    /// clock.
    void seesEachChangeAtOnce()
    {
        MachineFolder folder(oneDrive(R"("smart": {"attributes": [{"id": 194, "raw": 10}]})"));
        const OpenReply opened = folder.open();
        folder.write("d.json", "{}");
        folder.write("m.json", oneDrive(R"("dump": "d.json")"));
        const QDateTime soon = QDateTime::currentDateTimeUtc().addSecs(3600);
        for (const int degrees : {20, 60, 61}) {
            folder.write("d.json", R"({"smart": {"attributes": [{"id": 194, "raw": )" +
                                       QByteArray::number(degrees) + "}]}}");
            QFile file(folder.path("d.json"));
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(soon, QFileDevice::FileModificationTime));
            QCOMPARE(temperature(*opened.drive), degrees);
        }
    }

    void keepsTheLastGoodMachine()
    {
        MachineFolder folder(R"({"accounts": [{"name": "A"}]})");
        QStringList reports;
        QString problem;
        const std::unique_ptr<Machine> machine = Machine::fromFile(
            folder.path("m.json"), [&](const QString &text) { reports << text; }, problem);
        QVERIFY(machine);
        const auto write = [&](const QByteArray &json, int accounts, int reported) {
            folder.write("m.json", json);
            QCOMPARE(machine->state()->accounts.size(), accounts);
            QCOMPARE(machine->state()->accounts.size(), accounts);
            QCOMPARE(reports.size(), reported);
        };
        write(R"({"accounts": [)", 1, 1);
        write(R"({"accounts": [5]})", 1, 2);
        QCOMPARE(reports.last(), folder.path("m.json") + ": accounts[0]: must be an object");
        write(R"({"accounts": []})", 0, 2);
        write(R"({"accounts": [5]})", 0, 3); // the same error again
        QVERIFY(QFile::remove(folder.path("m.json")));
        QCOMPARE(machine->state()->accounts.size(), 0);
        QCOMPARE(reports.size(), 4);
    }

    /// The machine file appears before the files that it names, as when a folder is copied.
    void waitsForAMissingFile()
    {
        MachineFolder folder("{}");
        folder.write("m.json", oneDrive(R"("dump": "d.json", "image": "i.img")"));
        QCOMPARE(folder.open().error, system_error::kFileNotFound);
        folder.write("d.json", "{}");
        QCOMPARE(folder.open().error, system_error::kFileNotFound);
        folder.write("i.img", "");
        QCOMPARE(folder.open().error, system_error::kNone);
    }

    void readsSectors_data()
    {
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<quint64>("offset");
        QTest::addColumn<int>("size");
        QTest::addColumn<quint32>("error");
        QTest::addColumn<int>("bytesRead");
        const QByteArray small = R"("capacity": 10340, "badSectors": [[50, 60], [4, 5]])";
        const QByteArray large = R"("capacity": 1048576, "bytesPerSector": 4096, "badSectors": [[9, 9]])";
        row("up to the bad ones", small, 1536ULL, 512, 0U, 512);
        row("bad first sector", small, 2560ULL, 1024, 23U, 0);
        row("bad sectors inside", small, 512ULL, 4096, 23U, 0);
        row("across the end", small, 9216ULL, 4096, 0U, 1024); // the last 100 bytes are less than a sector
        row("first byte far beyond the end", small, 1ULL << 62, 512, 27U, 0);
        row("long sector, unaligned", large, 512ULL, 4096, 87U, 0);
        row("long sector that is bad in part", large, 4096ULL, 4096, 23U, 0);
    }

    void readsSectors()
    {
        QFETCH(QByteArray, keys);
        QFETCH(quint64, offset);
        QFETCH(int, size);
        MachineFolder folder(oneDrive(keys));
        QByteArray buffer(size, '\xEE');
        const ReadReply reply = folder.open().drive->readAt(offset, MutableBytes(buffer));
        QTEST(reply.error, "error");
        QTEST(reply.bytesRead, "bytesRead");
        QCOMPARE(buffer, QByteArray(reply.bytesRead, '\0').leftJustified(size, '\xEE'));
    }

    void readsTheImage()
    {
        MachineFolder folder("{}");
        folder.write("a.img", QByteArray(512, 'a') + QByteArray(512, 'b') + QByteArray(100, 'c'));
        folder.write("z.img", QByteArray(4096, 'z'));
        folder.write("m.json", oneDrive(R"("capacity": 4096, "image": "a.img")"));
        const OpenReply opened = folder.open();
        QByteArray buffer(1024, '\xEE');
        const auto read = [&](quint64 offset) {
            return opened.drive->readAt(offset, MutableBytes(buffer)).ok() ? buffer : QByteArray();
        };
        QCOMPARE(read(512), QByteArray(512, 'b') + QByteArray(100, 'c') + QByteArray(412, '\0'));
        QCOMPARE(read(3072), QByteArray(1024, '\0')); // beyond the image, within the drive
        folder.write("m.json", oneDrive(R"("capacity": 4096, "image": "z.img")"));
        QCOMPARE(read(0), QByteArray(1024, 'z'));
    }

    void cancelEndsAPendingRead()
    {
        MachineFolder folder(oneDrive(R"("capacity": 4096, "readDelayMs": 60000)"));
        const OpenReply opened = folder.open();
        quint32 error = 0;
        std::thread reader([&] {
            QByteArray buffer(512, '\0');
            error = opened.drive->readAt(0, MutableBytes(buffer)).error;
        });
        opened.drive->cancel();
        reader.join();
        QCOMPARE(error, system_error::kOperationAborted);
    }

    void requestsFromManyThreads()
    {
        const QByteArray small = oneDrive(R"("capacity": 1048576)");
        MachineFolder folder(small);
        std::atomic<int> failures{0};
        std::vector<std::thread> readers(4);
        for (std::thread &reader : readers) {
            reader = std::thread([&] {
                QByteArray buffer(512, '\0');
                for (int round = 0; round < 100; ++round) {
                    const OpenReply opened = folder.open();
                    if (!opened.drive || !opened.drive->readAt(0, MutableBytes(buffer)).ok())
                        ++failures;
                }
            });
        }
        // Repeats until it succeeds: Windows refuses while another program reads the file.
        for (int change = 0; change < 20; ++change)
            QTRY_VERIFY(replaceFile(folder.path("m.json"),
                                    change % 2 == 0 ? oneDrive(R"("capacity": 4096)") : small));
        for (std::thread &reader : readers)
            reader.join();
        QCOMPARE(failures.load(), 0);
    }

    void volumesThatFail()
    {
        MachineFolder folder(R"({"volumes": [{"name": "s\\", "letters": ["Z"], "fails": ["space"]},
                                             {"name": "i\\", "fails": ["information"]}]})");
        VolumeSystem &volumes = *folder.platform().volumes;
        QVERIFY(!volumes.space("s\\") && volumes.information("s\\"));
        QVERIFY(!volumes.information("i\\") && volumes.space("i\\"));
        QCOMPARE(volumes.driveType("D:"), 1U);
        QVERIFY(!volumes.volumeNameAt("D:\\"));
    }
};

QTEST_GUILESS_MAIN(TestSimulatedPlatform)
#include "tst_simulated_platform.moc"
