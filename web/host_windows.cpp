// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/host.h"

#include "web/windows_service.h"

#include <winsock2.h> // before windows.h

#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <psapi.h>
#include <sddl.h>
#include <shlobj.h>
#include <utility>
#include <windows.h>

namespace web::host {

namespace {

/// A request to end, from the service manager or the terminal. Both call on threads of the system.
class StopWatch : public QObject
{
public:
    explicit StopWatch(std::function<void()> requested)
        : m_requested(std::move(requested))
    {
        if (!windows_service::connect([this] { post(); })) {
            theWatch = this;
            SetConsoleCtrlHandler(handleConsole, TRUE);
        }
    }
    ~StopWatch() override
    {
        SetConsoleCtrlHandler(handleConsole, FALSE);
        windows_service::reportStopped();
    }
    StopWatch(const StopWatch &) = delete;
    StopWatch &operator=(const StopWatch &) = delete;

private:
    void post() { QMetaObject::invokeMethod(this, m_requested, Qt::QueuedConnection); }

    static BOOL WINAPI handleConsole(DWORD)
    {
        theWatch->post();
        return TRUE;
    }

    static inline StopWatch *theWatch = nullptr; ///< the system's callback gets no context
    std::function<void()> m_requested;
};

/// Returns 100-nanosecond units.
quint64 unitsOf(const FILETIME &time)
{
    return (quint64(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

constexpr double kUnitsPerSecond = 1e7;
constexpr double kUnixEpoch = 11644473600.0; ///< seconds from 1601 to 1970

} // namespace

void endConnection(quintptr socket, const QByteArray &lastBytes)
{
    if (!lastBytes.isEmpty()) // the HTTP library's sockets never block
        send(SOCKET(socket), lastBytes.constData(), lastBytes.size(), 0);
    shutdown(SOCKET(socket), SD_BOTH);
}

QString lastSocketError()
{
    const int error = WSAGetLastError();
    return error != 0 ? qt_error_string(error) : QString();
}

void reportStarted(const QString &text)
{
    std::printf("%s\n", text.toUtf8().constData());
    std::fflush(stdout);
    windows_service::reportRunning();
}

void reportFailure(const QString &text)
{
    if (windows_service::isManaged())
        windows_service::reportFailure(text);
    else
        std::fprintf(stderr, "halvex-web: %s\n", text.toUtf8().constData());
}

std::unique_ptr<QObject> watchStopRequests(std::function<void()> requested)
{
    return std::make_unique<StopWatch>(std::move(requested));
}

std::shared_ptr<void> hideTyping()
{
    const HANDLE terminal = GetStdHandle(STD_INPUT_HANDLE);
    DWORD shown = 0;
    if (GetConsoleMode(terminal, &shown) == 0)
        return nullptr;
    SetConsoleMode(terminal, shown & ~DWORD(ENABLE_ECHO_INPUT));
    return {terminal, [shown](void *handle) {
                SetConsoleMode(handle, shown);
                std::fputs("\n", stderr);
            }};
}

bool makePrivateFolder(const QString &path)
{
    const QFileInfo folder(path);
    if (folder.isDir())
        return true;
    if (!QDir().mkpath(folder.path()))
        return false;
    // Full access for the system, administrators and the owner, and nothing from the folder above.
    PSECURITY_DESCRIPTOR access = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(
            L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;S-1-3-4)", SDDL_REVISION_1, &access, nullptr) ==
        0)
        return false;
    SECURITY_ATTRIBUTES attributes{sizeof attributes, access, FALSE};
    const std::wstring name = QDir::toNativeSeparators(path).toStdWString();
    const bool isMade = CreateDirectoryW(name.c_str(), &attributes) != 0;
    LocalFree(access);
    return isMade;
}

metrics::ProcessFigures processFigures()
{
    metrics::ProcessFigures figures;
    const HANDLE process = GetCurrentProcess();
    FILETIME start{};
    FILETIME end{};
    FILETIME kernel{};
    FILETIME user{};
    if (GetProcessTimes(process, &start, &end, &kernel, &user) != 0) {
        figures.cpuSeconds = double(unitsOf(kernel) + unitsOf(user)) / kUnitsPerSecond;
        figures.startTime = double(unitsOf(start)) / kUnitsPerSecond - kUnixEpoch;
    }
    PROCESS_MEMORY_COUNTERS memory{};
    if (K32GetProcessMemoryInfo(process, &memory, sizeof memory) != 0) {
        figures.residentBytes = qint64(memory.WorkingSetSize);
        figures.virtualBytes = qint64(memory.PagefileUsage);
    }
    DWORD handles = 0;
    if (GetProcessHandleCount(process, &handles) != 0)
        figures.openDescriptors = handles;
    return figures;
}

QString defaultConfigurationFile(const QString &stateFolder)
{
    return QDir(stateFolder).filePath(QStringLiteral("web.json"));
}

QString defaultStateFolder()
{
    wchar_t programData[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, programData);
    return QString::fromWCharArray(programData) + QStringLiteral("\\Halvex Web");
}

bool supportsTls()
{
    return false;
}

} // namespace web::host
