// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/attribute_catalogue.h"
#include "rows.h"

#include <QtTest>

class TestAttributeCatalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("description");
        row("misspelt, with a closing tag", 2, "Throughput performance",
            "  Overall (general) throughput performance of a hard "
            "disk drive. If the value of this attribute is "
            "decreasing thereis a high probability that there is a "
            "problem with your disk. <B>(Better RAW Value "
            "MORE)</B></p>");
        row("quotes inside", 197, "Current pending sector count",
            "  Number of \"unstable\" sectors (waiting to be remapped). If the "
            "unstable sector is subsequently "
            "written or read successfully, this value is decreased and the sector "
            "is not remapped. Read errors "
            "on the sector will not remap the sector, it will only be remapped on "
            "a failed write attempt. This "
            "can be problematic to test because cached writes will not remap the "
            "sector, only direct I/O writes "
            "to the disk. <B>(Better RAW Value LESS)");
        row("one leading blank", 6, "Read channel margin",
            " Margin of a channel while reading data. The function of this attribute is not specified.");
        row("one name", 13, "Soft read error rate",
            "  Uncorrected read errors reported to the operating system. If the value is non-zero, you "
            "should "
            "backup your data. <B>(Better RAW Value LESS)");
        row("the same name for another thing", 201, "Soft read error rate",
            "  Number of off-track errors. If non-zero, make a backup. <B>(Better RAW Value LESS)");
        row("misspelt, no mark-up", 191, "G-sense error rate",
            "  Fequency of mistakes as a result of impact loads.");
        row("last row", 250, "Read error retry rate",
            "  Number of errors while reading from a disk. <B>(Better RAW Value LESS)");
        row("not known", 100, "Unknown attribute", " Unknown attribute");
        row("no attribute", 0, "Unknown attribute", " Unknown attribute");
    }

    void texts()
    {
        QFETCH(int, id);
        QTEST(attribute_catalogue::name(id), "name");
        QTEST(attribute_catalogue::description(id), "description");
    }

    void knownIds()
    {
        QVector<int> known;
        for (int id = 0; id <= 256; ++id) {
            if (attribute_catalogue::name(id) != QStringLiteral("Unknown attribute"))
                known << id;
        }
        const QVector<int> expected{1,   2,   3,   4,   5,   6,   7,   8,   9,   10,  11,  12,
                                    13,  190, 191, 192, 193, 194, 195, 196, 197, 198, 199, 200,
                                    201, 202, 203, 204, 205, 206, 207, 208, 209, 220, 221, 222,
                                    223, 224, 225, 226, 227, 228, 230, 231, 240, 250};
        QCOMPARE(known, expected);
    }
};

QTEST_APPLESS_MAIN(TestAttributeCatalogue)
#include "tst_attribute_catalogue.moc"
