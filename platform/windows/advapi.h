// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <windows.h>

/// The service and event log functions of advapi32, looked up by name when first needed.
struct AdvApi
{
    decltype(&::OpenSCManagerW) openSCManager = nullptr;
    decltype(&::OpenServiceW) openService = nullptr;
    decltype(&::CreateServiceW) createService = nullptr;
    decltype(&::DeleteService) deleteService = nullptr;
    decltype(&::CloseServiceHandle) closeServiceHandle = nullptr;
    decltype(&::StartServiceW) startService = nullptr;
    decltype(&::ControlService) controlService = nullptr;
    decltype(&::QueryServiceStatus) queryServiceStatus = nullptr;
    decltype(&::ChangeServiceConfig2W) changeServiceConfig2 = nullptr;
    decltype(&::StartServiceCtrlDispatcherW) startServiceCtrlDispatcher = nullptr;
    decltype(&::RegisterServiceCtrlHandlerW) registerServiceCtrlHandler = nullptr;
    decltype(&::SetServiceStatus) setServiceStatus = nullptr;
    decltype(&::RegisterEventSourceW) registerEventSource = nullptr;
    decltype(&::ReportEventW) reportEvent = nullptr;
    decltype(&::DeregisterEventSource) deregisterEventSource = nullptr;

    /// Returns null where the library lacks one of them, with ERROR_PROC_NOT_FOUND as the thread's last
    /// error.
    [[nodiscard]] static const AdvApi *get();
};
