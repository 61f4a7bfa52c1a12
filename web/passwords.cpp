// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/passwords.h"

#include <QCryptographicHash>
#include <QList>
#include <QPasswordDigestor>
#include <QRandomGenerator>

#include <optional>

namespace web {

namespace {

const QByteArray kScheme = QByteArrayLiteral("pbkdf2-sha256");
constexpr int kIterations = 600000;
// A hash from elsewhere may be weaker or stronger, within what a login can wait for.
constexpr int kFewestIterations = 10000;
constexpr int kMostIterations = 2000000;
constexpr int kSaltBytes = 16;
constexpr int kKeyBytes = 32;

struct StoredHash
{
    int iterations = 0;
    QByteArray salt;
    QByteArray key;
};

std::optional<StoredHash> parse(const QByteArray &text)
{
    const QList<QByteArray> parts = text.split(':');
    if (parts.size() != 4 || parts.at(0) != kScheme)
        return std::nullopt;
    const StoredHash hash{parts.at(1).toInt(), QByteArray::fromBase64(parts.at(2)),
                          QByteArray::fromBase64(parts.at(3))};
    if (hash.iterations < kFewestIterations || hash.iterations > kMostIterations ||
        hash.salt.size() < kSaltBytes || hash.key.size() != kKeyBytes)
        return std::nullopt;
    return hash;
}

QByteArray derive(const QString &password, const QByteArray &salt, int iterations)
{
    return QPasswordDigestor::deriveKeyPbkdf2(QCryptographicHash::Sha256, password.toUtf8(), salt, iterations,
                                              kKeyBytes);
}

} // namespace

QByteArray randomBytes(int count)
{
    QByteArray bytes(count, '\0');
    for (char &byte : bytes)
        byte = char(QRandomGenerator::system()->bounded(256));
    return bytes;
}

bool isEqualSecret(const QByteArray &a, const QByteArray &b)
{
    // Digests have the same length, and an attacker does not choose where they differ.
    const QByteArray x = QCryptographicHash::hash(a, QCryptographicHash::Sha256);
    const QByteArray y = QCryptographicHash::hash(b, QCryptographicHash::Sha256);
    int difference = 0;
    for (int i = 0; i < x.size(); ++i)
        difference |= x.at(i) ^ y.at(i);
    return difference == 0;
}

QByteArray hashPassword(const QString &password)
{
    const QByteArray salt = randomBytes(kSaltBytes);
    const QByteArray key = derive(password, salt, kIterations);
    return kScheme + ':' + QByteArray::number(kIterations) + ':' + salt.toBase64() + ':' + key.toBase64();
}

bool isPasswordHash(const QByteArray &text)
{
    return parse(text).has_value();
}

bool verifyPassword(const QString &password, const QByteArray &hash)
{
    const auto stored = parse(hash);
    if (!stored)
        return false;
    return isEqualSecret(derive(password, stored->salt, stored->iterations), stored->key);
}

} // namespace web
