// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "service/service_base.h"

#include <QCoreApplication>

#include <memory>

class HxDaemon;
class localDaemon;
struct ServiceContext;

/// The service that the host runs. Creates the daemon and the local server at the start, and forwards
/// control requests to the daemon.
class HxService : public QtService<QCoreApplication>
{
public:
    HxService(int argc, char **argv, ServiceContext &context);
    ~HxService() override;

    /// Returns, after exec(), whether a worker still hangs in a request to a drive or to a name server, so
    /// that the process has to end without destroying the objects that the worker uses.
    [[nodiscard]] bool hasHungThreads() const { return m_hasHungThreads; }

protected:
    void start() override;
    void stop() override;
    void pause() override;
    void resume() override;
    void processCommand(int code) override;
    int runApplication() override;

private:
    void reportTcpListener();
    void startLocalServer();

    ServiceContext &m_context;
    std::unique_ptr<HxDaemon> m_daemon;
    std::unique_ptr<localDaemon> m_localDaemon;
    bool m_hasHungThreads = false;
};
