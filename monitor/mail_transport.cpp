// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/mail_transport.h"

#include "monitor/alert_mail.h"

#include <QHostInfo>

#include <utility>

namespace {

/// Returns the word that begins a mail's first line.
QString firstWord(const OutboxEntry &entry)
{
    switch (entry.event) {
    case AlertMessage::Event::Recovery:
        return QStringLiteral("RECOVERY");
    case AlertMessage::Event::Test:
        return QStringLiteral("TEST");
    case AlertMessage::Event::Alert:
    case AlertMessage::Event::Reminder:
        break;
    }
    return alertWord(qint32(entry.level));
}

} // namespace

MailTransport::MailTransport(const Settings &settings, const SmtpTls &tls, const SmtpTimeouts &timeouts)
    : m_settings(settings)
    , m_sender(tls)
{
    m_sender.setTimeouts(timeouts);
    connect(&m_sender, &smtp_sender::smtpSenderOk, this, &MailTransport::finish);
    connect(&m_sender, &smtp_sender::smtpSenderError, this, &MailTransport::finish);
}

void MailTransport::send(const OutboxEntry &entry, Done done)
{
    m_done = std::move(done);
    m_sender.start(alertMail(firstWord(entry), entry.text, m_settings, QHostInfo::localHostName(),
                             entry.time.toLocalTime()));
}

void MailTransport::finish(const MailRun &run)
{
    const Done done = std::exchange(m_done, nullptr);
    if (run.outcome == MailRun::Outcome::Sent)
        done({});
    else
        done(Error{failureReason(run)});
}
