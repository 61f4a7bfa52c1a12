// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/metrics/metric_family.h"
#include "web/snapshot.h"

namespace web::metrics {

/// The resources of this process; a value below 0 is not known.
struct ProcessFigures
{
    double cpuSeconds = -1;
    double startTime = -1; ///< seconds since 1970
    qint64 residentBytes = -1;
    qint64 virtualBytes = -1;
    qint64 openDescriptors = -1;
    qint64 mostDescriptors = -1;
};

using Services = QVector<std::shared_ptr<const ServiceSnapshot>>;

/// Returns how the polls of `services` went, and the state of each service.
[[nodiscard]] QVector<Family> pollFamilies(const Services &services);

/// Returns the drives of `service`, its volumes, scans, findings and deliveries. Empty for a service without
/// data, or whose data are too old to count.
[[nodiscard]] QVector<Family> driveFamilies(const std::shared_ptr<const ServiceSnapshot> &service);

/// Returns the families of this program itself.
[[nodiscard]] QVector<Family> processFamilies(const QString &version, const ProcessFigures &figures);

} // namespace web::metrics
