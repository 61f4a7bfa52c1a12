// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/platform.h"
#include "platform/simulated/simulated_platform.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

/// A simulated machine with the given drives and volumes (docs/simulated-machine.md).
class SimulatedMachine
{
public:
    explicit SimulatedMachine(const QJsonArray &drives, const QJsonArray &volumes = {})
    {
        const QJsonObject machine{{QStringLiteral("drives"), drives}, {QStringLiteral("volumes"), volumes}};
        QFile file(m_folder.filePath(QStringLiteral("machine.json")));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no machine file");
        file.write(QJsonDocument(machine).toJson());
        file.close();
        if (const std::optional<QString> problem = simulateMachine(m_platform, file.fileName()))
            qFatal("%s", qUtf8Printable(*problem));
    }

    [[nodiscard]] DriveSystem &drives() const { return *m_platform.drives; }
    [[nodiscard]] VolumeSystem &volumes() const { return *m_platform.volumes; }

private:
    QTemporaryDir m_folder;
    Platform m_platform;
};
