// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/outbox.h"

#include "monitor/alert_text.h"
#include "monitor/json_fields.h"

#include <algorithm>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::minutes kDelays[] = {1min, 5min, 15min};
constexpr int kDelayCount = int(sizeof(kDelays) / sizeof(kDelays[0]));
constexpr std::chrono::seconds kLifetime = 24h;

std::optional<OutboxEntry> parseEntry(const QJsonObject &json)
{
    const auto event = parseEvent(json.value(QLatin1String("event")).toString());
    const auto level = parseSeverity(json.value(QLatin1String("level")).toString());
    if (!event || !level)
        return std::nullopt;
    OutboxEntry entry;
    entry.event = *event;
    entry.level = *level;
    entry.text = json.value(QLatin1String("text")).toString();
    entry.time = json_fields::time(json, "time");
    entry.document = json.value(QLatin1String("document")).toObject();
    return entry;
}

QJsonObject entryDocument(const OutboxEntry &entry)
{
    QJsonObject json{{QStringLiteral("event"), eventWord(entry.event)},
                     {QStringLiteral("level"), severityWord(entry.level)},
                     {QStringLiteral("text"), entry.text},
                     {QStringLiteral("time"), timeValue(entry.time)}};
    if (!entry.document.isEmpty())
        json.insert(QStringLiteral("document"), entry.document);
    return json;
}

} // namespace

bool Outbox::add(OutboxEntry entry)
{
    const bool isFull = m_entries.size() >= kMaxEntries;
    if (isFull)
        removeFirst();
    entry.id = ++m_lastId;
    m_entries << std::move(entry);
    return isFull;
}

int Outbox::dropExpired(const QDateTime &now)
{
    for (OutboxEntry &entry : m_entries) {
        if (!entry.time.isValid() || entry.time > now)
            entry.time = now;
    }
    int dropped = 0;
    for (; !isEmpty() && first().time.secsTo(now) >= kLifetime.count(); ++dropped)
        removeFirst();
    return dropped;
}

std::chrono::milliseconds Outbox::waitingTime(const QDateTime &now) const
{
    if (m_failures == 0)
        return 0ms;
    const auto elapsed = std::chrono::milliseconds(std::max(qint64(0), m_lastFailure.msecsTo(now)));
    return std::max<std::chrono::milliseconds>(0ms, kDelays[std::min(m_failures, kDelayCount) - 1] - elapsed);
}

void Outbox::delivered(quint64 id)
{
    if (!isEmpty() && first().id == id)
        removeFirst();
}

void Outbox::failed(quint64 id, const QDateTime &now)
{
    if (isEmpty() || first().id != id)
        return;
    m_failures = std::min(m_failures + 1, kDelayCount);
    m_lastFailure = now;
}

void Outbox::removeFirst()
{
    m_entries.removeFirst();
    m_failures = 0;
}

QJsonObject Outbox::toJson() const
{
    QJsonArray entries;
    for (const OutboxEntry &entry : m_entries)
        entries << entryDocument(entry);
    return {{QStringLiteral("entries"), entries},
            {QStringLiteral("failures"), m_failures},
            {QStringLiteral("lastFailure"), timeValue(m_lastFailure)}};
}

Outbox Outbox::fromJson(const QJsonObject &json)
{
    Outbox outbox;
    for (const QJsonValue &value : json.value(QLatin1String("entries")).toArray()) {
        if (auto entry = parseEntry(value.toObject()))
            outbox.add(*std::move(entry));
    }
    outbox.m_failures = std::clamp(json.value(QLatin1String("failures")).toInt(), 0, kDelayCount);
    outbox.m_lastFailure = json_fields::time(json, "lastFailure");
    return outbox;
}
