// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_key.h"

#include <QMap>

/// A service's key in memory.
class FakeServiceKey : public ServiceKey
{
public:
    QMap<QString, KeyValue> values;
    bool exists = true;

    std::unique_ptr<OpenKey> open() override { return exists ? std::make_unique<Open>(values) : nullptr; }

    bool write(const QVector<NamedNumber> &numbers) override
    {
        if (!exists)
            return false;
        for (const NamedNumber &number : numbers)
            values[number.name] = number.value;
        return true;
    }

private:
    class Open : public OpenKey
    {
    public:
        explicit Open(QMap<QString, KeyValue> values)
            : m_values(std::move(values))
        {}

        [[nodiscard]] std::optional<KeyValue> value(const QString &name) const override
        {
            const auto found = m_values.find(name);
            return found == m_values.end() ? std::nullopt : std::optional<KeyValue>(*found);
        }

    private:
        const QMap<QString, KeyValue> m_values;
    };
};
