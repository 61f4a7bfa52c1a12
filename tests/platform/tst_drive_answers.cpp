// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/drive_answers.h"
#include "platform/simulated/sectors.h"
#include "rows.h"

namespace {

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

/// A request that every driver accepts; the tests change single bytes of it.
struct Request
{
    quint32 code;
    QByteArray input;
    int outputSize;
};

/// Length 40, data in; 512 bytes; 10 s; data at 44; features D1, count 1, LBA 1 4F C2, command B0.
const char kAtaHeader[] =
    "28000200 00000000 00020000 0a000000 00000000 2c000000 0000000000000000 d101014fc200b000";

const Request kGeometry{0x00070000, {}, 25};
const Request kDeviceNumber{0x002D1080, {}, 12};
const Request kPredict{0x002D1100, {}, 516};
const Request kProperty{0x002D1400, QByteArray(12, '\0'), 4096};
const Request kAta{0x0004D02C, hex(kAtaHeader), 44 + 512};
const Request kIde{0x0004D028, hex("d001014fc200b000 00020000"), 12 + 512};
/// The size of the data, the registers, drive number 1.
const Request kSmart{0x0007C088, hex("00020000 d001014fc2b0b000 01") + QByteArray(19, '\0'), 16 + 512};
const Request kStatus{0x0007C084, hex("00000000 da01014fc2b0b000 01") + QByteArray(19, '\0'), 24};

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

/// Returns a drive whose attributes all have ID 0xd1, pre-failure, and value 0xd1.
DriveState drive(char threshold = '\x7E')
{
    DriveState drive;
    drive.capacityBytes = 1000204886016;
    drive.geometry.cylinders = 121601;
    drive.deviceNumber = 11;
    drive.descriptor = {QString(), "Disk", QString(), "SER"};
    drive.answers =
        QStringList{answer_name::kGeometry,     answer_name::kPartition,  answer_name::kDeviceNumber,
                    answer_name::kSmartVersion, answer_name::kDescriptor, answer_name::kAta,
                    answer_name::kSmart,        answer_name::kIde,        answer_name::kPredict};
    drive.identify = QByteArray(512, '\x1D');
    drive.smartData = QByteArray(512, '\xD1');
    drive.smartThresholds = QByteArray(512, threshold);
    return drive;
}

ControlReply ask(const DriveState &drive, const Request &request, QByteArray &output)
{
    output = QByteArray(request.outputSize, '\xEE');
    return answerRequest(drive, request.code, ByteView(request.input), MutableBytes(output));
}

} // namespace

Q_DECLARE_METATYPE(Request)
Q_DECLARE_METATYPE(DriveState)

class TestDriveAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusals_data()
    {
        QTest::addColumn<Request>("request");
        QTest::addColumn<quint32>("error");
        row("unknown code", Request{0x00070004, {}, 4096}, 1U);
        row("predict failure, short", withSizes(kPredict, 0, 515), 122U);
        row("property, no room", withSizes(kProperty, 12, 7), 122U);

        row("ATA, short header", withSizes(kAta, 39, 556), 122U);
        row("ATA, no room for the data", withSizes(kAta, 40, 555), 122U);
        row("ATA, data out", changed(kAta, 2, 4), 87U);
        row("ATA, one byte too many", changed(kAta, 8, 1), 87U);
        row("ATA, LBA mid", changed(kAta, 35, 0), 87U);

        row("IDE, no room for the data", withSizes(kIde, 12, 523), 122U);
        row("IDE, length", changed(kIde, 8, 1), 87U);

        row("S.M.A.R.T., no room for the data", withSizes(kSmart, 32, 527), 122U);
        row("send, no room for the registers", withSizes(kStatus, 32, 23), 122U);
    }

    void refusals()
    {
        QFETCH(Request, request);
        QByteArray output;
        const ControlReply reply = ask(drive(), request, output);
        QTEST(reply.error, "error");
        QCOMPARE(reply.bytesReturned, 0U);
        QCOMPARE(output, QByteArray(request.outputSize, '\xEE'));
    }

    void answers_data()
    {
        QTest::addColumn<DriveState>("state");
        QTest::addColumn<Request>("request");
        QTest::addColumn<QByteArray>("output"); // the bytes that are written
        const DriveState failing = drive('\xD1');
        DriveState off = drive();
        off.smart.enabled = false;

        row("geometry", drive(), kGeometry, hex("01db010000000000 0c000000 ff000000 3f000000 00020000"));
        row("device number", drive(), kDeviceNumber, hex("07000000 0b000000 00000000"));
        const QByteArray descriptor =
            hex("28000000 2d000000 00000000 00000000 24000000 00000000 29000000 03000000 09000000");
        row("descriptor", drive(), kProperty, descriptor + QByteArray("Disk\0SER\0", 9));
        row("descriptor, first 8 bytes", drive(), withSizes(kProperty, 12, 8), descriptor.left(8));

        row("ATA, thresholds", drive(), kAta,
            hex("28000200 00000000 00020000 0a000000 00000000 2c000000 0000000000000000 0001014fc2005000 "
                "eeeeeeee") +
                QByteArray(512, '\x7E'));
        row("IDE, data", drive(), kIde, hex("0001014fc2005000 00020000") + QByteArray(512, '\xD1'));
        row("S.M.A.R.T., another drive's number", drive(), changed(kSmart, 12, 5),
            hex("00020000 000000000000000000000000") + QByteArray(512, '\xD1'));
        row("predict, failing", failing, kPredict, hex("01000000") + QByteArray(512, '\xD1'));
        row("status, fine", drive(), kStatus, hex("08000000 000000000000000000000000 0001014fc2b05000"));
        row("status, failing", failing, kStatus, hex("08000000 000000000000000000000000 000101f42cb05000"));

        // A command that the drive aborts
        const QByteArray aborted = hex("28000200 00000000 00000000 0a000000 00000000 2c000000 "
                                       "0000000000000000 0401014fc2005100 eeeeeeee");
        row("ATA, S.M.A.R.T. off", off, kAta, aborted);
        row("ATA, unknown S.M.A.R.T. subcommand", drive(), changed(kAta, 32, 0xD9), aborted);
        row("IDE, unknown command", drive(), changed(kIde, 6, 0xA1), hex("0401014fc2005100 00000000"));
        row("S.M.A.R.T. off", off, kSmart, hex("00000000 0104 00000000000000000000"));
    }

    void answers()
    {
        QFETCH(DriveState, state);
        QFETCH(Request, request);
        QFETCH(QByteArray, output);
        QByteArray written;
        const ControlReply reply = ask(state, request, written);
        QCOMPARE(reply.error, 0U);
        QCOMPARE(reply.bytesReturned, quint32(output.size()));
        QCOMPARE(written, output.leftJustified(request.outputSize, '\xEE'));
    }

    void requestCosts()
    {
        DriveState state;
        state.smartDelayMs = 700;
        state.identifyDelayMs = 30;
        state.hangs = QStringList{hang_name::kSmart, hang_name::kGeometry};
        const auto check = [&state](const Request &request, int delayMs, bool hangs) {
            const RequestCost cost = requestCost(state, request.code, ByteView(request.input));
            QCOMPARE(cost.delayMs, delayMs);
            QCOMPARE(cost.hangs, hangs);
        };
        for (const Request &smart : {kAta, kIde, kSmart, kPredict})
            check(smart, 700, true);
        check(changed(kAta, 38, 0xEC), 30, false);
        check(kGeometry, 30, true);
        check(kStatus, 0, false);
    }

    void identifyReportsSmartOff()
    {
        DriveState state = drive();
        for (const bool isOn : {true, false}) {
            state.smart.enabled = isOn;
            const QByteArray sector = identifySector(state);
            QCOMPARE(ByteView(sector).le16(2 * 82), quint16(1)); // the sector was transferred nevertheless
            QCOMPARE(ByteView(sector).le16(2 * 85), quint16(isOn));
        }
    }
};

QTEST_APPLESS_MAIN(TestDriveAnswers)
#include "tst_drive_answers.moc"
