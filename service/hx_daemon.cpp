// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/hx_daemon.h"

#include "config/service_options.h"
#include "config/settings.h"
#include "config/settings_store.h"
#include "monitor/health.h"
#include "monitor/temperature_log.h"
#include "platform/platform.h"
#include "scan/schedule.h"
#include "service/logging.h"
#include "service/poll_interval.h"
#include "service/service_context.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kScheduleCheckInterval{20000};
constexpr milliseconds kStoreRetryDelay{20000};

/// How long a scan may take to end before STOPSCAN is answered, so that the next status shows its end.
constexpr milliseconds kStopScanGrace{100};

/// Returns the usual number of consoles, unless descriptors are scarce: then enough of them are left for
/// drives, scans, files and listeners, and for a console that another one is closed for. An accept that fails
/// for lack of a descriptor would be tried again and again.
ConnectionLimits connectionLimits(int descriptorLimit)
{
    constexpr int kOwnDescriptors = 256; // a reader and a scan for each of 99 drives, and what else is open
    ConnectionLimits limits;
    if (descriptorLimit > 0)
        limits.connections = std::clamp(descriptorLimit - kOwnDescriptors, 1, limits.connections);
    return limits;
}

/// A history is sent as one line, after its reply word.
TemperatureHistory::Sizes historySizes()
{
    constexpr qint64 kReplyWordBytes = 16;
    TemperatureHistory::Sizes sizes;
    sizes.maxTextBytes = kMaxTextBytes - kReplyWordBytes;
    return sizes;
}

} // namespace

HxDaemon::HxDaemon(ServiceContext &context, QObject *parent)
    : TcpServer(*this, context.offsets, {context.options.listenAddress, context.options.allowFrom}, parent,
                connectionLimits(context.platform.descriptorLimit))
    , m_context(context)
    , m_workers(context.limits)
    , m_cycle(*context.platform.drives, *context.platform.volumes, m_workers,
              context.options.skipStandbyDrives, {})
    , m_scans(*context.platform.drives, m_workers)
    , m_temperatures(temperatureLogIn(context.settings.programDirectory), historySizes(), m_workers)
    , m_mail({context.options.smtpSecurity, context.options.smtpAuthorities})
    , m_alerts(*context.platform.eventLog, m_mail)
    , m_alarms(context.settings, context.options, *context.platform.eventLog, m_alerts,
               context.settings.programDirectory)
{
    listenOn(quint16(settings().port));
    qCInfo(lcService, "Listening port: %d. isListening = %d", serverPort(), int(isListening()));

    connectTimers();
    connectDrives();
    m_mail.setTimeouts({SmtpTimeouts().connecting, context.options.smtpReplyTimeout});
    connect(&m_mail, &smtp_sender::smtpSenderError, this, &HxDaemon::smtpSenderError);
    connect(&m_mail, &smtp_sender::smtpSenderOk, this, &HxDaemon::smtpSenderOk);

    m_temperatures.prepare();
    resetInfo();
}

void HxDaemon::connectTimers()
{
    connect(&m_smartTimer, &QTimer::timeout, this, &HxDaemon::update_SMART);
    connect(&m_volumeTimer, &QTimer::timeout, this, &HxDaemon::Volume_updateDisplay);
    connect(&m_scheduleTimer, &QTimer::timeout, this, &HxDaemon::checkScanScheduler);
    applyPollIntervals();
    m_scheduleTimer.setInterval(kScheduleCheckInterval);
    m_storeTimer.setSingleShot(true);
    m_storeTimer.setInterval(kStoreRetryDelay);
    connect(&m_storeTimer, &QTimer::timeout, this, &HxDaemon::writeSettings);
}

void HxDaemon::connectDrives()
{
    connect(&m_cycle, &DriveCycle::detected, this, &HxDaemon::get_devices_complette);
    connect(&m_cycle, &DriveCycle::polled, this, [this] { evaluateDrives(true); });
    connect(&m_cycle, &DriveCycle::countDue, this, &HxDaemon::checkFixedDriveCount);
    connect(&m_cycle, &DriveCycle::countChanged, this, &HxDaemon::resetInfo);
    connect(&m_cycle, &DriveCycle::lifeTimeDue, this, &HxDaemon::set_attr9);
    connect(&m_scans, &ScanWorkers::ended, this, &HxDaemon::storeScan);
}

HxDaemon::~HxDaemon()
{
    endWorkers();
    if (m_hasDevices) // before that the settings file alone knows the drives' state
        writeSettings();
}

void HxDaemon::pause()
{
    m_paused = true;
    stopPeriodicTimers();
}

void HxDaemon::resume()
{
    m_paused = false;
    startPeriodicTimers();
}

void HxDaemon::scheduleDriveCount()
{
    m_cycle.scheduleCount();
}

void HxDaemon::startPeriodicTimers()
{
    m_smartTimer.start();
    m_volumeTimer.start();
    m_scheduleTimer.start();
}

void HxDaemon::stopPeriodicTimers()
{
    m_smartTimer.stop();
    m_volumeTimer.stop();
    m_scheduleTimer.stop();
}

/// The new intervals apply when the timers start again.
void HxDaemon::applyPollIntervals()
{
    m_smartTimer.setInterval(timerInterval(settings().smartPollInterval));
    m_volumeTimer.setInterval(timerInterval(settings().freeSpacePollInterval));
}

void HxDaemon::resetInfo()
{
    if (m_paused || m_cycle.isDetecting())
        return;
    stopPeriodicTimers();
    m_scans.abandonAll();
    m_cycle.detect();
}

// A detection that was in progress when the service paused still starts the timers here.
void HxDaemon::get_devices_complette()
{
    m_hasDevices = true;
    if (!m_cycle.devices().isEmpty())
        m_context.store.readDriveState(m_cycle.devices());
    evaluateDrives(true);
    applyPollIntervals();
    startPeriodicTimers();
    qCInfo(lcService, "Collection info finished");
}

void HxDaemon::update_SMART()
{
    m_cycle.pollDrives();
}

void HxDaemon::Volume_updateDisplay()
{
    m_cycle.pollVolumes();
}

void HxDaemon::update_ALL()
{
    refreshInfo();
}

void HxDaemon::refreshInfo()
{
    refresh([] {});
}

void HxDaemon::set_attr9()
{
    m_cycle.detectLifeTimes();
}

void HxDaemon::checkHealth()
{
    evaluateDrives(false);
}

void HxDaemon::evaluateDrives(bool isPoll)
{
    const HealthReport report = evaluateHealth(m_cycle.devices(), settings());
    m_context.settings.alertLevel = report.alertLevel;
    m_temperatures.append(report.temperatures, QDateTime::currentDateTime());
    m_alarms.evaluated(report, m_cycle.devices(), isPoll, !isDetecting());
}

void HxDaemon::checkScanScheduler()
{
    const QDateTime now = QDateTime::currentDateTime();
    for (const ScanRequest &request : dueScans(m_cycle.devices(), m_servedSchedules, now)) {
        const DeviceRecord &device = m_cycle.devices().at(request.device);
        if (m_scans.start(request, device))
            m_servedSchedules.serve(device, now.date());
    }
}

void HxDaemon::checkFixedDriveCount()
{
    m_cycle.countDrives();
}

void HxDaemon::smtpSenderError(const MailRun &run)
{
    qCInfo(lcService).noquote() << "SMTP error:" << failureReason(run);
    endMailRun(run);
}

void HxDaemon::smtpSenderOk(const MailRun &run)
{
    qCInfo(lcService, "SMTP Ok..............");
    endMailRun(run);
}

void HxDaemon::endMailRun(const MailRun &run)
{
    if (const auto reply = std::exchange(m_smtpTestReply, nullptr))
        reply(smtpTestText(run));
    else
        m_alerts.mailEnded(run);
}

bool HxDaemon::startMailTest(const MailTest &test, std::function<void(const QString &)> finished)
{
    if (!m_alerts.startTestMail(test))
        return false;
    m_smtpTestReply = std::move(finished);
    return true;
}

const Settings &HxDaemon::settings() const
{
    return m_context.settings;
}

void HxDaemon::setPollIntervals(const PollIntervals &intervals)
{
    m_context.settings.smartPollInterval = intervals.smart;
    m_context.settings.freeSpacePollInterval = intervals.freeSpace;
}

void HxDaemon::changeSettings(const ServiceSettings &change)
{
    if (change.port != settings().port)
        setRebindPending();
    m_context.settings.set(change);
    writeSettings();
    checkHealth();
}

const DeviceList &HxDaemon::devices() const
{
    return m_cycle.devices();
}

void HxDaemon::publishScanProgress()
{
    m_scans.publish(m_cycle.devices());
}

void HxDaemon::writeSettings()
{
    publishScanProgress();
    if (m_context.store.writeSettings(devices()))
        m_storeTimer.stop();
    else
        m_storeTimer.start();
}

void HxDaemon::reset(Completion started)
{
    resetInfo();
    started();
}

void HxDaemon::refresh(Completion finished)
{
    m_cycle.refresh(std::move(finished));
}

bool HxDaemon::isScanRunning(int device) const
{
    return m_scans.isRunning(device);
}

void HxDaemon::startScan(const ScanRequest &request)
{
    if (request.device >= 0 && request.device < m_cycle.devices().size())
        m_scans.start(request, m_cycle.devices().at(request.device));
}

void HxDaemon::stopScan(int device, Completion finished)
{
    const bool isRunning = m_scans.isRunning(device);
    m_scans.requestStop(device);
    if (isRunning)
        QTimer::singleShot(kStopScanGrace, this, std::move(finished));
    else
        finished();
}

void HxDaemon::changeSchedule(const ScheduleChange &change)
{
    applyScheduleChange(change, m_cycle.devices());
    writeSettings();
}

QVector<Account> HxDaemon::accounts() const
{
    return m_context.platform.accounts->accounts();
}

void HxDaemon::findTemperatures(const HistoryPeriod &period, TemperatureHistory::Found found)
{
    m_temperatures.find(period, std::move(found));
}

void HxDaemon::storeScan(int device, const ScanProgress &result)
{
    applyProgress(result, m_cycle.devices()[device]);
    writeSettings();
}

bool HxDaemon::endWorkers()
{
    const bool hasEnded = m_workers.stopAll();
    m_scans.publish(m_cycle.devices());
    return hasEnded && !HostLookup::isAnyRunning();
}
