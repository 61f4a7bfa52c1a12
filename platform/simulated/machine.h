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

/// The state of a file when it was last read.
struct WatchedFile
{
    QString path;
    FileStamp stamp;
    QByteArray content;
    bool settled = false; ///< an equal stamp now means unchanged content
};

/// The machine behind every part of the simulated platform. All functions may be called on any thread.
class Machine
{
public:
    /// Called once for each change that makes the file invalid. Called under a lock: must not call the
    /// machine.
    using ProblemReport = std::function<void(const QString &problem)>;

    /// Constructs a machine that never changes.
    explicit Machine(MachineState state);

    /// Returns the machine of the file at `path`, which is read again whenever it or a dump it names has
    /// changed. Returns null and sets `problem` if it is not valid.
    [[nodiscard]] static std::unique_ptr<Machine> fromFile(const QString &path, ProblemReport report,
                                                           QString &problem);

    /// Returns the machine of the files' present content, or of their last valid content.
    [[nodiscard]] std::shared_ptr<const MachineState> state();

private:
    [[nodiscard]] bool hasChanged();
    [[nodiscard]] QString load();

    std::mutex m_mutex; // guards what follows
    std::shared_ptr<const MachineState> m_state;
    QString m_path;
    ProblemReport m_report;
    QString m_reported; ///< the present problem of the files; empty if they are valid
    QVector<WatchedFile> m_watched;
};
