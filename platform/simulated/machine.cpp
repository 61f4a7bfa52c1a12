// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/machine.h"

#include "platform/whole_file.h"

#include <QDateTime>
#include <QFileInfo>

#include <utility>

namespace {

constexpr qint64 kNsPerMs = 1000000;
constexpr qint64 kMaxSize = qint64(16) << 20; // bytes

qint64 nowNs()
{
    return QDateTime::currentMSecsSinceEpoch() * kNsPerMs;
}

std::optional<QByteArray> contentOf(const QString &path)
{
    auto content = whole_file::read(path, kMaxSize);
    return content ? std::make_optional(*std::move(content)) : std::nullopt;
}

/// Reads files and records their stamps.
class NotingFiles : public MachineFiles
{
public:
    std::optional<QByteArray> read(const QString &path) override
    {
        WatchedFile watched;
        watched.path = path;
        const qint64 now = nowNs(); // before the reading: later writes must be noticed
        watched.stamp = fileStamp(path);
        watched.settled = isSettled(watched.stamp, now);
        std::optional<QByteArray> content = contentOf(path);
        watched.content = content.value_or(QByteArray());
        m_noted.append(watched);
        return content;
    }

    bool canRead(const QString &path) override
    {
        const QFileInfo info(path);
        const bool readable = info.exists() && !info.isDir() && info.isReadable(); // a device is allowed
        if (!readable) // an existing image may change; a missing one invalidates the machine until it exists
            m_noted.append({path, fileStamp(path), QByteArray(), true});
        return readable;
    }

    [[nodiscard]] const QVector<WatchedFile> &noted() const { return m_noted; }

private:
    QVector<WatchedFile> m_noted;
};

/// Returns whether the file has changed since it was read.
bool hasChangedSince(WatchedFile &file)
{
    const qint64 now = nowNs();
    const FileStamp stamp = fileStamp(file.path);
    if (stamp != file.stamp)
        return true;
    if (file.settled)
        return false;
    if (contentOf(file.path).value_or(QByteArray()) != file.content)
        return true;
    file.settled = isSettled(stamp, now);
    return false;
}

} // namespace

Machine::Machine(MachineState state)
    : m_state(std::make_shared<const MachineState>(std::move(state)))
{}

std::unique_ptr<Machine> Machine::fromFile(const QString &path, ProblemReport report, QString &problem)
{
    auto machine = std::make_unique<Machine>(MachineState());
    machine->m_path = path;
    machine->m_report = std::move(report);
    problem = machine->load();
    return problem.isEmpty() ? std::move(machine) : nullptr;
}

std::shared_ptr<const MachineState> Machine::state()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (hasChanged()) {
        const QString problem = load();
        if (!problem.isEmpty() && problem != m_reported)
            m_report(problem);
        m_reported = problem;
    }
    return m_state;
}

bool Machine::hasChanged()
{
    for (WatchedFile &file : m_watched) {
        if (hasChangedSince(file))
            return true;
    }
    return false;
}

/// Reads the files again and uses their machine if it is valid. Returns the problem if it is not.
QString Machine::load()
{
    NotingFiles files;
    const std::optional<QByteArray> json = files.read(m_path);
    MachineReply reply;
    if (json)
        reply = parseMachine(m_path, *json, files);
    else
        reply.problem = m_path + QStringLiteral(": cannot be read");
    m_watched = files.noted();
    if (reply.problem.isEmpty())
        m_state = std::make_shared<const MachineState>(std::move(reply.machine));
    return reply.problem;
}
