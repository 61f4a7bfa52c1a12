// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/whole_file.h"

#include <QFileInfo>

namespace {

AccessError unreadable(const QString &text)
{
    return {AccessError::Kind::Failed, text};
}

Result<void> writeNew(const QString &path, const QByteArray &bytes, QFileDevice::Permissions permissions)
{
    QFile::remove(path); // from a process that was killed
    QFile file(path);
    if (const auto opened = regular_file::open(file, QIODevice::WriteOnly | QIODevice::NewOnly); !opened)
        return Error{opened.failure().text};
    // By name: on Windows QFile does not know the name of a file that it received opened.
    if (!QFile::setPermissions(path, permissions))
        return Error{QStringLiteral("the permissions cannot be set")};
    if (file.write(bytes) != bytes.size())
        return Error{file.errorString()};
    return regular_file::sync(file);
}

/// Returns the file that a symbolic link leads to, so that the link stays.
QString linkTarget(const QString &path)
{
    const QString target = QFileInfo(path).canonicalFilePath();
    return target.isEmpty() ? path : target;
}

QFileDevice::Permissions defaultPermissions(const QString &path)
{
    if (QFileInfo(path).isFile())
        return QFile::permissions(path);
    return QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
}

} // namespace

namespace whole_file {

Result<QByteArray, AccessError> read(const QString &path, qint64 maxSize)
{
    QFile file(path);
    if (const auto opened = regular_file::open(file, QIODevice::ReadOnly); !opened)
        return opened.failure();
    if (file.size() > maxSize)
        return unreadable(QStringLiteral("larger than %1 bytes").arg(maxSize));
    // QFile allocates the requested size, so the limit must not be requested.
    QByteArray bytes = file.read(file.size());
    if (file.error() != QFileDevice::NoError)
        return unreadable(file.errorString());
    return bytes;
}

Result<void> replace(const QString &path, const QByteArray &bytes, QFileDevice::Permissions permissions)
{
    const QString target = linkTarget(path);
    const QString newFile = target + QStringLiteral(".new");
    Result<void> done = writeNew(newFile, bytes, permissions ? permissions : defaultPermissions(target));
    if (done)
        done = regular_file::rename(newFile, target);
    if (!done)
        QFile::remove(newFile);
    return done;
}

Result<QString> setAside(const QString &path, const QDateTime &now)
{
    const QString name = path + QStringLiteral(".damaged-") + now.toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString freeName = name;
    for (int i = 2; QFileInfo::exists(freeName) || QFileInfo(freeName).isSymLink(); ++i)
        freeName = name + QLatin1Char('-') + QString::number(i);
    if (const auto renamed = regular_file::rename(path, freeName); !renamed)
        return renamed.failure();
    return freeName;
}

} // namespace whole_file
