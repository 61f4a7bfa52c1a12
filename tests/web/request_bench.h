// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/fake_snapshot.h"
#include "web/site.h"

#include <QTemporaryDir>
#include <QThreadPool>

/// Stores the work that handlers start.
class FakeGateway : public web::ServiceGateway
{
public:
    void start(const QString &service, const web::ServiceWork &work, const web::Reply &reply) override
    {
        m_service = service;
        m_work = work;
        reply(web::HttpResponse());
    }

    QString m_service;
    std::optional<web::ServiceWork> m_work;
};

/// Passes requests to the handlers of a site with two services, "files" and "silent".
class RequestBench
{
protected:
    void reset()
    {
        m_configuration = web::Configuration();
        m_configuration.hosts = QStringList{"disks.example.org"};
        m_sessions = std::make_unique<web::Sessions>();
        m_limit = std::make_unique<web::LoginLimit>();
        m_gateway = std::make_unique<FakeGateway>();
        m_history = std::make_unique<web::HistoryStore>(m_folder.path());
        m_snapshot.services = {fakeService("files", fakeData()), fakeService("silent", nullptr)};
    }

    web::HttpRequest parse(const QByteArray &text, const QByteArray &cookie = {}) const
    {
        const QList<QByteArray> lines = text.split('\n');
        web::HttpRequest request;
        request.method = lines.first().split(' ').first();
        request.target = lines.first().split(' ').last();
        request.peer = QHostAddress(QHostAddress::LocalHost);
        request.headers = {{"host", "127.0.0.1:8643"}, {"cookie", "a=b; halvex-web-8643=" + cookie}};
        for (const QByteArray &line : lines.mid(1)) {
            const int colon = line.indexOf(':');
            request.headers[line.left(colon).toLower()] = line.mid(colon + 1).trimmed();
        }
        return request;
    }

    web::HttpRequest operatorRequest(const QByteArray &text)
    {
        m_configuration.users = {{"ann", web::Role::Operator, {}}};
        const QByteArray token =
            m_sessions->start({"ann", web::Role::Operator}, {}, m_now.toSecsSinceEpoch());
        return parse(text + "\nContent-Type: application/json", token);
    }

    /// Returns the response, waiting for it if it is delayed, with the whole text of a chunked one.
    web::HttpResponse respond(const web::HttpRequest &request)
    {
        const web::Site site{m_configuration,
                             8643,
                             "1.0",
                             *m_sessions,
                             *m_limit,
                             *m_history,
                             *m_gateway,
                             std::make_shared<web::Snapshot>(m_snapshot),
                             m_now};
        const web::Answer given = web::answer(request, site);
        if (const auto *response = std::get_if<web::HttpResponse>(&given))
            return *response;
        web::HttpResponse response;
        if (const auto *deferred = std::get_if<web::Deferred>(&given)) {
            deferred->start([&response](web::HttpResponse later) { response = std::move(later); });
            QThreadPool::globalInstance()->waitForDone();
        } else if (const auto *chunks = std::get_if<web::ChunkedText>(&given)) {
            while (chunks->next(response.body)) {
            }
        }
        return response;
    }

    QByteArray text(const QByteArray &request, const QByteArray &cookie = {})
    {
        return respond(parse(request, cookie)).body;
    }

    QTemporaryDir m_folder;
    web::Configuration m_configuration;
    std::unique_ptr<web::Sessions> m_sessions;
    std::unique_ptr<web::LoginLimit> m_limit;
    std::unique_ptr<FakeGateway> m_gateway;
    std::unique_ptr<web::HistoryStore> m_history;
    web::Snapshot m_snapshot;
    QDateTime m_now{QDate(2026, 11, 15), QTime(12, 0), Qt::UTC};
};
