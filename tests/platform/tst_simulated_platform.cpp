// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "drive_contract.h"
#include "platform/drive_requests.h"
#include "platform/platform.h"
#include "platform/simulated/machine.h"
#include "platform/simulated/simulated_platform.h"
#include "rows.h"

#include <QDateTime>
#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace drive_request;

namespace {

/// A folder with a machine file in it, and the platform that it makes.
class MachineFolder
{
public:
    [[nodiscard]] QString path(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

    /// Overwrites in place, as an editor may: the file keeps its identity.
    void write(const char *name, const QByteArray &content) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(content), qint64(content.size()));
    }

    /// Tries until it works: Windows refuses while somebody reads the file.
    void replace(const char *name, const QByteArray &content) const
    {
        const auto isReplaced = [&] {
            QSaveFile file(path(name));
            return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
        };
        QTRY_VERIFY(isReplaced());
    }

    /// The platform of a machine with these keys; a wrong key fails the test.
    Platform &start(const QByteArray &json)
    {
        write("m.json", json);
        const QString problem = simulateMachine(m_platform, path("m.json")).value_or(QString());
        if (!problem.isEmpty())
            QTest::qFail(qPrintable(problem), __FILE__, __LINE__);
        return m_platform;
    }

private:
    QTemporaryDir m_folder;
    Platform m_platform;
};

QByteArray oneDrive(const QByteArray &keys)
{
    return R"({"drives": [{"number": 0, )" + keys + "}]}";
}

quint32 openingError(Platform &platform, int number)
{
    return platform.drives->open(physicalDrivePath(number)).error;
}

quint32 requestError(Drive &drive)
{
    QByteArray output(geometry::kSize, '\0');
    return drive.control(kDriveGeometry, ByteView(), MutableBytes(output)).error;
}

ReadReply read(Drive &drive, quint64 offset, QByteArray &buffer)
{
    return drive.readAt(offset, MutableBytes(buffer));
}

/// Raw byte 0 of the first attribute, by way of the predict-failure request.
int temperature(Drive &drive)
{
    QByteArray output(predict_failure::kSize, '\0');
    if (!drive.control(drive_request::kPredictFailure, ByteView(), MutableBytes(output)).ok())
        return -1;
    return ByteView(output).u8(predict_failure::kVendorSpecific + 2 + 5);
}

} // namespace

class TestSimulatedPlatform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void demoMachine()
    {
        Platform platform;
        QCOMPARE(simulateMachine(platform, QStringLiteral("demo")).value_or(QString()), QString());
        int drives = 0;
        int predictOnly = 0;
        int failing = 0;
        int hot = 0;
        int longSectors = 0;
        for (int number = 0; number < 99; ++number) {
            const OpenReply opened = platform.drives->open(physicalDrivePath(number));
            if (!opened.drive)
                continue;
            ++drives;
            QByteArray output(4096, '\0');
            const MutableBytes out(output);
            QVERIFY(opened.drive->control(kDriveGeometry, ByteView(), out).ok());
            longSectors += out.view().le32(geometry::kBytesPerSector) == 4096 ? 1 : 0;
            const ControlReply ata = opened.drive->control(kAtaPassThrough, ByteView(), out);
            predictOnly += ata.error == system_error::kNotSupported ? 1 : 0;
            QVERIFY(opened.drive->control(drive_request::kPredictFailure, ByteView(), out).ok());
            failing += int(out.view().le32(predict_failure::kPredictFailure));
            for (int slot = predict_failure::kVendorSpecific + 2; out.view().u8(slot) != 0; slot += 12)
                hot += out.view().u8(slot) == 194 && out.view().le16(slot + 5) > 55 ? 1 : 0;
        }
        QCOMPARE(drives, 6);
        QCOMPARE(predictOnly, 1);
        QCOMPARE(failing, 1);
        QCOMPARE(hot, 1);
        QCOMPARE(longSectors, 1);
        QCOMPARE(platform.volumes->volumeNames().size(), 3);
        QCOMPARE(platform.accounts->accounts().size(), 3);
    }

    void followsTheContract()
    {
        MachineFolder folder;
        Platform &platform = folder.start(oneDrive(R"("capacity": 1048576)"));
        drive_contract::check(*platform.drives, physicalDrivePath(0));
    }

    void refusesABadFile()
    {
        MachineFolder folder;
        Platform platform;
        folder.write("m.json", R"({"drives": [{"number": 0, "dump": "d.json"}]})");
        folder.write("d.json", R"({"capacity": "big"})");
        QCOMPARE(simulateMachine(platform, folder.path("m.json")).value_or(QString()),
                 folder.path("d.json") +
                     QStringLiteral(": capacity: must be a whole number from 0 to 9007199254740991"));
        QVERIFY(!platform.drives);
        QCOMPARE(simulateMachine(platform, folder.path("none.json")).value_or(QString()),
                 folder.path("none.json") + QStringLiteral(": cannot be read"));
    }

    void paths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<quint32>("error");
        row("plain", "\\\\.\\PhysicalDrive7", 0u);
        row("any case", "\\\\.\\PHYSICALDRIVE7", 0u);
        row("no such drive", "\\\\.\\PhysicalDrive6", 2u);
        row("that fails to open", "\\\\.\\PhysicalDrive8", 5u);
        row("leading zero", "\\\\.\\PhysicalDrive07", 2u);
        row("no number", "\\\\.\\PhysicalDrive", 2u);
        row("another device", "\\\\.\\Scsi7", 2u);
    }

    void paths()
    {
        QFETCH(QString, path);
        MachineFolder folder;
        Platform &platform = folder.start(R"({"drives": [{"number": 7}, {"number": 8, "openError": 5}]})");
        const OpenReply opened = platform.drives->open(path);
        QTEST(opened.error, "error");
        QCOMPARE(bool(opened.drive), opened.error == 0);
    }

    /// Every content has the same length and time of change, as when the file system's clock has not ticked
    /// yet.
    void seesEachChangeAtOnce()
    {
        MachineFolder folder;
        const QDateTime soon = QDateTime::currentDateTimeUtc().addSecs(3600);
        const auto dump = [&](int degrees) {
            folder.write("d.json", R"({"smart": {"attributes": [{"id": 194, "raw": )" +
                                       QByteArray::number(degrees) + "}]}}");
            QFile file(folder.path("d.json"));
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(soon, QFileDevice::FileModificationTime));
        };
        dump(20);
        Platform &platform = folder.start(oneDrive(R"("dump": "d.json")"));
        const OpenReply opened = platform.drives->open(physicalDrivePath(0));
        QVERIFY(opened.drive);
        QCOMPARE(temperature(*opened.drive), 20);
        dump(60);
        QCOMPARE(temperature(*opened.drive), 60);
        dump(61);
        QCOMPARE(temperature(*opened.drive), 61);
        folder.write("m.json", oneDrive(R"("smart": {"attributes": [{"id": 194, "raw": 71}]})"));
        QCOMPARE(temperature(*opened.drive), 71);
    }

    void drivesComeAndGo()
    {
        MachineFolder folder;
        Platform &platform = folder.start(oneDrive(R"("capacity": 1048576)"));
        const OpenReply opened = platform.drives->open(physicalDrivePath(0));
        QVERIFY(opened.drive);
        folder.write("m.json", R"({"drives": [{"number": 1}]})");
        QByteArray buffer(512, '\0');
        QCOMPARE(requestError(*opened.drive), system_error::kDeviceNotConnected);
        QCOMPARE(read(*opened.drive, 0, buffer).error, system_error::kDeviceNotConnected);
        QCOMPARE(openingError(platform, 0), system_error::kFileNotFound);
        QCOMPARE(openingError(platform, 1), system_error::kNone);
    }

    void keepsTheLastGoodMachine()
    {
        MachineFolder folder;
        folder.write("m.json", R"({"accounts": [{"name": "A"}]})");
        QStringList reports;
        QString problem;
        const std::unique_ptr<Machine> machine = Machine::fromFile(
            folder.path("m.json"), [&reports](const QString &text) { reports.append(text); }, problem);
        QVERIFY(machine);
        const auto accounts = [&machine] { return machine->state()->accounts.size(); };
        folder.write("m.json", R"({"accounts": [)");
        QCOMPARE(accounts(), 1);
        QCOMPARE(accounts(), 1);
        QCOMPARE(reports.size(), 1);
        folder.write("m.json", R"({"accounts": [5]})");
        QCOMPARE(accounts(), 1);
        QCOMPARE(reports.value(1),
                 folder.path("m.json") + QStringLiteral(": accounts[0]: must be an object"));
        folder.write("m.json", R"({"accounts": []})");
        QCOMPARE(accounts(), 0);
        QCOMPARE(reports.size(), 2);
        folder.write("m.json", R"({"accounts": [5]})"); // the same mistake, made again
        QCOMPARE(accounts(), 0);
        QCOMPARE(reports.size(), 3);
        QVERIFY(QFile::remove(folder.path("m.json")));
        QCOMPARE(accounts(), 0);
        QCOMPARE(reports.size(), 4);
    }

    /// The machine file comes first, and what it names later, as when a folder is copied.
    void waitsForAMissingFile()
    {
        MachineFolder folder;
        Platform &platform = folder.start("{}");
        folder.write("m.json", oneDrive(R"("dump": "d.json", "image": "i.img")"));
        QCOMPARE(openingError(platform, 0), system_error::kFileNotFound);
        folder.write("d.json", "{}");
        QCOMPARE(openingError(platform, 0), system_error::kFileNotFound);
        folder.write("i.img", "");
        QCOMPARE(openingError(platform, 0), system_error::kNone);
    }

    void readsSectors_data()
    {
        QTest::addColumn<quint64>("offset");
        QTest::addColumn<int>("size");
        QTest::addColumn<quint32>("error");
        QTest::addColumn<int>("bytesRead");
        const auto row = [](const char *name, quint64 offset, int size, quint32 error, int bytesRead) {
            QTest::newRow(name) << offset << size << error << bytesRead;
        };
        row("first sectors", 0, 2048, 0, 2048);
        row("unaligned offset", 256, 512, 87, 0);
        row("unaligned length", 0, 513, 87, 0);
        row("up to the bad ones", 1536, 512, 0, 512);
        row("first bad one", 2048, 512, 23, 0);
        row("bad one at the end", 1536, 1024, 23, 0);
        row("bad one at the start", 2560, 1024, 23, 0);
        row("bad ones inside", 512, 4096, 23, 0);
        row("behind the bad ones", 3072, 512, 0, 512);
        row("last sector", 9728, 512, 0, 512);
        row("across the end", 9216, 4096, 0, 1024); // the 100 bytes left over are no sector
        row("at the end", 10240, 512, 27, 0);
        row("far beyond the end", quint64(1) << 62, 512, 27, 0);
    }

    void readsSectors()
    {
        MachineFolder folder;
        Platform &platform = folder.start(oneDrive(R"("capacity": 10340, "badSectors": [[50, 60], [4, 5]])"));
        const OpenReply opened = platform.drives->open(physicalDrivePath(0));
        QVERIFY(opened.drive);
        QFETCH(quint64, offset);
        QFETCH(int, size);
        QByteArray buffer(size, '\xEE');
        const ReadReply reply = read(*opened.drive, offset, buffer);
        QTEST(reply.error, "error");
        QTEST(reply.bytesRead, "bytesRead");
        QCOMPARE(buffer, QByteArray(reply.bytesRead, '\0').leftJustified(size, '\xEE'));
    }

    void readsLongSectors()
    {
        MachineFolder folder;
        Platform &platform =
            folder.start(oneDrive(R"("capacity": 1048576, "bytesPerSector": 4096, "badSectors": [[9, 9]])"));
        const OpenReply opened = platform.drives->open(physicalDrivePath(0));
        QVERIFY(opened.drive);
        QByteArray buffer(4096, '\0');
        QCOMPARE(read(*opened.drive, 512, buffer).error, system_error::kInvalidParameter);
        QCOMPARE(read(*opened.drive, 0, buffer).error, system_error::kNone);
        QCOMPARE(read(*opened.drive, 4096, buffer).error, system_error::kCrc); // holds the ninth 512 bytes
    }

    void readsTheImage()
    {
        MachineFolder folder;
        folder.write("a.img", QByteArray(512, 'a') + QByteArray(512, 'b') + QByteArray(100, 'c'));
        folder.write("z.img", QByteArray(4096, 'z'));
        Platform &platform = folder.start(oneDrive(R"("capacity": 4096, "image": "a.img")"));
        const OpenReply opened = platform.drives->open(physicalDrivePath(0));
        QVERIFY(opened.drive);
        QByteArray buffer(1024, '\xEE');
        QCOMPARE(read(*opened.drive, 512, buffer).bytesRead, 1024);
        QCOMPARE(buffer, QByteArray(512, 'b') + QByteArray(100, 'c') + QByteArray(412, '\0'));
        QCOMPARE(read(*opened.drive, 3072, buffer).bytesRead, 1024); // the image ends, the drive does not
        QCOMPARE(buffer, QByteArray(1024, '\0'));
        folder.write("m.json", oneDrive(R"("capacity": 4096, "image": "z.img")"));
        QCOMPARE(read(*opened.drive, 0, buffer).bytesRead, 1024);
        QCOMPARE(buffer, QByteArray(1024, 'z'));
    }

    void cancelCutsOff_data()
    {
        QTest::addColumn<QByteArray>("keys");
        row("read", QByteArray(R"("readDelayMs": 60000)"));
        row("S.M.A.R.T. request", QByteArray(R"("smartDelayMs": 60000)"));
    }

    void cancelCutsOff()
    {
        QFETCH(QByteArray, keys);
        MachineFolder folder;
        Platform &platform = folder.start(oneDrive(R"("capacity": 4096, )" + keys));
        const OpenReply opened = platform.drives->open(physicalDrivePath(0));
        QVERIFY(opened.drive);
        QCOMPARE(requestError(*opened.drive), system_error::kNone); // other requests do not wait
        std::atomic<quint32> error{0};
        std::thread reader([&] {
            QByteArray buffer(1024, '\0');
            const MutableBytes out(buffer);
            error = keys.contains("readDelayMs")
                        ? opened.drive->readAt(0, out).error
                        : opened.drive->control(drive_request::kPredictFailure, ByteView(), out).error;
        });
        opened.drive->cancel();
        reader.join();
        QCOMPARE(error.load(), system_error::kOperationAborted);
        QCOMPARE(requestError(*opened.drive), system_error::kOperationAborted);
    }

    void manyThreadsAsk()
    {
        MachineFolder folder;
        const QByteArray small = oneDrive(R"("capacity": 1048576)");
        Platform &platform = folder.start(small);
        std::atomic<int> failures{0};
        std::vector<std::thread> readers;
        for (int i = 0; i < 4; ++i) {
            readers.emplace_back([&] {
                QByteArray buffer(512, '\0');
                for (int round = 0; round < 100; ++round) {
                    const OpenReply opened = platform.drives->open(physicalDrivePath(0));
                    const bool answered = opened.drive &&
                                          requestError(*opened.drive) == system_error::kNone &&
                                          read(*opened.drive, 0, buffer).ok();
                    failures += answered ? 0 : 1;
                }
            });
        }
        for (int change = 0; change < 20; ++change)
            folder.replace("m.json", change % 2 == 0 ? oneDrive(R"("capacity": 4096)") : small);
        for (std::thread &reader : readers)
            reader.join();
        QCOMPARE(failures.load(), 0);
    }

    void volumes()
    {
        MachineFolder folder;
        Platform &platform = folder.start(R"({"volumes": [
        {"name": "v1\\", "letters": ["E", "C"], "label": "One", "fileSystem": "NTFS", "serial": 7,
         "deviceNumber": 3, "totalBytes": 200, "freeBytes": 100},
        {"name": "v2\\", "letters": ["Z"], "driveType": 5, "fails": ["space", "information", "deviceNumber"]}]})");
        VolumeSystem &volumes = *platform.volumes;
        const QString first = QStringLiteral("v1\\");
        const QString second = QStringLiteral("v2\\");
        QCOMPARE(volumes.volumeNames(), (QStringList{first, second}));
        QCOMPARE(volumes.driveType(first), 3u);
        QCOMPARE(volumes.driveType(QStringLiteral("Z:")), 5u);
        QCOMPARE(volumes.driveType(QStringLiteral("D:")), 1u);
        QCOMPARE(volumes.logicalDrives(), 0x02000014u);
        QCOMPARE(volumes.volumeNameAt(QStringLiteral("C:\\")).value_or(QString()), first);
        QVERIFY(!volumes.volumeNameAt(QStringLiteral("D:\\")));
        QCOMPARE(volumes.space(first).value_or(VolumeSpace()).totalBytes, quint64(200));
        QCOMPARE(volumes.space(first).value_or(VolumeSpace()).freeBytes, quint64(100));
        QCOMPARE(volumes.information(first).value_or(VolumeInformation()).label, QStringLiteral("One"));
        QCOMPARE(volumes.deviceNumber(QStringLiteral("v1")).value_or(-1), 3);
        QVERIFY(!volumes.space(second));
        QVERIFY(!volumes.information(second));
        QVERIFY(!volumes.deviceNumber(QStringLiteral("v2")));
        QVERIFY(!volumes.deviceNumber(first)); // a folder's name, not the device's
    }

    void accounts()
    {
        MachineFolder folder;
        Platform &platform = folder.start(R"({"accounts": [{"name": "B", "privilege": 2}, {"name": "A"}]})");
        const QVector<Account> accounts = platform.accounts->accounts();
        QCOMPARE(accounts.size(), 2);
        QCOMPARE(accounts.at(0).name, QStringLiteral("B"));
        QCOMPARE(accounts.at(0).privilege, 2u);
    }

    void eventLog()
    {
        MachineFolder folder;
        Platform &platform = folder.start(R"({"eventLog": "events.jsonl"})");
        platform.eventLog->report(
            {QStringLiteral("Halvex"), EventType::Warning, 0, 2, QStringLiteral("ID: 5 \"x\"\n\u00e9"), {}});
        platform.eventLog->report({QStringLiteral("Halvex"), EventType::Error, 4, 3, QString(), {}});
        QFile file(folder.path("events.jsonl"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(),
                 QByteArray("{\"category\":0,\"id\":2,\"source\":\"Halvex\",\"text\":\"ID: 5 "
                            "\\\"x\\\"\\n\xc3\xa9\",\"type\":2}\n"
                            "{\"category\":4,\"id\":3,\"source\":\"Halvex\",\"text\":\"\",\"type\":1}\n"));
    }
};

QTEST_GUILESS_MAIN(TestSimulatedPlatform)
#include "tst_simulated_platform.moc"
