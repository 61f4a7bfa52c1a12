// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_key.h"

/// The service's own key in the registry, which the service manager makes when the service is installed.
class WindowsServiceKey : public ServiceKey
{
public:
    std::unique_ptr<OpenKey> open() override;
    bool write(const QVector<NamedNumber> &values) override;
};
