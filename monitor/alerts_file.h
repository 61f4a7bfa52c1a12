// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/fault_state.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// The file alerts.json. It is written only when its content changes.
class AlertsFile
{
public:
    /// With an empty path nothing is read or stored.
    explicit AlertsFile(QString path);

    /// Returns the stored document, which is empty if there is none. A file that cannot be used is set aside
    /// with a warning; if that fails, nothing is stored from then on.
    [[nodiscard]] QJsonObject load();

    /// Replaces the file. A fault is logged when it starts and when it ends.
    void save(const QJsonObject &document);

private:
    const QString m_path;
    bool m_canStore = true;
    QByteArray m_stored; ///< the file's bytes
    FaultState m_storing{QStringLiteral("Storing the alarms")};
};
