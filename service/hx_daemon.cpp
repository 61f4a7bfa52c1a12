// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/hx_daemon.h"

#include "config/settings.h"
#include "config/settings_store.h"
#include "disk/life_time.h"
#include "disk/volume_enumeration.h"
#include "monitor/alert_delivery.h"
#include "monitor/health.h"
#include "monitor/temperature_log.h"
#include "platform/platform.h"
#include "scan/schedule.h"
#include "service/logging.h"
#include "service/service_context.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kScheduleCheckInterval{20000};
constexpr milliseconds kDriveCountDelay{500};
constexpr milliseconds kLifeTimeDelay{130000};

/// A poll interval as a timer takes it: 32 bits, and never so short that the event loop would spin.
milliseconds timerInterval(qint64 interval)
{
    return milliseconds(std::max(qint32(interval), 1));
}

/// As many consoles as always, unless descriptors are scarce: then drives, scans, files and listeners keep
/// enough of them. A console too many can still be accepted, to be closed at once; an accept that fails for
/// want of a descriptor would be tried again and again.
ConnectionLimits connectionLimits(int descriptorLimit)
{
    constexpr int kOwnDescriptors = 256; // a reader and a scan for each of 99 drives, and what else is open
    ConnectionLimits limits;
    if (descriptorLimit > 0)
        limits.connections = std::clamp(descriptorLimit - kOwnDescriptors, 1, limits.connections);
    return limits;
}

} // namespace

HxDaemon::HxDaemon(ServiceContext &context, QObject *parent)
    : TcpServer(*this, context.offsets, parent, connectionLimits(context.platform.descriptorLimit))
    , m_context(context)
    , m_inventory(*context.platform.drives)
    , m_scans(*context.platform.drives)
    , m_mail(nullptr)
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

    connect(&m_mail, &smtp_sender::smtpSenderError, this, &HxDaemon::smtpSenderError);
    connect(&m_mail, &smtp_sender::smtpSenderOk, this, &HxDaemon::smtpSenderOk);

    m_driveCountTimer.setSingleShot(true);
    m_driveCountTimer.setInterval(kDriveCountDelay);
    connect(&m_driveCountTimer, &QTimer::timeout, this, &HxDaemon::checkFixedDriveCount);

    resetInfo();
}

HxDaemon::~HxDaemon()
{
    endWorkers();
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
    if (m_paused)
        return;
    m_detecting = true;
    stopPeriodicTimers();
    endScans();
    m_inventory.detectDevices();
    createScanWorkers();
    if (!m_inventory.devices().isEmpty()) {
        refreshVolumes();
        m_context.store.readDriveState(m_inventory.devices());
    }
    m_inventory.startReaders();
}

// A detection that was under way when the service paused still starts the timers here.
void HxDaemon::get_devices_complette()
{
    m_detecting = false;
    checkHealth();
    m_smartTimer.setInterval(timerInterval(settings().smartPollInterval));
    m_volumeTimer.setInterval(timerInterval(settings().freeSpacePollInterval));
    startPeriodicTimers();
    QTimer::singleShot(kLifeTimeDelay, this, &HxDaemon::set_attr9);
    qCInfo(lcService, "Collection info finished");
}

void HxDaemon::update_SMART()
{
    keepPreviousValues(m_inventory.devices());
    m_inventory.readSynchronously(false);
    checkHealth();
    qCInfo(lcService, "Update SMART info finished");
}

void HxDaemon::Volume_updateDisplay()
{
    refreshVolumes();
    qCInfo(lcService, "Update Volume info finished");
}

void HxDaemon::update_ALL()
{
    update_SMART();
    Volume_updateDisplay();
}

void HxDaemon::refreshInfo()
{
    update_ALL();
}

void HxDaemon::refreshVolumes()
{
    volume_enumeration::assign(volume_enumeration::enumerate(*m_context.platform.volumes),
                               m_inventory.devices());
}

void HxDaemon::set_attr9()
{
    m_inventory.readSynchronously(true);
    life_time::classify(m_inventory.devices());
    qCInfo(lcService, "Detecting life time info finished");
}

void HxDaemon::checkHealth()
{
    const HealthReport report = evaluateHealth(m_inventory.devices(), settings());
    settings().alertLevel = report.alertLevel;
    for (const TemperatureReading &reading : report.temperatures)
        appendTemperature(temperatureLogPath(), reading, QDateTime::currentDateTime());
    deliverAlert(report, settings(), *m_context.platform.eventLog, m_mail);
}

void HxDaemon::checkScanScheduler()
{
    for (const ScanRequest &request : dueScans(m_inventory.devices(), QDateTime::currentDateTime()))
        startScan(request);
}

void HxDaemon::checkFixedDriveCount()
{
    const int present = m_inventory.countFixedDrives();
    qCInfo(lcService, "processCommand timer %d %d", m_inventory.devices().size(), present);
    if (present != m_inventory.devices().size())
        resetInfo();
}

void HxDaemon::smtpSenderError(const QString &text)
{
    qCWarning(lcService).noquote() << "SMTP error:" << text;
    answerSmtpTest(text);
}

void HxDaemon::smtpSenderOk(const QString &text)
{
    qCInfo(lcService, "SMTP Ok..............");
    answerSmtpTest(text);
}

void HxDaemon::answerSmtpTest(const QString &text)
{
    if (const auto reply = std::exchange(m_smtpTestReply, nullptr))
        reply(text);
}

bool HxDaemon::startSmtpTest(const QString &parameters, std::function<void(const QString &)> reply)
{
    if (!startTestMail(m_mail, parameters))
        return false;
    m_smtpTestReply = std::move(reply);
    return true;
}

Settings &HxDaemon::settings()
{
    return m_context.settings;
}

const DeviceList &HxDaemon::devices()
{
    m_scans.publish(m_inventory.devices());
    return m_inventory.devices();
}

void HxDaemon::writeSettings()
{
    m_context.store.writeSettings(devices());
}

void HxDaemon::requestRebind()
{
    setRebindPending();
}

bool HxDaemon::isScanRunning(int device) const
{
    return m_scans.isRunning(device);
}

void HxDaemon::startScan(const ScanRequest &request)
{
    m_scans.start(request);
}

bool HxDaemon::stopScan(int device)
{
    return m_scans.requestStop(device);
}

void HxDaemon::setScanSchedule(const QString &payload)
{
    const std::optional<ScheduleChange> change = parseScheduleChange(payload);
    if (!change)
        return;
    applyScheduleChange(*change, m_inventory.devices());
    writeSettings();
}

QVector<Account> HxDaemon::accounts()
{
    return m_context.platform.accounts->accounts();
}

LongText HxDaemon::temperatureHistory(const QString &from, const QString &to)
{
    return [path = temperatureLogPath(), from, to] { return ::temperatureHistory(path, from, to); };
}

QString HxDaemon::temperatureLogPath() const
{
    return temperatureLogIn(m_context.settings.programDirectory);
}

void HxDaemon::createScanWorkers()
{
    QStringList paths;
    for (const DeviceRecord &device : qAsConst(m_inventory.devices()))
        paths << device.path;
    m_scans.create(paths);
}

void HxDaemon::endScans()
{
    if (m_scans.stopAll(m_inventory.devices()))
        return;
    m_hasLeftScans = true;
    qCCritical(lcService, "A scan hangs in a read; its worker is left behind");
}

bool HxDaemon::endWorkers()
{
    m_inventory.endReaders();
    endScans();
    return !m_hasLeftScans && !m_inventory.leftThreadsBehind();
}
