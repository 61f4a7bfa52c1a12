// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/console_connections.h"

#include <array>
#include <list>
#include <memory>

namespace {

const char kMailTest[] = "SMTPTEST]![25~;0~;a~;b~;c~;d~;e~;f~;Hi";

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::Any, 0);
    return server.serverPort();
}

} // namespace

class TestConnections : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void session_data()
    {
        QTest::addColumn<Transport>("transport");
        QTest::addColumn<bool>("paused");
        QTest::addColumn<bool>("detecting");
        QTest::addColumn<QString>("first"); // pattern of the first line
        QTest::addColumn<QString>("peer");
        QTest::addColumn<QString>("last");
        row("IPv4", Tcp4, false, false, "^VER.*\\[2130706433\\.\\d", "2130706433", "DISCONNECTED");
        row("IPv6", Tcp6, false, false, "^VER.*\\[0\\.\\d", "0", "DISCONNECTED");
        row("local", Local, false, false, "^VER.*\\[Local\\.\\d", "Local", "DISCONNECTED");
        row("while drives are detected", Tcp4, false, true, "^DETECTING$", "2130706433", "DETECTING");
        row("while the service is paused", Local, true, false, "^PAUSED$", "Local", "PAUSED");
        row("paused comes first", Local, true, true, "^PAUSED$", "Local", "PAUSED");
    }

    void session()
    {
        QFETCH(Transport, transport);
        QFETCH(QString, first);
        QFETCH(QString, peer);
        QFETCH(bool, paused);
        QFETCH(bool, detecting);
        Servers servers;
        servers.target.paused = paused;
        servers.target.detecting = detecting;
        const qint64 before = QDateTime::currentSecsSinceEpoch();
        Client client(servers, transport);
        QVERIFY2(client.firstLine.contains(QRegularExpression(first)), qPrintable(client.firstLine));

        const QStringList auth = client.ask("AUTH").split(QLatin1Char('.'));
        QCOMPARE(auth.first(), "AUTH,111," + peer);
        const qint64 time = auth.last().toLongLong();
        QVERIFY(time >= before && time <= QDateTime::currentSecsSinceEpoch());
        QTEST(client.ask("DIS"), "last");
        QTRY_VERIFY(client.isClosed());
    }

    /// Its reply may follow those to later requests.
    void mailTest()
    {
        Servers servers;
        servers.target.paused = true;
        Client client(servers);
        servers.target.startsMailTest = false;
        QCOMPARE(client.ask(kMailTest), "UNKNOWN COMMAND - Command list:");
        QCOMPARE(servers.target.calls, QStringList("startMailTest Hi"));

        servers.target.startsMailTest = true;
        client.send(kMailTest);
        QTRY_COMPARE(servers.target.calls.size(), 2);
        QCOMPARE(client.ask("DEVCOUNT"), "PAUSED");
        servers.target.mailTestFinished("SMTP error: no.");
        QCOMPARE(client.receive(), "SMTPTEST_OK]![SMTP error: no.");
    }

    void deferredReplyHoldsItsConsoleOnly_data() { transports(); }

    void deferredReplyHoldsItsConsoleOnly()
    {
        QFETCH(Transport, transport);
        Servers servers;
        servers.target.operationsTakeTime = true;
        auto client = std::make_unique<Client>(servers, transport);
        Client other(servers);
        client->send("REFRESH");
        QTRY_COMPARE(servers.target.calls.size(), 1);
        client->send("DEVCOUNT");
        QCOMPARE(other.ask("DEVCOUNT"), "DEVCOUNT,0");
        QVERIFY(!client->hasUnread());
        servers.target.unfinished();
        QCOMPARE(client->receive(), "REFRESH_OK");
        QCOMPARE(client->receive(), "DEVCOUNT,0");

        client->send(kMailTest);
        QTRY_COMPARE(servers.target.calls.size(), 2);
        client->send("STOPSCAN]![0");
        QTRY_COMPARE(servers.target.calls.size(), 3);
        client.reset();
        QTRY_COMPARE(connections(servers).size(), 1);
        servers.target.unfinished();
        servers.target.mailTestFinished("transcript");
        QCOMPARE(other.ask("DEVCOUNT"), "DEVCOUNT,0");
    }

    void longLineCloses_data()
    {
        QTest::addColumn<Transport>("transport");
        QTest::addColumn<int>("lineBytes");
        row("TCP, default limit", Tcp4, 1024 * 1024);
        row("local", Local, 1000); // the amount that the system delivers at once
    }

    void longLineCloses()
    {
        QFETCH(Transport, transport);
        QFETCH(int, lineBytes);
        ConnectionLimits limits;
        if (transport == Local)
            limits.lineBytes = lineBytes;
        Servers servers(limits);
        Client client(servers, transport);
        client.write(QByteArray(lineBytes - 1, '0') + '\n');
        QCOMPARE(client.receive(), "ERR");
        client.write(QByteArray(lineBytes + 1, '0'));
        QTRY_VERIFY(client.isClosed());
    }

    void tcpReadsLineByLine()
    {
        Servers servers;
        Client client(servers);
        client.write(Client::line("DEVCOUNT").left(15));
        Client other(servers);
        client.write(Client::line("DEVCOUNT").mid(15) + Client::line("USERCOUNT"));
        QCOMPARE(client.receive(), "DEVCOUNT,0");
        QCOMPARE(other.ask("DEVCOUNT"), "DEVCOUNT,0");
        QVERIFY(!client.hasUnread());
        QCOMPARE(client.ask("DIS"), "USERCOUNT,0");
        QVERIFY(!client.isClosed());
    }

    void localSocketReadsAllAsOneLine()
    {
        Servers servers;
        Client client(servers, Local);
        client.write(Client::line("DEVCOUNT") + Client::line("DEVCOUNT"));
        QCOMPARE(client.receive(), "ERR");
        client.write(Client::line("DEVCOUNT").left(15));
        QCOMPARE(client.receive(), "ERR");
        client.write(Client::line("DEVCOUNT").chopped(2)); // needs no line end
        QCOMPARE(client.receive(), "DEVCOUNT,0");
    }

    void newLocalConsoleReplacesTheFormer()
    {
        ConnectionLimits limits;
        limits.lineBytes = 100;
        Servers servers(limits);
        auto first = std::make_unique<Client>(servers, Local);
        Client second(servers, Local);
        first->send("RESET");
        QCOMPARE(second.ask("DEVCOUNT"), "DEVCOUNT,0");
        first->write(QByteArray(1000, '0'));
        QCOMPARE(second.ask("DEVCOUNT"), "DEVCOUNT,0");
        first.reset();
        QTRY_COMPARE(connections(servers).size(), 1);
        QCOMPARE(servers.target.calls, QStringList());
    }

    /// The owner of the socket file either answers, or is so slow that its queue of connections is full.
    void servedSocketFileIsLeftAlone()
    {
        Servers servers;
        if (!QFileInfo::exists(servers.local.fullServerName()))
            QSKIP("local sockets are no files here, and several may have one name");
        localDaemon second(servers.tcp.consoles());
        std::list<QLocalSocket> queue;
        for (const bool isFull : {false, true}) {
            while (isFull && (queue.empty() || queue.back().state() == QLocalSocket::ConnectedState))
                queue.emplace_back().connectToServer(servers.local.fullServerName());
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Cannot listen under .*"));
            QVERIFY(!second.listen(servers.local.fullServerName()));
        }
        queue.clear();
        QVERIFY(Client(servers, Local).firstLine.startsWith("VER"));
    }

    /// Qt closes the listener like this when the process runs out of descriptors.
    void closedLocalListenerComesBack()
    {
        Servers servers;
        servers.local.close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Listening again under .*"));
        QTRY_VERIFY(servers.local.isListening());
        QVERIFY(Client(servers, Local).firstLine.startsWith("VER"));
    }

    void changedPortWaitsForADisconnect()
    {
        Servers servers;
        const quint16 oldPort = servers.tcp.serverPort();
        const quint16 newPort = freePort();
        servers.target.settingsRecord.port = newPort;
        auto client = std::make_unique<Client>(servers);
        servers.tcp.setRebindPending();
        auto other = std::make_unique<Client>(servers); // restores the limit
        client.reset();
        QTRY_COMPARE(connections(servers).size(), 1);
        QCOMPARE(servers.tcp.serverPort(), oldPort);

        servers.tcp.setRebindPending();
        QCOMPARE(other->ask("DEVCOUNT"), "DEVCOUNT,0");
        QCOMPARE(servers.tcp.serverPort(), oldPort);
        other.reset();
        QTRY_COMPARE(servers.tcp.serverPort(), newPort);
        QVERIFY(Client(servers).firstLine.startsWith("VER"));
    }

    /// At the limit a new connection replaces the longest idle one of the address that has the most.
    void connectionLimit()
    {
        ConnectionLimits limits;
        limits.connections = 4;
        Servers servers(limits);
        Client other(servers, Tcp6);
        Client local(servers, Local);
        Client first(servers);
        Client second(servers);
        QCOMPARE(first.ask("DEVCOUNT"), "DEVCOUNT,0");
        const Client third(servers);
        QVERIFY(third.firstLine.startsWith("VER"));
        QTRY_VERIFY(second.isClosed());
        for (Client *kept : {&first, &other, &local})
            QCOMPARE(kept->ask("DEVCOUNT"), "DEVCOUNT,0");
    }

    /// Consoles that arrive while the service is busy are not dropped.
    void manyConnectAtOnce()
    {
        Servers servers;
        std::array<QTcpSocket, 200> sockets;
        for (QTcpSocket &socket : sockets) {
            socket.connectToHost(QHostAddress::LocalHost, servers.tcp.serverPort());
            QVERIFY(socket.waitForConnected()); // does not run the server's event loop
        }
    }

    void refusedAddress()
    {
        ListenRules rules;
        rules.allowFrom = *AddressFilter::parse("::1");
        Servers servers({}, rules);
        const Client refused(servers, Tcp4);
        QVERIFY(refused.isClosed() && refused.firstLine == "<nothing>");
        QVERIFY(Client(servers, Tcp6).firstLine.startsWith("VER"));
        QVERIFY(Client(servers, Local).firstLine.startsWith("VER"));
    }
};

QTEST_GUILESS_MAIN(TestConnections)
#include "tst_connections.moc"
