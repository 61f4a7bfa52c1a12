// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_service_manager.h"

#include "platform/windows/advapi.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_error.h"

#include <QMutexLocker>

#include <vector>

namespace {

/// The manager that dispatches in this process: the system passes no context to its callbacks.
WindowsServiceManager *theDispatcher = nullptr;

/// An open handle of the manager or of one of its services; null when it was not opened.
class ScHandle
{
public:
    ScHandle(const AdvApi *api, SC_HANDLE handle)
        : m_api(api)
        , m_handle(handle)
    {}
    ~ScHandle()
    {
        if (m_handle)
            m_api->closeServiceHandle(m_handle);
    }
    ScHandle(const ScHandle &) = delete;
    ScHandle &operator=(const ScHandle &) = delete;

    [[nodiscard]] SC_HANDLE get() const { return m_handle; }

private:
    const AdvApi *m_api;
    SC_HANDLE m_handle;
};

/// The manager and one of its services, opened. If one of them cannot be opened, the service is null and the
/// reason is stored.
class OpenedService
{
public:
    OpenedService(const QString &name, DWORD managerAccess, DWORD serviceAccess)
        : m_api(AdvApi::get())
        , m_manager(m_api, m_api ? m_api->openSCManager(nullptr, nullptr, managerAccess) : nullptr)
        , m_service(m_api, m_manager.get() ? m_api->openService(m_manager.get(), wide(name), serviceAccess)
                                           : nullptr)
    {
        if (!isOpen())
            m_failure = lastFailure();
    }

    [[nodiscard]] bool isOpen() const { return m_service.get() != nullptr; }
    [[nodiscard]] const ServiceOutcome &failure() const { return m_failure; }
    [[nodiscard]] const AdvApi *operator->() const { return m_api; }
    [[nodiscard]] SC_HANDLE get() const { return m_service.get(); }

private:
    const AdvApi *m_api;
    ScHandle m_manager;
    ScHandle m_service;
    ServiceOutcome m_failure;
};

ServiceOutcome outcomeOf(BOOL succeeded)
{
    return succeeded ? ServiceOutcome() : lastFailure();
}

DWORD accessFor(quint32 control)
{
    switch (control) {
    case service_control::kStop:
        return SERVICE_STOP;
    case service_control::kPause:
    case service_control::kContinue:
        return SERVICE_PAUSE_CONTINUE;
    default:
        return SERVICE_USER_DEFINED_CONTROL;
    }
}

void describe(const AdvApi &api, SC_HANDLE service, QString text)
{
    if (text.isEmpty())
        return;
    SERVICE_DESCRIPTIONW description{reinterpret_cast<wchar_t *>(text.data())};
    api.changeServiceConfig2(service, SERVICE_CONFIG_DESCRIPTION, &description);
}

} // namespace

QString WindowsServiceManager::programPath() const
{
    constexpr DWORD kPathSize = 520;
    wchar_t path[kPathSize] = {};
    const DWORD size = GetModuleFileNameW(nullptr, path, kPathSize);
    return QString::fromWCharArray(path, int(size));
}

bool WindowsServiceManager::isInstalled(const QString &name)
{
    return OpenedService(name, SC_MANAGER_CONNECT, SERVICE_QUERY_CONFIG).isOpen();
}

ServiceOutcome WindowsServiceManager::install(const ServiceDefinition &service)
{
    const AdvApi *const api = AdvApi::get();
    const ScHandle manager(api, api ? api->openSCManager(nullptr, nullptr, SC_MANAGER_ALL_ACCESS) : nullptr);
    if (!manager.get())
        return lastFailure();
    const bool isLocalSystem = service.account.isEmpty();
    const DWORD type = SERVICE_WIN32_OWN_PROCESS | (isLocalSystem ? SERVICE_INTERACTIVE_PROCESS : 0);
    // The path is stored without quotes: without the file name it is the program directory.
    const ScHandle created(
        api, api->createService(manager.get(), wide(service.name), wide(service.name), SERVICE_ALL_ACCESS,
                                type, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL, wide(service.programPath),
                                nullptr, nullptr, nullptr, isLocalSystem ? nullptr : wide(service.account),
                                service.password.isEmpty() ? nullptr : wide(service.password)));
    if (!created.get())
        return lastFailure();
    describe(*api, created.get(), service.description);
    return {};
}

ServiceOutcome WindowsServiceManager::uninstall(const QString &name)
{
    const OpenedService service(name, SC_MANAGER_ALL_ACCESS, DELETE);
    return service.isOpen() ? outcomeOf(service->deleteService(service.get())) : service.failure();
}

ServiceOutcome WindowsServiceManager::start(const QString &name, const QStringList &arguments)
{
    const OpenedService service(name, SC_MANAGER_CONNECT, SERVICE_START);
    if (!service.isOpen())
        return service.failure();
    std::vector<const wchar_t *> words;
    for (const QString &argument : arguments)
        words.push_back(wide(argument));
    return outcomeOf(service->startService(service.get(), DWORD(words.size()), words.data()));
}

std::optional<ServiceState> WindowsServiceManager::state(const QString &name)
{
    const OpenedService service(name, SC_MANAGER_CONNECT, SERVICE_QUERY_STATUS);
    SERVICE_STATUS status{};
    if (!service.isOpen() || !service->queryServiceStatus(service.get(), &status))
        return std::nullopt;
    return ServiceState(status.dwCurrentState);
}

ServiceView WindowsServiceManager::view(const QString &name)
{
    const OpenedService service(name, SC_MANAGER_CONNECT, SERVICE_QUERY_STATUS);
    if (!service.isOpen() && service.failure().error == system_error::kServiceDoesNotExist)
        return {false, false, {}};
    if (!service.isOpen())
        return {std::nullopt, std::nullopt, service.failure().text};
    SERVICE_STATUS status{};
    if (!service->queryServiceStatus(service.get(), &status))
        return {true, std::nullopt, lastFailure().text};
    return {true, status.dwCurrentState != SERVICE_STOPPED, {}};
}

ControlOutcome WindowsServiceManager::control(const QString &name, quint32 code)
{
    const OpenedService service(name, SC_MANAGER_CONNECT, accessFor(code) | SERVICE_QUERY_STATUS);
    if (!service.isOpen())
        return {false, service.failure(), ServiceState::Stopped};
    SERVICE_STATUS status{};
    const ServiceOutcome sent = outcomeOf(service->controlService(service.get(), code, &status));
    return {true, sent, sent.ok() ? ServiceState(status.dwCurrentState) : ServiceState::Stopped};
}

ServiceOutcome WindowsServiceManager::runDispatcher(const QString &name, RunMode mode, ServiceClient &client)
{
    if (mode == RunMode::Application)
        return {};
    const AdvApi *const api = AdvApi::get();
    if (!api)
        return lastFailure();
    m_name = name;
    m_client = &client;
    theDispatcher = this;
    const SERVICE_TABLE_ENTRYW table[] = {{reinterpret_cast<wchar_t *>(m_name.data()), serviceMain},
                                          {nullptr, nullptr}};
    const ServiceOutcome outcome = outcomeOf(api->startServiceCtrlDispatcher(table));
    theDispatcher = nullptr;
    return outcome;
}

// Called on a thread of the system. The service continues after the return, until it reports that it stopped.
void WindowsServiceManager::serviceMain(DWORD argumentCount, wchar_t **arguments)
{
    WindowsServiceManager &manager = *theDispatcher;
    {
        const QMutexLocker lock(&manager.m_mutex);
        manager.m_statusHandle =
            AdvApi::get()->registerServiceCtrlHandler(wide(manager.m_name), handleControl);
    }
    QStringList words;
    for (DWORD i = 1; i < argumentCount; ++i) // the first is the service's name
        words.append(QString::fromWCharArray(arguments[i]));
    manager.m_client->started(words);
}

// Called on the dispatcher's thread. A request that was carried out has already reported its new state; every
// other one is answered with the present state.
void WindowsServiceManager::handleControl(DWORD code)
{
    WindowsServiceManager &manager = *theDispatcher;
    const bool isForService = code == service_control::kStop || code == service_control::kPause ||
                              code == service_control::kContinue || service_control::isUserCode(code);
    if (!isForService || !manager.m_client->controlRequested(code))
        manager.sendStatus();
}

void WindowsServiceManager::reportStatus(const ServiceStatus &status)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_status = status;
    }
    sendStatus();
}

void WindowsServiceManager::sendStatus()
{
    const QMutexLocker lock(&m_mutex);
    if (!m_statusHandle)
        return; // not started by the manager
    SERVICE_STATUS status{};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = DWORD(m_status.state);
    status.dwControlsAccepted = m_status.acceptedControls;
    status.dwWaitHint = DWORD(m_status.waitHint.count());
    AdvApi::get()->setServiceStatus(m_statusHandle, &status);
}
