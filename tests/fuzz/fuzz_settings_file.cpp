// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings_file.h"

#include "fuzz/fuzz_input.h"

#include <QList>

#include <algorithm>

namespace {

/// Returns the file that a service writes at its end after starting with `file`.
QByteArray rewritten(const QByteArray &file)
{
    Settings settings;
    readSettingsLines(file, settings);
    require(settings.cTemp > 0 && settings.cTemp < 100 && settings.wTemp > 0 && settings.wTemp < 100);
    require(settings.smtpPort > 0 && settings.smtpPort < 100000);
    DeviceList devices(2);
    devices[1].capacity = 1000204886016;
    readDriveState(file, devices, QDateTime(QDate(2026, 11, 15), QTime(12, 0)));
    require(devices.size() == 2);
    return settingsFileText(settings, devices, [] { return 17; });
}

/// Returns whether each line has one key at most: the next reading would use a key inside a value.
bool hasOneKeyALine(const QByteArray &file)
{
    const QList<QByteArray> lines = file.split('\n');
    return std::all_of(lines.begin(), lines.end(),
                       [](const QByteArray &line) { return unscramble(line).count(u'=') <= 1; });
}

} // namespace

/// Input: a file, and the lines of one before they are scrambled. A service that reads what another one wrote
/// writes the same.
void fuzz(const QByteArray &bytes)
{
    (void)rewritten(bytes);
    QByteArray scrambled;
    for (const QByteArray &line : bytes.split('\n'))
        scrambled += scramble(QString::fromUtf8(line), 42) + '\n';
    const QByteArray file = rewritten(scrambled);
    require(!hasOneKeyALine(file) || rewritten(file) == file);
}
