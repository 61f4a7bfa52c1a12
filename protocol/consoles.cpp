// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/consoles.h"

#include "protocol/logging.h"

#include <QHash>

#include <algorithm>
#include <utility>

Consoles::Consoles(CommandTarget &target, OffsetSource offsets, const ConnectionLimits &limits)
    : m_offsets(std::move(offsets))
    , m_limits(limits)
    , m_dispatcher(target)
{}

void Consoles::limitMemory(Conversation &changed)
{
    const auto entry = m_heldBytes.find(&changed);
    if (entry == m_heldBytes.end())
        return;
    const qint64 held = changed.heldBytes();
    m_totalBytes += held - std::exchange(entry->second, held);
    while (m_totalBytes > m_limits.heldBytes) {
        const auto largest =
            std::max_element(m_heldBytes.begin(), m_heldBytes.end(),
                             [](const auto &a, const auto &b) { return a.second < b.second; });
        qCDebug(lcProtocol).noquote() << "Closing the connection to" << largest->first->peer().key()
                                      << ": it holds" << largest->second << "bytes";
        largest->first->abort();
    }
}

void Consoles::remove(Conversation &conversation)
{
    const auto entry = m_heldBytes.find(&conversation);
    if (entry == m_heldBytes.end())
        return;
    m_totalBytes -= entry->second;
    m_heldBytes.erase(entry);
}

void Consoles::makeRoom()
{
    if (int(m_heldBytes.size()) < m_limits.connections)
        return;
    QHash<QString, int> counts;
    for (const auto &entry : m_heldBytes)
        ++counts[entry.first->peer().key()];
    const auto rank = [&counts](const auto &entry) {
        return std::make_pair(counts.value(entry.first->peer().key()), entry.first->idleNs());
    };
    const auto chosen = std::max_element(m_heldBytes.begin(), m_heldBytes.end(),
                                         [&rank](const auto &a, const auto &b) { return rank(a) < rank(b); });
    qCDebug(lcProtocol).noquote() << "Closing the longest idle connection to" << chosen->first->peer().key()
                                  << "for a new one";
    chosen->first->abort();
}
