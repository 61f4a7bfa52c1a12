// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "web/request_bench.h"

/// Snapshots in, metrics out.
class TestWebMetrics : public QObject, RequestBench
{
    Q_OBJECT

private Q_SLOTS:
    void init() { reset(); }

    void writesMetrics()
    {
        auto data = fakeData();
        data->drives[0].model = "A\"B\\C\n<b>";
        data->drives[1] = data->drives[0]; // same model and serial
        data->drives[1].temperature.reset();
        data->drives[1].powerOn.unit = PowerOnCounter::Unit::Unknown;
        data->attributes[0].append(data->attributes[0].first());
        m_snapshot.services = {fakeService("files", data)};
        const QByteArray metrics = text("GET /metrics");
        const QByteArray device = "device=\"ata-A_B_C__b__S0-0\"";
        QVERIFY(metrics.contains("smartctl_device_temperature{" + device +
                                 ",temperature_type=\"current\"} 30\n"));
        QVERIFY(metrics.contains(quoted("model_name='A\\'B\\\\C\\n<b>'")));
        QVERIFY(metrics.contains("smartctl_device_power_on_seconds{" + device + "} 36000\n"));
        QVERIFY(metrics.contains("smartctl_device_attribute{" + device +
                                 quoted(",attribute_id='5',attribute_name='Reallocated_Sector_Ct',attribute_"
                                        "flags_short='PO--CK',attribute_flags_long='prefailure,updated_"
                                        "online,event_count,auto_keep',attribute_value_type='raw'} 7")));
        QVERIFY(metrics.contains("device=\"ata-A_B_C__b__S0-1\"")); // distinguished by the index
        QCOMPARE(metrics.count("smartctl_device_temperature{"), 1);
        QCOMPARE(metrics.count("smartctl_device_power_on_seconds{"), 1);
        const QList<QByteArray> lines = metrics.split('\n');
        QSet<QByteArray> series;
        for (const QByteArray &line : lines.mid(0, lines.size() - 1)) {
            const QByteArray name = line.left(line.lastIndexOf(' '));
            QVERIFY2(!series.contains(name), name);
            series.insert(name);
        }
    }

    void writesOpenMetrics()
    {
        const QByteArray metrics = text(
            "GET /probe?target=files\nAccept: text/plain;q=0.5,application/openmetrics-text;version=1.0.0");
        QVERIFY(metrics.endsWith("\n# EOF\n"));
        QVERIFY(metrics.contains("# TYPE halvex_polls counter\nhalvex_polls_total{"));
        QVERIFY(metrics.contains("# TYPE smartctl_device_power_cycle_count unknown\n"));
    }

    void derivesSmartStatus_data()
    {
        QTest::addColumn<bool>("isPrefailure");
        QTest::addColumn<quint32>("current");
        QTest::addColumn<quint32>("threshold");
        QTest::addColumn<QByteArray>("status");
        row("above the threshold → 1", true, 37U, 36U, QByteArray("1"));
        row("at the threshold → 0", true, 36U, 36U, QByteArray("0"));
        row("advisory attribute at its threshold → 1", false, 36U, 36U, QByteArray("1"));
        row("threshold 0 is never reached → 1", true, 0U, 0U, QByteArray("1"));
    }

    void derivesSmartStatus()
    {
        QFETCH(bool, isPrefailure);
        QFETCH(quint32, current);
        QFETCH(quint32, threshold);
        QFETCH(QByteArray, status);
        auto data = fakeData();
        data->attributes[0] = {{5, isPrefailure, true, current, current, threshold, 0, 0x33}};
        m_snapshot.services = {fakeService("files", data)};
        QVERIFY(text("GET /metrics")
                    .contains("smartctl_device_smart_status{device=\"ata-MODEL_0_S0\"} " + status + '\n'));
    }

    void discoversTargets()
    {
        m_configuration.basePath = "/disks/";
        const QByteArray targets = text("GET /disks/targets");
        QVERIFY2(targets.startsWith(quoted(
                     "[{'labels':{'__metrics_path__':'/disks/"
                     "probe','__param_target':'files','instance':'files'},'targets':['127.0.0.1:8643']}")),
                 targets);
        QCOMPARE(respond(parse("GET /targets")).status, 404); // outside the base path
    }
};

QTEST_GUILESS_MAIN(TestWebMetrics)
#include "tst_web_metrics.moc"
