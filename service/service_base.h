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

/// The host's output streams, and its wait for another process.
struct ServiceHostIo
{
    std::FILE *out = stdout;
    std::FILE *err = stderr;
    QtServiceController::Sleep sleep; ///< default: sleeps on this thread
};

/// The service host: carries out the command line, and runs the service under the service manager or as a
/// regular application. A process has at most one. Virtual operations are called on the main thread.
class QtServiceBase
{
public:
    enum ServiceFlag {
        Default = 0x00,
        CanBeSuspended = 0x01, ///< accepts pause and continue
    };
    Q_DECLARE_FLAGS(ServiceFlags, ServiceFlag)

    /// The exit code of a start that failed.
    static constexpr int kCouldNotStart = -4;

    enum MessageType { Success = 0, Error, Warning, Information };

    QtServiceBase(const QtServiceBase &) = delete;
    QtServiceBase &operator=(const QtServiceBase &) = delete;
    virtual ~QtServiceBase();

    /// Returns the host of this process; null if there is none.
    [[nodiscard]] static QtServiceBase *instance();

    /// Carries out the command line. Returns the program's exit code.
    int exec();

    /// Writes to the system's event log under the service's name.
    void writeServiceLog(const QString &message, MessageType type = Success, quint32 id = 0,
                         quint16 category = 0, const QByteArray &data = {});

    /// Carries out a control code, or the host's start code. A code before the start or after a stop has no
    /// effect, but a stop always ends the event loop. Must be called on the main thread.
    void carryOut(quint32 code);

protected:
    /// `platform` and the strings of `argv`, as ProgramArguments returns them, must outlive the host. A name
    /// that is too long or holds backslashes is corrected, with a warning.
    QtServiceBase(int argc, char **argv, const QString &name, Platform &platform, ServiceHostIo io = {});

    [[nodiscard]] QString serviceName() const { return m_name; }
    void setServiceDescription(const QString &description) { m_description = description; }
    void setServiceFlags(ServiceFlags flags) { m_flags = flags; }

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

    /// Returns the event loop's result; nullopt if the service could not start.
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
    ServiceState m_state = ServiceState::StartPending;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(QtServiceBase::ServiceFlags)

/// A service that runs in the event loop of an `Application`.
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
