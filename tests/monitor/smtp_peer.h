// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

/// A mail server that follows a script: one entry when a client connects, then one for each line it sends,
/// the message counting as one line. In an entry "|" cuts the reply into segments that are sent apart, and an
/// empty entry closes the connection. After the last entry the peer is silent.
class SmtpPeer : public QTcpServer
{
    Q_OBJECT

public:
    explicit SmtpPeer(const QList<QByteArray> &script)
        : m_script(script)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, &SmtpPeer::accept);
    }

    [[nodiscard]] int connectionCount() const { return m_connectionCount; }
    [[nodiscard]] const QByteArray &received() const { return m_received; }
    [[nodiscard]] bool isConnected() const { return m_client != nullptr; }

private:
    void accept()
    {
        ++m_connectionCount;
        m_client = nextPendingConnection();
        connect(m_client, &QTcpSocket::readyRead, this, &SmtpPeer::read);
        connect(m_client, &QTcpSocket::disconnected, m_client, &QObject::deleteLater);
        reply();
    }

    void read()
    {
        while (m_client && m_client->canReadLine()) {
            const QByteArray line = m_client->readLine();
            m_received += line;
            if (m_inMessage && line != ".\r\n")
                continue;
            m_inMessage = line == "DATA\r\n";
            reply();
        }
    }

    void reply()
    {
        if (m_script.isEmpty())
            return;
        const QByteArray entry = m_script.takeFirst();
        if (entry.isEmpty())
            m_client->disconnectFromHost();
        else
            send(entry.split('|'));
    }

    void send(QList<QByteArray> segments)
    {
        m_client->write(segments.takeFirst());
        m_client->flush();
        if (!segments.isEmpty())
            QTimer::singleShot(1, m_client, [this, segments] { send(segments); });
    }

    QList<QByteArray> m_script;
    QPointer<QTcpSocket> m_client;
    QByteArray m_received;
    bool m_inMessage = false;
    int m_connectionCount = 0;
};
