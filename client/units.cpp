// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/units.h"

#include <QRegularExpression>

#include <iterator>
#include <limits>

namespace client {

namespace {

constexpr qint64 kMinute = 60;
constexpr qint64 kHour = 60 * kMinute;
constexpr qint64 kDay = 24 * kHour;

/// Returns three digits of a value below 999.5.
QString threeDigits(double value)
{
    // 9.995 and 99.95 are the last values that would round up into a fourth digit.
    const int decimals = value < 9.995 ? 2 : value < 99.95 ? 1 : 0;
    return QString::number(value, 'f', decimals);
}

QString twoDigits(qint64 number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

} // namespace

QString sizeText(quint64 bytes)
{
    static const char *const kUnits[] = {"kB", "MB", "GB", "TB", "PB", "EB"};
    constexpr double kStep = 1000.0;
    constexpr double kRoundsUp = 999.5;
    if (bytes < 1000)
        return QStringLiteral("%1 B").arg(bytes);
    double value = double(bytes) / kStep;
    auto unit = std::begin(kUnits);
    while (value >= kRoundsUp && std::next(unit) != std::end(kUnits)) {
        value /= kStep;
        ++unit;
    }
    return threeDigits(value) + QLatin1Char(' ') + QLatin1String(*unit);
}

QString rateText(double bytesPerSecond)
{
    constexpr double kMegabyte = 1e6;
    return threeDigits(bytesPerSecond / kMegabyte) + QStringLiteral(" MB/s");
}

QString durationText(qint64 seconds)
{
    if (seconds < kMinute)
        return QStringLiteral("%1 s").arg(seconds);
    if (seconds < kHour) {
        const QString minutes = QStringLiteral("%1 min").arg(seconds / kMinute);
        return seconds % kMinute == 0 ? minutes
                                      : QStringLiteral("%1 %2 s").arg(minutes, twoDigits(seconds % kMinute));
    }
    if (seconds < kDay)
        return QStringLiteral("%1 h %2 min")
            .arg(QString::number(seconds / kHour), twoDigits(seconds % kHour / kMinute));
    return QStringLiteral("%1 d %2 h")
        .arg(QString::number(seconds / kDay), QString::number(seconds % kDay / kHour));
}

QString timeText(const QDateTime &time)
{
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : QStringLiteral("-");
}

QDateTime withZone(const QDateTime &localTime, const QTimeZone &zone)
{
    return localTime.isValid() ? QDateTime(localTime.date(), localTime.time(), zone) : QDateTime();
}

QJsonValue isoTime(const QDateTime &time)
{
    // Qt writes the offset only of a time whose specification is an offset.
    return time.isValid() ? QJsonValue(time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate))
                          : QJsonValue();
}

std::optional<qint32> parseBlockSize(const QString &text)
{
    static const QRegularExpression kForm(QStringLiteral("\\A([0-9]{1,9})([kKmM]?)\\z"));
    const auto match = kForm.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QString unit = match.captured(2).toLower();
    const qint64 factor = unit.isEmpty() ? 1 : unit == QLatin1String("k") ? 1024 : 1024 * 1024;
    const qint64 bytes = match.captured(1).toLongLong() * factor;
    if (bytes > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return qint32(bytes);
}

std::optional<qint64> parseInterval(const QString &text)
{
    static const QRegularExpression kForm(QStringLiteral("\\A([0-9]{1,9})\\s*(s|m|min|h)?\\z"));
    const auto match = kForm.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const QString unit = match.captured(2);
    const qint64 seconds = unit.startsWith(QLatin1Char('m')) ? kMinute
                           : unit == QLatin1String("h")      ? kHour
                                                             : 1;
    return match.captured(1).toLongLong() * seconds * 1000;
}

std::optional<QDateTime> parseTime(const QString &text)
{
    constexpr int kDateSize = 10;
    const QString form = text.trimmed().replace(kDateSize, 1, QLatin1Char(' '));
    const QDate date = QDate::fromString(form.left(kDateSize), QStringLiteral("yyyy-MM-dd"));
    const QString timeForm = form.mid(kDateSize + 1);
    QTime time(0, 0);
    if (!timeForm.isEmpty()) {
        const bool hasSeconds = timeForm.size() > 5;
        time = QTime::fromString(timeForm, hasSeconds ? QStringLiteral("HH:mm:ss") : QStringLiteral("HH:mm"));
    }
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return QDateTime(date, time, Qt::UTC);
}

} // namespace client
