// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/session.h"

#include "console/client/inventory.h"
#include "console/client/requests.h"
#include "console/client/survey.h"
#include "monitor/scripted_peer.h"
#include "protocol/scrambling.h"
#include "rows.h"

#include <memory>
#include <vector>

using namespace std::chrono_literals;
using client::FailureKind;
using client::Session;
using Lines = QList<QByteArray>;

namespace {

constexpr std::chrono::milliseconds kTimeout = 300ms; // of a peer that is known to stay silent
constexpr std::chrono::milliseconds kPatience = 30s;  // of a peer that will answer

/// What a service writes for `text`.
QByteArray wire(const char *text)
{
    return sendReply(QString::fromLatin1(text), [] { return 42; });
}

const QByteArray kGreeting =
    wire("VER]![Halvex Service v 5.0.5]![5000]![180000]![300000]![server-1]![1]![1]![0]![1]![a@b]![c@d]!["
         "Drives]![mail]![25]![0]![user]![secret]![55]![65]![Local.1794873600]![]![");
const QByteArray kDrive =
    wire("DEVINFO_OK,7,X~;~;~;0~;-1~;~;-1~;0~;0~;0~;512~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;3~;0~;1");

client::Endpoint endpointOf(const ScriptedPeer &peer)
{
    return {QStringLiteral("127.0.0.1"), peer.serverPort(), {}};
}

} // namespace

Q_DECLARE_METATYPE(client::FailureKind)

class TestSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void greetsAndAsks()
    {
        ScriptedPeer peer({kGreeting, kDrive});
        Session session(endpointOf(peer), kPatience);
        const auto greeting = session.start();
        QVERIFY2(greeting, qPrintable(greeting.failure().text));
        QCOMPARE(greeting->hostName, QStringLiteral("server-1"));
        const auto drive = session.query(client::requests::driveInfo(7), asDriveSeven);
        QVERIFY2(drive, qPrintable(drive.failure().text));
        QCOMPARE(drive->model, QStringLiteral("X"));
        QCOMPARE(unscramble(peer.received().trimmed()), QStringLiteral("DEVINFO]![7"));
    }

    void fails_data()
    {
        QTest::addColumn<Lines>("script"); // the second line answers a request
        QTest::addColumn<FailureKind>("kind");
        row("silence", Lines{}, FailureKind::TimedOut);
        row("half a line", Lines{kGreeting.left(40)}, FailureKind::TimedOut);
        row("half a line, then closed", Lines{kGreeting.left(40) + '|'}, FailureKind::Closed);
        row("closed at once", Lines{""}, FailureKind::Closed);
        row("another protocol", Lines{"SSH-2.0-x\r\n"}, FailureKind::NotUnderstood);
        row("no greeting", Lines{wire("VER]![Halvex Service v 5.0.5")}, FailureKind::NotUnderstood);
        row("two lines", Lines{kGreeting + kGreeting}, FailureKind::NotUnderstood);
        row("detecting", Lines{wire("DETECTING")}, FailureKind::Detecting);
        row("paused", Lines{wire("PAUSED")}, FailureKind::Paused);
        row("half an answer", Lines{kGreeting, "0"}, FailureKind::TimedOut);
        row("closed instead of an answer", Lines{kGreeting, ""}, FailureKind::Closed);
        row("no such drive", Lines{kGreeting, wire("DEVINFO_ERR,[7]")}, FailureKind::Refused);
        row("unknown command", Lines{kGreeting, wire("UNKNOWN COMMAND - Command list:")},
            FailureKind::Refused);
        row("detection began meanwhile", Lines{kGreeting, wire("DETECTING")}, FailureKind::Detecting);
        row("answer to something else", Lines{kGreeting, wire("DEVCOUNT,7")}, FailureKind::NotUnderstood);
    }

    void fails()
    {
        QFETCH(Lines, script);
        QFETCH(FailureKind, kind);
        const bool isAsked = script.size() == 2;
        const auto timeout = kind == FailureKind::TimedOut ? kTimeout : kPatience;
        ScriptedPeer peer(script);
        Session session(endpointOf(peer), isAsked ? kPatience : timeout);
        const auto greeting = session.start();
        QCOMPARE(bool(greeting), isAsked);
        client::Failure failure = greeting.failure();
        if (isAsked) {
            const auto drive = session.query(client::requests::driveInfo(7), asDriveSeven, timeout);
            QVERIFY(!drive);
            failure = drive.failure();
        }
        QCOMPARE(failure.kind, kind);
        QVERIFY(!failure.text.isEmpty());
    }

    void startsWhenReady_data()
    {
        QTest::addColumn<Lines>("script"); // a line for each connection
        QTest::addColumn<bool>("starts");
        row("busy for a while", Lines{wire("PAUSED"), wire("DETECTING"), "", kGreeting}, true);
        row("another protocol is not waited for", Lines{"HTTP/1.1 400 Bad Request\r\n"}, false);
    }

    void startsWhenReady()
    {
        QFETCH(Lines, script);
        ScriptedPeer peer(script);
        Session session(endpointOf(peer), kPatience);
        const bool starts = bool(session.startWhenReady(kPatience));
        QTEST(starts, "starts");
        QCOMPARE(peer.connectionCount(), script.size());
    }

    /// Each peer accepts when the next one has: asked one after another, the first would never answer.
    void asksSeveralAtTheSameTime()
    {
        const QByteArray noDrives = wire("ALLDEVINFO_OK]![0");
        std::vector<std::unique_ptr<ScriptedPeer>> peers;
        QVector<client::Endpoint> endpoints;
        for (const QByteArray &answer : {noDrives, QByteArray("garbage\r\n"), noDrives}) {
            peers.push_back(std::make_unique<ScriptedPeer>(Lines{kGreeting, answer}));
            endpoints.append(endpointOf(*peers.back()));
        }
        for (std::size_t i = 0; i < 2; ++i) {
            peers[i]->pauseAccepting();
            connect(peers[i + 1].get(), &QTcpServer::newConnection, peers[i].get(),
                    &QTcpServer::resumeAccepting);
        }
        const auto answers = client::askAll(endpoints, kPatience);
        QCOMPARE(answers.size(), 3);
        QVERIFY(answers.at(0).isComplete());
        QVERIFY(!answers.at(1).isComplete());
        QCOMPARE(answers.at(1).failure.kind, FailureKind::NotUnderstood);
        QVERIFY(answers.at(2).isComplete());
        QCOMPARE(answers.at(2).endpoint.port, peers[2]->serverPort());
    }

private:
    static std::optional<client::Drive> asDriveSeven(const QString &reply)
    {
        return client::parseDrive(reply, 7);
    }
};

QTEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
