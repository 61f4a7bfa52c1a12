// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_log.h"

#include "disk/date_time_text.h"
#include "monitor/monitor_log.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <utility>

namespace {

constexpr int kRecordSize = 8;
constexpr int kFirstYear = 2000;
constexpr int kOffset = 33; ///< makes ordinary values printable

/// Read at a time. The file is not mapped: touching a page that somebody has truncated away would kill the
/// service, and a read costs about the same.
constexpr int kChunkSize = 1 << 18;
static_assert(kChunkSize % kRecordSize == 0, "no record lies across two chunks");

/// A reply is one line, scrambled to 8/3 of its size, and must fit into memory and an int.
constexpr int kMaxHistorySize = 1 << 27;

/// A moment as a number that orders like it: a record's first six characters, the year's on top.
using Stamp = quint64;

/// Where the date is invalid: before every valid one, which is how QDateTime compares.
constexpr Stamp kNoDate = 0;

Stamp stampOf(const QDate &date, const QTime &time)
{
    if (!date.isValid())
        return kNoDate;
    const QTime clock = time.isValid() ? time : QTime(0, 0);
    const int year = date.year() - kFirstYear + kOffset;
    auto stamp = Stamp(year);
    for (const int part : {date.month(), date.day(), clock.hour(), clock.minute(), clock.second()}) {
        const int character = part + kOffset;
        stamp = stamp << 8 | Stamp(character);
    }
    return stamp;
}

Stamp stampOf(const QString &digits)
{
    const DateAndTime moment = parseDateTime(digits);
    return stampOf(moment.date, moment.time);
}

/// Eight bytes as they lie in the file, the first one on top.
struct Record
{
    quint64 bytes;

    [[nodiscard]] int value(int index) const { return int(bytes >> (56 - 8 * index) & 0xFF) - kOffset; }
    [[nodiscard]] quint64 dateBytes() const { return bytes >> 40; }

    [[nodiscard]] bool isAscii() const { return (bytes & 0x8080808080808080) == 0; }
    [[nodiscard]] bool hasDate() const { return QDate::isValid(kFirstYear + value(0), value(1), value(2)); }
    [[nodiscard]] bool hasTime() const
    {
        return quint32(value(3)) < 24 && quint32(value(4)) < 60 && quint32(value(5)) < 60;
    }
    /// Its moment, if it is ASCII and has date and time: then the bytes are the characters.
    [[nodiscard]] Stamp plainStamp() const { return bytes >> 16; }
};

/// The stamp of a record's text. Bytes that are not ASCII came together as other characters, or as none.
Stamp stampOfText(const QString &text)
{
    const auto value = [&text](int index) {
        return (index < text.size() ? text.at(index).unicode() : 0) - kOffset;
    };
    return stampOf(QDate(kFirstYear + value(0), value(1), value(2)), QTime(value(3), value(4), value(5)));
}

/// Collects the records of a period, fed chunk by chunk.
class PeriodReader
{
public:
    PeriodReader(Stamp from, Stamp to)
        : m_from(from)
        , m_to(to)
    {}

    /// Takes the next whole records; false when the period is over.
    bool read(const char *records, int size)
    {
        const char *const end = records + size;
        const char *run = records; // plain records to be appended together
        bool goOn = true;
        const char *p = records;
        for (; p != end && goOn; p += kRecordSize) {
            const Record record{qFromBigEndian<quint64>(p)};
            if (isPlain(record)) {
                if (record.plainStamp() < m_from) {
                    appendPlain(run, p);
                    run = p + kRecordSize;
                }
                goOn = record.plainStamp() <= m_to;
            } else {
                appendPlain(run, p);
                run = p + kRecordSize;
                goOn = readOther(p);
            }
        }
        appendPlain(run, p);
        return goOn;
    }

    [[nodiscard]] int textSize() const { return m_text.size(); }
    [[nodiscard]] QString takeText() { return std::move(m_text); }

private:
    /// Whether the record is its own text and its moment's bytes are its stamp. Neighbours mostly share their
    /// date, so it is looked at once.
    bool isPlain(Record record)
    {
        if (!record.isAscii() || !record.hasTime())
            return false;
        if (record.dateBytes() != m_validDate) {
            if (!record.hasDate())
                return false;
            m_validDate = record.dateBytes();
        }
        return true;
    }

    void appendPlain(const char *begin, const char *end) { m_text += QLatin1String(begin, int(end - begin)); }

    bool readOther(const char *record)
    {
        const QString text = QString::fromUtf8(record, kRecordSize);
        const Stamp stamp = stampOfText(text);
        if (stamp >= m_from)
            m_text += text;
        return stamp <= m_to;
    }

    Stamp m_from;
    Stamp m_to;
    quint64 m_validDate = ~quint64{0}; ///< three bytes that are known to be a date; at first none are
    QString m_text;
};

/// A character as a byte of the local code page.
char localByte(int code)
{
    if (code < 0 || code > 0xFFFF)
        return '?';
    const QByteArray bytes = QString(QChar(code)).toLocal8Bit();
    return bytes.size() == 1 ? bytes.at(0) : '?';
}

QByteArray recordOf(const TemperatureReading &reading, const QDateTime &now)
{
    const QDate date = now.date();
    const QTime time = now.time();
    QByteArray record;
    for (const int value : {date.year() - kFirstYear, date.month(), date.day(), time.hour(), time.minute(),
                            time.second(), reading.device, int(reading.celsius)})
        record += localByte(value + kOffset);
    return record;
}

/// Before the settings name a directory the path may be a foreign system's ("C:/"), which would be opened
/// below the current directory.
bool open(QFile &file, QIODevice::OpenMode mode)
{
    return QDir::isAbsolutePath(file.fileName()) && file.open(mode | QIODevice::Unbuffered);
}

} // namespace

QString temperatureLogIn(const QString &directory)
{
    QString path = directory;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return path + QStringLiteral("temperature.log");
}

void appendTemperature(const QString &path, const TemperatureReading &reading, const QDateTime &now)
{
    QFile file(path);
    if (!open(file, QIODevice::Append)) {
        qCDebug(lcMonitor) << "no temperature logged:" << path << file.errorString();
        return;
    }
    const qint64 torn = file.size() % kRecordSize;
    if (torn != 0 && !file.resize(file.size() - torn))
        return;
    if (file.write(recordOf(reading, now)) != kRecordSize)
        qCDebug(lcMonitor) << "temperature lost:" << path << file.errorString();
}

QString temperatureHistory(const QString &path, const QString &from, const QString &to)
{
    QFile file(path);
    if (!open(file, QIODevice::ReadOnly))
        return {};
    PeriodReader reader(stampOf(from), stampOf(to));
    QByteArray chunk(kChunkSize, Qt::Uninitialized);
    for (;;) {
        const int size = int(file.read(chunk.data(), kChunkSize));
        const int whole = size - size % kRecordSize;
        if (size <= 0 || !reader.read(chunk.constData(), whole) || whole != size ||
            reader.textSize() >= kMaxHistorySize)
            return reader.takeText();
    }
}
