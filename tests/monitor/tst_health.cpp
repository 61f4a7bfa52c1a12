// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/health.h"
#include "rows.h"

using Attributes = QVector<AttributeEntry>;
Q_DECLARE_METATYPE(Attributes)

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

} // namespace

class TestHealth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ratesAttributes_data()
    {
        QTest::addColumn<Attributes>("attributes");
        QTest::addColumn<int>("level");
        QTest::addColumn<int>("health");
        QTest::addColumn<QString>("detail");
        const QString none;
        row("no attributes", Attributes{}, 1, 100, none);
        row("scale of 253, best value", Attributes{attribute(1, 253)}, 1, 100, none);
        row("201 of 253", Attributes{attribute(1, 201)}, 1, 79, none);
        row("200 of 200", Attributes{attribute(1, 200)}, 1, 100, none);
        row("101 of 200", Attributes{attribute(1, 101)}, 1, 50, none);
        row("100 of 100", Attributes{attribute(1, 100)}, 1, 100, none);
        row("beyond every scale", Attributes{attribute(1, 255)}, 1, 100, none);
        row("worst of several values", Attributes{attribute(1, 90), attribute(2, 60), attribute(3, 80)}, 1,
            60, none);
        row("one above the threshold", Attributes{attribute(5, 37, 36)}, 1, 37, none);
        row("at the threshold", Attributes{attribute(5, 36, 36)}, 2, 36, "   Parameter ID 5=36\n");
        row("value 11 → fine", Attributes{attribute(5, 11)}, 1, 11, none);
        row("value 10 → warning", Attributes{attribute(5, 10)}, 2, 10, "   Parameter ID 5=10\n");
        row("value 6 → warning", Attributes{attribute(5, 6)}, 2, 6, "   Parameter ID 5=6\n");
        row("value 5 → critical", Attributes{attribute(5, 5)}, 3, 5, "   Parameter ID 5=5\n");
        row("critical stays", Attributes{attribute(5, 1), attribute(7, 30, 30)}, 3, 1,
            "   Parameter ID 5=1\n   Parameter ID 7=30\n");
        row("not pre-failure", Attributes{attribute(5, 1, 0, 1)}, 1, 100, none);
    }

    void ratesAttributes()
    {
        QFETCH(Attributes, attributes);
        DeviceRecord device;
        device.smart.attributes = attributes;
        const DriveRating rating = rateDrive(device, Settings());
        QTEST(rating.level, "level");
        QTEST(rating.health, "health");
        QTEST(rating.detail, "detail");
    }

    void ratesTemperature_data()
    {
        QTest::addColumn<int>("celsius");
        QTest::addColumn<int>("wTemp");
        QTest::addColumn<int>("cTemp");
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("detail");
        const QString none;
        row("below the warning limit → level 1", 54, 55, 65, 1, none);
        row("at the warning limit → level 2", 55, 55, 65, 2, "   Temperature=55 Celsius (131 Fahrengeit)\n");
        row("below the critical limit → level 2", 64, 55, 65, 2,
            "   Temperature=64 Celsius (147 Fahrengeit)\n");
        row("at the critical limit → level 3", 65, 55, 65, 3, "   Temperature=65 Celsius (149 Fahrengeit)\n");
        row("Fahrenheit truncates", 37, 1, 65, 2, "   Temperature=37 Celsius (98 Fahrengeit)\n");
        row("temperature beyond an int → level 3", 2147483647, 55, 65, 3,
            "   Temperature=2147483647 Celsius (3865470596 Fahrengeit)\n");
        row("between swapped limits → level 3", 50, 60, 40, 3, none);
    }

    void ratesTemperature()
    {
        QFETCH(int, celsius);
        QFETCH(int, wTemp);
        QFETCH(int, cTemp);
        Settings settings;
        settings.wTemp = wTemp;
        settings.cTemp = cTemp;
        const DriveRating rating = rateDrive(warmDrive(0, QString(), celsius), settings);
        QTEST(rating.level, "level");
        QTEST(rating.detail, "detail");
    }

    void driveWithoutTemperatureIsNotAtZeroDegrees()
    {
        Settings settings;
        settings.wTemp = 0;
        QCOMPARE(rateDrive(drive(0, {}), settings).level, level::kFine);
    }

    /// Two drives make one alarm of two blocks. Drives that were not read or are not monitored are not rated.
    /// A model that contains a placeholder is reported unchanged.
    void evaluates()
    {
        DeviceList devices{warmDrive(0, "WARM %3", 55), warmDrive(1, "not read", 90),
                           warmDrive(2, "FINE", 20), drive(4, "DYING"), warmDrive(5, "not watched", 90)};
        devices[1].smart.fullRead = FullRead::NoAttributes;
        devices[1].rating.level = 1;
        devices[3].smart.attributes = {attribute(5, 8), attribute(9, 90, 0, 1), attribute(10, 3)};
        devices[4].monitored = 0;
        devices[4].rating.level = 2;

        const HealthReport report = evaluateHealth(devices, Settings());

        QCOMPARE(report.alertLevel, 3);
        QCOMPARE(report.alertText, "ID: 0 WARM %3\n"
                                   "   Temperature=55 Celsius (131 Fahrengeit)\n"
                                   "ID: 4 DYING\n"
                                   "   Parameter ID 5=8\n"
                                   "   Parameter ID 10=3");
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
                 "ID: 0 WARM %3\n\nID: 4 DYING\n   Parameter ID 5=8\n   Parameter ID 10=3");
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
