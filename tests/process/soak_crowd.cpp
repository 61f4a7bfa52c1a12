// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/soak_crowd.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>
#include <iterator>
#include <numeric>

namespace soak {

namespace {

constexpr int kConsoles = 25;

/// A request and the pattern of its reply. In both, DRIVE stands for the crowd's own drive, MARK for a long
/// text and RECENT for a recent moment.
struct Exchange
{
    int weight;
    const char *request;
    const char *reply; ///< null: equal to the first reply
};

/// Drive 0 has one attribute, a temperature of 30 to 69 degrees. Drive 2 has its bad sectors in one block;
/// drive 3 is pulled now and then.
const Exchange kExchanges[] = {
    {2, "VER", nullptr},
    {2, "DEVCOUNT", nullptr},
    {2, "DEVINFO]![4", nullptr},
    {2, "SMARTINFO]![1", nullptr},
    {2, "SMARTVALUE]![1", nullptr},
    {2, "SMARTINFO]![-1", nullptr},
    {2, "ALLVOLINFO", nullptr},
    {2, "VOLINFO]![1]![0", nullptr},
    {2, "USERINFO]![0", nullptr},
    {2, "USERINFO]![7", nullptr},
    {2, "CHECKPASS]![a]![b", nullptr},
    {2, "SET", nullptr},
    {2, "STARTSCAN]![0", nullptr},
    {2, "STARTSCAN]![9]![65536]![0]![9", nullptr},
    {2, "STOPSCAN]![x", nullptr},
    {2, "SMTPTEST", nullptr},
    {2, "", nullptr},
    {8, "ALLDEVINFO", R"(ALLDEVINFO_OK\]!\[(([^~]*~;){24}\d(\]~\[|\z)){4})"},
    {8, "SMARTINFO]![0", R"(SMARTINFO_OK,0,\{194~1~0~100~[3-6]\d~90~0\})"},
    // Only recent records: the log grows all the time, and so would the time for sending it.
    {3, "GSTATD]![RECENT]![991231235959", R"(STATD\]!\[(.{6}[!-$][?-f])*)"},
    {5, "AUTH]![a]![b", R"(AUTH,111,2130706433\.\d+)"},
    {4, "SET]![0~;1000~;1000~;1~;0~;1~;MARK~;MARK~;~;~;0~;~;~;25~;55~;65~;~;MARK", "SET_OK"},
    {2, "STARTSCAN]![DRIVE]![65536]![0]![131071", R"(STARTEDSCAN\]!\[DRIVE)"},
    {1, "STOPSCAN]![DRIVE", R"(STOPEDSCAN\]!\[DRIVE)"}, // blocks the service for 100 ms
    {8, "GSTATSCAN",
     R"(STATSCAN\]!\[0;[012];(\d\d?|100);0;\d{1,6};\d{12}\|1;[012];(\d\d?|100);0;\d{1,6};\d{12}\|)"
     R"(2;[012];(\d\d?|100);0;\d{1,6};\d{12}(;896-1023)?\|3;[012];(\d\d?|100);0;\d{1,6};\d{12}(;[-\d,]+)?)"},
    {1, "REFRESH", "REFRESH_OK"},
    {1, "DIS", "DISCONNECTED"},
};

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

void Arena::reportFailure(const QString &text)
{
    const QMutexLocker locker(&m_mutex);
    m_complaints.append(text);
}

QStringList Arena::failures() const
{
    const QMutexLocker locker(&m_mutex);
    return m_complaints;
}

Crowd::Crowd(Arena &arena, int drive, RawConsole &console, unsigned seed)
    : m_arena(arena)
    , m_drive(drive)
    , m_random(seed)
    , m_consoles(kConsoles)
{
    for (const Exchange &exchange : kExchanges) {
        if (exchange.reply == nullptr)
            m_constants.insert(QLatin1String(exchange.request), console.ask(QLatin1String(exchange.request)));
    }
    m_thread = std::thread([this] { run(); });
}

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
        const QReadLocker locker(&m_arena.requests);
        step();
    }
    leave();
}

void Crowd::step()
{
    RawConsole *const console = connectedConsole();
    if (console == nullptr)
        return;
    switch (random(20)) {
    case 0:
        console->sendBytes(random(2) == 0 ? "0000002a0b79" : ""); // half a line or none, then disconnects
        console->socket().abort();
        break;
    case 1:
        sendNoise(*console);
        break;
    case 2:
    case 3:
        setSchedule(*console);
        break;
    default:
        askByTable(*console);
    }
}

/// Checks that a greeting holds the settings of one SET: its three long texts are equal.
RawConsole *Crowd::connectedConsole()
{
    std::unique_ptr<RawConsole> &console = m_consoles[std::size_t(random(kConsoles))];
    if (console && console->isConnected())
        return console.get();
    const Arena::Mark since = m_arena.mark();
    console = std::make_unique<RawConsole>(m_arena.port);
    const QString line = console->isConnected() ? console->readLine() : QString();
    const QStringList fields = line.split("]![");
    const bool isGreeting = fields.size() == 23 && fields.at(0) == "VER";
    m_arena.answers += isGreeting ? 1 : 0;
    expect(isExplained(line, since) ||
               (isGreeting && fields.at(10) == fields.at(11) && fields.at(11) == fields.at(22)),
           "(connection)", line);
    return console->isConnected() ? console.get() : nullptr;
}

bool Crowd::isExplained(const QString &line, Arena::Mark since) const
{
    const unsigned disturbances = m_arena.disturbancesSince(since);
    return (line == "DETECTING" && (disturbances & Detection) != 0) ||
           (line == "PAUSED" && (disturbances & Pause) != 0) ||
           (line.isNull() && (disturbances & Restart) != 0);
}

QString Crowd::ask(RawConsole &console, const QString &request, const QByteArray &noise)
{
    const Arena::Mark since = m_arena.mark();
    if (noise.isEmpty())
        console.send(request);
    else
        console.sendBytes(noise);
    QString reply = console.readLine();
    const bool isReply = !reply.isNull() && reply != "DETECTING" && reply != "PAUSED";
    const bool isWrong = !isReply && !isExplained(reply, since);
    m_arena.answers += isReply ? 1 : 0;
    expect(!isWrong && (request != "DIS" || console.waitForEnd()), request, reply);
    if (reply.isNull() || isWrong || request == "DIS")
        console.socket().abort();
    return isReply ? reply : QString();
}

void Crowd::expect(bool isFine, const QString &request, const QString &reply)
{
    if (!isFine)
        m_arena.reportFailure(QString("%1 was answered %2")
                                  .arg(request.left(200), reply.isNull() ? "nothing" : reply.left(200)));
}

void Crowd::askByTable(RawConsole &console)
{
    constexpr int kLongestText = 2000;
    static const int kWeights = std::accumulate(std::begin(kExchanges), std::end(kExchanges), 0,
                                                [](int sum, const Exchange &e) { return sum + e.weight; });
    const Exchange *exchange = std::begin(kExchanges);
    for (int left = random(kWeights); left >= exchange->weight; ++exchange)
        left -= exchange->weight;
    const auto filled = [this](const char *text) {
        return QString(QLatin1String(text))
            .replace("DRIVE", QString::number(m_drive))
            .replace("RECENT", QDateTime::currentDateTime().addSecs(-20).toString("yyMMddhhmmss"))
            .replace("MARK", QString(1 + random(kLongestText), QChar('a' + random(26))));
    };
    const QString request = filled(exchange->request);
    const QString reply = ask(console, request);
    if (reply.isNull())
        return;
    expect(exchange->reply == nullptr
               ? reply == m_constants.value(request)
               : QRegularExpression("\\A" + filled(exchange->reply) + "\\z").match(reply).hasMatch(),
           request, reply);
}

/// Mostly requests the schedule, which is kept over detections, restarts and kills.
void Crowd::setSchedule(RawConsole &console)
{
    const bool changes = random(3) == 0;
    const QString kind = QString("%1~;1~;%2~;991231").arg(m_drive).arg(random(7));
    const QString time = QString("23%1").arg(100 * random(60), 4, 10, QChar('0'));
    const QString schedule = kind + "~;" + time;
    const QString request = changes ? "SETSCANSCHED]![" + kind + time + "~;0" : "GETSCANSCHED";
    const Arena::Mark since = m_arena.mark();
    const QString reply = ask(console, request);
    const QString stored = reply.split("]![").value(1 + m_drive);
    if (changes && !reply.isNull())
        m_schedules = {schedule};
    else if (changes && (m_arena.disturbancesSince(since) & Restart) != 0 && !m_schedules.empty())
        m_schedules.insert(schedule); // it may have been stored before the kill
    if (reply.isNull() || m_schedules.empty())
        return;
    expect(m_schedules.count(stored) == 1, request, reply);
    m_schedules = {stored};
}

void Crowd::sendNoise(RawConsole &console)
{
    QByteArray noise(random(3000), Qt::Uninitialized);
    std::generate(noise.begin(), noise.end(), [this] { return char(random(256)); });
    noise.replace('\n', "");
    const QString reply = ask(console, "(noise)", "ffffffff" + noise + "\r\n");
    expect(reply.isNull() || reply == "ERR", "(noise)", reply);
}

} // namespace soak
