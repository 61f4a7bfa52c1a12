// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/inventory.h"
#include "disk/simulated_machine.h"
#include "files.h"
#include "rows.h"

#include <QDir>
#include <QtTest>

namespace {

/// Index: access method.
constexpr const char *kAnswers[] = {"ata", "smart", "ide", "predict"};

QJsonValue member(const QJsonObject &object, const char *key)
{
    return object[QLatin1String(key)];
}

quint64 number(const QJsonObject &object, const char *key)
{
    return quint64(member(object, key).toDouble()); // raw values have 48 bits, exact in a double
}

} // namespace

/// Dumps of real drives, detected and read by each of the access methods.
class TestRealDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void read_data()
    {
        QTest::addColumn<QString>("dump");
        QTest::addColumn<QString>("answer");
        const QDir folder(QStringLiteral(HALVEX_FIXTURES "/drives"));
        const QStringList files = folder.entryList({"*.json"});
        QCOMPARE(files.size(), 52);
        for (const QString &file : files) {
            for (const char *answer : kAnswers)
                row(file.toLatin1() + ' ' + answer, folder.filePath(file), answer);
        }
    }

    void read()
    {
        QFETCH(QString, dump);
        QFETCH(QString, answer);
        const QJsonObject expected = QJsonDocument::fromJson(contentOf(dump)).object();
        const QJsonArray answers{"geometry", "partition", "deviceNumber", "descriptor", answer};
        const SimulatedMachine machine({QJsonObject{{"number", 5}, {"dump", dump}, {"answers", answers}}});
        Inventory inventory(machine.drives());
        const DeviceList devices = inventory.detect();
        QCOMPARE(devices.size(), 1);
        const DeviceRecord &device = devices.at(0);
        QCOMPARE(QLatin1String(kAnswers[int(device.accessMethod)]), answer);
        QCOMPARE(device.model, member(expected, "model").toString());
        QCOMPARE(device.serial, member(expected, "serial").toString());
        QCOMPARE(device.firmware, member(expected, "firmware").toString());
        QCOMPARE(device.capacity, number(expected, "capacity"));
        QCOMPARE(device.smartSupported, 1);

        const QJsonObject data = member(expected, "smart").toObject();
        QCOMPARE(quint64(device.smart.offlineStatus), number(data, "offlineStatus"));
        QCOMPARE(quint64(device.smart.offlineCapability), number(data, "offlineCapability"));
        QCOMPARE(quint64(device.smart.capability), number(data, "smartCapability"));

        compareAttributes(device, member(data, "attributes").toArray());
    }

private:
    static void compareAttributes(const DeviceRecord &device, const QJsonArray &expected)
    {
        QCOMPARE(device.smart.fullRead, FullRead::Attributes);
        QCOMPARE(device.smart.attributes.size(), expected.size());
        const bool hasThresholds = device.accessMethod != AccessMethod::StorageDescriptor;
        for (int i = 0; i < expected.size(); ++i) {
            const AttributeEntry &attribute = device.smart.attributes.at(i);
            const QJsonObject entry = expected.at(i).toObject();
            QCOMPARE(quint64(attribute.id), number(entry, "id"));
            QCOMPARE(quint64(attribute.flags), number(entry, "flags"));
            QCOMPARE(quint64(attribute.current), number(entry, "current"));
            QCOMPARE(quint64(attribute.worst), number(entry, "worst"));
            QCOMPARE(quint64(attribute.threshold), hasThresholds ? number(entry, "threshold") : 0);
            if (attribute.id == 194) {
                // None of these drives counts in tenths or was above 100 degrees.
                QCOMPARE(attribute.raw, number(entry, "raw") & 0xFFFF);
                QCOMPARE(quint64(device.smart.temperature), attribute.raw);
            } else {
                QCOMPARE(attribute.raw, number(entry, "raw"));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestRealDrives)
#include "tst_real_drives.moc"
