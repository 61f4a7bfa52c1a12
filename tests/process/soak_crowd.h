// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "process/service_fixture.h"

#include <QHash>
#include <QMutex>
#include <QStringList>

#include <atomic>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <shared_mutex>
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
    friend class Talk;
    friend class Silence;

    std::shared_mutex m_silence;
    std::atomic<bool> m_wantsSilence{false}; ///< a shared mutex alone would let the crowds go on for ever
    std::atomic<unsigned> m_disturbances{0};
    std::atomic<unsigned> m_begun{0};
    mutable QMutex m_mutex;
    QStringList m_complaints;
};

/// While it exists there is no Silence; waits for one to end.
class Talk
{
public:
    explicit Talk(Arena &arena);

private:
    std::shared_lock<std::shared_mutex> m_lock;
};

/// While it exists no crowd does anything; waits until each has finished what it was at.
class Silence
{
public:
    explicit Silence(Arena &arena);
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;
    ~Silence();

private:
    Arena &m_arena;
    std::unique_lock<std::shared_mutex> m_lock;
};

/// A thread with many consoles that ask at random, over and over, and check every answer. It scans and
/// schedules one drive of its own.
class Crowd
{
public:
    /// `constants` maps requests to the one reply that they have all the time.
    Crowd(Arena &arena, int drive, const QHash<QString, QString> &constants, unsigned seed);
    ~Crowd(); ///< waits for the thread; Arena::isOver has to be set

    /// Closes all connections; in a Silence.
    void leave();

private:
    using Action = void (Crowd::*)(RawConsole &);

    void run();
    void step();
    [[nodiscard]] RawConsole *connectedConsole();
    void checkFirstLine(const QString &line, Arena::Mark since);
    /// The reply; nothing when it is one that a disturbance explains, or a wrong one, which is reported.
    [[nodiscard]] QString ask(RawConsole &console, const QString &request);
    [[nodiscard]] bool isExplained(const QString &line, Arena::Mark since) const;
    void expect(bool isFine, const QString &request, const QString &reply);

    void askConstant(RawConsole &console);
    void askLists(RawConsole &console);
    void askHistory(RawConsole &console);
    void authenticate(RawConsole &console);
    void changeSettings(RawConsole &console);
    void changeSchedule(RawConsole &console);
    void checkSchedule(RawConsole &console);
    void scan(RawConsole &console);
    void checkScans(RawConsole &console);
    void refresh(RawConsole &console);
    void sendNoise(RawConsole &console);
    void sendHalfALine(RawConsole &console);
    void disappear(RawConsole &console);
    void sayGoodbye(RawConsole &console);

    [[nodiscard]] int random(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(m_random); }

    Arena &m_arena;
    const int m_drive;
    const QHash<QString, QString> m_constants;
    std::mt19937 m_random;
    std::vector<std::unique_ptr<RawConsole>> m_consoles;
    std::set<QString> m_schedules; ///< of its own drive; one of these is stored, or any when there is none
    std::thread m_thread;
};

} // namespace soak
