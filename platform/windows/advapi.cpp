// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/advapi.h"

#include <QLibrary>

#include <optional>

namespace {

template <typename Function>
bool resolve(QLibrary &library, const char *name, Function &function)
{
    function = reinterpret_cast<Function>(library.resolve(name));
    return function != nullptr;
}

std::optional<AdvApi> load()
{
    QLibrary library(QStringLiteral("advapi32"));
    AdvApi api;
    const bool isComplete = resolve(library, "OpenSCManagerW", api.openSCManager) &&
                            resolve(library, "OpenServiceW", api.openService) &&
                            resolve(library, "CreateServiceW", api.createService) &&
                            resolve(library, "DeleteService", api.deleteService) &&
                            resolve(library, "CloseServiceHandle", api.closeServiceHandle) &&
                            resolve(library, "StartServiceW", api.startService) &&
                            resolve(library, "ControlService", api.controlService) &&
                            resolve(library, "QueryServiceStatus", api.queryServiceStatus) &&
                            resolve(library, "ChangeServiceConfig2W", api.changeServiceConfig2) &&
                            resolve(library, "StartServiceCtrlDispatcherW", api.startServiceCtrlDispatcher) &&
                            resolve(library, "RegisterServiceCtrlHandlerW", api.registerServiceCtrlHandler) &&
                            resolve(library, "SetServiceStatus", api.setServiceStatus) &&
                            resolve(library, "RegisterEventSourceW", api.registerEventSource) &&
                            resolve(library, "ReportEventW", api.reportEvent) &&
                            resolve(library, "DeregisterEventSource", api.deregisterEventSource);
    return isComplete ? std::optional(api) : std::nullopt;
}

} // namespace

const AdvApi *AdvApi::get()
{
    static const std::optional<AdvApi> api = load();
    if (!api)
        SetLastError(ERROR_PROC_NOT_FOUND);
    return api ? &*api : nullptr;
}
