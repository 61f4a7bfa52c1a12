// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_history.h"

#include "fuzz/fuzz_input.h"
#include "monitor/plain_history.h"

#include <sys/mman.h>
#include <unistd.h>

/// Reads a history in blocks so small that every block boundary matters.
QString historyOf(const QString &path, const QString &from, const QString &to)
{
    Workers workers;
    TemperatureHistory history(path, {3, 1 << 20, 1 << 30}, workers);
    QByteArray text;
    history.find({parseDateTime(from), parseDateTime(to)}, [&text](HistoryReader reader) {
        for (QByteArray piece = reader.next(); !piece.isEmpty(); piece = reader.next())
            text += piece;
        require(text.size() == reader.textBytes());
    });
    return QString::fromUtf8(text.constData(), text.size()); // without its size the text ends at a zero byte
}

/// Input: the first and the last moment as a console sends them, then the log. The history equals that of
/// a plain walk over the log.
void fuzz(const QByteArray &bytes)
{
    constexpr int kMomentSize = 12;
    const QString from = QString::fromUtf8(bytes.left(kMomentSize));
    const QString to = QString::fromUtf8(bytes.mid(kMomentSize, kMomentSize));
    const QByteArray records = bytes.mid(2 * kMomentSize);
    static const int log = ::memfd_create("temperature.log", 0);
    require(::ftruncate(log, 0) == 0);
    require(::pwrite(log, records.constData(), std::size_t(records.size()), 0) == records.size());
    const QString path = QStringLiteral("/proc/self/fd/%1").arg(log);
    require(historyOf(path, from, to) == plain::temperatureHistory(records, from, to));
}
