// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/channel_outcome.h"
#include "monitor/fault_state.h"
#include "monitor/outbox.h"
#include "wire/result.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

/// Delivers one message at a time to one receiver. Event loop's thread only.
class Transport : public QObject
{
    Q_OBJECT

public:
    /// Called once, in a later turn of the event loop than send(). The reason of a failure is one line
    /// without credentials, URL and control characters.
    using Done = std::function<void(const Result<void> &)>;

    using QObject::QObject;

    /// Must not be called before the one before is done. Destroying the transport abandons the message.
    virtual void send(const OutboxEntry &entry, Done done) = 0;
};

/// A channel with an outbox: sends its entries in order and repeats what fails. Logs at warning when the
/// channel starts to fail, when it works again and what it drops.
class AlertChannel : public QObject
{
    Q_OBJECT

public:
    using Clock = std::function<QDateTime()>; ///< UTC

    AlertChannel(const QString &name, std::unique_ptr<Transport> transport, Clock clock);

    [[nodiscard]] QString name() const { return m_name; }
    [[nodiscard]] const ChannelOutcome &outcome() const { return m_outcome; }
    [[nodiscard]] int pending() const { return m_outbox.size(); }

    /// While the channel is off its entries wait.
    void setOn(bool isOn);
    [[nodiscard]] bool isOn() const { return m_isOn; }

    /// Appends a message; resume() sends it.
    void add(const OutboxEntry &entry);

    /// Sends what is due, after a change or a restart.
    void resume();

    /// Sends a test beside the outbox, after the delivery in progress.
    void test(const OutboxEntry &entry, Transport::Done done);

    [[nodiscard]] QJsonObject toJson() const;
    void restore(const QJsonObject &json);

Q_SIGNALS:
    /// The outbox or the outcome has changed and is to be stored.
    void changed();

private:
    struct Test
    {
        OutboxEntry entry;
        Transport::Done done;
    };

    void send(const OutboxEntry &entry, const Transport::Done &done);
    void sendFirst();
    void note(const Result<void> &result);

    const QString m_name;
    const std::unique_ptr<Transport> m_transport;
    const Clock m_clock;
    bool m_isOn = false;
    bool m_isSending = false;
    Outbox m_outbox;
    QVector<Test> m_tests;
    ChannelOutcome m_outcome;
    FaultState m_fault;
    QTimer m_retry;
};
