// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/soak_crowd.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

using namespace soak;

constexpr int kPatienceMs = 60000;
constexpr int kCoolest = 30;
constexpr int kHottest = 69;

/// What a process holds at a quiet moment.
struct Holdings
{
    int descriptors = 0;
    int threads = 0;
    int residentKilobytes = 0;
};

Holdings holdingsOf(qint64 pid)
{
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(pid));
    QFile file(QStringLiteral("/proc/%1/status").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString status = QString::fromLatin1(file.readAll());
    const auto number = [&status](const char *name) {
        const QRegularExpression line(QStringLiteral("\n%1:\\s*(\\d+)").arg(QLatin1String(name)));
        return line.match(status).captured(1).toInt();
    };
    return {int(descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size()),
            number("Threads"), number("VmRSS")};
}

QJsonObject smallDrive(int number)
{
    constexpr int kBytes = 64 * 1024 * 1024;
    QJsonObject drive = realDrive(number, QStringLiteral("st500nm0011.json"));
    drive.insert(QStringLiteral("capacity"), kBytes);
    drive.insert(QStringLiteral("readDelayMs"), 1);
    return drive;
}

QJsonObject machineAt(int celsius, bool hasLastDrive)
{
    const QJsonObject temperature{{QStringLiteral("id"), 194},      {QStringLiteral("flags"), 34},
                                  {QStringLiteral("current"), 100}, {QStringLiteral("worst"), 90},
                                  {QStringLiteral("threshold"), 0}, {QStringLiteral("raw"), celsius}};
    QJsonObject heated = smallDrive(0);
    heated.insert(QStringLiteral("smart"),
                  QJsonObject{{QStringLiteral("attributes"), QJsonArray{temperature}}});
    QJsonObject worn = smallDrive(2);
    worn.insert(QStringLiteral("badSectors"), QJsonArray{QJsonArray{1000, 1007}});
    QJsonArray drives{heated, smallDrive(1), worn};
    if (hasLastDrive)
        drives.append(smallDrive(kDrives - 1));
    const QJsonObject account{{QStringLiteral("name"), QStringLiteral("Operator")},
                              {QStringLiteral("privilege"), 2}};
    return {{QStringLiteral("drives"), drives}, {QStringLiteral("accounts"), QJsonArray{account}}};
}

/// One service, the crowds around it, and what is done to them.
class Soak
{
public:
    explicit Soak(unsigned seed)
        : m_random(seed)
    {}

    ~Soak()
    {
        m_arena.isOver = true;
        m_crowds.clear();
    }

    bool begin();
    /// Disturbs for so long, with restarts.
    void disturbRoughly(std::chrono::seconds time);
    /// Disturbs for so long without restarts, and looks now and then at what the service holds.
    void disturbAndMeasure(std::chrono::seconds time);
    /// Prints what has come of it; whether all is well.
    bool finish();

private:
    using Disturber = void (Soak::*)();

    void disturb(const QMap<QString, Disturber> &disturbers);
    void heat();
    void pullADrive();
    void detect();
    void pause();
    void askByProgram();
    void restart();
    void kill();
    void startAgain();
    void sample();
    void checkHoldings();
    [[nodiscard]] bool isFine(bool isFine, const char *what);
    [[nodiscard]] int random(int least, int most)
    {
        return std::uniform_int_distribution<int>(least, most)(m_random);
    }

    std::mt19937 m_random;
    ServiceFixture m_service;
    Arena m_arena;
    std::vector<std::unique_ptr<Crowd>> m_crowds;
    QMap<QString, int> m_faults;
    std::vector<Holdings> m_samples;
    int m_celsius = kCoolest;
};

bool Soak::begin()
{
    m_service.setKeyValue(QStringLiteral("SMARTPollInterval"), 1);
    m_service.setKeyValue(QStringLiteral("FreeSpacePollInterval"), 1);
    // The sanitizer keeps freed memory for a while, which would look like growth.
    m_service.setVariable(QStringLiteral("ASAN_OPTIONS"),
                          qEnvironmentVariable("ASAN_OPTIONS") + QStringLiteral(":quarantine_size_mb=4"));
    m_service.writeMachine(machineAt(m_celsius, true));
    if (!m_service.serve())
        return isFine(false, "the service does not start");
    m_arena.port = m_service.port();
    QHash<QString, QString> constants;
    RawConsole console(m_service.port());
    Q_UNUSED(console.readLine());
    for (const char *request : {"VER",
                                "DEVCOUNT",
                                "DEVINFO]![4",
                                "SMARTINFO]![1",
                                "SMARTINFO]![2",
                                "SMARTINFO]![3",
                                "SMARTVALUE]![1",
                                "SMARTINFO]![-1",
                                "ALLVOLINFO",
                                "VOLINFO]![1]![0",
                                "USERCOUNT",
                                "USERINFO]![0",
                                "USERINFO]![7",
                                "CHECKPASS]![a]![b",
                                "SET",
                                "STARTSCAN]![0",
                                "STARTSCAN]![9]![65536]![0]![9",
                                "STOPSCAN]![x",
                                "ver",
                                "SETTIME]![0]![1",
                                "SMTPTEST",
                                ""})
        constants.insert(QLatin1String(request), console.ask(QLatin1String(request)));
    for (int drive = 0; drive < kDrives; ++drive)
        m_crowds.push_back(std::make_unique<Crowd>(m_arena, drive, constants, m_random()));
    return constants.value(QStringLiteral("DEVCOUNT")) == QStringLiteral("DEVCOUNT,%1").arg(kDrives);
}

bool Soak::isFine(bool isFine, const char *what)
{
    if (!isFine)
        m_arena.complain(QLatin1String(what));
    return isFine;
}

void Soak::disturb(const QMap<QString, Disturber> &disturbers)
{
    const auto chosen = std::next(disturbers.cbegin(), random(0, int(disturbers.size()) - 1));
    (this->*chosen.value())();
    ++m_faults[chosen.key()];
    QTest::qWait(random(50, 800));
}

void Soak::disturbRoughly(std::chrono::seconds time)
{
    for (const QDeadlineTimer end(time); !end.hasExpired();)
        disturb({{QStringLiteral("heated drives"), &Soak::heat},
                 {QStringLiteral("pulled drives"), &Soak::pullADrive},
                 {QStringLiteral("detections"), &Soak::detect},
                 {QStringLiteral("pauses"), &Soak::pause},
                 {QStringLiteral("runs of halvexctl"), &Soak::askByProgram},
                 {QStringLiteral("restarts"), &Soak::restart},
                 {QStringLiteral("kills"), &Soak::kill}});
}

void Soak::disturbAndMeasure(std::chrono::seconds time)
{
    constexpr std::chrono::seconds kBetweenSamples{10};
    restart();
    for (const QDeadlineTimer end(time); !end.hasExpired(); sample()) {
        for (const QDeadlineTimer next(kBetweenSamples); !next.hasExpired();)
            disturb({{QStringLiteral("heated drives"), &Soak::heat},
                     {QStringLiteral("pulled drives"), &Soak::pullADrive},
                     {QStringLiteral("detections"), &Soak::detect},
                     {QStringLiteral("pauses"), &Soak::pause},
                     {QStringLiteral("runs of halvexctl"), &Soak::askByProgram}});
    }
    checkHoldings();
}

void Soak::heat()
{
    m_celsius = random(kCoolest, kHottest);
    m_service.writeMachine(machineAt(m_celsius, true));
}

void Soak::pullADrive()
{
    m_service.writeMachine(machineAt(m_celsius, false));
    QTest::qWait(random(100, 2000)); // a poll may fall into it, or not
    m_service.writeMachine(machineAt(m_celsius, true));
}

void Soak::detect()
{
    m_arena.begin(Detection);
    RawConsole console(m_service.port());
    Q_UNUSED(console.readLine());
    Q_UNUSED(isFine(console.ask(QStringLiteral("RESET")) == QLatin1String("RESET_OK"), "RESET is refused"));
    Q_UNUSED(isFine(m_service.waitUntilReady(), "the detection does not end"));
    m_arena.end(Detection);
}

void Soak::pause()
{
    m_arena.begin(Pause);
    Q_UNUSED(isFine(m_service.pause(), "the service does not pause"));
    QTest::qWait(random(0, 500));
    Q_UNUSED(isFine(m_service.resume(), "the service does not go on"));
    Q_UNUSED(isFine(m_service.waitUntilReady(), "the service is still paused"));
    m_arena.end(Pause);
}

void Soak::askByProgram()
{
    QProcess program;
    program.setProcessEnvironment(m_service.environment());
    program.start(QStringLiteral(HALVEX_CONSOLE_PROGRAM),
                  {QStringLiteral("-t"), QStringLiteral("60"), QStringLiteral("count")});
    const bool hasEnded = program.waitForFinished(kPatienceMs);
    Q_UNUSED(isFine(hasEnded && program.readAllStandardOutput() == QByteArray::number(kDrives) + '\n',
                    "halvexctl count prints something else"));
}

void Soak::restart()
{
    m_arena.begin(Restart);
    m_arena.begin(Detection);
    Q_UNUSED(isFine(m_service.stop() == 0, "a polite stop fails"));
    startAgain();
}

void Soak::kill()
{
    m_arena.begin(Restart);
    m_arena.begin(Detection);
    m_service.process().kill();
    Q_UNUSED(isFine(m_service.process().waitForFinished(kPatienceMs), "the process cannot be killed"));
    startAgain();
}

void Soak::startAgain()
{
    Q_UNUSED(isFine(m_service.serve(), "the service does not start again"));
    const Silence silence(m_arena);
    for (const auto &crowd : m_crowds)
        crowd->leave(); // their connections led to the process before
    m_arena.port = m_service.port();
    m_arena.end(Restart);
    m_arena.end(Detection);
}

/// Nobody is connected and nothing is scanned when the holdings are looked at.
void Soak::sample()
{
    const Silence silence(m_arena);
    for (const auto &crowd : m_crowds)
        crowd->leave();
    {
        RawConsole console(m_service.port());
        Q_UNUSED(console.readLine());
        for (int drive = 0; drive < kDrives; ++drive)
            Q_UNUSED(console.ask(QStringLiteral("STOPSCAN]![%1").arg(drive)));
        const auto isIdle = [&console] {
            return !console.ask(QStringLiteral("GSTATSCAN"))
                        .contains(QRegularExpression(QStringLiteral("[[|]\\d;1;")));
        };
        Q_UNUSED(isFine(QTest::qWaitFor(isIdle, kPatienceMs), "a scan does not stop"));
    }
    const qint64 pid = m_service.process().processId();
    const auto isQuiet = [&] {
        return m_samples.empty() || holdingsOf(pid).descriptors <= m_samples.front().descriptors;
    };
    Q_UNUSED(QTest::qWaitFor(isQuiet, 5000));
    m_samples.push_back(holdingsOf(pid));
}

/// Flat: what is held at the end was held in the first third already.
void Soak::checkHoldings()
{
    const auto most = [this](int Holdings::*member) {
        const auto end = m_samples.cbegin() + std::ptrdiff_t((m_samples.size() + 2) / 3);
        const auto highest =
            std::max_element(m_samples.cbegin(), end,
                             [member](const auto &a, const auto &b) { return a.*member < b.*member; });
        return (*highest).*member;
    };
    constexpr int kLeewayKilobytes = 4096; // of the allocator
    const Holdings &last = m_samples.back();
    constexpr std::size_t kShown = 10;
    for (std::size_t i = 0; i < m_samples.size(); i += m_samples.size() / kShown + 1)
        std::printf("soak: at rest %d descriptors, %d threads, %d kB\n", m_samples[i].descriptors,
                    m_samples[i].threads, m_samples[i].residentKilobytes);
    std::printf("soak: at the end %d descriptors, %d threads, %d kB\n", last.descriptors, last.threads,
                last.residentKilobytes);
    Q_UNUSED(isFine(last.descriptors <= most(&Holdings::descriptors), "descriptors have leaked"));
    Q_UNUSED(isFine(last.threads <= most(&Holdings::threads), "threads have leaked"));
    const int memory = most(&Holdings::residentKilobytes);
    Q_UNUSED(isFine(last.residentKilobytes <= memory + memory / 20 + kLeewayKilobytes, "memory grows"));
}

bool Soak::finish()
{
    m_arena.isOver = true;
    m_crowds.clear();
    Q_UNUSED(isFine(m_service.stop() == 0, "the last stop fails"));
    const QByteArray output = m_service.output();
    Q_UNUSED(
        isFine(!output.contains("Sanitizer") && !output.contains("runtime error"), "a sanitizer speaks"));
    const QStringList complaints = m_arena.complaints();
    int faults = 0;
    for (auto fault = m_faults.cbegin(); fault != m_faults.cend(); ++fault) {
        std::printf("soak: %d %s\n", fault.value(), qPrintable(fault.key()));
        faults += fault.value();
    }
    for (const QString &complaint : complaints.mid(0, 20))
        std::printf("soak: WRONG: %s\n", qPrintable(complaint));
    std::printf("soak: %llu requests answered, %d faults injected, %d wrong answers\n",
                static_cast<unsigned long long>(m_arena.answers), faults, int(complaints.size()));
    if (!complaints.isEmpty())
        std::printf("%s\n", output.right(20000).constData());
    return complaints.isEmpty();
}

} // namespace

/// soak [MINUTES [SEED]]: exit code 0 when every answer was right and nothing was left behind.
int main(int argc, char *argv[])
{
    constexpr double kUsualMinutes = 3;
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const double minutes = arguments.size() > 1 ? arguments.at(1).toDouble() : kUsualMinutes;
    const unsigned seed = arguments.size() > 2 ? arguments.at(2).toUInt() : std::random_device()();
    if (minutes <= 0) {
        std::fprintf(stderr, "usage: soak [MINUTES [SEED]]\n");
        return 2;
    }
    std::printf("soak: %g minutes with seed %u\n", minutes, seed);
    std::fflush(stdout);
    Soak soak(seed);
    if (soak.begin()) {
        const std::chrono::seconds half(int(minutes * 30));
        soak.disturbRoughly(half);
        soak.disturbAndMeasure(half);
    }
    return soak.finish() ? 0 : 1;
}
