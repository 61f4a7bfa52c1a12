// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_mail.h"

#include "disk/device_record.h"
#include "monitor/monitor_log.h"

#include <QStringList>

namespace {

constexpr int kTestMailFields = 9;

/// Keeps a line of a single dot from ending the mail early. Every line of one character becomes "..", any
/// character's, but of two in a row only the first does, because the line end between them has been used up.
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

/// No empty line parts the headers from the text: receivers expect the mail this way.
QString message(const SmtpMail &mail, const QString &text)
{
    QString message = QStringLiteral("From: ") + mail.from + QStringLiteral("\nTo: ") + mail.to +
                      QStringLiteral("\nSubject: ") + mail.subject + QLatin1Char('\n') + text +
                      QLatin1Char('\n');
    message.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    return withDotsDoubled(message);
}

} // namespace

SmtpMail alertMail(qint32 alertLevel, const QString &alertText, const Settings &settings,
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
    const QString prefix =
        alertLevel == level::kCritical ? QStringLiteral("ALARM from (") : QStringLiteral("WARNING from (");
    mail.message = message(mail, prefix + hostName + QStringLiteral(") ") +
                                     now.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QLatin1Char('\n') +
                                     alertText);
    return mail;
}

std::optional<SmtpMail> testMail(const QString &parameters)
{
    const QStringList fields = parameters.split(QStringLiteral("~;"));
    qCDebug(lcMonitor) << "Numbers of params:" << fields.size();
    if (fields.size() < kTestMailFields)
        return std::nullopt;
    SmtpMail mail;
    mail.port = quint16(fields.at(0).toInt());
    mail.needAuth = fields.at(1).toInt() != 0;
    mail.from = fields.at(2);
    mail.to = fields.at(3);
    mail.server = fields.at(4);
    mail.subject = fields.at(5);
    mail.user = fields.at(6);
    mail.password = fields.at(7);
    mail.message = message(mail, fields.at(8));
    return mail;
}
