// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/local_socket_lock.h"

#include <QCryptographicHash>
#include <QDir>

namespace client {

namespace {

/// Returns a path in the folder for temporary files, which every user who may connect can write to.
QString lockName(const QString &localName)
{
    const QByteArray name = QDir::cleanPath(localName).toUtf8();
    const QByteArray digest = QCryptographicHash::hash(name, QCryptographicHash::Sha256).toHex().left(16);
    return QDir::temp().filePath(QStringLiteral("halvexctl-%1.lock").arg(QString::fromLatin1(digest)));
}

} // namespace

LocalSocketLock::LocalSocketLock(const QString &localName)
    : m_lock(lockName(localName))
{}

bool LocalSocketLock::tryLock()
{
    return m_lock.tryLock(0) || m_lock.error() != QLockFile::LockFailedError;
}

void LocalSocketLock::unlock()
{
    m_lock.unlock();
}

} // namespace client
