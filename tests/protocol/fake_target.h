// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "files.h"
#include "protocol/command_target.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <utility>

/// A daemon without drives: holds what a test sets and records the operations that are started.
class FakeTarget : public CommandTarget
{
public:
    bool paused = false;
    bool detecting = false;
    Settings settingsRecord;
    ServiceOptions serviceOptions;
    DeviceList deviceList;
    QVector<Account> accountList;
    int runningScan = -1; ///< device index
    bool startsMailTest = true;
    std::function<void(const QString &)> mailTestFinished;
    QStringList calls;
    bool operationsTakeTime = false;
    Completion unfinished; ///< completes the last operation that takes time

    /// Makes the temperature log consist of `records`.
    void setTemperatures(const QByteArray &records) { writeFile(m_logFolder.filePath("log"), records); }

    [[nodiscard]] bool isPaused() const override { return paused; }
    [[nodiscard]] bool isDetecting() const override { return detecting; }
    [[nodiscard]] const Settings &settings() const override { return settingsRecord; }
    [[nodiscard]] const DeviceList &devices() const override { return deviceList; }
    [[nodiscard]] bool isScanRunning(int device) const override { return device == runningScan; }
    [[nodiscard]] QVector<Account> accounts() const override { return accountList; }

    void setPollIntervals(const PollIntervals &intervals) override
    {
        settingsRecord.smartPollInterval = intervals.smart;
        settingsRecord.freeSpacePollInterval = intervals.freeSpace;
    }

    void changeSettings(const ServiceSettings &change) override
    {
        calls << "changeSettings";
        settingsRecord.set(change);
    }

    void changeSchedule(const ScheduleChange &change) override
    {
        calls << "changeSchedule";
        applyScheduleChange(change, deviceList);
    }

    void publishScanProgress() override {}
    void reset(Completion started) override { finish("reset", started); }
    void refresh(Completion finished) override { finish("refresh", finished); }

    void startScan(const ScanRequest &request) override
    {
        calls << QString::asprintf("startScan %d %d %lld %lld", request.device, request.blockSize,
                                   request.firstSector, request.lastSector);
    }

    void stopScan(int device, Completion finished) override
    {
        finish(QString("stopScan %1").arg(device), finished);
    }

    void findTemperatures(const HistoryPeriod &period, TemperatureHistory::Found found) override
    {
        m_temperatures.find(period, std::move(found));
    }

    bool startMailTest(const MailTest &test, std::function<void(const QString &)> finished) override
    {
        calls << "startMailTest " + test.text;
        mailTestFinished = std::move(finished);
        return startsMailTest;
    }
    [[nodiscard]] const ServiceOptions &options() const override { return serviceOptions; }
    [[nodiscard]] QJsonObject alerts() const override { return {{"policy", "every"}}; }
    Result<int> acknowledgeFindings(const FindingName &finding) override
    {
        calls << "acknowledge " + finding.drive + finding.kind + finding.id;
        if (finding.drive.isEmpty())
            return Error{"reason"};
        return 2;
    }
    Result<void> forgetDrive(const QString &drive) override
    {
        calls << "forget " + drive;
        return {};
    }
    void testAlarms(std::function<void(const Result<QJsonArray> &)> finished) override
    {
        finished(QJsonArray());
    }

private:
    void finish(const QString &call, const Completion &finished)
    {
        calls << call;
        if (operationsTakeTime)
            unfinished = finished;
        else
            finished();
    }

    QTemporaryDir m_logFolder;
    Workers m_workers;
    TemperatureHistory m_temperatures{m_logFolder.filePath("log"), {}, m_workers};
};
