// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "web/passwords.h"
#include "web/request_bench.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using web::HttpRequest;
using web::HttpResponse;

namespace {

QByteArray lightHash(const QByteArray &password)
{
    return "pbkdf2-sha256:10000:MDEyMzQ1Njc4OWFiY2RlZg==:" + password;
}

} // namespace

/// Requests and snapshots in, responses out.
class TestWebRequests : public QObject, RequestBench
{
    Q_OBJECT

private Q_SLOTS:
    void init() { reset(); }

    void admits_data()
    {
        QTest::addColumn<QString>("request"); // method, path, then "Name: value" each on a line
        QTest::addColumn<QString>("role");    // of the login; empty: none
        QTest::addColumn<int>("status");
        const QString json = "\nContent-Type: application/json";
        const QString refresh = "POST /api/v1/services/files/refresh";
        const QString reader = "reader";
        const QString op = "operator";
        row("foreign host name", "GET /\nHost: evil.example", op, 403);
        row("host name that ends like ours", "GET /\nHost: disks.example.org.evil.example", op, 403);
        row("user name before the host", "GET /\nHost: 127.0.0.1@evil.example", op, 403);
        row("configured host name", "GET /-/healthy\nHost: Disks.Example.Org:8643", "", 200);
        row("IPv6 address", "GET /-/healthy\nHost: [::1]:8643", "", 200);
        row("no Host", "GET /\nHost:", op, 403);
        row("stranger reads", "GET /api/v1/services", "", 401);
        row("stranger sees the page", "GET /", "", 200);
        row("reader reads", "GET /api/v1/services", reader, 200);
        row("reader changes", refresh + json, reader, 403);
        row("stranger changes", refresh + json, "", 401);
        row("operator changes", refresh + json, op, 200);
        row("form post", refresh + "\nContent-Type: application/x-www-form-urlencoded", op, 415);
        row("page of another site", refresh + json + "\nOrigin: http://evil.example", op, 403);
        row("page that hides its origin", refresh + json + "\nOrigin: null", op, 403);
        row("browser says cross-site", refresh + json + "\nSec-Fetch-Site: cross-site", op, 403);
        row("own page", refresh + json + "\nOrigin: http://127.0.0.1:8643", op, 200);
        row("metrics with the token", "GET /metrics\nAuthorization: Bearer tok", "", 200);
        row("metrics with another token", "GET /metrics\nAuthorization: Bearer tok2", "", 401);
        row("metrics with a login", "GET /metrics", reader, 200);
    }

    void admits()
    {
        QFETCH(QString, request);
        QFETCH(QString, role);
        QTEST(statusOf(request, role), "status");
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("request"); // of an operator
        QTest::addColumn<int>("status");
        row("step up in the path", "GET /api/../../etc/passwd", 400);
        row("escaped step up", "GET /%2e%2e/etc/passwd", 400);
        row("escaped zero", "GET /api%00", 400);
        row("broken escape", "GET /api/v1/services?a=%f", 400);
        row("not UTF-8", "GET /%ff", 400);
        row("no such path", "GET /api/v1/none", 404);
        row("no such service", "GET /api/v1/services/none/status", 404);
        row("no such drive", "GET /api/v1/services/files/drives/2", 404);
        row("drive that is not a number", "GET /api/v1/services/files/drives/0x1", 404);
        row("method of another route", "DELETE /api/v1/services\nContent-Type: application/json", 405);
        row("service that never answered", "GET /api/v1/services/silent/status", 504);
        row("period without a zone", "GET /api/v1/events?from=2026-11-15T00:00:00", 400);
        row("no points", "GET /api/v1/services/files/drives/0/temperatures?points=0", 400);
    }

    void refuses()
    {
        QFETCH(QString, request);
        QTEST(statusOf(request, "operator"), "status");
    }

    void withoutUsersEverybodyReadsAndNobodyChanges()
    {
        QCOMPARE(respond(parse("GET /api/v1/overview")).status, 200);
        QCOMPARE(respond(parse("GET /metrics")).status, 200);
        const QByteArray change = "POST /api/v1/services/files/refresh\nContent-Type: application/json";
        QCOMPARE(respond(parse(change)).status, 403);
        QVERIFY(!m_gateway->m_work);
    }

    void marksStaleServices()
    {
        auto old = std::make_shared<web::ServiceSnapshot>(*m_snapshot.services.first());
        old->missedPolls = 3;
        old->state = web::ServiceState::Unreachable;
        m_snapshot.services[0] = old;
        const HttpResponse document = respond(parse("GET /api/v1/services/files/volumes"));
        QCOMPARE(document.status, 200);
        QVERIFY(document.headers.contains(qMakePair(QByteArray("Halvex-Stale"), QByteArray("1"))));
        QVERIFY(document.headers.contains(
            qMakePair(QByteArray("Halvex-Last-Answer"), QByteArray("2026-11-15T12:00:00Z"))));
        const QByteArray metrics = text("GET /probe?target=files");
        QVERIFY(metrics.contains("halvex_up{service=\"files\"} 0\n"));
        QVERIFY(!metrics.contains("smartctl_device"));
    }

    void describesServices()
    {
        const QJsonArray services =
            QJsonDocument::fromJson(respond(parse("GET /api/v1/overview")).body).array();
        const QJsonObject files = services.at(0).toObject();
        QCOMPARE(files.value("state").toString(), "ready");
        QCOMPARE(files.value("level").toString(), "warning");
        QCOMPARE(files.value("drives").toInt(), 2);
        const QJsonObject drive = files.value("driveList").toArray().at(1).toObject();
        QCOMPARE(drive.value("serial").toString(), "S1");
        QCOMPARE(drive.value("temperatures").toArray().size(), 24);
        const QJsonObject silent = services.at(1).toObject();
        QCOMPARE(silent.value("state").toString(), "unreachable");
        QVERIFY(silent.value("lastAnswer").isNull());
        QCOMPARE(silent.value("error").toString(), "connection refused");
    }

    void refusesBodies_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("body");
        const QByteArray drive = "POST /api/v1/services/files/drives/0/";
        const QByteArray schedule = "PUT /api/v1/services/files/drives/0/schedule";
        row("not JSON", drive + "scan", QByteArray("{"));
        row("no serial", drive + "scan", QByteArray("{}"));
        row("unknown key", drive + "scan", quoted("{'serial': 'S0', 'frist': 1}"));
        row("negative sector", drive + "scan", quoted("{'serial': 'S0', 'first': -1}"));
        row("block too small", drive + "scan", quoted("{'serial': 'S0', 'block': 511}"));
        row("weekly without a day", schedule, quoted("{'serial': 'S0', 'kind': 'weekly', 'time': '03:30'}"));
        row("time that does not exist", schedule,
            quoted("{'serial': 'S0', 'kind': 'daily', 'time': '24:00'}"));
        row("date out of the protocol's years", schedule,
            quoted("{'serial': 'S0', 'kind': 'once', 'time': '03:30', 'date': '2100-01-01'}"));
        row("port of the service", QByteArray("PUT /api/v1/services/files/settings"), quoted("{'port': 1}"));
        row("separator in a serial", QByteArray("POST /api/v1/services/files/acknowledge"),
            quoted("{'serial': 'S0]![X-FORGET'}"));
    }

    void refusesBodies()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, body);
        HttpRequest asked = operatorRequest(request);
        asked.body = body;
        QCOMPARE(respond(asked).status, 400);
        QVERIFY(!m_gateway->m_work);
    }

    void startsWork()
    {
        HttpRequest scan = operatorRequest("POST /api/v1/services/files/drives/1/scan");
        scan.body = quoted("{'serial': 'S1', 'first': 10, 'last': null}");
        QCOMPARE(respond(scan).status, 200);
        QCOMPARE(m_gateway->m_service, "files");
        const auto &work = std::get<web::work::StartScan>(*m_gateway->m_work);
        QCOMPARE(work.drive.number, 1);
        QCOMPARE(work.drive.serial, "S1");
        QCOMPARE(*work.first, quint64(10));
        QVERIFY(!work.last);
        QCOMPARE(work.block, 262144);
    }

    void logsInAndOut()
    {
        m_configuration.users = {
            {"ann", web::Role::Operator, lightHash("6umsHhz0yhb+YIJ/FUgCrsOB+tK+gGdB+tvI2KPIHns=")}};
        HttpRequest login = parse("POST /login\nContent-Type: application/json", "chosen-by-another");
        login.body = quoted("{'name': 'ann', 'password': 'secret'}");
        login.isSecure = true;
        const HttpResponse response = respond(login);
        QCOMPARE(response.status, 200);
        const QByteArray header = response.headers.first().second;
        QVERIFY2(header.endsWith("; HttpOnly; SameSite=Strict; Secure"), header);
        const QByteArray token =
            header.mid(header.indexOf('=') + 1, header.indexOf(';') - header.indexOf('=') - 1);
        QVERIFY(token != "chosen-by-another"); // a session prepared by an attacker is never used
        QVERIFY(text("GET /api/v1/session", token).contains(quoted("'role':'operator'")));
        respond(parse("POST /logout\nContent-Type: application/json", token));
        QVERIFY(text("GET /api/v1/session", token).contains(quoted("'role':null")));
    }

    void limitsFailedLogins()
    {
        m_configuration.users = {
            {"ann", web::Role::Operator, lightHash("6umsHhz0yhb+YIJ/FUgCrsOB+tK+gGdB+tvI2KPIHns=")}};
        HttpRequest login = parse("POST /login\nContent-Type: application/json");
        login.body = quoted("{'name': 'ann', 'password': 'wrong'}");
        for (int i = 0; i < 5; ++i)
            QCOMPARE(respond(login).status, 401);
        QCOMPARE(respond(login).status, 429);
        login.peer = QHostAddress("192.0.2.9");
        QCOMPARE(respond(login).status, 401); // each address has attempts of its own
        m_now = m_now.addSecs(60);
        login.peer = QHostAddress(QHostAddress::LocalHost);
        QCOMPARE(respond(login).status, 401);
    }

    void endsSessions()
    {
        const web::Seconds start = m_now.toSecsSinceEpoch();
        const QByteArray token = m_sessions->start({"ann", web::Role::Reader}, {}, start);
        QVERIFY(m_sessions->find(token, start + 12 * 3600 - 1));
        QVERIFY(!m_sessions->find(token, start + 12 * 3600));
        const QByteArray next = m_sessions->start({"ann", web::Role::Reader}, token, start);
        QVERIFY(!m_sessions->find(token, start)); // replaced by the new login
        QVERIFY(m_sessions->find(next, start));
    }

private:
    /// The response's status; an empty role means no login.
    int statusOf(const QString &request, const QString &role)
    {
        m_configuration.users = {{"ann", web::Role::Operator, {}}};
        m_configuration.metricsToken = "tok";
        QByteArray cookie;
        if (!role.isEmpty()) {
            const auto value = role == "operator" ? web::Role::Operator : web::Role::Reader;
            cookie = m_sessions->start({"ann", value}, {}, m_now.toSecsSinceEpoch());
        }
        return respond(parse(request.toUtf8(), cookie)).status;
    }
};

QTEST_GUILESS_MAIN(TestWebRequests)
#include "tst_web_requests.moc"
