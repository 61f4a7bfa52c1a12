// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// Debian's exim4 with a configuration of its own on a free port of 127.0.0.1. It appends every mail,
/// whatever its sender and recipients, to one file.
class MailServer
{
public:
    struct Options
    {
        bool needAuth = false;     ///< only user "user" with password "secret" may send
        QByteArray certificate;    ///< PEM, with its key; empty: no TLS
        bool tlsFromStart = false; ///< instead of STARTTLS
    };

    explicit MailServer(const Options &options);
    ~MailServer();

    /// Starts the server on a free port and waits until it answers; repeats if another program has taken the
    /// port.
    [[nodiscard]] bool start();
    /// Starts the server again on the same port.
    [[nodiscard]] bool restart();
    void stop();

    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QByteArray output() { return m_process.readAllStandardError(); }

    /// Returns all mail delivered so far, without the headers that exim adds.
    [[nodiscard]] QByteArray mailbox() const { return file("mailbox"); }
    /// Returns the log, with a line for each mail and each failed handshake.
    [[nodiscard]] QByteArray log() const { return file("mainlog"); }

private:
    [[nodiscard]] bool startOn(quint16 port);
    [[nodiscard]] QByteArray file(const QString &name) const;

    const bool m_tlsFromStart;
    QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
};

/// Certificates of a test's own authority, made with the openssl program.
class TestAuthority
{
public:
    TestAuthority();

    /// Returns the path of the authority's certificate.
    [[nodiscard]] QString caFile() const { return m_folder.filePath("ca.pem"); }

    /// Returns a certificate with its key, in PEM form, for the given names ("IP:127.0.0.1"); empty if that
    /// failed.
    [[nodiscard]] QByteArray certificateFor(const QString &names, int days) const;

private:
    [[nodiscard]] bool openssl(const QString &arguments) const;

    QTemporaryDir m_folder;
};
