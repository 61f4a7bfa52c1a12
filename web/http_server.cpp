// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/http_server.h"

#include "web/admission.h"
#include "web/connection_watch.h"
#include "web/event_streams.h"
#include "web/host.h"
#include "web/http_responses.h"
#include "web/logging.h"
#include "web/socket_address.h"
#include "web/waiting_requests.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <microhttpd.h>

#include <cerrno>
#include <mutex>
#include <utility>
#include <vector>

namespace web {

namespace {

constexpr unsigned kMostConnections = 200;
constexpr unsigned kThreads = 4;
constexpr size_t kConnectionMemory = size_t{24} * 1024;
constexpr size_t kMostHeaderBytes = size_t{8} * 1024;
constexpr int kMostBodyBytes = 64 * 1024;
constexpr unsigned kInactivitySeconds = 60;
constexpr int kWatchIntervalMs = 1000;
constexpr int kKeepAliveSeconds = 15;

quintptr socketOf(MHD_Connection *connection)
{
    const auto *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    return info ? quintptr(info->connect_fd) : 0;
}

QHostAddress peerOf(MHD_Connection *connection)
{
    const auto *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    return info ? addressOf(info->client_addr) : QHostAddress();
}

/// One request from its first line to the end of its response.
struct Exchange
{
    HttpRequest request;
    bool hasHeaders = false;
    bool isTooLarge = false;
    std::shared_ptr<WaitingRequest> waiting;
};

MHD_Result addHeader(void *cls, MHD_ValueKind, const char *name, const char *value)
{
    auto &headers = static_cast<HttpRequest *>(cls)->headers;
    const QByteArray key = QByteArray(name).toLower();
    const QByteArray text(value ? value : "");
    if (headers.contains(key)) // a list written as several headers
        headers[key] += (key == "cookie" ? "; " : ", ") + text;
    else
        headers.insert(key, text);
    return MHD_YES;
}

} // namespace

class HttpServer::Daemon : public QObject
{
public:
    Daemon(const Configuration &configuration, Handler handler)
        : m_configuration(configuration)
        , m_handler(std::move(handler))
        , m_watch(configuration.trustedProxies, configuration.tlsCertificate.isEmpty())
    {
        m_clock.start();
        m_timer.setInterval(kWatchIntervalMs);
        connect(&m_timer, &QTimer::timeout, this, &Daemon::keepWatch);
    }

    ~Daemon() override { stop(); }
    Q_DISABLE_COPY(Daemon)

    Result<void> start();
    void stop();
    [[nodiscard]] quint16 port() const
    {
        const std::lock_guard<std::mutex> lock(m_portMutex);
        return m_port;
    }
    EventStreams &streams() { return m_streams; }

private:
    [[nodiscard]] Result<void> readTls(std::vector<MHD_OptionItem> &options);
    [[nodiscard]] unsigned flags() const;
    [[nodiscard]] Error startFailure() const;
    void keepWatch();
    void notifyConnection(MHD_Connection *connection, MHD_ConnectionNotificationCode code);
    MHD_Result access(MHD_Connection *connection, const char *method, const char *data, size_t *size,
                      Exchange &exchange);
    MHD_Result takeHeaders(MHD_Connection *connection, const char *method, Exchange &exchange);
    MHD_Result respond(MHD_Connection *connection, Exchange &exchange);
    MHD_Result send(MHD_Connection *connection, const HttpResponse &response);
    MHD_Result send(MHD_Connection *connection, unsigned status, MHD_Response *response);
    MHD_Result openStream(MHD_Connection *connection, const EventStream &stream);
    void complete(MHD_Connection *connection, Exchange *exchange);

    const Configuration &m_configuration;
    Handler m_handler;
    ConnectionWatch m_watch;
    EventStreams m_streams;
    WaitingRequests m_waiting;
    QByteArray m_certificate;
    QByteArray m_key;
    QElapsedTimer m_clock;
    QTimer m_timer;
    int m_ticks = 0;
    MHD_Daemon *m_daemon = nullptr;
    mutable std::mutex m_portMutex;
    quint16 m_port = 0; ///< the one that is bound
};

Result<void> HttpServer::Daemon::readTls(std::vector<MHD_OptionItem> &options)
{
    if (m_configuration.tlsCertificate.isEmpty())
        return {};
    const std::pair<QString, QByteArray *> files[] = {{m_configuration.tlsCertificate, &m_certificate},
                                                      {m_configuration.tlsKey, &m_key}};
    for (const auto &[path, bytes] : files) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return Error{QStringLiteral("tls: %1: %2").arg(path, file.errorString())};
        *bytes = file.readAll();
    }
    options = {{MHD_OPTION_HTTPS_MEM_CERT, 0, m_certificate.data()},
               {MHD_OPTION_HTTPS_MEM_KEY, 0, m_key.data()}};
    return {};
}

unsigned HttpServer::Daemon::flags() const
{
    unsigned flags = MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD | MHD_ALLOW_SUSPEND_RESUME;
    if (m_configuration.listen.address.protocol() != QAbstractSocket::IPv4Protocol)
        flags |= m_configuration.listen.address == QHostAddress(QHostAddress::AnyIPv6) ? MHD_USE_DUAL_STACK
                                                                                       : MHD_USE_IPv6;
    if (!m_certificate.isEmpty())
        flags |= MHD_USE_TLS;
    return flags;
}

Error HttpServer::Daemon::startFailure() const
{
    const QString reason = host::lastSocketError();
    return Error{QStringLiteral("cannot listen on %1 port %2: %3")
                     .arg(m_configuration.listen.address.toString())
                     .arg(m_configuration.listen.port)
                     .arg(reason.isEmpty() ? QStringLiteral("certificate or key is not valid") : reason)};
}

Result<void> HttpServer::Daemon::start()
{
    std::vector<MHD_OptionItem> tls;
    if (auto read = readTls(tls); !read)
        return read;
    tls.push_back({MHD_OPTION_END, 0, nullptr});
    const QByteArray address = socketAddress(m_configuration.listen.address, m_configuration.listen.port);
    errno = 0;
    const std::lock_guard<std::mutex> lock(m_portMutex); // a request may arrive before the port is known here
    m_daemon = MHD_start_daemon(
        flags(), 0,
        [](void *cls, const sockaddr *peer, socklen_t) {
            return static_cast<Daemon *>(cls)->m_watch.mayConnect(addressOf(peer)) ? MHD_YES : MHD_NO;
        },
        this,
        [](void *cls, MHD_Connection *connection, const char *, const char *method, const char *,
           const char *data, size_t *size, void **exchange) {
            return static_cast<Daemon *>(cls)->access(connection, method, data, size,
                                                      *static_cast<Exchange *>(*exchange));
        },
        this, MHD_OPTION_SOCK_ADDR, address.constData(), MHD_OPTION_THREAD_POOL_SIZE, kThreads,
        MHD_OPTION_CONNECTION_LIMIT, kMostConnections, MHD_OPTION_CONNECTION_TIMEOUT, kInactivitySeconds,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory, MHD_OPTION_URI_LOG_CALLBACK,
        +[](void *, const char *uri, MHD_Connection *) -> void * {
            auto *exchange = new Exchange;
            exchange->request.target = uri;
            return exchange;
        },
        nullptr, MHD_OPTION_NOTIFY_COMPLETED,
        +[](void *cls, MHD_Connection *connection, void **exchange, MHD_RequestTerminationCode) {
            static_cast<Daemon *>(cls)->complete(connection, static_cast<Exchange *>(*exchange));
        },
        this, MHD_OPTION_NOTIFY_CONNECTION,
        +[](void *cls, MHD_Connection *connection, void **, MHD_ConnectionNotificationCode code) {
            static_cast<Daemon *>(cls)->notifyConnection(connection, code);
        },
        this, MHD_OPTION_ARRAY, tls.data(), MHD_OPTION_END);
    if (!m_daemon)
        return startFailure();
    m_port = MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_BIND_PORT)->port;
    m_timer.start();
    return {};
}

void HttpServer::Daemon::stop()
{
    if (!m_daemon)
        return;
    m_timer.stop();
    m_waiting.endAll();
    m_streams.endAll();
    MHD_stop_daemon(std::exchange(m_daemon, nullptr));
}

void HttpServer::Daemon::keepWatch()
{
    m_watch.endOverdue(m_clock.elapsed());
    if (++m_ticks % kKeepAliveSeconds == 0)
        m_streams.keepAlive();
}

void HttpServer::Daemon::notifyConnection(MHD_Connection *connection, MHD_ConnectionNotificationCode code)
{
    const quintptr socket = socketOf(connection);
    if (code != MHD_CONNECTION_NOTIFY_STARTED)
        m_watch.closed(socket);
    else if (!m_watch.opened(socket, peerOf(connection), m_clock.elapsed()))
        host::endConnection(socket, {});
}

/// Called when the headers are complete, for each part of the body, at its end, and after each suspension.
MHD_Result HttpServer::Daemon::access(MHD_Connection *connection, const char *method, const char *data,
                                      size_t *size, Exchange &exchange)
{
    if (!std::exchange(exchange.hasHeaders, true))
        return takeHeaders(connection, method, exchange);
    if (*size > 0) {
        exchange.isTooLarge =
            exchange.isTooLarge || exchange.request.body.size() + qint64(*size) > kMostBodyBytes;
        if (!exchange.isTooLarge)
            exchange.request.body.append(data, int(*size));
        *size = 0;
        return MHD_YES;
    }
    if (exchange.waiting) {
        const auto response = exchange.waiting->takeResponse();
        return response ? send(connection, *response) : MHD_YES;
    }
    m_watch.enter(socketOf(connection), ConnectionWatch::Phase::Answering, m_clock.elapsed());
    if (exchange.isTooLarge)
        return send(connection, errorResponse(413, QStringLiteral("the body is larger than 64 KiB")));
    return respond(connection, exchange);
}

MHD_Result HttpServer::Daemon::takeHeaders(MHD_Connection *connection, const char *method, Exchange &exchange)
{
    m_watch.enter(socketOf(connection), ConnectionWatch::Phase::Body, m_clock.elapsed());
    HttpRequest &request = exchange.request;
    request.method = method;
    MHD_get_connection_values(connection, MHD_HEADER_KIND, &addHeader, &request);
    const auto *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE);
    if (info && info->header_size > kMostHeaderBytes)
        return send(connection, errorResponse(431, QStringLiteral("the headers are larger than 8 KiB")));
    if (request.headers.value("content-length").toLongLong() > kMostBodyBytes)
        return send(connection, errorResponse(413, QStringLiteral("the body is larger than 64 KiB")));
    const QHostAddress peer = peerOf(connection);
    const auto &proxies = m_configuration.trustedProxies;
    request.peer = clientAddress(peer, request.headers.value("x-forwarded-for"), proxies);
    request.isSecure = !m_certificate.isEmpty() ||
                       (proxies.contains(peer) && request.headers.value("x-forwarded-proto") == "https");
    return MHD_YES;
}

MHD_Result HttpServer::Daemon::respond(MHD_Connection *connection, Exchange &exchange)
{
    const Answer answer = m_handler(exchange.request);
    if (const auto *response = std::get_if<HttpResponse>(&answer))
        return send(connection, *response);
    if (const auto *stream = std::get_if<EventStream>(&answer))
        return openStream(connection, *stream);
    if (const auto *text = std::get_if<ChunkedText>(&answer))
        return send(connection, MHD_HTTP_OK, chunkedResponse(*text));
    exchange.waiting = m_waiting.start(connection, std::get<Deferred>(answer));
    return exchange.waiting ? MHD_YES : MHD_NO;
}

MHD_Result HttpServer::Daemon::send(MHD_Connection *connection, const HttpResponse &response)
{
    return send(connection, unsigned(response.status), plainResponse(response));
}

/// Takes the ownership of `response`, which may be null.
MHD_Result HttpServer::Daemon::send(MHD_Connection *connection, unsigned status, MHD_Response *response)
{
    if (!response)
        return MHD_NO;
    const MHD_Result result = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return result;
}

MHD_Result HttpServer::Daemon::openStream(MHD_Connection *connection, const EventStream &stream)
{
    MHD_Response *response = m_streams.open(connection, stream.isAllowed);
    if (!response)
        return MHD_NO;
    addStreamHeaders(response);
    return send(connection, MHD_HTTP_OK, response);
}

void HttpServer::Daemon::complete(MHD_Connection *connection, Exchange *exchange)
{
    m_watch.enter(socketOf(connection), ConnectionWatch::Phase::Idle, m_clock.elapsed());
    if (exchange && exchange->waiting)
        m_waiting.remove(exchange->waiting);
    delete exchange;
}

HttpServer::HttpServer(const Configuration &configuration, Handler handler)
    : m_daemon(std::make_unique<Daemon>(configuration, std::move(handler)))
{}

HttpServer::~HttpServer() = default;

Result<void> HttpServer::start()
{
    return m_daemon->start();
}

void HttpServer::stop()
{
    m_daemon->stop();
}

quint16 HttpServer::port() const
{
    return m_daemon->port();
}

void HttpServer::publish(const QString &name)
{
    m_daemon->streams().publish(name.toUtf8());
}

} // namespace web
