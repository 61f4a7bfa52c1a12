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

    std::optional<AccessError> error; ///< returned by every access, if set

    Result<std::unique_ptr<OpenKey>, AccessError> open() override
    {
        if (error)
            return *error;
        return std::unique_ptr<OpenKey>(std::make_unique<Open>(*this));
    }

    Result<void, AccessError> write(const QVector<NamedNumber> &numbers) override
    {
        if (error)
            return *error;
        for (const NamedNumber &number : numbers)
            values[number.name] = number.value;
        return {};
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
        [[nodiscard]] QStringList names() const override { return values.keys(); }
    };
};
