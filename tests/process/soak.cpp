// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/proc_status.h"
#include "process/soak_crowd.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <iterator>

namespace {

using namespace soak;
using std::chrono::seconds;

/// The resources of a process when it is idle.
using Holdings = std::array<int, 3>;
const char *const kHoldingNames[] = {"descriptors", "threads", "kilobytes"};

/// Returns the machine with a random temperature of drive 0, and without the last drive if it is pulled.
QJsonObject machineAt(int celsius, bool isPulled = false)
{
    QByteArray machine = R"({
        "drives": [{"number": 0, COMMON, "smart": {"attributes": [
                       {"id": 194, "flags": 34, "current": 100, "worst": 90, "raw": CELSIUS}]}},
                   {"number": 1, COMMON},
                   {"number": 2, COMMON, "badSectors": [[1000, 1007]]} LAST],
        "accounts": [{"name": "Operator", "privilege": 2}]
    })";
    machine.replace("LAST", isPulled ? "" : R"(, {"number": 3, COMMON})");
    machine.replace("COMMON", R"("dump": "drives/st500nm0011.json", "capacity": 67108864, "readDelayMs": 1)");
    return json(machine.replace("CELSIUS", QByteArray::number(celsius)));
}

/// One service, the crowds around it, and the disturbances.
class Soak
{
public:
    explicit Soak(unsigned seed)
        : m_random(seed)
    {}

    ~Soak() { end(); }

    bool begin();
    /// Disturbs the service for this time, with restarts.
    void disturbRoughly(seconds time) { disturb(time, std::size(kDisturbers)); }
    /// Disturbs the service for this time without restarts, and samples its resources.
    void disturbAndMeasure(seconds time);
    /// Prints the result and returns whether there was no failure.
    bool finish();

private:
    struct Disturber
    {
        const char *name;
        void (Soak::*disturb)();
    };
    static const Disturber kDisturbers[7]; ///< the rough ones last
    static constexpr std::size_t kGentle = 5;

    void disturb(seconds time, std::size_t choices);
    void heat() { m_service.writeMachine(machineAt(random(30, 69))); }
    void pullADrive();
    void detect();
    void pause();
    void askByProgram();
    void restart();
    void kill();
    void startAgain();
    [[nodiscard]] Holdings holdings() const;
    void sample();
    void checkHoldings();
    void end();
    void check(bool isFine, const char *failure);
    [[nodiscard]] int random(int least, int most)
    {
        return std::uniform_int_distribution<int>(least, most)(m_random);
    }

    std::mt19937 m_random;
    ServiceFixture m_service;
    Arena m_arena;
    std::vector<std::unique_ptr<Crowd>> m_crowds;
    std::array<int, std::size(kDisturbers)> m_faults{};
    std::vector<Holdings> m_samples;
};

const Soak::Disturber Soak::kDisturbers[7] = {
    {"heated drives", &Soak::heat}, {"pulled drives", &Soak::pullADrive},       {"detections", &Soak::detect},
    {"pauses", &Soak::pause},       {"runs of halvexctl", &Soak::askByProgram}, {"restarts", &Soak::restart},
    {"kills", &Soak::kill},
};

bool Soak::begin()
{
    m_service.setKeyValue("SMARTPollInterval", 1);
    m_service.setKeyValue("FreeSpacePollInterval", 1);
    // The sanitizer delays the release of memory, which would look like growth.
    m_service.setVariable("ASAN_OPTIONS", qEnvironmentVariable("ASAN_OPTIONS") + ":quarantine_size_mb=4");
    m_service.writeMachine(machineAt(30));
    const bool isServing = m_service.serve();
    check(isServing, "the service does not start");
    if (!isServing)
        return false;
    m_arena.port = m_service.port();
    RawConsole console(m_service.port());
    console.readLine();
    for (int drive = 0; drive < kDrives; ++drive)
        m_crowds.push_back(std::make_unique<Crowd>(m_arena, drive, console, m_random()));
    check(console.ask("DEVCOUNT") == QString("DEVCOUNT,%1").arg(kDrives), "not all drives are there");
    return true;
}

void Soak::check(bool isFine, const char *failure)
{
    if (!isFine)
        m_arena.reportFailure(QLatin1String(failure));
}

void Soak::disturb(seconds time, std::size_t choices)
{
    for (const QDeadlineTimer end(time); !end.hasExpired(); QTest::qWait(random(50, 800))) {
        const auto chosen = std::size_t(random(0, int(choices) - 1));
        (this->*kDisturbers[chosen].disturb)();
        ++m_faults[chosen];
    }
}

void Soak::disturbAndMeasure(seconds time)
{
    constexpr seconds kBetweenSamples{10};
    restart();
    for (const QDeadlineTimer end(time); !end.hasExpired(); sample())
        disturb(kBetweenSamples, kGentle);
    checkHoldings();
}

void Soak::pullADrive()
{
    m_service.writeMachine(machineAt(30, true));
    QTest::qWait(random(100, 2000)); // may contain a poll
    m_service.writeMachine(machineAt(30));
}

void Soak::detect()
{
    m_arena.begin(Detection);
    check(m_service.ask("RESET") == "RESET_OK", "RESET is refused");
    check(m_service.waitUntilReady(), "the detection does not end");
    m_arena.end(Detection);
}

void Soak::pause()
{
    m_arena.begin(Pause);
    check(m_service.pause(), "the service does not pause");
    QTest::qWait(random(0, 500));
    check(m_service.resume(), "the service does not go on");
    m_arena.end(Pause);
}

void Soak::askByProgram()
{
    QProcess program;
    program.setProcessEnvironment(m_service.environment());
    program.start(QStringLiteral(HALVEX_CONSOLE_PROGRAM), {"-t", "60", "count"});
    const bool hasEnded = program.waitForFinished(kPatienceMs);
    check(hasEnded && program.readAllStandardOutput() == QByteArray::number(kDrives) + '\n',
          "halvexctl count prints something else");
}

void Soak::restart()
{
    m_arena.begin(Restart);
    m_arena.begin(Detection);
    check(m_service.stop() == 0, "a polite stop fails");
    startAgain();
}

void Soak::kill()
{
    m_arena.begin(Restart);
    m_arena.begin(Detection);
    m_service.process().kill();
    check(m_service.process().waitForFinished(kPatienceMs), "the process cannot be killed");
    startAgain();
}

void Soak::startAgain()
{
    check(m_service.serve(), "the service does not start again");
    const QWriteLocker silence(&m_arena.requests);
    for (const auto &crowd : m_crowds)
        crowd->leave(); // their connections belong to the previous process
    m_arena.port = m_service.port();
    m_arena.end(Restart);
    m_arena.end(Detection);
}

Holdings Soak::holdings() const
{
    const auto number = [this](const char *field) { return int(procStatus(m_service.processId(), field)); };
    return {m_service.descriptors(), number("Threads"), number("VmRSS")};
}

/// Samples the resources while no crowd is connected and no scan runs.
void Soak::sample()
{
    const QWriteLocker silence(&m_arena.requests);
    for (const auto &crowd : m_crowds)
        crowd->leave();
    for (int drive = 0; drive < kDrives; ++drive)
        m_service.ask(QString("STOPSCAN]![%1").arg(drive));
    const QRegularExpression running("[[|]\\d;1;");
    const auto isIdle = [&] { return !m_service.ask("GSTATSCAN").contains(running); };
    check(QTest::qWaitFor(isIdle, kPatienceMs), "a scan does not stop");
    Holdings held{};
    const auto isQuiet = [&] {
        held = holdings();
        return m_samples.empty() || (held[0] <= m_samples.front()[0] && held[1] <= m_samples.front()[1]);
    };
    Q_UNUSED(QTest::qWaitFor(isQuiet, 5000));
    std::printf("soak: at rest %d descriptors, %d threads, %d kB\n", held[0], held[1], held[2]);
    m_samples.push_back(held);
}

/// Checks that the last sample does not exceed the first third's.
void Soak::checkHoldings()
{
    const Holdings &last = m_samples.back();
    const auto firstThird = m_samples.cbegin() + std::ptrdiff_t((m_samples.size() + 2) / 3);
    for (std::size_t i = 0; i < last.size(); ++i) {
        int most = 0;
        std::for_each(m_samples.cbegin(), firstThird,
                      [&](const Holdings &held) { most = qMax(most, held[i]); });
        const int leeway = i == 2 ? most / 20 + 4096 : 0; // of the allocator
        if (last[i] > most + leeway)
            m_arena.reportFailure(QString("%1 have leaked").arg(QLatin1String(kHoldingNames[i])));
    }
}

void Soak::end()
{
    m_arena.isOver = true;
    m_crowds.clear();
}

bool Soak::finish()
{
    end();
    check(m_service.stop() == 0, "the last stop fails");
    const QByteArray output = m_service.output();
    check(!output.contains("Sanitizer") && !output.contains("runtime error"), "a sanitizer speaks");
    const QStringList failures = m_arena.failures();
    for (std::size_t i = 0; i < m_faults.size(); ++i)
        std::printf("soak: %d %s\n", m_faults[i], kDisturbers[i].name);
    for (const QString &failure : failures.mid(0, 20))
        std::printf("soak: WRONG: %s\n", qPrintable(failure));
    std::printf("soak: %llu requests answered, %d wrong answers\n",
                static_cast<unsigned long long>(m_arena.answers), int(failures.size()));
    if (!failures.isEmpty())
        std::printf("%s\n", output.right(20000).constData());
    return failures.isEmpty();
}

} // namespace

/// soak [MINUTES [SEED]]: exit code 0 if every answer was right and no resource leaked.
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const double minutes = arguments.value(1, "3").toDouble();
    const unsigned seed = arguments.size() > 2 ? arguments.at(2).toUInt() : std::random_device()();
    if (minutes <= 0) {
        std::fprintf(stderr, "usage: soak [MINUTES [SEED]]\n");
        return 2;
    }
    std::printf("soak: %g minutes with seed %u\n", minutes, seed);
    std::fflush(stdout);
    Soak soak(seed);
    if (soak.begin()) {
        const seconds half(int(minutes * 30));
        soak.disturbRoughly(half);
        soak.disturbAndMeasure(half);
    }
    return soak.finish() ? 0 : 1;
}
