// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/fake_service_key.h"
#include "config/service_values.h"
#include "rows.h"

Q_DECLARE_METATYPE(KeyValue)

class TestServiceValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reading_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<KeyValue>("value");
        QTest::addColumn<QString>("read"); // port, S.M.A.R.T. and free-space interval, directory
        const auto number = [](quint32 value) { return KeyValue(value); };
        const auto text = [](const char *value) { return KeyValue(QString::fromLatin1(value)); };
        row("a port is taken unchecked", "Port", number(70000), "70000 180000 300000 C:/");
        row("a port stored as text", "Port", text("6000"), "5000 180000 300000 C:/");
        row("shortest smart interval", "SMARTPollInterval", number(1), "5000 1000 300000 C:/");
        row("longest smart interval", "SMARTPollInterval", number(360000), "5000 360000000 300000 C:/");
        row("smart interval of zero", "SMARTPollInterval", number(0), "5000 180000 300000 C:/");
        row("smart interval too long", "SMARTPollInterval", number(360001), "5000 180000 300000 C:/");
        row("free-space interval", "FreeSpacePollInterval", number(60), "5000 180000 60000 C:/");
        row("windows path keeps its backslash", "ImagePath", text("C:\\Halvex\\HalvexLocalService.exe"),
            "5000 180000 300000 C:\\Halvex\\");
        row("linux path", "ImagePath", text("/var/lib/halvex/halvex-monitor-service"),
            "5000 180000 300000 /var/lib/halvex/");
        row("shorter name eats the directory", "ImagePath", text("C:\\Halvex\\Service\\service.exe"),
            "5000 180000 300000 C:\\Halv");
        row("path shorter than the name", "ImagePath", text("service.exe"), "5000 180000 300000 ");
        row("path as a number", "ImagePath", number(1), "5000 180000 300000 C:/");
        row("text after the NUL", "ImagePath", KeyValue("D:\\HalvexLocalService.exe\0junk"),
            "5000 180000 300000 D:\\");
        row("path longer than is read", "ImagePath", KeyValue(QString(1024, u'x')), "5000 180000 300000 C:/");
    }

    void reading()
    {
        QFETCH(QString, name);
        QFETCH(KeyValue, value);
        FakeServiceKey key;
        key.values[name] = value;
        Settings settings;
        QVERIFY(readServiceValues(key, settings));
        const QString numbers = QString("%1 %2 %3 ")
                                    .arg(settings.port)
                                    .arg(settings.smartPollInterval)
                                    .arg(settings.freeSpacePollInterval);
        QTEST(numbers + settings.programDirectory, "read");
    }

    void writing()
    {
        FakeServiceKey key;
        Settings settings;
        settings.port = 5001;
        settings.smartPollInterval = 61999; // the fraction of a second is dropped
        settings.freeSpacePollInterval = 999;
        QVERIFY(writeServiceValues(key, settings));
        const QMap<QString, KeyValue> expected{
            {"Port", 5001U},
            {"SMARTPollInterval", 61U},
            {"FreeSpacePollInterval", 0U},
        };
        QVERIFY(key.values == expected);
    }
};

QTEST_APPLESS_MAIN(TestServiceValues)
#include "tst_service_values.moc"
