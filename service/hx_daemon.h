// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/ata_smart.h"
#include "monitor/smtp_sender.h"
#include "protocol/command_target.h"
#include "protocol/tcp_server.h"
#include "scan/scan_workers.h"

#include <QTimer>

#include <functional>

struct ServiceContext;

/// The service's centre: owns the inventory, the scan workers, the mail sender, the periodic timers and the
/// two state flags, and answers what the connections ask. Lives on the event loop's thread.
class HxDaemon final : public TcpServer, private CommandTarget
{
    Q_OBJECT

public:
    /// Listens on the settings' port (isListening() tells) and starts the first drive detection.
    HxDaemon(ServiceContext &context, QObject *parent);

    /// Ends the workers, then writes the settings.
    ~HxDaemon() override;

    void pause();
    void resume();

    /// Has the drives counted 500 ms from now, and detected again if their number has changed. Asking again
    /// in the meantime changes nothing.
    void scheduleDriveCount();

    /// Ends the scans and readers and waits for them, with a limit. False when one hangs in a request that
    /// cannot be cut off: the process must then leave without destroying the drives.
    bool endWorkers();

public Q_SLOTS:
    void get_devices_complette();
    void update_SMART();
    void Volume_updateDisplay();
    void update_ALL();
    void set_attr9();
    void refreshInfo() override;
    void resetInfo() override;
    void checkHealth() override;
    void smtpSenderError(const QString &text);
    void smtpSenderOk(const QString &text);
    void checkScanScheduler();
    void checkFixedDriveCount();

private:
    [[nodiscard]] bool isPaused() const override { return m_paused; }
    [[nodiscard]] bool isDetecting() const override { return m_detecting; }
    Settings &settings() override;
    const DeviceList &devices() override;
    [[nodiscard]] bool isScanRunning(int device) const override;
    void writeSettings() override;
    void requestRebind() override;
    void startScan(const ScanRequest &request) override;
    bool stopScan(int device) override;
    void setScanSchedule(const QString &payload) override;
    QVector<Account> accounts() override;
    LongText temperatureHistory(const QString &from, const QString &to) override;
    bool startSmtpTest(const QString &parameters, std::function<void(const QString &)> reply) override;

    void startPeriodicTimers();
    void stopPeriodicTimers();
    void refreshVolumes();
    void createScanWorkers();
    void endScans();
    [[nodiscard]] QString temperatureLogPath() const;
    void answerSmtpTest(const QString &text);

    ServiceContext &m_context;
    bool m_paused = false;
    bool m_detecting = true;
    QTimer m_smartTimer;
    QTimer m_volumeTimer;
    QTimer m_scheduleTimer;
    QTimer m_driveCountTimer;
    ATA_Smart m_inventory;
    ScanWorkers m_scans;
    bool m_hasLeftScans = false;
    smtp_sender m_mail;
    std::function<void(const QString &)> m_smtpTestReply; ///< set while a test mail is under way
};
