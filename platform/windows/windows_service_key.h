// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_key.h"

/// The service's own key in the registry, which the service manager makes when the service is installed.
class WindowsServiceKey : public ServiceKey
{
public:
    Result<std::unique_ptr<OpenKey>, AccessError> open() override;
    Result<void, AccessError> write(const QVector<NamedNumber> &values) override;
};
