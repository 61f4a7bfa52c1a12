// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/event_log.h"
#include "rows.h"
#include "service/command_line.h"
#include "service/fake_service_manager.h"
#include "service/service_base.h"

#include <QThread>

namespace {

const ServiceOutcome kDenied{system_error::kAccessDenied, "Access is denied"};
const ServiceOutcome kFromConsole{system_error::kNotStartedByManager, "from a console"};

constexpr quint32 kStopPauseContinue = accepted_controls::kStop | accepted_controls::kPauseContinue;

struct RecordingEventLog : EventLog
{
    QString types; // their numbers

    void report(const Event &event) override { types += QString::number(quint16(event.type)); }
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
    std::optional<int> result; ///< ends the event loop with it as soon as it runs
    bool leavesAtOnce = false; ///< the event loop never runs

protected:
    void start() override
    {
        record((QStringList{"start"} + QCoreApplication::arguments().mid(1)).join(' '));
        if (result)
            QCoreApplication::exit(*result); // does nothing unless the event loop runs
    }
    void stop() override { record("stop"); }
    void pause() override { record("pause"); }
    void resume() override { record("resume"); }
    void processCommand(int code) override { record("command " + QString::number(code)); }
    int runApplication() override { return leavesAtOnce ? 0 : QtService::runApplication(); }

private:
    void record(const QString &call)
    {
        calls << call + (QThread::currentThread() == m_mainThread ? "" : " on a foreign thread");
    }

    const QThread *const m_mainThread = QThread::currentThread();
};

using Stream = std::shared_ptr<std::FILE>;

QString warnings;

void keepWarning(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtWarningMsg)
        warnings += "warning: " + text + '\n';
}

/// A host with arguments, fake manager, and streams that the test can read.
struct Bench
{
    explicit Bench(const QString &options, const Script &script = Script())
        : manager(new FakeServiceManager(script))
        , arguments(("prog " + options).toLocal8Bit().trimmed().split(' '))
    {
        platform.serviceManager.reset(manager);
        for (QByteArray &argument : arguments)
            argv.push_back(argument.data());
        warnings.clear();
        const auto sleep = [this](std::chrono::milliseconds duration) {
            manager->requests << "sleep|" + QString::number(duration.count());
        };
        service =
            std::make_unique<RecordingService>(argv, platform, ServiceHostIo{out.get(), err.get(), sleep});
    }

    /// Returns the texts on both streams and the warnings.
    [[nodiscard]] QString messages() const { return printed(out, "") + printed(err, "error: ") + warnings; }

    static QString printed(const Stream &stream, const char *label)
    {
        char text[8192];
        std::rewind(stream.get());
        const std::size_t size = std::fread(text, 1, sizeof(text), stream.get());
        return size == 0 ? QString() : label + QString::fromLocal8Bit(text, int(size));
    }

    FakeServiceManager *manager; // the platform's
    Platform platform;
    QList<QByteArray> arguments;
    std::vector<char *> argv;
    Stream out = {std::tmpfile(), std::fclose};
    Stream err = {std::tmpfile(), std::fclose};
    std::unique_ptr<RecordingService> service;
};

} // namespace

Q_DECLARE_METATYPE(Script)

namespace {

const QString kSubject = "The service Halvex Service ";

void addColumns()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<Script>("script");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("requests"); // to the manager and the service, in order
    QTest::addColumn<QString>("messages"); // without the system's reasons
}

/// Runs the program of the row.
void runWithOptions()
{
    QFETCH(QString, options);
    QFETCH(Script, script);
    QFETCH(int, exitCode);
    QFETCH(QString, requests);
    Bench bench(options, script);
    bench.service->result = exitCode;
    QCOMPARE(bench.service->exec(), exitCode);
    QCOMPARE((bench.manager->requests + bench.service->calls).join(' '), requests);
    QTEST(bench.messages().remove(QRegularExpression("executed\\. \\(\\K.*(?=\\)\n)")), "messages");
    QCOMPARE(wouldServe(int(bench.argv.size()), bench.argv.data()),
             exitCode == -4 || requests.startsWith("start"));
}

} // namespace

class TestServiceHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qInstallMessageHandler(keepWarning); }
    void cleanup() { qInstallMessageHandler(nullptr); }

    void installation_data()
    {
        addColumns();
        const QString error = "error: " + kSubject;
        const Script missing{false};
        const Script denied{true, kDenied};
        const QString install = "install|Halvex Service|Halvex Local Service|/opt/halvex/service|";
        const QString local = install + '|'; // under the system's own account
        const QString done = kSubject + "has been installed under: /opt/halvex/service\n";
        row("install", "-i", missing, 0, local, done);
        row("install under an account", "-i op secret", missing, 0, install + ".\\op|secret", done);
        row("install under a domain account", "-i LAB\\op", missing, 0, install + "LAB\\op|", done);
        row("install under the system account", "-i LocalSystem secret", missing, 0, local, done);
        row("install refused", "-install", Script{false, kDenied}, -1, local,
            error + "could not be installed\nAccess is denied\n");
        row("install twice", "-install", Script(), 0, "", error + "is already installed\n");

        row("uninstall", "-u", Script(), 0, "uninstall|Halvex Service", kSubject + "has been uninstalled.\n");
        row("uninstall refused", "-uninstall", denied, -1, "uninstall|Halvex Service",
            error + "could not be uninstalled\n");
        row("uninstall what is not installed", "-u", missing, 0, "", error + "is not installed\n");
    }

    void installation() { runWithOptions(); }

    void version_data()
    {
        addColumns();
        const QString about = "The service\n\tHalvex Service\n\tprog\n\n";
        const QString unknown = "error: The state of the service is not fully known: Access is denied\n";
        const auto seen = [](const ServiceView &view) { return Script{true, {}, {}, {}, {}, view}; };
        row("version, running", "-v", seen({true, true, {}}), 0, "", about + "is installed and running\n\n");
        row("version, not installed", "-version", seen({false, false, {}}), 0, "",
            about + "is not installed and not running\n\n");
        row("version, running or not", "-v", seen({true, {}, "Access is denied"}), 0, "",
            about + "is installed and may be running\n\n" + unknown);
        row("version, nothing known", "-v", seen({{}, {}, "Access is denied"}), 0, "",
            about + "may be installed and may be running\n\n" + unknown);
    }

    void version() { runWithOptions(); }

    void controls_data()
    {
        addColumns();
        const Script refusing{true, {}, {true, kDenied, ServiceState::Running}};
        const Script unreachable{false, {}, {false, kDenied, {}}};
        row("pause refused without a message", "-p", refusing, 0, "control|2", "");
        row("resume without a manager fails without a message", "-resume", unreachable, 0, "control|3", "");
        row("highest command", "-c 127", Script(), 0, "control|255", "");
        row("command above 127", "-command 128", Script(), 0, "", "");
        row("negative command is not sent as a stop", "-c -127", Script(), 0, "", "");

        const ControlOutcome stopping{true, {}, ServiceState::StopPending};
        const Script late{true, {}, stopping, {stopping.state, stopping.state, ServiceState::Stopped}};
        const Script hanging{true, {}, stopping, {stopping.state}};
        const QString runsOn = "warning: The service could not be stopped. ";
        row("stop at once", "-t", Script(), 0, "control|1", "");
        row("stop after three queries", "-terminate", late, 0,
            "control|1" + QString(" sleep|200").repeated(3), "");
        row("stop takes longer than ten queries", "-t", hanging, 0,
            "control|1" + QString(" sleep|200").repeated(10),
            runsOn + "(The service did not stop in time)\n");
        row("stop refused", "-t", refusing, 0, "control|1",
            "warning: stopping (Access is denied)\n" + runsOn + "(Access is denied)\n");
        row("stop without a manager", "-t", unreachable, 0, "control|1", runsOn + "(Access is denied)\n");
    }

    void controls() { runWithOptions(); }

    void starts_data()
    {
        addColumns();
        const Script denied{true, kDenied};
        const QString failed = "error: " + kSubject + "could not start\n";
        row("start from a console", "", Script{true, kFromConsole}, -4, "", failed);
        const QString reason = "warning: The Service failed to start [Access is denied]\n";
        row("failed start", "", denied, -4, "", failed + reason);
        row("application needs no manager", "-e extra", denied, 3, "start extra", "");
        row("failed application", "-exec", denied, -1, "start",
            "warning: The service could not be executed. ()\n");
        row("help", "-help -install", Script(), 0, "", QString::asprintf(kUsageText, "prog"));
    }

    void starts() { runWithOptions(); }

    void controlsReachTheMainThread()
    {
        Script script;
        script.controls = {2, 3, 128, 255, 127, 1, 1};
        Bench bench("", script);
        QCOMPARE(bench.service->exec(), 0);
        QCOMPARE(bench.service->calls.join(' '), "start pause resume command 0 command 127 stop");
        QCOMPARE(bench.manager->carriedOut.mid(0, 6), QVector<bool>(6, true));

        const auto &reports = bench.manager->reports;
        const QVector<ServiceState> states{
            ServiceState::StartPending, ServiceState::Running,         ServiceState::PausePending,
            ServiceState::Paused,       ServiceState::ContinuePending, ServiceState::Running,
            ServiceState::Running,      ServiceState::Running, // after each command
            ServiceState::StopPending,  ServiceState::Stopped};
        QCOMPARE(reports.size(), states.size());
        for (int i = 0; i < states.size(); ++i) {
            QCOMPARE(reports[i].state, states[i]);
            const bool isSteady = states[i] == ServiceState::Running || states[i] == ServiceState::Paused;
            QCOMPARE(reports[i].acceptedControls, isSteady ? kStopPauseContinue : 0U);
        }
    }

    void requestsEndWithTheEventLoop()
    {
        Script script;
        script.controls = {2};
        Bench bench("", script);
        bench.service->leavesAtOnce = true; // a start request that is never carried out
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

    void serviceLog()
    {
        Bench bench("");
        auto *const log = new RecordingEventLog;
        bench.platform.eventLog.reset(log);
        for (const auto type : {QtServiceBase::Success, QtServiceBase::Error, QtServiceBase::Warning,
                                QtServiceBase::Information})
            bench.service->writeServiceLog("text", type);
        QCOMPARE(log->types, "0124");
    }
};

QTEST_APPLESS_MAIN(TestServiceHost)
#include "tst_service_host.moc"
