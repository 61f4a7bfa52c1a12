// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/system_error.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

/// The control codes of the Windows service control manager (winsvc.h).
namespace service_control {

inline constexpr quint32 kStop = 1;
inline constexpr quint32 kPause = 2;
inline constexpr quint32 kContinue = 3;
inline constexpr quint32 kFirstUserCode = 128;
inline constexpr quint32 kLastUserCode = 255;

[[nodiscard]] constexpr bool isUserCode(quint32 code)
{
    return code >= kFirstUserCode && code <= kLastUserCode;
}

} // namespace service_control

/// The controls that a service accepts from the manager (winsvc.h); user-defined codes are always accepted.
namespace accepted_controls {

inline constexpr quint32 kNone = 0;
inline constexpr quint32 kStop = 1;
inline constexpr quint32 kPauseContinue = 2;

} // namespace accepted_controls

/// The numbers are those of winsvc.h.
enum class ServiceState : quint32 {
    Stopped = 1,
    StartPending = 2,
    StopPending = 3,
    Running = 4,
    ContinuePending = 5,
    PausePending = 6,
    Paused = 7,
};

/// The state that a running service reports to the manager.
struct ServiceStatus
{
    ServiceState state = ServiceState::StartPending;
    quint32 acceptedControls = accepted_controls::kNone;
    std::chrono::milliseconds waitHint{0}; ///< how long a pending state may last
};

struct ServiceDefinition
{
    QString name;
    QString description;
    QString programPath;
    QString
        account; ///< with a machine or domain ("." for this one) before a backslash; empty: the local system
    QString password;
};

/// The result of a request to the manager.
struct ServiceOutcome
{
    quint32 error = system_error::kNone;
    QString text; ///< the error in the system's own words

    [[nodiscard]] bool ok() const { return error == system_error::kNone; }
};

/// The facts about a service that this account can see; a fact is nullopt where it cannot.
struct ServiceView
{
    std::optional<bool> isInstalled;
    std::optional<bool> isRunning;
    QString obstacle; ///< the reason why a fact is missing; empty if none is
};

/// The result of a control request.
struct ControlOutcome
{
    bool opened = false; ///< the service was found and opened; otherwise `sent` has no meaning
    ServiceOutcome sent;
    ServiceState state = ServiceState::Stopped; ///< what the service reported after the request
};

/// The calls of the dispatcher into the service, on threads of its own.
class ServiceClient
{
public:
    ServiceClient() = default;
    ServiceClient(const ServiceClient &) = delete;
    ServiceClient &operator=(const ServiceClient &) = delete;
    virtual ~ServiceClient() = default;

    /// The manager has started the service; called once, before any control request.
    virtual void started(const QStringList &arguments) = 0;

    /// Returns when the request has been carried out; false if the service has ended its event loop.
    virtual bool controlRequested(quint32 code) = 0;
};

/// The system's service manager. Several services of one name never run on one installation. Requests about
/// an installed service come from one thread; reportStatus() may come from any.
class ServiceManager
{
public:
    /// How the program was started: as the installed service, or as a regular application. Some systems make
    /// the latter reachable for control requests, too.
    enum class RunMode { Service, Application };

    ServiceManager() = default;
    ServiceManager(const ServiceManager &) = delete;
    ServiceManager &operator=(const ServiceManager &) = delete;
    virtual ~ServiceManager() = default;

    /// Returns the full path of the running program's file.
    [[nodiscard]] virtual QString programPath() const = 0;

    [[nodiscard]] virtual bool isInstalled(const QString &name) = 0;
    virtual ServiceOutcome install(const ServiceDefinition &service) = 0;
    virtual ServiceOutcome uninstall(const QString &name) = 0;
    virtual ServiceOutcome start(const QString &name, const QStringList &arguments) = 0;

    /// Returns nullopt if there is no such service or its state is not accessible.
    [[nodiscard]] virtual std::optional<ServiceState> state(const QString &name) = 0;

    /// Returns what can be seen of a service without any right to control it.
    [[nodiscard]] virtual ServiceView view(const QString &name) = 0;

    /// Sends stop, pause, continue or a user-defined code to the service, whatever process it runs in.
    virtual ControlOutcome control(const QString &name, quint32 code) = 0;

    /// Connects this process to the manager and delivers to `client` until ServiceState::Stopped has been
    /// reported. Blocks; must be called at most once per manager. In application mode, started() is not
    /// called. Fails with kNotStartedByManager if the program does not run as the installed service.
    virtual ServiceOutcome runDispatcher(const QString &name, RunMode mode, ServiceClient &client) = 0;

    virtual void reportStatus(const ServiceStatus &status) = 0;
};
