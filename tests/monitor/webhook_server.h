// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

/// The endpoint of a webhook: stores each POST of a JSON document and answers all with the same bytes.
class WebhookServer : public QTcpServer
{
public:
    QByteArray answer = "HTTP/1.1 204 No Content\r\n\r\n"; ///< silent if empty
    bool closes = true;                                    ///< after the answer
    QByteArrayList requests;

    WebhookServer()
    {
        open();
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *const socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(*socket); });
        });
    }

    /// Listens, on its former port if it had one. Returns whether it does.
    bool open()
    {
        const bool isOpen = listen(QHostAddress::LocalHost, m_port);
        m_port = serverPort();
        return isOpen;
    }

    [[nodiscard]] QUrl url(const QString &path = {}) const
    {
        return QUrl(QString("http://127.0.0.1:%1/").arg(m_port) + path);
    }

    /// Returns "EVENT LEVEL" of each document.
    [[nodiscard]] QStringList events() const
    {
        QStringList list;
        for (const QByteArray &request : requests) {
            const QJsonObject document = documentOf(request);
            list << document.value("event").toString() + u' ' + document.value("level").toString();
        }
        return list;
    }

private:
    static QJsonObject documentOf(const QByteArray &request)
    {
        return QJsonDocument::fromJson(request.mid(request.indexOf("\r\n\r\n") + 4)).object();
    }

    void read(QTcpSocket &socket)
    {
        QByteArray &request = m_received[&socket];
        request += socket.readAll();
        if (documentOf(request).isEmpty())
            return;
        requests << request;
        socket.write(answer);
        if (closes)
            socket.disconnectFromHost();
    }

    quint16 m_port = 0;
    QMap<QTcpSocket *, QByteArray> m_received;
};
