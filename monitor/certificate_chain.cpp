// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/certificate_chain.h"

#include <algorithm>

namespace {

bool hasIssuer(const QSslCertificate &certificate, const QSslCertificate &authority)
{
    const QList<QByteArray> names = authority.subjectInfoAttributes();
    const auto isEqual = [&](const QByteArray &name) {
        return certificate.issuerInfo(name) == authority.subjectInfo(name);
    };
    return !names.isEmpty() && certificate.issuerInfoAttributes() == names &&
           std::all_of(names.cbegin(), names.cend(), isEqual);
}

} // namespace

bool isIssuedByOneOf(const QList<QSslCertificate> &authorities, const QList<QSslCertificate> &chain)
{
    return std::any_of(chain.cbegin(), chain.cend(), [&authorities](const QSslCertificate &certificate) {
        return std::any_of(authorities.cbegin(), authorities.cend(),
                           [&certificate](const QSslCertificate &authority) {
                               return certificate == authority || hasIssuer(certificate, authority);
                           });
    });
}
