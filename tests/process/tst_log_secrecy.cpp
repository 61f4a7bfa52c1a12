// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/scripted_peer.h"
#include "process/service_fixture.h"

#include <QRegularExpression>
#include <QTest>

namespace {

/// A mail server that requests user and password, then refuses them and repeats them with an escape sequence.
class EchoingMailServer : public ScriptedPeer
{
public:
    EchoingMailServer(const QByteArray &user, const QByteArray &password)
        : ScriptedPeer({"220 \x1b[31mmail\x9b\r\n", "250 mail\r\n", "334 user\r\n", "334 password\r\n",
                        "535 \x1b[31m" + user + ' ' + password + ' ' + user.toBase64() + ' ' +
                            password.toBase64() + "\r\n"})
    {}

    /// Returns whether a client has been refused and has disconnected.
    [[nodiscard]] bool isDone() const { return received().count("\r\n") == 4 && !isConnected(); }
};

} // namespace

/// No log, at any level, contains a credential or a control byte from a peer.
class TestLogSecrecy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingIsLogged()
    {
        ServiceFixture service;
        service.setVariable("QT_LOGGING_RULES", "*=true");
        service.setKeyValue("LogFile", service.path("category.log"));
        service.writeMachine(json(R"({"drives": [{"number": 0, "dump": "drives/st500nm0011.json"}]})"));
        QVERIFY2(service.serve(), service.output());
        const QString esc = "\x1b[31m\x07";

        EchoingMailServer alerts("alert-user", "alert-s3cret");
        const QString set = "SET]![0~;180000~;300000~;1~;1~;1~;a@b" + esc + "~;c@d~;Hello" + esc +
                            "~;127.0.0.1~;1~;alert-user~;alert-s3cret~;%1~;1~;65~;w" + esc + "~;c";
        QCOMPARE(service.ask(set.arg(alerts.serverPort())), "SET_OK"); // sends an alert
        QTRY_VERIFY_WITH_TIMEOUT(alerts.isDone(), kPatienceMs);

        EchoingMailServer tests("test-user", "test-s3cret");
        RawConsole console(service.port());
        console.readLine();
        console.send(QString("SMTPTEST]![%1~;1~;a@b~;c@d~;127.0.0.1~;s~;test-user~;test-s3cret~;text" + esc)
                         .arg(tests.serverPort()));
        QTRY_VERIFY_WITH_TIMEOUT(tests.isDone(), kPatienceMs);
        QVERIFY(console.readLine().contains("dGVzdC1zM2NyZXQ=")); // the transcript shows what was sent

        for (const QString &request : {QString("AUTH]![login-user]![login-s3cret"), "UNKNOWN" + esc,
                                       "SETSCANSCHED]![0~;1~;" + esc + "~;" + esc + "~;" + esc,
                                       "GSTATD]![" + esc + "]![" + esc, "STOPSCAN]![" + esc})
            QVERIFY(!service.ask(request).isNull());
        QCOMPARE(service.stop(), 0);

        const QByteArray log = service.output() + service.content("category.log");
        QVERIFY2(log.contains("535 [31m***"), log);
        for (const char *secret :
             {"alert-s3cret", "alert-user", "test-s3cret", "test-user", "login-s3cret"}) {
            QVERIFY2(!log.contains(secret), secret);
            QVERIFY2(!log.contains(QByteArray(secret).toBase64(QByteArray::OmitTrailingEquals)), secret);
        }
        const QRegularExpression control("[\\x00-\\x09\\x0b-\\x1f\\x7f-\\x9f]");
        const QRegularExpressionMatch found = control.match(QString::fromUtf8(log));
        QVERIFY2(!found.hasMatch(), log.mid(qMax(0, found.capturedStart() - 100), 200));
    }
};

QTEST_GUILESS_MAIN(TestLogSecrecy)
#include "tst_log_secrecy.moc"
