// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include "rows.h"
#include "wire/scrambling.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <memory>
#include <sys/resource.h>
#include <sys/socket.h>
#include <vector>

namespace {

const char kOneDrive[] = R"({"drives": [{"number": 0, "dump": "drives/st500nm0011.json"}]})";

bool isGreeting(const QString &line)
{
    return line.startsWith("VER]![");
}

} // namespace

/// The action of a bad peer each time that a good one has received its reply.
using Mischief = std::function<void(RawConsole &, int turn)>;
Q_DECLARE_METATYPE(Mischief)

/// A fault in the service's environment or in a peer affects nothing else.
class TestFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Each run begins with the sockets, the incomplete record and the settings of the previous one, which
    /// was killed during many requests to change them. The settings are one of the two states.
    void killedAndStartedAgain()
    {
        constexpr int kLives = 20;
        constexpr int kSetsPerLife = 50;
        const auto textsOf = [](int state) { return QString(state * 1000, QChar('a' + state)); };
        const auto set = [&textsOf](int state) {
            return QString("SET]![0~;180000~;300000~;1~;0~;0~;%1~;%1~;%1~;~;0~;%1~;%1~;25~;55~;65~;%1~;%1")
                .arg(textsOf(state));
        };
        const QRegularExpression wholeRecords("\\ASTATD\\]!\\[(.{6}!.)+\\z"); // all of drive 0
        ServiceFixture service;
        service.writeMachine(json(kOneDrive));
        for (int life = 1; life <= kLives; ++life) {
            QVERIFY2(service.serve(), service.output());
            const QStringList fields = service.firstLine().split("]![");
            QCOMPARE(fields.size(), 23);
            const QString &text = fields.at(10);
            QVERIFY(life == 1 || text == textsOf(2) || text == textsOf(3));
            for (int field : {11, 12, 16, 17, 21, 22})
                QCOMPARE(fields.at(field), text);
            const QString history = service.ask("GSTATD]![000101000000]![991231235959");
            QVERIFY2(wholeRecords.match(history).hasMatch(), qPrintable(history));
            QLocalSocket local;
            local.connectToServer(service.path("HalvexService001"));
            QVERIFY(local.waitForConnected(kPatienceMs) && local.waitForReadyRead(kPatienceMs));
            QVERIFY(service.pause() && service.resume());

            QCOMPARE(service.ask(set(2)), "SET_OK");
            RawConsole console(service.port());
            QVERIFY(isGreeting(console.readLine()));
            for (int i = 0; i < kSetsPerLife; ++i)
                console.send(set(2 + i % 2));
            for (int i = QRandomGenerator::global()->bounded(5); i > 0; --i)
                QCOMPARE(console.ask(set(2 + i % 2)), "SET_OK");
            service.process().kill();
            QVERIFY(service.process().waitForFinished(kPatienceMs));
            QFile log(service.path("temperature.log"));
            QVERIFY(log.open(QIODevice::Append) && log.write(";,0") == 3);
        }
    }

    void badPeersAmongGoodOnes_data()
    {
        QTest::addColumn<Mischief>("mischief");
        const QByteArray question = sendReply("DEVCOUNT", [] { return 7; });
        row("one byte at a time", Mischief([question](RawConsole &bad, int turn) {
                bad.sendBytes(question.mid(turn % question.size(), 1));
            }));
        row("closed for writing", Mischief([](RawConsole &bad, int turn) {
                if (turn == 0)
                    ::shutdown(int(bad.socket().socketDescriptor()), SHUT_WR);
            }));
        row("reset connection", Mischief([](RawConsole &bad, int) { bad.socket().abort(); }));
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
        service.writeMachine(json(kOneDrive));
        QVERIFY2(service.serve(), service.output());
        QVERIFY(service.pause() && service.resume()); // the control socket opens last
        const int before = service.descriptors();
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
                QCOMPARE(good[std::size_t(turn)]->ask("DEVCOUNT"), "DEVCOUNT,1");
            }
        }
        QTRY_VERIFY_WITH_TIMEOUT(service.descriptors() <= before, kPatienceMs); // no connection has leaked
        QCOMPARE(service.stop(), 0);
    }

    void logThatCannotBeWritten()
    {
        const QString question = "GSTATR]![260101000000]![991231235959";
        ServiceFixture service;
        service.writeMachine(json(kOneDrive));
        QVERIFY(QDir(service.home()).mkdir("temperature.log")); // not even root can open it
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QCOMPARE(service.ask(question), "STATR]![");
        QVERIFY(QDir(service.home()).rmdir("temperature.log"));
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QCOMPARE(service.ask(question).size(), 8 + 8); // one record
        QCOMPARE(service.stop(), 0);
    }

    /// With few descriptors the service has fewer consoles: a new one replaces the longest idle one, and the
    /// listener does not fail repeatedly.
    void descriptorsAreScarce()
    {
        constexpr rlim_t kScarce = 300;
        constexpr int kCrowd = 60;
        ServiceFixture service;
        service.setLauncher({"prlimit", QString("--nofile=%1:%2").arg(kScarce / 2).arg(kScarce)});
        service.writeMachine(json(kOneDrive));
        QVERIFY2(service.serve(), service.output());
        rlimit raised{};
        QCOMPARE(::prlimit(pid_t(service.processId()), RLIMIT_NOFILE, nullptr, &raised), 0);
        QCOMPARE(raised.rlim_cur, kScarce);

        std::vector<std::unique_ptr<RawConsole>> crowd;
        for (int i = 0; i < kCrowd; ++i) {
            crowd.push_back(std::make_unique<RawConsole>(service.port()));
            QVERIFY(isGreeting(crowd.back()->readLine()));
        }
        QVERIFY(crowd.front()->waitForEnd());
        QCOMPARE(crowd[kCrowd - 10]->ask("REFRESH"), "REFRESH_OK");
        crowd.clear();
        QTRY_VERIFY_WITH_TIMEOUT(isGreeting(service.firstLine()), kPatienceMs);
        QCOMPARE(service.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_faults.moc"
