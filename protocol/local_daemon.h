// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLocalServer>
#include <QPointer>
#include <QString>
#include <QTimer>

class Consoles;
class Conversation;
class QLocalSocket;

/// Serves one console of this machine at a time: a new connection takes over from the one before, which
/// stays open but is no longer heard.
class localDaemon : public QLocalServer
{
    Q_OBJECT

public:
    /// `consoles` outlives the server.
    explicit localDaemon(Consoles &consoles, QObject *parent = nullptr);

    /// Listens under `name`. A socket file that a killed service left behind is replaced; one that somebody
    /// serves is left alone, and listening fails. Once it has succeeded, a listener that Qt closes for want
    /// of descriptors is opened again as soon as there are some.
    bool listen(const QString &name);

private Q_SLOTS:
    void incommingConnection();
    void readLocalConnection(Conversation *conversation);
    void disconnectLocalConnection(QLocalSocket *socket);

private:
    bool openListener();

    Consoles &m_consoles;
    QPointer<QLocalSocket> m_current;
    QString m_name;
    QTimer m_reopenTimer;
};
