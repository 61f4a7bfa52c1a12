// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/service_values.h"

#include "wire/service_key_table.h"

namespace {

const QString kPort = QStringLiteral("Port");
const QString kSmartPollInterval = QStringLiteral("SMARTPollInterval");
const QString kFreeSpacePollInterval = QStringLiteral("FreeSpacePollInterval");
const QString kImagePath = QStringLiteral("ImagePath");

constexpr qint64 kMillisecondsPerSecond = 1000;

/// A path is read into 2048 bytes of UTF-16, its terminating NUL among them; a longer one is not read.
constexpr int kMaxImagePathLength = 2048 / 2 - 1;

template <typename T>
std::optional<T> typedValue(const OpenKey &key, const QString &name)
{
    const std::optional<KeyValue> value = key.value(name);
    if (!value || !std::holds_alternative<T>(*value))
        return std::nullopt;
    return std::get<T>(*value);
}

void readInterval(const OpenKey &key, const QString &name, qint64 &milliseconds)
{
    const ServiceKeyRow &row = *findServiceKeyRow(name);
    const std::optional<quint32> seconds = typedValue<quint32>(key, name);
    if (seconds && *seconds >= row.lowest && *seconds <= row.highest)
        milliseconds = qint64(*seconds) * kMillisecondsPerSecond;
}

} // namespace

QString programDirectoryOf(const QString &imagePath)
{
    const QString path = imagePath.left(imagePath.indexOf(QChar(u'\0')));
    return path.chopped(qMin(path.size(), kProgramNameLength));
}

Result<void, AccessError> readServiceValues(ServiceKey &key, Settings &settings)
{
    const auto opened = key.open();
    if (!opened)
        return opened.failure();
    const OpenKey &values = **opened;
    if (const auto port = typedValue<quint32>(values, kPort))
        settings.port = *port;
    readInterval(values, kSmartPollInterval, settings.smartPollInterval);
    readInterval(values, kFreeSpacePollInterval, settings.freeSpacePollInterval);
    const auto imagePath = typedValue<QString>(values, kImagePath);
    if (imagePath && imagePath->size() <= kMaxImagePathLength)
        settings.programDirectory = programDirectoryOf(*imagePath);
    return {};
}

Result<void, AccessError> writeServiceValues(ServiceKey &key, const Settings &settings)
{
    return key.write({
        {kPort, settings.port},
        {kSmartPollInterval, quint32(settings.smartPollInterval / kMillisecondsPerSecond)},
        {kFreeSpacePollInterval, quint32(settings.freeSpacePollInterval / kMillisecondsPerSecond)},
    });
}
