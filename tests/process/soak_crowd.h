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

inline constexpr int kDrives = 4; ///< and a crowd for each

/// What may make an answer other than usual. Several may be under way at a time.
enum Disturbance : unsigned { Detection = 1, Pause = 2, Restart = 4 };

/// What the crowds and the one who disturbs them share. All of it may be used by every thread.
class Arena
{
public:
    std::atomic<quint16> port{0};
    std::atomic<bool> isOver{false};
    std::atomic<quint64> answers{0};
    /// Read-locked by a crowd that talks. While it is write-locked, each has finished what it was at.
    QReadWriteLock talk;

    void begin(Disturbance disturbance);
    void end(Disturbance disturbance) { m_disturbances &= ~unsigned(disturbance); }

    /// A moment; disturbancesSince() tells what was under way then or has been since.
    struct Mark
    {
        unsigned begun; ///< looked at first: what begins in between then counts as begun since
        unsigned disturbances;
    };
    [[nodiscard]] Mark mark() const { return {m_begun, m_disturbances}; }
    [[nodiscard]] unsigned disturbancesSince(Mark mark) const;

    void complain(const QString &text);
    [[nodiscard]] QStringList complaints() const;

private:
    std::atomic<unsigned> m_disturbances{0};
    std::atomic<unsigned> m_begun{0};
    mutable QMutex m_mutex;
    QStringList m_complaints;
};

/// A thread with many consoles that ask at random, over and over, and check every answer. It scans and
/// schedules one drive of its own.
class Crowd
{
public:
    /// `console` is asked for the replies that stay as they are.
    Crowd(Arena &arena, int drive, RawConsole &console, unsigned seed);
    ~Crowd(); ///< waits for the thread; Arena::isOver has to be set

    /// Closes all connections; Arena::talk has to be write-locked.
    void leave();

private:
    void run();
    void step();
    [[nodiscard]] RawConsole *connectedConsole();
    /// The reply to the request, or to the noise sent in its place; nothing when it is one that a disturbance
    /// explains, or none, which is reported.
    [[nodiscard]] QString ask(RawConsole &console, const QString &request, const QByteArray &noise = {});
    [[nodiscard]] bool isExplained(const QString &line, Arena::Mark since) const;
    void expect(bool isFine, const QString &request, const QString &reply);

    void askByTable(RawConsole &console);
    void setSchedule(RawConsole &console);
    void sendNoise(RawConsole &console);

    [[nodiscard]] int random(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(m_random); }

    Arena &m_arena;
    const int m_drive;
    QHash<QString, QString> m_constants; ///< the one reply that a request has all the time
    std::mt19937 m_random;
    std::vector<std::unique_ptr<RawConsole>> m_consoles;
    std::set<QString> m_schedules; ///< of its own drive; one of these is stored, or any when there is none
    std::thread m_thread;
};

} // namespace soak
