// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/secret.h"

#include "console/client/requests.h"
#include "console/host.h"

#include <QFile>

namespace {

constexpr qint64 kLongestSecret = 1024;

Secret checked(const QString &text)
{
    if (!client::isPlainField(text))
        return {{}, QStringLiteral("the password holds characters that the protocol cannot carry")};
    return {text, {}};
}

Secret fromFile(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return {{}, QStringLiteral("%1: %2").arg(name, file.errorString())};
    QByteArray line = file.readLine(kLongestSecret);
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return checked(QString::fromUtf8(line));
}

} // namespace

Secret obtainSecret(const Arguments &arguments, const QString &prompt, bool isNeeded)
{
    if (const auto file = arguments.value(QStringLiteral("password-file")))
        return fromFile(*file);
    if (!isNeeded && !arguments.has(QStringLiteral("ask-password")))
        return {};
    const auto typed = host::readHidden(prompt);
    if (!typed)
        return {{}, QStringLiteral("there is no terminal to ask for the password; use --password-file")};
    return checked(*typed);
}
