// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/column.h"
#include "client/failure.h"
#include "client/greeting.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <variant>

namespace client {

/// One of the settings that SET changes.
struct Setting
{
    enum class Kind { Number, Interval, Switch, Text, Secret };

    using Member =
        std::variant<quint32 ServiceSettings::*, qint32 ServiceSettings::*, qint64 ServiceSettings::*,
                     bool ServiceSettings::*, QString ServiceSettings::*>;

    Kind kind;
    QString name; ///< as a person writes it
    QString key;  ///< in JSON; an interval's has the unit in its name
    QString help;
    Member member;
    qint64 lowest = 0; ///< of a number, and of an interval in milliseconds
    qint64 highest = 0;

    /// Returns the value as a person writes it, and of a secret only whether it is set.
    [[nodiscard]] QString text(const ServiceSettings &settings) const;
    /// Returns a number, a boolean or a text: of an interval milliseconds, of a secret whether it is set.
    [[nodiscard]] QJsonValue json(const ServiceSettings &settings) const;
    /// Returns a description of the accepted values, for messages.
    [[nodiscard]] QString range() const;
};

/// Returns all settings, in the order in which they are shown.
[[nodiscard]] const QVector<Setting> &settingsTable();

/// Returns the settings' columns of a table: name, value and meaning.
[[nodiscard]] Columns<Setting> settingColumns(const ServiceSettings &settings);

/// Returns `settings` with `assignments` (NAME=VALUE, the name in any case) applied. Fails without any change
/// if one of them is not a setting or not in range, or sets a password. `names`, if not empty, are the only
/// names that are accepted.
[[nodiscard]] Result<ServiceSettings> changeSettings(ServiceSettings settings, const QStringList &assignments,
                                                     const QStringList &names = {});

/// Returns `settings` with the values of a settings document applied; keys as in documents::settings(), and a
/// password as a text. Fails without any change at the first key that is unknown or value that is not in
/// range.
[[nodiscard]] Result<ServiceSettings> changeSettings(ServiceSettings settings, const QJsonObject &changes);

} // namespace client
