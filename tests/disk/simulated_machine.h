// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "files.h"
#include "platform/platform.h"
#include "platform/simulated/simulated_platform.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

/// Returns a simulated machine with the given drives and volumes (docs/simulated-machine.md).
class SimulatedMachine
{
public:
    explicit SimulatedMachine(const QJsonArray &drives, const QJsonArray &volumes = {})
    {
        change(drives, volumes);
        if (const std::optional<QString> problem = simulateMachine(m_platform, fileName()))
            qFatal("%s", qUtf8Printable(*problem));
    }

    void change(const QJsonArray &drives, const QJsonArray &volumes = {}) const
    {
        const QJsonObject machine{{"drives", drives}, {"volumes", volumes}};
        if (!replaceFile(fileName(), QJsonDocument(machine).toJson()))
            qFatal("no machine file");
    }

    [[nodiscard]] DriveSystem &drives() const { return *m_platform.drives; }
    [[nodiscard]] VolumeSystem &volumes() const { return *m_platform.volumes; }

private:
    [[nodiscard]] QString fileName() const { return m_folder.filePath("machine.json"); }

    QTemporaryDir m_folder;
    Platform m_platform;
};
