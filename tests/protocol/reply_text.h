// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/dispatcher.h"

#include "protocol/fake_target.h"
#include "wire/scrambling.h"

/// Returns the whole reply to the request of a console at `peer`, null for the local socket.
inline QString replyTo(const QString &request, FakeTarget &target, const QHostAddress &peer = {})
{
    Reply reply = Dispatcher(target).answer(scramble(request, 7), {"42", peer});
    if (reply.start)
        reply.start([&reply](std::unique_ptr<ReplySource> source) { reply.source = std::move(source); });
    if (!reply.source)
        return {};
    QByteArray text;
    for (QByteArray part = reply.source->next(100); !part.isEmpty(); part = reply.source->next(100))
        text += part;
    return text.size() == reply.source->length() ? QString::fromUtf8(text)
                                                 : QStringLiteral("announced otherwise");
}
