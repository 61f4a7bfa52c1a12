// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/endpoint.h"
#include "console/client/failure.h"
#include "console/client/greeting.h"
#include "console/client/inventory.h"

#include <QVector>

#include <chrono>
#include <optional>

namespace client {

/// What one of several services answered; the failure holds when there is no greeting or no list.
struct SurveyAnswer
{
    Endpoint endpoint;
    std::optional<Greeting> greeting;
    std::optional<QVector<Drive>> drives;
    Failure failure;

    [[nodiscard]] bool isComplete() const { return greeting && drives; }
};

/// Asks all services at the same time, each with `timeout` for each of its two answers, so that all is done
/// within twice that. The answers are in the order of `endpoints`.
[[nodiscard]] QVector<SurveyAnswer> askAll(const QVector<Endpoint> &endpoints,
                                           std::chrono::milliseconds timeout);

} // namespace client
