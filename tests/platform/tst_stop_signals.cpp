// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/stop_signals.h"

#include <QTest>

#include <csignal>

class TestStopSignals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalsReachTheEventLoop()
    {
        catchStopSignals();
        std::raise(SIGTERM); // before a watcher exists
        int requests = 0;
        std::unique_ptr<QObject> watcher = watchStopSignals([&requests] { ++requests; });
        QTRY_COMPARE(requests, 1);
        std::raise(SIGINT);
        QTRY_COMPARE(requests, 2);
        watcher.reset();
        std::raise(SIGTERM); // during the shutdown: must not end the process
        QCOMPARE(requests, 2);
    }
};

QTEST_GUILESS_MAIN(TestStopSignals)
#include "tst_stop_signals.moc"
