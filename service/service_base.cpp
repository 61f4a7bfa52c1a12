// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/service_base.h"

#include "platform/program_arguments.h"
#include "platform/stop_signals.h"
#include "service/app_event_filter.h"
#include "service/command_line.h"
#include "service/controller_handler.h"
#include "service/handler_thread.h"
#include "service/logging.h"
#include "service/service_starter.h"
#include "service/system_warning.h"

#include <thread>
#include <utility>

namespace {

constexpr int kFailed = -1;

/// The manager considers a service hung that reports no progress for this time.
constexpr std::chrono::milliseconds kPendingHint(30000);

QtServiceBase *theService = nullptr;

QString checkedName(QString name)
{
    constexpr int kMaxNameLength = 255;
    if (name.size() > kMaxNameLength) {
        qWarning("QtService: 'name' is longer than 255 characters.");
        name.truncate(kMaxNameLength);
    }
    if (name.contains(QLatin1Char('\\'))) {
        qWarning("QtService: 'name' contains backslashes '\\'.");
        name.replace(QLatin1Char('\\'), QChar(0));
    }
    return name;
}

ServiceHostIo withSleep(ServiceHostIo io)
{
    if (!io.sleep)
        io.sleep = [](std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); };
    return io;
}

EventType eventType(QtServiceBase::MessageType type)
{
    switch (type) {
    case QtServiceBase::Success:
        break;
    case QtServiceBase::Error:
        return EventType::Error;
    case QtServiceBase::Warning:
        return EventType::Warning;
    case QtServiceBase::Information:
        return EventType::Information;
    }
    return EventType::Success;
}

QString wording(std::optional<bool> fact, const char *yes, const char *no, const char *unknown)
{
    return QString::fromLatin1(!fact ? unknown : *fact ? yes : no);
}

/// Returns whether a request succeeded, and logs the reason if it did not.
bool succeeded(const ServiceOutcome &outcome)
{
    if (!outcome.ok())
        qCInfo(lcService, "The service manager refused: %s", qUtf8Printable(outcome.text));
    return outcome.ok();
}

} // namespace

QtServiceBase::QtServiceBase(int argc, char **argv, const QString &name, Platform &platform, ServiceHostIo io)
    : m_platform(platform)
    , m_io(withSleep(std::move(io)))
    , m_argc(argc)
    , m_argv(argv, argv + argc)
    , m_name(checkedName(name))
{
    Q_ASSERT(!theService);
    m_argv.push_back(nullptr);
    theService = this;
}

QtServiceBase::~QtServiceBase()
{
    theService = nullptr;
}

QtServiceBase *QtServiceBase::instance()
{
    return theService;
}

int QtServiceBase::exec()
{
    switch (serviceOption(m_argc > 1 ? m_argv[1] : nullptr)) {
    case ServiceOption::Run:
        return runAsService();
    case ServiceOption::Install:
        return install();
    case ServiceOption::Uninstall:
        return uninstall();
    case ServiceOption::Version:
        return printStatus();
    case ServiceOption::Exec:
        return runAsApplication();
    case ServiceOption::Terminate:
        return terminate();
    case ServiceOption::Pause:
        succeeded(controller().pause());
        return 0;
    case ServiceOption::Resume:
        succeeded(controller().resume());
        return 0;
    case ServiceOption::Command:
        succeeded(controller().sendCommand(argument(2).toInt()));
        return 0;
    case ServiceOption::Help:
        print(kUsageText, argument(0));
        return 0;
    }
    return 0;
}

int QtServiceBase::install()
{
    QtServiceController service = controller();
    if (service.isInstalled()) {
        printError("The service %s is already installed\n", m_name);
        return 0;
    }
    const ServiceOutcome outcome = service.install(m_description, argument(2), argument(3));
    if (!outcome.ok()) {
        printError("The service %s could not be installed\n", m_name);
        printError("%s\n", outcome.text);
        return kFailed;
    }
    std::fprintf(m_io.out, "The service %s has been installed under: %s\n", m_name.toLocal8Bit().constData(),
                 m_platform.serviceManager->programPath().toLocal8Bit().constData());
    return 0;
}

int QtServiceBase::uninstall()
{
    QtServiceController service = controller();
    if (!service.isInstalled()) {
        printError("The service %s is not installed\n", m_name);
        return 0;
    }
    if (!succeeded(service.uninstall())) {
        printError("The service %s could not be uninstalled\n", m_name);
        return kFailed;
    }
    print("The service %s has been uninstalled.\n", m_name);
    return 0;
}

int QtServiceBase::printStatus()
{
    const ServiceView view = controller().view();
    std::fprintf(m_io.out, "The service\n\t%s\n\t%s\n\n", m_name.toLocal8Bit().constData(),
                 argument(0).toLocal8Bit().constData());
    print("%s", wording(view.isInstalled, "is installed", "is not installed", "may be installed"));
    print(" and %s\n\n", wording(view.isRunning, "running", "not running", "may be running"));
    if (!view.obstacle.isEmpty())
        printError("The state of the service is not fully known: %s\n", view.obstacle);
    return 0;
}

int QtServiceBase::terminate()
{
    const ServiceOutcome outcome = controller().stop();
    if (!outcome.ok())
        systemWarning("The service could not be stopped.", outcome.text);
    return 0;
}

int QtServiceBase::runAsService()
{
    if (run(ServiceManager::RunMode::Service))
        return 0;
    printError("The service %s could not start\n", m_name);
    return kCouldNotStart;
}

int QtServiceBase::runAsApplication()
{
    m_argv.erase(m_argv.begin() + 1);
    --m_argc;
    const int result = *run(ServiceManager::RunMode::Application);
    if (result == -1)
        systemWarning("The service could not be executed.", qt_error_string());
    return result;
}

std::optional<int> QtServiceBase::run(ServiceManager::RunMode mode)
{
    ServiceManager &manager = *m_platform.serviceManager;
    catchStopSignals();
    std::unique_ptr<QCoreApplication> application = makeApplication(m_argc, m_argv.data());
    std::unique_ptr<QObject> stopWatcher = watchStopSignals([this] { carryOut(service_control::kStop); });
    QtServiceControllerHandler handler;
    HandlerThread dispatcher(manager, m_name, mode, handler);
    QtServiceAppEventFilter eventFilter;
    QtServiceStarter starter(*this);

    if (mode == ServiceManager::RunMode::Application) {
        QMetaObject::invokeMethod(&starter, "slotStart", Qt::QueuedConnection);
        dispatcher.start();
    } else {
        application->installNativeEventFilter(&eventFilter);
        dispatcher.start();
        const ServiceOutcome outcome = dispatcher.waitUntilStarted();
        if (!outcome.ok()) {
            dispatcher.wait();
            if (outcome.error != system_error::kNotStartedByManager)
                qWarning("The Service failed to start [%s]", qUtf8Printable(outcome.text));
            return std::nullopt;
        }
    }

    const int result = runApplication();

    // Reported last: the manager may start the service again at once.
    handler.close();
    stopWatcher.reset();
    application.reset();
    m_platform.instanceLock.reset();
    reportStatus(ServiceState::Stopped);
    dispatcher.wait();
    return result;
}

void QtServiceBase::carryOut(quint32 code)
{
    const bool isStarted = m_state == ServiceState::Running || m_state == ServiceState::Paused;
    if (code == QtServiceControllerHandler::kStartCode && m_state == ServiceState::StartPending) {
        reportStatus(ServiceState::StartPending);
        start();
        reportStatus(ServiceState::Running);
    } else if (code == service_control::kStop && m_state != ServiceState::StopPending) {
        reportStatus(ServiceState::StopPending);
        if (isStarted)
            stop();
        QCoreApplication::quit();
    } else if (code == service_control::kPause && isStarted) {
        reportStatus(ServiceState::PausePending);
        pause();
        reportStatus(ServiceState::Paused);
    } else if (code == service_control::kContinue && isStarted) {
        reportStatus(ServiceState::ContinuePending);
        resume();
        reportStatus(ServiceState::Running);
    } else if (service_control::isUserCode(code) && isStarted) {
        processCommand(int(code - service_control::kFirstUserCode));
        reportStatus(m_state);
    }
}

void QtServiceBase::reportStatus(ServiceState state)
{
    m_state = state;
    ServiceStatus status;
    status.state = state;
    if (state == ServiceState::Running || state == ServiceState::Paused) {
        status.acceptedControls = accepted_controls::kStop;
        if (m_flags & CanBeSuspended)
            status.acceptedControls |= accepted_controls::kPauseContinue;
    } else if (state != ServiceState::Stopped) {
        status.waitHint = kPendingHint;
    }
    m_platform.serviceManager->reportStatus(status);
}

void QtServiceBase::writeServiceLog(const QString &message, MessageType type, quint32 id, quint16 category,
                                    const QByteArray &data)
{
    m_platform.eventLog->report({m_name, eventType(type), category, id, message, data});
}

QtServiceController QtServiceBase::controller() const
{
    return {*m_platform.serviceManager, m_name, m_io.sleep};
}

QString QtServiceBase::argument(int index) const
{
    return index < m_argc ? decodeArgument(m_argv[std::size_t(index)]) : QString();
}

void QtServiceBase::print(const char *format, const QString &text) const
{
    std::fprintf(m_io.out, format, text.toLocal8Bit().constData());
}

void QtServiceBase::printError(const char *format, const QString &text) const
{
    std::fprintf(m_io.err, format, text.toLocal8Bit().constData());
}
