// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLockFile>
#include <QString>

namespace client {

/// The service hears one local console at a time: a new connection takes over, and the one before gets no
/// answer any more. So the consoles of a machine take turns, by a lock file. It is a courtesy and guards
/// nothing: who waits in vain may go ahead.
class LocalTurn
{
public:
    /// `localName` as the socket is asked by.
    explicit LocalTurn(const QString &localName);

    /// False while another console has the turn; true as well when nobody can tell. Does not wait.
    [[nodiscard]] bool take();

    /// Lets the next one in; the destructor does so too.
    void give();

private:
    QLockFile m_lock;
};

} // namespace client
