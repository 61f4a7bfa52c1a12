// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/web_program.h"
#include "rows.h"

#include <csignal>
#include <memory>
#include <vector>

namespace {

QJsonDocument console(const ServiceFixture &service, const QStringList &command)
{
    QProcess process;
    process.start(HALVEX_CONSOLE_PROGRAM,
                  QStringList{"--host", "127.0.0.1", "--port", QString::number(service.port()), "--json"} +
                      command);
    process.waitForFinished(kPatienceMs);
    return QJsonDocument::fromJson(process.readAllStandardOutput());
}

const QJsonObject kMachine = json(quoted(
    "{"
    "'drives': [{'number': 0, 'model': '<b>\\'A&B\\'</b>', 'serial': 'S-0', 'capacity': 1048576,"
    "'smart': {'attributes': [{'id': 5, 'flags': 51, 'current': 100, 'worst': 100, 'threshold': 36, 'raw': "
    "1},"
    "{'id': 194, 'flags': 34, 'current': 75, 'worst': 75, 'threshold': 0, 'raw': 25}]}},"
    "{'number': 1, 'model': 'SECOND', 'serial': 'S-1', 'capacity': 1048576}],"
    "'volumes': [{'name': '\\\\\\\\?\\\\Volume{0001}\\\\', 'letters': ['C'], 'label': 'System', "
    "'fileSystem': 'NTFS',"
    "'serial': 305419896, 'deviceNumber': 0, 'totalBytes': 500000000000, 'freeBytes': 120000000000}]}"));

} // namespace

class TestWeb : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_service->writeMachine(kMachine);
        QVERIFY(m_service->serve());
        m_web = std::make_unique<WebProgram>(*m_service);
    }

    void cleanup()
    {
        m_web.reset();
        m_service.reset();
    }

    void servesTheConsolesDocuments()
    {
        QVERIFY(m_web->start());
        QTRY_COMPARE_WITH_TIMEOUT(m_web->state(), "ready", kPatienceMs);
        const QPair<QByteArray, QStringList> documents[] = {{"volumes", {"volumes"}},
                                                            {"scans", {"scan", "status"}},
                                                            {"schedule", {"schedule", "show"}},
                                                            {"settings", {"settings", "show"}},
                                                            {"drives/0", {"smart", "0"}}};
        for (const auto &[path, command] : documents) {
            const Response response = m_web->request("GET", "/api/v1/services/files/" + path);
            QVERIFY2(!response.json().isEmpty(), path);
            QCOMPARE(response.json(), console(*m_service, command));
        }
        const QJsonDocument status = m_web->request("GET", "/api/v1/services/files/status").json();
        QCOMPARE(status["drives"].toArray(), console(*m_service, {"status"})["drives"].toArray());
        const Response history =
            m_web->request("GET", "/api/v1/services/files/drives/0/temperatures?format=csv");
        QVERIFY2(history.body.contains("Z,25\n"), history.body);
        QVERIFY(m_web->request("GET", "/probe?target=files").body.contains("\"ata-_b__A_B___b__S-0\""));
        QCOMPARE(m_web->stop(), 0);
    }

    void operates()
    {
        m_web->addUsers();
        QVERIFY(m_web->start());
        QCOMPARE(m_web->request("GET", "/api/v1/overview").status, 401);
        QVERIFY(m_web->logIn("ann"));
        QTRY_COMPARE_WITH_TIMEOUT(m_web->state(), "ready", kPatienceMs);
        const QByteArray files = "/api/v1/services/files/";

        const Response other = m_web->request("POST", files + "drives/1/scan", quoted("{'serial': 'S-0'}"));
        QCOMPARE(other.status, 409);
        QCOMPARE(
            m_web->request("POST", files + "drives/1/scan", quoted("{'serial': 'S-1', 'last': 2048}")).status,
            400);
        QCOMPARE(m_web->request("POST", files + "drives/1/scan", quoted("{'serial': 'S-1'}")).status, 200);
        QTRY_COMPARE_WITH_TIMEOUT(
            m_web->request("GET", files + "scans").json().array().at(1)["state"].toString(), "done",
            kPatienceMs);

        const QByteArray weekly =
            quoted("{'serial': 'S-0', 'kind': 'weekly', 'weekday': 'sunday', 'time': '03:30'}");
        const Response schedule = m_web->request("PUT", files + "drives/0/schedule", weekly);
        QCOMPARE(schedule.json().array().at(0)["weekday"].toString(), "sunday");

        const QByteArray mail =
            quoted("{'smtpServer': '127.0.0.1', 'smtpPort': 9, 'smtpTo': 'a@b', 'smtpPass': 'geheim'}");
        const Response settings = m_web->request("PUT", files + "settings", mail);
        QCOMPARE(settings.json()["smtpPass"], QJsonValue(true));
        QVERIFY(!settings.body.contains("geheim"));
        QCOMPARE(m_web->request("PUT", files + "settings", quoted("{'smtpServer': '192.0.2.1'}")).status,
                 400);
        const Response test = m_web->request("POST", files + "mail-test", "{}");
        QCOMPARE(test.json()["sent"], QJsonValue(false));

        QVERIFY(m_web->logIn("bob"));
        QCOMPARE(m_web->request("POST", files + "refresh").status, 403);
    }

    void outlivesTheServiceAndACrash()
    {
        QVERIFY(m_web->start());
        QTRY_COMPARE_WITH_TIMEOUT(m_web->state(), "ready", kPatienceMs);
        m_service->process().kill();
        QTRY_COMPARE_WITH_TIMEOUT(m_web->state(), "unreachable", kPatienceMs);
        const Response last = m_web->request("GET", "/api/v1/services/files/status");
        QCOMPARE(last.status, 200);
        QVERIFY(last.header.contains("Halvex-Last-Answer: "));
        const auto events = [this] { return m_web->request("GET", "/api/v1/events").json().array().size(); };
        QTRY_COMPARE_WITH_TIMEOUT(events(), 1, kPatienceMs);
        m_web->crash();
        QVERIFY(m_web->start());
        QCOMPARE(events(), 1); // written before the crash
        const auto others = QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
        QCOMPARE(QFile::permissions(m_service->path("web")) & others, QFile::Permissions());
    }

    void scrapesDoNotWaitForAHungService()
    {
        QVERIFY(m_web->start());
        QTRY_COMPARE_WITH_TIMEOUT(m_web->state(), "ready", kPatienceMs);
        ::kill(pid_t(m_service->processId()), SIGSTOP);
        const QByteArray metrics = m_web->request("GET", "/probe?target=files").body;
        QVERIFY2(metrics.contains("smartctl_device_temperature{"), metrics);
        QVERIFY2(metrics.contains("halvex_last_answer_timestamp_seconds{service=\"files\"} 1"), metrics);
    }

    void refusesHostileRequests_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<int>("status");
        const QByteArray head = " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n";
        row("name of another site",
            QByteArray("GET / HTTP/1.1\r\nHost: evil.example\r\nConnection: close\r\n\r\n"), 403);
        row("headers of 9 KiB", "GET /" + head + "X-Long: " + QByteArray(9000, 'x') + "\r\n\r\n", 431);
        row("headers of 1 MiB", "GET /" + head + "X-Long: " + QByteArray(1 << 20, 'x') + "\r\n\r\n", 431);
        row("announced body of 65 KiB", "POST /login" + head + "Content-Length: 66560\r\n\r\n", 413);
        row("chunked body of 65 KiB",
            "POST /login" + head +
                "Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n10400\r\n" +
                QByteArray(0x10400, 'x') + "\r\n0\r\n\r\n",
            413);
        row("step up", "GET /%2e%2e/%2e%2e/etc/passwd" + head + "\r\n", 400);
        row("headers that never end", "GET /" + head, 408);
        row("body that never comes", "POST /login" + head + "Content-Length: 10\r\n\r\n", 408);
    }

    void refusesHostileRequests()
    {
        QFETCH(QByteArray, request);
        QVERIFY(m_web->start());
        QTEST(m_web->exchange(request).status, "status");
        QCOMPARE(m_web->request("GET", "/-/healthy").body, "ok\n");
    }

    void limitsConnections()
    {
        QVERIFY(m_web->start());
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        for (int i = 0; i < 40; ++i) {
            sockets.push_back(std::make_unique<QTcpSocket>());
            sockets.back()->connectToHost("127.0.0.1", m_web->port());
            sockets.back()->waitForConnected(kPatienceMs); // fails if the server has closed it by then
        }
        const auto open = [&sockets] {
            return std::count_if(sockets.cbegin(), sockets.cend(), [](const auto &socket) {
                return socket->state() == QAbstractSocket::ConnectedState;
            });
        };
        QTRY_VERIFY_WITH_TIMEOUT(open() <= 32, kPatienceMs);
        QVERIFY(open() > 0);
        sockets.clear();
        QTRY_COMPARE_WITH_TIMEOUT(m_web->request("GET", "/-/healthy").status, 200, kPatienceMs);
    }

    void refusesAnAddressInUse()
    {
        QVERIFY(m_web->start());
        QProcess second;
        second.start(HALVEX_WEB_PROGRAM,
                     {"--config", m_service->path("web.json"), "--state", m_service->path("web"), "--listen",
                      QString("127.0.0.1:%1").arg(m_web->port())});
        QVERIFY(second.waitForFinished(kPatienceMs));
        QCOMPARE(second.exitCode(), 1);
        QVERIFY(second.readAllStandardError().contains("cannot listen on 127.0.0.1 port "));
    }

    void streamsChanges()
    {
        QVERIFY(m_web->start());
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", m_web->port());
        socket.write("GET /api/v1/stream HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QByteArray text;
        while (text.count("data: files\n") < 2) {
            QVERIFY2(socket.waitForReadyRead(kPatienceMs), text);
            text += socket.readAll();
        }
        QVERIFY(text.contains("text/event-stream"));
        QCOMPARE(m_web->stop(), 0); // also while a stream is open
    }

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<WebProgram> m_web;
};

QTEST_GUILESS_MAIN(TestWeb)
#include "tst_web.moc"
