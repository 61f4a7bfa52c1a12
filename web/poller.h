// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/configuration.h"
#include "web/hourly_temperatures.h"
#include "web/service_clock.h"
#include "web/service_poll.h"
#include "web/snapshot.h"

#include <QElapsedTimer>
#include <QObject>
#include <QQueue>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

namespace web {

/// Polls every service at the configured interval, on the event loop's thread. A service that does not answer
/// holds one of a few places until its deadline. Those that failed last time have half of the places, so that
/// they delay nobody else, however many they are.
class Poller : public QObject
{
    Q_OBJECT
public:
    explicit Poller(const Configuration &configuration);
    ~Poller() override;

    void start();

    /// Polls the service `name` as soon as a place is free, besides its interval.
    void pollNow(const QString &name);

    /// Returns the state of all services. Immutable; replaced by every poll.
    [[nodiscard]] std::shared_ptr<const Snapshot> snapshot() const { return m_snapshot; }

    /// Returns the clock of the service at `index` of the configuration, as of its last answer.
    [[nodiscard]] QTimeZone zone(int index) const;

Q_SIGNALS:
    /// Sent after the snapshot was replaced. `before` is the state that `after` follows.
    void polled(const std::shared_ptr<const web::ServiceSnapshot> &before,
                const std::shared_ptr<const web::ServiceSnapshot> &after);

private:
    struct Service
    {
        ServiceAddress address;
        QTimer timer;
        std::unique_ptr<ServicePoll> poll; ///< null while none runs
        bool isQueued = false;
        bool wantsAnother = false; ///< a poll was asked for while one was running
        bool hasFailed = false;    ///< the last poll
        std::optional<client::ServiceTime> time;
        HourlyTemperatures temperatures;
        QElapsedTimer sinceAnswer; ///< invalid before the first one
        qint64 lastRecord = 0;     ///< seconds since 1970; 0: none yet
    };

    void enqueue(int index);
    void startQueued();
    /// Removes the first service that a place is free for from the queue; nullopt if there is none.
    [[nodiscard]] std::optional<int> takeQueued();
    void take(int index, PollResult result);
    void takeHistory(Service &service, const PollResult &result);
    [[nodiscard]] std::shared_ptr<ServiceSnapshot> next(int index, PollResult &result);

    const Configuration &m_configuration;
    std::vector<std::unique_ptr<Service>> m_services;
    QQueue<int> m_queue;
    int m_running = 0;
    std::shared_ptr<const Snapshot> m_snapshot;
};

} // namespace web
