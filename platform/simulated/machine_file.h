// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/simulated/machine_state.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// The files that a machine file names.
class MachineFiles
{
public:
    MachineFiles() = default;
    MachineFiles(const MachineFiles &) = delete;
    MachineFiles &operator=(const MachineFiles &) = delete;
    virtual ~MachineFiles() = default;

    /// The whole file; nullopt when it cannot be read.
    virtual std::optional<QByteArray> read(const QString &path) = 0;
    /// Whether there is such a file and it may be read.
    virtual bool canRead(const QString &path) = 0;
};

struct MachineReply
{
    MachineState machine; ///< to be used only when `problem` is empty
    QString problem;      ///< "file: key: reason"
};

/// The machine that `json` describes. `file` is its path: it starts the messages, and relative paths in it
/// start at its folder. Nothing of a machine with a problem is of use.
[[nodiscard]] MachineReply parseMachine(const QString &file, const QByteArray &json, MachineFiles &files);
