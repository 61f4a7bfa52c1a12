// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/machine_file.h"

#include "fuzz/fuzz_input.h"
#include "platform/drive_requests.h"

namespace {

/// Whatever a machine file names holds the same bytes as the file itself.
class SameBytes : public MachineFiles
{
public:
    explicit SameBytes(const QByteArray &bytes)
        : m_bytes(bytes)
    {}

    std::optional<QByteArray> read(const QString &) override { return m_bytes; }
    bool canRead(const QString &) override { return true; }

private:
    const QByteArray m_bytes;
};

} // namespace

/// Qt 5.15's JSON parser loses the list or object that it was in the middle of when it meets a mistake.
extern "C" const char *__asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "detect_leaks=0";
}

/// A file has a problem, and its message gives place and reason, or it is a machine whose drives have all
/// their sectors.
void fuzz(const QByteArray &json)
{
    SameBytes files(json);
    const MachineReply reply = parseMachine(QStringLiteral("m.json"), json, files);
    if (!reply.problem.isEmpty()) {
        require(reply.problem.contains(QStringLiteral(": ")));
        return;
    }
    for (const DriveState &drive : reply.machine.drives) {
        require(drive.identify.size() == ata::kSectorSize && drive.smartData.size() == ata::kSectorSize &&
                drive.smartThresholds.size() == ata::kSectorSize);
    }
}
