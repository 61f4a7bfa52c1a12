// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/connection.h"

#include "client/link.h"
#include "wire/scrambling.h"

#include <QCryptographicHash>
#include <QDir>
#include <QRandomGenerator>

#include <utility>

namespace client {

namespace {

constexpr std::chrono::milliseconds kLockRetryInterval{20};
constexpr int kOffsets = 100;
constexpr int kQuotedBytes = 60;

/// Returns a path in the folder for temporary files, which every user who may connect can write to.
QString lockName(const QString &localName)
{
    const QByteArray name = QDir::cleanPath(localName).toUtf8();
    const QByteArray digest = QCryptographicHash::hash(name, QCryptographicHash::Sha256).toHex().left(16);
    return QDir::temp().filePath(QStringLiteral("halvexctl-%1.lock").arg(QString::fromLatin1(digest)));
}

/// Returns false while another console holds the lock; a lock file that cannot be created does not lock.
bool tryLock(QLockFile &lock)
{
    return lock.tryLock(0) || lock.error() != QLockFile::LockFailedError;
}

QByteArray wireLine(const QString &request)
{
    return sendReply(request, [] { return int(QRandomGenerator::global()->bounded(kOffsets)); });
}

QString quoted(const QByteArray &bytes)
{
    return visible(QString::fromLatin1(bytes.left(kQuotedBytes + 1)), kQuotedBytes);
}

} // namespace

Connection::Connection(Endpoint endpoint, QObject *parent)
    : QObject(parent)
    , m_endpoint(std::move(endpoint))
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &Connection::expire);
    if (m_endpoint.isLocal())
        m_lock = std::make_unique<QLockFile>(lockName(m_endpoint.localName));
    m_lockRetry.setInterval(kLockRetryInterval);
    connect(&m_lockRetry, &QTimer::timeout, this, &Connection::connectWhenUnlocked);
}

void Connection::open(std::chrono::milliseconds deadline)
{
    close();
    m_link = makeLink(m_endpoint, this);
    connect(m_link, &Link::readable, this, &Connection::readAvailable);
    connect(m_link, &Link::ended, this, &Connection::handleError);
    m_isAwaiting = true;
    m_deadline.start(deadline);
    connectWhenUnlocked();
}

void Connection::connectWhenUnlocked()
{
    const bool mayWait = m_deadline.remainingTime() > m_deadline.interval() / 2;
    if (m_lock && !tryLock(*m_lock) && mayWait) {
        m_lockRetry.start();
        return;
    }
    m_lockRetry.stop();
    m_link->connectTo(m_endpoint);
}

void Connection::ask(const QString &request, std::chrono::milliseconds deadline)
{
    Q_ASSERT(!m_isAwaiting);
    m_isAwaiting = true;
    // A connection that has ended since is reported by the event loop, as one that ends now.
    m_deadline.start(m_link ? deadline : std::chrono::milliseconds(0));
    if (m_link)
        m_link->write(wireLine(request));
}

void Connection::sendWithoutReply(const QString &request, std::chrono::milliseconds deadline)
{
    if (!m_link)
        return;
    m_link->write(wireLine(request));
    m_link->flush(int(deadline.count()));
}

void Connection::close()
{
    m_deadline.stop();
    m_lockRetry.stop();
    m_isAwaiting = false;
    m_reader = LineReader();
    if (m_lock)
        m_lock->unlock();
    if (!m_link)
        return;
    m_link->disconnect(this);
    m_link->deleteLater(); // one of its signals may be the caller
    m_link = nullptr;
}

void Connection::readAvailable()
{
    if (!m_link)
        return;
    m_reader.append(m_link->readAll());
    const auto line = m_reader.takeLine();
    if (m_reader.isBroken()) {
        fail(FailureKind::NotUnderstood,
             QStringLiteral("it does not speak the protocol: \"%1\"").arg(quoted(m_reader.pending())));
        return;
    }
    if (!line)
        return;
    const auto text = plainText(*line);
    if (!text) {
        fail(FailureKind::NotUnderstood,
             QStringLiteral("its line cannot be decoded: \"%1\"").arg(quoted(*line)));
        return;
    }
    if (!m_isAwaiting || !m_reader.pending().isEmpty()) {
        fail(FailureKind::NotUnderstood, QStringLiteral("it sent a line without a request"));
        return;
    }
    m_isAwaiting = false;
    m_deadline.stop();
    Q_EMIT lineArrived(*text);
}

void Connection::handleError(bool isUnreachable, const QString &text)
{
    if (!m_link)
        return;
    if (isUnreachable) {
        fail(FailureKind::Unreachable, text);
        return;
    }
    const bool hasHalfLine = !m_reader.pending().isEmpty();
    fail(FailureKind::Closed, hasHalfLine ? QStringLiteral("it closed the connection in the middle of a line")
                                          : QStringLiteral("it closed the connection without an answer"));
}

void Connection::expire()
{
    if (!m_link)
        fail(FailureKind::Closed, QStringLiteral("the connection has ended"));
    else if (!m_link->isConnected())
        fail(FailureKind::TimedOut, QStringLiteral("no connection within the time allowed"));
    else if (m_reader.pending().isEmpty())
        fail(FailureKind::TimedOut, QStringLiteral("no answer within the time allowed"));
    else
        fail(FailureKind::TimedOut, QStringLiteral("only part of an answer within the time allowed"));
}

void Connection::fail(FailureKind kind, const QString &text)
{
    close();
    Q_EMIT failed(Failure{kind, text});
}

} // namespace client
