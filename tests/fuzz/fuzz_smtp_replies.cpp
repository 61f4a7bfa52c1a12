// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/smtp_dialogue.h"

#include "fuzz/fuzz_input.h"

#include <QList>

namespace {

SmtpMail mail(bool needAuth)
{
    SmtpMail mail;
    mail.needAuth = needAuth;
    mail.from = QStringLiteral("from");
    mail.to = QStringLiteral("to");
    mail.user = QStringLiteral("user");
    mail.password = QStringLiteral("password");
    mail.message = QStringLiteral("Subject: s\r\n\r\ntext\r\n");
    return mail;
}

struct Talk
{
    QByteArray sent;
    SmtpDialogue::Outcome outcome;
    QString transcript;
};

Talk talk(bool needAuth, const QByteArray &received, int pieceSize)
{
    SmtpDialogue dialogue(mail(needAuth), QStringLiteral("host"));
    QByteArray sent;
    for (int i = 0; i < received.size(); i += pieceSize)
        sent += dialogue.receive(received.mid(i, pieceSize));
    return {sent, dialogue.outcome(), dialogue.transcript()};
}

/// Every line says by a blank or a hyphen behind its code whether it is the last one of its reply. Where one
/// does not, how the bytes arrive tells it.
bool hasOrdinaryLines(const QByteArray &received)
{
    QList<QByteArray> lines = received.split('\n');
    lines.removeLast(); // not ended
    for (const QByteArray &line : lines) {
        if (line.size() < 5 || (line.at(3) != ' ' && line.at(3) != '-'))
            return false;
    }
    return true;
}

/// All that the client says, when every reply is the one that it waits for.
QByteArray wholeSide(bool needAuth)
{
    const QByteArray replies =
        needAuth ? "220 \r\n250 \r\n334 \r\n334 \r\n235 \r\n250 \r\n250 \r\n354 \r\n250 \r\n"
                 : "220 \r\n250 \r\n250 \r\n250 \r\n354 \r\n250 \r\n";
    return talk(needAuth, replies, replies.size()).sent;
}

} // namespace

/// One bit for AUTH, then a server's side of the dialogue: the client says its lines in their order and no
/// others, all of them before it claims that the mail was sent, and the cut of the bytes does not matter.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const bool needAuth = (data[0] & 1U) != 0;
    const QByteArray received = bytesOf(data + 1, size - 1);
    const QByteArray whole = wholeSide(needAuth);
    const Talk atOnce = talk(needAuth, received, int(size));
    require(whole.startsWith(atOnce.sent));
    require(atOnce.outcome != SmtpDialogue::Outcome::Sent || atOnce.sent == whole);
    require(atOnce.transcript.size() <= received.size() + whole.size());
    if (hasOrdinaryLines(received)) {
        for (const int pieceSize : {1, 7}) {
            const Talk inPieces = talk(needAuth, received, pieceSize);
            require(inPieces.sent == atOnce.sent && inPieces.outcome == atOnce.outcome &&
                    inPieces.transcript == atOnce.transcript);
        }
    }
    return 0;
}
