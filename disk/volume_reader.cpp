// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/volume_reader.h"

#include "disk/volume_enumeration.h"
#include "platform/system_error.h"

#include <algorithm>
#include <utility>

struct VolumeReader::Reading
{
    VolumeList volumes;
    int running;
    std::function<void(const VolumeList &)> done;
};

VolumeReader::VolumeReader(VolumeSystem &volumes, Workers &workers)
    : m_volumes(volumes)
    , m_workers(workers)
{}

void VolumeReader::read(std::function<void(const VolumeList &)> done)
{
    const auto reading = std::make_shared<Reading>(Reading{m_last, 0, std::move(done)});
    const QDeadlineTimer deadline(m_workers.limits().request);
    auto worker = std::make_unique<FunctionWorker<VolumeList>>(
        QStringLiteral("list of volumes"),
        [&system = m_volumes] { return volume_enumeration::list(system); });
    FunctionWorker<VolumeList> *const lister = worker.get();
    m_workers.start(std::move(worker), m_workers.limits().request, [=](int, WorkEnd end) {
        if (end != WorkEnd::Done) {
            m_faults.failed(lister->subject(), QStringLiteral("The list of volumes"),
                            system_error::kSemTimeout);
            finish(*reading);
            return;
        }
        m_faults.answered(lister->subject());
        reading->volumes = *lister->value();
        readEach(reading, deadline);
    });
}

void VolumeReader::readEach(const std::shared_ptr<Reading> &reading, QDeadlineTimer deadline)
{
    const std::chrono::milliseconds limit(std::max<qint64>(deadline.remainingTime(), 1));
    reading->running = reading->volumes.size();
    if (reading->running == 0)
        finish(*reading);
    for (int i = 0; i < reading->volumes.size(); ++i) {
        const VolumeEntry listed = reading->volumes.at(i);
        auto worker =
            std::make_unique<FunctionWorker<VolumeEntry>>(listed.volumeName, [&system = m_volumes, listed] {
                return volume_enumeration::describe(system, listed);
            });
        FunctionWorker<VolumeEntry> *const reader = worker.get();
        m_workers.start(std::move(worker), limit, [=](int, WorkEnd end) {
            if (end == WorkEnd::Done)
                m_faults.answered(listed.volumeName);
            else
                m_faults.failed(listed.volumeName, QStringLiteral("Volume ") + listed.volumeName,
                                system_error::kSemTimeout);
            reading->volumes[i] = end == WorkEnd::Done ? *reader->value() : lastReadOf(listed);
            if (--reading->running == 0)
                finish(*reading);
        });
    }
}

void VolumeReader::finish(Reading &reading)
{
    m_last = reading.volumes;
    reading.done(reading.volumes);
}

/// Returns the values of the last read, with the volume's present ordinal.
VolumeEntry VolumeReader::lastReadOf(const VolumeEntry &listed) const
{
    const auto last = std::find_if(m_last.cbegin(), m_last.cend(), [&listed](const VolumeEntry &candidate) {
        return candidate.volumeName == listed.volumeName;
    });
    if (last == m_last.cend())
        return listed;
    VolumeEntry entry = *last;
    entry.ordinal = listed.ordinal;
    entry.root = listed.root;
    return entry;
}
