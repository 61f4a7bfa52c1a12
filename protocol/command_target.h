// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/service_options.h"
#include "config/settings.h"
#include "disk/device_record.h"
#include "monitor/alert_commands.h"
#include "monitor/alert_mail.h"
#include "monitor/temperature_history.h"
#include "platform/accounts.h"
#include "scan/scan_request.h"
#include "scan/schedule.h"

#include <QString>
#include <QVector>

#include <functional>

/// Reports that an operation has finished. Called exactly once, on the event loop's thread: before the
/// operation returns or in a later turn of the event loop. The console that waits may have gone by then.
using Completion = std::function<void()>;

/// Milliseconds, at least 1.
struct PollIntervals
{
    qint32 smart = 0;
    qint32 freeSpace = 0;
};

/// The operations and data of the daemon that commands use. Event loop's thread only.
class CommandTarget
{
public:
    CommandTarget() = default;
    CommandTarget(const CommandTarget &) = delete;
    CommandTarget &operator=(const CommandTarget &) = delete;
    virtual ~CommandTarget() = default;

    [[nodiscard]] virtual bool isPaused() const = 0;
    [[nodiscard]] virtual bool isDetecting() const = 0;

    [[nodiscard]] virtual const Settings &settings() const = 0;
    /// The running timers keep their intervals until they are started again.
    virtual void setPollIntervals(const PollIntervals &intervals) = 0;
    /// Stores the new settings and evaluates the drives by them. After a change of the port the listener
    /// moves there when a TCP client next disconnects.
    virtual void changeSettings(const ServiceSettings &change) = 0;

    [[nodiscard]] virtual const DeviceList &devices() const = 0;
    [[nodiscard]] virtual QVector<Account> accounts() const = 0;

    /// Starts a new detection; does nothing while paused. `started` is called when it has started.
    virtual void reset(Completion started) = 0;
    /// Reads S.M.A.R.T. data and volumes of every drive again.
    virtual void refresh(Completion finished) = 0;

    [[nodiscard]] virtual bool isScanRunning(int device) const = 0;
    /// Updates the progress of the running scans in devices().
    virtual void publishScanProgress() = 0;
    /// Starts the scan unless the index, the range or the block size is refused or a scan runs already.
    virtual void startScan(const ScanRequest &request) = 0;
    /// Asks the scan to stop. `finished` follows when it has ended, 100 ms later at the latest; at once when
    /// there is no such device.
    virtual void stopScan(int device, Completion finished) = 0;
    /// Changes a drive's schedule and stores it; a device that does not exist changes nothing.
    virtual void changeSchedule(const ScheduleChange &change) = 0;

    virtual void findTemperatures(const HistoryPeriod &period, TemperatureHistory::Found found) = 0;

    /// Starts a test mail; false if a mail is in progress. `finished` is called once with the transcript or
    /// the error text, in a later turn of the event loop.
    virtual bool startMailTest(const MailTest &test, std::function<void(const QString &)> finished) = 0;

    [[nodiscard]] virtual const ServiceOptions &options() const = 0;
    /// Returns the document of X-ALERTS.
    [[nodiscard]] virtual QJsonObject alerts() const = 0;
    /// Returns the number of findings that are acknowledged.
    virtual Result<int> acknowledgeFindings(const FindingName &finding) = 0;
    virtual Result<void> forgetDrive(const QString &drive) = 0;
    /// Tests the alert channels. `finished` is called once, with the outcome of each or the reason why there
    /// is no test, before this returns or later.
    virtual void testAlarms(std::function<void(const Result<QJsonArray> &)> finished) = 0;
};
