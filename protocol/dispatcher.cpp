// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/dispatcher.h"

#include "config/user_accounts.h"
#include "protocol/command_target.h"
#include "protocol/greeting.h"
#include "protocol/payloads.h"
#include "protocol/scrambling.h"

#include <QHostInfo>
#include <QThread>

#include <algorithm>
#include <iterator>

namespace {

/// How long a scan is given to end before STOPSCAN is answered, so that a status asked for next shows it.
constexpr unsigned long kStopScanGraceMs = 100;

/// A request's fields by place. Field 0 is the command word. A missing field is empty text, and what is no
/// number, or none that fits, is 0.
class Request
{
public:
    Request(const QStringList &fields, CommandTarget &target)
        : m_fields(fields)
        , m_target(target)
    {}

    [[nodiscard]] CommandTarget &target() const { return m_target; }
    [[nodiscard]] int size() const { return m_fields.size(); }
    [[nodiscard]] QString text(int field) const { return m_fields.value(field); }
    [[nodiscard]] qint32 number(int field) const { return text(field).toInt(); }
    [[nodiscard]] qint64 longNumber(int field) const { return text(field).toLongLong(); }

private:
    const QStringList &m_fields;
    CommandTarget &m_target;
};

template <typename List>
bool hasIndex(const List &list, qint32 index)
{
    return index >= 0 && index < list.size();
}

/// "WORD,a,b": the form of the short replies.
QString reply(const char *word, const QStringList &fields)
{
    return QLatin1String(word) + QLatin1Char(',') + fields.join(QLatin1Char(','));
}

/// "WORD]![payload": the form of the list replies.
QString listReply(const char *word, const QString &payload)
{
    return QLatin1String(word) + kRequestSeparator + payload;
}

/// "WORD,[1,2]": the form of the replies to an index that is out of range.
QString indexError(const char *word, const QStringList &indices)
{
    return QLatin1String(word) + QLatin1String(",[") + indices.join(QLatin1Char(',')) + QLatin1Char(']');
}

Reply version(const Request &request)
{
    return versionReply(request.target().settings(), QHostInfo::localHostName());
}

Reply reset(const Request &request)
{
    request.target().resetInfo();
    return QStringLiteral("RESET_OK");
}

Reply refresh(const Request &request)
{
    request.target().refreshInfo();
    return QStringLiteral("REFRESH_OK");
}

Reply deviceCount(const Request &request)
{
    return reply("DEVCOUNT", {QString::number(request.target().devices().size())});
}

/// The running timers keep their intervals until they are started anew.
Reply setIntervals(const Request &request)
{
    Settings &settings = request.target().settings();
    const qint32 smart = request.number(1);
    const qint32 freeSpace = request.number(2);
    const bool accepted = smart >= 1 && freeSpace >= 1;
    if (accepted) {
        settings.smartPollInterval = smart;
        settings.freeSpacePollInterval = freeSpace;
    }
    return reply(accepted ? "SETTIME_OK" : "SETTIME_ERR", {QString::number(settings.smartPollInterval),
                                                           QString::number(settings.freeSpacePollInterval)});
}

/// The replies that carry a payload of the one device that field 1 names.
Reply deviceReply(const Request &request, const char *word, const char *errorWord,
                  QString (*payloadOf)(const DeviceRecord &))
{
    const DeviceList &devices = request.target().devices();
    const qint32 index = request.number(1);
    if (!hasIndex(devices, index))
        return indexError(errorWord, {QString::number(index)});
    return reply(word, {QString::number(index), payloadOf(devices[index])});
}

Reply deviceInfo(const Request &request)
{
    return deviceReply(request, "DEVINFO_OK", "DEVINFO_ERR", payload::device);
}

Reply smartInfo(const Request &request)
{
    return deviceReply(request, "SMARTINFO_OK", "SMARTINFO_ERR", payload::smartInformation);
}

Reply smartValue(const Request &request)
{
    return deviceReply(request, "SMARTVALUE_OK", "SMARTVALUE_ERR", payload::smartValues);
}

Reply allDeviceInfo(const Request &request)
{
    return listReply("ALLDEVINFO_OK", payload::allDevices(request.target().devices()));
}

/// With fewer than three fields both indices are 0, whatever the first says.
Reply volumeInfo(const Request &request)
{
    const DeviceList &devices = request.target().devices();
    const bool indexed = request.size() >= 3;
    const qint32 deviceIndex = indexed ? request.number(1) : 0;
    const qint32 volumeIndex = indexed ? request.number(2) : 0;
    if (!hasIndex(devices, deviceIndex))
        return indexError("VOLINFO_ERR", {QString::number(deviceIndex)});
    const VolumeList &volumes = devices[deviceIndex].volumes;
    if (!hasIndex(volumes, volumeIndex))
        return indexError("VOLINFO_ERR", {QString::number(deviceIndex), QString::number(volumeIndex)});
    return reply("VOLINFO_OK", {QString::number(deviceIndex), QString::number(volumeIndex),
                                payload::volume(volumes[volumeIndex])});
}

Reply allVolumeInfo(const Request &request)
{
    return listReply("ALLVOLINFO_OK", payload::allVolumes(request.target().devices()));
}

Reply allSmartInfo(const Request &request)
{
    return listReply("ALLSMARTINFO_OK", payload::allSmart(request.target().devices()));
}

Reply userCount(const Request &request)
{
    return reply("USERCOUNT", {QString::number(getUserCount(request.target().accounts()))});
}

Reply userInfo(const Request &request)
{
    const qint32 index = request.number(1);
    return reply("USERINFO", {QString::number(index), getUserInfo(request.target().accounts(), index)});
}

Reply checkPassword(const Request &request)
{
    return reply("CHECKPASS", {checkUser(request.text(1), request.text(2))});
}

constexpr int kSettingItems = 18;

/// Takes over the first kSettingItems items. Their order is the protocol's own.
void assignSettings(const QStringList &items, Settings &settings)
{
    const auto isOn = [&items](int item) { return items[item].toInt() != 0; };
    settings.port = quint32(items[0].toInt());
    settings.smartPollInterval = items[1].toLongLong();
    settings.freeSpacePollInterval = items[2].toLongLong();
    settings.popupNotify = isOn(3);
    settings.emailNotify = isOn(4);
    settings.logSysEvLog = isOn(5);
    settings.smtpFrom = items[6];
    settings.smtpTo = items[7];
    settings.smtpSubj = items[8];
    settings.smtpServer = items[9];
    settings.smtpNeedAuth = isOn(10);
    settings.smtpUser = items[11];
    settings.smtpPass = items[12];
    settings.smtpPort = items[13].toInt();
    settings.wTemp = items[14].toInt();
    settings.cTemp = items[15].toInt();
    settings.warnExtTask = items[16];
    settings.critExtTask = items[17];
}

/// A list that is too short changes nothing and is confirmed all the same.
Reply setSettings(const Request &request)
{
    const QStringList items = request.text(1).split(QLatin1String("~;"));
    if (items.size() >= kSettingItems) {
        Settings &settings = request.target().settings();
        const quint32 oldPort = settings.port;
        assignSettings(items, settings);
        if (settings.port != oldPort)
            request.target().requestRebind();
        request.target().writeSettings();
        request.target().checkHealth(); // the new limits and channels count at once
    }
    return QStringLiteral("SET_OK");
}

Reply scanSchedule(const Request &request)
{
    return QLatin1String("SCANSCHED") + payload::scanSchedule(request.target().devices());
}

Reply setScanSchedule(const Request &request)
{
    request.target().setScanSchedule(request.text(1));
    return scanSchedule(request);
}

Reply startScan(const Request &request)
{
    request.target().startScan(
        {request.number(1), request.number(2), request.longNumber(3), request.longNumber(4)});
    return listReply("STARTEDSCAN", request.text(1));
}

Reply stopScan(const Request &request)
{
    if (request.target().stopScan(request.number(1)))
        QThread::msleep(kStopScanGraceMs);
    return listReply("STOPEDSCAN", request.text(1));
}

Reply scanStatus(const Request &request)
{
    CommandTarget &target = request.target();
    // Asked before the progress is taken: no scan is told to have ended short of its end.
    QVector<bool> running(target.devices().size());
    for (int i = 0; i < running.size(); ++i)
        running[i] = target.isScanRunning(i);
    return listReply("STATSCAN", payload::scanStatus(target.devices(), [&](int i) { return running.at(i); }));
}

Reply temperatures(const Request &request)
{
    return {listReply("STATD", {}), request.target().temperatureHistory(request.text(1), request.text(2))};
}

Reply temperatureReport(const Request &request)
{
    return {listReply("STATR", {}), request.target().temperatureHistory(request.text(1), request.text(2))};
}

/// A keep-alive that spares its sender a reply.
Reply keepAlive(const Request & /*request*/)
{
    return QString();
}

/// The connection is closed by whoever owns it.
Reply disconnect(const Request & /*request*/)
{
    return QStringLiteral("DISCONNECTED");
}

struct Command
{
    QLatin1String word;
    int minimumFields; ///< the word included; with fewer the command counts as unknown
    Reply (*handler)(const Request &);
};

const Command kCommands[] = {
    {QLatin1String("BLABLA"), 1, keepAlive},
    {QLatin1String("VER"), 1, version},
    {QLatin1String("RESET"), 1, reset},
    {QLatin1String("REFRESH"), 1, refresh},
    {QLatin1String("DEVCOUNT"), 1, deviceCount},
    {QLatin1String("SETTIME"), 1, setIntervals},
    {QLatin1String("DEVINFO"), 1, deviceInfo},
    {QLatin1String("ALLDEVINFO"), 1, allDeviceInfo},
    {QLatin1String("VOLINFO"), 1, volumeInfo},
    {QLatin1String("ALLVOLINFO"), 1, allVolumeInfo},
    {QLatin1String("ALLSMARTINFO"), 1, allSmartInfo},
    {QLatin1String("SMARTINFO"), 1, smartInfo},
    {QLatin1String("SMARTVALUE"), 1, smartValue},
    {QLatin1String("USERCOUNT"), 1, userCount},
    {QLatin1String("USERINFO"), 1, userInfo},
    {QLatin1String("CHECKPASS"), 1, checkPassword},
    {QLatin1String("SET"), 2, setSettings},
    {QLatin1String("SETSCANSCHED"), 2, setScanSchedule},
    {QLatin1String("GETSCANSCHED"), 1, scanSchedule},
    {QLatin1String("STARTSCAN"), 5, startScan},
    {QLatin1String("STOPSCAN"), 2, stopScan},
    {QLatin1String("GSTATSCAN"), 1, scanStatus},
    {QLatin1String("GSTATD"), 1, temperatures},
    {QLatin1String("GSTATR"), 1, temperatureReport},
    {QLatin1String("DIS"), 1, disconnect},
};

} // namespace

Reply processCommand(const QStringList &fields, CommandTarget &target)
{
    if (target.isPaused())
        return QStringLiteral("PAUSED");
    if (target.isDetecting())
        return QStringLiteral("DETECTING");
    const Request request(fields, target);
    const QString word = request.text(0);
    if (word == kScrambleError)
        return QStringLiteral("ERR");
    const auto *const command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                             [&word](const Command &known) { return word == known.word; });
    if (command == std::end(kCommands) || request.size() < command->minimumFields)
        return kUnknownCommand;
    return command->handler(request);
}
