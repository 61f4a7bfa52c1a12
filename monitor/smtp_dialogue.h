// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// A mail and how it gets to its server.
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
    QString message; ///< with its headers and CR LF line ends, ready to be sent as it stands
};

/// The client's side of one SMTP session (RFC 5321, AUTH LOGIN), without the connection.
class SmtpDialogue
{
public:
    enum class Outcome { Open, Sent, Failed };

    /// What a server may send as one reply, in bytes; the standard allows lines of 512.
    static constexpr int kMaxReplySize = 64 * 1024;

    SmtpDialogue(const SmtpMail &mail, const QString &hostName);

    /// Takes bytes from the server, cut anywhere, and returns what is to be sent for the replies that they
    /// complete. Once the outcome is not open any more, bytes are ignored.
    ///
    /// Lines that have neither blank nor hyphen behind their code belong to one reply if they arrive
    /// together, so that the transcript tells all of what some other kind of server has to say.
    [[nodiscard]] QByteArray receive(const QByteArray &bytes);

    [[nodiscard]] Outcome outcome() const { return m_outcome; }

    /// All lines received, each with a line feed, and all that was sent, as it was sent: the Base64 forms of
    /// user and password, too.
    [[nodiscard]] const QString &transcript() const { return m_transcript; }

private:
    struct Step
    {
        char expected; ///< first digit of the reply that leads to it
        QString sent;
    };

    bool takeReply();
    QByteArray answerReply();

    QVector<Step> m_steps;
    int m_step = 0; ///< the next one; at the end QUIT has been sent
    Outcome m_outcome = Outcome::Open;
    QByteArray m_unread;   ///< an unfinished line, or what came behind a reply
    int m_replySize = 0;   ///< bytes of the reply under way, those of m_unread included
    QByteArray m_lastLine; ///< the latest line of the reply under way
    QString m_transcript;
};
