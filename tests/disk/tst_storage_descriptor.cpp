// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/storage_descriptor.h"

#include <QtTest>

class TestStorageDescriptor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void strings_data();
    void strings();
    void model_data();
    void model();
};

namespace {

/// A descriptor of 60 bytes with "Disk" at 48 and "last" up to its end, whose offset of the product is
/// `offset`.
QByteArray descriptorBytes(quint32 offset)
{
    QByteArray bytes(60, '\0');
    bytes.replace(48, 4, "Disk");
    bytes.replace(56, 4, "last");
    qToLittleEndian(offset, bytes.data() + 16);
    return bytes;
}

} // namespace

void TestStorageDescriptor::strings_data()
{
    QTest::addColumn<quint32>("offset");
    QTest::addColumn<QByteArray>("product");
    QTest::newRow("a string") << 48U << QByteArray("Disk");
    QTest::newRow("absent") << 0U << QByteArray();
    QTest::newRow("in the fixed part") << 28U << QByteArray();
    QTest::newRow("earliest place") << 29U << QByteArray();
    QTest::newRow("no NUL before the end") << 56U << QByteArray("last");
    QTest::newRow("last byte") << 59U << QByteArray("t");
    QTest::newRow("just outside") << 60U << QByteArray();
    QTest::newRow("all ones") << 0xFFFFFFFFU << QByteArray();
    QTest::newRow("negative as a signed number") << 0x80000030U << QByteArray();
}

void TestStorageDescriptor::strings()
{
    QFETCH(quint32, offset);
    QTEST(storage_descriptor::parse(ByteView(descriptorBytes(offset))).product, "product");
}

void TestStorageDescriptor::model_data()
{
    QTest::addColumn<QByteArray>("vendor");
    QTest::addColumn<QByteArray>("product");
    QTest::addColumn<QString>("model");
    QTest::newRow("both") << QByteArray("ATA     ") << QByteArray(" WDC 1000  ") << "ATA WDC 1000";
    QTest::newRow("no vendor") << QByteArray() << QByteArray("WDC 1000  ") << "WDC 1000";
    QTest::newRow("nothing") << QByteArray() << QByteArray("   ") << "";
}

void TestStorageDescriptor::model()
{
    QFETCH(QByteArray, vendor);
    QFETCH(QByteArray, product);
    StorageDescriptor descriptor;
    descriptor.vendor = vendor;
    descriptor.product = product;
    QTEST(descriptor.model(), "model");
}

QTEST_APPLESS_MAIN(TestStorageDescriptor)
#include "tst_storage_descriptor.moc"
