// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/health.h"
#include "rows.h"

#include <QtTest>

Q_DECLARE_METATYPE(AttributeEntry)

namespace {

AttributeEntry attribute(quint32 id, quint32 current, quint32 threshold = 0, quint32 notPrefailure = 0)
{
    AttributeEntry entry;
    entry.id = id;
    entry.current = current;
    entry.threshold = threshold;
    entry.notPrefailure = notPrefailure;
    return entry;
}

DeviceRecord drive(int deviceNumber, const QString &model)
{
    DeviceRecord device;
    device.deviceNumber = deviceNumber;
    device.model = model;
    device.smartState = 1;
    return device;
}

DeviceRecord warmDrive(int deviceNumber, const QString &model, qint32 temperature)
{
    DeviceRecord device = drive(deviceNumber, model);
    device.hasTemperature = true;
    device.temperature = temperature;
    return device;
}

} // namespace

class TestHealth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void attributes_data()
    {
        QTest::addColumn<QVector<AttributeEntry>>("attributes");
        QTest::addColumn<int>("level");
        QTest::addColumn<int>("health");
        QTest::addColumn<QString>("detail");
        using List = QVector<AttributeEntry>;
        row("none", List(), 1, 100, "");
        row("best of 253", List{attribute(1, 253)}, 1, 100, "");
        row("250 of 253", List{attribute(1, 250)}, 1, 98, "");
        row("201 of 253", List{attribute(1, 201)}, 1, 79, "");
        row("200 of 200", List{attribute(1, 200)}, 1, 100, "");
        row("150 of 200", List{attribute(1, 150)}, 1, 75, "");
        row("101 of 200", List{attribute(1, 101)}, 1, 50, "");
        row("100 of 100", List{attribute(1, 100)}, 1, 100, "");
        row("beyond every scale", List{attribute(1, 255)}, 1, 100, "");
        row("the worst counts", List{attribute(1, 90), attribute(2, 60), attribute(3, 80)}, 1, 60, "");
        row("one above the threshold", List{attribute(5, 37, 36)}, 1, 37, "");
        row("at the threshold", List{attribute(5, 36, 36)}, 2, 36, "   Parameter ID 5=36\n");
        row("11 is no alarm", List{attribute(5, 11)}, 1, 11, "");
        row("10 is one", List{attribute(5, 10)}, 2, 10, "   Parameter ID 5=10\n");
        row("6 is a warning", List{attribute(5, 6)}, 2, 6, "   Parameter ID 5=6\n");
        row("5 is critical", List{attribute(5, 5)}, 3, 5, "   Parameter ID 5=5\n");
        row("critical stays", List{attribute(5, 1), attribute(7, 30, 30)}, 3, 1,
            "   Parameter ID 5=1\n   Parameter ID 7=30\n");
        row("not pre-failure", List{attribute(5, 1, 0, 1)}, 1, 100, "");
    }

    void attributes()
    {
        DeviceRecord device = drive(0, QString());
        QFETCH(QVector<AttributeEntry>, attributes);
        device.attributes = attributes;
        const DriveRating rating = rateDrive(device, Settings());
        QTEST(int(rating.level), "level");
        QTEST(int(rating.health), "health");
        QTEST(rating.detail, "detail");
    }

    void temperature_data()
    {
        QTest::addColumn<int>("celsius");
        QTest::addColumn<int>("wTemp");
        QTest::addColumn<int>("cTemp");
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("detail");
        row("below", 54, 55, 65, 1, "");
        row("at the warning limit", 55, 55, 65, 2, "   Temperature=55 Celsius (131 Fahrengeit)\n");
        row("below the critical limit", 64, 55, 65, 2, "   Temperature=64 Celsius (147 Fahrengeit)\n");
        row("at the critical limit", 65, 55, 65, 3, "   Temperature=65 Celsius (149 Fahrengeit)\n");
        row("40 in Fahrenheit", 40, 1, 65, 2, "   Temperature=40 Celsius (104 Fahrengeit)\n");
        row("37 truncates", 37, 1, 65, 2, "   Temperature=37 Celsius (98 Fahrengeit)\n");
        row("beyond an int", 2147483647, 1, 65, 3,
            "   Temperature=2147483647 Celsius (3865470596 Fahrengeit)\n");
        row("limits swapped, between them", 50, 60, 40, 3, "");
    }

    void temperature()
    {
        QFETCH(int, celsius);
        QFETCH(int, wTemp);
        QFETCH(int, cTemp);
        Settings settings;
        settings.wTemp = wTemp;
        settings.cTemp = cTemp;
        const DriveRating rating = rateDrive(warmDrive(0, QString(), celsius), settings);
        QTEST(int(rating.level), "level");
        QTEST(rating.detail, "detail");
    }

    /// A warm drive, a fine one and a dying one: one alarm with two blocks. A model that looks like a
    /// placeholder is only a model.
    void alertText()
    {
        DeviceList devices{warmDrive(0, QStringLiteral("WARM %3"), 55),
                           warmDrive(1, QStringLiteral("FINE"), 20), drive(4, QStringLiteral("DYING"))};
        devices[2].attributes = {attribute(5, 8), attribute(9, 90, 0, 1), attribute(10, 3)};

        const HealthReport report = evaluateHealth(devices, Settings());

        QCOMPARE(report.alertLevel, 3);
        QCOMPARE(report.alertText, QStringLiteral("ID: 0 WARM %3\n"
                                                  "   Temperature=55 Celsius (131 Fahrengeit)\n"
                                                  "ID: 4 DYING\n"
                                                  "   Parameter ID 5=8\n"
                                                  "   Parameter ID 10=3"));
        QCOMPARE(devices[0].statusLevel, 2);
        QCOMPARE(devices[1].statusLevel, 1);
        QCOMPARE(devices[2].statusLevel, 3);
        QCOMPARE(devices[2].health, 3);
        QCOMPARE(report.temperatures.size(), 2);
        QCOMPARE(report.temperatures[1].device, 1);
        QCOMPARE(report.temperatures[1].celsius, 20);
    }

    /// The empty detail leaves an empty line behind the drive's name.
    void criticalWithoutDetail()
    {
        Settings settings;
        settings.wTemp = 60;
        settings.cTemp = 40;
        DeviceList devices{warmDrive(0, QStringLiteral("A"), 50), warmDrive(1, QStringLiteral("B"), 50)};
        QCOMPARE(evaluateHealth(devices, settings).alertText, QStringLiteral("ID: 0 A\n\nID: 1 B\n"));
    }

    void skippedDrives()
    {
        DeviceList devices{warmDrive(0, QStringLiteral("no attributes"), 90),
                           warmDrive(1, QStringLiteral("never read"), 90),
                           warmDrive(2, QStringLiteral("not monitored"), 90)};
        devices[0].smartState = 0;
        devices[1].smartState = -1;
        devices[2].monitored = 0;
        devices[2].statusLevel = 2;
        devices[2].health = 47;

        const HealthReport report = evaluateHealth(devices, Settings());

        QCOMPARE(report.alertLevel, 0);
        QVERIFY(report.alertText.isEmpty());
        QVERIFY(report.temperatures.isEmpty());
        QCOMPARE(devices[0].statusLevel, 3);
        QCOMPARE(devices[2].statusLevel, 2);
        QCOMPARE(devices[2].health, 47);
    }

    void previousValues()
    {
        DeviceList devices{warmDrive(0, QString(), 41), warmDrive(1, QString(), 42)};
        devices[0].attributes = {attribute(5, 70)};
        devices[1].smartState = 0;
        keepPreviousValues(devices);
        devices[0].attributes[0].current = 60;
        QCOMPARE(devices[0].previousTemperature, 41);
        QCOMPARE(devices[0].attributesPending.size(), 1);
        QCOMPARE(devices[0].attributesPending[0].current, 70U);
        QCOMPARE(devices[1].previousTemperature, 0);
    }
};

QTEST_APPLESS_MAIN(TestHealth)
#include "tst_health.moc"
