// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/command_target.h"

#include <QSemaphore>
#include <QStringList>

#include <atomic>
#include <functional>
#include <utility>

/// A daemon without drives: holds what it is given and writes down what it is asked to do.
class FakeTarget : public CommandTarget
{
public:
    bool paused = false;
    bool detecting = false;
    Settings settingsRecord;
    DeviceList deviceList;
    QVector<Account> accountList;
    int runningScan = -1; ///< device index
    bool takesTestMail = true;
    std::function<void(const QString &)> testMailFinished;
    QStringList calls;
    int historiesAsked = 0;
    QSemaphore historyGate{1}; ///< a history is not found while somebody holds this
    std::atomic_bool historiesOverlap = false;

    [[nodiscard]] bool isPaused() const override { return paused; }
    [[nodiscard]] bool isDetecting() const override { return detecting; }
    Settings &settings() override { return settingsRecord; }
    const DeviceList &devices() override { return deviceList; }
    [[nodiscard]] bool isScanRunning(int device) const override { return device == runningScan; }
    QVector<Account> accounts() override { return accountList; }

    void resetInfo() override { calls << QStringLiteral("resetInfo"); }
    void refreshInfo() override { calls << QStringLiteral("refreshInfo"); }
    void checkHealth() override { calls << QStringLiteral("checkHealth"); }
    void writeSettings() override { calls << QStringLiteral("writeSettings"); }
    void requestRebind() override { calls << QStringLiteral("requestRebind"); }
    void setScanSchedule(const QString &payload) override
    {
        calls << QStringLiteral("setScanSchedule ") + payload;
    }

    void startScan(const ScanRequest &request) override
    {
        calls << QString::asprintf("startScan %d %d %lld %lld", request.device, request.blockSize,
                                   request.firstSector, request.lastSector);
    }

    bool stopScan(int device) override
    {
        calls << QStringLiteral("stopScan %1").arg(device);
        return device >= 0 && device < deviceList.size();
    }

    LongText temperatureHistory(const QString &from, const QString &to) override
    {
        ++historiesAsked;
        return [this, from, to] {
            if (m_historiesUnderWay++ > 0)
                historiesOverlap = true;
            historyGate.acquire();
            historyGate.release();
            --m_historiesUnderWay;
            return QStringLiteral("<%1><%2>").arg(from, to);
        };
    }

    bool startSmtpTest(const QString &parameters, std::function<void(const QString &)> finished) override
    {
        calls << QStringLiteral("startSmtpTest ") + parameters;
        testMailFinished = std::move(finished);
        return takesTestMail;
    }

private:
    std::atomic_int m_historiesUnderWay = 0;
};
