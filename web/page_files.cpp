// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/page_files.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QResource>

/// Outside of any namespace, because the macro declares a function that the resource defines.
static void registerPage()
{
    Q_INIT_RESOURCE(page);
}

namespace web {

namespace {

struct File
{
    QByteArray bytes; ///< refers to the program's own memory
    QByteArray type;
    QByteArray tag; ///< of the content, quoted as in ETag
};

QByteArray typeOf(const QString &path)
{
    static const QHash<QString, QByteArray> kTypes{
        {QStringLiteral("html"), "text/html; charset=utf-8"},
        {QStringLiteral("css"), "text/css; charset=utf-8"},
        {QStringLiteral("js"), "text/javascript; charset=utf-8"},
        {QStringLiteral("svg"), "image/svg+xml"},
        {QStringLiteral("png"), "image/png"},
        {QStringLiteral("webmanifest"), "application/manifest+json"},
    };
    return kTypes.value(path.section(QLatin1Char('.'), -1), "application/octet-stream");
}

/// Returns the embedded file `path`; its bytes are not copied.
File load(const QString &path)
{
    const QResource resource(path);
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(resource.data()), int(resource.size()));
    const QByteArray digest = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().left(16);
    return {bytes, typeOf(path), '"' + digest + '"'};
}

const QHash<QString, File> &allFiles()
{
    static const QHash<QString, File> files = [] {
        registerPage();
        const QString root = QStringLiteral(":/page/");
        QHash<QString, File> found;
        for (QDirIterator paths(root, QDir::Files, QDirIterator::Subdirectories); paths.hasNext();) {
            const QString path = paths.next();
            found.insert(path.mid(root.size()), load(path));
        }
        return found;
    }();
    return files;
}

} // namespace

HttpResponse pageFile(const HttpRequest &request, const QStringList &segments)
{
    const QString path = segments.isEmpty() ? QStringLiteral("index.html") : segments.join(QLatin1Char('/'));
    const auto file = allFiles().constFind(path);
    if (file == allFiles().constEnd())
        return errorResponse(404, QStringLiteral("there is nothing at this path"));
    if (request.method != "GET" && request.method != "HEAD") {
        HttpResponse response = errorResponse(405, QStringLiteral("this path does not take that method"));
        response.addHeader("Allow", "GET");
        return response;
    }
    HttpResponse response;
    response.contentType = file->type;
    response.headers = {{"ETag", file->tag}, {"Cache-Control", "no-cache"}};
    if (request.headers.value("if-none-match") == file->tag)
        response.status = 304;
    else
        response.body = file->bytes;
    return response;
}

} // namespace web
