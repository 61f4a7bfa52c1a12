// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/metrics/attribute_names.h"
#include "web/metrics/device_label.h"
#include "web/metrics/families.h"

#include <QDateTime>
#include <QJsonArray>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace web::metrics {

namespace {

using client::Attribute;
using client::Drive;

constexpr quint32 kPowerCycles = 12;

/// The data of one service with the labels of its drives. Shared by all families of a response, so that it
/// stays valid while they are sent.
struct Source
{
    std::shared_ptr<const ServiceData> data;
    QVector<QByteArray> labels; ///< device="…" of each drive
};

using SharedSource = std::shared_ptr<const Source>;
using WriteDrive = std::function<void(SampleWriter &, const Source &, int drive)>;

/// Returns a family whose parts are the drives.
Family perDrive(const SharedSource &source, const char *name, Type type, const char *help,
                const WriteDrive &write)
{
    Family family{name, type, help, {}};
    for (int i = 0; i < source->data->drives.size(); ++i)
        family.parts.append([source, write, i](SampleWriter &writer) { write(writer, *source, i); });
    return family;
}

/// Returns a family with one gauge a drive; `value` returns nullopt where it is not known.
template <typename Value>
Family gauge(const SharedSource &source, const char *name, const char *help, Value value,
             Type type = Type::Gauge, const char *furtherLabels = "")
{
    return perDrive(source, name, type, help,
                    [value, furtherLabels](SampleWriter &writer, const Source &from, int i) {
                        if (const auto known = value(*from.data, i))
                            writer.add(from.labels.at(i) + furtherLabels, qint64(*known));
                    });
}

std::optional<qint64> known(bool isKnown, qint64 value)
{
    return isKnown ? std::optional<qint64>(value) : std::nullopt;
}

QByteArray identityLabels(const Source &source, int i)
{
    const Drive &drive = source.data->drives.at(i);
    return Labels(source.labels.at(i))
        .add("interface", QStringLiteral("sat"))
        .add("protocol", QStringLiteral("ATA"))
        .add("model_family", {})
        .add("model_name", drive.model)
        .add("serial_number", drive.serial)
        .add("firmware_version", drive.firmware)
        .add("ata_version", drive.ataVersion)
        .text();
}

/// Returns the health that the drive itself would report, derived from its attributes: a drive reports a
/// failure when a pre-failure attribute is at its threshold. A threshold of 0 is never reached.
std::optional<qint64> smartStatus(const ServiceData &data, int i)
{
    const QVector<Attribute> &attributes = data.attributes.at(i);
    if (data.drives.at(i).smartState != client::SmartState::Read)
        return std::nullopt;
    return qint64(std::none_of(attributes.cbegin(), attributes.cend(), [](const Attribute &attribute) {
        return attribute.isPrefailure && attribute.threshold > 0 && attribute.current <= attribute.threshold;
    }));
}

/// Returns the counter in seconds while its unit is known and its value can be true.
std::optional<qint64> powerOnSeconds(const PowerOnCounter &counter)
{
    constexpr qint64 kSecondsPerCount[] = {0, 3600, 60, 30, 1};
    return known(counter.hours().has_value(), counter.raw * kSecondsPerCount[int(counter.unit)]);
}

std::optional<qint64> powerCycles(const ServiceData &data, int i)
{
    for (const Attribute &attribute : data.attributes.at(i)) {
        if (attribute.id == kPowerCycles)
            return attribute.raw;
    }
    return std::nullopt;
}

void writeAttributes(SampleWriter &writer, const Source &source, int i)
{
    QSet<quint32> written; // a drive may report one attribute twice
    for (const Attribute &attribute : source.data->attributes.at(i)) {
        if (written.contains(attribute.id))
            continue;
        written.insert(attribute.id);
        const QByteArray labels = Labels(source.labels.at(i))
                                      .add("attribute_id", QString::number(attribute.id))
                                      .add("attribute_name", attributeName(attribute.id))
                                      .add("attribute_flags_short", shortFlags(attribute.flags))
                                      .add("attribute_flags_long", longFlags(attribute.flags))
                                      .text();
        writer.add(labels + ",attribute_value_type=\"value\"", qint64(attribute.current));
        writer.add(labels + ",attribute_value_type=\"worst\"", qint64(attribute.worst));
        writer.add(labels + ",attribute_value_type=\"thresh\"", qint64(attribute.threshold));
        writer.add(labels + ",attribute_value_type=\"raw\"", attribute.raw);
    }
}

const client::ScanStatus *scanOf(const ServiceData &data, int i)
{
    for (const client::ScanStatus &scan : data.scans) {
        if (scan.drive == i)
            return scan.hasRun() ? &scan : nullptr;
    }
    return nullptr;
}

QVector<Family> exporterFamilies(const SharedSource &source)
{
    const auto version = [source](SampleWriter &writer) {
        writer.add(Labels().add("smartctl_version", source->data->greeting.version).text(), qint64(1));
    };
    const auto devices = [source](SampleWriter &writer) {
        writer.add({}, qint64(source->data->drives.size()));
    };
    return {
        {"smartctl_version", Type::Gauge, "Version of the service that reads the drives.", {version}},
        {"smartctl_devices", Type::Gauge, "Number of drives.", {devices}},
        perDrive(source, "smartctl_device", Type::Gauge, "Identity of the drive.",
                 [](SampleWriter &writer, const Source &from, int i) {
                     writer.add(identityLabels(from, i), qint64(1));
                 }),
        gauge(source, "smartctl_device_capacity_bytes", "Capacity of the drive.",
              [](const ServiceData &data, int i) {
                  const auto bytes = qint64(data.drives.at(i).capacity);
                  return known(bytes > 0, bytes);
              }),
        gauge(
            source, "smartctl_device_block_size", "Bytes of a sector.",
            [](const ServiceData &data, int i) {
                const auto bytes = qint64(data.drives.at(i).bytesPerSector);
                return known(bytes > 0, bytes);
            },
            Type::Gauge, ",blocks_type=\"logical\""),
        gauge(source, "smartctl_device_smart_status",
              "1 while no pre-failure attribute is at its threshold (derived from the attributes).",
              smartStatus),
        gauge(
            source, "smartctl_device_temperature", "Temperature in degrees Celsius.",
            [](const ServiceData &data, int i) { return data.drives.at(i).temperature; }, Type::Gauge,
            ",temperature_type=\"current\""),
        gauge(
            source, "smartctl_device_power_on_seconds", "Power-on time.",
            [](const ServiceData &data, int i) { return powerOnSeconds(data.drives.at(i).powerOn); },
            Type::Unknown),
        gauge(source, "smartctl_device_power_cycle_count", "Times that the drive was switched on.",
              powerCycles, Type::Unknown),
        perDrive(source, "smartctl_device_attribute", Type::Gauge, "S.M.A.R.T. attributes of the drive.",
                 writeAttributes),
    };
}

QVector<Family> ratingFamilies(const SharedSource &source)
{
    return {
        gauge(source, "halvex_drive_rated", "Whether the service rates the drive.",
              [](const ServiceData &data, int i) { return known(true, data.drives.at(i).isRated()); }),
        gauge(source, "halvex_drive_level", "Rating of the drive: 1 fine, 2 warning, 3 critical.",
              [](const ServiceData &data, int i) {
                  const auto level = data.drives.at(i).level();
                  return known(level != client::Level::NotRated, qint64(level));
              }),
        gauge(source, "halvex_drive_health_ratio", "Health of the drive, from 0 to 1.",
              [](const ServiceData &data, int i) {
                  const Drive &drive = data.drives.at(i);
                  return drive.isRated() ? std::optional<double>(drive.health / 100.0) : std::nullopt;
              }),
        gauge(source, "halvex_scan_running", "Whether a surface scan of the drive is running.",
              [](const ServiceData &data, int i) {
                  const auto *scan = scanOf(data, i);
                  return known(true, scan && scan->state == client::ScanState::Running);
              }),
        gauge(source, "halvex_scan_progress_ratio", "Progress of the latest surface scan, from 0 to 1.",
              [](const ServiceData &data, int i) {
                  const auto *scan = scanOf(data, i);
                  return scan ? std::optional<double>(scan->percent / 100.0) : std::nullopt;
              }),
        gauge(source, "halvex_scan_bad_ranges", "Unreadable ranges that the latest surface scan found.",
              [](const ServiceData &data, int i) {
                  const auto *scan = scanOf(data, i);
                  return known(scan, scan ? scan->badRanges.size() : 0);
              }),
    };
}

Family volumeFamily(const SharedSource &source, const char *name, const char *help,
                    quint64 client::Volume::*bytes)
{
    return {name, Type::Gauge, help, {[source, bytes](SampleWriter &writer) {
                QSet<QByteArray> written;
                for (const client::Volume &volume : source->data->volumes) {
                    const QByteArray labels = Labels(source->labels.value(volume.drive))
                                                  .add("volume", volume.root)
                                                  .add("label", volume.label)
                                                  .add("file_system", volume.fileSystem)
                                                  .text();
                    if (written.contains(labels) || volume.drive >= source->labels.size())
                        continue;
                    written.insert(labels);
                    writer.add(labels, qint64(volume.*bytes));
                }
            }}};
}

/// Counts the findings of each drive, kind and severity.
void writeFindings(SampleWriter &writer, const Source &source)
{
    QMap<QByteArray, qint64> counts;
    const QJsonArray findings = source.data->alerts->value(QStringLiteral("findings")).toArray();
    for (const QJsonValue &item : findings) {
        const auto text = [&item](const char *key) { return item[QLatin1String(key)].toString(); };
        const int number = item[QLatin1String("number")].toInt(-1);
        const Labels device(source.labels.value(number));
        Labels labels = number >= 0 && number < source.labels.size()
                            ? device
                            : Labels().add("device", deviceName(text("model"), text("serial")));
        ++counts[labels.add("kind", text("kind")).add("severity", text("severity")).text()];
    }
    for (auto count = counts.cbegin(); count != counts.cend(); ++count)
        writer.add(count.key(), count.value());
}

/// Calls `write` with the labels, last success and last failure of each channel that is on.
template <typename Write>
void forEachChannel(const Source &source, Write write)
{
    QSet<QString> written;
    const QJsonArray channels = source.data->alerts->value(QStringLiteral("channels")).toArray();
    for (const QJsonValue &item : channels) {
        const QString name = item[QLatin1String("name")].toString();
        if (!item[QLatin1String("on")].toBool() || written.contains(name))
            continue;
        written.insert(name);
        const auto time = [&item](const char *key) {
            return QDateTime::fromString(item[QLatin1String(key)].toString(), Qt::ISODate);
        };
        write(Labels().add("channel", name).text(), time("lastSuccess"), time("lastFailure"));
    }
}

QVector<Family> alertFamilies(const SharedSource &source)
{
    if (!source->data->alerts)
        return {};
    const auto lastSuccess = [source](SampleWriter &writer) {
        forEachChannel(*source, [&](const QByteArray &labels, const QDateTime &success, const QDateTime &) {
            if (success.isValid())
                writer.add(labels, success.toSecsSinceEpoch());
        });
    };
    const auto failing = [source](SampleWriter &writer) {
        forEachChannel(
            *source, [&](const QByteArray &labels, const QDateTime &success, const QDateTime &failure) {
                writer.add(labels, qint64(failure.isValid() && (!success.isValid() || failure > success)));
            });
    };
    return {
        {"halvex_findings",
         Type::Gauge,
         "Findings of the service's alert policy.",
         {[source](SampleWriter &writer) { writeFindings(writer, *source); }}},
        {"halvex_delivery_last_success_timestamp_seconds",
         Type::Gauge,
         "When an alert was last delivered by this channel.",
         {lastSuccess}},
        {"halvex_delivery_failing",
         Type::Gauge,
         "Whether the last delivery by this channel failed.",
         {failing}},
    };
}

} // namespace

QVector<Family> driveFamilies(const std::shared_ptr<const ServiceSnapshot> &service)
{
    if (!service->data || service->isStale())
        return {};
    auto source = std::make_shared<Source>();
    source->data = service->data;
    for (const QString &name : deviceNames(service->data->drives))
        source->labels.append(Labels().add("device", name).text());
    return exporterFamilies(source) + ratingFamilies(source) +
           QVector<Family>{
               volumeFamily(source, "halvex_volume_size_bytes", "Size of the volume.",
                            &client::Volume::totalBytes),
               volumeFamily(source, "halvex_volume_free_bytes", "Free space of the volume.",
                            &client::Volume::freeBytes),
           } +
           alertFamilies(source);
}

} // namespace web::metrics
