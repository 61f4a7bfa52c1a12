// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/secret.h"

#include "console/host.h"

#include <QFile>

namespace {

constexpr qint64 kLongestSecret = 1024;

QString firstLine(const Context &context, const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        context.refuse(QStringLiteral("%1: %2").arg(name, file.errorString()));
    QByteArray line = file.readLine(kLongestSecret);
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

QString typedLine(const Context &context, const QString &prompt)
{
    const auto typed = host::readHidden(prompt);
    if (!typed)
        context.refuse(QStringLiteral("there is no terminal to ask for the password; use --password-file"));
    return *typed;
}

} // namespace

Option passwordFileOption()
{
    return option("password-file", "FILE", "Read the password from the first line of FILE.");
}

std::optional<QString> readSecret(const Context &context, const QString &prompt, bool isNeeded)
{
    const auto file = context.arguments().value(QStringLiteral("password-file"));
    if (!file && !isNeeded && !context.arguments().has(QStringLiteral("ask-password")))
        return std::nullopt;
    const QString secret = file ? firstLine(context, *file) : typedLine(context, prompt);
    if (!client::isPlainField(secret))
        context.refuse(QStringLiteral("the password contains characters that the protocol cannot carry"));
    return secret;
}
