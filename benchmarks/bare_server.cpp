// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// The comparison for the service's memory and speed: Qt's event loop and one TCP server that answers
// every line with the same bytes, and nothing of ours. Usage: bare_server [FILE with the answer]

#include <QCoreApplication>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QByteArray answer("\n");
    if (argc > 1) {
        QFile file(QString::fromLocal8Bit(argv[1]));
        if (!file.open(QIODevice::ReadOnly))
            return 1;
        answer = file.readAll();
    }
    QTcpServer server;
    QObject::connect(&server, &QTcpServer::newConnection, &server, [&server, &answer] {
        QTcpSocket *const socket = server.nextPendingConnection();
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket, &answer] {
            while (socket->canReadLine()) {
                socket->readLine();
                socket->write(answer);
            }
        });
    });
    if (!server.listen(QHostAddress::LocalHost))
        return 1;
    std::printf("%d\n", server.serverPort());
    std::fflush(stdout);
    return QCoreApplication::exec();
}
