// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/peer.h"
#include "protocol/reply.h"
#include "protocol/smart_texts.h"

#include <QByteArray>
#include <QString>

class CommandTarget;

/// Carries out the requests of all consoles by one table of commands. Event loop's thread only.
class Dispatcher
{
public:
    /// `target` outlives the dispatcher and its replies.
    explicit Dispatcher(CommandTarget &target)
        : m_target(target)
    {}

    /// Returns the text of the first line of a connection: "PAUSED", "DETECTING" or the greeting.
    [[nodiscard]] QString firstLine(const Peer &peer) const;

    /// Carries out a line as it was received; CR and LF in it are ignored.
    [[nodiscard]] Reply answer(const QByteArray &line, const Peer &peer);

    /// Returns whether a line as it was received asks to disconnect.
    [[nodiscard]] static bool isDisconnectRequest(const QByteArray &line);

private:
    CommandTarget &m_target;
    SmartTexts m_smartTexts;
};
