// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/health.h"
#include "rows.h"

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
    device.smart.fullRead = FullRead::Attributes;
    return device;
}

DeviceRecord warmDrive(int deviceNumber, const QString &model, qint32 temperature)
{
    DeviceRecord device = drive(deviceNumber, model);
    device.smart.hasTemperature = true;
    device.smart.temperature = temperature;
    return device;
}

QString shown(const DriveRating &rating)
{
    return QStringLiteral("%1 %2 ").arg(rating.level).arg(rating.health) + rating.detail;
}

} // namespace

class TestHealth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rates_data()
    {
        QTest::addColumn<QString>("rating"); // level, health and detail
        QTest::addColumn<QString>("expected");
        const auto attributes = [](const QVector<AttributeEntry> &list) {
            DeviceRecord device;
            device.smart.attributes = list;
            return shown(rateDrive(device, Settings()));
        };
        row("no attributes", attributes({}), "1 100 ");
        row("scale of 253, best value", attributes({attribute(1, 253)}), "1 100 ");
        row("201 of 253", attributes({attribute(1, 201)}), "1 79 ");
        row("200 of 200", attributes({attribute(1, 200)}), "1 100 ");
        row("101 of 200", attributes({attribute(1, 101)}), "1 50 ");
        row("100 of 100", attributes({attribute(1, 100)}), "1 100 ");
        row("beyond every scale", attributes({attribute(1, 255)}), "1 100 ");
        row("worst of several values", attributes({attribute(1, 90), attribute(2, 60), attribute(3, 80)}),
            "1 60 ");
        row("one above the threshold", attributes({attribute(5, 37, 36)}), "1 37 ");
        row("at the threshold", attributes({attribute(5, 36, 36)}), "2 36    Parameter ID 5=36\n");
        row("value 11 → fine", attributes({attribute(5, 11)}), "1 11 ");
        row("value 10 → warning", attributes({attribute(5, 10)}), "2 10    Parameter ID 5=10\n");
        row("value 6 → warning", attributes({attribute(5, 6)}), "2 6    Parameter ID 5=6\n");
        row("value 5 → critical", attributes({attribute(5, 5)}), "3 5    Parameter ID 5=5\n");
        row("critical stays", attributes({attribute(5, 1), attribute(7, 30, 30)}),
            "3 1    Parameter ID 5=1\n   Parameter ID 7=30\n");
        row("not pre-failure", attributes({attribute(5, 1, 0, 1)}), "1 100 ");

        const auto degrees = [](int celsius, int wTemp = 55, int cTemp = 65) {
            Settings settings;
            settings.wTemp = wTemp;
            settings.cTemp = cTemp;
            return shown(rateDrive(warmDrive(0, QString(), celsius), settings));
        };
        row("below", degrees(54), "1 100 ");
        row("at the warning limit", degrees(55), "2 100    Temperature=55 Celsius (131 Fahrengeit)\n");
        row("below the critical limit", degrees(64), "2 100    Temperature=64 Celsius (147 Fahrengeit)\n");
        row("at the critical limit", degrees(65), "3 100    Temperature=65 Celsius (149 Fahrengeit)\n");
        row("Fahrenheit truncates", degrees(37, 1), "2 100    Temperature=37 Celsius (98 Fahrengeit)\n");
        row("beyond an int", degrees(2147483647),
            "3 100    Temperature=2147483647 Celsius (3865470596 Fahrengeit)\n");
        row("limits swapped, between them", degrees(50, 60, 40), "3 100 ");
        Settings frost;
        frost.wTemp = 0;
        row("no temperature is not 0 degrees", shown(rateDrive(drive(0, {}), frost)), "1 100 ");
    }

    void rates()
    {
        QFETCH(QString, rating);
        QTEST(rating, "expected");
    }

    /// Two drives make one alarm of two blocks. Drives that were not read or are not monitored are not rated.
    /// A model that contains a placeholder is reported unchanged.
    void evaluates()
    {
        DeviceList devices{warmDrive(0, QStringLiteral("WARM %3"), 55),
                           warmDrive(1, QStringLiteral("not read"), 90),
                           warmDrive(2, QStringLiteral("FINE"), 20), drive(4, QStringLiteral("DYING")),
                           warmDrive(5, QStringLiteral("not watched"), 90)};
        devices[1].smart.fullRead = FullRead::NoAttributes;
        devices[1].rating.level = 1;
        devices[3].smart.attributes = {attribute(5, 8), attribute(9, 90, 0, 1), attribute(10, 3)};
        devices[4].monitored = 0;
        devices[4].rating.level = 2;

        const HealthReport report = evaluateHealth(devices, Settings());

        QCOMPARE(report.alertLevel, 3);
        QCOMPARE(report.alertText, QStringLiteral("ID: 0 WARM %3\n"
                                                  "   Temperature=55 Celsius (131 Fahrengeit)\n"
                                                  "ID: 4 DYING\n"
                                                  "   Parameter ID 5=8\n"
                                                  "   Parameter ID 10=3"));
        QVector<int> levels;
        for (const DeviceRecord &device : devices)
            levels += device.rating.level;
        QCOMPARE(levels, (QVector<int>{2, 1, 1, 3, 2}));
        QCOMPARE(devices[3].rating.health, 3);
        QCOMPARE(report.temperatures.size(), 2);
        QCOMPARE(report.temperatures[1].device, 2);
        QCOMPARE(report.temperatures[1].celsius, 20);

        DeviceList unread{devices[1]};
        QCOMPARE(evaluateHealth(unread, Settings()).alertLevel, 0);
        Settings swapped; // a critical drive without a detail has an empty line in its place
        swapped.wTemp = 60;
        swapped.cTemp = 50;
        QCOMPARE(evaluateHealth(devices, swapped).alertText,
                 QStringLiteral("ID: 0 WARM %3\n\nID: 4 DYING\n   Parameter ID 5=8\n   Parameter ID 10=3"));
    }

    /// Only a drive that reported attributes gets new previous values.
    void previousValues()
    {
        DeviceList devices{warmDrive(0, {}, 41), warmDrive(1, {}, 42)};
        devices[0].smart.attributes = {attribute(5, 99)};
        devices[1].smart.fullRead = FullRead::NoAttributes;
        devices[1].smart.previousTemperature = 30;
        keepPreviousValues(devices);
        QCOMPARE(devices[0].smart.previousTemperature, 41);
        QCOMPARE(devices[0].smart.previousAttributes.size(), 1);
        QCOMPARE(devices[0].smart.previousAttributes[0].current, 99U);
        QCOMPARE(devices[1].smart.previousTemperature, 30);
    }
};

QTEST_APPLESS_MAIN(TestHealth)
#include "tst_health.moc"
