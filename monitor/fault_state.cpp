// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/fault_state.h"

#include <utility>

namespace {

QString text(const QDateTime &moment)
{
    return moment.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

} // namespace

FaultState::FaultState(QString name)
    : m_name(std::move(name))
{}

QString FaultState::failed(const QString &reason, const QDateTime &now)
{
    if (reason == m_reason)
        return {};
    if (m_reason.isEmpty())
        m_since = now;
    m_reason = reason;
    return m_name + QStringLiteral(" has failed since ") + text(m_since) + QStringLiteral(": ") + reason;
}

QString FaultState::succeeded()
{
    if (m_reason.isEmpty())
        return {};
    m_reason.clear();
    return m_name + QStringLiteral(" works again; it had failed since ") + text(m_since);
}
