// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/smtp_dialogue.h"

#include "fuzz/fuzz_input.h"

#include <QRegularExpression>

#include <tuple>

namespace {

using Outcome = SmtpDialogue::Outcome;

/// Returns the lines that the client sends, its outcome, and its transcript.
std::tuple<QByteArray, Outcome, QString> runDialogue(bool needAuth, const QByteArray &received, int pieceSize)
{
    SmtpMail mail;
    mail.needAuth = needAuth;
    mail.message = QStringLiteral("Subject: s\r\n\r\ntext\r\n");
    SmtpDialogue dialogue(mail, QStringLiteral("host"));
    QByteArray sent;
    for (int i = 0; i < received.size(); i += pieceSize)
        sent += dialogue.receive(received.mid(i, pieceSize));
    return {sent, dialogue.outcome(), dialogue.transcript()};
}

/// Returns all lines of a client that receives the expected replies.
QByteArray wholeSide(bool needAuth)
{
    const QByteArray replies =
        needAuth ? "220 \r\n250 \r\n334 \r\n334 \r\n235 \r\n250 \r\n250 \r\n354 \r\n250 \r\n"
                 : "220 \r\n250 \r\n250 \r\n250 \r\n354 \r\n250 \r\n";
    return std::get<QByteArray>(runDialogue(needAuth, replies, replies.size()));
}

} // namespace

/// Input: one bit for AUTH, then the server's side of the dialogue. The client sends its lines in order and
/// no others, all of them before it reports success. Cutting the bytes differently changes nothing.
void fuzz(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    const bool needAuth = (bytes.at(0) & 1) != 0;
    const QByteArray received = bytes.mid(1);
    const QByteArray whole = wholeSide(needAuth);
    const auto atOnce = runDialogue(needAuth, received, bytes.size());
    const auto &[sent, outcome, transcript] = atOnce;
    require(whole.startsWith(sent));
    require(outcome != Outcome::Sent || sent == whole);
    require(transcript.size() <= received.size() + whole.size());

    // A blank or a hyphen after the code of each line shows whether it is the last one of its reply. Without
    // either, the arrival of the bytes decides.
    static const QRegularExpression ordinary(QStringLiteral("\\A(?:[^\n]{3}[ -][^\n]+\n)*+[^\n]*\\z"));
    if (!ordinary.match(QString::fromLatin1(received.constData(), received.size())).hasMatch())
        return;
    for (const int pieceSize : {1, 7})
        require(runDialogue(needAuth, received, pieceSize) == atOnce);
}
