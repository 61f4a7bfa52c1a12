// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
// The tables are made of texts: let them be plain literals.
#undef QT_NO_CAST_FROM_ASCII

#include "platform/event_log.h"
#include "platform/service_manager.h"
#include "rows.h"
#include "service/command_line.h"
#include "service/service_base.h"

#include <QMutex>
#include <QThread>
#include <QWaitCondition>

#include <functional>

namespace {

const ServiceOutcome kDenied{system_error::kAccessDenied, QStringLiteral("Access is denied")};
const ServiceOutcome kFromConsole{system_error::kNotStartedByManager, QStringLiteral("from a console")};

/// How a service manager answers.
struct Script
{
    explicit Script(bool isInstalled = true, const ServiceOutcome &outcomeOfRequests = {},
                    const ControlOutcome &outcomeOfControls = {true, {}, ServiceState::Stopped},
                    const QVector<ServiceState> &statesToTell = {})
        : installed(isInstalled)
        , outcome(outcomeOfRequests)
        , controlling(outcomeOfControls)
        , states(statesToTell)
    {}

    bool installed;
    ServiceOutcome outcome; ///< of every request but a control
    ControlOutcome controlling;
    QVector<ServiceState> states; ///< answered one a question, the last one again and again
    QVector<quint32> controls;    ///< what the dispatcher delivers after the start
};

/// A service manager that answers as it is told and keeps what it was asked.
class FakeServiceManager : public ServiceManager
{
public:
    explicit FakeServiceManager(Script script)
        : m_script(std::move(script))
    {}

    QStringList requests;           ///< the dispatcher's own apart
    QVector<bool> carriedOut;       ///< the client's answers to the controls
    QVector<ServiceStatus> reports; ///< guarded by m_mutex until the dispatcher has ended

    [[nodiscard]] QString programPath() const override { return "/opt/halvex/service"; }
    [[nodiscard]] bool isInstalled(const QString &) override { return m_script.installed; }

    ServiceOutcome install(const ServiceDefinition &service) override
    {
        const QString startup = service.startup == ServiceStartup::Automatic ? "automatic" : "manual";
        const QStringList definition{service.name,    service.description, service.programPath,
                                     service.account, service.password,    startup};
        requests << "install|" + definition.join('|');
        return m_script.outcome;
    }

    ServiceOutcome uninstall(const QString &name) override
    {
        requests << "uninstall|" + name;
        return m_script.outcome;
    }

    ServiceOutcome start(const QString &, const QStringList &) override { return m_script.outcome; }

    [[nodiscard]] std::optional<ServiceState> state(const QString &) override
    {
        if (m_script.states.isEmpty())
            return std::nullopt;
        return m_script.states.size() > 1 ? m_script.states.takeFirst() : m_script.states.first();
    }

    ControlOutcome control(const QString &, quint32 code) override
    {
        requests << "control|" + QString::number(code);
        return m_script.controlling;
    }

    ServiceOutcome runDispatcher(const QString &, RunMode mode, ServiceClient &client) override
    {
        if (!m_script.outcome.ok())
            return m_script.outcome;
        if (mode == RunMode::Service)
            client.started({});
        for (const quint32 code : qAsConst(m_script.controls))
            carriedOut << client.controlRequested(code);
        QMutexLocker lock(&m_mutex);
        while (reports.isEmpty() || reports.last().state != ServiceState::Stopped)
            m_reported.wait(&m_mutex);
        return {};
    }

    void reportStatus(const ServiceStatus &status) override
    {
        const QMutexLocker lock(&m_mutex);
        reports << status;
        m_reported.wakeAll();
    }

private:
    Script m_script;
    QMutex m_mutex;
    QWaitCondition m_reported;
};

class RecordingEventLog : public EventLog
{
public:
    QVector<Event> events;

    void report(const Event &event) override { events << event; }
};

class RecordingService : public QtService<QCoreApplication>
{
public:
    RecordingService(std::vector<char *> &argv, Platform &platform, ServiceHostIo io)
        : QtService(int(argv.size()), argv.data(), "Halvex Service", platform, std::move(io))
    {
        setServiceDescription("Halvex Local Service");
        setServiceFlags(CanBeSuspended);
    }

    QStringList calls;
    std::function<void()> atStart = [] {};
    bool leavesAtOnce = false; ///< the event loop never runs

protected:
    void start() override
    {
        record("start");
        atStart();
    }
    void stop() override { record("stop"); }
    void pause() override { record("pause"); }
    void resume() override { record("resume"); }
    void processCommand(int code) override { record("command " + QString::number(code)); }
    int runApplication() override { return leavesAtOnce ? 0 : QtService::runApplication(); }

private:
    void record(const QString &call)
    {
        const bool isMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        calls << call + (isMainThread ? "" : " on a foreign thread");
    }
};

QStringList warnings;

void keepWarning(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtWarningMsg)
        warnings << text;
}

/// A host with everything around it: arguments, fake manager, event log, and streams that can be read back.
struct Bench
{
    explicit Bench(const QString &options, const Script &script = Script())
        : manager(new FakeServiceManager(script))
        , eventLog(new RecordingEventLog)
        , arguments(("prog " + options).toLocal8Bit().trimmed().split(' '))
    {
        platform.serviceManager.reset(manager);
        platform.eventLog.reset(eventLog);
        for (QByteArray &argument : arguments)
            argv.push_back(argument.data());
        warnings.clear();
        qInstallMessageHandler(keepWarning);
        const auto sleep = [this](std::chrono::milliseconds duration) {
            manager->requests << "sleep|" + QString::number(duration.count());
        };
        service = std::make_unique<RecordingService>(argv, platform, ServiceHostIo{out, err, sleep});
    }
    ~Bench()
    {
        qInstallMessageHandler(nullptr);
        std::fclose(out);
        std::fclose(err);
    }
    Bench(const Bench &) = delete;
    Bench &operator=(const Bench &) = delete;

    /// What was printed, complained about and warned of.
    [[nodiscard]] QString said() const
    {
        QString text = printed(out);
        if (const QString complaint = printed(err); !complaint.isEmpty())
            text += "error: " + complaint;
        for (const QString &warning : qAsConst(warnings))
            text += "warning: " + warning + '\n';
        return text;
    }

    static QString printed(std::FILE *stream)
    {
        QByteArray text(8192, '\0');
        std::rewind(stream);
        return QString::fromLocal8Bit(text,
                                      int(std::fread(text.data(), 1, std::size_t(text.size()), stream)));
    }

    FakeServiceManager *manager; // the platform's
    RecordingEventLog *eventLog; // the platform's
    Platform platform;
    QList<QByteArray> arguments;
    std::vector<char *> argv;
    std::FILE *out = std::tmpfile();
    std::FILE *err = std::tmpfile();
    std::unique_ptr<RecordingService> service;
};

} // namespace

Q_DECLARE_METATYPE(Script)

class TestServiceHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void options_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<Script>("script");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("requests"); // to the manager, one behind the other
        QTest::addColumn<QString>("said");
        const QString it = "The service Halvex Service ";
        const QString error = "error: " + it;
        const Script normal;
        const Script missing{false};
        const Script denied{true, kDenied};

        const QString install = "install|Halvex Service|Halvex Local Service|/opt/halvex/service|";
        const QString local = install + "||automatic"; // under the system's own account
        const QString done = it + "has been installed under: /opt/halvex/service\n";
        row("install", "-i", missing, 0, local, done);
        row("account", "-i op secret", missing, 0, install + ".\\op|secret|automatic", done);
        row("account of a domain", "-i LAB\\op", missing, 0, install + "LAB\\op||automatic", done);
        row("local system", "-i LocalSystem secret", missing, 0, local, done);
        row("other case", "-i localsystem", missing, 0, install + ".\\localsystem||automatic", done);
        row("refused", "-install", Script(false, kDenied), -1, local, error + "could not be installed\n");
        row("installed already", "-install", normal, 0, "", error + "is already installed\n");

        const QString uninstall = "uninstall|Halvex Service";
        row("uninstall", "-u", normal, 0, uninstall, it + "has been uninstalled.\n");
        row("stays", "-uninstall", denied, -1, uninstall, error + "could not be uninstalled\n");
        row("not installed", "-u", missing, 0, "", error + "is not installed\n");

        const QString about = "The service\n\tHalvex Service\n\tprog\n\nis ";
        const Script running{true, {}, {}, {ServiceState::Paused}};
        row("version, running", "-v", running, 0, "", about + "installed and running\n\n");
        row("state unknown", "-version", missing, 0, "", about + "not installed and not running\n\n");

        const Script deaf{true, {}, {true, kDenied, ServiceState::Running}};
        const Script unreachable{false, {}, {false, kDenied, {}}};
        row("pause refused, told nobody", "-p", deaf, 0, "control|2", "");
        row("resume, manager out of reach, told nobody", "-resume", unreachable, 0, "control|3", "");
        row("command", "-c 127", normal, 0, "control|255", "");
        row("command without number", "-command", normal, 0, "control|128", "");
        row("command too high", "-c 128", normal, 0, "", "");
        row("command that would be a stop", "-c -127", normal, 0, "", "");

        const ControlOutcome stopping{true, {}, ServiceState::StopPending};
        const Script late{true, {}, stopping, {stopping.state, stopping.state, ServiceState::Stopped}};
        const Script hanging{true, {}, stopping, {stopping.state}};
        const QString runsOn = "warning: The service could not be stopped. ";
        row("stop at once", "-t", normal, 0, "control|1", "");
        row("later", "-terminate", late, 0, "control|1" + QString(" sleep|200").repeated(3), "");
        row("too late", "-t", hanging, 0, "control|1" + QString(" sleep|200").repeated(10),
            runsOn + "(The service did not stop in time)\n");
        row("stop refused", "-t", deaf, 0, "control|1",
            "warning: stopping (Access is denied)\n" + runsOn + "(Access is denied)\n");
        row("nobody there", "-t", unreachable, 0, "control|1", runsOn + "(Access is denied)\n");

        const Script console{true, kFromConsole};
        const QString failed = error + "could not start\n";
        row("start from a console", "", console, -4, "", failed);
        row("unknown option", "-Install", console, -4, "", failed);
        row("failed start", "", denied, -4, "",
            failed + "warning: The Service failed to start [Access is denied]\n");
    }

    void options()
    {
        QFETCH(QString, options);
        QFETCH(Script, script);
        QFETCH(int, exitCode);
        Bench bench(options, script);
        QCOMPARE(bench.service->exec(), exitCode);
        QTEST(bench.manager->requests.join(' '), "requests");
        QTEST(bench.said(), "said");
        QCOMPARE(bench.service->calls, QStringList());
        QCOMPARE(wouldServe(int(bench.argv.size()), bench.argv.data()), exitCode == -4);
    }

    void help()
    {
        Bench bench("-help -install");
        QCOMPARE(bench.service->exec(), 0);
        QVERIFY2(bench.said().startsWith("\nprog -[i|u|e|t|p|r|c|v|h]\n\t-i(nstall) "),
                 qPrintable(bench.said()));
    }

    void controlsReachTheMainThread()
    {
        Script script;
        script.controls = {2, 3, 128, 255, 127, 1, 1};
        Bench bench("", script);
        QCOMPARE(bench.service->exec(), 0);
        QCOMPARE(bench.service->calls.join(' '), "start pause resume command 0 command 127 stop");
        QCOMPARE(bench.manager->carriedOut.mid(0, 6), QVector<bool>(6, true));

        QString reports; // the state's number, then the accepted controls
        for (const ServiceStatus &status : qAsConst(bench.manager->reports))
            reports += QString("%1:%2 ").arg(quint32(status.state)).arg(status.acceptedControls);
        QCOMPARE(reports, "2:0 4:3 6:0 7:3 5:0 4:3 4:3 4:3 3:0 1:0 ");
    }

    void requestsEndWithTheEventLoop()
    {
        Script script;
        script.controls = {2};
        Bench bench("", script);
        bench.service->leavesAtOnce = true; // the start itself is then a request that nobody carries out
        QCOMPARE(bench.service->exec(), 0);
        QCOMPARE(bench.manager->carriedOut, QVector<bool>{false});
        QCOMPARE(bench.service->calls, QStringList());
    }

    void controlsBeforeStart()
    {
        Bench bench("");
        for (const quint32 code : {2U, 3U, 128U, 1U, 256U})
            bench.service->carryOut(code);
        QCOMPARE(bench.service->calls, QStringList());
    }

    void regularApplication_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<int>("loopResult");
        QTest::addColumn<bool>("warns");
        row("ends with a result of its own", "-e extra", 3, false);
        row("fails", "-exec extra", -1, true);
    }

    void regularApplication()
    {
        QFETCH(QString, options);
        QFETCH(int, loopResult);
        Script script;
        script.installed = false;
        script.outcome = kDenied; // nobody needs to reach it
        Bench bench(options, script);
        QStringList seen;
        bench.service->atStart = [&] {
            seen = QCoreApplication::arguments();
            QCoreApplication::exit(loopResult); // does nothing unless the event loop runs
        };
        QCOMPARE(bench.service->exec(), loopResult);
        QCOMPARE(seen.join(' '), "prog extra");
        QCOMPARE(bench.service->calls, QStringList{"start"});
        QTEST(bench.said().startsWith("warning: The service could not be executed. ("), "warns");
    }

    void serviceLog()
    {
        Bench bench("");
        for (const auto type : {QtServiceBase::Success, QtServiceBase::Error, QtServiceBase::Warning,
                                QtServiceBase::Information})
            bench.service->writeServiceLog("text", type, 7, 3, "data");
        QString types;
        for (const Event &event : qAsConst(bench.eventLog->events))
            types += QString::number(quint16(event.type));
        QCOMPARE(types, "0124");
        const Event &event = bench.eventLog->events.first();
        QCOMPARE(event.source + event.text + event.data, "Halvex Servicetextdata");
        QCOMPARE(event.id, 7U);
        QCOMPARE(event.category, quint16(3));
    }
};

QTEST_APPLESS_MAIN(TestServiceHost)
#include "tst_service_host.moc"
