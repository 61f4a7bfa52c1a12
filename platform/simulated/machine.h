// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/file_stamp.h"
#include "platform/simulated/machine_file.h"
#include "platform/simulated/machine_state.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>
#include <mutex>

/// A file as it stood when it was last read.
struct WatchedFile
{
    QString path;
    FileStamp stamp;
    QByteArray content;
    bool settled = false; ///< an equal stamp now means equal content
};

/// The machine that every part of the simulated platform asks. Any thread may call.
class Machine
{
public:
    /// Told of each change of the file that is not valid, once. Called under a lock: must not ask the
    /// machine.
    using ProblemReport = std::function<void(const QString &problem)>;

    /// A machine that never changes.
    explicit Machine(MachineState state);

    /// The machine of the file at `path`, read again whenever it or a dump it names has changed. `problem` is
    /// set, and nothing returned, when it is not valid.
    [[nodiscard]] static std::unique_ptr<Machine> fromFile(const QString &path, ProblemReport report,
                                                           QString &problem);

    /// The machine as its files are at this moment, or as they last were valid.
    [[nodiscard]] std::shared_ptr<const MachineState> state();

private:
    [[nodiscard]] bool hasChanged();
    [[nodiscard]] QString load();

    std::mutex m_mutex; // guards all below
    std::shared_ptr<const MachineState> m_state;
    QString m_path;
    ProblemReport m_report;
    QString m_reported; ///< the problem that the files have now, empty when they have none
    QVector<WatchedFile> m_watched;
};
