// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/systemd_unit.h"

#include "platform/linux/linux_error.h"
#include "platform/linux/unit_template.h"
#include "platform/program_name.h"
#include "platform/whole_file.h"

#include <QFile>
#include <QProcess>

#include <cerrno>

namespace systemd_unit {

namespace {

QString unitName()
{
    return QLatin1String(kProgramName) + QStringLiteral(".service");
}

QString unitPath()
{
    return QStringLiteral("/etc/systemd/system/") + unitName();
}

/// Returns whether a package has installed a unit.
bool isPackaged()
{
    return QFile::exists(QStringLiteral("/lib/systemd/system/") + unitName()) ||
           QFile::exists(QStringLiteral("/usr/lib/systemd/system/") + unitName());
}

/// Formats a path as one word of a command line in a unit: quoted, without specifiers and variables.
QByteArray quoted(const QString &path)
{
    QByteArray word = QFile::encodeName(path);
    word.replace('\\', "\\\\").replace('"', "\\\"").replace('%', "%%").replace('$', "$$");
    return '"' + word + '"';
}

/// Returns a text as one line without specifiers.
QByteArray oneLine(const QString &text)
{
    return text.simplified().toUtf8().replace('%', "%%");
}

ServiceOutcome systemctl(const QStringList &arguments)
{
    constexpr int kTimeout = 60000; // milliseconds
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("systemctl"), arguments);
    if (!process.waitForStarted(kTimeout))
        return failureOf(ENOENT);
    if (!process.waitForFinished(kTimeout))
        return failureOf(ETIMEDOUT);
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return {};
    return {system_error::kGenFailure, QString::fromLocal8Bit(process.readAll()).simplified()};
}

ServiceOutcome writeUnit(const QByteArray &contents)
{
    if (const auto written = whole_file::replace(unitPath(), contents); !written)
        return {system_error::kAccessDenied, written.failure().text};
    return {};
}

} // namespace

QByteArray text(const ServiceDefinition &service, const QString &account)
{
    // StateDirectory assigns the default home directory to the service's account.
    QByteArray accountLines;
    if (!account.isEmpty()) {
        accountLines = "User=" + oneLine(account) +
                       "\nSupplementaryGroups=disk\nAmbientCapabilities=CAP_SYS_RAWIO CAP_NET_BIND_SERVICE\n";
    }
    return QByteArray(kUnitTemplate)
        .replace("@DESCRIPTION@", oneLine(service.description))
        .replace("@COMMAND_LINE@", quoted(service.programPath))
        .replace("@ACCOUNT@", accountLines);
}

ServiceOutcome install(const ServiceDefinition &service, const QString &account)
{
    ServiceOutcome outcome;
    if (!account.isEmpty() || !isPackaged())
        outcome = writeUnit(text(service, account));
    if (outcome.ok())
        outcome = systemctl({QStringLiteral("daemon-reload")});
    if (outcome.ok())
        outcome = systemctl({QStringLiteral("enable"), unitName()});
    if (!outcome.ok())
        QFile::remove(unitPath());
    return outcome;
}

ServiceOutcome remove()
{
    ServiceOutcome outcome = systemctl({QStringLiteral("disable"), unitName()});
    // If -install wrote no unit, a package's unit may remain, which no longer starts automatically.
    if (!QFile::exists(unitPath()))
        return {};
    if (!outcome.ok())
        return outcome;
    if (!QFile::remove(unitPath()))
        return failureOf(errno);
    return systemctl({QStringLiteral("daemon-reload")});
}

ServiceOutcome start()
{
    return systemctl({QStringLiteral("start"), unitName()});
}

} // namespace systemd_unit
