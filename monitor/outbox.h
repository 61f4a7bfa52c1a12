// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/alert_policy.h"

#include <QJsonObject>

/// A message on its way through one channel.
struct OutboxEntry
{
    quint64 id = 0; ///< unique within its outbox
    AlertMessage::Event event = AlertMessage::Event::Alert;
    Severity level = Severity::Fine;
    QString text;
    QDateTime time;       ///< of the message, UTC
    QJsonObject document; ///< for webhook and program
};

/// The messages that a channel has not delivered yet, in order: the first is tried until it is delivered or
/// has expired. Times are UTC; a stored time in the future counts as now.
class Outbox
{
public:
    static constexpr int kMaxEntries = 100;

    /// Appends an entry and sets its ID. Returns whether the oldest entry had to be dropped for it.
    bool add(OutboxEntry entry);

    /// Drops entries that have waited for 24 hours; returns their number.
    int dropExpired(const QDateTime &now);

    [[nodiscard]] int size() const { return m_entries.size(); }
    [[nodiscard]] bool isEmpty() const { return m_entries.isEmpty(); }
    /// Returns the entry to be tried next. The outbox must not be empty.
    [[nodiscard]] const OutboxEntry &first() const { return m_entries.first(); }

    /// Returns how long the first entry must wait: 1, 5, 15, 15, … minutes after its failures.
    [[nodiscard]] std::chrono::milliseconds waitingTime(const QDateTime &now) const;

    // The result of trying the entry with this ID, which may have been dropped meanwhile.
    void delivered(quint64 id);
    void failed(quint64 id, const QDateTime &now);

    [[nodiscard]] QJsonObject toJson() const;
    /// Drops what is not an entry.
    [[nodiscard]] static Outbox fromJson(const QJsonObject &json);

private:
    void removeFirst();

    QVector<OutboxEntry> m_entries;
    quint64 m_lastId = 0;
    int m_failures = 0; ///< of the first entry; no longer counted when the delay is the longest
    QDateTime m_lastFailure;
};
