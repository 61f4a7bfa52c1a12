// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/conversation.h"
#include "web/configuration.h"
#include "wire/result.h"

#include <QByteArray>

namespace web {

/// Asks `service` for its whole temperature history and returns it as OpenMetrics. Runs an event loop until
/// the service has answered or its time is over.
[[nodiscard]] Result<QByteArray> exportHistory(const ServiceAddress &service);

} // namespace web
