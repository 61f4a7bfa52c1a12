// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/soak_crowd.h"

#include "console/client/greeting.h"
#include "console/client/history.h"
#include "console/client/inventory.h"
#include "console/client/scans.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QThread>

#include <algorithm>

namespace soak {

namespace {

constexpr int kConsoles = 25;
constexpr int kLongestText = 2000;

QString quoted(const QString &text)
{
    return text.isNull() ? QStringLiteral("nothing") : text.left(200);
}

} // namespace

void Arena::begin(Disturbance disturbance)
{
    m_disturbances |= unsigned(disturbance);
    ++m_begun;
}

unsigned Arena::disturbancesSince(Mark mark) const
{
    constexpr unsigned kAll = Detection | Pause | Restart;
    return m_begun == mark.begun ? mark.disturbances | m_disturbances : kAll;
}

void Arena::complain(const QString &text)
{
    const QMutexLocker locker(&m_mutex);
    m_complaints.append(text);
}

QStringList Arena::complaints() const
{
    const QMutexLocker locker(&m_mutex);
    return m_complaints;
}

Talk::Talk(Arena &arena)
{
    while (arena.m_wantsSilence)
        QThread::msleep(1);
    m_lock = std::shared_lock(arena.m_silence);
}

Silence::Silence(Arena &arena)
    : m_arena(arena)
{
    arena.m_wantsSilence = true;
    m_lock = std::unique_lock(arena.m_silence);
}

Silence::~Silence()
{
    m_arena.m_wantsSilence = false;
}

Crowd::Crowd(Arena &arena, int drive, const QHash<QString, QString> &constants, unsigned seed)
    : m_arena(arena)
    , m_drive(drive)
    , m_constants(constants)
    , m_random(seed)
    , m_consoles(kConsoles)
    , m_thread([this] { run(); })
{}

Crowd::~Crowd()
{
    m_thread.join();
}

void Crowd::leave()
{
    for (auto &console : m_consoles)
        console.reset();
}

void Crowd::run()
{
    while (!m_arena.isOver) {
        const Talk talk(m_arena);
        step();
    }
    leave();
}

void Crowd::step()
{
    struct Choice
    {
        int weight;
        Action action;
    };
    static const Choice kChoices[] = {
        {42, &Crowd::askConstant},  {15, &Crowd::askLists},      {3, &Crowd::askHistory},
        {5, &Crowd::authenticate},  {4, &Crowd::changeSettings}, {4, &Crowd::changeSchedule},
        {8, &Crowd::checkSchedule}, {2, &Crowd::scan},           {8, &Crowd::checkScans},
        {1, &Crowd::refresh},       {3, &Crowd::sendNoise},      {2, &Crowd::sendHalfALine},
        {2, &Crowd::disappear},     {1, &Crowd::sayGoodbye},
    };
    constexpr int kWeights = 100;
    RawConsole *const console = connectedConsole();
    int left = random(kWeights);
    for (const Choice &choice : kChoices) {
        left -= choice.weight;
        if (left < 0 && console != nullptr) {
            (this->*choice.action)(*console);
            break;
        }
    }
}

RawConsole *Crowd::connectedConsole()
{
    std::unique_ptr<RawConsole> &console = m_consoles[std::size_t(random(kConsoles))];
    if (console && console->isConnected())
        return console.get();
    const Arena::Mark since = m_arena.mark();
    console = std::make_unique<RawConsole>(m_arena.port);
    checkFirstLine(console->isConnected() ? console->readLine() : QString(), since);
    return console->isConnected() ? console.get() : nullptr;
}

/// A greeting holds the settings of one SET: its three texts are the same.
void Crowd::checkFirstLine(const QString &line, Arena::Mark since)
{
    const auto greeting = client::parseGreeting(line);
    if (!greeting) {
        if (!isExplained(line, since))
            expect(false, QStringLiteral("(connection)"), line);
        return;
    }
    ++m_arena.answers;
    const client::ServiceSettings &settings = greeting->settings;
    expect(settings.smtpFrom == settings.smtpTo && settings.smtpTo == settings.critExtTask,
           QStringLiteral("(connection)"), line);
}

bool Crowd::isExplained(const QString &line, Arena::Mark since) const
{
    const unsigned disturbances = m_arena.disturbancesSince(since);
    return (line == QLatin1String("DETECTING") && (disturbances & Detection) != 0) ||
           (line == QLatin1String("PAUSED") && (disturbances & Pause) != 0) ||
           (line.isNull() && (disturbances & Restart) != 0);
}

QString Crowd::ask(RawConsole &console, const QString &request)
{
    const Arena::Mark since = m_arena.mark();
    QString reply = console.ask(request);
    if (isExplained(reply, since)) {
        if (reply.isNull())
            console.socket().abort();
        return {};
    }
    ++m_arena.answers;
    if (!reply.isNull() && reply != QLatin1String("DETECTING") && reply != QLatin1String("PAUSED"))
        return reply;
    expect(false, request, reply);
    console.socket().abort();
    return {};
}

void Crowd::expect(bool isFine, const QString &request, const QString &reply)
{
    if (!isFine)
        m_arena.complain(QStringLiteral("%1 was answered %2").arg(quoted(request), quoted(reply)));
}

void Crowd::askConstant(RawConsole &console)
{
    const auto constant = std::next(m_constants.cbegin(), random(int(m_constants.size())));
    const QString reply = ask(console, constant.key());
    expect(reply.isNull() || reply == constant.value(), constant.key(), reply);
}

void Crowd::askLists(RawConsole &console)
{
    const QString drives = ask(console, QStringLiteral("ALLDEVINFO"));
    if (!drives.isNull()) {
        const auto parsed = client::parseAllDrives(drives);
        expect(parsed && parsed->size() == kDrives, QStringLiteral("ALLDEVINFO"), drives);
    }
    const QString attributes = ask(console, QStringLiteral("SMARTINFO]![0"));
    if (!attributes.isNull()) {
        const auto parsed = client::parseAttributes(attributes, 0);
        expect(parsed && parsed->size() == 1 && parsed->first().raw >= 30 && parsed->first().raw < 70,
               QStringLiteral("SMARTINFO"), attributes);
    }
}

void Crowd::askHistory(RawConsole &console)
{
    // The latest alone: the log grows all the time, and what it takes to send it whole would grow as well.
    const QString from = QDateTime::currentDateTime().addSecs(-20).toString(QStringLiteral("yyMMddhhmmss"));
    const QString request = QStringLiteral("GSTATD]![%1]![991231235959").arg(from);
    const QString reply = ask(console, request);
    if (reply.isNull())
        return;
    const auto history = client::parseHistory(reply);
    const auto isFine = [](const client::TemperatureRecord &record) {
        return record.drive < kDrives && record.temperature && *record.temperature < 70;
    };
    expect(history && history->damaged == 0 &&
               std::all_of(history->records.cbegin(), history->records.cend(), isFine),
           request, reply);
}

void Crowd::authenticate(RawConsole &console)
{
    static const QRegularExpression kForm(QStringLiteral("\\AAUTH,111,2130706433\\.\\d+\\z"));
    const QString reply = ask(console, QStringLiteral("AUTH]![a]![b"));
    expect(reply.isNull() || kForm.match(reply).hasMatch(), QStringLiteral("AUTH"), reply);
}

void Crowd::changeSettings(RawConsole &console)
{
    const QString mark(1 + random(kLongestText), QChar(ushort('a' + random(26))));
    const QString request =
        QStringLiteral("SET]![0~;1000~;1000~;1~;0~;1~;%1~;%1~;~;~;0~;~;~;25~;55~;65~;~;%1").arg(mark);
    const QString reply = ask(console, request);
    expect(reply.isNull() || reply == QLatin1String("SET_OK"), request, reply);
}

void Crowd::changeSchedule(RawConsole &console)
{
    const QString schedule = QStringLiteral("%1~;1~;%2~;991231~;2359%3")
                                 .arg(QString::number(m_drive), QString::number(random(7)),
                                      QStringLiteral("%1").arg(random(60), 2, 10, QLatin1Char('0')));
    const Arena::Mark since = m_arena.mark();
    const QString request =
        QStringLiteral("SETSCANSCHED]![%1~;0")
            .arg(QString(schedule).replace(QStringLiteral("991231~;"), QStringLiteral("991231")));
    const QString reply = ask(console, request);
    if (!reply.isNull()) {
        m_schedules = {schedule};
        expect(reply.split(QStringLiteral("]![")).value(1 + m_drive) == schedule, request, reply);
    } else if ((m_arena.disturbancesSince(since) & Restart) != 0 && !m_schedules.empty()) {
        m_schedules.insert(schedule); // stored before the end, or not
    }
}

/// The schedule outlives detections and restarts, and kills as well.
void Crowd::checkSchedule(RawConsole &console)
{
    const QString reply = ask(console, QStringLiteral("GETSCANSCHED"));
    if (reply.isNull() || m_schedules.empty())
        return;
    const QString stored = reply.split(QStringLiteral("]![")).value(1 + m_drive);
    expect(m_schedules.count(stored) == 1, QStringLiteral("GETSCANSCHED"), reply);
    m_schedules = {stored};
}

void Crowd::scan(RawConsole &console)
{
    const QString drive = QString::number(m_drive);
    const bool starts = random(4) != 0; // a stop holds the service up for 100 ms
    const QString request = starts ? QStringLiteral("STARTSCAN]![%1]![65536]![0]![131071").arg(drive)
                                   : QStringLiteral("STOPSCAN]![%1").arg(drive);
    const QString word = starts ? QStringLiteral("STARTEDSCAN]![%1") : QStringLiteral("STOPEDSCAN]![%1");
    const QString reply = ask(console, request);
    expect(reply.isNull() || reply == word.arg(drive), request, reply);
}

/// Drive 2 has its bad sectors in one block; drive 3 is pulled now and then.
void Crowd::checkScans(RawConsole &console)
{
    const QString reply = ask(console, QStringLiteral("GSTATSCAN"));
    if (reply.isNull())
        return;
    const auto scans = client::parseScanStatus(reply);
    const auto isFine = [](const client::ScanStatus &scan) {
        const bool isKnown = scan.badRanges.isEmpty() ||
                             (scan.drive == 2 && scan.badRanges.size() == 1 &&
                              scan.badRanges.first().first == 896 && scan.badRanges.first().last == 1023);
        return scan.currentSector < 131072 && scan.percent <= 100 && (isKnown || scan.drive == 3);
    };
    expect(scans && scans->size() == kDrives && std::all_of(scans->cbegin(), scans->cend(), isFine),
           QStringLiteral("GSTATSCAN"), reply);
}

void Crowd::refresh(RawConsole &console)
{
    const QString reply = ask(console, QStringLiteral("REFRESH"));
    expect(reply.isNull() || reply == QLatin1String("REFRESH_OK"), QStringLiteral("REFRESH"), reply);
}

void Crowd::sendNoise(RawConsole &console)
{
    QByteArray noise(random(3000), Qt::Uninitialized);
    std::generate(noise.begin(), noise.end(), [this] { return char(random(256)); });
    noise.replace('\n', "");
    const Arena::Mark since = m_arena.mark();
    console.sendBytes("ffffffff" + noise + "\r\n");
    const QString reply = console.readLine();
    if (isExplained(reply, since))
        return;
    ++m_arena.answers;
    expect(reply == QLatin1String("ERR"), QStringLiteral("(noise)"), reply);
}

void Crowd::sendHalfALine(RawConsole &console)
{
    console.sendBytes("0000002a0b79");
    disappear(console);
}

void Crowd::disappear(RawConsole &console)
{
    console.socket().abort();
}

void Crowd::sayGoodbye(RawConsole &console)
{
    const QString reply = ask(console, QStringLiteral("DIS"));
    if (!reply.isNull())
        expect(reply == QLatin1String("DISCONNECTED") && console.waitForEnd(), QStringLiteral("DIS"), reply);
    console.socket().abort();
}

} // namespace soak
