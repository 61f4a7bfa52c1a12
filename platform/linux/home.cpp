// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/home.h"

#include <QDir>
#include <QFile>

#include "platform/program_name.h"
#include "wire/local_service_name.h"

namespace home {

QString directory()
{
    const QString wanted = QFile::decodeName(qgetenv("HALVEX_HOME"));
    if (wanted.isEmpty())
        return QString::fromLatin1(kDefaultDirectory);
    return QDir::cleanPath(QDir::current().absoluteFilePath(wanted));
}

QString localSocketName()
{
    const QString name = QLatin1String(kLocalServiceName);
    return qEnvironmentVariableIsEmpty("HALVEX_HOME") ? name : directory() + QLatin1Char('/') + name;
}

QString serviceKeyPath(const QString &home)
{
    return home + QStringLiteral("/service-key.json");
}

QString controlSocketPath(const QString &home)
{
    return home + QStringLiteral("/control");
}

QString lockPath(const QString &home)
{
    return home + QStringLiteral("/lock");
}

QString driveNumbersPath(const QString &home)
{
    return home + QStringLiteral("/drive-numbers.json");
}

QString imagePath(const QString &home)
{
    return home + QLatin1Char('/') + QLatin1String(kProgramName);
}

} // namespace home
