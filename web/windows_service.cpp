// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/windows_service.h"

#include <future>
#include <mutex>
#include <thread>
#include <windows.h>

namespace web::windows_service {

namespace {

constexpr DWORD kWaitHintMs = 30000;
constexpr DWORD kAcceptedControls = SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN;

/// What the system's callbacks share; they get no context.
struct Service
{
    std::mutex mutex;
    std::function<void()> stopRequested;
    std::promise<bool> connected;
    SERVICE_STATUS_HANDLE handle = nullptr; ///< null: not started by the manager
    DWORD state = SERVICE_START_PENDING;
    bool hasFailed = false;
};

/// Never destroyed: a thread of the system may use it while the program ends.
Service &service()
{
    static auto *const instance = new Service;
    return *instance;
}

/// Needs the lock.
void report(DWORD state)
{
    Service &own = service();
    own.state = state;
    if (!own.handle)
        return;
    SERVICE_STATUS status{};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted = state == SERVICE_RUNNING ? kAcceptedControls : 0;
    status.dwWaitHint = state == SERVICE_START_PENDING || state == SERVICE_STOP_PENDING ? kWaitHintMs : 0;
    if (own.hasFailed) {
        status.dwWin32ExitCode = ERROR_SERVICE_SPECIFIC_ERROR;
        status.dwServiceSpecificExitCode = 1;
    }
    SetServiceStatus(own.handle, &status);
}

void WINAPI handleControl(DWORD control)
{
    Service &own = service();
    const std::lock_guard<std::mutex> lock(own.mutex);
    const bool isStop = control == SERVICE_CONTROL_STOP || control == SERVICE_CONTROL_SHUTDOWN;
    report(isStop && own.state == SERVICE_RUNNING ? SERVICE_STOP_PENDING : own.state);
    if (isStop && own.stopRequested)
        own.stopRequested();
}

void WINAPI serviceMain(DWORD, wchar_t **)
{
    Service &own = service();
    const std::lock_guard<std::mutex> lock(own.mutex);
    own.handle = RegisterServiceCtrlHandlerW(L"", handleControl); // a process of its own: the name is ignored
    report(own.state);
    own.connected.set_value(own.handle != nullptr);
}

/// Serves the manager's requests until the service has stopped. Fails at once if the manager has not started
/// the program.
void dispatch()
{
    wchar_t name[] = L"";
    const SERVICE_TABLE_ENTRYW table[] = {{name, serviceMain}, {nullptr, nullptr}};
    if (StartServiceCtrlDispatcherW(table) == 0)
        service().connected.set_value(false);
}

void writeEvent(WORD type, const QString &text)
{
    const HANDLE log = RegisterEventSourceW(nullptr, L"Halvex Web");
    if (!log)
        return;
    const std::wstring wide = text.toStdWString();
    const wchar_t *texts[] = {wide.c_str()};
    ReportEventW(log, type, 0, 1, nullptr, 1, 0, texts, nullptr);
    DeregisterEventSource(log);
}

void logMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtInfoMsg)
        writeEvent(EVENTLOG_INFORMATION_TYPE, text);
    else if (type == QtWarningMsg)
        writeEvent(EVENTLOG_WARNING_TYPE, text);
    else if (type != QtDebugMsg)
        writeEvent(EVENTLOG_ERROR_TYPE, text);
}

} // namespace

bool connect(std::function<void()> stopRequested)
{
    service().stopRequested = std::move(stopRequested);
    std::thread(dispatch).detach();
    if (!service().connected.get_future().get())
        return false;
    qInstallMessageHandler(logMessage);
    return true;
}

bool isManaged()
{
    const std::lock_guard<std::mutex> lock(service().mutex);
    return service().handle != nullptr;
}

void reportRunning()
{
    const std::lock_guard<std::mutex> lock(service().mutex);
    report(SERVICE_RUNNING);
}

void reportFailure(const QString &text)
{
    writeEvent(EVENTLOG_ERROR_TYPE, text);
    const std::lock_guard<std::mutex> lock(service().mutex);
    service().hasFailed = true;
}

void reportStopped()
{
    const std::lock_guard<std::mutex> lock(service().mutex);
    service().stopRequested = nullptr;
    report(SERVICE_STOPPED);
}

} // namespace web::windows_service
