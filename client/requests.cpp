// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/requests.h"

#include "client/field_reader.h"
#include "wire/separators.h"

#include <QRegularExpression>

namespace client {

namespace {

using namespace std::chrono_literals;

constexpr auto kHistoryAllowance = 60s; // decades of records are many megabytes
constexpr auto kMailAllowance = 60s;    // the service allows 30 s for the connection and waits for each reply
constexpr auto kRefreshAllowance = 120s;

QString line(const QStringList &fields)
{
    return fields.join(kRequestSeparator);
}

QString line(const char *word, qint64 number)
{
    return line({QString::fromLatin1(word), QString::number(number)});
}

QString number(qint64 value)
{
    return QString::number(value);
}

QString flag(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

/// Returns a request whose reply is `word` and nothing else.
requests::Done done(const QString &requestLine, const QString &word, std::chrono::milliseconds allowance = 0s)
{
    const auto parse = [word](const QString &reply) {
        return reply == word ? std::optional<QString>(reply) : std::nullopt;
    };
    return {requestLine, parse, allowance};
}

Request<qint32> count(const QString &word)
{
    return {word, [word](const QString &reply) { return parseCount(reply, word); }};
}

/// Returns a parser that also needs the index in the request.
template <typename T>
auto withIndex(std::optional<T> (*parse)(const QString &, qint32), qint32 index)
{
    return [parse, index](const QString &reply) { return parse(reply, index); };
}

} // namespace

bool isPlainField(const QString &text)
{
    static const QRegularExpression kReserved(QStringLiteral("\\]!\\[|~;|[\\r\\n\\x{0}]|%L?[0-9]"));
    return !kReserved.match(text).hasMatch();
}

namespace requests {

Request<QVector<Drive>> allDrives()
{
    return {QStringLiteral("ALLDEVINFO"), parseAllDrives};
}

Request<Drive> drive(qint32 number)
{
    return {line("DEVINFO", number), withIndex(parseDrive, number)};
}

Request<QVector<Attribute>> attributes(qint32 drive)
{
    return {line("SMARTINFO", drive), withIndex(parseAttributes, drive)};
}

Request<QVector<DriveAttribute>> allAttributes()
{
    return {QStringLiteral("ALLSMARTINFO"), parseAllAttributes};
}

Request<QVector<Volume>> allVolumes()
{
    return {QStringLiteral("ALLVOLINFO"), parseAllVolumes};
}

Request<qint32> driveCount()
{
    return count(QStringLiteral("DEVCOUNT"));
}

Request<TemperatureHistory> temperatures(const QDateTime &from, const QDateTime &to)
{
    return {line({QStringLiteral("GSTATD"), formatMoment(from), formatMoment(to)}), parseHistory,
            kHistoryAllowance};
}

Request<QVector<ScanStatus>> scans()
{
    return {QStringLiteral("GSTATSCAN"), parseScanStatus};
}

Done startScan(qint32 drive, qint32 blockSize, quint64 firstSector, quint64 lastSector)
{
    const QStringList fields{QStringLiteral("STARTSCAN"), number(drive), number(blockSize),
                             QString::number(firstSector), QString::number(lastSector)};
    return done(line(fields), line("STARTEDSCAN", drive));
}

Done stopScan(qint32 drive)
{
    return done(line("STOPSCAN", drive), line("STOPEDSCAN", drive));
}

Request<QVector<ScheduleEntry>> schedule()
{
    return {QStringLiteral("GETSCANSCHED"), parseSchedule};
}

Request<QVector<ScheduleEntry>> setSchedule(const ScheduleEntry &entry)
{
    // The last field is required and not read.
    const QStringList fields{number(entry.drive), number(qint32(entry.kind)), number(entry.weekday),
                             formatMoment(QDateTime(entry.date, entry.time, Qt::UTC)), QStringLiteral("0")};
    return {line({QStringLiteral("SETSCANSCHED"), fields.join(kFieldSeparator)}), parseSchedule};
}

Done setSettings(const ServiceSettings &settings)
{
    const QStringList items{
        number(settings.port),
        number(settings.smartPollInterval),
        number(settings.freeSpacePollInterval),
        flag(settings.popupNotify),
        flag(settings.emailNotify),
        flag(settings.logSysEvLog),
        settings.smtpFrom,
        settings.smtpTo,
        settings.smtpSubj,
        settings.smtpServer,
        flag(settings.smtpNeedAuth),
        settings.smtpUser,
        settings.smtpPass,
        number(settings.smtpPort),
        number(settings.wTemp),
        number(settings.cTemp),
        settings.warnExtTask,
        settings.critExtTask,
    };
    return done(line({QStringLiteral("SET"), items.join(kFieldSeparator)}), QStringLiteral("SET_OK"));
}

Request<MailOutcome> testMail(const ServiceSettings &settings, const QString &body)
{
    const QStringList items{
        number(settings.smtpPort), flag(settings.smtpNeedAuth), settings.smtpFrom,
        settings.smtpTo,           settings.smtpServer,         settings.smtpSubj,
        settings.smtpUser,         settings.smtpPass,           body,
    };
    return {line({QStringLiteral("SMTPTEST"), items.join(kFieldSeparator)}), parseMailOutcome,
            kMailAllowance};
}

Request<ServiceTime> serviceTime()
{
    return {QStringLiteral("X-TIME"), parseServiceTime};
}

Request<Version> version()
{
    return {QStringLiteral("VER"), parseVersion};
}

Request<Intervals> setIntervals(qint32 smartMilliseconds, qint32 freeSpaceMilliseconds)
{
    return {line({QStringLiteral("SETTIME"), number(smartMilliseconds), number(freeSpaceMilliseconds)}),
            parseIntervals};
}

Done detect()
{
    return done(QStringLiteral("RESET"), QStringLiteral("RESET_OK"));
}

Done refresh()
{
    return done(QStringLiteral("REFRESH"), QStringLiteral("REFRESH_OK"), kRefreshAllowance);
}

Request<qint32> userCount()
{
    return count(QStringLiteral("USERCOUNT"));
}

Request<UserAccount> user(qint32 index)
{
    return {line("USERINFO", index), withIndex(parseUser, index)};
}

Request<Rights> authenticate(const QString &user, const QString &password)
{
    return {line({QStringLiteral("AUTH"), user, password}), parseRights};
}

Request<QString> raw(const QString &line)
{
    const bool isKeepAlive = line.section(kRequestSeparator, 0, 0) == QLatin1String("BLABLA");
    return {line, [](const QString &reply) { return std::optional<QString>(reply); }, 0s, true, !isKeepAlive};
}

} // namespace requests

} // namespace client
