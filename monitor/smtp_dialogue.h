// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

/// A mail and the server that accepts it.
struct SmtpMail
{
    bool needAuth = false; ///< log in with AUTH LOGIN
    QString from;
    QString to;
    QString subject;
    QString server; ///< host name or address
    quint16 port = 25;
    QString user;
    QString password;
    QString message; ///< complete, with headers and CR LF line ends, dot-stuffed
};

/// Returns `value` up to its first CR or LF: in an envelope address or a header field the rest would be
/// another command or header.
[[nodiscard]] QString singleLine(const QString &value);

/// The client's side of one SMTP session (RFC 5321, AUTH LOGIN), without the connection.
class SmtpDialogue
{
public:
    enum class Outcome {
        Open,
        Sent,
        Failed,
        AwaitsTls, ///< the server has agreed to encrypt: encrypted() resumes
    };

    /// Yes: the dialogue requests encryption. A connection that is encrypted from its start needs No.
    enum class StartTls { No, Yes };

    /// Limit of one reply of the server, in bytes; the standard allows lines of 512.
    static constexpr int kMaxReplySize = 64 * 1024;

    SmtpDialogue(const SmtpMail &mail, const QString &hostName, StartTls startTls = StartTls::No);

    /// Takes bytes from the server, cut anywhere, and returns the bytes to send for the replies that they
    /// complete. Ignores bytes once the outcome is no longer Open.
    ///
    /// Lines with neither a blank nor a hyphen after their code belong to one reply if they arrive together,
    /// so that the transcript holds the whole text of a server that does not speak SMTP.
    [[nodiscard]] QByteArray receive(const QByteArray &bytes);

    /// Resumes after AwaitsTls, when the connection is encrypted, and returns the bytes to send.
    [[nodiscard]] QByteArray encrypted();

    [[nodiscard]] Outcome outcome() const { return m_outcome; }

    /// Returns all lines received, each with a line feed, and everything sent, byte for byte: includes the
    /// Base64 forms of user and password.
    [[nodiscard]] const QString &transcript() const { return m_transcript; }

    /// Returns the last line received, without control characters. The credentials are replaced by "***",
    /// because a server may repeat them.
    [[nodiscard]] QString lastReply() const;

private:
    struct Step
    {
        char expected; ///< first digit of the reply that leads to it
        QString sent;
        bool needsTls = false; ///< the connection is encrypted first
    };

    bool takeReply();
    QByteArray answerReply();
    QByteArray takeStep();

    QVector<Step> m_steps;
    QStringList m_secrets; ///< the forms of user and password that lastReply() replaces
    int m_step = 0;        ///< the next one; at the end QUIT has been sent
    Outcome m_outcome = Outcome::Open;
    QByteArray m_unread;   ///< an unfinished line, or bytes that follow a reply
    int m_replySize = 0;   ///< bytes of the reply being received, m_unread included
    QByteArray m_lastLine; ///< the latest line of the reply being received
    QString m_transcript;
};
