// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/machine_file.h"

#include "fuzz/fuzz_input.h"
#include "platform/drive_requests.h"

namespace {

/// Files of which each has the same bytes as the machine file itself.
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

/// Disables leak detection: Qt 5.15's JSON parser leaks the current list or object on a syntax error.
extern "C" const char *__asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "detect_leaks=0";
}

/// Input: a machine file. It yields a problem with place and reason, or a machine whose drives have all their
/// sectors.
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
