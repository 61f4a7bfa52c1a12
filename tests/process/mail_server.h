// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// Debian's exim4 with a configuration of its own on a free port of 127.0.0.1. It puts every mail, from
/// whomever to whomever, into one file.
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

    /// Starts it and waits until it answers, on a free port; another program may have taken that meanwhile.
    [[nodiscard]] bool start();
    /// Starts it again on the port that it had.
    [[nodiscard]] bool restart();
    void stop();

    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QByteArray output() { return m_process.readAllStandardError(); }

    /// All mail delivered so far, without any header that is exim's own.
    [[nodiscard]] QByteArray mailbox() const { return file("mailbox"); }
    /// The log, with a line for each mail and each failed handshake.
    [[nodiscard]] QByteArray log() const { return file("mainlog"); }

private:
    [[nodiscard]] bool startOn(quint16 port);
    [[nodiscard]] QByteArray file(const QString &name) const;

    const bool m_tlsFromStart;
    QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
};

/// Certificates of an authority that exists for one test, made with the openssl program.
class TestAuthority
{
public:
    TestAuthority();

    /// Path of the authority's certificate.
    [[nodiscard]] QString caFile() const { return m_folder.filePath("ca.pem"); }

    /// Returns a certificate with its key, in PEM form, for the given names ("IP:127.0.0.1"); empty if that
    /// failed.
    [[nodiscard]] QByteArray certificateFor(const QString &names, int days) const;

private:
    [[nodiscard]] bool openssl(const QString &arguments) const;

    QTemporaryDir m_folder;
};
