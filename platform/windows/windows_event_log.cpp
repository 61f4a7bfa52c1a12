// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_event_log.h"

#include "platform/windows/advapi.h"
#include "platform/windows/wide_text.h"

void WindowsEventLog::report(const Event &event)
{
    const AdvApi *const api = AdvApi::get();
    const HANDLE log = api ? api->registerEventSource(nullptr, wide(event.source)) : nullptr;
    if (!log)
        return;
    const wchar_t *texts[] = {wide(event.text)};
    // The data are only read; the system's declaration lacks the const.
    void *const data = event.data.isEmpty() ? nullptr : const_cast<char *>(event.data.constData());
    api->reportEvent(log, WORD(event.type), event.category, event.id, nullptr, 1, DWORD(event.data.size()),
                     texts, data);
    api->deregisterEventSource(log);
}
