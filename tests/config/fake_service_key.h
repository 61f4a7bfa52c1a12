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

    std::unique_ptr<OpenKey> open() override { return exists ? std::make_unique<Open>(*this) : nullptr; }

    bool write(const QVector<NamedNumber> &numbers) override
    {
        for (const NamedNumber &number : numbers)
            values[number.name] = number.value;
        return exists;
    }

private:
    struct Open : OpenKey
    {
        const QMap<QString, KeyValue> values;

        explicit Open(const FakeServiceKey &key)
            : values(key.values)
        {}

        [[nodiscard]] std::optional<KeyValue> value(const QString &name) const override
        {
            return values.contains(name) ? std::optional<KeyValue>(values[name]) : std::nullopt;
        }
    };
};
