// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/simulated_platform.h"

#include "platform/drive_requests.h"
#include "platform/platform.h"

#include <QtTest>

using namespace drive_request;

class TestSimulatedPlatform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void demoMachine();
};

void TestSimulatedPlatform::demoMachine()
{
    Platform platform;
    QCOMPARE(simulateMachine(platform, QStringLiteral("demo")).value_or(QString()), QString());
    int predictOnly = 0;
    int drives = 0;
    int longSectors = 0;
    for (int number = 0; number < 99; ++number) {
        const OpenReply opened = platform.drives->open(physicalDrivePath(number));
        if (!opened.drive)
            continue;
        ++drives;
        QByteArray output(4096, '\0');
        QVERIFY(opened.drive->control(kDriveGeometry, ByteView(), MutableBytes(output)).ok());
        longSectors += ByteView(output).le32(geometry::kBytesPerSector) == 4096 ? 1 : 0;
        QVERIFY(opened.drive->control(drive_request::kPredictFailure, ByteView(), MutableBytes(output)).ok());
        const ControlReply ata = opened.drive->control(kAtaPassThrough, ByteView(), MutableBytes(output));
        predictOnly += ata.error == system_error::kNotSupported ? 1 : 0;
    }
    QCOMPARE(drives, 6);
    QCOMPARE(predictOnly, 1);
    QCOMPARE(longSectors, 1);
    QCOMPARE(platform.volumes->volumeNames().size(), 3);
    QCOMPARE(platform.accounts->accounts().size(), 3);
}

QTEST_GUILESS_MAIN(TestSimulatedPlatform)
#include "tst_simulated_platform.moc"
