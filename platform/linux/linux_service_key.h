// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_key.h"

/// The service's key as a JSON file: a number is a REG_DWORD, a string a REG_SZ.
class LinuxServiceKey : public ServiceKey
{
public:
    explicit LinuxServiceKey(QString path);

    std::unique_ptr<OpenKey> open() override;
    bool write(const QVector<NamedNumber> &values) override;

    /// Makes the key, or replaces it, with the image path as its only value.
    [[nodiscard]] bool create(const QString &imagePath);

private:
    QString m_path;
};
