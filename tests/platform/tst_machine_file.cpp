// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
#include "platform/simulated/machine_file.h"
#include "rows.h"

#include <QFile>
#include <QHash>

namespace {

/// Files in memory.
class FakeFiles : public MachineFiles
{
public:
    explicit FakeFiles(QHash<QString, QByteArray> files)
        : m_files(std::move(files))
    {}

    std::optional<QByteArray> read(const QString &path) override
    {
        return canRead(path) ? std::make_optional(m_files.value(path)) : std::nullopt;
    }
    bool canRead(const QString &path) override { return m_files.contains(path); }

private:
    QHash<QString, QByteArray> m_files;
};

MachineReply parse(const QByteArray &json, const QHash<QString, QByteArray> &others = {})
{
    FakeFiles files(others);
    return parseMachine("home/m.json", json, files);
}

} // namespace

class TestMachineFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void errorMessages_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("problem");
        row("no JSON", "{\n\"drives\":\n}", "m.json: line 3: object is missing after a comma");
        row("unknown key", R"({"drive": []})", "m.json: drive: is not known");
        row("no list", R"({"drives": {}})", "m.json: drives: must be a list");
        row("number beyond the probed ones", R"({"drives": [{"number": 99}]})",
            "m.json: drives[0].number: must be a whole number from 0 to 98");
        row("number twice", R"({"drives": [{"number": 7}, {"number": 7}]})",
            "m.json: drives[1].number: is taken by another drive");
        row("volume name without backslash", R"({"volumes": [{"name": "x"}]})",
            "m.json: volumes[0].name: must end with a backslash");
        row("letter twice",
            R"({"volumes": [{"name": "x\\", "letters": ["C"]}, {"name": "y\\", "letters": ["D", "C"]}]})",
            "m.json: volumes[1].letters: C is taken by another volume");
        row("mistake in a dump", R"({"drives": [{"number": 0, "dump": "sub/type.json"}]})",
            "sub/type.json: firmware: must be a text");
    }

    void errorMessages()
    {
        QFETCH(QString, json);
        QFETCH(QString, problem);
        const QByteArray dump = R"({"model": "X", "firmware": 1})";
        QCOMPARE(parse(json.toLatin1(), {{"home/sub/type.json", dump}}).problem, "home/" + problem);
    }

    void mistakesInADrive_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("problem");
        row("unknown key", R"("modell": "X")", "modell: is not known");
        row("text that is a number", R"("model": 5)", "model: must be a text");
        row("delay that is a fraction", R"("readDelayMs": 1.5)",
            "readDelayMs: must be a whole number from 0 to 3600000");
        row("odd sector size", R"("bytesPerSector": 520)", "bytesPerSector: must be 512, 1024, 2048 or 4096");
        row("geometry that divides by zero", R"("geometry": {"sectorsPerTrack": 0})",
            "geometry.sectorsPerTrack: must be a whole number from 1 to 2147483647");
        row("no object", R"("smart": [])", "smart: must be an object");
        row("number instead of a boolean", R"("smart": {"enabled": 1})",
            "smart.enabled: must be true or false");
        row("31 attributes",
            R"("smart": {"attributes": [)" + QString(R"({"id": 2}, )").repeated(30) + R"({"id": 1}]})",
            "smart.attributes: holds more than 30 attributes");
        row("attribute without id", R"("smart": {"attributes": [{"id": 5}, {"raw": 1}]})",
            "smart.attributes[1].id: is missing");
        row("attribute 0 would end the table", R"("smart": {"attributes": [{"id": 0}]})",
            "smart.attributes[0].id: must be a whole number from 1 to 255");
        row("short sector", R"("identify": "00ff")", "identify: must be 1024 hexadecimal digits");
        row("unknown request", R"("answers": ["ata", "nvme"])",
            "answers: may only hold geometry, partition, deviceNumber, descriptor, smartVersion, ata, smart, "
            "ide, predict");
        row("bad range backwards", R"("badSectors": [[1, 2], [4, 3]])",
            "badSectors: must hold pairs of a first and a last sector");
        row("missing dump", R"("dump": "no.json")", "dump: home/no.json cannot be read");
    }

    void mistakesInADrive()
    {
        QFETCH(QString, keys);
        QFETCH(QString, problem);
        QCOMPARE(parse(R"({"drives": [{"number": 0, )" + keys.toLatin1() + "}]}").problem,
                 "home/m.json: drives[0]." + problem);
    }

    void keysOverrideTheDump()
    {
        const MachineReply reply = parse(
            R"({"drives": [{"number": 0, "dump": "sub/d.json", "model": "Given",
                "smart": {"attributes": [{"id": 194, "raw": 60}]}, "descriptor": {"revision": ""}}]})",
            {{"home/sub/d.json", R"({"model": "Dumped", "firmware": "1", "image": "d.img",
                "smart": {"offlineCapability": 83, "attributes": [{"id": 1}, {"id": 2}]},
                "descriptor": {"product": "Product", "revision": "9"}})"},
             {"home/sub/d.img", ""}});
        QCOMPARE(reply.problem, QString());
        const DriveState &drive = reply.machine.drives.constFirst();
        QCOMPARE(drive.model, "Given");
        QCOMPARE(drive.firmware, "1");
        QCOMPARE(drive.image, "home/sub/d.img");
        QCOMPARE(drive.smart.offlineCapability, quint8(83));
        QCOMPARE(drive.smart.attributes.size(), 1);
        QCOMPARE(drive.smart.attributes.constFirst().id, quint8(194));
        QCOMPARE(drive.descriptor.product, "Product");
        QCOMPARE(drive.descriptor.revision, "");
    }

    void wholeSectorsAreUsedUnchanged()
    {
        const QString json = R"({"drives": [{"number": 0,
            "identify": "%1", "smartData": "%2", "smartThresholds": "%3"}]})";
        const auto digits = [](const char *byte) { return QString(byte).repeated(512); };
        const MachineReply reply = parse(json.arg(digits("55"), digits("6F"), digits("7f")).toLatin1());
        QCOMPARE(reply.problem, QString());
        const DriveState &drive = reply.machine.drives.constFirst();
        QCOMPARE(drive.identify, QByteArray(512, '\x55'));
        QCOMPARE(drive.smartData, QByteArray(512, '\x6F'));
        QCOMPARE(drive.smartThresholds, QByteArray(512, '\x7F'));
    }

    /// The documented example must be a valid machine.
    void documentedExample()
    {
        const QByteArray text = contentOf(HALVEX_SOURCE_DIR "/docs/simulated-machine.md");
        const int start = text.indexOf("\n    {\n", text.indexOf("## An example"));
        const int end = text.indexOf("\n    }\n", start) + 7;
        const MachineReply reply =
            parse(text.mid(start, end - start), {{"home/drives/st3200820as.json", "{}"}});
        QCOMPARE(reply.problem, QString());
        QCOMPARE(reply.machine.drives.size(), 2);
    }
};

QTEST_APPLESS_MAIN(TestMachineFile)
#include "tst_machine_file.moc"
