// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/exchange.h"

#include "disk/fake_drives.h"
#include "rows.h"

#include <QtTest>

namespace {

enum Method { Ata, Smart, Ide, Predict };

/// Reads SMART data of drive `number`.
bool read(Method method, Drive &drive, int number, MutableBytes data)
{
    exchange::Registers registers = exchange::smartReadData();
    switch (method) {
    case Ata:
        return exchange::ataPassThrough(drive, registers, data);
    case Smart:
        return exchange::smartDriveCommand(drive, number, registers, data);
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

class TestExchange : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void request_data()
    {
        QTest::addColumn<int>("method");
        QTest::addColumn<int>("number");
        QTest::addColumn<quint32>("code");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("outputSize");
        row("ATA pass-through", int(Ata), 0, 0x0004D02CU,
            hexAndZeros("2800 0200 00000000 00020000 0a000000 00000000 2c000000 0000000000000000"
                        "d001014fc200b000 00000000 cf",
                        511),
            556);
        row("S.M.A.R.T. drive data, even drive", int(Smart), 2, 0x0007C088U,
            hexAndZeros("00020000 d001014fc2a0b000 02", 19), 528);
        row("S.M.A.R.T. drive data, odd drive", int(Smart), 3, 0x0007C088U,
            hexAndZeros("00020000 d001014fc2b0b000 03", 19), 528);
        row("IDE pass-through", int(Ide), 0, 0x0004D028U, hexAndZeros("d001014fc200b000 00020000 cf", 511),
            524);
        row("predict failure", int(Predict), 0, 0x002D1100U, QByteArray(), 516);
    }

    void request()
    {
        QFETCH(int, method);
        QFETCH(int, number);
        QByteArray input;
        quint32 code = 0;
        int outputSize = 0;
        ScriptedDrive drive([&](quint32 asked, ByteView in, MutableBytes out) {
            code = asked;
            input = in.toByteArray();
            outputSize = out.size();
            return ControlReply{system_error::kNotSupported, 0};
        });
        QByteArray data(512, '\0');
        QVERIFY(!read(Method(method), drive, number, MutableBytes(data)));
        QTEST(code, "code");
        QTEST(input, "input");
        QTEST(outputSize, "outputSize");
    }

    void outcome_data()
    {
        QTest::addColumn<int>("method");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("status"); // the status register; for S.M.A.R.T. drive data the driver's error
        QTest::addColumn<int>("missing");
        QTest::addColumn<QByteArray>(
            "data"); // what the drive brings, before zeros; null when nothing is written
        QTest::addColumn<bool>("ok");
        const QByteArray some("\xCF\0\x01", 3);
        const QByteArray zeros("\0", 1);
        const QByteArray nothing;
        row("ATA: data that begins like the mark", int(Ata), 0, 0x50, 0, some, true);
        row("ATA: zeros", int(Ata), 0, 0x50, 0, zeros, true);
        row("ATA: never written", int(Ata), 0, 0x50, 0, nothing, false);
        row("ATA: error bit", int(Ata), 0, 0x51, 0, some, false);
        row("ATA: short", int(Ata), 0, 0x50, 1, some, false);
        row("ATA: refused", int(Ata), 1, 0x50, 0, some, false);
        row("drive data: data", int(Smart), 0, 0, 0, some, true);
        row("drive data: driver error", int(Smart), 0, 1, 0, some, false);
        row("drive data: refused", int(Smart), 1, 0, 0, some, false);
        row("IDE: data that begins like the mark", int(Ide), 0, 0x50, 0, some, true);
        row("IDE: never written", int(Ide), 0, 0x50, 0, nothing, false);
        row("IDE: error bit", int(Ide), 0, 0x51, 0, some, false);
        row("IDE: short", int(Ide), 0, 0x50, 12, some, false);
        row("IDE: refused", int(Ide), 1, 0x50, 0, some, false);
        row("predict: a failure foretold", int(Predict), 0, 1, 0, some, true);
        row("predict: refused", int(Predict), 1, 0, 0, some, false);
    }

    void outcome()
    {
        QFETCH(int, method);
        QFETCH(int, error);
        QFETCH(int, status);
        QFETCH(int, missing);
        QFETCH(QByteArray, data);
        QFETCH(bool, ok);
        const int statusOffset = QVector<int>{38, 4, 6, 0}.at(method);
        const int dataOffset = QVector<int>{44, 16, 12, 4}.at(method);
        ScriptedDrive drive([&](quint32, ByteView, MutableBytes out) {
            out.setU8(statusOffset, quint8(status));
            if (!data.isNull())
                out.copyIn(dataOffset, ByteView(data.leftJustified(512, '\0')));
            return ControlReply{quint32(error), quint32(out.size() - missing)};
        });
        QByteArray sector(512, '\x55');
        QCOMPARE(read(Method(method), drive, 0, MutableBytes(sector)), ok);
        if (ok)
            QCOMPARE(sector, data.leftJustified(512, '\0'));
    }

    void dataOut()
    {
        ScriptedDrive drive([](quint32, ByteView in, MutableBytes out) {
            const bool isOut = in.le16(2) == 4 && in.mid(44, 512).toByteArray() == QByteArray(512, '\x7E');
            out.setU8(32, 0x11);
            return ControlReply{isOut ? system_error::kNone : system_error::kInvalidParameter,
                                quint32(out.size())};
        });
        exchange::Registers registers{};
        QByteArray data(512, '\x7E');
        QVERIFY(exchange::ataPassThrough(drive, registers, MutableBytes(data), exchange::Direction::DataOut));
        QCOMPARE(registers[0], quint8(0x11));
    }

    void returnStatus()
    {
        QVector<int> sizes;
        ScriptedDrive drive([&](quint32 code, ByteView in, MutableBytes out) {
            sizes << out.size();
            out.setU8(out.size() == 24 ? 16 + 4 : 0, 0x2C);
            const bool isRight = code == 0x0007C084 && in.le32(0) == 0;
            return ControlReply{isRight ? system_error::kNone : system_error::kInvalidParameter,
                                quint32(out.size())};
        });
        exchange::Registers status{0xDA, 1, 1, 0x4F, 0xC2, 0, 0xB0, 0};
        QVERIFY(exchange::smartDriveCommand(drive, 0, status, MutableBytes()));
        QCOMPARE(status[4], quint8(0x2C));
        exchange::Registers enable{0xD8, 1, 1, 0x4F, 0xC2, 0, 0xB0, 0};
        QVERIFY(exchange::smartDriveCommand(drive, 0, enable, MutableBytes()));
        QCOMPARE(enable[4], quint8(0xC2));
        QCOMPARE(sizes, (QVector<int>{24, 16}));
    }

    void tooMuchData()
    {
        ScriptedDrive drive([](quint32, ByteView, MutableBytes out) {
            return ControlReply{0, quint32(out.size())};
        });
        QByteArray data(513, '\x01');
        QVERIFY(!read(Ata, drive, 0, MutableBytes(data)));
        QVERIFY(!read(Smart, drive, 0, MutableBytes(data)));
    }
};

QTEST_APPLESS_MAIN(TestExchange)
#include "tst_exchange.moc"
