// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/hx_service.h"

#include "config/settings.h"
#include "platform/platform.h"
#include "platform/program_name.h"
#include "protocol/local_daemon.h"
#include "service/hx_daemon.h"
#include "service/service_context.h"

HxService::HxService(int argc, char **argv, ServiceContext &context)
    : QtService<QCoreApplication>(argc, argv, QString::fromLatin1(kServiceName), context.platform)
    , m_context(context)
{
    setServiceDescription(QStringLiteral("Halvex Local Service"));
    setServiceFlags(CanBeSuspended);
}

HxService::~HxService() = default;

void HxService::start()
{
    m_daemon = std::make_unique<HxDaemon>(m_context, QCoreApplication::instance());
    reportTcpListener();
    startLocalServer();
}

void HxService::reportTcpListener()
{
    const QString port = QString::number(m_daemon->serverPort());
    const Settings &settings = m_context.settings;
    if (m_daemon->isListening())
        writeServiceLog(QStringLiteral("Binding to port: %1. Path to service: %2. Version: %3")
                            .arg(port)
                            .arg(settings.programDirectory)
                            .arg(settings.versionText));
    else
        writeServiceLog(
            QStringLiteral("Failed to bind to port: %1. Version: %2").arg(port).arg(settings.versionText));
}

void HxService::startLocalServer()
{
    const Settings &settings = m_context.settings;
    m_localDaemon = std::make_unique<localDaemon>(m_daemon->consoles(), QCoreApplication::instance());
    if (m_localDaemon->listen(m_context.platform.localSocketName))
        writeServiceLog(QStringLiteral("Local server started. Path to service: %2. Version: %3")
                            .arg(settings.programDirectory)
                            .arg(settings.versionText));
    else
        writeServiceLog(
            QStringLiteral("Unable to start the local server. Version: %2").arg(settings.versionText), Error);
}

// The daemon's workers and sockets need the application while they end.
int HxService::runApplication()
{
    const int result = QtService<QCoreApplication>::runApplication();
    m_localDaemon.reset();
    m_hasHungThreads = m_daemon && !m_daemon->endWorkers();
    m_daemon.reset();
    return result;
}

// The host leaves the event loop itself.
void HxService::stop()
{
    m_daemon->pause();
}

void HxService::pause()
{
    m_daemon->pause();
}

void HxService::resume()
{
    m_daemon->resume();
}

// Every custom command requests a drive count.
void HxService::processCommand(int /*code*/)
{
    m_daemon->scheduleDriveCount();
}
