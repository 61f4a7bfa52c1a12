// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/machine_file.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QtTest>

namespace {

/// Files that exist in memory only.
class FakeFiles : public MachineFiles
{
public:
    explicit FakeFiles(QHash<QString, QByteArray> files = {})
        : m_files(std::move(files))
    {}

    std::optional<QByteArray> read(const QString &path) override
    {
        return m_files.contains(path) ? std::make_optional(m_files.value(path)) : std::nullopt;
    }
    bool canRead(const QString &path) override { return m_files.contains(path); }

private:
    QHash<QString, QByteArray> m_files;
};

const QString kFile = QStringLiteral("home/m.json");

} // namespace

class TestMachineFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mistakes_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("problem");
        const auto row = [](const char *name, const QByteArray &json, const char *problem) {
            QTest::newRow(name) << json << QString::fromLatin1(problem);
        };
        const auto drive = [&row](const char *name, const QByteArray &keys, const char *problem) {
            row(name, R"({"drives": [{"number": 0, )" + keys + "}]}", problem);
        };
        const auto attribute = [&drive](const char *name, const QByteArray &keys, const char *problem) {
            drive(name, R"("smart": {"attributes": [{"id": 5}, {)" + keys + "}]}", problem);
        };
        row("no JSON", "{\n\"drives\":\n}", "home/m.json: line 3: object is missing after a comma");
        row("no object", "[]", "home/m.json: line 1: must be an object");
        row("unknown key", R"({"drive": []})", "home/m.json: drive: is not known");
        row("no list", R"({"drives": {}})", "home/m.json: drives: must be a list");
        row("no object in a list", R"({"drives": [{"number": 1}, 2]})",
            "home/m.json: drives[1]: must be an object");
        row("number missing", R"({"drives": [{}]})", "home/m.json: drives[0].number: is missing");
        row("number beyond the probed ones", R"({"drives": [{"number": 99}]})",
            "home/m.json: drives[0].number: must be a whole number from 0 to 98");
        row("number twice", R"({"drives": [{"number": 7}, {"number": 7}]})",
            "home/m.json: drives[1].number: is taken by another drive");
        drive("unknown drive key", R"("modell": "X")", "home/m.json: drives[0].modell: is not known");
        drive("text that is a number", R"("model": 5)", "home/m.json: drives[0].model: must be a text");
        drive("null", R"("serial": null)", "home/m.json: drives[0].serial: must be a text");
        drive("number that is a text", R"("ataMajor": "1020")",
              "home/m.json: drives[0].ataMajor: must be a whole number from 0 to 65535");
        drive("fraction", R"("readDelayMs": 1.5)",
              "home/m.json: drives[0].readDelayMs: must be a whole number from 0 to 3600000");
        drive("capacity beyond exact numbers", R"("capacity": 9007199254740992)",
              "home/m.json: drives[0].capacity: must be a whole number from 0 to 9007199254740991");
        drive("odd sector size", R"("bytesPerSector": 520)",
              "home/m.json: drives[0].bytesPerSector: must be 512, 1024, 2048 or 4096");
        drive("geometry that divides by zero", R"("geometry": {"sectorsPerTrack": 0})",
              "home/m.json: drives[0].geometry.sectorsPerTrack: must be a whole number from 1 to 2147483647");
        drive("unknown geometry key", R"("geometry": {"heads": 255})",
              "home/m.json: drives[0].geometry.heads: is not known");
        drive("no truth value", R"("smart": {"enabled": 1})",
              "home/m.json: drives[0].smart.enabled: must be true or false");
        drive("no S.M.A.R.T. object", R"("smart": [])", "home/m.json: drives[0].smart: must be an object");
        drive("31 attributes",
              R"("smart": {"attributes": [{"id": 1})" + QByteArray(R"(, {"id": 2})").repeated(30) + "]}",
              "home/m.json: drives[0].smart.attributes: holds more than 30 attributes");
        attribute("attribute without id", R"("raw": 1)",
                  "home/m.json: drives[0].smart.attributes[1].id: is missing");
        attribute("attribute 0 would end the table", R"("id": 0)",
                  "home/m.json: drives[0].smart.attributes[1].id: must be a whole number from 1 to 255");
        attribute("49 bits", R"("id": 9, "raw": 281474976710656)",
                  "home/m.json: drives[0].smart.attributes[1].raw: must be a whole number from 0 to "
                  "281474976710655");
        attribute("negative raw value", R"("id": 9, "raw": -1)",
                  "home/m.json: drives[0].smart.attributes[1].raw: must be a whole number from 0 to "
                  "281474976710655");
        attribute("unknown attribute key", R"("id": 9, "value": 1)",
                  "home/m.json: drives[0].smart.attributes[1].value: is not known");
        drive("short sector", R"("identify": "00ff")",
              "home/m.json: drives[0].identify: must be 1024 hexadecimal digits");
        drive("no hexadecimal digit", R"("smartData": ")" + QByteArray(1023, '0') + R"(g")",
              "home/m.json: drives[0].smartData: must be 1024 hexadecimal digits");
        drive("unknown descriptor key", R"("descriptor": {"bus": "ata"})",
              "home/m.json: drives[0].descriptor.bus: is not known");
        drive("unknown request", R"("answers": ["ata", "nvme"])",
              "home/m.json: drives[0].answers: may only hold geometry, partition, deviceNumber, descriptor, "
              "smartVersion, ata, smart, ide, predict");
        drive("bad range backwards", R"("badSectors": [[1, 2], [4, 3]])",
              "home/m.json: drives[0].badSectors: must hold pairs of a first and a last sector");
        drive("bad sector without a range", R"("badSectors": [5])",
              "home/m.json: drives[0].badSectors: must hold pairs of a first and a last sector");
        drive("missing image", R"("image": "no.img")",
              "home/m.json: drives[0].image: home/no.img cannot be read");
        drive("missing dump", R"("dump": "no.json")",
              "home/m.json: drives[0].dump: home/no.json cannot be read");
        drive("mistake in a dump", R"("dump": "sub/bad.json")",
              "home/sub/bad.json: firmware: must be a text");
        drive("dump that names a number", R"("dump": "sub/number.json")",
              "home/sub/number.json: number: is not known");
        drive("dump that is no JSON", R"("dump": "sub/torn.json")",
              "home/sub/torn.json: line 1: object is missing after a comma");
        row("volume without name", R"({"volumes": [{}]})", "home/m.json: volumes[0].name: is missing");
        row("volume name without backslash", R"({"volumes": [{"name": "x"}]})",
            "home/m.json: volumes[0].name: must end with a backslash");
        row("volume twice", R"({"volumes": [{"name": "x\\"}, {"name": "x\\"}]})",
            "home/m.json: volumes[1].name: is taken by another volume");
        row("letter twice",
            R"({"volumes": [{"name": "x\\", "letters": ["C"]}, {"name": "y\\", "letters": ["D", "C"]}]})",
            "home/m.json: volumes[1].letters: C is taken by another volume");
        row("no letter", R"({"volumes": [{"name": "x\\", "letters": ["CD"]}]})",
            "home/m.json: volumes[0].letters: may only hold A, B, C, D, E, F, G, H, I, J, K, L, M, N, O, P, "
            "Q, "
            "R, S, T, U, V, W, X, Y, Z");
        row("unknown failure", R"({"volumes": [{"name": "x\\", "fails": ["serial"]}]})",
            "home/m.json: volumes[0].fails: may only hold space, information, deviceNumber");
        row("unknown volume key", R"({"volumes": [{"name": "x\\", "size": 1}]})",
            "home/m.json: volumes[0].size: is not known");
        row("account without name", R"({"accounts": [{"privilege": 2}]})",
            "home/m.json: accounts[0].name: is missing");
        row("event log that is no path", R"({"eventLog": true})", "home/m.json: eventLog: must be a text");
        row("the first of two problems", R"({"drives": [{"number": -1}], "other": 1})",
            "home/m.json: drives[0].number: must be a whole number from 0 to 98");
    }

    void mistakes()
    {
        QFETCH(QByteArray, json);
        FakeFiles files({{QStringLiteral("home/sub/bad.json"), R"({"model": "X", "firmware": 1})"},
                         {QStringLiteral("home/sub/number.json"), R"({"number": 1})"},
                         {QStringLiteral("home/sub/torn.json"), R"({"model": })"}});
        QTEST(parseMachine(kFile, json, files).problem, "problem");
    }

    void defaults()
    {
        FakeFiles files;
        const MachineReply reply = parseMachine(
            kFile,
            R"({"drives": [{"number": 3, "model": "M", "serial": "S", "firmware": "F", "capacity": 1000204886016}],
                   "volumes": [{"name": "x\\"}]})",
            files);
        QCOMPARE(reply.problem, QString());
        const DriveState &drive = reply.machine.drives.constFirst();
        QCOMPARE(drive.bytesPerSector, 512u);
        QCOMPARE(drive.geometry.cylinders, qint64(121601));
        QCOMPARE(drive.geometry.tracksPerCylinder, 255u);
        QCOMPARE(drive.geometry.sectorsPerTrack, 63u);
        QCOMPARE(drive.descriptor.vendor, QString());
        QCOMPARE(drive.descriptor.product, QStringLiteral("M"));
        QCOMPARE(drive.descriptor.revision, QStringLiteral("F"));
        QCOMPARE(drive.descriptor.serial, QStringLiteral("S"));
        QCOMPARE(drive.deviceNumber, 3u);
        QCOMPARE(drive.mediaType, 12u);
        QCOMPARE(drive.answers.size(), 9);
        QVERIFY(drive.smart.enabled);
        QCOMPARE(reply.machine.volumes.constFirst().driveType, 3u);
    }

    void keysWinOverTheDump()
    {
        FakeFiles files({{QStringLiteral("home/sub/d.json"),
                          R"({"model": "Dumped", "firmware": "1", "capacity": 5120000, "image": "d.img",
                          "smart": {"offlineCapability": 83, "attributes": [{"id": 1}, {"id": 2}]},
                          "descriptor": {"product": "Product", "revision": "9"}})"},
                         {QStringLiteral("home/sub/d.img"), ""}});
        const MachineReply reply =
            parseMachine(kFile, R"({"drives": [{"number": 0, "dump": "sub/d.json", "model": "Given",
                   "smart": {"attributes": [{"id": 194, "raw": 60}]}, "descriptor": {"revision": ""}}]})",
                         files);
        QCOMPARE(reply.problem, QString());
        const DriveState &drive = reply.machine.drives.constFirst();
        QCOMPARE(drive.model, QStringLiteral("Given"));
        QCOMPARE(drive.firmware, QStringLiteral("1"));
        QCOMPARE(drive.capacityBytes, quint64(5120000));
        QCOMPARE(drive.image, QStringLiteral("home/sub/d.img"));
        QCOMPARE(int(drive.smart.offlineCapability), 83);
        QCOMPARE(drive.smart.attributes.size(), 1);
        QCOMPARE(int(drive.smart.attributes.constFirst().id), 194);
        QCOMPARE(drive.descriptor.product, QStringLiteral("Product"));
        QCOMPARE(drive.descriptor.revision, QString());
    }

    void wholeSectorsStandAsGiven()
    {
        FakeFiles files;
        const QByteArray digits = QByteArray("5a").repeated(512);
        const MachineReply reply =
            parseMachine(kFile,
                         R"({"drives": [{"number": 0, "model": "M", "smart": {"attributes": [{"id": 5}]},
                                "identify": ")" +
                             digits + R"(", "smartData": ")" + digits.toUpper() +
                             R"(", "smartThresholds": ")" + digits + R"("}]})",
                         files);
        QCOMPARE(reply.problem, QString());
        const DriveState &drive = reply.machine.drives.constFirst();
        QCOMPARE(drive.identify, QByteArray(512, 'Z'));
        QCOMPARE(drive.smartData, QByteArray(512, 'Z'));
        QCOMPARE(drive.smartThresholds, QByteArray(512, 'Z'));
    }

    /// The keys whose values no other test meets.
    void everyKeyIsRead()
    {
        FakeFiles files;
        const MachineReply reply = parseMachine(kFile, R"({
        "drives": [{"number": 98, "bytesPerSector": 4096,
                    "geometry": {"cylinders": 7, "tracksPerCylinder": 8, "sectorsPerTrack": 9},
                    "smart": {"enabled": false, "offlineStatus": 130, "smartCapability": 259},
                    "descriptor": {"vendor": "V"}, "deviceNumber": 12, "mediaType": 11, "answers": ["ide"],
                    "openError": 5, "badSectors": [[10, 20], [30, 30]], "smartDelayMs": 1, "readDelayMs": 2}],
        "volumes": [{"name": "x\\", "letters": ["E", "C"], "driveType": 2, "label": "L", "fileSystem": "FAT32",
                     "serial": 4294967295, "deviceNumber": 4, "totalBytes": 9000000000, "freeBytes": 1,
                     "fails": ["space"]}],
        "accounts": [{"name": "A, B", "privilege": 7}],
        "eventLog": "e.jsonl"})",
                                                files);
        QCOMPARE(reply.problem, QString());
        const DriveState &drive = reply.machine.drives.constFirst();
        QCOMPARE(drive.geometry.cylinders, qint64(7));
        QCOMPARE(drive.geometry.tracksPerCylinder, 8u);
        QCOMPARE(drive.geometry.sectorsPerTrack, 9u);
        QVERIFY(!drive.smart.enabled);
        QCOMPARE(int(drive.smart.offlineStatus), 130);
        QCOMPARE(int(drive.smart.smartCapability), 259);
        QCOMPARE(drive.descriptor.vendor, QStringLiteral("V"));
        QCOMPARE(drive.deviceNumber, 12u);
        QCOMPARE(drive.mediaType, 11u);
        QCOMPARE(drive.answers, QStringList{QStringLiteral("ide")});
        QCOMPARE(drive.openError, 5u);
        QCOMPARE(drive.badSectors.size(), 2);
        QCOMPARE(drive.badSectors.at(0).last, quint64(20));
        QCOMPARE(drive.smartDelayMs, 1);
        QCOMPARE(drive.readDelayMs, 2);
        const VolumeState &volume = reply.machine.volumes.constFirst();
        QCOMPARE(volume.letters, QStringLiteral("EC"));
        QCOMPARE(volume.information.fileSystem, QStringLiteral("FAT32"));
        QCOMPARE(volume.information.serial, 0xFFFFFFFFu);
        QCOMPARE(volume.space.totalBytes, quint64(9000000000));
        QCOMPARE(volume.fails, QStringList{QStringLiteral("space")});
        QCOMPARE(reply.machine.accounts.constFirst().privilege, 7u);
        QCOMPARE(reply.machine.eventLog, QStringLiteral("home/e.jsonl"));
    }

    void realDumps()
    {
        const QDir folder(QStringLiteral(HALVEX_SOURCE_DIR "/tests/fixtures/drives"));
        const QStringList names = folder.entryList({QStringLiteral("*.json")});
        QCOMPARE(names.size(), 52);
        for (const QString &name : names) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            FakeFiles files({{QStringLiteral("home/d.json"), file.readAll()}});
            const MachineReply reply =
                parseMachine(kFile, R"({"drives": [{"number": 0, "dump": "d.json"}]})", files);
            QCOMPARE(reply.problem, QString());
            QVERIFY2(!reply.machine.drives.constFirst().smart.attributes.isEmpty(), qPrintable(name));
        }
    }

    /// The example that people start from must be a machine.
    void documentedExample()
    {
        QFile page(QStringLiteral(HALVEX_SOURCE_DIR "/docs/simulated-machine.md"));
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QByteArray text = page.readAll();
        const int start = text.indexOf("\n    {\n", text.indexOf("## An example"));
        const int end = text.indexOf("\n    }\n", start);
        QVERIFY(start > 0 && end > start);
        FakeFiles files({{QStringLiteral("home/drives/st3200820as.json"), "{}"}});
        const MachineReply reply = parseMachine(kFile, text.mid(start, end + 7 - start), files);
        QCOMPARE(reply.problem, QString());
        QCOMPARE(reply.machine.drives.size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestMachineFile)
#include "tst_machine_file.moc"
