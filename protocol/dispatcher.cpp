// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/dispatcher.h"

#include "protocol/command_target.h"
#include "protocol/commands.h"
#include "protocol/greeting.h"
#include "protocol/reply_texts.h"
#include "wire/scrambling.h"

#include <QDateTime>
#include <QHostInfo>

#include <algorithm>
#include <iterator>

namespace {

using request::Fields;

enum class Availability {
    WhenReady, ///< not while the service is paused or detects drives
    Always
};

struct Command
{
    QLatin1String word;
    int minimumFields; ///< the word included; with fewer the command is unknown
    Reply (*carryOut)(const Fields &fields, const command::Context &context);
    Availability availability = Availability::WhenReady;
    bool closes = false; ///< the connection ends after the reply, whatever it is
};

/// Parses a request and carries it out.
template <auto parse, auto run>
Reply carryOut(const Fields &fields, const command::Context &context)
{
    return run(parse(fields), context);
}

using namespace request;

const Command kCommands[] = {
    {QLatin1String("AUTH"), 1, carryOut<credentials, command::authenticate>, Availability::Always},
    {QLatin1String("SMTPTEST"), 2, carryOut<mailTest, command::testMail>, Availability::Always},
    {QLatin1String("BLABLA"), 1, carryOut<none, command::keepAlive>},
    {QLatin1String("VER"), 1, carryOut<none, command::version>},
    {QLatin1String("RESET"), 1, carryOut<none, command::reset>},
    {QLatin1String("REFRESH"), 1, carryOut<none, command::refresh>},
    {QLatin1String("DEVCOUNT"), 1, carryOut<none, command::deviceCount>},
    {QLatin1String("SETTIME"), 1, carryOut<pollIntervals, command::setPollIntervals>},
    {QLatin1String("DEVINFO"), 1, carryOut<listIndex, command::deviceInfo>},
    {QLatin1String("ALLDEVINFO"), 1, carryOut<none, command::allDeviceInfo>},
    {QLatin1String("VOLINFO"), 1, carryOut<volumePlace, command::volumeInfo>},
    {QLatin1String("ALLVOLINFO"), 1, carryOut<none, command::allVolumeInfo>},
    {QLatin1String("ALLSMARTINFO"), 1, carryOut<none, command::allSmartInfo>},
    {QLatin1String("SMARTINFO"), 1, carryOut<listIndex, command::smartInfo>},
    {QLatin1String("SMARTVALUE"), 1, carryOut<listIndex, command::smartValue>},
    {QLatin1String("USERCOUNT"), 1, carryOut<none, command::userCount>},
    {QLatin1String("USERINFO"), 1, carryOut<listIndex, command::userInfo>},
    {QLatin1String("CHECKPASS"), 1, carryOut<credentials, command::checkPassword>},
    {QLatin1String("SET"), 2, carryOut<settingsChange, command::changeSettings>},
    {QLatin1String("SETSCANSCHED"), 2, carryOut<scheduleChange, command::changeSchedule>},
    {QLatin1String("GETSCANSCHED"), 1, carryOut<none, command::schedules>},
    {QLatin1String("STARTSCAN"), 5, carryOut<scanStart, command::startScan>},
    {QLatin1String("STOPSCAN"), 2, carryOut<scanStop, command::stopScan>},
    {QLatin1String("GSTATSCAN"), 1, carryOut<none, command::scanStatus>},
    {QLatin1String("GSTATD"), 1, carryOut<historyPeriod, command::temperatures>},
    {QLatin1String("GSTATR"), 1, carryOut<historyPeriod, command::temperatureReport>},
    {QLatin1String("DIS"), 1, carryOut<none, command::disconnect>, Availability::WhenReady, true},
    {QLatin1String("X-TIME"), 1, carryOut<none, command::time>},
    {QLatin1String("X-ALERTS"), 1, carryOut<none, command::alerts>},
    {QLatin1String("X-ACK"), 2, carryOut<findingName, command::acknowledge>},
    {QLatin1String("X-FORGET"), 2, carryOut<text, command::forgetDrive>},
    {QLatin1String("X-ALERTTEST"), 1, carryOut<none, command::testAlarms>},
};

/// Null if there is none.
const Command *findCommand(const Fields &fields)
{
    const QString word = fields.text(0);
    const auto *const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                           [&word](const Command &command) { return word == command.word; });
    return found != std::end(kCommands) ? found : nullptr;
}

/// Returns "PAUSED" or "DETECTING"; empty while all commands are carried out.
QString stateWord(const CommandTarget &target)
{
    if (target.isPaused())
        return QStringLiteral("PAUSED");
    if (target.isDetecting())
        return QStringLiteral("DETECTING");
    return {};
}

Fields fieldsOf(QByteArray line)
{
    line.replace('\r', "").replace('\n', "");
    return Fields(unscramble(line).split(kRequestSeparator));
}

Reply replyTo(const Fields &fields, const Command *command, const command::Context &context)
{
    const QString state = stateWord(context.target);
    const bool isAvailable =
        state.isEmpty() || (command != nullptr && command->availability == Availability::Always);
    if (!isAvailable)
        return state;
    if (fields.text(0) == kScrambleError)
        return QStringLiteral("ERR");
    if (command == nullptr || fields.size() < command->minimumFields)
        return kUnknownCommand;
    return command->carryOut(fields, context);
}

} // namespace

QString Dispatcher::firstLine(const Peer &peer) const
{
    const QString state = stateWord(m_target);
    if (!state.isEmpty())
        return state;
    Settings settings = m_target.settings();
    if (m_target.options().protectMail)
        settings.smtpPass.clear();
    return greeting(settings, QHostInfo::localHostName(), peer.name, QDateTime::currentSecsSinceEpoch());
}

Reply Dispatcher::answer(const QByteArray &line, const Peer &peer)
{
    const Fields fields = fieldsOf(line);
    const Command *const command = findCommand(fields);
    Reply reply = replyTo(fields, command, {m_target, m_smartTexts, peer});
    reply.closes = command != nullptr && command->closes;
    return reply;
}

bool Dispatcher::isDisconnectRequest(const QByteArray &line)
{
    const Command *const command = findCommand(fieldsOf(line));
    return command != nullptr && command->closes;
}
