// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
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

    /// nullopt when the value is missing or of a type that is neither number nor text.
    [[nodiscard]] virtual std::optional<KeyValue> value(const QString &name) const = 0;
};

struct NamedNumber
{
    QString name;
    quint32 value = 0;
};

/// Where the service's key lives: the registry, or a file of the home directory. The installer makes it.
class ServiceKey
{
public:
    ServiceKey() = default;
    ServiceKey(const ServiceKey &) = delete;
    ServiceKey &operator=(const ServiceKey &) = delete;
    virtual ~ServiceKey() = default;

    /// Opens for reading; null when there is no key or it cannot be read.
    virtual std::unique_ptr<OpenKey> open() = 0;

    /// Stores the numbers; other values stay as they are. False, with nothing changed, when there is no key.
    virtual bool write(const QVector<NamedNumber> &values) = 0;
};
