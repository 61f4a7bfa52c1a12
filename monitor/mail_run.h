// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// The result of one run of the SMTP client.
struct MailRun
{
    enum class Outcome {
        Sent,             ///< the server accepted the mail
        ConnectionFailed, ///< the connection was not established, or was lost
        TimedOut,         ///< connecting took too long, or the server was silent for too long
        UnexpectedReply,  ///< the server refused a step, or does not speak SMTP
    };

    Outcome outcome = Outcome::Sent;
    QString
        error; ///< one line: "ConnectionRefusedError", "Time Out 30s"; empty unless one of these two failed
    QString lastReply;  ///< last line of the server's last reply, without credentials and control characters
    QString transcript; ///< the whole dialogue with the credentials in Base64: for SMTPTEST, never for a log
};

/// Returns why `run` failed as one line for logs, without credentials and control characters; empty after
/// Outcome::Sent.
[[nodiscard]] QString failureReason(const MailRun &run);

/// Returns the text that answers SMTPTEST: the transcript, or a text that begins with "SMTP error:".
[[nodiscard]] QString smtpTestText(const MailRun &run);

/// Returns `text` without characters that a terminal or a log could interpret: controls, formats, line ends.
[[nodiscard]] QString printableText(const QString &text);
