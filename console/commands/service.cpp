// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/requests.h"
#include "console/client/short_replies.h"
#include "console/commands/command.h"
#include "console/render/units.h"

#include <QJsonObject>

namespace {

using namespace std::chrono_literals;

/// A read of all drives is answered when it is done, and a drive may take its time.
constexpr auto kRefreshPatience = 120s;
constexpr qint64 kShortestInterval = 1000;
constexpr qint64 kLongestInterval = 360000 * kShortestInterval; // the service takes no more from its key

int printCount(Context &context, qint32 count)
{
    if (context.wantsJson())
        context.output().print(QJsonDocument(QJsonObject{{QStringLiteral("drives"), count}}));
    else
        context.output().print(QString::number(count));
    return kExitFine;
}

int printIntervals(Context &context, const client::Intervals &intervals)
{
    if (context.wantsJson()) {
        context.output().print(QJsonDocument(
            QJsonObject{{QStringLiteral("smartMilliseconds"), double(intervals.smart)},
                        {QStringLiteral("freeSpaceMilliseconds"), double(intervals.freeSpace)}}));
        return kExitFine;
    }
    context.output().print(QStringLiteral("drives every %1, volumes every %2")
                               .arg(render::durationText(intervals.smart / 1000),
                                    render::durationText(intervals.freeSpace / 1000)));
    return kExitFine;
}

std::optional<qint32> intervalArgument(const QString &text)
{
    const auto interval = render::parseInterval(text);
    if (!interval || *interval < kShortestInterval || *interval > kLongestInterval)
        return std::nullopt;
    return qint32(*interval);
}

} // namespace

int runCount(Context &context)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto count = context.session().query(QStringLiteral("DEVCOUNT"), client::parseDriveCount);
    return count ? printCount(context, *count) : context.fail(count.failure());
}

int runDetect(Context &context)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto begun =
        context.session().query(QStringLiteral("RESET"), client::exactly(QStringLiteral("RESET_OK")));
    if (!begun)
        return context.fail(begun.failure());
    if (!context.arguments().wait) {
        context.output().note(QStringLiteral("the service detects its drives anew"));
        return kExitFine;
    }
    return runCount(context);
}

int runRefresh(Context &context)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto done =
        context.session().query(QStringLiteral("REFRESH"), client::exactly(QStringLiteral("REFRESH_OK")),
                                context.patience(kRefreshPatience));
    if (!done)
        return context.fail(done.failure());
    context.output().note(QStringLiteral("drives and volumes are read anew"));
    return kExitFine;
}

int runIntervals(Context &context)
{
    const QStringList texts = context.arguments().positionals;
    const auto smart = intervalArgument(texts.value(0));
    const auto freeSpace = intervalArgument(texts.value(1));
    if (!texts.isEmpty() && (!smart || !freeSpace))
        return context.refuse(
            QStringLiteral("two times from 1s to 100h are needed: for drives and for volumes"));
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    if (texts.isEmpty()) {
        const auto version = context.session().query(QStringLiteral("VER"), client::parseVersion);
        return version ? printIntervals(context, version->intervals) : context.fail(version.failure());
    }
    const auto intervals =
        context.session().query(client::requests::setIntervals(*smart, *freeSpace), client::parseIntervals);
    return intervals ? printIntervals(context, *intervals) : context.fail(intervals.failure());
}
