// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_log.h"

#include "monitor/temperature_record.h"
#include "platform/directory_path.h"
#include "platform/regular_file.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace {

constexpr int kFirstYear = 2000;
constexpr int kOffset = 33; ///< makes ordinary values printable
constexpr int kLowest = -kOffset;
constexpr int kHighest = 127 - kOffset; ///< beyond it a byte would not be ASCII

void appendRecord(QByteArray &records, const TemperatureReading &reading, const QDateTime &now)
{
    const QDate date = now.date();
    const QTime time = now.time();
    const int year = date.year() - kFirstYear;
    if (reading.device > kHighest || year < kLowest || year > kHighest)
        return;
    for (const int value : {year, date.month(), date.day(), time.hour(), time.minute(), time.second(),
                            reading.device, std::clamp(int(reading.celsius), kLowest, kHighest)})
        records += char(value + kOffset);
}

Result<void> append(QFile &log, const QByteArray &records)
{
    if (const auto opened = regular_file::open(log, QIODevice::Append); !opened)
        return Error{opened.failure().text};
    const qint64 torn = log.size() % temperature_record::kSize;
    if ((torn != 0 && !log.resize(log.size() - torn)) || log.write(records) != records.size())
        return Error{log.errorString()};
    return regular_file::sync(log);
}

} // namespace

QString temperatureLogIn(const QString &directory)
{
    return pathIn(directory, QStringLiteral("temperature.log"));
}

Result<void> appendTemperatures(const QString &path, const QVector<TemperatureReading> &readings,
                                const QDateTime &now)
{
    // Before the settings name a directory the path may be another system's ("C:/"), which would be opened
    // below the current directory.
    if (!QDir::isAbsolutePath(path))
        return Error{path + QStringLiteral(": not an absolute path")};
    QByteArray records;
    for (const TemperatureReading &reading : readings)
        appendRecord(records, reading, now);
    if (records.isEmpty())
        return {};
    QFile log(path);
    const auto appended = append(log, records);
    return appended ? appended : Error{path + QStringLiteral(": ") + appended.failure().text};
}
