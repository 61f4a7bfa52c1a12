// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/metrics/families.h"

namespace web::metrics {

namespace {

using Write = std::function<void(SampleWriter &, const QByteArray &labels, const ServiceSnapshot &)>;

/// Returns a family with the samples that `write` makes of each service.
Family perService(const Services &services, const char *name, Type type, const char *help, const Write &write)
{
    return {name, type, help, {[services, write](SampleWriter &writer) {
                for (const auto &service : services)
                    write(writer, Labels().add("service", service->name).text(), *service);
            }}};
}

bool isCurrent(const ServiceSnapshot &service)
{
    return service.data && !service.isStale();
}

QByteArray infoLabels(const ServiceSnapshot &service)
{
    return Labels()
        .add("service", service.name)
        .add("version", service.data->greeting.version)
        .add("host", service.data->greeting.hostName)
        .text();
}

} // namespace

QVector<Family> pollFamilies(const Services &services)
{
    return {
        perService(services, "halvex_up", Type::Gauge, "Whether the service answered its last poll.",
                   [](SampleWriter &writer, const QByteArray &labels, const ServiceSnapshot &service) {
                       writer.add(labels, qint64(service.data && service.missedPolls == 0));
                   }),
        perService(services, "halvex_service_info", Type::Gauge, "Version and host name of the service.",
                   [](SampleWriter &writer, const QByteArray &, const ServiceSnapshot &service) {
                       if (service.data)
                           writer.add(infoLabels(service), qint64(1));
                   }),
        perService(services, "halvex_alert_level", Type::Gauge,
                   "Worst rating of the service's drives: 1 fine, 2 warning, 3 critical.",
                   [](SampleWriter &writer, const QByteArray &labels, const ServiceSnapshot &service) {
                       if (isCurrent(service) && service.data->greeting.level != client::Level::NotRated)
                           writer.add(labels, qint64(service.data->greeting.level));
                   }),
        perService(services, "halvex_poll_duration_seconds", Type::Gauge, "How long the last poll took.",
                   [](SampleWriter &writer, const QByteArray &labels, const ServiceSnapshot &service) {
                       if (service.answeredPolls + service.failedPolls > 0)
                           writer.add(labels, service.pollSeconds);
                   }),
        perService(services, "halvex_polls_total", Type::Counter, "Polls of the service by their outcome.",
                   [](SampleWriter &writer, const QByteArray &labels, const ServiceSnapshot &service) {
                       writer.add(labels + ",outcome=\"answered\"", service.answeredPolls);
                       writer.add(labels + ",outcome=\"failed\"", service.failedPolls);
                   }),
        perService(services, "halvex_last_answer_timestamp_seconds", Type::Gauge,
                   "When the service last answered a poll.",
                   [](SampleWriter &writer, const QByteArray &labels, const ServiceSnapshot &service) {
                       if (service.lastAnswer.isValid())
                           writer.add(labels, double(service.lastAnswer.toMSecsSinceEpoch()) / 1000);
                   }),
    };
}

QVector<Family> processFamilies(const QString &version, const ProcessFigures &figures)
{
    const auto single = [](const char *name, Type type, const char *help, double value) {
        return Family{name, type, help, {[value](SampleWriter &writer) {
                          if (value >= 0)
                              writer.add({}, value);
                      }}};
    };
    const QByteArray labels = Labels().add("version", version).text();
    return {
        {"halvex_web_build_info", Type::Gauge, "Version of halvex-web.", {[labels](SampleWriter &writer) {
             writer.add(labels, qint64(1));
         }}},
        single("process_cpu_seconds_total", Type::Counter, "Processor time of halvex-web.",
               figures.cpuSeconds),
        single("process_start_time_seconds", Type::Gauge, "When halvex-web started.", figures.startTime),
        single("process_resident_memory_bytes", Type::Gauge, "Resident memory of halvex-web.",
               double(figures.residentBytes)),
        single("process_virtual_memory_bytes", Type::Gauge, "Virtual memory of halvex-web.",
               double(figures.virtualBytes)),
        single("process_open_fds", Type::Gauge, "Open file descriptors of halvex-web.",
               double(figures.openDescriptors)),
        single("process_max_fds", Type::Gauge, "Largest number of file descriptors of halvex-web.",
               double(figures.mostDescriptors)),
    };
}

} // namespace web::metrics
