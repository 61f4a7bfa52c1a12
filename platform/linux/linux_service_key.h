// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_key.h"

/// The service's key as a JSON file: a number is a REG_DWORD, a string a REG_SZ.
class LinuxServiceKey : public ServiceKey
{
public:
    explicit LinuxServiceKey(QString path);

    Result<std::unique_ptr<OpenKey>, AccessError> open() override;
    Result<void, AccessError> write(const QVector<NamedNumber> &values) override;

    /// Creates the key with the image path, or sets the image path in an existing key and keeps its other
    /// values. Fails, with nothing changed, if a file exists that is not a key.
    Result<void> create(const QString &imagePath);

private:
    QString m_path;
};
