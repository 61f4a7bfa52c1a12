// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "disk/device_record.h"
#include "platform/accounts.h"
#include "scan/scan_request.h"

#include <QString>
#include <QVector>

#include <functional>

/// Finds a long text: takes its time, touches nothing of the daemon's, and may be called on any thread.
using LongText = std::function<QString()>;

/// What the connections and the dispatcher need of the daemon. Event loop's thread only.
class CommandTarget
{
public:
    CommandTarget() = default;
    CommandTarget(const CommandTarget &) = delete;
    CommandTarget &operator=(const CommandTarget &) = delete;
    virtual ~CommandTarget() = default;

    [[nodiscard]] virtual bool isPaused() const = 0;
    [[nodiscard]] virtual bool isDetecting() const = 0;

    virtual Settings &settings() = 0;

    /// The device list with the scan state of this moment.
    virtual const DeviceList &devices() = 0;
    [[nodiscard]] virtual bool isScanRunning(int device) const = 0;

    virtual void resetInfo() = 0;
    virtual void refreshInfo() = 0;
    virtual void checkHealth() = 0;
    virtual void writeSettings() = 0;

    /// The port has changed: the listener moves to it when a TCP client next disconnects.
    virtual void requestRebind() = 0;

    /// Starts the scan unless the index, the range or the block size is refused or a scan runs already.
    virtual void startScan(const ScanRequest &request) = 0;
    /// Asks the scan to stop; false when there is no such device.
    virtual bool stopScan(int device) = 0;
    /// Takes a schedule payload; one that does not fit changes nothing.
    virtual void setScanSchedule(const QString &payload) = 0;

    virtual QVector<Account> accounts() = 0;

    /// Reads the records of the temperature log between two moments of twelve digits each, as they stand in
    /// it when it is called.
    virtual LongText temperatureHistory(const QString &from, const QString &to) = 0;

    /// Starts a test mail from the parameters of SMTPTEST; false when they do not fit or a mail is under
    /// way. `finished` is called once with the transcript or the error text, in a later turn of the event
    /// loop; it may be called, or dropped, after the console has gone.
    virtual bool startSmtpTest(const QString &parameters, std::function<void(const QString &)> finished) = 0;
};
