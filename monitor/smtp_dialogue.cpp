// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/smtp_dialogue.h"

#include "monitor/monitor_log.h"

namespace {

/// What stands behind the code of a reply's line: a blank in its last line, a hyphen in those before it.
char separatorOf(const QByteArray &line)
{
    return line.size() > 3 ? line.at(3) : '\0';
}

QString line(const QString &text)
{
    return text + QStringLiteral("\r\n");
}

QString base64Line(const QString &text)
{
    return line(QString::fromLatin1(text.toLatin1().toBase64()));
}

} // namespace

SmtpDialogue::SmtpDialogue(const SmtpMail &mail, const QString &hostName)
    : m_steps{{'2', line(QStringLiteral("EHLO ") + hostName)}}
{
    if (mail.needAuth) {
        m_steps += {{'2', line(QStringLiteral("AUTH LOGIN"))},
                    {'3', base64Line(mail.user)},
                    {'3', base64Line(mail.password)}};
    }
    m_steps += {{'2', line(QStringLiteral("MAIL FROM: <") + mail.from + QLatin1Char('>'))},
                {'2', line(QStringLiteral("RCPT TO: <") + mail.to + QLatin1Char('>'))},
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

/// Moves the lines of one reply from m_unread to the transcript; false while the reply is not complete. It
/// ends with a line with a blank behind the code; or where the lines run out, if the last one has no hyphen
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
        qCDebug(lcMonitor) << "SMTP server:" << m_lastLine;
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

/// Checks the reply that m_lastLine ends and takes the step that it leads to.
QByteArray SmtpDialogue::answerReply()
{
    if (m_step == m_steps.size()) {
        m_outcome = Outcome::Sent; // whatever the server says to QUIT, it has taken the mail
        return {};
    }
    const Step &step = m_steps.at(m_step);
    if (!m_lastLine.startsWith(step.expected)) {
        m_outcome = Outcome::Failed;
        return {};
    }
    ++m_step;
    m_transcript += step.sent;
    return step.sent.toUtf8();
}
