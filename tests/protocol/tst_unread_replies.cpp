// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/console_connections.h"

namespace {

/// Records of the temperature log: their line exceeds the system's buffers, once these are made small.
constexpr int kManyRecords = 150000;

void limitSendBuffers(const Servers &servers)
{
    for (QTcpSocket *socket : servers.tcp.findChildren<QTcpSocket *>())
        socket->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 1 << 16);
}

} // namespace

/// The memory that consoles hold that do not read their replies or do not complete their lines.
class TestUnreadReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unreadRepliesHoldLittle_data() { transports(); }

    /// A console that does not read holds one chunk of memory, and delays only itself.
    void unreadRepliesHoldLittle()
    {
        QFETCH(Transport, transport);
        Servers servers;
        servers.target.setTemperatures(QByteArray(";,0+!!!a").repeated(kManyRecords));
        Client silent(servers, transport);
        const QIODevice &silentConnection = *connections(servers).first();
        Client other(servers);
        silent.setReading(false);
        limitSendBuffers(servers);
        silent.send("GSTATD]![]![991231000000");
        QTRY_VERIFY(silentConnection.bytesToWrite() > 0);
        silent.send("RESET");
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(other.ask("DEVCOUNT"), "DEVCOUNT,0");
            QVERIFY(silentConnection.bytesToWrite() <= ReplyLine::kMaxChunkBytes);
        }
        QCOMPARE(servers.target.calls, QStringList());

        silent.setReading(true);
        QCOMPARE(silent.receive().size(), 8 + 8 * kManyRecords);
        QCOMPARE(silent.receive(), "RESET_OK");
    }

    /// Rows: with and without an earlier reply that is not read.
    void disconnectWithoutReading_data() { transports(); }

    void disconnectWithoutReading()
    {
        QFETCH(Transport, transport);
        ConnectionLimits limits;
        limits.disconnectTime = std::chrono::milliseconds(100);
        Servers servers(limits);
        servers.target.setTemperatures(QByteArray(";,0+!!!a").repeated(kManyRecords));
        Client silent(servers, transport);
        silent.setReading(false);
        limitSendBuffers(servers);
        silent.send("GSTATD]![]![991231000000");
        QTRY_VERIFY(connections(servers).first()->bytesToWrite() > 0);
        silent.send("DIS");
        QTRY_VERIFY(connections(servers).isEmpty());
    }

    void memoryLimit()
    {
        ConnectionLimits limits;
        limits.heldBytes = 400000;
        Servers servers(limits);
        Client small(servers);
        Client large(servers);
        Client last(servers);
        small.write(QByteArray(100000, '0'));
        QTRY_VERIFY(connections(servers).first()->bytesAvailable() == 100000);
        large.write(QByteArray(200000, '0'));
        QTRY_VERIFY(connections(servers).at(1)->bytesAvailable() == 200000);
        last.write(QByteArray(150000, '0'));
        QTRY_VERIFY(large.isClosed());
        small.write("\n");
        QCOMPARE(small.receive(), "ERR");
        last.write("\n");
        QCOMPARE(last.receive(), "ERR");
    }

    /// The size of a line is announced before it is complete.
    void replyThatCannotBeCompleted()
    {
        Servers servers;
        servers.target.setTemperatures(QByteArray(";,0+!!!a").repeated(kManyRecords));
        Client client(servers);
        client.setReading(false);
        limitSendBuffers(servers);
        client.send("GSTATD]![]![991231000000");
        QTRY_VERIFY(connections(servers).first()->bytesToWrite() > 0);
        servers.target.setTemperatures({});
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("cannot be completed"));
        client.setReading(true);
        QCOMPARE(client.receive(), "<nothing>");
        QVERIFY(client.isClosed());
    }
};

QTEST_GUILESS_MAIN(TestUnreadReplies)
#include "tst_unread_replies.moc"
