// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
#include "monitor/alert_text.h"
#include "monitor/program_transport.h"
#include "monitor/webhook_server.h"
#include "monitor/webhook_transport.h"
#include "rows.h"

#include <QTemporaryDir>

#include <limits>

#include <unistd.h>

using namespace std::chrono_literals;

namespace {

/// A limit for a busy machine; only a failing test takes as long.
constexpr int kLimitMs = 60000;

OutboxEntry entryOf(const QString &text)
{
    OutboxEntry entry;
    entry.text = text;
    entry.time = QDateTime(QDate(2026, 3, 1), QTime(0, 0), Qt::UTC);
    entry.document = {{"text", text}};
    return entry;
}

/// Waits for the result of sending one message: "ok" or the reason of the failure.
QString outcomeOf(Transport &transport, const OutboxEntry &entry)
{
    QString outcome;
    transport.send(
        entry, [&outcome](const Result<void> &result) { outcome = result ? "ok" : result.failure().text; });
    return QTest::qWaitFor([&outcome] { return !outcome.isEmpty(); }, kLimitMs) ? outcome : QString();
}

/// A transport that delivers only on request.
class HeldTransport : public Transport
{
public:
    QStringList sent;
    Done done;

    void send(const OutboxEntry &entry, Done finished) override
    {
        sent << entry.text;
        done = std::move(finished);
    }
};

/// A channel that is on and is sending its first message.
struct HeldChannel
{
    explicit HeldChannel(const QStringList &texts)
    {
        channel.setOn(true);
        for (const QString &text : texts)
            channel.add(entryOf(text));
        channel.resume();
    }

    QDateTime now = entryOf({}).time;
    HeldTransport *peer = new HeldTransport; // the channel's
    AlertChannel channel = {"webhook", std::unique_ptr<Transport>(peer), [this] { return now; }};
};

} // namespace

class TestAlertChannels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void webhookAnswers_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("outcome");
        row("status 200 → delivered", "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", "ok");
        row("status 204 → delivered", "HTTP/1.1 204 No Content\r\n\r\n", "ok");
        row("status 200 with an endless body → delivered",
            "HTTP/1.1 200 OK\r\nContent-Length: 999999999\r\n\r\nx", "ok");
        row("status 500 → failed", "HTTP/1.1 500 Broken\r\nContent-Length: 0\r\n\r\n",
            "the endpoint answered with status 500");
        row("redirect → failed", "HTTP/1.1 302 Found\r\nLocation: /secret\r\nContent-Length: 0\r\n\r\n",
            "the endpoint answered with status 302");
        row("closed without an answer → failed", "", "the endpoint closed the connection without an answer");
    }

    void webhookAnswers()
    {
        QFETCH(QString, answer);
        WebhookServer server;
        server.answer = answer.toLatin1();
        WebhookTransport webhook(server.url("secret?key=secret"));
        const QString text(100000, u'x'); // more than is sent at a time
        QTEST(outcomeOf(webhook, entryOf(text)), "outcome");
        QCOMPARE(server.requests.size(), 1);
        const QByteArray request = server.requests.first();
        QVERIFY2(request.startsWith("POST /secret?key=secret HTTP/1.1\r\n"), request);
        QVERIFY2(request.contains("Content-Type: application/json\r\n"), request);
        QVERIFY2(request.endsWith("\r\n\r\n{\"text\":\"" + text.toLatin1() + "\"}"), request);
    }

    void webhookFailures()
    {
        WebhookServer server;
        server.answer.clear();
        server.closes = false;
        WebhookTransport silent(server.url("secret?key=secret"), 1s);
        QCOMPARE(outcomeOf(silent, entryOf({})), "no answer within 1 s");
        const QUrl url = server.url("secret?key=secret");
        server.close();
        WebhookTransport refused(url);
        QCOMPARE(outcomeOf(refused, entryOf({})), "connection refused");
    }

    void programs_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("outcome");
        row("gets event, level and document",
            "[ \"$HALVEX_EVENT $HALVEX_LEVEL\" = 'alert warning' ] && grep -q '^{\"text\":\"hot\"}$'", "ok");
        row("has no arguments, which other users could list", "[ $# = 0 ]", "ok");
        row("does not read its input → delivered", "exit 0", "ok");
        row("exits with 7 → failed", "exit 7", "the program ended with status 7");
        row("ends by a signal", "kill -TERM $$", "the program was ended by a signal");
        row("fills its output", "head -c 10000000 /dev/zero; head -c 10000000 /dev/zero >&2", "ok");
        row("inherits no descriptor", "[ ! -e /proc/$$/fd/77 ]", "ok");
        row("leads its process group", "[ \"$(cut -d' ' -f5 /proc/$$/stat)\" = $$ ]", "ok");
    }

    void programs()
    {
        QFETCH(QString, script);
        QCOMPARE(::dup2(0, 77), 77);
        const auto closing = qScopeGuard([] { ::close(77); });
        ProgramTransport program(makeProgram(script));
        OutboxEntry entry = entryOf("hot");
        entry.level = Severity::Warning;
        QTEST(outcomeOf(program, entry), "outcome");
        QTRY_VERIFY(program.findChildren<QProcess *>().isEmpty());
    }

    void programThatCannotBeStarted()
    {
        ProgramTransport program(m_folder.filePath("none"));
        QCOMPARE(outcomeOf(program, entryOf({})), "the program cannot be started");
    }

    void programThatHangsIsKilledWithItsChildren_data()
    {
        QTest::addColumn<bool>("isDestroyed"); // the transport, long before the program's time limit
        row("at its time limit", false);
        row("with its transport", true);
    }

    /// The child holds the pipe open until it is killed with its parent.
    void programThatHangsIsKilledWithItsChildren()
    {
        QFETCH(bool, isDestroyed);
        const QString fifo = m_folder.filePath("fifo");
        QCOMPARE(QProcess::execute("mkfifo", {fifo}), 0);
        QProcess reader;
        reader.start("cat", {fifo});
        const QString script = QString("exec 5>'%1'; echo begun >&5; sleep 1000 & wait").arg(fifo);
        auto program = std::make_unique<ProgramTransport>(makeProgram(script), isDestroyed ? 1h : 1s);
        if (isDestroyed) {
            program->send(entryOf({}), {});
            QTRY_VERIFY_WITH_TIMEOUT(reader.bytesAvailable() > 0, kLimitMs);
            program.reset();
        } else {
            QCOMPARE(outcomeOf(*program, entryOf({})), "the program did not end within 1 s");
        }
        QVERIFY(reader.waitForFinished(kLimitMs));
        QVERIFY(QFile::remove(fifo));
    }

    void channelRepeatsInOrder()
    {
        HeldChannel held({"1", "2"});
        auto &[now, peer, channel] = held;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("webhook has failed since .*: down"));
        for (const int minutes : {1, 5, 15, 15}) {
            peer->done(Error{"down"});
            now = now.addSecs(minutes * 60 - 1);
            const int before = peer->sent.size();
            channel.resume();
            QCOMPARE(peer->sent.size(), before);
            now = now.addSecs(1);
            channel.resume();
            QCOMPARE(peer->sent.size(), before + 1);
        }
        QCOMPARE(channel.outcome().reason, "down");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("webhook works again"));
        peer->done({});
        QCOMPARE(peer->sent.join(u' '), "1 1 1 1 1 2");
        peer->done({});
        QCOMPARE(channel.pending(), 0);
        QCOMPARE(channel.outcome().lastSuccess, now);
    }

    void channelDropsAfterADay()
    {
        HeldChannel held({"1"});
        auto &[now, peer, channel] = held;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("has failed"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("drops 1 messages"));
        now = now.addDays(1);
        peer->done(Error{"down"});
        QCOMPARE(channel.pending(), 0);
    }

    /// The test is sent although an entry waits for its next attempt.
    void testBesideTheOutbox()
    {
        HeldChannel held({"1"});
        auto &[now, peer, channel] = held;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("has failed"));
        peer->done(Error{"down"});
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("works again"));
        bool isDone = false;
        channel.test(entryOf("test"), [&isDone](const Result<void> &result) { isDone = bool(result); });
        peer->done({});
        QVERIFY(isDone);
        QCOMPARE(peer->sent.join(u' '), "1 test");
        QCOMPARE(channel.pending(), 1);
    }

    void outboxKeepsTheNewestHundred()
    {
        Outbox outbox;
        for (int i = 1; i <= Outbox::kMaxEntries; ++i)
            QVERIFY(!outbox.add(entryOf(QString::number(i))));
        const quint64 inProgress = outbox.first().id;
        QVERIFY(outbox.add(entryOf("101")));
        outbox.delivered(inProgress); // dropped meanwhile
        const Outbox restored = Outbox::fromJson(outbox.toJson());
        QCOMPARE(restored.size(), Outbox::kMaxEntries);
        QCOMPARE(restored.first().text, "2");
        QCOMPARE(restored.first().document, entryOf("2").document);
    }

    /// The clock was set back after the message was queued; the file holds the highest count of failures.
    void outboxWithTimesInTheFuture()
    {
        const QDateTime now = entryOf({}).time;
        Outbox outbox;
        outbox.add(entryOf("1"));
        QJsonObject json = outbox.toJson();
        json.insert("failures", std::numeric_limits<int>::max());
        outbox = Outbox::fromJson(json);
        outbox.failed(outbox.first().id, now);
        QCOMPARE(outbox.waitingTime(now), std::chrono::milliseconds(15min));
        QCOMPARE(outbox.dropExpired(now.addYears(-1)), 0);
        QCOMPARE(outbox.dropExpired(now.addYears(-1).addDays(1)), 1);
    }

private:
    QString makeProgram(const QString &script)
    {
        const QString path = m_folder.filePath("program");
        writeFile(path, "#!/bin/sh\n" + script.toUtf8() + '\n');
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestAlertChannels)
#include "tst_alert_channels.moc"
