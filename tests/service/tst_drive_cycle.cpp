// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/drive_cycle.h"

#include "disk/simulated_machine.h"

#include <QSignalSpy>
#include <QtTest>

using namespace std::chrono_literals;

class TestDriveCycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The timer of one detection must not end in the next one.
    void lifeTimeTimerRestarts()
    {
        const SimulatedMachine machine({QJsonObject{{"number", 0}, {"identifyDelayMs", 400}}});
        Workers workers;
        DriveCycle cycle(machine.drives(), machine.volumes(), workers, false, {1ms, 200ms});
        const QSignalSpy due(&cycle, &DriveCycle::lifeTimeDue);
        int detections = 0;
        connect(&cycle, &DriveCycle::detected, this, [&] {
            QCOMPARE(due.count(), 0);
            if (++detections == 1)
                QTimer::singleShot(0, this, [&] { cycle.detect(); });
        });
        cycle.detect();
        QTRY_COMPARE_WITH_TIMEOUT(detections, 2, 60000);
        QTRY_COMPARE_WITH_TIMEOUT(due.count(), 1, 60000);
    }
};

QTEST_GUILESS_MAIN(TestDriveCycle)
#include "tst_drive_cycle.moc"
