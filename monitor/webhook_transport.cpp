// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/webhook_transport.h"

#include "monitor/mail_run.h"

#include <QJsonDocument>
#include <QNetworkReply>
#include <QSslError>
#include <QStringList>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr qint64 kReadBufferSize = 64 * 1024;

/// A body that can be read once: the access manager would otherwise send it again, as a second alert, when
/// the peer closes the connection without an answer.
class OneTimeBody : public QIODevice
{
public:
    OneTimeBody(QByteArray bytes, QObject *parent)
        : QIODevice(parent)
        , m_bytes(std::move(bytes))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] qint64 bytesAvailable() const override { return m_bytes.size(); }
    bool seek(qint64 /*position*/) override { return false; }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (m_bytes.isEmpty())
            return -1;
        const int size = int(std::min(maxSize, qint64(m_bytes.size())));
        std::memcpy(data, m_bytes.constData(), std::size_t(size));
        m_bytes.remove(0, size);
        return size;
    }
    qint64 writeData(const char * /*data*/, qint64 /*size*/) override { return -1; }

private:
    QByteArray m_bytes;
};

QNetworkRequest requestTo(const QUrl &url, const QHostAddress &address, int bodySize)
{
    QUrl target = url.adjusted(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    target.setHost(address.toString());
    QNetworkRequest request(target);
    // Without waiting to be asked: the body could not be sent a second time.
    if (!url.userName().isEmpty())
        request.setRawHeader("Authorization",
                             "Basic " + url.userInfo(QUrl::FullyDecoded).toUtf8().toBase64());
    const QString host = url.host().contains(u':') ? QLatin1Char('[') + url.host() + QLatin1Char(']')
                                                   : url.host(QUrl::FullyEncoded);
    const QString port = url.port() < 0 ? QString() : QLatin1Char(':') + QString::number(url.port());
    request.setRawHeader("Host", (host + port).toLatin1());
    request.setPeerVerifyName(url.host(QUrl::FullyEncoded));
    request.setRawHeader("Connection", "close");
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Halvex Service"));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setHeader(QNetworkRequest::ContentLengthHeader, bodySize);
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    return request;
}

/// Returns a text of our own: the library's contains the URL.
QString errorText(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("connection refused");
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ContentReSendError:
        return QStringLiteral("the endpoint closed the connection without an answer");
    case QNetworkReply::SslHandshakeFailedError:
        return QStringLiteral("the TLS handshake failed");
    default:
        return QStringLiteral("network error %1").arg(int(error));
    }
}

} // namespace

WebhookTransport::WebhookTransport(QUrl url, std::chrono::milliseconds timeout)
    : m_url(std::move(url))
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(timeout);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        finish(Error{QStringLiteral("no answer within %1 s").arg(m_timer.interval() / 1000)});
    });
    connect(&m_lookup, &HostLookup::finished, this, [this](const QHostInfo &info) {
        m_addresses = info.addresses();
        if (m_addresses.isEmpty())
            finish(Error{QStringLiteral("the host name cannot be resolved")});
        else
            post();
    });
}

WebhookTransport::~WebhookTransport()
{
    if (m_reply)
        m_reply->disconnect(this);
}

void WebhookTransport::send(const OutboxEntry &entry, Done done)
{
    m_done = std::move(done);
    m_body = QJsonDocument(entry.document).toJson(QJsonDocument::Compact);
    m_tlsErrors.clear();
    m_timer.start();
    m_lookup.start(m_url.host(QUrl::FullyEncoded));
}

void WebhookTransport::post()
{
    const QNetworkRequest request = requestTo(m_url, m_addresses.takeFirst(), m_body.size());
    auto *const body = new OneTimeBody(m_body, nullptr);
    m_reply = m_manager.post(request, body);
    body->setParent(m_reply);
    m_reply->setReadBufferSize(kReadBufferSize);
    // Queued, because an access manager does not expect a reply to be aborted in its signals.
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &WebhookTransport::checkStatus,
            Qt::QueuedConnection);
    connect(m_reply, &QNetworkReply::finished, this, &WebhookTransport::replyFinished);
    connect(m_reply, &QNetworkReply::sslErrors, this, [this](const QList<QSslError> &errors) {
        QStringList texts;
        for (const QSslError &error : errors)
            texts << error.errorString();
        m_tlsErrors = printableText(texts.join(QStringLiteral(", ")));
    });
}

/// The status decides; the rest of the answer is not read.
void WebhookTransport::checkStatus()
{
    if (!m_reply)
        return;
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status < 200)
        return;
    if (status < 300)
        finish({});
    else
        finish(Error{QStringLiteral("the endpoint answered with status %1").arg(status)});
}

void WebhookTransport::replyFinished()
{
    if (m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() >= 200) {
        checkStatus();
        return;
    }
    const auto error = m_reply->error();
    const bool neverConnected =
        error == QNetworkReply::ConnectionRefusedError || error == QNetworkReply::UnknownNetworkError;
    if (neverConnected && !m_addresses.isEmpty()) {
        m_reply->deleteLater();
        post();
        return;
    }
    finish(Error{m_tlsErrors.isEmpty() ? errorText(error) : QStringLiteral("TLS: ") + m_tlsErrors});
}

void WebhookTransport::finish(const Result<void> &result)
{
    m_timer.stop();
    m_lookup.cancel();
    m_addresses.clear();
    if (QNetworkReply *const reply = std::exchange(m_reply, nullptr)) {
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
    if (const Done done = std::exchange(m_done, nullptr))
        done(result);
}
