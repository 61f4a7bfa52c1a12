// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/configuration.h"
#include "web/history_recorder.h"
#include "web/history_store.h"
#include "web/http_server.h"
#include "web/poller.h"
#include "web/service_work.h"
#include "web/sessions.h"
#include "web/snapshot_source.h"
#include "wire/result.h"

#include <QObject>

#include <memory>

namespace web {

/// The composition: owns poller, history and server, and connects them.
class Application : public QObject, public ServiceGateway
{
    Q_OBJECT
public:
    Application(Configuration configuration, const QString &stateFolder);
    ~Application() override;

    /// Starts to poll and to serve.
    [[nodiscard]] Result<void> start();

    /// Returns the address of the page, for a person.
    [[nodiscard]] QString url() const;

    void start(const QString &service, const ServiceWork &work, const Reply &reply) override;

private:
    [[nodiscard]] Answer handle(const HttpRequest &request);
    void take(const std::shared_ptr<const ServiceSnapshot> &before,
              const std::shared_ptr<const ServiceSnapshot> &after);
    void startAction(const QString &service, const ServiceWork &work, const Reply &reply);

    const Configuration m_configuration;
    Sessions m_sessions;
    LoginLimit m_loginLimit;
    SnapshotSource m_snapshots;
    HistoryStore m_history;
    std::unique_ptr<HistoryRecorder> m_recorder;
    Poller m_poller;
    int m_actions = 0;   ///< that run now
    HttpServer m_server; ///< its threads use all others
};

} // namespace web
