// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/exchange.h"

#include "disk/fake_drives.h"
#include "rows.h"

#include <QtTest>

namespace {

enum Method { Ata, Smart, SmartStatus, Ide, Predict };

/// Reads S.M.A.R.T. data of drive 3, or its status.
exchange::Outcome read(Method method, Drive &drive, MutableBytes data)
{
    exchange::Registers registers = exchange::smartReadData();
    switch (method) {
    case Ata:
        return exchange::ataPassThrough(drive, registers, data);
    case Smart:
        return exchange::smartDriveCommand(drive, 3, registers, data);
    case SmartStatus:
        registers[drive_request::registers::kFeatures] = ata::kSmartReturnStatus;
        return exchange::smartDriveCommand(drive, 3, registers, {});
    case Ide:
        return exchange::idePassThrough(drive, registers, data);
    case Predict:
        break;
    }
    return exchange::predictFailure(drive, data);
}

QByteArray hexAndZeros(const char *hex, int zeros)
{
    return QByteArray::fromHex(hex) + QByteArray(zeros, '\0');
}

} // namespace

Q_DECLARE_METATYPE(Method)

/// The content of requests, and which answers are valid. The transfer of data is tested with real drives.
class TestExchange : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void request_data()
    {
        QTest::addColumn<Method>("method");
        QTest::addColumn<quint32>("code");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("outputSize");
        row("ATA pass-through", Ata, 0x0004D02CU,
            hexAndZeros("2800 0200 00000000 00020000 0a000000 00000000 2c000000 0000000000000000"
                        "d001014fc200b000 00000000 cf",
                        511),
            556);
        row("S.M.A.R.T. drive data", Smart, 0x0007C088U, hexAndZeros("00020000 d001014fc2b0b000 03", 19),
            528);
        row("S.M.A.R.T. status, without data", SmartStatus, 0x0007C084U,
            hexAndZeros("00000000 da01014fc2b0b000 03", 19), 24);
        row("IDE pass-through", Ide, 0x0004D028U, hexAndZeros("d001014fc200b000 00020000 cf", 511), 524);
        row("predict failure", Predict, 0x002D1100U, QByteArray(), 516);
    }

    void request()
    {
        QFETCH(Method, method);
        QByteArray input;
        quint32 code = 0;
        int outputSize = 0;
        ScriptedDrive drive([&](quint32 asked, ByteView in, MutableBytes out) {
            code = asked;
            input = in.toByteArray();
            outputSize = out.size();
            out.setU8(out.size() - 1, 1);
            return ControlReply{system_error::kNone, quint32(out.size())};
        });
        QByteArray data(512, '\0');
        QVERIFY(read(method, drive, MutableBytes(data)));
        QTEST(code, "code");
        QTEST(input, "input");
        QTEST(outputSize, "outputSize");
    }

    void outcome_data()
    {
        QTest::addColumn<Method>("method");
        QTest::addColumn<quint32>("error");
        QTest::addColumn<int>("status"); // the status register; for S.M.A.R.T. drive data the driver's error
        QTest::addColumn<int>("missing");
        QTest::addColumn<QByteArray>("data"); // followed by zeros; null: nothing is written
        QTest::addColumn<bool>("ok");
        const QByteArray some("\xCF\0\x01", 3);
        row("ATA: data that begins like the mark → ok", Ata, 0U, 0x50, 0, some, true);
        row("ATA: zeros → ok", Ata, 0U, 0x50, 0, QByteArray("\0", 1), true);
        row("ATA: never written → failed", Ata, 0U, 0x50, 0, QByteArray(), false);
        row("ATA: error bit → failed", Ata, 0U, 0x51, 0, some, false);
        row("ATA: short → failed", Ata, 0U, 0x50, 1, some, false);
        row("ATA: refused → failed", Ata, 1U, 0x50, 0, some, false);
        row("drive data: driver error → failed", Smart, 0U, 1, 0, some, false);
        row("drive data: refused → failed", Smart, 1U, 0, 0, some, false);
        row("IDE: never written → failed", Ide, 0U, 0x50, 0, QByteArray(), false);
        row("IDE: error bit → failed", Ide, 0U, 0x51, 0, some, false);
        row("predict: a failure foretold → ok", Predict, 0U, 1, 0, some, true);
        row("predict: refused → failed", Predict, 1U, 0, 0, some, false);
    }

    void outcome()
    {
        QFETCH(Method, method);
        QFETCH(quint32, error);
        QFETCH(int, status);
        QFETCH(int, missing);
        QFETCH(QByteArray, data);
        const int statusOffset = QMap<Method, int>{{Ata, 38}, {Smart, 4}, {Ide, 6}}.value(method);
        const int dataOffset =
            QMap<Method, int>{{Ata, 44}, {Smart, 16}, {Ide, 12}, {Predict, 4}}.value(method);
        ScriptedDrive drive([&](quint32, ByteView, MutableBytes out) {
            out.setU8(statusOffset, quint8(status));
            if (!data.isNull())
                out.copyIn(dataOffset, ByteView(data.leftJustified(512, '\0')));
            return ControlReply{error, quint32(out.size() - missing)};
        });
        QByteArray sector(512, '\x55');
        const bool ok(read(method, drive, MutableBytes(sector)));
        QTEST(ok, "ok");
        QCOMPARE(sector == data.leftJustified(512, '\0'), ok);
    }
};

QTEST_APPLESS_MAIN(TestExchange)
#include "tst_exchange.moc"
