// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/scripted_peer.h"
#include "monitor/smtp_dialogue.h"
#include "monitor/smtp_sender.h"
#include "rows.h"

#include <QHostInfo>
#include <QtTest>

#include <memory>
#include <vector>

namespace {

using Lines = QList<QByteArray>;

SmtpMail mailTo(quint16 port, bool needAuth)
{
    SmtpMail mail;
    mail.needAuth = needAuth;
    mail.from = QStringLiteral("disks@example.org");
    mail.to = QStringLiteral("admin@example.org");
    mail.server = QStringLiteral("127.0.0.1");
    mail.port = port;
    mail.user = QString::fromUtf8("us\xc3\xa9r"); // one byte in Latin-1
    mail.password = QStringLiteral("secret");
    mail.message = QStringLiteral("Subject: Hello\r\ntext\r\n");
    return mail;
}

const QByteArray kEnvelope = "MAIL FROM: <disks@example.org>\r\n"
                             "RCPT TO: <admin@example.org>\r\n"
                             "DATA\r\n"
                             "Subject: Hello\r\ntext\r\n.\r\n"
                             "QUIT\r\n";
const QByteArray kLogin = "AUTH LOGIN\r\n"
                          "dXPpcg==\r\n"
                          "c2VjcmV0\r\n";

const Lines kPlainScript{"220 mail ready\r\n", "250 mail\r\n", "250 ok\r\n", "250 ok\r\n",
                         "354 go on\r\n",      "250 ok\r\n",   "221 bye\r\n"};

/// Feeds each reply in pieces of at most `size` bytes, the next one only when something was sent.
QByteArray talk(SmtpDialogue &dialogue, const Lines &replies, int size)
{
    QByteArray allSent;
    for (const QByteArray &reply : replies) {
        QByteArray sent;
        for (int i = 0; i < reply.size(); i += size)
            sent += dialogue.receive(reply.mid(i, size));
        allSent += sent;
        if (sent.isEmpty())
            break;
    }
    return allSent;
}

} // namespace

class TestSmtp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dialogue_data()
    {
        QTest::addColumn<bool>("needAuth");
        QTest::addColumn<Lines>("replies");
        QTest::addColumn<QByteArray>("sent"); // after EHLO
        QTest::addColumn<int>("outcome");     // 0 open, 1 sent, 2 failed
        row("plain", false, kPlainScript, kEnvelope, 1);
        row("several lines", false,
            Lines{"220-mail\r\n220 ready\r\n", "250-mail\r\n250-SIZE 1000\r\n250 HELP\r\n", "250 ok\r\n",
                  "250-a\r\n250 b\r\n", "354 go on\r\n", "250 ok\r\n", "221 bye\r\n"},
            kEnvelope, 1);
        row("bare codes", false,
            Lines{"220\r\n", "250\r\n", "250\r\n", "250\r\n", "354\r\n", "250\r\n", "221\r\n"}, kEnvelope, 1);
        row("login", true,
            Lines{"220 mail\r\n", "250-mail\r\n250 AUTH LOGIN\r\n", "334 VXNlcm5hbWU6\r\n",
                  "334 UGFzc3dvcmQ6\r\n", "235 welcome\r\n", "250 ok\r\n", "250 ok\r\n", "354 go on\r\n",
                  "250 ok\r\n", "221 bye\r\n"},
            kLogin + kEnvelope, 1);
        row("QUIT refused", false, kPlainScript.mid(0, 6) + Lines{"500 what?\r\n"}, kEnvelope, 1);
        row("QUIT not answered", false, kPlainScript.mid(0, 6), kEnvelope, 0);
        row("more to come", false, Lines{"220 mail\r\n", "250-mail\r\n"}, QByteArray(), 0);
        row("line not ended", false, Lines{"220 mail\r\n", "250 mail\r"}, QByteArray(), 0);
        row("login refused", true,
            Lines{"220 mail\r\n", "250 mail\r\n", "334 user\r\n", "334 password\r\n", "535 no\r\n"}, kLogin,
            2);
        row("2 where 3 is due", true, Lines{"220 mail\r\n", "250 mail\r\n", "250 ok\r\n"},
            QByteArray("AUTH LOGIN\r\n"), 2);
        row("3 where 2 is due", false, Lines{"220 mail\r\n", "354 go on\r\n"}, QByteArray(), 2);
        row("last line decides", false, Lines{"220 mail\r\n", "250-mail\r\n550 no\r\n"}, QByteArray(), 2);
        row("no code", false, Lines{"220 mail\r\n", "hello\r\n"}, QByteArray(), 2);
        row("empty line", false, Lines{"220 mail\r\n", "\r\n"}, QByteArray(), 2);
    }

    /// However the replies are cut into segments, the dialogue is the same.
    void dialogue()
    {
        QFETCH(bool, needAuth);
        QFETCH(Lines, replies);
        QFETCH(QByteArray, sent);
        for (int size = 1; size <= 40; ++size) {
            SmtpDialogue dialogue(mailTo(25, needAuth), QStringLiteral("tower"));
            QCOMPARE(talk(dialogue, replies, size), "EHLO tower\r\n" + sent);
            QTEST(int(dialogue.outcome()), "outcome");
        }
    }

    void repliesSentAhead()
    {
        SmtpDialogue dialogue(mailTo(25, false), QStringLiteral("tower"));
        QCOMPARE(dialogue.receive(kPlainScript.join()), "EHLO tower\r\n" + kEnvelope);
        QCOMPARE(dialogue.outcome(), SmtpDialogue::Outcome::Sent);
    }

    void boundedReply_data()
    {
        QTest::addColumn<QByteArray>("flood");
        row("endless line", QByteArray(1000, 'x'));
        row("endless reply", QByteArray("220-more\r\n").repeated(100));
        row("empty lines in one", QByteArray(70000, '\n'));
    }

    void boundedReply()
    {
        QFETCH(QByteArray, flood);
        SmtpDialogue dialogue(mailTo(25, false), QStringLiteral("tower"));
        int received = 0;
        while (dialogue.outcome() == SmtpDialogue::Outcome::Open && received < 1000000) {
            QCOMPARE(dialogue.receive(flood), QByteArray());
            received += flood.size();
        }
        QCOMPARE(dialogue.outcome(), SmtpDialogue::Outcome::Failed);
        QVERIFY(dialogue.transcript().size() <= SmtpDialogue::kMaxReplySize);
    }

    void sendsTheMail_data()
    {
        QTest::addColumn<bool>("needAuth");
        QTest::addColumn<Lines>("script");
        QTest::addColumn<QByteArray>("commands");
        QTest::addColumn<QByteArray>("transcript");
        const QByteArray ehlo = "EHLO " + QHostInfo::localHostName().toUtf8() + "\r\n";
        row("plain, cut into segments", false,
            Lines{"220-mail\r|\n220| ready\r\n", "250-mail\r\n|250-SIZE 1000\r\n25|0 HELP\r\n", "250 ok\r\n",
                  "250 ok\r\n", "354 go on\r\n", "250 ok|\r\n", "221 bye\r\n"},
            ehlo + kEnvelope,
            "220-mail\n220 ready\n" + ehlo +
                "250-mail\n250-SIZE 1000\n250 HELP\n"
                "MAIL FROM: <disks@example.org>\r\n"
                "250 ok\n"
                "RCPT TO: <admin@example.org>\r\n"
                "250 ok\n"
                "DATA\r\n"
                "354 go on\n"
                "Subject: Hello\r\ntext\r\n.\r\n"
                "250 ok\n"
                "QUIT\r\n"
                "221 bye\n");
        row("login", true,
            Lines{"220 mail\r\n", "250 mail\r\n", "334 user\r\n", "334 password\r\n", "235 welcome\r\n",
                  "250 ok\r\n", "250 ok\r\n", "354 go on\r\n", "250 ok\r\n", "221 bye\r\n"},
            ehlo + kLogin + kEnvelope,
            "220 mail\n" + ehlo +
                "250 mail\nAUTH LOGIN\r\n334 user\ndXPpcg==\r\n334 password\nc2VjcmV0\r\n"
                "235 welcome\n"
                "MAIL FROM: <disks@example.org>\r\n250 ok\n"
                "RCPT TO: <admin@example.org>\r\n250 ok\n"
                "DATA\r\n354 go on\nSubject: Hello\r\ntext\r\n.\r\n250 ok\nQUIT\r\n221 bye\n");
    }

    void sendsTheMail()
    {
        QFETCH(bool, needAuth);
        QFETCH(Lines, script);
        ScriptedPeer peer(script);
        smtp_sender sender;
        QSignalSpy ok(&sender, &smtp_sender::smtpSenderOk);
        QSignalSpy error(&sender, &smtp_sender::smtpSenderError);
        sender.start(mailTo(peer.serverPort(), needAuth));
        QVERIFY(ok.wait());
        QVERIFY(!sender.isBusy());
        QTEST(ok.first().first().toString().toUtf8(), "transcript");
        QTEST(peer.received(), "commands");
        QTRY_VERIFY(!peer.isConnected());
        QCOMPARE(ok.count(), 1);
        QCOMPARE(error.count(), 0);
    }

    void failures_data()
    {
        QTest::addColumn<Lines>("script");
        QTest::addColumn<QString>("error"); // what it begins with
        const QString unexpected = QStringLiteral("SMTP error: Unexpected reply from SMTP server.\n");
        const QString closed = QStringLiteral("SMTP error: RemoteHostClosedError. Check Your SMTP Settings.");
        row("closed at once", Lines{""}, closed);
        row("closed in mid-dialogue", Lines{"220 mail\r\n", "250 mail\r\n", ""}, closed);
        row("closed instead of an answer to QUIT", kPlainScript.mid(0, 6) + Lines{""}, closed);
        row("refused", Lines{"554 go away\r\n"}, unexpected + QStringLiteral("554 go away\n"));
        row("some other server", Lines{"HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n"},
            unexpected + QStringLiteral("HTTP/1.1 400 Bad Request\nConnection: close\n\n"));
        row("garbage", Lines{QByteArray("\0\xff\xfe\r\n", 5)}, unexpected);
        row("a megabyte", Lines{QByteArray(1 << 20, '2')}, unexpected);
    }

    void failures()
    {
        QFETCH(Lines, script);
        QFETCH(QString, error);
        ScriptedPeer peer(script);
        smtp_sender sender;
        QSignalSpy errors(&sender, &smtp_sender::smtpSenderError);
        QSignalSpy ok(&sender, &smtp_sender::smtpSenderOk);
        sender.start(mailTo(peer.serverPort(), false));
        QVERIFY(errors.wait());
        QVERIFY(!sender.isBusy());
        QVERIFY2(errors.first().first().toString().startsWith(error),
                 qPrintable(errors.first().first().toString()));
        QVERIFY(errors.first().first().toString().size() < 2000);
        QTRY_VERIFY(!peer.isConnected());
        QCOMPARE(errors.count(), 1);
        QCOMPARE(ok.count(), 0);
    }

    void unusableServer_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("error");
        row("nobody listens", "127.0.0.1", "SMTP error: ConnectionRefusedError. Check Your SMTP Settings.");
        row("no server given", "", "SMTP error: HostNotFoundError. Check Your SMTP Settings.");
    }

    void unusableServer()
    {
        QTcpServer placeholder;
        QVERIFY(placeholder.listen(QHostAddress::LocalHost));
        QFETCH(QString, server);
        SmtpMail mail = mailTo(placeholder.serverPort(), false);
        mail.server = server;
        placeholder.close();
        smtp_sender sender;
        QSignalSpy errors(&sender, &smtp_sender::smtpSenderError);
        sender.start(mail);
        QCOMPARE(errors.count(), 0);
        QVERIFY(errors.wait());
        QTEST(errors.first().first().toString(), "error");
        QVERIFY(!sender.isBusy());
    }

    void startWhileBusy()
    {
        ScriptedPeer peer(kPlainScript);
        smtp_sender sender;
        QSignalSpy ok(&sender, &smtp_sender::smtpSenderOk);
        sender.start(mailTo(peer.serverPort(), false));
        SmtpMail other = mailTo(peer.serverPort(), true);
        other.message = QStringLiteral("other\r\n");
        sender.start(other);
        QVERIFY(ok.wait());
        QVERIFY(peer.received().endsWith(kEnvelope));
        QCOMPARE(peer.connectionCount(), 1);
    }

    /// A listener whose queue of connections is full does not answer any more.
    void connectTimeout()
    {
        QTcpServer full;
        QVERIFY(full.listen(QHostAddress::LocalHost));
        full.pauseAccepting();
        std::vector<std::unique_ptr<QTcpSocket>> crowd;
        for (int i = 0; i < 100; ++i) {
            crowd.push_back(std::make_unique<QTcpSocket>());
            crowd.back()->connectToHost(QHostAddress::LocalHost, full.serverPort());
        }
        smtp_sender sender;
        sender.setConnectTimeout(std::chrono::milliseconds(50));
        QSignalSpy errors(&sender, &smtp_sender::smtpSenderError);
        sender.start(mailTo(full.serverPort(), false));
        QVERIFY(errors.wait());
        QCOMPARE(errors.first().first().toString(), QStringLiteral("SMTP error: Time Out 30s."));
        QVERIFY(!sender.isBusy());
    }

    /// A silent server does not run into the connect timeout, and does not hold up the end of the sender.
    void destroyedWhileStalled()
    {
        ScriptedPeer peer({"220 mail\r\n", "250 mail\r\n"});
        auto sender = std::make_unique<smtp_sender>();
        sender->setConnectTimeout(std::chrono::milliseconds(50));
        QSignalSpy ok(sender.get(), &smtp_sender::smtpSenderOk);
        QSignalSpy errors(sender.get(), &smtp_sender::smtpSenderError);
        sender->start(mailTo(peer.serverPort(), false));
        QTRY_VERIFY(peer.received().contains("MAIL FROM"));
        QVERIFY(!errors.wait(200));
        QVERIFY(sender->isBusy());
        sender.reset();
        QTRY_VERIFY(!peer.isConnected());
        QCOMPARE(ok.count() + errors.count(), 0);
    }

    void sendsAgain()
    {
        ScriptedPeer peer(Lines{"554 busy\r\n"} + kPlainScript);
        smtp_sender sender;
        QSignalSpy ok(&sender, &smtp_sender::smtpSenderOk);
        // Started again from the signal itself, as a caller may who sees that the sender is free.
        const SmtpMail mail = mailTo(peer.serverPort(), false);
        connect(&sender, &smtp_sender::smtpSenderError, &sender, [&] { sender.start(mail); });
        sender.start(mail);
        QVERIFY(ok.wait());
        QVERIFY(ok.first().first().toString().startsWith(QStringLiteral("220 mail ready\n")));
        QCOMPARE(peer.connectionCount(), 2);
    }
};

QTEST_GUILESS_MAIN(TestSmtp)
#include "tst_smtp.moc"
