// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "web/admission.h"
#include "web/connection_watch.h"
#include "web/hourly_temperatures.h"
#include "web/mail_transcript.h"
#include "web/metrics/temperature_export.h"
#include "web/temperature_series.h"

#include <QJsonArray>

namespace {

/// Returns a history of drive 0: each record is "MMddhhmmss" of 2026 and a temperature.
client::TemperatureHistory history(const QVector<QPair<QString, int>> &records)
{
    client::TemperatureHistory result;
    for (const auto &[time, celsius] : records) {
        QDateTime moment = QDateTime::fromString("2026" + time, "yyyyMMddHHmmss");
        moment.setTimeSpec(Qt::UTC);
        result.records.append({moment, 0, celsius});
    }
    return result;
}

const QByteArray kBerlin = QByteArrayLiteral("Europe/Berlin");

} // namespace

class TestWebTimes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsServiceTime_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QByteArray>("configured");
        QTest::addColumn<int>("offset"); // on 2026-07-01, seconds east of UTC
        const QString prefix = "X-TIME_OK]![1794744000]![";
        row("zone name", prefix + "3600]![Europe/Berlin", QByteArray("UTC"), 7200);
        row("name of Windows", prefix + "3600]![W. Europe Standard Time", QByteArray(), 7200);
        row("unknown name → offset", prefix + "3600]![CET?", QByteArray(), 3600);
        row("name that contradicts the offset → offset", prefix + "7200]![Europe/Berlin", QByteArray(), 7200);
        row("no such command → configured", "UNKNOWN COMMAND - Command list:", kBerlin, 7200);
        row("offset above 14 hours → configured", prefix + "50401]![UTC", kBerlin, 7200);
    }

    void readsServiceTime()
    {
        QFETCH(QString, reply);
        QFETCH(QByteArray, configured);
        const QTimeZone zone = web::zoneOf(client::parseServiceTime(reply), configured);
        const QDateTime summer(QDate(2026, 7, 1), QTime(12, 0), Qt::UTC);
        QTEST(zone.offsetFromUtc(summer), "offset");
    }

    void convertsAcrossDaylightSaving()
    {
        web::ServiceClock clock((QTimeZone(kBerlin)));
        const auto utc = [&clock](int month, int day, int hour) {
            const QDateTime local(QDate(2026, month, day), QTime(hour, 0), Qt::UTC);
            return QDateTime::fromSecsSinceEpoch(clock.secondsSinceEpoch(local), Qt::UTC).time().hour();
        };
        QCOMPARE(utc(7, 1, 12), 10);
        QCOMPARE(utc(11, 15, 12), 11);
        QCOMPARE(utc(10, 25, 3), 2); // the hour after the repeated one
        const qint64 summer = QDateTime(QDate(2026, 7, 1), QTime(10, 0), Qt::UTC).toSecsSinceEpoch();
        QCOMPARE(clock.localTime(summer).time(), QTime(12, 0));
    }

    void dividesASeries()
    {
        const auto records =
            history({{"1115000000", 20}, {"1115000100", 30}, {"1115000900", 50}, {"1115001000", 99}});
        web::TemperatureQuery query{0, 0, records.records.at(2).time.toSecsSinceEpoch(), 2};
        const web::ServiceClock utc(QTimeZone::utc());
        QJsonArray points = web::temperatureSeries(records, query, utc)["points"].toArray();
        QCOMPARE(points.size(), 2);
        QCOMPARE(points.at(0)["min"].toInt(), 20);
        QCOMPARE(points.at(0)["mean"].toDouble(), 25.0);
        QCOMPARE(points.at(0)["max"].toInt(), 30);
        QCOMPARE(points.at(1)["time"].toString(), "2026-11-15T00:09:00Z");
        query.drive = 1;
        points = web::temperatureSeries(records, query, utc)["points"].toArray();
        QVERIFY(points.isEmpty());
        QCOMPARE(web::temperatureCsv(records, {0, 0, query.to, 1}, utc).count('\n'), 4);
    }

    void defaultPeriodIsTheLastDay()
    {
        web::HourlyTemperatures hours;
        const qint64 now = 1000 * 3600 + 1800;
        hours.add(0, now - 24 * 3600, 10); // one hour older than kept
        hours.add(0, now - 23 * 3600, 20);
        hours.add(0, now, 30);
        hours.add(0, now + 1, 33);
        const web::HourlyMeans means = hours.means(0, now);
        QCOMPARE(*means.front(), 20.0);
        QVERIFY(!means[1]);
        QCOMPARE(*means.back(), 31.5);
        QVERIFY(!hours.means(7, now).back());
    }

    void exportsWithoutTheRepeatedHour()
    {
        const auto records = history({{"1025025000", 20},
                                      {"1025020500", 21}, // the same hour again
                                      {"1025025500", 22},
                                      {"1025030500", 23},
                                      {"0601000000", 24}}); // the clock was set back by months
        client::Drive drive;
        drive.model = "M";
        drive.serial = "S";
        const QByteArray text = web::metrics::exportTemperatures(records, {drive}, "files",
                                                                 web::ServiceClock(QTimeZone(kBerlin)));
        QVector<int> celsius;
        qint64 last = 0;
        for (const QByteArray &line : text.split('\n')) {
            const QList<QByteArray> words = line.split(' ');
            if (!line.startsWith("smartctl_device_temperature{device=\"ata-M_S\","))
                continue;
            celsius.append(words.at(1).toInt());
            QVERIFY(words.at(2).toLongLong() > last);
            last = words.at(2).toLongLong();
        }
        QCOMPARE(celsius, (QVector<int>{24, 20, 22, 23}));
        QVERIFY(text.endsWith("# EOF\n"));
    }

    void hidesCredentials_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("isShown");
        const QString password = "geheim";
        row("server's greeting", "220 mail ready", true);
        row("AUTH LOGIN", QString::fromLatin1(password.toUtf8().toBase64()), false);
        row("AUTH PLAIN", "AUTH PLAIN " + QString::fromLatin1(QByteArray("\0ann\0geheim", 11).toBase64()),
            false);
        row("text without a date", "535 'geheim' is wrong", false);
    }

    void hidesCredentials()
    {
        QFETCH(QString, line);
        QTEST(web::withoutCredentials(line + QLatin1Char('\r'), "geheim").contains(line), "isShown");
    }

    void limitsConnectionsOfOneAddress()
    {
        const QHostAddress client("192.0.2.1");
        const QHostAddress proxy("10.0.0.1");
        web::ConnectionWatch watch({proxy}, true);
        for (quintptr socket = 1; socket <= 31; ++socket)
            QVERIFY(watch.opened(socket, client, 0));
        QVERIFY(watch.mayConnect(client)); // asked on two threads before either connection is counted
        QVERIFY(watch.opened(32, client, 0));
        QVERIFY(!watch.opened(33, client, 0));
        QVERIFY(!watch.mayConnect(client));
        watch.closed(33); // was not counted
        QVERIFY(!watch.mayConnect(client));
        watch.closed(1);
        QVERIFY(watch.mayConnect(client));
        for (quintptr socket = 101; socket <= 140; ++socket)
            QVERIFY(watch.opened(socket, proxy, 0));
    }

    void findsTheClientBehindProxies_data()
    {
        QTest::addColumn<QByteArray>("forwarded");
        QTest::addColumn<QString>("client"); // of a request from 10.0.0.1
        row("no header", QByteArray(), "10.0.0.1");
        row("one hop", QByteArray("192.0.2.1"), "192.0.2.1");
        row("client that invents hops", QByteArray("127.0.0.1, 192.0.2.1"), "192.0.2.1");
        row("two proxies", QByteArray("192.0.2.1, 10.0.0.2"), "192.0.2.1");
        row("header that is not an address", QByteArray("unknown"), "10.0.0.1");
    }

    void findsTheClientBehindProxies()
    {
        QFETCH(QByteArray, forwarded);
        const QVector<QHostAddress> proxies{QHostAddress("10.0.0.1"), QHostAddress("10.0.0.2")};
        QTEST(web::clientAddress(proxies.first(), forwarded, proxies).toString(), "client");
        const QHostAddress stranger("203.0.113.5"); // its header is ignored
        QCOMPARE(web::clientAddress(stranger, forwarded, proxies), stranger);
    }
};

QTEST_GUILESS_MAIN(TestWebTimes)
#include "tst_web_times.moc"
