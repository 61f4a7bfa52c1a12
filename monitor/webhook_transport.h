// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/alert_channel.h"
#include "monitor/host_lookup.h"

#include <QNetworkAccessManager>
#include <QUrl>

class QNetworkReply;

/// Posts messages as JSON to an http or https URL. Any status 2xx is success; redirects are not followed, and
/// a certificate must be valid. The name is looked up here and not by the access manager, whose lookups a
/// stop of the service would wait for.
class WebhookTransport : public Transport
{
    Q_OBJECT

public:
    explicit WebhookTransport(QUrl url, std::chrono::milliseconds timeout = std::chrono::seconds(30));
    ~WebhookTransport() override;

    void send(const OutboxEntry &entry, Done done) override;

private:
    void post();
    void checkStatus();
    void replyFinished();
    void finish(const Result<void> &result);

    const QUrl m_url;
    QNetworkAccessManager m_manager;
    HostLookup m_lookup;
    QTimer m_timer;
    QList<QHostAddress> m_addresses; ///< of the host, not yet tried
    QByteArray m_body;
    QString m_tlsErrors;
    QNetworkReply *m_reply = nullptr; ///< of the attempt in progress
    Done m_done;
};
