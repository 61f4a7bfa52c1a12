// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>

namespace web {

/// Returns the salted hash of `password` as the configuration stores it:
/// pbkdf2-sha256:ITERATIONS:SALT:KEY, the last two in Base64. Takes a good part of a second.
[[nodiscard]] QByteArray hashPassword(const QString &password);

/// Returns whether `text` has that form.
[[nodiscard]] bool isPasswordHash(const QByteArray &text);

/// Returns whether `hash` is the hash of `password`; false for a malformed hash. Takes as long as
/// hashPassword(), whatever the result. May be called on any thread.
[[nodiscard]] bool verifyPassword(const QString &password, const QByteArray &hash);

/// Returns whether the texts are equal, in a time that does not depend on where they differ.
[[nodiscard]] bool isEqualSecret(const QByteArray &a, const QByteArray &b);

/// Returns `count` bytes of the system's random source.
[[nodiscard]] QByteArray randomBytes(int count);

} // namespace web
