// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/platform.h"
#include "platform/service_manager.h"
#include "service/service_controller.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QFlags>
#include <QString>

#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

/// Where the host prints, and how it waits for another process.
struct ServiceHostIo
{
    std::FILE *out = stdout;
    std::FILE *err = stderr;
    QtServiceController::Sleep sleep; ///< really sleeps unless set
};

/// The service host: carries out the command line, and runs the service under the service manager or as a
/// regular application. One object a process. All virtual operations are called on the main thread.
class QtServiceBase
{
public:
    enum ServiceFlag {
        Default = 0x00,
        CanBeSuspended = 0x01, ///< accepts pause and continue
    };
    Q_DECLARE_FLAGS(ServiceFlags, ServiceFlag)

    enum MessageType { Success = 0, Error, Warning, Information };

    QtServiceBase(const QtServiceBase &) = delete;
    QtServiceBase &operator=(const QtServiceBase &) = delete;
    virtual ~QtServiceBase();

    /// The host of this process; null when there is none.
    [[nodiscard]] static QtServiceBase *instance();

    /// Carries out what the command line asks for and returns the program's exit code.
    int exec();

    /// Writes to the system's event log under the service's name.
    void writeServiceLog(const QString &message, MessageType type = Success, quint32 id = 0,
                         quint16 category = 0, const QByteArray &data = {});

    /// Carries out a control code or the host's start code, on the main thread. What comes before the start
    /// or after a stop does nothing; only a stop always ends the event loop.
    void carryOut(quint32 code);

protected:
    /// `platform` and the strings of `argv` must outlive the host. A name that is too long or holds
    /// backslashes is corrected, with a warning.
    QtServiceBase(int argc, char **argv, const QString &name, Platform &platform, ServiceHostIo io = {});

    [[nodiscard]] QString serviceName() const { return m_name; }
    void setServiceDescription(const QString &description) { m_description = description; }
    void setServiceFlags(ServiceFlags flags) { m_flags = flags; }
    void setStartupType(ServiceStartup startup) { m_startup = startup; }

    virtual void start() = 0;
    virtual void stop() = 0;
    virtual void pause() = 0;
    virtual void resume() = 0;
    virtual void processCommand(int code) = 0;
    virtual std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv) = 0;
    virtual int runApplication() = 0;

private:
    int install();
    int uninstall();
    int printStatus();
    int terminate();
    int runAsService();
    int runAsApplication();

    /// The event loop's result; nullopt when the service could not start.
    std::optional<int> run(ServiceManager::RunMode mode);
    void reportStatus(ServiceState state);
    [[nodiscard]] QtServiceController controller() const;
    [[nodiscard]] QString argument(int index) const;

    /// Prints a printf-style format with one %s.
    void print(const char *format, const QString &text) const;
    void printError(const char *format, const QString &text) const;

    Platform &m_platform;
    const ServiceHostIo m_io;
    int m_argc;
    std::vector<char *> m_argv; // m_argc arguments and a null
    const QString m_name;
    QString m_description;
    ServiceFlags m_flags = Default;
    ServiceStartup m_startup = ServiceStartup::Automatic;
    ServiceState m_state = ServiceState::StartPending;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(QtServiceBase::ServiceFlags)

/// A service whose work runs in the event loop of an `Application`.
template <typename Application>
class QtService : public QtServiceBase
{
protected:
    using QtServiceBase::QtServiceBase;

    std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv) override
    {
        return std::make_unique<Application>(argc, argv);
    }

    int runApplication() override { return Application::exec(); }
};
