// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/scripted_service.h"

#include "protocol/scrambling.h"

#include <QHostAddress>

ScriptedService::ScriptedService()
{
    m_server.listen(QHostAddress::LocalHost, 0);
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = m_server.nextPendingConnection())
            serve(socket);
    });
}

void ScriptedService::serve(QTcpSocket *socket)
{
    connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
        while (socket->canReadLine())
            answer(*socket, unscramble(socket->readLine().trimmed()));
    });
    accept(*socket);
}

QByteArray ScriptedService::wire(const QString &text)
{
    return sendReply(text, [] { return 42; });
}

QString ScriptedService::greeting()
{
    return QStringLiteral(
        "VER]![Halvex Service v 5.0.5]![5000]![180000]![300000]![server-1]![1]![1]![0]![1]!["
        "from@example.org]![to@example.org]![Drives]![mail.example.org]![25]![0]![user]!["
        "secret]![55]![65]![Local.1794873600]![]![");
}
