// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/fake_service_key.h"
#include "config/service_values.h"
#include "rows.h"

#include <QtTest>

Q_DECLARE_METATYPE(KeyValue)

class TestServiceValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reading_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<KeyValue>("value");
        QTest::addColumn<quint32>("port");
        QTest::addColumn<qint64>("smart");
        QTest::addColumn<qint64>("freeSpace");
        QTest::addColumn<QString>("directory");

        const auto row = [](const char *title, const char *name, const KeyValue &value, quint32 port = 5000,
                            qint64 smart = 180000, qint64 freeSpace = 300000, const char *directory = "C:/") {
            QTest::newRow(title) << QString::fromLatin1(name) << value << port << smart << freeSpace
                                 << QString::fromLatin1(directory);
        };
        const auto text = [](const char *path) { return KeyValue(QString::fromLatin1(path)); };
        row("a port is taken unchecked", "Port", 70000U, 70000);
        row("a port stored as text", "Port", text("6000"));
        row("shortest smart interval", "SMARTPollInterval", 1U, 5000, 1000);
        row("longest smart interval", "SMARTPollInterval", 360000U, 5000, 360000000);
        row("smart interval of zero", "SMARTPollInterval", 0U);
        row("smart interval too long", "SMARTPollInterval", 360001U);
        row("free-space interval", "FreeSpacePollInterval", 60U, 5000, 180000, 60000);
        row("free-space interval too long", "FreeSpacePollInterval", 360001U);
        row("windows path keeps its backslash", "ImagePath", text("C:\\Halvex\\HalvexLocalService.exe"), 5000,
            180000, 300000, "C:\\Halvex\\");
        row("linux path", "ImagePath", text("/var/lib/halvex/halvex-monitor-service"), 5000, 180000, 300000,
            "/var/lib/halvex/");
        row("shorter name eats the directory", "ImagePath", text("C:\\Halvex\\Service\\service.exe"), 5000,
            180000, 300000, "C:\\Halv");
        row("path shorter than the name", "ImagePath", text("service.exe"), 5000, 180000, 300000, "");
        row("path as a number", "ImagePath", 1U);
        row("text after the NUL", "ImagePath", QStringLiteral("D:\\HalvexLocalService.exe\0junk"), 5000,
            180000, 300000, "D:\\");
        row("path longer than is read", "ImagePath", QString(1024, u'x'));
    }

    void reading()
    {
        QFETCH(QString, name);
        QFETCH(KeyValue, value);
        FakeServiceKey key;
        key.values[name] = value;
        Settings settings;
        QVERIFY(readServiceValues(key, settings));
        QTEST(settings.port, "port");
        QTEST(settings.smartPollInterval, "smart");
        QTEST(settings.freeSpacePollInterval, "freeSpace");
        QTEST(settings.programDirectory, "directory");
    }

    void missingKeyReadsNothing()
    {
        FakeServiceKey key;
        key.values[QStringLiteral("Port")] = 6000U;
        key.exists = false;
        Settings settings;
        QVERIFY(!readServiceValues(key, settings));
        QCOMPARE(settings.port, 5000U);
        QVERIFY(!writeServiceValues(key, settings));
    }

    void writing()
    {
        FakeServiceKey key;
        const KeyValue imagePath = QStringLiteral("C:\\Halvex\\HalvexLocalService.exe");
        key.values[QStringLiteral("ImagePath")] = imagePath;
        Settings settings;
        settings.port = 5001;
        settings.smartPollInterval = 61999; // the fraction of a second is dropped
        settings.freeSpacePollInterval = 999;
        QVERIFY(writeServiceValues(key, settings));
        const QMap<QString, KeyValue> expected{
            {QStringLiteral("Port"), 5001U},
            {QStringLiteral("SMARTPollInterval"), 61U},
            {QStringLiteral("FreeSpacePollInterval"), 0U},
            {QStringLiteral("ImagePath"), imagePath},
        };
        QVERIFY(key.values == expected);
    }
};

QTEST_APPLESS_MAIN(TestServiceValues)
#include "tst_service_values.moc"
