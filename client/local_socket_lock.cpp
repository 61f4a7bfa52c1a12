// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/local_turn.h"

#include <QCryptographicHash>
#include <QDir>

namespace client {

namespace {

/// In the folder for temporary files: not everybody who may connect may write beside the socket.
QString lockName(const QString &localName)
{
    const QByteArray name = QDir::cleanPath(localName).toUtf8();
    const QByteArray digest = QCryptographicHash::hash(name, QCryptographicHash::Sha256).toHex().left(16);
    return QDir::temp().filePath(QStringLiteral("halvexctl-%1.lock").arg(QString::fromLatin1(digest)));
}

} // namespace

LocalTurn::LocalTurn(const QString &localName)
    : m_lock(lockName(localName))
{}

bool LocalTurn::take()
{
    return m_lock.tryLock(0) || m_lock.error() != QLockFile::LockFailedError;
}

void LocalTurn::give()
{
    m_lock.unlock();
}

} // namespace client
