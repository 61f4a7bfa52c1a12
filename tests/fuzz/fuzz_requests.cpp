// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/consoles.h"

#include "console/client/history.h"
#include "console/client/inventory.h"
#include "console/client/scans.h"
#include "fuzz/fuzz_input.h"
#include "protocol/dispatcher.h"
#include "protocol/fake_target.h"
#include "scan/schedule.h"

#include <QStringList>

namespace {

/// Something for every list that a reply can have.
DeviceRecord drive()
{
    DeviceRecord device;
    device.attributes.resize(2);
    device.volumes.resize(1);
    device.badRanges = {{1000, 1007}, {2000, 2007}};
    return device;
}

/// A machine that shows all there is to show; schedules are taken as the daemon takes them.
class Machine : public FakeTarget
{
public:
    Machine()
    {
        deviceList = {drive(), DeviceRecord(), drive()};
        accountList = {{QStringLiteral("Operator"), 2}, {QStringLiteral("Guest"), 0}};
        runningScan = 0;
    }

    /// None runs, so that nobody waits for its end.
    bool stopScan(int /*device*/) override { return false; }

    void setScanSchedule(const QString &payload) override
    {
        if (const auto change = parseScheduleChange(payload))
            applyScheduleChange(*change, deviceList);
    }
};

/// A reply about one drive names it, and says whether there is such a drive.
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

/// Whatever consoles have set before, this one can read the lists.
void checkLists(Machine &machine)
{
    const int drives = machine.deviceList.size();
    const auto ask = [&machine](const char *word) {
        return processCommand({QLatin1String(word)}, machine).text;
    };
    require(client::parseAllDrives(ask("ALLDEVINFO")).value().size() == drives);
    require(client::parseScanStatus(ask("GSTATSCAN")).value().size() == drives);
    require(client::parseSchedule(ask("GETSCANSCHED")).value().size() == drives);
    require(client::parseAllVolumes(ask("ALLVOLINFO")).value().size() == 2);
}

void answerText(const QByteArray &utf8, const Consoles &consoles, Machine &machine)
{
    const QString request = QString::fromUtf8(utf8);
    const QStringList fields = request.split(kRequestSeparator);
    const Consoles::Answer answer =
        consoles.answer(scramble(request, 5), QStringLiteral("peer"), [](const QByteArray &) {});
    require(answer.closes == (fields.first() == QLatin1String("DIS")));
    const QByteArray wire = answer.work ? answer.work() : answer.wire;
    if (wire.isEmpty())
        return;
    require(wire.endsWith("\r\n") && wire.count('\n') == 1 && wire.count('\r') == 1);
    const QString reply = unscramble(wire.chopped(2));
    require(!reply.isEmpty() && reply != kScrambleError);
    checkIndexReply(fields, reply, machine.deviceList.size());
}

} // namespace

/// The bytes as one line from the wire, and line by line as the texts of requests of one console.
void fuzz(const QByteArray &bytes)
{
    Machine machine;
    const Consoles consoles(machine, [] { return 37; }, {});
    (void)consoles.answer(bytes, QStringLiteral("peer"), [](const QByteArray &) {});
    for (const QByteArray &line : bytes.split('\n'))
        answerText(line, consoles, machine);
    checkLists(machine);
}
