// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLatin1String>
#include <QVector>

/// A value of the service's key, as an administrator sees it. Names are case-sensitive.
struct ServiceKeyRow
{
    enum class Type { Number, Text };
    enum class Writer {
        Installer,     ///< written by -install, read by the service
        Service,       ///< set by consoles, written back by the service
        Administrator, ///< an option: read at the start, never written
    };

    QLatin1String name;
    Type type;
    Writer writer;
    quint32 lowest;            ///< of a number
    quint32 highest;           ///< of a number
    QLatin1String defaultText; ///< the value that an absent one counts as, for a person
    QLatin1String help;        ///< one line
    bool isSecret = false;     ///< its value is not logged
};

/// Returns the rows of all values, in the order in which documents list them.
[[nodiscard]] const QVector<ServiceKeyRow> &serviceKeyTable();

/// Returns the row of a value; null if the service does not know the name.
[[nodiscard]] const ServiceKeyRow *findServiceKeyRow(const QString &name);

/// Returns the name that `name` is probably a misspelling of; null for a known name, and for one that
/// resembles none.
[[nodiscard]] QString similarServiceKeyName(const QString &name);
