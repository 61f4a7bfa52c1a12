// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLockFile>
#include <QString>

namespace client {

/// A lock file by which the consoles of a machine share the local socket. The service answers only the latest
/// local connection, so a new one silences the one before. The lock is advisory: a console that has waited
/// long enough may connect without it.
class LocalSocketLock
{
public:
    explicit LocalSocketLock(const QString &localName);

    /// Returns false while another console holds the lock, true also where no lock file can be made. Does not
    /// wait.
    [[nodiscard]] bool tryLock();

    /// Also done by the destructor.
    void unlock();

private:
    QLockFile m_lock;
};

} // namespace client
