// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "process/service_fixture.h"

#include <QHash>
#include <QMutex>
#include <QReadWriteLock>
#include <QStringList>

#include <atomic>
#include <memory>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace soak {

inline constexpr int kDrives = 4; ///< with one crowd each

/// The reasons for an unusual answer. Several may apply at a time.
enum Disturbance : unsigned { Detection = 1, Pause = 2, Restart = 4 };

/// The state that the crowds and the disturber share. Any thread.
class Arena
{
public:
    std::atomic<quint16> port{0};
    std::atomic<bool> isOver{false};
    std::atomic<quint64> answers{0};
    /// Read-locked by a crowd during a request. While it is write-locked, no request is pending.
    QReadWriteLock requests;

    void begin(Disturbance disturbance);
    void end(Disturbance disturbance) { m_disturbances &= ~unsigned(disturbance); }

    /// A point in time; disturbancesSince() returns the disturbances that have been active since then.
    struct Mark
    {
        unsigned begun; ///< read first: a disturbance that starts in between counts as later
        unsigned disturbances;
    };
    [[nodiscard]] Mark mark() const { return {m_begun, m_disturbances}; }
    [[nodiscard]] unsigned disturbancesSince(Mark mark) const;

    void reportFailure(const QString &text);
    [[nodiscard]] QStringList failures() const;

private:
    std::atomic<unsigned> m_disturbances{0};
    std::atomic<unsigned> m_begun{0};
    mutable QMutex m_mutex;
    QStringList m_complaints;
};

/// A thread with many consoles that send random requests and check every answer. It scans and schedules one
/// drive of its own.
class Crowd
{
public:
    /// Uses `console` to read the replies that never change.
    Crowd(Arena &arena, int drive, RawConsole &console, unsigned seed);
    ~Crowd(); ///< waits for the thread; Arena::isOver has to be set

    /// Closes all connections; Arena::requests has to be write-locked.
    void leave();

private:
    void run();
    void step();
    [[nodiscard]] RawConsole *connectedConsole();
    /// Returns the reply to the request or to the noise sent in its place; nothing if a disturbance explains
    /// it, or if there is none, which is reported as a failure.
    [[nodiscard]] QString ask(RawConsole &console, const QString &request, const QByteArray &noise = {});
    [[nodiscard]] bool isExplained(const QString &line, Arena::Mark since) const;
    void expect(bool isFine, const QString &request, const QString &reply);

    void askByTable(RawConsole &console);
    void setSchedule(RawConsole &console);
    void sendNoise(RawConsole &console);

    [[nodiscard]] int random(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(m_random); }

    Arena &m_arena;
    const int m_drive;
    QHash<QString, QString> m_constants; ///< the replies that never change, by request
    std::mt19937 m_random;
    std::vector<std::unique_ptr<RawConsole>> m_consoles;
    std::set<QString> m_schedules; ///< of its own drive; one of these is stored; empty: any
    std::thread m_thread;
};

} // namespace soak
