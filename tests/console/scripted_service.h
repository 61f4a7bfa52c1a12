// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <functional>

/// A peer on a free port that plays what a service does, and what none ever should. `accept` is called
/// with each new connection, `answer` with each request's text; both may write or close as they like.
class ScriptedService : public QObject
{
    Q_OBJECT
public:
    std::function<void(QTcpSocket &)> accept = [](QTcpSocket &) {};
    std::function<void(QTcpSocket &, const QString &request)> answer = [](QTcpSocket &, const QString &) {};

    ScriptedService();

    [[nodiscard]] quint16 port() const { return m_server.serverPort(); }

    /// What a well-behaved service writes for `text`.
    [[nodiscard]] static QByteArray wire(const QString &text);

    /// A greeting that fits, of a service on port 5000 at alert level 1.
    [[nodiscard]] static QString greeting();

private:
    void serve(QTcpSocket *socket);

    QTcpServer m_server;
};
