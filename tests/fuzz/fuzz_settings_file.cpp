// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings_file.h"

#include "fuzz/fuzz_input.h"

#include <QStringList>

#include <algorithm>

namespace {

const QDateTime kNow(QDate(2026, 11, 15), QTime(12, 0));

DeviceList twoDrives()
{
    DeviceList devices(2);
    devices[1].capacity = 1000204886016;
    return devices;
}

/// What a service that starts with `file` writes at its end.
QByteArray rewritten(const QByteArray &file)
{
    Settings settings;
    readSettingsLines(file, settings);
    require(settings.cTemp > 0 && settings.cTemp < 100 && settings.wTemp > 0 && settings.wTemp < 100);
    require(settings.smtpPort > 0 && settings.smtpPort < 100000);
    DeviceList devices = twoDrives();
    readDriveState(file, devices, kNow);
    require(devices.size() == 2);
    return settingsFileText(settings, devices, [] { return 17; });
}

QByteArray scrambled(const QByteArray &lines)
{
    QByteArray file;
    for (const QByteArray &line : lines.split('\n'))
        file += scramble(QString::fromUtf8(line), 42) + '\n';
    return file;
}

/// A value may hold what looks like a key, which the next reading takes for one.
bool hasOneKeyALine(const QByteArray &file)
{
    const QList<QByteArray> lines = file.split('\n');
    return std::all_of(lines.begin(), lines.end(),
                       [](const QByteArray &line) { return unscramble(line).count(u'=') <= 1; });
}

} // namespace

/// The bytes as a file, and as the lines of one before they are scrambled. What a service writes, the next
/// one reads and writes the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    (void)rewritten(bytes);
    const QByteArray file = rewritten(scrambled(bytes));
    require(!hasOneKeyALine(file) || rewritten(file) == file);
    return 0;
}
