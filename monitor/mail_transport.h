// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/alert_channel.h"
#include "monitor/smtp_sender.h"

struct Settings;

/// Sends messages as mail, with the settings of the moment. Has a sender of its own, so that a console's test
/// mail cannot keep an alert from being sent.
class MailTransport : public Transport
{
    Q_OBJECT

public:
    /// Borrows the settings.
    MailTransport(const Settings &settings, const SmtpTls &tls, const SmtpTimeouts &timeouts);

    void send(const OutboxEntry &entry, Done done) override;

private:
    void finish(const MailRun &run);

    const Settings &m_settings;
    smtp_sender m_sender;
    Done m_done;
};
