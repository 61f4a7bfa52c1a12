// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_service_manager.h"

#include "platform/linux/control_socket.h"
#include "platform/linux/home.h"
#include "platform/linux/linux_error.h"
#include "platform/linux/systemd_unit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>
#include <QProcess>

#include <cerrno>
#include <pwd.h>
#include <sys/eventfd.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

namespace {

/// Returns whether the service may be sent `code` in the state it reported, as the Windows manager decides
/// it.
bool isAccepted(quint32 code, const ServiceStatus &status)
{
    if (status.state != ServiceState::Running && status.state != ServiceState::Paused)
        return false;
    switch (code) {
    case service_control::kStop:
        return status.acceptedControls & accepted_controls::kStop;
    case service_control::kPause:
    case service_control::kContinue:
        return status.acceptedControls & accepted_controls::kPauseContinue;
    default:
        return service_control::isUserCode(code);
    }
}

/// Returns what systemd is notified of in a state (sd_notify(3)); null if nothing.
const char *notification(ServiceState state)
{
    switch (state) {
    case ServiceState::Running:
        return "READY=1\nSTATUS=Watching the drives";
    case ServiceState::Paused:
        return "STATUS=Paused";
    case ServiceState::StopPending:
        return "STOPPING=1\nSTATUS=Stopping";
    case ServiceState::StartPending:
    case ServiceState::ContinuePending:
    case ServiceState::PausePending:
    case ServiceState::Stopped:
        break;
    }
    return nullptr;
}

/// Returns the account's name in passwd; the machine in front of it can only be this one.
QString localName(const QString &account)
{
    return account.mid(account.lastIndexOf(QLatin1Char('\\')) + 1);
}

bool isMissing(int errnoValue)
{
    return errnoValue == ENOENT || errnoValue == ENOTDIR;
}

bool nobodyListens(const control_socket::Exchange &exchange)
{
    return isMissing(exchange.errnoValue) || exchange.errnoValue == ECONNREFUSED;
}

} // namespace

LinuxServiceManager::LinuxServiceManager(QString home, bool managedBySystemd)
    : m_home(std::move(home))
    , m_managedBySystemd(managedBySystemd)
    , m_key(home::serviceKeyPath(m_home))
    , m_stopped(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{}

QString LinuxServiceManager::programPath() const
{
    return QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
}

bool LinuxServiceManager::isInstalled(const QString &)
{
    if (!QFileInfo::exists(home::serviceKeyPath(m_home)))
        return false;
    // An administrator may write a key with options before the installation; a damaged key can be
    // uninstalled.
    const auto key = m_key.open();
    return !key || (*key)->value(QStringLiteral("ImagePath"));
}

ServiceOutcome LinuxServiceManager::install(const ServiceDefinition &service)
{
    const QString account = localName(service.account);
    if (!account.isEmpty() && !::getpwnam(account.toLocal8Bit().constData()))
        return {system_error::kInvalidParameter, QStringLiteral("there is no account %1").arg(account)};
    const bool hadKey = QFileInfo::exists(home::serviceKeyPath(m_home));
    errno = 0;
    if (!QDir().mkpath(m_home))
        return failureOf(errno ? errno : EIO);
    if (const auto created = m_key.create(home::imagePath(m_home)); !created)
        return {system_error::kAccessDenied, created.failure().text};
    if (!m_managedBySystemd)
        return {};
    ServiceOutcome outcome = systemd_unit::install(service, account);
    if (!outcome.ok() && !hadKey)
        QFile::remove(home::serviceKeyPath(m_home));
    return outcome;
}

ServiceOutcome LinuxServiceManager::uninstall(const QString &)
{
    if (m_managedBySystemd) {
        ServiceOutcome outcome = systemd_unit::remove();
        if (!outcome.ok())
            return outcome;
    }
    return QFile::remove(home::serviceKeyPath(m_home)) ? ServiceOutcome() : failureOf(errno);
}

ServiceOutcome LinuxServiceManager::start(const QString &name, const QStringList &arguments)
{
    if (!isInstalled(name))
        return {system_error::kServiceDoesNotExist, qt_error_string(ENOENT)};
    if (m_managedBySystemd)
        return systemd_unit::start();
    return QProcess::startDetached(programPath(), arguments) ? ServiceOutcome() : failureOf(ENOENT);
}

std::optional<ServiceState> LinuxServiceManager::state(const QString &)
{
    const control_socket::Exchange exchange =
        control_socket::request(home::controlSocketPath(m_home), control_socket::kInterrogate);
    if (exchange.errnoValue == 0)
        return exchange.answer.state;
    return nobodyListens(exchange) ? std::optional(ServiceState::Stopped) : std::nullopt;
}

ServiceView LinuxServiceManager::view(const QString &name)
{
    ServiceView view;
    const QString key = home::serviceKeyPath(m_home);
    const int keyError = ::access(QFile::encodeName(key).constData(), F_OK) == 0 ? 0 : errno;
    if (keyError == 0)
        view.isInstalled = isInstalled(name);
    else if (isMissing(keyError))
        view.isInstalled = false;
    else
        view.obstacle = key + QStringLiteral(": ") + qt_error_string(keyError);

    const QString socket = home::controlSocketPath(m_home);
    const control_socket::Exchange exchange = control_socket::request(socket, control_socket::kInterrogate);
    if (exchange.errnoValue == 0)
        view.isRunning = exchange.answer.state != ServiceState::Stopped;
    else if (nobodyListens(exchange))
        view.isRunning = false;
    else
        view.obstacle = socket + QStringLiteral(": ") + qt_error_string(exchange.errnoValue);
    return view;
}

ControlOutcome LinuxServiceManager::control(const QString &name, quint32 code)
{
    const control_socket::Exchange exchange = control_socket::request(home::controlSocketPath(m_home), code);
    if (exchange.errnoValue) {
        ServiceOutcome failure = failureOf(exchange.errnoValue);
        if (nobodyListens(exchange))
            failure = {system_error::kServiceNotActive, QStringLiteral("The service is not running")};
        return {isInstalled(name), failure, ServiceState::Stopped};
    }
    ControlOutcome outcome{true, {}, exchange.answer.state};
    if (exchange.answer.error != system_error::kNone)
        outcome.sent = {exchange.answer.error, QStringLiteral("The service cannot take this request now")};
    return outcome;
}

ServiceOutcome LinuxServiceManager::runDispatcher(const QString &, RunMode mode, ServiceClient &client)
{
    const auto key = m_key.open();
    if (mode == RunMode::Service && !key && key.failure().kind == AccessError::Kind::Failed)
        return {system_error::kAccessDenied, key.failure().text};
    if (mode == RunMode::Service && !key)
        return {system_error::kNotStartedByManager, QStringLiteral("The service is not installed")};
    if (!m_stopped.isOpen())
        return failureOf(EMFILE);
    control_socket::Server server;
    if (const int error = server.listen(home::controlSocketPath(m_home))) {
        if (error == EADDRINUSE)
            return {system_error::kServiceAlreadyRunning, QStringLiteral("The service is already running")};
        return failureOf(error);
    }
    if (mode == RunMode::Service)
        client.started({});
    server.serve(m_stopped.get(), [this, &client](quint32 code) -> control_socket::Answer {
        quint32 error = system_error::kNone;
        if (code != control_socket::kInterrogate &&
            (!isAccepted(code, status()) || !client.controlRequested(code)))
            error = system_error::kServiceCannotAcceptControl;
        return {error, status().state};
    });
    return {};
}

void LinuxServiceManager::reportStatus(const ServiceStatus &status)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_status = status;
    }
    if (const char *text = notification(status.state))
        ::sd_notify(0, text); // does nothing where systemd has not started the process
    if (status.state == ServiceState::Stopped)
        ::eventfd_write(m_stopped.get(), 1);
}

ServiceStatus LinuxServiceManager::status() const
{
    const QMutexLocker lock(&m_mutex);
    return m_status;
}
