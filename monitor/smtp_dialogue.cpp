// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/smtp_dialogue.h"

#include "monitor/logging.h"
#include "monitor/mail_run.h"

#include <algorithm>

namespace {

constexpr int kReplyCodeLength = 3;
constexpr int kMaxShownReply = 512; // characters of a reply that logs show

/// Returns the character after the code of a reply's line: a blank in its last line, a hyphen in the others.
char separatorOf(const QByteArray &line)
{
    return line.size() > kReplyCodeLength ? line.at(kReplyCodeLength) : '\0';
}

QString line(const QString &text)
{
    return text + QStringLiteral("\r\n");
}

QString base64(const QString &text)
{
    return QString::fromLatin1(text.toLatin1().toBase64());
}

/// Returns the texts in which a server could repeat `secret`: as it is, as its Latin-1 bytes look in UTF-8,
/// and in Base64 with or without padding.
QStringList formsOf(const QString &secret)
{
    const auto unpadded = [](const QByteArray &bytes) {
        return QString::fromLatin1(bytes.toBase64(QByteArray::OmitTrailingEquals));
    };
    QStringList forms{printableText(secret), printableText(QString::fromUtf8(secret.toLatin1())),
                      unpadded(secret.toLatin1()), unpadded(secret.toUtf8())};
    forms.removeAll(QString());
    return forms;
}

/// Returns "<address>", as MAIL FROM and RCPT TO take it.
QString path(const QString &address)
{
    return QLatin1Char('<') + singleLine(address) + QLatin1Char('>');
}

} // namespace

QString singleLine(const QString &value)
{
    const auto isLineEnd = [](QChar c) { return c == QLatin1Char('\r') || c == QLatin1Char('\n'); };
    const auto end = std::find_if(value.cbegin(), value.cend(), isLineEnd);
    return value.left(int(end - value.cbegin()));
}

SmtpDialogue::SmtpDialogue(const SmtpMail &mail, const QString &hostName, StartTls startTls)
    : m_steps{{'2', line(QStringLiteral("EHLO ") + hostName)}}
    , m_secrets(formsOf(mail.password) + formsOf(mail.user))
{
    if (startTls == StartTls::Yes) {
        // Replies before the encryption are not trusted (RFC 3207): the dialogue starts again with EHLO.
        m_steps +=
            {{'2', line(QStringLiteral("STARTTLS"))}, {'2', line(QStringLiteral("EHLO ") + hostName), true}};
    }
    if (mail.needAuth) {
        m_steps += {{'2', line(QStringLiteral("AUTH LOGIN"))},
                    {'3', line(base64(mail.user))},
                    {'3', line(base64(mail.password))}};
    }
    m_steps += {{'2', line(QStringLiteral("MAIL FROM: ") + path(mail.from))},
                {'2', line(QStringLiteral("RCPT TO: ") + path(mail.to))},
                {'2', line(QStringLiteral("DATA"))},
                {'3', mail.message + line(QStringLiteral("."))},
                {'2', line(QStringLiteral("QUIT"))}};
}

QByteArray SmtpDialogue::receive(const QByteArray &bytes)
{
    if (m_outcome != Outcome::Open)
        return {};
    QByteArray toSend;
    m_replySize += bytes.size();
    if (m_replySize > kMaxReplySize)
        m_outcome = Outcome::Failed;
    else
        m_unread += bytes;
    while (m_outcome == Outcome::Open && takeReply())
        toSend += answerReply();
    return toSend;
}

/// Moves the lines of one reply from m_unread to the transcript; false while the reply is incomplete. A reply
/// ends with a line with a blank after the code, or with the last line received unless that has a hyphen
/// there: some servers send a bare code.
bool SmtpDialogue::takeReply()
{
    int begin = 0;
    bool complete = false;
    while (!complete) {
        const int end = m_unread.indexOf('\n', begin) + 1;
        if (end == 0)
            break;
        m_lastLine = m_unread.mid(begin, end - begin);
        m_lastLine.chop(2);
        m_transcript += QString::fromUtf8(m_lastLine) + QLatin1Char('\n');
        qCDebug(lcMonitor) << "SMTP server:" << lastReply();
        begin = end;
        complete = separatorOf(m_lastLine) == ' ';
    }
    if (begin > 0 && separatorOf(m_lastLine) != '-')
        complete = true;
    m_unread.remove(0, begin);
    if (complete)
        m_replySize = m_unread.size();
    return complete;
}

/// Checks the reply that m_lastLine ends and returns the bytes of the step that it leads to.
QByteArray SmtpDialogue::answerReply()
{
    if (m_step == m_steps.size()) {
        m_outcome = Outcome::Sent; // the mail was accepted, whatever the reply to QUIT is
        return {};
    }
    const Step &step = m_steps.at(m_step);
    if (!m_lastLine.startsWith(step.expected)) {
        m_outcome = Outcome::Failed;
        return {};
    }
    if (step.needsTls) {
        // Bytes that follow the reply in plain text could be somebody else's.
        m_outcome = m_unread.isEmpty() ? Outcome::AwaitsTls : Outcome::Failed;
        return {};
    }
    return takeStep();
}

QByteArray SmtpDialogue::encrypted()
{
    if (m_outcome != Outcome::AwaitsTls)
        return {};
    m_outcome = Outcome::Open;
    return takeStep();
}

QByteArray SmtpDialogue::takeStep()
{
    const QString sent = m_steps.at(m_step++).sent;
    m_transcript += sent;
    return sent.toUtf8();
}

QString SmtpDialogue::lastReply() const
{
    QString text = printableText(QString::fromUtf8(m_lastLine));
    for (const QString &secret : m_secrets)
        text.replace(secret, QStringLiteral("***"), Qt::CaseInsensitive);
    return text.left(kMaxShownReply);
}
