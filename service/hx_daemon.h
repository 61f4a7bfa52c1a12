// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/workers.h"
#include "monitor/alarms.h"
#include "monitor/alert_delivery.h"
#include "monitor/smtp_sender.h"
#include "monitor/temperature_history.h"
#include "protocol/command_target.h"
#include "protocol/tcp_server.h"
#include "scan/scan_progress.h"
#include "scan/scan_workers.h"
#include "scan/schedule.h"
#include "service/drive_cycle.h"
#include "service/service_context.h"

#include <QTimer>

#include <functional>

/// The service's centre: owns the inventory, the scan workers, the mail sender, the periodic timers and the
/// two state flags, and answers what the connections ask. Lives on the event loop's thread.
class HxDaemon final : public TcpServer, private CommandTarget
{
    Q_OBJECT

public:
    /// Listens on the settings' port and starts the first drive detection. Check isListening() afterwards.
    HxDaemon(ServiceContext &context, QObject *parent);

    /// Ends the workers, then writes the settings.
    ~HxDaemon() override;

    void pause();
    void resume();

    /// Counts the drives 500 ms from now, and detects them again if one came, went or was swapped. Further
    /// calls in the meantime change nothing.
    void scheduleDriveCount();

    /// Ends all work on drives and volumes and waits for it, at most 5 s. Returns false if one hangs in a
    /// request that cannot be cancelled, or if a name lookup is in progress: the process must then end
    /// without destroying the drives and static objects.
    bool endWorkers();

public Q_SLOTS:
    void get_devices_complette();
    void update_SMART();
    void Volume_updateDisplay();
    void update_ALL();
    void set_attr9();
    void refreshInfo();
    void resetInfo();
    void checkHealth();
    void smtpSenderError(const MailRun &run);
    void smtpSenderOk(const MailRun &run);
    void checkScanScheduler();
    void checkFixedDriveCount();

private:
    [[nodiscard]] bool isPaused() const override { return m_paused; }
    [[nodiscard]] bool isDetecting() const override { return m_cycle.isDetecting(); }
    [[nodiscard]] const Settings &settings() const override;
    [[nodiscard]] const DeviceList &devices() const override;
    [[nodiscard]] bool isScanRunning(int device) const override;
    void reset(Completion started) override;
    void refresh(Completion finished) override;
    void setPollIntervals(const PollIntervals &intervals) override;
    void changeSettings(const ServiceSettings &change) override;
    void publishScanProgress() override;
    void startScan(const ScanRequest &request) override;
    void stopScan(int device, Completion finished) override;
    void changeSchedule(const ScheduleChange &change) override;
    [[nodiscard]] QVector<Account> accounts() const override;
    void findTemperatures(const HistoryPeriod &period, TemperatureHistory::Found found) override;
    bool startMailTest(const MailTest &test, std::function<void(const QString &)> finished) override;
    [[nodiscard]] const ServiceOptions &options() const override { return m_context.options; }
    [[nodiscard]] QJsonObject alerts() const override { return m_alarms.document(); }
    Result<int> acknowledgeFindings(const FindingName &finding) override
    {
        return m_alarms.acknowledge(finding);
    }
    Result<void> forgetDrive(const QString &drive) override { return m_alarms.forget(drive); }
    void testAlarms(std::function<void(const Result<QJsonArray> &)> finished) override
    {
        m_alarms.test(finished);
    }

    void connectTimers();
    void connectDrives();
    void applyPollIntervals();
    void startPeriodicTimers();
    void stopPeriodicTimers();
    void storeScan(int device, const ScanProgress &result);
    void writeSettings();
    void endMailRun(const MailRun &run);
    /// Rates the drives after a poll, or after a change of settings.
    void evaluateDrives(bool isPoll);

    ServiceContext &m_context;
    bool m_paused = false;
    QTimer m_smartTimer;
    QTimer m_volumeTimer;
    QTimer m_scheduleTimer;
    QTimer m_storeTimer; ///< repeats a write that failed
    Workers m_workers;
    DriveCycle m_cycle;
    ScanWorkers m_scans;
    ServedSchedules m_servedSchedules;
    TemperatureHistory m_temperatures;
    bool m_hasDevices = false; ///< since the first detection has ended
    smtp_sender m_mail;
    AlertDelivery m_alerts;
    Alarms m_alarms;
    std::function<void(const QString &)> m_smtpTestReply; ///< set while a test mail is being sent
};
