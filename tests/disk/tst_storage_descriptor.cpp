// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/storage_descriptor.h"
#include "rows.h"

#include <QtTest>

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

class TestStorageDescriptor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void strings_data()
    {
        QTest::addColumn<quint32>("offset");
        QTest::addColumn<QByteArray>("product");
        row("a string", 48U, QByteArray("Disk"));
        row("absent", 0U, QByteArray());
        row("in the fixed part", 28U, QByteArray());
        row("earliest place", 29U, QByteArray());
        row("no NUL before the end", 56U, QByteArray("last"));
        row("last byte", 59U, QByteArray("t"));
        row("just outside", 60U, QByteArray());
        row("all ones", 0xFFFFFFFFU, QByteArray());
        row("negative as a signed number", 0x80000030U, QByteArray());
    }

    void strings()
    {
        QFETCH(quint32, offset);
        QTEST(storage_descriptor::parse(ByteView(descriptorBytes(offset))).product, "product");
    }

    void model_data()
    {
        QTest::addColumn<QByteArray>("vendor");
        QTest::addColumn<QByteArray>("product");
        QTest::addColumn<QString>("model");
        row("both", QByteArray("ATA     "), QByteArray(" WDC 1000  "), "ATA WDC 1000");
        row("no vendor", QByteArray(), QByteArray("WDC 1000  "), "WDC 1000");
        row("nothing", QByteArray(), QByteArray("   "), "");
    }

    void model()
    {
        QFETCH(QByteArray, vendor);
        QFETCH(QByteArray, product);
        StorageDescriptor descriptor;
        descriptor.vendor = vendor;
        descriptor.product = product;
        QTEST(descriptor.model(), "model");
    }
};

QTEST_APPLESS_MAIN(TestStorageDescriptor)
#include "tst_storage_descriptor.moc"
