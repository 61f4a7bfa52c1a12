// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/access_error.h"
#include "wire/result.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <optional>
#include <variant>

/// A value of the service's key: a number (REG_DWORD) or a text (REG_SZ).
using KeyValue = std::variant<quint32, QString>;

/// The service's own key, opened. Destroying it closes it.
class OpenKey
{
public:
    OpenKey() = default;
    OpenKey(const OpenKey &) = delete;
    OpenKey &operator=(const OpenKey &) = delete;
    virtual ~OpenKey() = default;

    /// Returns nullopt if the value is missing or of a type that is neither number nor text.
    [[nodiscard]] virtual std::optional<KeyValue> value(const QString &name) const = 0;

    /// Returns the names of all values, of whatever type.
    [[nodiscard]] virtual QStringList names() const = 0;
};

struct NamedNumber
{
    QString name;
    quint32 value = 0;
};

/// The storage of the service's key: the registry, or a file in the home directory. The installer creates it.
class ServiceKey
{
public:
    ServiceKey() = default;
    ServiceKey(const ServiceKey &) = delete;
    ServiceKey &operator=(const ServiceKey &) = delete;
    virtual ~ServiceKey() = default;

    /// Opens the key for reading. Fails with Kind::Failed if there is a key that cannot be read or
    /// understood.
    virtual Result<std::unique_ptr<OpenKey>, AccessError> open() = 0;

    /// Stores the numbers; other values stay as they are.
    virtual Result<void, AccessError> write(const QVector<NamedNumber> &values) = 0;
};
