// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/greeting.h"

#include <QJsonValue>
#include <QString>
#include <QVector>

#include <functional>
#include <optional>

/// One setting as a person reads and writes it.
struct Setting
{
    QString name;
    QString explanation;
    bool isSecret = false; ///< never shown, never taken from the command line
    std::function<QString(const client::ServiceSettings &)> text;
    /// A number, a boolean or a text; intervals in milliseconds, of a secret whether it is set.
    std::function<QJsonValue(const client::ServiceSettings &)> json;
    /// Takes `value`; false when it does not fit, and then nothing is changed.
    std::function<bool(client::ServiceSettings &, const QString &value)> assign;
    QString range; ///< what fits, for a message
};

/// All settings, in the order in which they are shown.
[[nodiscard]] QVector<Setting> settingsTable();

/// `settings` with each of `assignments` (NAME=VALUE, the name in any case) put in, and everything else as
/// it was. What is wrong with an assignment comes back instead.
struct MergedSettings
{
    client::ServiceSettings settings;
    QString error; ///< empty when all went in
};
[[nodiscard]] MergedSettings mergeSettings(const client::ServiceSettings &settings,
                                           const QStringList &assignments);
