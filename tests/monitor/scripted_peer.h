// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

/// A server on a free port that follows a script: one entry for the connection, then one for each line that
/// it receives; a mail counts as one line. "|" in an entry separates parts that are sent apart, and an empty
/// part closes the connection. After the last entry the server is silent.
class ScriptedPeer : public QTcpServer
{
public:
    explicit ScriptedPeer(const QList<QByteArray> &script)
        : m_script(script)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, &ScriptedPeer::accept);
    }

    [[nodiscard]] int connectionCount() const { return m_connectionCount; }
    [[nodiscard]] const QByteArray &received() const { return m_received; }
    [[nodiscard]] bool isConnected() const { return m_client != nullptr; }

private:
    void accept()
    {
        ++m_connectionCount;
        m_client = nextPendingConnection();
        connect(m_client, &QTcpSocket::readyRead, this, &ScriptedPeer::read);
        connect(m_client, &QTcpSocket::disconnected, m_client, &QObject::deleteLater);
        reply();
    }

    void read()
    {
        while (m_client && m_client->canReadLine()) {
            const QByteArray line = m_client->readLine();
            m_received += line;
            if (m_inMail && line != ".\r\n")
                continue;
            m_inMail = line == "DATA\r\n";
            reply();
        }
    }

    void reply()
    {
        if (!m_script.isEmpty())
            send(m_script.takeFirst().split('|'));
    }

    void send(QList<QByteArray> parts)
    {
        const QByteArray part = parts.takeFirst();
        m_client->write(part);
        m_client->flush();
        if (part.isEmpty())
            m_client->disconnectFromHost();
        else if (!parts.isEmpty())
            QTimer::singleShot(1, m_client, [this, parts] { send(parts); });
    }

    QList<QByteArray> m_script;
    QPointer<QTcpSocket> m_client;
    QByteArray m_received;
    bool m_inMail = false;
    int m_connectionCount = 0;
};
