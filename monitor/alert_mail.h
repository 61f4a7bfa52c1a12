// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "monitor/smtp_dialogue.h"

#include <QDateTime>
#include <QString>

/// Returns the word that begins the mail of an alert at level::kWarning or level::kCritical.
[[nodiscard]] QString alertWord(qint32 alertLevel);

/// Returns the mail that reports `text`, whose lines end in line feeds. Its first line is "WORD from (HOST)
/// TIME", with `now` as local time.
[[nodiscard]] SmtpMail alertMail(const QString &word, const QString &text, const Settings &settings,
                                 const QString &hostName, const QDateTime &now);

/// Settings that a console tries, and the text of the mail.
struct MailTest
{
    quint16 port = 0;
    bool needAuth = false;
    QString from;
    QString to;
    QString server;
    QString subject;
    QString user;
    QString password;
    QString text;
};

[[nodiscard]] SmtpMail testMail(const MailTest &test);
