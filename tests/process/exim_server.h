// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// Debian's exim4 with a configuration of its own on a free port of 127.0.0.1. It puts every mail, from
/// whomever to whomever, into one file.
class EximServer
{
public:
    /// With `needAuth` only user "user" with password "secret" may send.
    explicit EximServer(bool needAuth);
    ~EximServer();
    EximServer(const EximServer &) = delete;
    EximServer &operator=(const EximServer &) = delete;

    /// Starts it and waits until it answers; false, with the reason in errorText(), when it does not.
    [[nodiscard]] bool start();

    [[nodiscard]] quint16 port() const { return m_port; }
    /// All mail delivered so far, without any header that is exim's own.
    [[nodiscard]] QByteArray mailbox() const;
    [[nodiscard]] QString errorText() const { return m_errorText; }

private:
    bool startOn(quint16 port);
    bool writeConfiguration();

    bool m_needAuth;
    QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
    QString m_errorText;
};
