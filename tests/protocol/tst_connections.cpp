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
        , localName(directory.filePath(QStringLiteral("socket")))
    {
        target.onRebindRequest = [this] { tcp.setRebindPending(); };
        QVERIFY(tcp.listenOn(0));
        QVERIFY(local.listen(localName));
    }

    FakeTarget target;
    QTemporaryDir directory;
    RebindingServer tcp;
    localDaemon local;
    QString localName;
};

enum Transport { Tcp4, Tcp6, Local };

/// A console on any transport.
class Client
{
public:
    explicit Client(const Servers &servers, Transport transport = Tcp4)
    {
        if (transport == Local) {
            auto socket = std::make_unique<QLocalSocket>();
            socket->connectToServer(servers.localName);
            m_socket = std::move(socket);
        } else {
            auto socket = std::make_unique<QTcpSocket>();
            const auto address = transport == Tcp4 ? QHostAddress::LocalHost : QHostAddress::LocalHostIPv6;
            socket->connectToHost(QHostAddress(address), servers.tcp.serverPort());
            m_socket = std::move(socket);
        }
    }

    void write(const QByteArray &bytes) { m_socket->write(bytes); }
    void send(const QString &text) { write(line(text)); }
    void send(const char *text) { send(QString::fromLatin1(text)); }

    /// The next line's text; "<nothing>" when none comes.
    QString receive()
    {
        if (!QTest::qWaitFor([this] { return m_socket->canReadLine(); }, kPatienceMs))
            return QStringLiteral("<nothing>");
        const QByteArray wire = m_socket->readLine();
        return wire.endsWith("\r\n") ? unscramble(wire.chopped(2)) : QStringLiteral("<no CR LF>");
    }

    QString ask(const char *text)
    {
        send(text);
        return receive();
    }

    [[nodiscard]] bool hasUnread() const { return m_socket->bytesAvailable() > 0; }

    bool waitForClose()
    {
        return QTest::qWaitFor([this] { return !isConnected(); });
    }

    [[nodiscard]] bool isConnected() const
    {
        if (const auto *tcp = qobject_cast<const QTcpSocket *>(m_socket.get()))
            return tcp->state() == QAbstractSocket::ConnectedState;
        return qobject_cast<const QLocalSocket *>(m_socket.get())->state() == QLocalSocket::ConnectedState;
    }

    static QByteArray line(const QString &text) { return scramble(text, 7) + "\r\n"; }

    /// Without, nothing more is taken from the system's buffers, and these do not grow.
    void setReading(bool on)
    {
        const qint64 size = on ? 0 : 1;
        if (auto *tcp = qobject_cast<QTcpSocket *>(m_socket.get())) {
            tcp->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 1 << 16);
            tcp->setReadBufferSize(size);
        } else {
            qobject_cast<QLocalSocket *>(m_socket.get())->setReadBufferSize(size);
        }
        if (on)
            m_socket->peek(1); // a pipe does not go on by itself
    }

private:
    /// Long lines take their time under a sanitizer.
    static constexpr int kPatienceMs = 60000;

    std::unique_ptr<QIODevice> m_socket;
};

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::Any, 0);
    return server.serverPort();
}

int tcpConnections(const Servers &servers)
{
    return servers.tcp.findChildren<QTcpSocket *>().size();
}

int connectionCount(const Servers &servers)
{
    return tcpConnections(servers) + servers.local.findChildren<QLocalSocket *>().size();
}

void keepSendBuffersSmall(const Servers &servers)
{
    for (QTcpSocket *socket : servers.tcp.findChildren<QTcpSocket *>())
        socket->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 1 << 16);
}

/// Of the connection that has most, on the service's side.
qint64 unsentBytes(const Servers &servers)
{
    qint64 bytes = 0;
    for (const QTcpSocket *socket : servers.tcp.findChildren<QTcpSocket *>())
        bytes = qMax(bytes, socket->bytesToWrite());
    for (const QLocalSocket *socket : servers.local.findChildren<QLocalSocket *>())
        bytes = qMax(bytes, socket->bytesToWrite());
    return bytes;
}

/// A settings list for SET that leaves all but the port alone.
QString setPort(quint16 port)
{
    return QStringLiteral("SET]![%1~;180000~;300000~;1~;0~;0~;~;~;~;~;0~;~;~;25~;55~;65~;~;").arg(port);
}

} // namespace

Q_DECLARE_METATYPE(Transport)

class TestConnections : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstLine_data()
    {
        QTest::addColumn<Transport>("transport");
        QTest::addColumn<bool>("paused");
        QTest::addColumn<bool>("detecting");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("peer"); // empty: there is no such field
        row("IPv4 greeting", Tcp4, false, false, "VER]![Halvex", "2130706433");
        row("IPv6 greeting", Tcp6, false, false, "VER]![Halvex", "0");
        row("local greeting", Local, false, false, "VER]![Halvex", "Local");
        row("detecting", Tcp4, false, true, "DETECTING", "");
        row("local detecting", Local, false, true, "DETECTING", "");
        row("paused comes first", Tcp4, true, true, "PAUSED", "");
        row("local paused", Local, true, false, "PAUSED", "");
    }

    void firstLine()
    {
        QFETCH(Transport, transport);
        QFETCH(bool, paused);
        QFETCH(bool, detecting);
        QFETCH(QString, start);
        Servers servers;
        servers.target.paused = paused;
        servers.target.detecting = detecting;
        Client client(servers, transport);
        const QString line = client.receive();
        QVERIFY2(line.startsWith(start), qPrintable(line));
        QTEST(line.section(QLatin1String("]!["), 20, 20).section(QLatin1Char('.'), 0, 0), "peer");
    }

    void auth_data() { transports(); }

    void auth()
    {
        QFETCH(Transport, transport);
        QFETCH(QString, peer);
        Servers servers;
        servers.target.detecting = true; // the gate of the other commands does not count here
        Client client(servers, transport);
        client.receive();
        const qint64 before = QDateTime::currentSecsSinceEpoch();
        const QString reply = client.ask("AUTH");
        const QString start = QStringLiteral("AUTH,111,%1.").arg(peer);
        QVERIFY2(reply.startsWith(start), qPrintable(reply));
        const qint64 time = reply.mid(start.size()).toLongLong();
        QVERIFY(time >= before && time <= QDateTime::currentSecsSinceEpoch());
    }

    void disconnects_data() { transports(); }

    void disconnects()
    {
        QFETCH(Transport, transport);
        Servers servers;
        Client client(servers, transport);
        client.receive();
        QCOMPARE(client.ask("DIS"), QStringLiteral("DISCONNECTED"));
        QVERIFY(client.waitForClose());

        Client pausedClient(servers, transport);
        pausedClient.receive();
        servers.target.paused = true;
        QCOMPARE(pausedClient.ask("DIS"), QStringLiteral("PAUSED"));
        QVERIFY(pausedClient.waitForClose());
    }

    void smtpTest_data() { transports(); }

    void smtpTest()
    {
        QFETCH(Transport, transport);
        Servers servers;
        servers.target.paused = true;
        Client client(servers, transport);
        client.receive();
        const QString unknown = QStringLiteral("UNKNOWN COMMAND - Command list:");
        QCOMPARE(client.ask("SMTPTEST"), unknown);
        servers.target.takesTestMail = false;
        QCOMPARE(client.ask("SMTPTEST]![25~;0"), unknown);
        QCOMPARE(servers.target.calls, QStringList(QStringLiteral("startSmtpTest 25~;0")));

        servers.target.takesTestMail = true;
        client.send("SMTPTEST]![25~;0~;x");
        QTRY_COMPARE(servers.target.calls.size(), 2);
        servers.target.testMailFinished(QStringLiteral("SMTP error: no."));
        QCOMPARE(client.receive(), QStringLiteral("SMTPTEST_OK]![SMTP error: no."));
    }

    void smtpTestOutlivesItsConsole_data() { transports(); }

    void smtpTestOutlivesItsConsole()
    {
        QFETCH(Transport, transport);
        Servers servers;
        {
            Client client(servers, transport);
            client.receive();
            client.send("SMTPTEST]![25");
            QTRY_COMPARE(servers.target.calls.size(), 1);
        }
        QTRY_COMPARE(connectionCount(servers), 0);
        Client other(servers, transport);
        other.receive();
        servers.target.testMailFinished(QStringLiteral("transcript"));
        QCOMPARE(other.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
    }

    void longLineCloses_data() { transports(); }

    void longLineCloses()
    {
        QFETCH(Transport, transport);
        ConnectionLimits limits;
        limits.lineBytes = 1000;
        Servers servers(limits);
        Client client(servers, transport);
        client.receive();
        client.write(QByteArray(1000, '0') + '0');
        QVERIFY(client.waitForClose());
    }

    void tcpTakesOneLineAtATime()
    {
        Servers servers;
        Client client(servers);
        client.receive();
        client.write(Client::line(QStringLiteral("DEVCOUNT")) + Client::line(QStringLiteral("USERCOUNT")));
        QCOMPARE(client.receive(), QStringLiteral("DEVCOUNT,0"));
        Client other(servers);
        other.receive();
        QCOMPARE(other.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        QVERIFY(!client.hasUnread());
        QCOMPARE(client.ask("DIS"), QStringLiteral("USERCOUNT,0"));
        QVERIFY(client.isConnected());
    }

    void tcpJoinsAPartialLine()
    {
        Servers servers;
        Client client(servers);
        client.receive();
        const QByteArray line = Client::line(QStringLiteral("DEVCOUNT")).toUpper();
        client.write(line.left(15));
        Client other(servers);
        other.receive();
        client.write(line.mid(15));
        QCOMPARE(client.receive(), QStringLiteral("DEVCOUNT,0"));
    }

    void tcpTakesAMegabyte()
    {
        Servers servers;
        Client client(servers);
        client.receive();
        client.write(QByteArray(1024 * 1024 - 1, '0') + '\n');
        QCOMPARE(client.receive(), QStringLiteral("ERR"));
        client.write(QByteArray(1024 * 1024 + 1, '0'));
        QVERIFY(client.waitForClose());
    }

    void localTakesWhatArrivedAsOneLine()
    {
        Servers servers;
        Client client(servers, Local);
        client.receive();
        client.write(Client::line(QStringLiteral("DEVCOUNT")) + Client::line(QStringLiteral("DEVCOUNT")));
        QCOMPARE(client.receive(), QStringLiteral("ERR"));
        client.write(Client::line(QStringLiteral("DEVCOUNT")).left(15));
        QCOMPARE(client.receive(), QStringLiteral("ERR"));
        client.write(scramble(QStringLiteral("DEVCOUNT"), 0)); // needs no line end
        QCOMPARE(client.receive(), QStringLiteral("DEVCOUNT,0"));
    }

    void newLocalConsoleTakesOver()
    {
        Servers servers;
        auto first = std::make_unique<Client>(servers, Local);
        first->receive();
        Client second(servers, Local);
        second.receive();
        first->send("RESET");
        QCOMPARE(second.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        first.reset();
        QTRY_COMPARE(servers.local.findChildren<QLocalSocket *>().size(), 1);
        QCOMPARE(second.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        QCOMPARE(servers.target.calls, QStringList());
    }

    void abandonedSocketFileIsReplaced()
    {
        Servers servers;
        const QString name = servers.directory.filePath(QStringLiteral("abandoned"));
        {
            QLocalServer killed;
            const QString earlierName = servers.directory.filePath(QStringLiteral("killed"));
            QVERIFY(killed.listen(earlierName));
            if (!QFile::rename(earlierName, name)) // closing removes the file only under its own name
                QSKIP("local sockets are no files here");
        }
        QVERIFY(QFileInfo::exists(name));
        localDaemon daemon(servers.tcp.consoles());
        QVERIFY(daemon.listen(name));
    }

    void servedSocketFileIsLeftAlone()
    {
        Servers servers;
        if (!QFileInfo::exists(servers.localName))
            QSKIP("local sockets are no files here, and several may have one name");
        localDaemon second(servers.tcp.consoles());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot listen under .*")));
        QVERIFY(!second.listen(servers.localName));
        Client client(servers, Local);
        QVERIFY(client.receive().startsWith(QLatin1String("VER")));
    }

    /// Qt closes the listener like this when the process runs out of descriptors.
    void closedLocalListenerComesBack()
    {
        Servers servers;
        servers.local.close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Listening again under .*")));
        QTRY_VERIFY(servers.local.isListening());
        Client client(servers, Local);
        QVERIFY(client.receive().startsWith(QLatin1String("VER")));
    }

    void changedPortWaitsForADisconnect()
    {
        Servers servers;
        const quint16 oldPort = servers.tcp.serverPort();
        const quint16 newPort = freePort();
        {
            Client client(servers);
            client.receive();
            client.send(setPort(newPort));
            QCOMPARE(client.receive(), QStringLiteral("SET_OK"));
            QCOMPARE(servers.tcp.serverPort(), oldPort);
        }
        QTRY_COMPARE(servers.tcp.serverPort(), newPort);
        Client client(servers);
        QVERIFY(client.receive().startsWith(QLatin1String("VER")));
    }

    void newConnectionTakesTheChangeBack()
    {
        Servers servers;
        const quint16 oldPort = servers.tcp.serverPort();
        auto client = std::make_unique<Client>(servers);
        client->receive();
        client->send(setPort(freePort()));
        client->receive();
        Client other(servers);
        other.receive();
        client.reset();
        QTRY_COMPARE(tcpConnections(servers), 1);
        QCOMPARE(servers.tcp.serverPort(), oldPort);
    }

    void connectionsAreCapped()
    {
        ConnectionLimits limits;
        limits.connections = 2;
        Servers servers(limits);
        auto tcp = std::make_unique<Client>(servers);
        tcp->receive();
        Client local(servers, Local);
        local.receive();
        for (const Transport transport : {Tcp4, Local}) {
            Client refused(servers, transport);
            QVERIFY(refused.waitForClose());
            QVERIFY(!refused.hasUnread());
        }
        QCOMPARE(local.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        tcp.reset();
        QTRY_COMPARE(tcpConnections(servers), 0);
        Client admitted(servers);
        QVERIFY(admitted.receive().startsWith(QLatin1String("VER")));
    }

    void unreadRepliesHoldOneConnectionOnly_data() { transports(); }

    void unreadRepliesHoldOneConnectionOnly()
    {
        QFETCH(Transport, transport);
        ConnectionLimits limits;
        limits.unreadBytes = 100000;
        Servers servers(limits);
        Client silent(servers, transport);
        Client other(servers);
        silent.receive();
        other.receive();
        servers.target.settingsRecord.versionText =
            QString(3000000, QLatin1Char('v')); // more than systems take
        silent.setReading(false);
        keepSendBuffersSmall(servers);
        silent.send("VER");
        QTRY_VERIFY(unsentBytes(servers) > limits.unreadBytes);
        silent.send("RESET");
        for (int i = 0; i < 3; ++i)
            QCOMPARE(other.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        QCOMPARE(servers.target.calls, QStringList());

        silent.setReading(true);
        QVERIFY(silent.receive().startsWith(QLatin1String("VER]![vvv")));
        QCOMPARE(silent.receive(), QStringLiteral("RESET_OK"));
    }

    void longAnswerKeepsItsPlace_data() { transports(); }

    void longAnswerKeepsItsPlace()
    {
        QFETCH(Transport, transport);
        Servers servers;
        Client client(servers, transport);
        Client other(servers);
        client.receive();
        other.receive();
        servers.target.historyGate.acquire();
        client.send("GSTATD]![a]![b");
        QTRY_COMPARE(servers.target.historiesAsked, 1);
        client.send("RESET");
        for (int i = 0; i < 3; ++i)
            QCOMPARE(other.ask("DEVCOUNT"), QStringLiteral("DEVCOUNT,0"));
        QCOMPARE(servers.target.calls, QStringList());

        servers.target.historyGate.release();
        QCOMPARE(client.receive(), QStringLiteral("STATD]![<a><b>"));
        QCOMPARE(client.receive(), QStringLiteral("RESET_OK"));
    }

    void longAnswerOutlivesItsConsole_data() { transports(); }

    void longAnswerOutlivesItsConsole()
    {
        QFETCH(Transport, transport);
        Servers servers;
        servers.target.historyGate.acquire();
        {
            Client client(servers, transport);
            client.receive();
            client.send("GSTATR");
            QTRY_COMPARE(servers.target.historiesAsked, 1);
        }
        QTRY_COMPARE(connectionCount(servers), 0);
        servers.target.historyGate.release();
        Client other(servers, transport);
        other.receive();
        QCOMPARE(other.ask("GSTATD"), QStringLiteral("STATD]![<><>"));
    }

private:
    static void transports()
    {
        QTest::addColumn<Transport>("transport");
        QTest::addColumn<QString>("peer");
        row("IPv4", Tcp4, "2130706433");
        row("IPv6", Tcp6, "0");
        row("local", Local, "Local");
    }
};

QTEST_GUILESS_MAIN(TestConnections)
#include "tst_connections.moc"
