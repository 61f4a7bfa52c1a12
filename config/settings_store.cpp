// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings_store.h"

#include "config/logging.h"
#include "config/service_values.h"
#include "config/settings_file.h"
#include "platform/directory_path.h"
#include "platform/whole_file.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <limits>
#include <utility>

namespace {

/// Enough for the bad ranges of all drives: two sector numbers and two separators each. Scrambling makes
/// three bytes eight.
constexpr qint64 kMaxDrives = 99;
constexpr qint64 kMaxRangeLength = 2 * std::numeric_limits<quint64>::digits10 + 4;
constexpr qint64 kMaxFileSize = kMaxDrives * (kMaxBadRanges * kMaxRangeLength + 1024) / 3 * 8;
static_assert(kMaxFileSize < std::numeric_limits<int>::max(), "the file is read into one QByteArray");

QString pathIsRelative(const QString &path)
{
    return path + QStringLiteral(": not an absolute path");
}

void logChange(const QString &text)
{
    if (!text.isEmpty())
        qCWarning(lcConfig).noquote() << text;
}

template <typename Outcome>
void logChange(FaultState &state, const Outcome &outcome, const QString &reason)
{
    logChange(outcome ? state.succeeded() : state.failed(reason, QDateTime::currentDateTime()));
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
    if (const auto file = readFile())
        readSettingsLines(*file, m_settings);
    return 0;
}

bool SettingsStore::writeSettings(const DeviceList &devices)
{
    m_devices = devices;
    const bool keyIsStored = storeKey();
    const auto written = writeFile(settingsFileText(m_settings, devices, m_offsets));
    logChange(m_writing, written, written ? QString() : written.failure().text);
    return keyIsStored && written;
}

void SettingsStore::readDriveState(DeviceList &devices)
{
    const auto file = readFile();
    const bool isUnknown = !file && file.failure().kind == AccessError::Kind::Failed;
    ::readDriveState(file ? *file : QByteArray(), devices, QDateTime::currentDateTime());
    if (isUnknown)
        copyDriveState(m_devices, devices);
    m_devices = devices;
}

/// A path that is not absolute would name another file wherever the program is started.
Result<QByteArray, AccessError> SettingsStore::readFile()
{
    const QString path = settingsFilePath(m_settings.programDirectory);
    qCDebug(lcConfig) << "Reading from" << path;
    if (!QDir::isAbsolutePath(path)) {
        logChange(m_reading.failed(pathIsRelative(path), QDateTime::currentDateTime()));
        return AccessError{AccessError::Kind::Missing, {}};
    }
    auto bytes = whole_file::read(path, kMaxFileSize);
    const bool failed = !bytes && bytes.failure().kind == AccessError::Kind::Failed;
    m_fileIsUnreadable = m_fileIsUnreadable || failed;
    logChange(m_reading, !failed, path + QStringLiteral(": ") + bytes.failure().text);
    qCDebug(lcConfig) << "Reading finished";
    return bytes;
}

Result<void> SettingsStore::writeFile(const QByteArray &bytes)
{
    const QString path = settingsFilePath(m_settings.programDirectory);
    qCDebug(lcConfig) << "Writing" << path;
    if (!QDir::isAbsolutePath(path))
        return Error{pathIsRelative(path)};
    if (const auto kept = keepUnreadableFile(path); !kept)
        return kept;
    // It holds the mail account's password, and scrambling is not encryption.
    const auto written = whole_file::replace(path, bytes, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    qCDebug(lcConfig) << "Writing finished";
    return written ? written : Error{path + QStringLiteral(": ") + written.failure().text};
}

/// Sets the file aside if it could not be read: it may be the only copy of the administrator's settings.
Result<void> SettingsStore::keepUnreadableFile(const QString &path)
{
    if (m_fileIsUnreadable && QFileInfo::exists(path)) {
        const auto kept = whole_file::setAside(path, QDateTime::currentDateTime());
        if (!kept)
            return Error{path + QStringLiteral(": cannot be read and cannot be set aside: ") +
                         kept.failure().text};
        qCWarning(lcConfig).noquote() << "The unreadable settings file was kept as" << *kept;
    }
    m_fileIsUnreadable = false;
    return {};
}

/// A service that is not installed has no key, which is not a fault.
bool SettingsStore::storeKey()
{
    const auto stored = writeServiceValues(m_key, m_settings);
    const bool failed = !stored && stored.failure().kind == AccessError::Kind::Failed;
    logChange(m_keyWriting, !failed, failed ? stored.failure().text : QString());
    return !failed;
}

QString settingsFilePath(const QString &programDirectory)
{
    return pathIn(programDirectory, QStringLiteral("HalvexService.ini"));
}
