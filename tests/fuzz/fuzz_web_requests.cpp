// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/site.h"

#include "client/requests.h"
#include "fuzz/fuzz_input.h"
#include "web/fake_snapshot.h"

#include <QDir>

namespace {

/// Checks the work that handlers start: no field contains a separator, which would end it in a request.
class CheckingGateway : public web::ServiceGateway
{
public:
    void start(const QString & /*service*/, const web::ServiceWork &work, const web::Reply &reply) override
    {
        if (const auto *scan = std::get_if<web::work::StartScan>(&work))
            require(scan->block >= 512 && scan->block <= 64 * 1024 * 1024);
        if (const auto *acknowledge = std::get_if<web::work::Acknowledge>(&work))
            require(client::isPlainField(acknowledge->serial) && client::isPlainField(acknowledge->kind));
        reply(web::HttpResponse());
    }
};

/// Parses "METHOD TARGET", then "name: value" each on a line, then an empty line and the body.
web::HttpRequest requestOf(const QByteArray &bytes)
{
    const int end = bytes.indexOf("\n\n");
    const QList<QByteArray> lines = bytes.left(end < 0 ? bytes.size() : end).split('\n');
    const int blank = lines.first().indexOf(' ');
    web::HttpRequest request;
    request.method = lines.first().left(blank);
    request.target = lines.first().mid(blank + 1);
    request.peer = QHostAddress(QHostAddress::LocalHost);
    request.headers = {{"host", "127.0.0.1:8643"}, {"content-type", "application/json"}};
    for (const QByteArray &line : lines.mid(1)) {
        const int colon = line.indexOf(':');
        request.headers[line.left(colon).toLower()] = line.mid(colon + 1).trimmed();
    }
    request.body = end < 0 ? QByteArray() : bytes.mid(end + 2);
    return request;
}

void checkResponse(const web::HttpResponse &response)
{
    require(response.status >= 200 && response.status <= 599);
    for (const auto &header : response.headers)
        require(!header.second.contains('\r') && !header.second.contains('\n'));
}

/// A route that starts work has its path in the API; others may hash or read files on threads of a pool.
bool startsWork(const QByteArray &target)
{
    return target.startsWith("/api/v1/services/");
}

} // namespace

/// Input: a request of an operator. The response has complete headers, or work starts whose values are within
/// their limits.
void fuzz(const QByteArray &bytes)
{
    static web::HistoryStore history(QDir::tempPath() + QStringLiteral("/halvex-fuzz-none"));
    static const auto snapshot = [] {
        auto services = std::make_shared<web::Snapshot>();
        services->services = {fakeService(QStringLiteral("files"), fakeData())};
        return services;
    }();
    web::Configuration configuration;
    configuration.users = {{QStringLiteral("ann"), web::Role::Operator, {}}};
    web::Sessions sessions;
    web::LoginLimit limit;
    CheckingGateway gateway;
    const QDateTime now(QDate(2026, 11, 15), QTime(12, 0), Qt::UTC);
    web::HttpRequest request = requestOf(bytes);
    const QByteArray token =
        sessions.start({QStringLiteral("ann"), web::Role::Operator}, {}, now.toSecsSinceEpoch());
    if (!request.headers.contains("cookie"))
        request.headers["cookie"] = "halvex-web-8643=" + token;
    const web::Site site{configuration, 8643, QStringLiteral("1.0"), sessions, limit, history, gateway,
                         snapshot,      now};
    const web::Answer given = web::answer(request, site);
    if (const auto *response = std::get_if<web::HttpResponse>(&given))
        checkResponse(*response);
    else if (const auto *deferred = std::get_if<web::Deferred>(&given);
             deferred && startsWork(request.target))
        deferred->start(checkResponse);
}
