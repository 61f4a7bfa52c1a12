// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/fault_log.h"

#include "disk/logging.h"
#include "platform/system_error.h"

namespace {

QString reasonOf(quint32 systemError)
{
    switch (systemError) {
    case system_error::kFileNotFound:
    case system_error::kDeviceNotConnected:
        return QStringLiteral("not connected (system error %1)").arg(systemError);
    case system_error::kAccessDenied:
        return QStringLiteral("access denied (system error %1)").arg(systemError);
    case system_error::kNotSupported:
        return QStringLiteral("not supported (system error %1)").arg(systemError);
    case system_error::kSemTimeout:
    case system_error::kBusy:
        return QStringLiteral("no answer in time");
    case system_error::kIoDevice:
        return QStringLiteral("I/O error (system error %1)").arg(systemError);
    default:
        return QStringLiteral("system error %1").arg(systemError);
    }
}

/// Quotes the text, which escapes control characters in the drive's own texts.
void logChange(const QString &text)
{
    if (!text.isEmpty())
        qCWarning(lcDisk) << text;
}

} // namespace

void FaultLog::failed(const QString &subject, const QString &name, quint32 systemError)
{
    FaultState &state = m_faults.try_emplace(subject, name).first->second;
    logChange(state.failed(reasonOf(systemError), QDateTime::currentDateTime()));
}

void FaultLog::answered(const QString &subject)
{
    const auto fault = m_faults.find(subject);
    if (fault == m_faults.end())
        return;
    logChange(fault->second.succeeded());
    m_faults.erase(fault);
}
