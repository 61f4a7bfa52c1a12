// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include "protocol/scrambling.h"
#include "rows.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTest>

#include <memory>
#include <vector>

namespace {

/// The temperature a raw value means: its low 16 bits, in tenths of a degree from 101 on.
int degrees(quint64 raw)
{
    const int low = int(raw & 0xFFFF);
    return low >= 101 ? low / 10 : low;
}

} // namespace

/// Two drives, one of which never answers a S.M.A.R.T. request.
static QJsonObject machineWithHungDrive()
{
    QJsonObject hung = realDrive(0, QStringLiteral("st500nm0011.json"));
    hung.insert(QStringLiteral("smartDelayMs"), 3600 * 1000);
    return {
        {QStringLiteral("drives"), QJsonArray{hung, realDrive(1, QStringLiteral("toshiba-hdwe160.json"))}}};
}

/// The built service, asked over TCP as a console asks it.
class TestService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_shared.writeMachine(
            {{QStringLiteral("drives"), QJsonArray{realDrive(0, QStringLiteral("st500nm0011.json"))}}});
        QVERIFY2(m_shared.serve(), m_shared.output());
    }

    void cleanupTestCase() { QCOMPARE(m_shared.stop(), 0); }

    /// All 52 real drives at once: each comes back over the protocol exactly as it was recorded.
    void everyRealDrive()
    {
        const QStringList dumps = QDir(drivesFixturePath()).entryList({QStringLiteral("*.json")});
        QCOMPARE(dumps.size(), 52);
        QJsonArray drives;
        for (int i = 0; i < dumps.size(); ++i)
            drives.append(realDrive(i, dumps.at(i)));
        ServiceFixture service;
        service.writeMachine({{QStringLiteral("drives"), drives}});
        QVERIFY2(service.serve(), service.output());

        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        QStringList lists;
        for (int i = 0; i < dumps.size(); ++i) {
            QFile file(drivesFixturePath() + QLatin1Char('/') + dumps.at(i));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QJsonObject dump = QJsonDocument::fromJson(file.readAll()).object();

            const QString reply = console.ask(QStringLiteral("DEVINFO]![%1").arg(i));
            QVERIFY2(reply.startsWith(QStringLiteral("DEVINFO_OK,%1,").arg(i)), qPrintable(reply));
            const QStringList fields = reply.section(QLatin1Char(','), 2).split(QLatin1String("~;"));
            QCOMPARE(fields.size(), 25);
            QCOMPARE(fields.at(0), dump.value(QLatin1String("model")).toString());
            QCOMPARE(fields.at(1), dump.value(QLatin1String("serial")).toString());
            QCOMPARE(fields.at(2), dump.value(QLatin1String("firmware")).toString());
            QCOMPARE(fields.at(3),
                     QString::number(dump.value(QLatin1String("capacity")).toVariant().toULongLong()));

            QStringList expected;
            int temperature = 0;
            const QJsonArray attributes =
                dump.value(QLatin1String("smart")).toObject().value(QLatin1String("attributes")).toArray();
            for (const QJsonValue &value : attributes) {
                const QJsonObject attribute = value.toObject();
                const auto number = [&](const char *key) {
                    return attribute.value(QLatin1String(key)).toVariant().toULongLong();
                };
                const quint64 flags = number("flags");
                const bool isTemperature = number("id") == 194;
                if (isTemperature)
                    temperature = degrees(number("raw"));
                expected << QStringList{QString::number(number("id")),
                                        QString::number(1 - (flags & 1)),
                                        QString::number(flags >> 2 & 1),
                                        QString::number(number("current")),
                                        QString::number(isTemperature ? quint64(temperature) : number("raw")),
                                        QString::number(number("worst")),
                                        QString::number(number("threshold"))}
                                .join(QLatin1Char('~'));
            }
            QCOMPARE(fields.at(21), QString::number(temperature));
            QCOMPARE(fields.at(14), QString::number(attributes.size()));
            QCOMPARE(console.ask(QStringLiteral("SMARTINFO]![%1").arg(i)),
                     QStringLiteral("SMARTINFO_OK,%1,{%2}")
                         .arg(QString::number(i), expected.join(QLatin1Char(';'))));
        }
        QCOMPARE(service.stop(), 0);
    }

    void badInputLeavesOthersServed_data()
    {
        QTest::addColumn<QByteArray>("wire");
        QTest::addColumn<QString>("reply"); // null: the connection is closed

        const QString unknown = QStringLiteral("UNKNOWN COMMAND - Command list:");
        row("wrong length header", QByteArray("000000100000\r\n"), "ERR");
        row("empty line", QByteArray("\r\n"), "ERR");
        // "DEVCOUNT" with offset 0: every character of "REVWQ09VTlQ=" is combined with the key's "M".
        row("odd character at the end", QByteArray("00000023001f081b1a1c7d741b19211c707\r\n"), "DEVCOUNT,1");
        row("capital hex", QByteArray("00000022001F081B1A1C7D741B19211C70\r\n"), "DEVCOUNT,1");
        // With offset 255 the walk leaves the key at once, and the body is the Base64 text itself.
        row("offset above 99", QByteArray("00000022ff5245565751303956546c513d\r\n"), "DEVCOUNT,1");
        row("not UTF-8", QByteArray("00000012ff2f2f343d\r\n"), unknown);
        row("a megabyte without a line end", QByteArray((1 << 20) + 1, '0'), QString());

        const auto line = [](const char *text) {
            return sendReply(QString::fromLatin1(text), [] { return 7; });
        };
        row("negative index", line("DEVINFO]![-1"), "DEVINFO_ERR,[-1]");
        row("huge index", line("SMARTINFO]![2147483647"), "SMARTINFO_ERR,[2147483647]");
        row("negative volume", line("VOLINFO]![0]![-7"), "VOLINFO_ERR,[0,-7]");
        row("scan of a negative index", line("STARTSCAN]![-1]![65536]![0]![9"), "STARTEDSCAN]![-1");
        row("stop beyond the drives", line("STOPSCAN]![99"), "STOPEDSCAN]![99");
        row("block of nothing", line("STARTSCAN]![0]![0]![0]![9"), "STARTEDSCAN]![0");
        row("settings too short", line("SET]![1~;2"), "SET_OK");
        row("account out of range", line("USERINFO]![-1"), "USERINFO,-1,");
    }

    void badInputLeavesOthersServed()
    {
        QFETCH(QByteArray, wire);
        QFETCH(QString, reply);
        RawConsole other(m_shared.port());
        QVERIFY(other.readLine().startsWith(QLatin1String("VER]![")));

        RawConsole console(m_shared.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        console.sendBytes(wire);
        if (reply.isNull())
            QVERIFY(console.waitForEnd());
        else
            QCOMPARE(console.readLine(), reply);
        QCOMPARE(other.ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,1"));
    }

    /// A thousand connections are served; the next is closed at once; and when they are gone, others get in.
    void crowd()
    {
        constexpr int kCap = 1000;
        std::vector<std::unique_ptr<RawConsole>> consoles;
        for (int i = 0; i < kCap; ++i) {
            consoles.push_back(std::make_unique<RawConsole>(m_shared.port()));
            QVERIFY2(consoles.back()->readLine().startsWith(QLatin1String("VER]![")),
                     qPrintable(QString::number(i)));
        }
        QVERIFY(RawConsole(m_shared.port()).waitForEnd());
        QCOMPARE(consoles.front()->ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,1"));
        consoles.clear();
        QTRY_VERIFY(RawConsole(m_shared.port()).readLine().startsWith(QLatin1String("VER]![")));
    }

    /// A peer that asks and never reads is left alone; another one is answered all along.
    void silentReader()
    {
        RawConsole other(m_shared.port());
        QVERIFY(other.readLine().startsWith(QLatin1String("VER]![")));
        RawConsole silent(m_shared.port());
        QVERIFY(silent.readLine().startsWith(QLatin1String("VER]![")));
        silent.socket().setReadBufferSize(1);
        const QByteArray question = sendReply(QStringLiteral("ALLSMARTINFO"), [] { return 1; });
        for (int i = 0; i < 20000; ++i) {
            silent.socket().write(question);
            silent.socket().flush();
            if (i % 1000 == 0)
                QCOMPARE(other.ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,1"));
        }
        QCOMPARE(other.ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,1"));
    }

    void machineFileMistakes_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("complaint");
        row("not JSON", QByteArray("{ drives"), "machine.json");
        row("unknown key", QByteArray(R"({"drivez": []})"), "drivez");
        row("number out of range", QByteArray(R"({"drives": [{"number": 99}]})"), "number");
        row("no such dump", QByteArray(R"({"drives": [{"number": 0, "dump": "none.json"}]})"), "none.json");
    }

    /// A machine file that is wrong stops what would serve, with exit code 1 and a message that says where.
    void machineFileMistakes()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, complaint);
        ServiceFixture service;
        QFile machine(service.path(QStringLiteral("machine.json")));
        QVERIFY(machine.open(QIODevice::WriteOnly));
        machine.write(file);
        machine.close();
        QVERIFY(!service.start());
        QVERIFY(service.process().state() == QProcess::NotRunning || service.process().waitForFinished());
        QCOMPARE(service.process().exitCode(), 1);
        QVERIFY2(QString::fromUtf8(service.output()).contains(complaint), service.output());
    }

    /// Detection ends without the hung drive's data; the other drive is read; nothing waits for the request.
    void hungDrive()
    {
        ServiceFixture service;
        service.writeMachine(machineWithHungDrive());
        QVERIFY2(service.start(), service.output());
        QCOMPARE(RawConsole(service.port()).readLine(), QStringLiteral("DETECTING"));
        QVERIFY2(service.waitUntilReady(), service.output());

        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        QCOMPARE(console.ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,2"));
        QCOMPARE(console.ask(QStringLiteral("SMARTINFO]![0")), QStringLiteral("SMARTINFO_OK,0,{}"));
        QVERIFY(console.ask(QStringLiteral("SMARTINFO]![1"))
                    .startsWith(QLatin1String("SMARTINFO_OK,1,{1~0~0~100~")));
        QCOMPARE(service.stop(), 0);
    }

    /// A stop in the middle of a hung detection is not held up by it.
    void stopDuringHungDetection()
    {
        ServiceFixture service;
        service.writeMachine(machineWithHungDrive());
        QVERIFY2(service.start(), service.output());
        QCOMPARE(RawConsole(service.port()).readLine(), QStringLiteral("DETECTING"));
        QCOMPARE(service.stop(), 0);
    }

private:
    ServiceFixture m_shared; ///< a service with one drive, for what needs no machine of its own
};

QTEST_GUILESS_MAIN(TestService)

#include "tst_service.moc"
