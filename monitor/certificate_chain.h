// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QList>
#include <QSslCertificate>

/// Returns whether one of `authorities` belongs to `chain` or is the issuer, by name, of a certificate in it.
/// To be asked about a chain that the TLS library has verified: that of Windows accepts the authorities of
/// the system also where a program names its own.
[[nodiscard]] bool isIssuedByOneOf(const QList<QSslCertificate> &authorities,
                                   const QList<QSslCertificate> &chain);
