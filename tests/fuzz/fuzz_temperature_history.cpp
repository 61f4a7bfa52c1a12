// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_log.h"

#include "fuzz/fuzz_input.h"
#include "monitor/plain_history.h"

#include <QFile>

#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr int kMomentSize = 12;

/// A log in memory, under a path like any other.
class LogFile
{
public:
    LogFile()
        : m_descriptor(::memfd_create("temperature.log", 0))
    {
        require(m_descriptor >= 0);
    }
    ~LogFile() { ::close(m_descriptor); }
    LogFile(const LogFile &) = delete;
    LogFile &operator=(const LogFile &) = delete;

    [[nodiscard]] QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

    void write(const QByteArray &bytes) const
    {
        require(::ftruncate(m_descriptor, 0) == 0);
        require(::pwrite(m_descriptor, bytes.constData(), std::size_t(bytes.size()), 0) == bytes.size());
    }

private:
    int m_descriptor;
};

} // namespace

/// The first and the last moment as a console sends them, then the log: the history is the plain walk's.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const LogFile log;
    const QByteArray bytes = bytesOf(data, size);
    const QString from = QString::fromUtf8(bytes.left(kMomentSize));
    const QString to = QString::fromUtf8(bytes.mid(kMomentSize, kMomentSize));
    const QByteArray records = bytes.mid(2 * kMomentSize);
    log.write(records);
    require(temperatureHistory(log.path(), from, to) == plain::temperatureHistory(records, from, to));
    return 0;
}
