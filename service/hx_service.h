// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "service/service_base.h"

#include <QCoreApplication>

#include <memory>

class HxDaemon;
class localDaemon;
struct ServiceContext;

/// The service as the host runs it: builds the daemon and the local server when it starts, and forwards
/// control requests to the daemon.
class HxService : public QtService<QCoreApplication>
{
public:
    HxService(int argc, char **argv, ServiceContext &context);
    ~HxService() override;

    /// After exec(): whether a worker still hangs in a request to a drive, so that the process has to end
    /// without destroying what the worker uses.
    [[nodiscard]] bool leftThreadsBehind() const { return m_leftThreadsBehind; }

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
    bool m_leftThreadsBehind = false;
};
