// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/smtp_dialogue.h"

#include "fuzz/fuzz_input.h"

#include <QRegularExpression>

#include <tuple>

namespace {

using Outcome = SmtpDialogue::Outcome;

/// What the client sends, how it ends, and its transcript.
std::tuple<QByteArray, Outcome, QString> talk(bool needAuth, const QByteArray &received, int pieceSize)
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

/// All that the client says, when every reply is the one that it waits for.
QByteArray wholeSide(bool needAuth)
{
    const QByteArray replies =
        needAuth ? "220 \r\n250 \r\n334 \r\n334 \r\n235 \r\n250 \r\n250 \r\n354 \r\n250 \r\n"
                 : "220 \r\n250 \r\n250 \r\n250 \r\n354 \r\n250 \r\n";
    return std::get<QByteArray>(talk(needAuth, replies, replies.size()));
}

} // namespace

/// One bit for AUTH, then a server's side of the dialogue: the client says its lines in their order and no
/// others, all of them before it claims that the mail was sent, and the cut of the bytes does not matter.
void fuzz(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    const bool needAuth = (bytes.at(0) & 1) != 0;
    const QByteArray received = bytes.mid(1);
    const QByteArray whole = wholeSide(needAuth);
    const auto atOnce = talk(needAuth, received, bytes.size());
    const auto &[sent, outcome, transcript] = atOnce;
    require(whole.startsWith(sent));
    require(outcome != Outcome::Sent || sent == whole);
    require(transcript.size() <= received.size() + whole.size());

    // Every line says by a blank or a hyphen behind its code whether it is the last one of its reply. Where
    // one does not, how the bytes arrive tells it.
    static const QRegularExpression ordinary(QStringLiteral("\\A(?:[^\n]{3}[ -][^\n]+\n)*+[^\n]*\\z"));
    if (!ordinary.match(QString::fromLatin1(received.constData(), received.size())).hasMatch())
        return;
    for (const int pieceSize : {1, 7})
        require(talk(needAuth, received, pieceSize) == atOnce);
}
