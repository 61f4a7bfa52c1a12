// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/dispatcher.h"

#include "client/history.h"
#include "client/inventory.h"
#include "client/scans.h"
#include "fuzz/fuzz_input.h"
#include "protocol/fake_target.h"
#include "protocol/reply_line.h"
#include "wire/scrambling.h"
#include "wire/separators.h"

#include <QStringList>

namespace {

/// Returns an item for every list that a reply can have.
DeviceRecord drive()
{
    DeviceRecord device;
    device.smart.attributes.resize(2);
    device.volumes.resize(1);
    device.scan.badRanges = {{1000, 1007}, {2000, 2007}};
    return device;
}

/// Returns a machine with every kind of data.
class Machine : public FakeTarget
{
public:
    Machine()
    {
        deviceList = {drive(), DeviceRecord(), drive()};
        accountList = {{QStringLiteral("Operator"), 2}, {QStringLiteral("Guest"), 0}};
        runningScan = 0;
    }
};

/// Returns the whole line of the reply; empty if nothing is sent.
QByteArray wireOf(Reply reply)
{
    if (reply.start)
        reply.start([&reply](std::unique_ptr<ReplySource> source) { reply.source = std::move(source); });
    if (!reply.source)
        return {};
    ReplyLine line(std::move(reply.source), 37);
    QByteArray wire;
    for (int size = line.nextSize(); size > 0; size = line.nextSize()) {
        const QByteArray chunk = line.next();
        require(chunk.size() == size && size <= ReplyLine::kMaxChunkBytes);
        wire += chunk;
    }
    return wire;
}

/// Checks that a reply about one drive contains its index and whether that drive exists.
void checkIndexReply(const QStringList &fields, const QString &reply, int drives)
{
    for (const char *word : {"DEVINFO", "SMARTINFO", "SMARTVALUE"}) {
        if (fields.first() != QLatin1String(word))
            continue;
        const int index = fields.value(1).toInt();
        const bool isThere = index >= 0 && index < drives;
        require(isThere ? reply.startsWith(QStringLiteral("%1_OK,%2,").arg(QLatin1String(word)).arg(index))
                        : reply == QStringLiteral("%1_ERR,[%2]").arg(QLatin1String(word)).arg(index));
    }
}

/// Checks that the client can read the lists after any change by consoles.
void checkLists(Dispatcher &dispatcher, int drives)
{
    const auto ask = [&dispatcher](const char *word) {
        const Reply reply = dispatcher.answer(scramble(QLatin1String(word), 5), {});
        return QString::fromUtf8(reply.source->next(1 << 20));
    };
    require(client::parseAllDrives(ask("ALLDEVINFO")).value().size() == drives);
    require(client::parseScanStatus(ask("GSTATSCAN")).value().size() == drives);
    require(client::parseSchedule(ask("GETSCANSCHED")).value().size() == drives);
    require(client::parseAllVolumes(ask("ALLVOLINFO")).value().size() == 2);
}

void answerText(const QByteArray &utf8, Dispatcher &dispatcher, const Machine &machine)
{
    const QString request = QString::fromUtf8(utf8);
    const QStringList fields = request.split(kRequestSeparator);
    const QByteArray line = scramble(request, 5);
    const bool asksToDisconnect = fields.first() == QLatin1String("DIS");
    require(Dispatcher::isDisconnectRequest(line) == asksToDisconnect);
    Reply answer = dispatcher.answer(line, {QStringLiteral("peer"), {}});
    require(answer.closes == asksToDisconnect);
    const QByteArray wire = wireOf(std::move(answer));
    if (wire.isEmpty())
        return;
    require(wire.endsWith("\r\n") && wire.count('\n') == 1 && wire.count('\r') == 1);
    const QString reply = unscramble(wire.chopped(2));
    require(!reply.isEmpty() && reply != kScrambleError);
    checkIndexReply(fields, reply, machine.deviceList.size());
}

} // namespace

/// Input: one line from the wire, and the same bytes as lines of requests from one console.
void fuzz(const QByteArray &bytes)
{
    Machine machine;
    Dispatcher dispatcher(machine);
    (void)dispatcher.answer(bytes, {});
    for (const QByteArray &line : bytes.split('\n'))
        answerText(line, dispatcher, machine);
    checkLists(dispatcher, machine.deviceList.size());
}
