// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/numbers.h"
#include "console/client/requests.h"
#include "console/client/scans.h"
#include "console/client/short_replies.h"
#include "console/commands/command.h"
#include "console/commands/scan_report.h"
#include "console/host.h"
#include "console/render/units.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace {

using namespace std::chrono_literals;
using client::Result;
using client::ScanState;
using client::ScanStatus;

constexpr auto kFollowInterval = 1s;
constexpr qint32 kSmallestBlock = 512;
constexpr qint32 kLargestBlock = 64 * 1024 * 1024;
constexpr qint32 kUsualBlock = 256 * 1024;

struct ScanPlan
{
    qint32 block = kUsualBlock;
    std::optional<quint64> first;
    std::optional<quint64> last;
};

std::optional<ScanPlan> planOf(const Arguments &arguments)
{
    ScanPlan plan;
    const auto sector = [&](const QString &option, std::optional<quint64> &target) {
        const auto text = arguments.value(option);
        if (text)
            target = client::strictNumber<quint64>(*text);
        return !text || target.has_value();
    };
    if (!sector(QStringLiteral("first"), plan.first) || !sector(QStringLiteral("last"), plan.last))
        return std::nullopt;
    if (const auto text = arguments.value(QStringLiteral("block"))) {
        const auto block = render::parseBlockSize(*text);
        if (!block || *block < kSmallestBlock || *block > kLargestBlock)
            return std::nullopt;
        plan.block = *block;
    }
    return plan;
}

/// What is wrong with scanning `drive` by `plan`, whose gaps are filled; empty when nothing is. The service
/// itself would say nothing.
QString completePlan(ScanPlan &plan, const client::Drive &drive)
{
    const quint64 sectors = drive.capacity / client::kScanSectorBytes;
    if (sectors == 0)
        return QStringLiteral("the drive's size is not known; give --first and --last");
    plan.first = plan.first.value_or(0);
    plan.last = plan.last.value_or(sectors - 1);
    if (*plan.first > *plan.last)
        return QStringLiteral("the first sector lies behind the last");
    if (*plan.last >= sectors)
        return QStringLiteral("the drive's last sector is %1").arg(sectors - 1);
    return {};
}

Result<QVector<ScanStatus>> askScans(Context &context)
{
    return context.session().query(QStringLiteral("GSTATSCAN"), client::parseScanStatus);
}

/// Whether the scan of `drive` runs, by the service's own list.
std::optional<bool> isRunning(const QVector<ScanStatus> &scans, qint32 drive)
{
    for (const ScanStatus &scan : scans) {
        if (scan.drive == drive)
            return scan.state == ScanState::Running;
    }
    return std::nullopt;
}

void pauseFor(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The scans of the drives to be shown, rated anew at each look.
class ScanView
{
public:
    ScanView(Context &context, QVector<client::Drive> drives, std::optional<qint32> drive)
        : m_context(context)
        , m_drives(std::move(drives))
        , m_drive(drive)
        , m_meters(m_drives.size())
    {
        m_clock.start();
    }

    /// Asks once more; the failure when there is no answer.
    std::optional<client::Failure> look()
    {
        const auto scans = askScans(m_context);
        if (!scans)
            return scans.failure();
        m_reports.clear();
        for (const ScanStatus &scan : *scans) {
            if (scan.drive >= m_drives.size())
                return client::Failure{client::FailureKind::NotUnderstood,
                                       QStringLiteral("it reports a scan of a drive that it has not")};
            if (m_drive && scan.drive != *m_drive)
                continue;
            RateMeter &meter = m_meters[scan.drive];
            meter.sample(m_clock.elapsed(), scan);
            m_reports.append({scan, m_drives.at(scan.drive), meter.bytesPerSecond()});
        }
        return std::nullopt;
    }

    [[nodiscard]] bool isAnyRunning() const
    {
        return std::any_of(m_reports.cbegin(), m_reports.cend(), [](const ScanReport &report) {
            return report.status.state == ScanState::Running;
        });
    }

    [[nodiscard]] const QVector<ScanReport> &reports() const { return m_reports; }

private:
    Context &m_context;
    QVector<client::Drive> m_drives;
    std::optional<qint32> m_drive;
    QVector<RateMeter> m_meters;
    QVector<ScanReport> m_reports;
    QElapsedTimer m_clock;
};

/// Waits until it is time to look again. A local console lets others in meanwhile.
std::optional<client::Failure> pauseBetweenLooks(Context &context)
{
    const bool isLocal = context.session().endpoint().isLocal();
    if (isLocal)
        context.session().close();
    pauseFor(kFollowInterval);
    if (!isLocal)
        return std::nullopt;
    const auto greeting = context.greet();
    return greeting ? std::nullopt : std::optional<client::Failure>(greeting.failure());
}

/// Shows the scans again and again, in place, until none runs any more.
std::optional<client::Failure> follow(Context &context, ScanView &view)
{
    const bool isLive = context.style().hasGraphics && !context.wantsJson();
    int shownLines = 0;
    while (true) {
        if (isLive) {
            // Lines that have left the screen upwards cannot be written over.
            const QStringList lines =
                scanLines(view.reports(), outputStyle()).mid(0, host::terminalSize().rows - 1);
            context.output().redraw(lines, shownLines);
            shownLines = int(lines.size());
        }
        if (!view.isAnyRunning())
            return std::nullopt;
        if (auto failure = pauseBetweenLooks(context))
            return failure;
        if (auto failure = view.look())
            return failure;
    }
}

} // namespace

int runScanStart(Context &context)
{
    const auto index = context.driveArgument();
    auto plan = planOf(context.arguments());
    if (!index)
        return context.refuseDrive();
    if (!plan)
        return context.refuse(
            QStringLiteral("--first and --last take sectors, --block bytes from 512 to 64M"));
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto drive = context.askDrive(*index);
    if (!drive)
        return context.fail(drive.failure());
    const QString fault = completePlan(*plan, *drive);
    if (!fault.isEmpty())
        return context.refuse(fault);
    const auto scans = askScans(context);
    if (!scans)
        return context.fail(scans.failure());
    if (isRunning(*scans, *index).value_or(false))
        return context.refuse(QStringLiteral("a scan of drive %1 runs already").arg(*index));

    const QString confirmation = QStringLiteral("STARTEDSCAN]![%1").arg(*index);
    const auto started =
        context.session().query(client::requests::startScan(*index, plan->block, *plan->first, *plan->last),
                                client::exactly(confirmation));
    if (!started)
        return context.fail(started.failure());
    context.output().note(
        QStringLiteral("scanning sectors %1 to %2 of drive %3")
            .arg(QString::number(*plan->first), QString::number(*plan->last), QString::number(*index)));
    return kExitFine;
}

int runScanStop(Context &context)
{
    const auto index = context.driveArgument();
    if (!index)
        return context.refuseDrive();
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto scans = askScans(context);
    if (!scans)
        return context.fail(scans.failure());
    const auto running = isRunning(*scans, *index);
    if (!running)
        return context.refuse(QStringLiteral("the service has no drive %1").arg(*index));
    if (!*running)
        return context.refuse(QStringLiteral("no scan of drive %1 runs").arg(*index));
    const auto stopped = context.session().query(
        client::requests::stopScan(*index), client::exactly(QStringLiteral("STOPEDSCAN]![%1").arg(*index)));
    if (!stopped)
        return context.fail(stopped.failure());
    context.output().note(QStringLiteral("the scan of drive %1 stops after the block in hand").arg(*index));
    return kExitFine;
}

int runScanStatus(Context &context)
{
    const bool hasDrive = !context.arguments().positionals.isEmpty();
    const auto index = hasDrive ? context.driveArgument() : std::nullopt;
    if (hasDrive && !index)
        return context.refuseDrive();
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto drives = context.session().query(QStringLiteral("ALLDEVINFO"), client::parseAllDrives);
    if (!drives)
        return context.fail(drives.failure());
    if (index && *index >= drives->size())
        return context.refuse(QStringLiteral("the service has no drive %1").arg(*index));

    ScanView view(context, *drives, index);
    if (const auto failure = view.look())
        return context.fail(*failure);
    const bool isFollowing = context.arguments().has(QStringLiteral("follow"));
    if (isFollowing) {
        if (const auto failure = follow(context, view))
            return context.fail(*failure);
    }
    if (context.wantsJson())
        context.output().print(QJsonDocument(scanArray(view.reports())));
    else if (!isFollowing || !context.style().hasGraphics)
        context.output().print(scanLines(view.reports(), context.style()));
    return kExitFine;
}
