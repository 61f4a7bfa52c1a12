// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/local_daemon.h"
#include "protocol/scrambling.h"
#include "protocol/tcp_server.h"

#include "protocol/fake_target.h"
#include "rows.h"

#include <QLocalSocket>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <list>
#include <memory>

namespace {

int fixedOffset()
{
    return 42;
}

class RebindingServer : public TcpServer
{
public:
    using TcpServer::setRebindPending;
    using TcpServer::TcpServer;
};

/// Both listeners over one fake daemon, as the service composes them.
struct Servers
{
    explicit Servers(const ConnectionLimits &limits = {})
        : tcp(target, fixedOffset, nullptr, limits)
        , local(tcp.consoles())
    {
        QVERIFY(tcp.listenOn(0));
        QVERIFY(local.listen(directory.filePath(QStringLiteral("socket"))));
    }

    FakeTarget target;
    QTemporaryDir directory;
    RebindingServer tcp;
    localDaemon local;
};

enum Transport { Tcp4, Tcp6, Local };

/// A console on any transport that has heard its first line.
class Client
{
public:
    explicit Client(const Servers &servers, Transport transport = Tcp4)
    {
        if (transport == Local) {
            m_socket = &m_local;
            m_local.connectToServer(servers.local.fullServerName());
        } else {
            const auto address = transport == Tcp4 ? QHostAddress::LocalHost : QHostAddress::LocalHostIPv6;
            m_tcp.connectToHost(address, servers.tcp.serverPort());
        }
        firstLine = receive();
    }

    QString firstLine;

    void write(const QByteArray &bytes) { m_socket->write(bytes); }
    void send(const char *text) { write(line(text)); }

    /// The next line's text; "<nothing>" when none comes.
    QString receive()
    {
        (void)QTest::qWaitFor([this] { return m_socket->canReadLine() || isClosed(); }, kPatienceMs);
        const QByteArray wire = m_socket->readLine();
        return wire.endsWith("\r\n") ? unscramble(wire.chopped(2)) : QStringLiteral("<nothing>");
    }

    QString ask(const char *text)
    {
        send(text);
        return receive();
    }

    [[nodiscard]] bool hasUnread() const { return m_socket->bytesAvailable() > 0; }

    [[nodiscard]] bool isClosed() const
    {
        return m_tcp.state() == QTcpSocket::UnconnectedState &&
               m_local.state() == QLocalSocket::UnconnectedState;
    }

    static QByteArray line(const char *text) { return scramble(QLatin1String(text), 7) + "\r\n"; }

    /// Without, nothing more is taken from the system's buffers, and these do not grow.
    void setReading(bool on)
    {
        const qint64 size = on ? 0 : 1;
        m_tcp.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 1 << 16);
        m_tcp.setReadBufferSize(size);
        m_local.setReadBufferSize(size);
        if (on)
            m_socket->peek(1); // a pipe does not go on by itself
    }

private:
    /// Long lines take their time under a sanitizer.
    static constexpr int kPatienceMs = 60000;

    QTcpSocket m_tcp;
    QLocalSocket m_local;
    QIODevice *m_socket = &m_tcp;
};

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::Any, 0);
    return server.serverPort();
}

/// The service's sides of the connections.
QList<QIODevice *> connections(const Servers &servers)
{
    return servers.tcp.findChildren<QIODevice *>(QString(), Qt::FindDirectChildrenOnly) +
           servers.local.findChildren<QIODevice *>(QString(), Qt::FindDirectChildrenOnly);
}

} // namespace

Q_DECLARE_METATYPE(Transport)

class TestConnections : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void session_data()
    {
        QTest::addColumn<Transport>("transport");
        QTest::addColumn<bool>("paused");
        QTest::addColumn<bool>("detecting");
        QTest::addColumn<QString>("first"); // a pattern
        QTest::addColumn<QString>("peer");
        QTest::addColumn<QString>("last");
        row("IPv4", Tcp4, false, false, "^VER.*\\[2130706433\\.\\d", "2130706433", "DISCONNECTED");
        row("IPv6", Tcp6, false, false, "^VER.*\\[0\\.\\d", "0", "DISCONNECTED");
        row("local", Local, false, false, "^VER.*\\[Local\\.\\d", "Local", "DISCONNECTED");
        row("detecting", Tcp4, false, true, "^DETECTING$", "2130706433", "DETECTING");
        row("paused", Local, true, false, "^PAUSED$", "Local", "PAUSED");
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
        QCOMPARE(auth.first(), QLatin1String("AUTH,111,") + peer);
        const qint64 time = auth.last().toLongLong();
        QVERIFY(time >= before && time <= QDateTime::currentSecsSinceEpoch());
        QTEST(client.ask("DIS"), "last");
        QTRY_VERIFY(client.isClosed());
    }

    void smtpTest()
    {
        Servers servers;
        servers.target.paused = true;
        Client client(servers);
        servers.target.takesTestMail = false;
        QCOMPARE(client.ask("SMTPTEST]![25~;0"), QStringLiteral("UNKNOWN COMMAND - Command list:"));
        QCOMPARE(servers.target.calls, QStringList(QStringLiteral("startSmtpTest 25~;0")));

        servers.target.takesTestMail = true;
        client.send("SMTPTEST]![25~;0~;x");
        QTRY_COMPARE(servers.target.calls.size(), 2);
        servers.target.testMailFinished(QStringLiteral("SMTP error: no."));
        QCOMPARE(client.receive(), QStringLiteral("SMTPTEST_OK]![SMTP error: no."));
    }

    void lateAnswersOutliveTheirConsole_data() { transports(); }

    void lateAnswersOutliveTheirConsole()
    {
        QFETCH(Transport, transport);
        Servers servers;
        servers.target.historyGate.acquire();
        {
            Client client(servers, transport);
            client.send("SMTPTEST]![25");
            QTRY_COMPARE(servers.target.calls.size(), 1);
            client.send("GSTATR");
            QTRY_COMPARE(servers.target.historiesAsked, 1);
        }
        QTRY_VERIFY(connections(servers).isEmpty());
        servers.target.testMailFinished(QStringLiteral("transcript"));
        servers.target.historyGate.release();
        Client other(servers, transport);
        QCOMPARE(other.ask("GSTATD"), QStringLiteral("STATD]![<><>"));
    }

    void longLineCloses_data()
    {
        QTest::addColumn<Transport>("transport");
        QTest::addColumn<int>("lineBytes");
        row("TCP, unless told otherwise", Tcp4, 1024 * 1024);
        row("local", Local, 1000); // what the system hands over in one go
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
        QCOMPARE(client.receive(), QStringLiteral("ERR"));
        client.write(QByteArray(lineBytes + 1, '0'));
        QTRY_VERIFY(client.isClosed());
    }

    void tcpTakesLineByLine()
    {
        Servers servers;
        Client client(servers);
        client.write(Client::line("DEVCOUNT").left(15));
        Client other(servers);
        client.write(Client::line("DEVCOUNT").mid(15) + Client::line("USERCOUNT"));
        QCOMPARE(client.receive(), QStringLiteral("DEVCOUNT,0"));
        QCOMPARE(other.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        QVERIFY(!client.hasUnread());
        QCOMPARE(client.ask("DIS"), QStringLiteral("USERCOUNT,0"));
        QVERIFY(!client.isClosed());
    }

    void localTakesWhatArrivedAsOneLine()
    {
        Servers servers;
        Client client(servers, Local);
        client.write(Client::line("DEVCOUNT") + Client::line("DEVCOUNT"));
        QCOMPARE(client.receive(), QStringLiteral("ERR"));
        client.write(Client::line("DEVCOUNT").left(15));
        QCOMPARE(client.receive(), QStringLiteral("ERR"));
        client.write(Client::line("DEVCOUNT").chopped(2)); // needs no line end
        QCOMPARE(client.receive(), QStringLiteral("DEVCOUNT,0"));
    }

    void newLocalConsoleTakesOver()
    {
        ConnectionLimits limits;
        limits.lineBytes = 100;
        Servers servers(limits);
        auto first = std::make_unique<Client>(servers, Local);
        Client second(servers, Local);
        first->send("RESET");
        QCOMPARE(second.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        first->write(QByteArray(1000, '0'));
        QCOMPARE(second.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        first.reset();
        QTRY_COMPARE(connections(servers).size(), 1);
        QCOMPARE(servers.target.calls, QStringList());
    }

    /// Whether the one who serves it answers, or is so slow that no further connection fits in its queue.
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
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot listen under .*")));
            QVERIFY(!second.listen(servers.local.fullServerName()));
        }
        queue.clear();
        QVERIFY(Client(servers, Local).firstLine.startsWith(QLatin1String("VER")));
    }

    /// Qt closes the listener like this when the process runs out of descriptors.
    void closedLocalListenerComesBack()
    {
        Servers servers;
        servers.local.close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Listening again under .*")));
        QTRY_VERIFY(servers.local.isListening());
        QVERIFY(Client(servers, Local).firstLine.startsWith(QLatin1String("VER")));
    }

    void changedPortWaitsForADisconnect()
    {
        Servers servers;
        const quint16 oldPort = servers.tcp.serverPort();
        const quint16 newPort = freePort();
        servers.target.settingsRecord.port = newPort;
        auto client = std::make_unique<Client>(servers);
        servers.tcp.setRebindPending();
        auto other = std::make_unique<Client>(servers); // takes the change back
        client.reset();
        QTRY_COMPARE(connections(servers).size(), 1);
        QCOMPARE(servers.tcp.serverPort(), oldPort);

        servers.tcp.setRebindPending();
        QCOMPARE(other->ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        QCOMPARE(servers.tcp.serverPort(), oldPort);
        other.reset();
        QTRY_COMPARE(servers.tcp.serverPort(), newPort);
        QVERIFY(Client(servers).firstLine.startsWith(QLatin1String("VER")));
    }

    void connectionsAreCapped()
    {
        ConnectionLimits limits;
        limits.connections = 2;
        Servers servers(limits);
        auto tcp = std::make_unique<Client>(servers);
        Client local(servers, Local);
        for (const Transport transport : {Tcp4, Local}) {
            const Client refused(servers, transport);
            QVERIFY(refused.isClosed() && refused.firstLine == QLatin1String("<nothing>"));
        }
        QCOMPARE(local.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        tcp.reset();
        QTRY_COMPARE(connections(servers).size(), 1);
        QVERIFY(Client(servers).firstLine.startsWith(QLatin1String("VER")));
    }

    void unreadRepliesHoldOneConnectionOnly_data() { transports(); }

    void unreadRepliesHoldOneConnectionOnly()
    {
        QFETCH(Transport, transport);
        ConnectionLimits limits;
        limits.unreadBytes = 100000;
        Servers servers(limits);
        Client silent(servers, transport);
        const QIODevice &silentConnection = *connections(servers).first();
        Client other(servers);
        servers.target.settingsRecord.versionText =
            QString(3000000, QLatin1Char('v')); // more than systems take
        silent.setReading(false);
        for (QTcpSocket *socket : servers.tcp.findChildren<QTcpSocket *>())
            socket->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 1 << 16);
        silent.send("VER");
        QTRY_VERIFY(silentConnection.bytesToWrite() > limits.unreadBytes);
        silent.send("RESET");
        for (int i = 0; i < 3; ++i)
            QCOMPARE(other.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        QCOMPARE(servers.target.calls, QStringList());

        silent.setReading(true);
        QVERIFY(silent.receive().startsWith(QLatin1String("VER]![vvv")));
        QCOMPARE(silent.receive(), QStringLiteral("RESET_OK"));
    }

    void longAnswersKeepTheirPlace_data() { transports(); }

    /// Each is found after the one before, while other consoles are served.
    void longAnswersKeepTheirPlace()
    {
        QFETCH(Transport, transport);
        Servers servers;
        Client client(servers, transport);
        Client second(servers);
        Client other(servers);
        servers.target.historyGate.acquire();
        client.send("GSTATD]![a]![b");
        second.send("GSTATR");
        QTRY_COMPARE(servers.target.historiesAsked, 2);
        client.send("RESET");
        for (int i = 0; i < 3; ++i)
            QCOMPARE(other.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        QCOMPARE(servers.target.calls, QStringList());

        servers.target.historyGate.release();
        QCOMPARE(client.receive(), QStringLiteral("STATD]![<a><b>"));
        QCOMPARE(client.receive(), QStringLiteral("RESET_OK"));
        QCOMPARE(second.receive(), QStringLiteral("STATR]![<><>"));
        QVERIFY(!servers.target.historiesOverlap);
    }

private:
    static void transports()
    {
        QTest::addColumn<Transport>("transport");
        row("TCP", Tcp4);
        row("local", Local);
    }
};

QTEST_GUILESS_MAIN(TestConnections)
#include "tst_connections.moc"
