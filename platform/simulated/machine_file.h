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

    /// Returns the whole file; nullopt if it cannot be read.
    virtual std::optional<QByteArray> read(const QString &path) = 0;
    /// Returns whether the file exists and can be read.
    virtual bool canRead(const QString &path) = 0;
};

struct MachineReply
{
    MachineState machine; ///< valid only if `problem` is empty
    QString problem;      ///< "file: key: reason"
};

/// Parses the machine that `json` describes. `file` is its path: messages begin with it, and relative paths
/// start at its folder. The result is undefined if there is a problem.
[[nodiscard]] MachineReply parseMachine(const QString &file, const QByteArray &json, MachineFiles &files);
