// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/mail_run.h"

QString failureReason(const MailRun &run)
{
    if (run.outcome == MailRun::Outcome::Sent)
        return {};
    const QString error = run.outcome == MailRun::Outcome::UnexpectedReply
                              ? QStringLiteral("unexpected reply from the mail server")
                              : run.error;
    return run.lastReply.isEmpty() ? error : error + QStringLiteral(", last reply: ") + run.lastReply;
}

QString smtpTestText(const MailRun &run)
{
    const QString prefix = QStringLiteral("SMTP error: ");
    switch (run.outcome) {
    case MailRun::Outcome::Sent:
        return run.transcript;
    case MailRun::Outcome::ConnectionFailed:
        return prefix + run.error + QStringLiteral(". Check Your SMTP Settings.");
    case MailRun::Outcome::TimedOut:
        return prefix + run.error + QLatin1Char('.');
    case MailRun::Outcome::UnexpectedReply:
        return prefix + QStringLiteral("Unexpected reply from SMTP server.\n") + run.transcript;
    }
    Q_UNREACHABLE();
    return {};
}

QString printableText(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar character : text) {
        if (character.isPrint())
            result += character;
    }
    return result;
}
