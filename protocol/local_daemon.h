// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLocalServer>
#include <QPointer>
#include <QString>
#include <QTimer>

class Consoles;
class Conversation;

/// Serves one console of this machine at a time: a new connection supersedes the one before, which stays open
/// and receives the replies that are due, but whose further lines are discarded.
class localDaemon : public QLocalServer
{
    Q_OBJECT

public:
    /// `consoles` outlives the server.
    explicit localDaemon(Consoles &consoles, QObject *parent = nullptr);

    /// Listens under `name`. A socket file of a killed service is replaced; if another process
    /// serves it, listening fails. After success a listener that Qt closes for lack of descriptors is opened
    /// again as soon as there are some.
    bool listen(const QString &name);

private Q_SLOTS:
    void incommingConnection();

private:
    bool openListener();

    Consoles &m_consoles;
    QPointer<Conversation> m_current;
    QString m_name;
    QTimer m_reopenTimer;
};
