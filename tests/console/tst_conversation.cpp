// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/await.h"
#include "monitor/scripted_peer.h"
#include "rows.h"
#include "wire/scrambling.h"

#include <memory>
#include <vector>

using namespace std::chrono_literals;
using client::Conversation;
using client::FailureKind;
using Lines = QList<QByteArray>;

namespace {

constexpr std::chrono::milliseconds kTimeout = 300ms; // for a peer that stays silent
constexpr std::chrono::milliseconds kLimit = 30s;     // for a peer that answers

/// Returns the line of a service with `text`.
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
    return {"127.0.0.1", peer.serverPort(), {}};
}

} // namespace

Q_DECLARE_METATYPE(client::FailureKind)

class TestConversation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void receivesGreetingAndReply()
    {
        ScriptedPeer peer({kGreeting, kDrive});
        Conversation conversation(endpointOf(peer), kLimit);
        const auto drive = await(conversation, client::requests::drive(7));
        QVERIFY2(drive, qPrintable(drive.failure().text));
        QCOMPARE(drive->model, "X");
        QCOMPARE(conversation.greeting().value().hostName, "server-1");
        QCOMPARE(unscramble(peer.received().trimmed()), "DEVINFO]![7");
    }

    /// The handlers are called in the order of the requests, and a failed connection fails all that wait.
    void queuesRequests()
    {
        ScriptedPeer peer({kGreeting, wire("DEVCOUNT,3"), ""});
        Conversation conversation(endpointOf(peer), kLimit);
        QStringList outcomes;
        const auto record = [&outcomes](const client::Result<qint32> &count) {
            outcomes.append(count ? QString::number(*count) : QStringLiteral("failed"));
        };
        for (int i = 0; i < 3; ++i)
            conversation.ask(client::requests::driveCount(), record);
        QVERIFY(outcomes.isEmpty());
        QTRY_COMPARE(outcomes.join(u' '), "3 failed failed");
        QCOMPARE(peer.received().count('\n'), 2);
    }

    void sendsNothingAfterClose()
    {
        ScriptedPeer peer({kGreeting});
        Conversation conversation(endpointOf(peer), kLimit);
        conversation.ask(client::requests::driveCount(), [](const client::Result<qint32> &) {
            QFAIL("the handler of a dropped request was called");
        });
        conversation.close();
        QVERIFY(awaitGreeting(conversation)); // connects again
        QCOMPARE(peer.connectionCount(), 1);
        QVERIFY(peer.received().isEmpty());
    }

    void fails_data()
    {
        QTest::addColumn<Lines>("script"); // the second line answers a request
        QTest::addColumn<FailureKind>("kind");
        row("no greeting", Lines{}, FailureKind::TimedOut);
        row("half a line", Lines{kGreeting.left(40)}, FailureKind::TimedOut);
        row("half a line, then closed", Lines{kGreeting.left(40) + '|'}, FailureKind::Closed);
        row("closed at once", Lines{""}, FailureKind::Closed);
        row("another protocol", Lines{"SSH-2.0-x\r\n"}, FailureKind::NotUnderstood);
        row("no greeting", Lines{wire("VER]![Halvex Service v 5.0.5")}, FailureKind::NotUnderstood);
        row("two lines", Lines{kGreeting + kGreeting}, FailureKind::NotUnderstood);
        row("service detects its drives", Lines{wire("DETECTING")}, FailureKind::Detecting);
        row("service is paused", Lines{wire("PAUSED")}, FailureKind::Paused);
        row("half an answer", Lines{kGreeting, "0"}, FailureKind::TimedOut);
        row("closed instead of an answer", Lines{kGreeting, ""}, FailureKind::Closed);
        row("no such drive", Lines{kGreeting, wire("DEVINFO_ERR,[7]")}, FailureKind::Refused);
        row("refused with a reason", Lines{kGreeting, wire("X-ACK_ERR,no drive")}, FailureKind::Refused);
        row("unknown command", Lines{kGreeting, wire("UNKNOWN COMMAND - Command list:")},
            FailureKind::Refused);
        row("detection began meanwhile", Lines{kGreeting, wire("DETECTING")}, FailureKind::Detecting);
        row("answer to something else", Lines{kGreeting, wire("DEVCOUNT,7")}, FailureKind::NotUnderstood);
    }

    void fails()
    {
        QFETCH(Lines, script);
        QFETCH(FailureKind, kind);
        const auto timeout = kind == FailureKind::TimedOut ? kTimeout : kLimit;
        ScriptedPeer peer(script);
        Conversation conversation(endpointOf(peer), script.size() == 2 ? kLimit : timeout);
        auto request = client::requests::drive(7);
        request.allowance = timeout;
        const auto drive = await(conversation, request);
        QVERIFY(!drive);
        QCOMPARE(drive.failure().kind, kind);
        QVERIFY(!drive.failure().text.isEmpty());
    }

    void waitsUntilReady_data()
    {
        QTest::addColumn<Lines>("script"); // a line for each connection
        QTest::addColumn<bool>("isReady");
        row("paused, detecting, closing, then ready → waits",
            Lines{wire("PAUSED"), wire("DETECTING"), "", kGreeting}, true);
        row("another protocol → does not wait", Lines{"HTTP/1.1 400 Bad Request\r\n"}, false);
    }

    void waitsUntilReady()
    {
        QFETCH(Lines, script);
        ScriptedPeer peer(script);
        Conversation conversation(endpointOf(peer), kLimit);
        QStringList reasons;
        conversation.waitUntilReady(kLimit,
                                    [&](const client::Failure &failure) { reasons.append(failure.text); });
        QTEST(bool(awaitGreeting(conversation)), "isReady");
        QCOMPARE(peer.connectionCount(), script.size());
        QCOMPARE(reasons.size(), script.size() > 1 ? 1 : 0);
    }

    /// Each peer accepts only after the next one has: asked one after another, the first would never answer.
    void queriesSeveralServicesAtTheSameTime()
    {
        std::vector<std::unique_ptr<ScriptedPeer>> peers;
        std::vector<std::unique_ptr<Conversation>> conversations;
        int answers = 0;
        for (int i = 0; i < 3; ++i) {
            peers.push_back(std::make_unique<ScriptedPeer>(Lines{kGreeting, wire("DEVCOUNT,3")}));
            conversations.push_back(std::make_unique<Conversation>(endpointOf(*peers.back()), kLimit));
            conversations.back()->ask(client::requests::driveCount(),
                                      [&](const client::Result<qint32> &count) { answers += count ? 1 : 0; });
        }
        for (std::size_t i = 0; i < 2; ++i) {
            peers[i]->pauseAccepting();
            connect(peers[i + 1].get(), &QTcpServer::newConnection, peers[i].get(),
                    &QTcpServer::resumeAccepting);
        }
        QTRY_COMPARE(answers, 3);
    }
};

QTEST_GUILESS_MAIN(TestConversation)
#include "tst_conversation.moc"
