// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings_store.h"

#include "config/service_values.h"
#include "config/settings_file.h"
#include "platform/whole_file.h"

#include <QDateTime>
#include <QDir>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcConfig, "halvex.config", QtWarningMsg)

/// Empty when the file cannot be read. A path that is not absolute would mean another file wherever the
/// program happens to be started, so it names none.
QByteArray readFile(const QString &path)
{
    qCDebug(lcConfig) << "Reading from" << path;
    QFile file(path);
    if (!QDir::isAbsolutePath(path) || !file.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = file.read(qMin(file.size(), SettingsStore::kMaxFileSize));
    qCDebug(lcConfig) << "Reading finished";
    return bytes;
}

void writeSettingsFile(const QString &path, const QByteArray &bytes)
{
    qCDebug(lcConfig) << "Writing" << path;
    if (!QDir::isAbsolutePath(path))
        return;
    // The mail account's password is in there, and scrambling hides it from nobody.
    const QString reason = replaceFile(path, bytes, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    if (reason.isEmpty())
        qCDebug(lcConfig) << "Writing finished";
    else
        qCWarning(lcConfig) << "cannot write" << path << reason;
}

} // namespace

SettingsStore::SettingsStore(Settings &settings, ServiceKey &key, OffsetSource offsets)
    : m_settings(settings)
    , m_key(key)
    , m_offsets(std::move(offsets))
{}

int SettingsStore::readSettings()
{
    if (!readServiceValues(m_key, m_settings))
        return kNoKey;
    readSettingsLines(readFile(settingsFilePath(m_settings.programDirectory)), m_settings);
    return 0;
}

void SettingsStore::writeSettings(const DeviceList &devices)
{
    if (!writeServiceValues(m_key, m_settings))
        qCDebug(lcConfig) << "the service's key takes no values";
    writeSettingsFile(settingsFilePath(m_settings.programDirectory),
                      settingsFileText(m_settings, devices, m_offsets));
}

void SettingsStore::readDriveState(DeviceList &devices) const
{
    ::readDriveState(readFile(settingsFilePath(m_settings.programDirectory)), devices,
                     QDateTime::currentDateTime());
}

QString settingsFilePath(const QString &programDirectory)
{
    return QString(programDirectory).replace(u'\\', u'/') + QStringLiteral("HalvexService.ini");
}
