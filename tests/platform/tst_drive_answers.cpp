// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/drive_requests.h"
#include "platform/simulated/drive_answers.h"
#include "platform/simulated/machine_file.h"
#include "rows.h"

#include <QtTest>

using namespace drive_request;

namespace {

class NoFiles : public MachineFiles
{
public:
    std::optional<QByteArray> read(const QString &) override { return std::nullopt; }
    bool canRead(const QString &) override { return false; }
};

DriveState drive(const QByteArray &keys = R"("model": "M")", const QByteArray &threshold = "7e")
{
    NoFiles files;
    const QByteArray json =
        R"({"drives": [{"number": 1, "capacity": 1000204886016, "serial": "SER", "firmware": "FW",
        "smartData": ")" +
        QByteArray("d1").repeated(512) + R"(", "smartThresholds": ")" + threshold.repeated(512) +
        R"(", "identify": ")" + QByteArray("1d").repeated(512) + R"(", )" + keys + "}]}";
    const MachineReply reply = parseMachine(QStringLiteral("m"), json, files);
    if (!reply.problem.isEmpty())
        qFatal("%s", qPrintable(reply.problem));
    return reply.machine.drives.constFirst();
}

/// A request that every driver accepts, to be spoilt byte by byte.
struct Request
{
    quint32 code;
    QByteArray input;
    int outputSize;
};

Request ataRequest()
{
    // Length 40, data in; 512 bytes; 10 s; data at 44; features D1, count 1, LBA 1 4F C2, command B0
    return {0x0004D02C,
            QByteArray::fromHex(
                "28000200 00000000 00020000 0a000000 00000000 2c000000 0000000000000000 d101014fc200b000"),
            44 + 512};
}

Request ideRequest()
{
    return {0x0004D028, QByteArray::fromHex("d001014fc200b000 00020000"), 12 + 512};
}

Request smartRequest()
{
    // cBufferSize 512, the registers, drive number 1
    return {0x0007C088, QByteArray::fromHex("00020000 d001014fc2b0b000 01") + QByteArray(19, '\0'), 16 + 512};
}

Request statusRequest()
{
    return {0x0007C084, QByteArray::fromHex("00000000 da01014fc2b0b000 01") + QByteArray(19, '\0'), 24};
}

Request propertyRequest()
{
    return {0x002D1400, QByteArray(12, '\0'), 4096};
}

Request changed(Request request, int offset, quint8 value)
{
    request.input[offset] = char(value);
    return request;
}

Request withSizes(Request request, int inputSize, int outputSize)
{
    request.input.truncate(inputSize);
    request.outputSize = outputSize;
    return request;
}

struct Answer
{
    ControlReply reply;
    QByteArray output;
};

Answer ask(const DriveState &drive, const Request &request)
{
    Answer answer;
    answer.output = QByteArray(request.outputSize, '\xEE');
    answer.reply = answerRequest(drive, request.code, ByteView(request.input), MutableBytes(answer.output));
    return answer;
}

} // namespace

Q_DECLARE_METATYPE(Request)

class TestDriveAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusals_data()
    {
        QTest::addColumn<Request>("request");
        QTest::addColumn<quint32>("error");
        const auto row = [](const char *name, const Request &request, quint32 error) {
            QTest::newRow(name) << request << error;
        };
        row("unknown code", {0x00070004, {}, 4096}, 1);
        row("geometry, short", {0x00070000, {}, 23}, 122);
        row("partition, short", {0x00074004, {}, 31}, 122);
        row("device number, short", {0x002D1080, {}, 11}, 122);
        row("S.M.A.R.T. version, short", {0x00074080, {}, 23}, 122);
        row("predict failure, short", {0x002D1100, {}, 515}, 122);
        row("property, short query", withSizes(propertyRequest(), 11, 4096), 122);
        row("property, no room", withSizes(propertyRequest(), 12, 7), 122);
        row("property, other property", changed(propertyRequest(), 0, 1), 87);
        row("property, other query", changed(propertyRequest(), 4, 1), 87);

        row("ATA, short header", withSizes(ataRequest(), 39, 556), 122);
        row("ATA, no room for the data", withSizes(ataRequest(), 40, 555), 122);
        row("ATA, 64-bit header length", changed(ataRequest(), 0, 48), 87);
        row("ATA, data out", changed(ataRequest(), 2, 4), 87);
        row("ATA, no direction", changed(ataRequest(), 2, 0), 87);
        row("ATA, both directions", changed(ataRequest(), 2, 6), 87);
        row("ATA, path", changed(ataRequest(), 4, 1), 87);
        row("ATA, one byte too many", changed(ataRequest(), 8, 1), 87);
        row("ATA, no time", changed(ataRequest(), 12, 0), 87);
        row("ATA, data in the header's padding", changed(ataRequest(), 20, 40), 87);
        row("ATA, registers of a 48-bit command", changed(ataRequest(), 25, 1), 87);
        row("ATA, sector count", changed(ataRequest(), 33, 0), 87);
        row("ATA, LBA mid", changed(ataRequest(), 35, 0), 87);
        row("ATA, LBA high", changed(ataRequest(), 36, 0), 87);
        row("ATA, reserved register", changed(ataRequest(), 39, 1), 87);

        row("IDE, short header", withSizes(ideRequest(), 11, 524), 122);
        row("IDE, no room for the data", withSizes(ideRequest(), 12, 523), 122);
        row("IDE, length", changed(ideRequest(), 8, 1), 87);
        row("IDE, LBA mid", changed(ideRequest(), 3, 0), 87);

        row("S.M.A.R.T., short input", withSizes(smartRequest(), 31, 528), 122);
        row("S.M.A.R.T., no room for the data", withSizes(smartRequest(), 32, 527), 122);
        row("S.M.A.R.T., buffer size", changed(smartRequest(), 1, 0), 87);
        row("S.M.A.R.T., other drive's device register", changed(smartRequest(), 9, 0xA0), 87);
        row("S.M.A.R.T., drive number that does not fit it", changed(smartRequest(), 12, 2), 87);
        row("S.M.A.R.T., LBA high", changed(smartRequest(), 8, 0), 87);
        row("S.M.A.R.T., command without data", changed(smartRequest(), 4, 0xDA), 87);
        row("send, no room for the registers", withSizes(statusRequest(), 32, 23), 122);
        row("send, command with data", changed(statusRequest(), 4, 0xD0), 87);
        row("send, buffer size", changed(statusRequest(), 1, 2), 87);
    }

    void refusals()
    {
        QFETCH(Request, request);
        QFETCH(quint32, error);
        const Answer answer = ask(drive(), request);
        QCOMPARE(answer.reply.error, error);
        QCOMPARE(answer.reply.bytesReturned, 0u);
        QCOMPARE(answer.output, QByteArray(request.outputSize, '\xEE'));
    }

    void sectors_data()
    {
        QTest::addColumn<Request>("request");
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<char>("byte");
        const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
        row("ATA, thresholds", ataRequest(),
            hex("28000200 00000000 00020000 0a000000 00000000 2c000000 "
                "0000000000000000 0001014fc2005000 eeeeeeee"),
            '\x7E');
        row("ATA, data", changed(ataRequest(), 32, 0xD0),
            hex("28000200 00000000 00020000 0a000000 00000000 2c000000 "
                "0000000000000000 0001014fc2005000 eeeeeeee"),
            '\xD1');
        row("IDE, data", ideRequest(), hex("0001014fc2005000 00020000"), '\xD1');
        Request identify = ideRequest();
        identify.input = hex("000100000000ec00 00020000");
        row("IDE, identify", identify, hex("0001000000005000 00020000"), '\x1D');
        row("S.M.A.R.T., data", smartRequest(), hex("00020000 000000000000000000000000"), '\xD1');
        row("S.M.A.R.T., another drive's number", changed(smartRequest(), 12, 5),
            hex("00020000 000000000000000000000000"), '\xD1');
    }

    void sectors()
    {
        QFETCH(Request, request);
        QFETCH(QByteArray, header);
        QFETCH(char, byte);
        const Answer answer = ask(drive(), request);
        QCOMPARE(answer.reply.error, 0u);
        QCOMPARE(answer.reply.bytesReturned, quint32(header.size() + 512));
        QCOMPARE(answer.output, header + QByteArray(512, byte));
    }

    void abortedCommands_data()
    {
        QTest::addColumn<Request>("request");
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<QByteArray>("output"); // as far as it was written
        const QByteArray off = R"("smart": {"enabled": false})";
        const QByteArray on = R"("model": "M")";
        const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
        const QByteArray ataHeader = hex("28000200 00000000 00000000 0a000000 00000000 2c000000 "
                                         "0000000000000000 0401014fc2005100 eeeeeeee");
        row("ATA, S.M.A.R.T. off", ataRequest(), off, ataHeader);
        row("ATA, unknown S.M.A.R.T. subcommand", changed(ataRequest(), 32, 0xD9), on, ataHeader);
        row("IDE, unknown command", changed(ideRequest(), 6, 0xA1), on, hex("0401014fc2005100 00000000"));
        row("S.M.A.R.T. request, S.M.A.R.T. off", smartRequest(), off,
            hex("00000000 0104 00000000000000000000"));
        row("send, S.M.A.R.T. off", statusRequest(), off, hex("00000000 0104 00000000000000000000"));
    }

    void abortedCommands()
    {
        QFETCH(Request, request);
        QFETCH(QByteArray, keys);
        QFETCH(QByteArray, output);
        const Answer answer = ask(drive(keys), request);
        QCOMPARE(answer.reply.error, 0u);
        QCOMPARE(answer.reply.bytesReturned, quint32(output.size()));
        QCOMPARE(answer.output, output.leftJustified(request.outputSize, '\xEE'));
    }

    void smallAnswers()
    {
        const DriveState state = drive(R"("deviceNumber": 11, "mediaType": 11)");
        const Answer geometry = ask(state, {0x00070000, {}, 25});
        QCOMPARE(geometry.reply.bytesReturned, 24u);
        QCOMPARE(geometry.output,
                 QByteArray::fromHex("01db010000000000 0b000000 ff000000 3f000000 00020000 ee"));
        const Answer partition = ask(state, {0x00074004, {}, 32});
        QCOMPARE(partition.output,
                 QByteArray::fromHex("0000000000000000 0060dbe0e8000000") + QByteArray(16, '\0'));
        QCOMPARE(ask(state, {0x002D1080, {}, 12}).output, QByteArray::fromHex("07000000 0b000000 00000000"));
        QCOMPARE(ask(state, {0x00074080, {}, 24}).output.left(8), QByteArray::fromHex("0101000105000000"));
    }

    void descriptor()
    {
        const DriveState state = drive(R"("model": "M", "descriptor": {"product": "Disk", "revision": ""})");
        const Answer whole = ask(state, propertyRequest());
        const QByteArray expected =
            QByteArray::fromHex(
                "28000000 2d000000 00000000 00000000 24000000 00000000 29000000 03000000 09000000") +
            QByteArray("Disk\0SER\0", 9);
        QCOMPARE(whole.reply.bytesReturned, 45u);
        QCOMPARE(whole.output.left(45), expected);
        const Answer part = ask(state, withSizes(propertyRequest(), 12, 8));
        QCOMPARE(part.reply.error, 0u);
        QCOMPARE(part.output, expected.left(8));
    }

    void returnStatus()
    {
        const QByteArray header = QByteArray::fromHex("08000000 000000000000000000000000");
        // Every attribute of the drive is 0xd1, which is pre-failure, at 0xd1, with a threshold of 0x7e.
        QCOMPARE(ask(drive(), statusRequest()).output, header + QByteArray::fromHex("0001014fc2b05000"));
        const DriveState failing = drive(R"("model": "M")", "d1");
        QCOMPARE(ask(failing, statusRequest()).output, header + QByteArray::fromHex("000101f42cb05000"));
    }

    void predictFailure()
    {
        const Request request{0x002D1100, {}, 516};
        const DriveState failing = drive(R"("model": "M")", "d1");
        QCOMPARE(ask(drive(), request).output, QByteArray(4, '\0') + QByteArray(512, '\xD1'));
        QCOMPARE(ask(failing, request).output, QByteArray("\1\0\0\0", 4) + QByteArray(512, '\xD1'));
        QCOMPARE(ask(drive(R"("smart": {"enabled": false})"), request).reply.error, 50u);
    }

    void onlyTheRequestsItAnswers()
    {
        const DriveState state = drive(R"("answers": ["smart", "deviceNumber"])");
        QCOMPARE(ask(state, smartRequest()).reply.error, 0u);
        QCOMPARE(ask(state, statusRequest()).reply.error, 0u);
        QCOMPARE(ask(state, {0x002D1080, {}, 12}).reply.error, 0u);
        const quint32 others[] = {0x00070000, 0x00074004, 0x00074080, 0x002D1400,
                                  0x0004D02C, 0x0004D028, 0x002D1100};
        for (const quint32 code : others)
            QCOMPARE(ask(state, {code, QByteArray(40, '\0'), 4096}).reply.error, 50u);
    }

    void onlySmartSectorsAreSlow()
    {
        const DriveState state = drive(R"("smartDelayMs": 700)");
        const auto delay = [&state](const Request &request) {
            return requestDelayMs(state, request.code, ByteView(request.input));
        };
        QCOMPARE(delay(ataRequest()), 700);
        QCOMPARE(delay(ideRequest()), 700);
        QCOMPARE(delay(smartRequest()), 700);
        QCOMPARE(delay({0x002D1100, {}, 516}), 700);
        QCOMPARE(delay(changed(ataRequest(), 38, 0xEC)), 0);
        QCOMPARE(delay(statusRequest()), 0);
        QCOMPARE(delay({0x00070000, {}, 24}), 0);
    }
};

QTEST_GUILESS_MAIN(TestDriveAnswers)
#include "tst_drive_answers.moc"
