// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_mail.h"

#include "disk/device_record.h"

namespace {

/// Keeps a line with a single dot from ending the mail early. Every line of one character becomes "..",
/// whatever the character; of two such lines in a row only the first, because matches do not overlap.
QString withDotsDoubled(const QString &text)
{
    const QString lineEnd = QStringLiteral("\r\n");
    const int matchLength = 5;
    QString result;
    result.reserve(text.size());
    int i = 0;
    while (i < text.size()) {
        if (text.midRef(i, 2) == lineEnd && text.midRef(i + 3, 2) == lineEnd) {
            result += QStringLiteral("\r\n..\r\n");
            i += matchLength;
        } else {
            result += text.at(i++);
        }
    }
    return result;
}

/// Builds the message without an empty line between headers and text: receivers expect it this way.
QString message(const SmtpMail &mail, const QString &text)
{
    QString message = QStringLiteral("From: ") + singleLine(mail.from) + QStringLiteral("\nTo: ") +
                      singleLine(mail.to) + QStringLiteral("\nSubject: ") + singleLine(mail.subject) +
                      QLatin1Char('\n') + text + QLatin1Char('\n');
    message.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    return withDotsDoubled(message);
}

} // namespace

QString alertWord(qint32 alertLevel)
{
    return alertLevel == level::kCritical ? QStringLiteral("ALARM") : QStringLiteral("WARNING");
}

SmtpMail alertMail(const QString &word, const QString &text, const Settings &settings,
                   const QString &hostName, const QDateTime &now)
{
    SmtpMail mail;
    mail.needAuth = settings.smtpNeedAuth;
    mail.from = settings.smtpFrom;
    mail.to = settings.smtpTo;
    mail.subject = settings.smtpSubj;
    mail.server = settings.smtpServer;
    mail.port = quint16(settings.smtpPort);
    mail.user = settings.smtpUser;
    mail.password = settings.smtpPass;
    mail.message =
        message(mail, word + QStringLiteral(" from (") + hostName + QStringLiteral(") ") +
                          now.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QLatin1Char('\n') + text);
    return mail;
}

SmtpMail testMail(const MailTest &test)
{
    SmtpMail mail;
    mail.port = test.port;
    mail.needAuth = test.needAuth;
    mail.from = test.from;
    mail.to = test.to;
    mail.server = test.server;
    mail.subject = test.subject;
    mail.user = test.user;
    mail.password = test.password;
    mail.message = message(mail, test.text);
    return mail;
}
