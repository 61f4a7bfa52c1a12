// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/session.h"

#include "console/client/inventory.h"
#include "console/client/requests.h"
#include "console/client/short_replies.h"
#include "console/client/survey.h"
#include "console/scripted_service.h"
#include "rows.h"

#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using client::FailureKind;
using client::Session;

namespace {

constexpr auto kTimeout = 300ms; // of a peer that is known to stay silent
constexpr auto kPatience = 30s;  // of a peer that will answer

client::Endpoint endpointOf(const ScriptedService &service)
{
    return {QStringLiteral("127.0.0.1"), service.port(), {}};
}

/// Writes `bytes` one by one, each at a turn of the event loop, and never a last one.
void trickle(QTcpSocket &socket, const QByteArray &bytes)
{
    auto *timer = new QTimer(&socket);
    QObject::connect(timer, &QTimer::timeout, &socket, [&socket, bytes, next = 0]() mutable {
        if (next < bytes.size() - 1)
            socket.write(bytes.mid(next++, 1));
    });
    timer->start(10ms);
}

} // namespace

using Accept = std::function<void(QTcpSocket &)>;
Q_DECLARE_METATYPE(Accept)
Q_DECLARE_METATYPE(client::FailureKind)

using Answer = std::function<void(QTcpSocket &, const QString &)>;
Q_DECLARE_METATYPE(Answer)

class TestSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void greetsAndAsks()
    {
        ScriptedService service;
        service.accept = [](QTcpSocket &socket) {
            socket.write(ScriptedService::wire(ScriptedService::greeting()));
        };
        service.answer = [](QTcpSocket &socket, const QString &request) {
            if (request == QLatin1String("DEVCOUNT"))
                socket.write(ScriptedService::wire(QStringLiteral("DEVCOUNT,6")));
        };
        Session session(endpointOf(service), kPatience);
        const auto greeting = session.start();
        QVERIFY2(greeting, qPrintable(greeting.failure().text));
        QCOMPARE(greeting->hostName, QStringLiteral("server-1"));
        const auto count = session.query(QStringLiteral("DEVCOUNT"), client::parseDriveCount);
        QVERIFY2(count, qPrintable(count.failure().text));
        QCOMPARE(*count, 6);
    }

    void failsToStart_data()
    {
        const QByteArray greeting = ScriptedService::wire(ScriptedService::greeting());
        QTest::addColumn<Accept>("accept");
        QTest::addColumn<FailureKind>("kind");
        row("silence", Accept([](QTcpSocket &) {}), FailureKind::TimedOut);
        row("a byte at a time", Accept([=](QTcpSocket &socket) { trickle(socket, greeting); }),
            FailureKind::TimedOut);
        row("half a line, then closed", Accept([=](QTcpSocket &socket) {
                socket.write(greeting.left(40));
                socket.disconnectFromHost();
            }),
            FailureKind::Closed);
        row("closed at once", Accept([](QTcpSocket &socket) { socket.disconnectFromHost(); }),
            FailureKind::Closed);
        row("another protocol", Accept([](QTcpSocket &socket) { socket.write("SSH-2.0-x\r\n"); }),
            FailureKind::NotUnderstood);
        row("greeting with a field too few", Accept([](QTcpSocket &socket) {
                QString tooShort = ScriptedService::greeting();
                tooShort.chop(3);
                socket.write(ScriptedService::wire(tooShort));
            }),
            FailureKind::NotUnderstood);
        row("two lines", Accept([=](QTcpSocket &socket) { socket.write(greeting + greeting); }),
            FailureKind::NotUnderstood);
        row("detecting", Accept([](QTcpSocket &socket) {
                socket.write(ScriptedService::wire(QStringLiteral("DETECTING")));
            }),
            FailureKind::Detecting);
        row("paused",
            Accept([](QTcpSocket &socket) { socket.write(ScriptedService::wire(QStringLiteral("PAUSED"))); }),
            FailureKind::Paused);
    }

    void failsToStart()
    {
        QFETCH(Accept, accept);
        QFETCH(FailureKind, kind);
        ScriptedService service;
        service.accept = accept;
        Session session(endpointOf(service), kind == FailureKind::TimedOut ? kTimeout : kPatience);
        const auto greeting = session.start();
        QVERIFY(!greeting);
        QCOMPARE(greeting.failure().kind, kind);
        QVERIFY(!greeting.failure().text.isEmpty());
    }

    void failsToBeAnswered_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<FailureKind>("kind");
        const auto saying = [](const char *text) {
            return Answer([line = ScriptedService::wire(QString::fromUtf8(text))](
                              QTcpSocket &socket, const QString &) { socket.write(line); });
        };
        row("silence", Answer([](QTcpSocket &, const QString &) {}), FailureKind::TimedOut);
        row("closes", Answer([](QTcpSocket &socket, const QString &) { socket.disconnectFromHost(); }),
            FailureKind::Closed);
        row("no such drive", saying("DEVINFO_ERR,[7]"), FailureKind::Refused);
        row("unknown command", saying("UNKNOWN COMMAND - Command list:"), FailureKind::Refused);
        row("detection began meanwhile", saying("DETECTING"), FailureKind::Detecting);
        row("about another drive", saying("DEVINFO_OK,6,x"), FailureKind::NotUnderstood);
        row("answer to something else", saying("DEVCOUNT,7"), FailureKind::NotUnderstood);
    }

    void failsToBeAnswered()
    {
        QFETCH(Answer, answer);
        QFETCH(FailureKind, kind);
        ScriptedService service;
        service.accept = [](QTcpSocket &socket) {
            socket.write(ScriptedService::wire(ScriptedService::greeting()));
        };
        service.answer = answer;
        Session session(endpointOf(service), kPatience);
        QVERIFY(session.start());
        const auto timeout = kind == FailureKind::TimedOut ? kTimeout : std::chrono::milliseconds(kPatience);
        const auto drive = session.query(
            client::requests::driveInfo(7), [](const QString &reply) { return client::parseDrive(reply, 7); },
            timeout);
        QVERIFY(!drive);
        QCOMPARE(drive.failure().kind, kind);
    }

    void reportsAClosedPort()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        const quint16 port = server.serverPort();
        server.close();
        Session session({QStringLiteral("127.0.0.1"), port, {}}, kPatience);
        QCOMPARE(session.start().failure().kind, FailureKind::Unreachable);
    }

    void reportsAMissingSocket()
    {
        const QTemporaryDir directory;
        Session session({{}, 0, directory.filePath(QStringLiteral("nobody"))}, kPatience);
        QCOMPARE(session.start().failure().kind, FailureKind::Unreachable);
    }

    void waitsUntilTheServiceIsReady()
    {
        ScriptedService service;
        int connections = 0;
        service.accept = [&connections](QTcpSocket &socket) {
            const QStringList firstLines{QStringLiteral("PAUSED"), QStringLiteral("DETECTING"),
                                         ScriptedService::greeting()};
            socket.write(ScriptedService::wire(firstLines.value(connections++)));
        };
        Session session(endpointOf(service), kPatience);
        QVERIFY(session.startWhenReady(kPatience));
        QCOMPARE(connections, 3);
    }

    void doesNotWaitForAnotherProtocol()
    {
        ScriptedService service;
        int connections = 0;
        service.accept = [&connections](QTcpSocket &socket) {
            ++connections;
            socket.write("HTTP/1.1 400 Bad Request\r\n");
        };
        Session session(endpointOf(service), kPatience);
        QCOMPARE(session.startWhenReady(kPatience).failure().kind, FailureKind::NotUnderstood);
        QCOMPARE(connections, 1);
    }

    void asksSeveralAtTheSameTime()
    {
        // Each peer keeps its greeting until all three are connected: asked one after another, none would
        // ever be answered.
        ScriptedService services[3];
        QVector<QTcpSocket *> sockets;
        QVector<client::Endpoint> endpoints;
        for (ScriptedService &service : services) {
            service.accept = [&sockets](QTcpSocket &socket) {
                sockets.append(&socket);
                for (QTcpSocket *waiting : sockets.size() == 3 ? sockets : QVector<QTcpSocket *>())
                    waiting->write(ScriptedService::wire(ScriptedService::greeting()));
            };
            service.answer = [](QTcpSocket &socket, const QString &) {
                socket.write(ScriptedService::wire(QStringLiteral("ALLDEVINFO_OK]![0")));
            };
            endpoints.append(endpointOf(service));
        }
        services[1].answer = [](QTcpSocket &socket, const QString &) { socket.write("garbage\r\n"); };
        const auto answers = client::askAll(endpoints, kPatience);
        QCOMPARE(answers.size(), 3);
        QVERIFY(answers.at(0).isComplete());
        QVERIFY(!answers.at(1).isComplete());
        QCOMPARE(answers.at(1).failure.kind, FailureKind::NotUnderstood);
        QVERIFY(answers.at(2).isComplete());
        QCOMPARE(answers.at(2).endpoint.port, services[2].port());
    }
};

QTEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
