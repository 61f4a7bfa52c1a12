// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/http_message.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTextCodec>

#include <algorithm>
#include <optional>

namespace web {

namespace {

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// Returns the text that `encoded` stands for; nullopt if it is not well-formed printable UTF-8.
std::optional<QString> decoded(const QByteArray &encoded)
{
    for (int i = 0; i < encoded.size(); ++i) {
        if (encoded.at(i) != '%')
            continue;
        if (i + 2 >= encoded.size() || !isHexDigit(encoded.at(i + 1)) || !isHexDigit(encoded.at(i + 2)))
            return std::nullopt;
    }
    const QByteArray bytes = QByteArray::fromPercentEncoding(encoded);
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    const bool hasControl =
        std::any_of(text.cbegin(), text.cend(), [](QChar c) { return c.category() == QChar::Other_Control; });
    if (state.invalidChars > 0 || state.remainingChars > 0 || hasControl)
        return std::nullopt;
    return text;
}

std::optional<QStringList> pathSegments(const QByteArray &path)
{
    if (!path.startsWith('/'))
        return std::nullopt;
    QList<QByteArray> parts = path.mid(1).split('/');
    if (parts.last().isEmpty())
        parts.removeLast();
    QStringList segments;
    for (const QByteArray &part : qAsConst(parts)) {
        const auto segment = decoded(part);
        const bool isPlain = segment && !segment->isEmpty() && *segment != QLatin1String(".") &&
                             *segment != QLatin1String("..");
        if (!isPlain)
            return std::nullopt;
        segments.append(*segment);
    }
    return segments;
}

} // namespace

HttpResponse errorResponse(int status, const QString &text)
{
    HttpResponse response;
    response.status = status;
    response.body =
        QJsonDocument(QJsonObject{{QStringLiteral("error"), text}}).toJson(QJsonDocument::Compact) + '\n';
    return response;
}

std::optional<Target> parseTarget(const QByteArray &target)
{
    const int question = int(target.indexOf('?'));
    const auto segments = pathSegments(question < 0 ? target : target.left(question));
    if (!segments)
        return std::nullopt;
    Target result{*segments, {}};
    if (question < 0)
        return result;
    for (const QByteArray &pair : target.mid(question + 1).split('&')) {
        const int equals = int(pair.indexOf('='));
        const auto key = decoded(equals < 0 ? pair : pair.left(equals));
        const auto value = decoded(equals < 0 ? QByteArray() : pair.mid(equals + 1).replace('+', "%20"));
        if (!key || !value)
            return std::nullopt;
        if (!key->isEmpty() && !result.query.contains(*key))
            result.query.insert(*key, *value);
    }
    return result;
}

QByteArray cookieValue(const HttpRequest &request, const QByteArray &name)
{
    for (const QByteArray &pair : request.headers.value("cookie").split(';')) {
        const QByteArray trimmed = pair.trimmed();
        if (trimmed.startsWith(name + '='))
            return trimmed.mid(name.size() + 1);
    }
    return {};
}

} // namespace web
