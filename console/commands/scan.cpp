// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"
#include "client/numbers.h"
#include "client/units.h"
#include "console/commands/scan_report.h"
#include "console/context.h"
#include "console/host.h"
#include "console/scan_progress.h"

#include <QElapsedTimer>

#include <algorithm>

namespace {

using namespace std::chrono_literals;
namespace requests = client::requests;
using client::Drive;
using client::ScanState;
using client::ScanStatus;

constexpr auto kFollowInterval = 1s;

qint32 blockOption(const Context &context)
{
    const auto text = context.arguments().value(QStringLiteral("block"));
    const auto block = text ? client::parseBlockSize(*text) : kUsualScanBlockSize;
    if (!block || *block < kMinScanBlockSize || *block > kMaxScanBlockSize)
        context.refuse(QStringLiteral("--block takes bytes from 512 to 64M"));
    return *block;
}

std::optional<quint64> sectorOption(const Context &context, const QString &option)
{
    const auto text = context.arguments().value(option);
    const auto sector = text ? client::strictNumber<quint64>(*text) : std::nullopt;
    if (text && !sector)
        context.refuse(QStringLiteral("--%1 takes a sector, not '%2'").arg(option, *text));
    return sector;
}

/// Returns whether a scan of the drive is running, by the list of the service.
bool isRunning(const QVector<ScanStatus> &scans, qint32 drive)
{
    return std::any_of(scans.cbegin(), scans.cend(), [drive](const ScanStatus &scan) {
        return scan.drive == drive && scan.state == ScanState::Running;
    });
}

/// The scans to be shown. Each look updates their rates.
class ScanView
{
public:
    ScanView(Context &context, QVector<Drive> drives, std::optional<qint32> drive)
        : m_context(context)
        , m_drives(std::move(drives))
        , m_drive(drive)
        , m_meters(m_drives.size())
    {
        m_clock.start();
    }

    void look()
    {
        m_reports.clear();
        for (const ScanStatus &scan : m_context.ask(requests::scans())) {
            if (scan.drive >= m_drives.size())
                throw CommandFailure{kExitNoAnswer,
                                     QStringLiteral("the service detected its drives again meanwhile")};
            if (m_drive && scan.drive != *m_drive)
                continue;
            RateMeter &meter = m_meters[scan.drive];
            meter.sample(m_clock.elapsed(), scan);
            m_reports.append({scan, m_drives.at(scan.drive), meter.bytesPerSecond()});
        }
    }

    [[nodiscard]] bool isAnyRunning() const
    {
        return std::any_of(m_reports.cbegin(), m_reports.cend(), [](const ScanReport &report) {
            return report.status.state == ScanState::Running;
        });
    }

    [[nodiscard]] const QVector<ScanReport> &reports() const { return m_reports; }

    [[nodiscard]] QVector<ScanStatus> scans() const
    {
        QVector<ScanStatus> scans;
        for (const ScanReport &report : m_reports)
            scans.append(report.status);
        return scans;
    }

private:
    Context &m_context;
    QVector<Drive> m_drives;
    std::optional<qint32> m_drive;
    QVector<RateMeter> m_meters;
    QVector<ScanReport> m_reports;
    QElapsedTimer m_clock;
};

/// Updates the view until no scan is running, and shows it in place on a terminal.
void follow(Context &context, ScanView &view)
{
    const bool isLive = context.style().hasGraphics && !context.wantsJson();
    for (int shownLines = 0;; view.look()) {
        if (isLive) {
            // Lines above the screen cannot be written again.
            const QStringList lines =
                scanLines(view.reports(), outputStyle(), true).mid(0, host::terminalSize().rows - 1);
            context.output().redraw(lines, shownLines);
            shownLines = int(lines.size());
        }
        if (!view.isAnyRunning())
            return;
        context.pause(kFollowInterval);
    }
}

void scanStatus(Context &context)
{
    std::optional<qint32> drive;
    if (!context.arguments().positionals.isEmpty())
        drive = context.driveArgument();
    const auto drives = context.ask(requests::allDrives());
    if (drive && *drive >= drives.size())
        context.refuse(QStringLiteral("the service has no drive %1").arg(*drive));
    ScanView view(context, drives, drive);
    view.look();
    const bool isFollowing = context.arguments().has(QStringLiteral("follow"));
    if (isFollowing)
        follow(context, view);
    const bool isShown = isFollowing && context.style().hasGraphics;
    if (context.wantsJson())
        context.output().print(
            QJsonDocument(client::toArray(client::scanColumns(context.zone()), view.scans())));
    else if (!isShown)
        context.output().print(scanLines(view.reports(), context.style()));
}

void startScan(Context &context)
{
    const qint32 number = context.driveArgument();
    const qint32 block = blockOption(context);
    const Drive drive = context.ask(requests::drive(number));
    const auto range = context.valueOf(
        client::checkedScanRange(drive.capacity, sectorOption(context, QStringLiteral("first")),
                                 sectorOption(context, QStringLiteral("last"))));
    if (isRunning(context.ask(requests::scans()), number))
        context.refuse(QStringLiteral("a scan of drive %1 is already running").arg(number));
    (void)context.ask(requests::startScan(number, block, range.first, range.last));
    context.confirm(
        QStringLiteral("scanning sectors %1 to %2 of drive %3").arg(range.first).arg(range.last).arg(number));
}

void stopScan(Context &context)
{
    const qint32 number = context.driveArgument();
    (void)context.ask(requests::drive(number));
    if (!isRunning(context.ask(requests::scans()), number))
        context.refuse(QStringLiteral("no scan of drive %1 is running").arg(number));
    (void)context.ask(requests::stopScan(number));
    context.confirm(QStringLiteral("the scan of drive %1 stops after the present block").arg(number));
}

} // namespace

QVector<Command> scanCommands()
{
    return {
        command("scan status", "[N]", 0, 1, scanStatus, "Show the surface scans of all drives or of drive N.",
                "", {option("follow", "", "Show progress, speed and time left until no scan is running.")}),
        command(
            "scan start", "N", 1, 1, startScan, "Start a surface scan of drive N.",
            "A sector has 512 bytes, whatever the drive's own sectors have. The default is the whole drive.",
            {option("first", "SECTOR", "The first sector (0)."),
             option("last", "SECTOR", "The last sector (the last of the drive)."),
             option("block", "BYTES", "Bytes to read at a time, such as 65536, 64K or 1M (256K).")}),
        command("scan stop", "N", 1, 1, stopScan, "Stop the surface scan of drive N."),
    };
}
