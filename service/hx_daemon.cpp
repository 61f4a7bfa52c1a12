// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/hx_daemon.h"

#include "config/service_options.h"
#include "config/settings.h"
#include "config/settings_store.h"
#include "disk/life_time.h"
#include "disk/volume_enumeration.h"
#include "monitor/health.h"
#include "monitor/temperature_log.h"
#include "platform/platform.h"
#include "scan/schedule.h"
#include "service/logging.h"
#include "service/service_context.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <utility>

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kScheduleCheckInterval{20000};
constexpr milliseconds kDriveCountDelay{500};
constexpr milliseconds kStoreRetryDelay{20000};
constexpr milliseconds kLifeTimeDelay{130000};

/// How long a scan may take to end before STOPSCAN is answered, so that the next status shows its end.
constexpr milliseconds kStopScanGrace{100};

/// Returns a poll interval as a timer takes it. One below 1 ms would make the event loop spin.
milliseconds timerInterval(qint64 interval)
{
    constexpr milliseconds kTooShort{1000};
    return interval < 1 ? kTooShort
                        : milliseconds(std::min<qint64>(interval, std::numeric_limits<qint32>::max()));
}

/// Calls `done` at the `count`th call.
std::function<void()> after(int count, std::function<void()> done)
{
    return [left = std::make_shared<int>(count), done = std::move(done)] {
        if (--*left == 0)
            done();
    };
}

/// The usual number of consoles, unless descriptors are scarce: then enough of them are left for drives,
/// scans, files and listeners, and for a console that another one is closed for. An accept that fails for
/// lack of a descriptor would be tried again and again.
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
    , m_inventory(*context.platform.drives, m_workers, context.options.skipStandbyDrives)
    , m_volumes(*context.platform.volumes, m_workers)
    , m_scans(*context.platform.drives, m_workers)
    , m_temperatures(temperatureLogIn(context.settings.programDirectory), historySizes())
    , m_refreshes([this](int number) { startRefresh(number); })
    , m_mail({context.options.smtpSecurity, context.options.smtpAuthorities})
    , m_alerts(*context.platform.eventLog, m_mail)
    , m_alarms(context.settings, context.options, *context.platform.eventLog, m_alerts,
               context.settings.programDirectory)
{
    connect(&m_inventory, &ATA_Smart::finishedScanSMART, this, &HxDaemon::get_devices_complette);
    listenOn(quint16(settings().port));
    qCInfo(lcService, "Listening port: %d. isListening = %d", serverPort(), int(isListening()));

    connect(&m_smartTimer, &QTimer::timeout, this, &HxDaemon::update_SMART);
    connect(&m_volumeTimer, &QTimer::timeout, this, &HxDaemon::Volume_updateDisplay);
    connect(&m_scheduleTimer, &QTimer::timeout, this, &HxDaemon::checkScanScheduler);
    m_smartTimer.setInterval(timerInterval(settings().smartPollInterval));
    m_volumeTimer.setInterval(timerInterval(settings().freeSpacePollInterval));
    m_scheduleTimer.setInterval(kScheduleCheckInterval);

    m_mail.setTimeouts({SmtpTimeouts().connecting, context.options.smtpReplyTimeout});
    connect(&m_mail, &smtp_sender::smtpSenderError, this, &HxDaemon::smtpSenderError);
    connect(&m_mail, &smtp_sender::smtpSenderOk, this, &HxDaemon::smtpSenderOk);

    m_driveCountTimer.setSingleShot(true);
    m_driveCountTimer.setInterval(kDriveCountDelay);
    connect(&m_driveCountTimer, &QTimer::timeout, this, &HxDaemon::checkFixedDriveCount);
    m_lifeTimeTimer.setSingleShot(true);
    m_lifeTimeTimer.setInterval(kLifeTimeDelay);
    connect(&m_lifeTimeTimer, &QTimer::timeout, this, &HxDaemon::set_attr9);
    connect(&m_scans, &ScanWorkers::ended, this, &HxDaemon::storeScan);

    m_storeTimer.setSingleShot(true);
    m_storeTimer.setInterval(kStoreRetryDelay);
    connect(&m_storeTimer, &QTimer::timeout, this, &HxDaemon::writeSettings);

    m_temperatures.prepare();
    resetInfo();
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
    if (!m_driveCountTimer.isActive())
        m_driveCountTimer.start();
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

void HxDaemon::resetInfo()
{
    if (m_paused || m_detectionParts > 0)
        return;
    m_detecting = true;
    m_detectionParts = 2; // the drives and the volumes
    m_isPolling = false;
    m_isCounting = false;
    stopPeriodicTimers();
    m_lifeTimeTimer.stop();
    m_scans.abandonAll();
    m_inventory.detectDevices();
    m_volumes.read([this](const VolumeList &volumes) {
        m_detectedVolumes = volumes;
        get_devices_complette();
    });
}

// A detection that was under way when the service paused still starts the timers here.
void HxDaemon::get_devices_complette()
{
    if (--m_detectionParts > 0)
        return;
    m_detecting = false;
    m_hasDevices = true;
    if (!m_inventory.devices().isEmpty()) {
        volume_enumeration::assign(m_detectedVolumes, m_inventory.devices());
        m_context.store.readDriveState(m_inventory.devices());
    }
    evaluateDrives(true);
    m_smartTimer.setInterval(timerInterval(settings().smartPollInterval));
    m_volumeTimer.setInterval(timerInterval(settings().freeSpacePollInterval));
    startPeriodicTimers();
    m_lifeTimeTimer.start();
    qCInfo(lcService, "Collection info finished");
    m_refreshes.endAll(); // those that the detection has interrupted: it has read all they asked for
}

/// Skips a poll while the last one has not ended.
void HxDaemon::update_SMART()
{
    if (!std::exchange(m_isPolling, true))
        pollDrives([this] { m_isPolling = false; });
}

void HxDaemon::Volume_updateDisplay()
{
    if (!std::exchange(m_isPollingVolumes, true))
        pollVolumes([this] { m_isPollingVolumes = false; });
}

void HxDaemon::update_ALL()
{
    refreshInfo();
}

void HxDaemon::refreshInfo()
{
    refresh([] {});
}

void HxDaemon::startRefresh(int number)
{
    const auto partEnded = after(2, [this, number] { m_refreshes.end(number); });
    pollDrives(partEnded);
    pollVolumes(partEnded);
}

void HxDaemon::pollDrives(const Completion &done)
{
    m_inventory.readDrives(false, [this, done](const ATA_Smart::Readings &readings) {
        keepPreviousValues(m_inventory.devices());
        m_inventory.apply(readings);
        evaluateDrives(true);
        qCInfo(lcService, "Update SMART info finished");
        done();
    });
}

void HxDaemon::pollVolumes(const Completion &done)
{
    m_volumes.read([this, done](const VolumeList &volumes) {
        volume_enumeration::assign(volumes, m_inventory.devices());
        qCInfo(lcService, "Update Volume info finished");
        done();
    });
}

void HxDaemon::set_attr9()
{
    m_inventory.readDrives(true, [this](const ATA_Smart::Readings &readings) {
        m_inventory.apply(readings);
        life_time::classify(m_inventory.devices());
        qCInfo(lcService, "Detecting life time info finished");
    });
}

void HxDaemon::checkHealth()
{
    evaluateDrives(false);
}

void HxDaemon::evaluateDrives(bool isPoll)
{
    const HealthReport report = evaluateHealth(m_inventory.devices(), settings());
    m_context.settings.alertLevel = report.alertLevel;
    m_temperatures.append(report.temperatures, QDateTime::currentDateTime());
    m_alarms.evaluated(report, m_inventory.devices(), isPoll, !m_detecting);
}

void HxDaemon::checkScanScheduler()
{
    const QDateTime now = QDateTime::currentDateTime();
    for (const ScanRequest &request : dueScans(m_inventory.devices(), m_servedSchedules, now)) {
        const DeviceRecord &device = m_inventory.devices().at(request.device);
        if (m_scans.start(request, device))
            m_servedSchedules.serve(device, now.date());
    }
}

/// Waits for a detection or a count in progress, so that no change is missed.
void HxDaemon::checkFixedDriveCount()
{
    if (m_detectionParts > 0 || m_isCounting) {
        m_driveCountTimer.start();
        return;
    }
    m_isCounting = true;
    m_inventory.countDrives([this](int present, bool changed) {
        m_isCounting = false;
        qCInfo(lcService, "processCommand timer %d %d", m_inventory.devices().size(), present);
        if (changed)
            resetInfo();
    });
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

void HxDaemon::changeSettings(const SettingsChange &change)
{
    if (change.port != settings().port)
        setRebindPending();
    apply(change, m_context.settings);
    writeSettings();
    checkHealth();
}

const DeviceList &HxDaemon::devices() const
{
    return m_inventory.devices();
}

void HxDaemon::publishScanProgress()
{
    m_scans.publish(m_inventory.devices());
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
    m_refreshes.add(std::move(finished));
}

bool HxDaemon::isScanRunning(int device) const
{
    return m_scans.isRunning(device);
}

void HxDaemon::startScan(const ScanRequest &request)
{
    if (request.device >= 0 && request.device < m_inventory.devices().size())
        m_scans.start(request, m_inventory.devices().at(request.device));
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
    applyScheduleChange(change, m_inventory.devices());
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
    applyProgress(result, m_inventory.devices()[device]);
    writeSettings();
}

bool HxDaemon::endWorkers()
{
    const bool hasEnded = m_workers.stopAll();
    m_scans.publish(m_inventory.devices());
    return hasEnded && !HostLookup::isAnyRunning();
}
