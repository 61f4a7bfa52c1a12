// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/scripted_peer.h"
#include "monitor/smtp_dialogue.h"
#include "monitor/smtp_sender.h"
#include "rows.h"

#include <QHostInfo>

#include <array>
#include <memory>

namespace {

using Lines = QList<QByteArray>;

SmtpMail mailTo(quint16 port, bool needAuth)
{
    SmtpMail mail;
    mail.needAuth = needAuth;
    mail.from = "disks@example.org";
    mail.to = "admin@example.org";
    mail.server = "127.0.0.1";
    mail.port = port;
    mail.user = QString::fromUtf8("us\xc3\xa9r"); // one byte in Latin-1
    mail.password = "secret";
    mail.message = "Subject: Hello\r\ntext\r\n";
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

/// Returns the replies in `text`, separated by "|".
Lines replies(const char *text)
{
    Lines lines = QByteArray(text).split('|');
    for (QByteArray &line : lines)
        line += "\r\n";
    return lines;
}

struct Sender : smtp_sender
{
    QSignalSpy ok{this, &smtp_sender::smtpSenderOk};
    QSignalSpy errors{this, &smtp_sender::smtpSenderError};

    [[nodiscard]] QString errorText() const { return smtpTestText(errors.first().first().value<MailRun>()); }
    [[nodiscard]] QString transcript() const { return ok.first().first().value<MailRun>().transcript; }
};

const Lines kPlainScript = replies("220 mail ready|250 mail|250 ok|250 ok|354 go on|250 ok|221 bye");

} // namespace

Q_DECLARE_METATYPE(MailRun)

class TestSmtp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<MailRun>(); }

    void dialogue_data()
    {
        QTest::addColumn<bool>("needAuth");
        QTest::addColumn<Lines>("replies");
        QTest::addColumn<QByteArray>("sent"); // after EHLO
        QTest::addColumn<int>("outcome");     // 0 open, 1 sent, 2 failed
        const QByteArray nothing;
        row("no login", false, kPlainScript, kEnvelope, 1);
        row("bare codes", false, replies("220|250|250|250|354|250|221"), kEnvelope, 1);
        row("sent ahead", false, Lines{kPlainScript.join()}, kEnvelope, 1);
        row("login", true,
            replies(
                "220 mail|250-mail\r\n250 AUTH LOGIN|334 VXNlcm5hbWU6|334 UGFzc3dvcmQ6|235 welcome|250 ok|"
                "250 ok|354 go on|250 ok|221 bye"),
            kLogin + kEnvelope, 1);
        row("QUIT refused", false, kPlainScript.mid(0, 6) + replies("500 what?"), kEnvelope, 1);
        row("login refused", true, replies("220 mail|250 mail|334 user|334 password|535 no"), kLogin, 2);
        row("3 where 2 is due", false, replies("220 mail|354 go on"), nothing, 2);
        row("last line decides", false, replies("220 mail|250-mail\r\n550 no"), nothing, 2);
    }

    /// The dialogue does not depend on how the replies are cut into segments.
    void dialogue()
    {
        QFETCH(bool, needAuth);
        QFETCH(Lines, replies);
        QFETCH(QByteArray, sent);
        for (int size = 1; size <= 40; ++size) {
            SmtpDialogue dialogue(mailTo(25, needAuth), "tower");
            QByteArray allSent;
            for (const QByteArray &reply : replies) {
                for (int i = 0; i < reply.size(); i += size)
                    allSent += dialogue.receive(reply.mid(i, size));
            }
            QCOMPARE(allSent, "EHLO tower\r\n" + sent);
            QTEST(int(dialogue.outcome()), "outcome");
        }
    }

    void envelopeAddressEndsAtItsFirstLineEnd_data()
    {
        QTest::addColumn<QString>("to");
        row("CR LF", "c@d\r\nRCPT TO: <evil@e");
        row("carriage return in the address", "c@d\rRCPT TO: <evil@e");
        row("line feed in the address", "c@d\nRCPT TO: <evil@e");
    }

    void envelopeAddressEndsAtItsFirstLineEnd()
    {
        QFETCH(QString, to);
        SmtpMail mail = mailTo(25, false);
        mail.to = to;
        SmtpDialogue dialogue(mail, "tower");
        const QByteArray sent = dialogue.receive("220 \r\n250 \r\n250 \r\n");
        QCOMPARE(sent.mid(sent.indexOf("RCPT")), QByteArray("RCPT TO: <c@d>\r\n"));
    }

    /// If a server repeats the credentials, in pieces or encoded, logs do not show them.
    void lastReplyWithoutCredentials()
    {
        SmtpDialogue dialogue(mailTo(25, true), "tower");
        const QByteArray login = "220 \r\n250 \r\n334 \r\n334 \r\n";
        (void)dialogue.receive(login + "535 \x1b[31mSecret c2VjcmV0 se\x07"
                                       "cret dXPpcg us\xe9r us\xc3\xa9r\r\n");
        QCOMPARE(dialogue.outcome(), SmtpDialogue::Outcome::Failed);
        QCOMPARE(dialogue.lastReply(), "535 [31m*** *** *** *** *** ***");
    }

    void sendsTheMail()
    {
        const QByteArray ehlo = "EHLO " + QHostInfo::localHostName().toUtf8() + "\r\n";
        ScriptedPeer peer(kPlainScript);
        Sender sender;
        sender.start(mailTo(peer.serverPort(), false));
        sender.start(mailTo(peer.serverPort(), true)); // ignored: the sender is busy
        QVERIFY(sender.ok.wait());
        QVERIFY(!sender.isBusy());
        const QByteArray transcript =
            "220 mail ready\n" + ehlo +
            "250 mail\nMAIL FROM: <disks@example.org>\r\n250 ok\nRCPT TO: <admin@example.org>\r\n250 ok\n"
            "DATA\r\n354 go on\nSubject: Hello\r\ntext\r\n.\r\n250 ok\nQUIT\r\n221 bye\n";
        QCOMPARE(sender.transcript().toUtf8(), transcript);
        QCOMPARE(peer.received(), ehlo + kEnvelope);
        QTRY_VERIFY(!peer.isConnected());
        QCOMPARE(peer.connectionCount(), 1);
        QCOMPARE(sender.ok.count() + sender.errors.count(), 1);
    }

    void failures_data()
    {
        QTest::addColumn<Lines>("script");
        QTest::addColumn<QString>("error"); // the beginning of the error
        const QString unexpected = "SMTP error: Unexpected reply from SMTP server.\n";
        const QString closed = "SMTP error: RemoteHostClosedError. Check Your SMTP Settings.";
        row("closed instead of an answer to QUIT", kPlainScript.mid(0, 6) + Lines{""}, closed);
        row("nobody listens", Lines{}, "SMTP error: ConnectionRefusedError. Check Your SMTP Settings.");
        row("HTTP server", Lines{"HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n"},
            unexpected + "HTTP/1.1 400 Bad Request\nConnection: close\n\n");
        row("endless line", Lines{QByteArray(1 << 20, '2')}, unexpected);
        row("endless reply", Lines{QByteArray("220-more\r\n").repeated(1 << 17)}, unexpected);
        row("empty lines", Lines{QByteArray(1 << 20, '\n')}, unexpected);
    }

    void failures()
    {
        QFETCH(Lines, script);
        QFETCH(QString, error);
        ScriptedPeer peer(script);
        const SmtpMail mail = mailTo(peer.serverPort(), false);
        if (script.isEmpty())
            peer.close();
        Sender sender;
        sender.start(mail);
        QCOMPARE(sender.errors.count(), 0); // an immediate failure is signalled in a later turn
        QVERIFY(sender.errors.wait());
        QVERIFY(!sender.isBusy());
        const QString text = sender.errorText();
        QVERIFY2(text.startsWith(error), qPrintable(text));
        QVERIFY(text.size() <= error.size() + SmtpDialogue::kMaxReplySize);
        QTRY_VERIFY(!peer.isConnected());
        QCOMPARE(sender.errors.count() + sender.ok.count(), 1);
    }

    /// A listener whose queue of connections is full does not answer.
    void connectTimeout()
    {
        QTcpServer full;
        QVERIFY(full.listen(QHostAddress::LocalHost));
        full.pauseAccepting();
        std::array<QTcpSocket, 100> crowd;
        for (QTcpSocket &socket : crowd)
            socket.connectToHost(QHostAddress::LocalHost, full.serverPort());
        Sender sender;
        sender.setTimeouts({std::chrono::milliseconds(1050), {}});
        sender.start(mailTo(full.serverPort(), false));
        QVERIFY(sender.errors.wait());
        QCOMPARE(sender.errorText(), "SMTP error: Time Out 1s.");
        QVERIFY(!sender.isBusy());
    }

    void replyTimeout()
    {
        ScriptedPeer peer({"220 mail\r\n", "250 mail\r\n"});
        Sender sender;
        sender.setTimeouts({std::chrono::seconds(30), std::chrono::milliseconds(1050)});
        sender.start(mailTo(peer.serverPort(), false));
        QVERIFY(sender.errors.wait());
        QCOMPARE(sender.errorText(), "SMTP error: Time Out 1s.");
        QVERIFY(peer.received().endsWith("MAIL FROM: <disks@example.org>\r\n"));
        QTRY_VERIFY(!peer.isConnected());
    }

    /// A silent server is not limited by the connect timeout, and does not delay the sender's destruction.
    void destroyedWhileStalled()
    {
        ScriptedPeer peer({"220 mail\r\n", "250 mail\r\n"});
        auto sender = std::make_unique<Sender>();
        sender->setTimeouts({std::chrono::milliseconds(50), {}});
        sender->start(mailTo(peer.serverPort(), false));
        QTRY_VERIFY(peer.received().contains("MAIL FROM"));
        QVERIFY(!sender->errors.wait(200));
        QVERIFY(sender->isBusy());
        QVERIFY(sender->activity().startsWith("waiting for a reply of 127.0.0.1 port "));
        sender.reset();
        QTRY_VERIFY(!peer.isConnected());
    }

    /// The sender is free when the signal is emitted. If one address of a name fails, the next one is tried.
    void sendsAgain()
    {
        ScriptedPeer peer(Lines{"554 busy\r\n"} + kPlainScript);
        Sender sender;
        SmtpMail mail = mailTo(peer.serverPort(), false);
        mail.server = "localhost"; // ::1 as well, where nobody listens
        connect(&sender, &smtp_sender::smtpSenderError, &sender, [&] { sender.start(mail); });
        sender.start(mail);
        QVERIFY(sender.ok.wait());
        QVERIFY(sender.transcript().startsWith("220 mail ready\n"));
        QCOMPARE(peer.connectionCount(), 2);
    }
};

QTEST_GUILESS_MAIN(TestSmtp)
#include "tst_smtp.moc"
