// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include "protocol/scrambling.h"
#include "rows.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QTest>

#include <functional>
#include <memory>
#include <sys/resource.h>
#include <sys/socket.h>
#include <vector>

namespace {

constexpr int kPatienceMs = 60000;
constexpr int kRecordSize = 8;

QJsonObject drive(int number)
{
    return realDrive(number, QStringLiteral("st500nm0011.json"));
}

QJsonObject machineOf(const QJsonArray &drives)
{
    return {{QStringLiteral("drives"), drives}};
}

bool isGreeting(const QString &line)
{
    return line.startsWith(QLatin1String("VER]!["));
}

/// How many descriptors the process of `service` has open.
int descriptorsOf(ServiceFixture &service)
{
    const QDir directory(QStringLiteral("/proc/%1/fd").arg(service.process().processId()));
    return int(directory.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

/// How many temperatures the service has recorded; -1 when the reply holds no whole records.
int recordsOf(RawConsole &console)
{
    const QString reply = console.ask(QStringLiteral("GSTATD]![000101000000]![991231235959"));
    const int size = int(reply.size()) - int(qstrlen("STATD]!["));
    return reply.startsWith(QLatin1String("STATD]![")) && size % kRecordSize == 0 ? size / kRecordSize : -1;
}

} // namespace

/// What a bad peer does each time that a good one has been answered.
using Mischief = std::function<void(RawConsole &, int turn)>;
Q_DECLARE_METATYPE(Mischief)

/// Bad days on purpose: what fails around the service, or in its peers, takes nothing else along.
class TestFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Each life begins with the sockets and the half-written record that the one before left behind.
    void killedAndStartedAgain()
    {
        constexpr int kLives = 5;
        ServiceFixture service;
        service.writeMachine(machineOf({drive(0)}));
        for (int life = 1; life <= kLives; ++life) {
            QVERIFY2(service.serve(), service.output());
            QVERIFY2(service.pause(), service.output());
            RawConsole console(service.port());
            QCOMPARE(console.readLine(), QStringLiteral("PAUSED"));
            QVERIFY(service.resume());
            QCOMPARE(recordsOf(console), life);
            QLocalSocket local;
            local.connectToServer(service.path(QStringLiteral("HalvexService001")));
            QVERIFY(local.waitForConnected(kPatienceMs) && local.waitForReadyRead(kPatienceMs));

            service.process().kill();
            QVERIFY(service.process().waitForFinished(kPatienceMs));
            QFile log(service.path(QStringLiteral("temperature.log")));
            QVERIFY(log.open(QIODevice::Append) && log.write(";,0") == 3);
        }
    }

    void badPeersAmongGoodOnes_data()
    {
        QTest::addColumn<Mischief>("mischief");
        const QByteArray question = sendReply(QStringLiteral("DEVCOUNT"), [] { return 7; });
        row("silent", Mischief([](RawConsole &, int) {}));
        row("slow", Mischief([question](RawConsole &bad, int turn) {
                bad.sendBytes(question.mid(turn % question.size(), 1));
            }));
        row("half-closed", Mischief([](RawConsole &bad, int turn) {
                if (turn == 0)
                    ::shutdown(int(bad.socket().socketDescriptor()), SHUT_WR);
            }));
        row("reset", Mischief([](RawConsole &bad, int) { bad.socket().abort(); }));
        row("flood of noise", Mischief([](RawConsole &bad, int) {
                bad.socket().write(QByteArray(100000, '\xfe') + "\r\n");
                bad.socket().flush();
            }));
        row("flood of questions", Mischief([question](RawConsole &bad, int) {
                bad.socket().write(question.repeated(1000));
                bad.socket().flush();
            }));
    }

    void badPeersAmongGoodOnes()
    {
        QFETCH(Mischief, mischief);
        constexpr int kGood = 100;
        constexpr int kBad = 10;
        ServiceFixture service;
        service.writeMachine(machineOf({drive(0)}));
        QVERIFY2(service.serve(), service.output());
        QVERIFY(service.pause() && service.resume()); // its control socket comes last
        const int before = descriptorsOf(service);
        {
            std::vector<std::unique_ptr<RawConsole>> good;
            std::vector<std::unique_ptr<RawConsole>> bad;
            for (int i = 0; i < kGood + kBad; ++i) {
                std::vector<std::unique_ptr<RawConsole>> &peers = i % 11 == 0 ? bad : good;
                peers.push_back(std::make_unique<RawConsole>(service.port()));
                QVERIFY(isGreeting(peers.back()->readLine()));
            }
            for (int turn = 0; turn < kGood; ++turn) {
                mischief(*bad[std::size_t(turn % kBad)], turn / kBad);
                QCOMPARE(good[std::size_t(turn)]->ask(QStringLiteral("DEVCOUNT")),
                         QStringLiteral("DEVCOUNT,1"));
            }
        }
        QTRY_VERIFY_WITH_TIMEOUT(descriptorsOf(service) <= before, kPatienceMs); // of nobody is anything left
        QCOMPARE(service.stop(), 0);
    }

    void vanishedDrive_data()
    {
        QTest::addColumn<QJsonArray>("drives"); // what is there after the fault; before it there are two
        QTest::addColumn<int>("detected");
        QJsonObject deaf = drive(1);
        deaf.insert(QStringLiteral("answers"), QJsonArray());
        QJsonObject locked = drive(1);
        locked.insert(QStringLiteral("openError"), 5);
        row("pulled", QJsonArray{drive(0)}, 1);
        row("no longer opens", QJsonArray{drive(0), locked}, 1);
        row("answers no request", QJsonArray{drive(0), deaf}, 1);
        row("all pulled", QJsonArray{}, 0);
    }

    /// A drive that has gone keeps its place with its last values until the next detection.
    void vanishedDrive()
    {
        QFETCH(QJsonArray, drives);
        QFETCH(int, detected);
        ServiceFixture service;
        service.setKeyValue(QStringLiteral("SMARTPollInterval"), 1);
        service.writeMachine(machineOf({drive(0), drive(1)}));
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(isGreeting(console.readLine()));
        const QString last = console.ask(QStringLiteral("SMARTINFO]![1"));
        QVERIFY(last.size() > 50);

        service.writeMachine(machineOf(drives));
        const int records = recordsOf(console);
        QTRY_VERIFY_WITH_TIMEOUT(recordsOf(console) >= records + 4, kPatienceMs); // two polls of its own
        QCOMPARE(console.ask(QStringLiteral("REFRESH")), QStringLiteral("REFRESH_OK"));
        QCOMPARE(console.ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,2"));
        QCOMPARE(console.ask(QStringLiteral("SMARTINFO]![1")), last);

        for (const int expected : {detected, 2}) {
            QCOMPARE(console.ask(QStringLiteral("RESET")), QStringLiteral("RESET_OK"));
            QVERIFY(service.waitUntilReady());
            QCOMPARE(console.ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,%1").arg(expected));
            service.writeMachine(machineOf({drive(0), drive(1)}));
        }
        QCOMPARE(service.stop(), 0);
    }

    /// A drive that hangs costs its time limit, once; the other drives are read all the same.
    void hungDriveInARefresh()
    {
        ServiceFixture service;
        service.writeMachine(machineOf({drive(0), drive(1)}));
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(isGreeting(console.readLine()));
        QJsonObject hung = drive(0);
        hung.insert(QStringLiteral("smartDelayMs"), 3600 * 1000);
        service.writeMachine(machineOf({hung, realDrive(1, QStringLiteral("toshiba-hdwe160.json"))}));
        const QString before = console.ask(QStringLiteral("SMARTVALUE]![1"));
        QCOMPARE(console.ask(QStringLiteral("REFRESH")), QStringLiteral("REFRESH_OK"));
        QVERIFY(console.ask(QStringLiteral("SMARTVALUE]![1")) != before);

        service.writeMachine(machineOf({drive(0), drive(1)}));
        QCOMPARE(console.ask(QStringLiteral("REFRESH")), QStringLiteral("REFRESH_OK"));
        QCOMPARE(console.ask(QStringLiteral("SMARTVALUE]![1")), before);
        QCOMPARE(service.stop(), 0);
    }

    /// With few descriptors the service has fewer consoles, and closes further ones instead of trying to
    /// accept them for ever. The last one: not everybody may raise the limit again.
    void descriptorsAreScarce()
    {
        constexpr rlim_t kScarce = 300;
        constexpr int kCrowd = 60;
        const rlimit scarce{kScarce / 2, kScarce};
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &scarce), 0);
        ServiceFixture service;
        service.writeMachine(machineOf({drive(0)}));
        QVERIFY2(service.serve(), service.output());
        rlimit raised{};
        QCOMPARE(::prlimit(pid_t(service.process().processId()), RLIMIT_NOFILE, nullptr, &raised), 0);
        QCOMPARE(raised.rlim_cur, kScarce);

        std::vector<std::unique_ptr<RawConsole>> crowd;
        int served = 0;
        for (int i = 0; i < kCrowd; ++i) {
            crowd.push_back(std::make_unique<RawConsole>(service.port()));
            served += isGreeting(crowd.back()->readLine()) ? 1 : 0;
        }
        QVERIFY2(served >= 10 && served < kCrowd, qPrintable(QString::number(served)));
        QVERIFY(crowd.back()->waitForEnd());
        QCOMPARE(crowd.front()->ask(QStringLiteral("REFRESH")), QStringLiteral("REFRESH_OK"));
        crowd.clear();
        QVERIFY(service.waitUntilReady());
        QCOMPARE(service.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_faults.moc"
