// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
// The tables are made of texts: let them be plain literals.
#undef QT_NO_CAST_FROM_ASCII

#include "rows.h"
#include "service/command_line.h"
#include "service/fake_service_manager.h"
#include "service/service_base.h"

#include <QTest>
#include <QThread>

#include <functional>

using Script = FakeServiceManager::Script;

Q_DECLARE_METATYPE(FakeServiceManager::Script)

namespace {

const ServiceOutcome kDenied{system_error::kAccessDenied, QStringLiteral("Access is denied")};
const ServiceOutcome kFromConsole{system_error::kNotStartedByManager, QStringLiteral("from a console")};

QStringList warnings;

void keepWarning(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtWarningMsg)
        warnings << text;
}

class RecordingService : public QtService<QCoreApplication>
{
public:
    RecordingService(std::vector<char *> &argv, const QString &name, Platform &platform, ServiceHostIo io)
        : QtService(int(argv.size()), argv.data(), name, platform, std::move(io))
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
    void processCommand(int code) override { record("command " + QByteArray::number(code)); }
    int runApplication() override { return leavesAtOnce ? 0 : QtService::runApplication(); }

private:
    void record(const QByteArray &call)
    {
        const bool isMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        calls << QString::fromLatin1(call) + QLatin1String(isMainThread ? "" : " on a foreign thread");
    }
};

/// A host with everything around it: arguments, fake manager, event log, and streams that can be read back.
struct Bench
{
    explicit Bench(const QStringList &options, const Script &script = {},
                   const QString &name = QStringLiteral("Halvex Service"))
        : manager(new FakeServiceManager(script))
        , eventLog(new RecordingEventLog)
    {
        platform.serviceManager.reset(manager);
        platform.eventLog.reset(eventLog);
        arguments << QByteArray("prog");
        for (const QString &option : options)
            arguments << option.toLocal8Bit();
        for (QByteArray &argument : arguments)
            argv.push_back(argument.data());
        warnings.clear();
        qInstallMessageHandler(keepWarning);
        const auto sleep = [this](std::chrono::milliseconds duration) { slept << int(duration.count()); };
        service = std::make_unique<RecordingService>(argv, name, platform, ServiceHostIo{out, err, sleep});
    }
    ~Bench()
    {
        qInstallMessageHandler(nullptr);
        std::fclose(out);
        std::fclose(err);
    }
    Bench(const Bench &) = delete;
    Bench &operator=(const Bench &) = delete;

    static QByteArray printed(std::FILE *stream)
    {
        QByteArray text(8192, '\0');
        std::rewind(stream);
        text.resize(int(std::fread(text.data(), 1, std::size_t(text.size()), stream)));
        return text;
    }

    FakeServiceManager *manager; // the platform's
    RecordingEventLog *eventLog; // the platform's
    Platform platform;
    QVector<QByteArray> arguments;
    std::vector<char *> argv;
    std::FILE *out = std::tmpfile();
    std::FILE *err = std::tmpfile();
    QVector<int> slept; // milliseconds
    std::unique_ptr<RecordingService> service;
};

} // namespace

static QByteArray usageText()
{
    return "\nprog -[i|u|e|t|p|r|c|v|h]\n"
           "\t-i(nstall) [account] [password]\t: Install the service, optionally using given account and "
           "password\n"
           "\t-u(ninstall)\t: Uninstall the service.\n"
           "\t-e(xec)\t\t: Run as a regular application. Useful for debugging.\n"
           "\t-t(erminate)\t: Stop the service.\n"
           "\t-p(ause)\t: Pause the service.\n"
           "\t-r(esume)\t: Resume a paused service.\n"
           "\t-c(ommand) num\t: Send command code num to the service.\n"
           "\t-v(ersion)\t: Print version and status information.\n"
           "\t-h(elp)   \t: Show this help\n"
           "\tNo arguments\t: Start the service.\n";
}

class TestServiceHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void options_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<Script>("script");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("out");
        QTest::addColumn<QByteArray>("err");

        Script notInstalled;
        notInstalled.installed = false;
        Script refusing = notInstalled;
        refusing.installing = kDenied;
        Script keeping;
        keeping.uninstalling = kDenied;
        Script running;
        running.states = {ServiceState::Paused};
        Script deaf;
        deaf.controlling = {true, kDenied, ServiceState::Running};
        Script unreachable;
        unreachable.controlling = {false, kDenied, {}};
        Script stopped;
        stopped.states = {ServiceState::Stopped};

        row("install", QStringList{"-i"}, notInstalled, 0,
            QByteArray("The service Halvex Service has been installed under: "
                       "/opt/halvex/service\n"),
            QByteArray());
        row("install refused", QStringList{"-install"}, refusing, -1, QByteArray(),
            QByteArray("The service Halvex Service could not be installed\n"));
        row("install again", QStringList{"-install"}, Script(), 0, QByteArray(),
            QByteArray("The service Halvex Service is already installed\n"));
        row("uninstall", QStringList{"-u"}, Script(), 0,
            QByteArray("The service Halvex Service has been uninstalled.\n"), QByteArray());
        row("uninstall refused", QStringList{"-uninstall"}, keeping, -1, QByteArray(),
            QByteArray("The service Halvex Service could not be uninstalled\n"));
        row("uninstall what is not there", QStringList{"-uninstall"}, notInstalled, 0, QByteArray(),
            QByteArray("The service Halvex Service is not installed\n"));
        row("version, running", QStringList{"-v"}, running, 0,
            QByteArray("The service\n\tHalvex Service\n\tprog\n\nis installed and running\n\n"),
            QByteArray());
        row("version, stopped", QStringList{"-version"}, stopped, 0,
            QByteArray("The service\n\tHalvex Service\n\tprog\n\nis installed and not running\n\n"),
            QByteArray());
        row("version, not installed", QStringList{"-version"}, notInstalled, 0,
            QByteArray("The service\n\tHalvex Service\n\tprog\n\nis not installed and not running\n\n"),
            QByteArray());
        row("version, state unknown", QStringList{"-v"}, Script(), 0,
            QByteArray("The service\n\tHalvex Service\n\tprog\n\nis installed and not running\n\n"),
            QByteArray());
        // These tell nobody whether they were heard.
        row("pause refused", QStringList{"-p"}, deaf, 0, QByteArray(), QByteArray());
        row("resume, manager out of reach", QStringList{"-r"}, unreachable, 0, QByteArray(), QByteArray());
        row("command, manager out of reach", QStringList{"-c", "1"}, unreachable, 0, QByteArray(),
            QByteArray());
        row("help", QStringList{"-h"}, Script(), 0, usageText(), QByteArray());
        row("help before others", QStringList{"-help", "-install"}, Script(), 0, usageText(), QByteArray());
    }

    void options()
    {
        QFETCH(QStringList, arguments);
        QFETCH(Script, script);
        Bench bench(arguments, script);
        QTEST(bench.service->exec(), "exitCode");
        QTEST(Bench::printed(bench.out), "out");
        QTEST(Bench::printed(bench.err), "err");
        QCOMPARE(warnings, QStringList());
    }

    void requests_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("installed");
        QTest::addColumn<QStringList>("requests");

        const QString install = "install|Halvex Service|Halvex Local Service|/opt/halvex/service|";
        row("no account", QStringList{"-i"}, false, QStringList{install + "||automatic"});
        row("account of this machine", QStringList{"-i", "op", "secret"}, false,
            QStringList{install + ".\\op|secret|automatic"});
        row("account of a domain", QStringList{"-i", "LAB\\op"}, false,
            QStringList{install + "LAB\\op||automatic"});
        row("local system", QStringList{"-i", "LocalSystem", "secret"}, false,
            QStringList{install + "||automatic"});
        row("local system, other case", QStringList{"-i", "localsystem"}, false,
            QStringList{install + ".\\localsystem||automatic"});
        row("installed already", QStringList{"-i"}, true, QStringList());
        row("uninstall", QStringList{"-u"}, true, QStringList{"uninstall|Halvex Service"});
        row("not installed", QStringList{"-u"}, false, QStringList());
        row("pause", QStringList{"-p"}, true, QStringList{"control|2"});
        row("pause, long", QStringList{"-pause"}, true, QStringList{"control|2"});
        row("resume", QStringList{"-r"}, true, QStringList{"control|3"});
        row("resume, long", QStringList{"-resume"}, true, QStringList{"control|3"});
        row("command", QStringList{"-c", "127"}, true, QStringList{"control|255"});
        row("command without number", QStringList{"-command"}, true, QStringList{"control|128"});
        row("command too high", QStringList{"-c", "128"}, true, QStringList());
        row("command that would be a stop", QStringList{"-c", "-127"}, true, QStringList());
    }

    void requests()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, installed);
        Script script;
        script.installed = installed;
        Bench bench(arguments, script);
        QCOMPARE(bench.service->exec(), 0);
        QTEST(bench.manager->requests, "requests");
    }

    void terminate_data()
    {
        QTest::addColumn<Script>("script");
        QTest::addColumn<int>("looks"); // at the state, each after a pause
        QTest::addColumn<QStringList>("expectedWarnings");

        const ControlOutcome stopping{true, {}, ServiceState::StopPending};
        Script stops;
        Script stopsLate;
        stopsLate.controlling = stopping;
        stopsLate.states = {ServiceState::StopPending, ServiceState::StopPending, ServiceState::Stopped};
        Script hangs = stopsLate;
        hangs.states = {ServiceState::StopPending};
        Script refuses;
        refuses.controlling = {true, kDenied, ServiceState::Running};
        Script missing;
        missing.controlling = {
            false, {system_error::kServiceDoesNotExist, QStringLiteral("No such service")}, {}};

        row("stopped at once", stops, 0, QStringList());
        row("stopped later", stopsLate, 3, QStringList());
        row("hangs", hangs, 10,
            QStringList{"The service could not be stopped. (The service did not stop in "
                        "time)"});
        row("refuses", refuses, 0,
            QStringList{"stopping (Access is denied)",
                        "The service could not be stopped. (Access is denied)"});
        row("is not there", missing, 0, QStringList{"The service could not be stopped. (No such service)"});
    }

    void terminate()
    {
        QFETCH(Script, script);
        QFETCH(int, looks);
        Bench bench({"-t"}, script);
        QCOMPARE(bench.service->exec(), 0);
        QCOMPARE(bench.manager->requests, QStringList{"control|1"});
        QCOMPARE(bench.slept, QVector<int>(looks, 200));
        QTEST(warnings, "expectedWarnings");
    }

    void failedStart_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("fromConsole");
        QTest::addColumn<QStringList>("expectedWarnings");
        row("from a console", QStringList(), true, QStringList());
        row("unknown option", QStringList{"--help"}, true, QStringList());
        row("option in another case", QStringList{"-Install"}, true, QStringList());
        row("another error", QStringList(), false,
            QStringList{"The Service failed to start [Access is denied]"});
    }

    void failedStart()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, fromConsole);
        Script script;
        script.dispatching = fromConsole ? kFromConsole : kDenied;
        Bench bench(arguments, script);
        QCOMPARE(bench.service->exec(), -4);
        QCOMPARE(Bench::printed(bench.err), QByteArray("The service Halvex Service could not start\n"));
        QTEST(warnings, "expectedWarnings");
        QCOMPARE(bench.service->calls, QStringList());
    }

    void controlsReachTheMainThread()
    {
        Script script;
        script.controls = {2, 3, 128, 255, 127, 1, 1};
        Bench bench({}, script);
        QCOMPARE(bench.service->exec(), 0);
        QCOMPARE(bench.service->calls,
                 (QStringList{"start", "pause", "resume", "command 0", "command 127", "stop"}));
        QCOMPARE(bench.manager->carriedOut.mid(0, 6), QVector<bool>(6, true));

        QStringList reports; // the state's number, then the accepted controls
        for (const ServiceStatus &status : qAsConst(bench.manager->reports))
            reports << QString::number(quint32(status.state)) + ':' +
                           QString::number(status.acceptedControls);
        QCOMPARE(reports,
                 (QStringList{"2:0", "4:3", "6:0", "7:3", "5:0", "4:3", "4:3", "4:3", "3:0", "1:0"}));
    }

    void requestsEndWithTheEventLoop()
    {
        Script script;
        script.controls = {2};
        Bench bench({}, script);
        bench.service->leavesAtOnce = true; // the start itself is then a request that nobody carries out
        QCOMPARE(bench.service->exec(), 0);
        QCOMPARE(bench.manager->carriedOut, QVector<bool>{false});
        QCOMPARE(bench.service->calls, QStringList());
    }

    void stopBeforeStart()
    {
        Bench bench({});
        for (const quint32 code : {2U, 3U, 128U, 1U, 256U})
            bench.service->carryOut(code);
        QCOMPARE(bench.service->calls, QStringList());
    }

    void regularApplication_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<int>("loopResult");
        QTest::addColumn<int>("warningCount");
        row("ends well", "-e", 0, 0);
        row("ends with a result of its own", "-exec", 3, 0);
        row("fails", "-exec", -1, 1);
    }

    void regularApplication()
    {
        QFETCH(QString, option);
        QFETCH(int, loopResult);
        QFETCH(int, warningCount);
        Script script;
        script.installed = false;
        script.dispatching = kDenied; // nobody needs to reach it
        Bench bench({option, "extra"}, script);
        QStringList seen;
        bench.service->atStart = [&] {
            seen = QCoreApplication::arguments();
            QCoreApplication::exit(loopResult); // does nothing unless the event loop runs
        };
        QCOMPARE(bench.service->exec(), loopResult);
        QCOMPARE(seen, (QStringList{"prog", "extra"}));
        QCOMPARE(bench.service->calls, QStringList{"start"});
        QCOMPARE(warnings.filter("The service could not be executed. (").size(), warningCount);
    }

    void names_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("used");
        QTest::addColumn<QStringList>("expectedWarnings");
        const QString tooLong = "QtService: 'name' is longer than 255 characters.";
        const QString backslashes = "QtService: 'name' contains backslashes '\\'.";
        row("longest", QString(255, 'n'), QString(255, 'n'), QStringList());
        row("too long", QString(256, 'n'), QString(255, 'n'), QStringList{tooLong});
        row("backslashes", "a\\b\\c", QString("a%1b%1c").arg(QChar(0)), QStringList{backslashes});
        row("backslash cut off", QString(255, 'n') + '\\', QString(255, 'n'), QStringList{tooLong});
    }

    void names()
    {
        QFETCH(QString, name);
        QFETCH(QString, used);
        Bench bench({"-u"}, {}, name);
        bench.service->exec();
        QCOMPARE(bench.manager->requests, QStringList{"uninstall|" + used});
        QTEST(warnings, "expectedWarnings");
    }

    void serviceLog()
    {
        Bench bench({});
        bench.service->writeServiceLog("plain");
        bench.service->writeServiceLog("e", QtServiceBase::Error, 7, 3, "data");
        bench.service->writeServiceLog("w", QtServiceBase::Warning);
        bench.service->writeServiceLog("i", QtServiceBase::Information);
        QStringList entries;
        for (const Event &event : qAsConst(bench.eventLog->events)) {
            entries << QString("%1|%2|%3|%4|%5|%6")
                           .arg(event.source)
                           .arg(quint16(event.type))
                           .arg(event.category)
                           .arg(event.id)
                           .arg(event.text, QString::fromLatin1(event.data));
        }
        QCOMPARE(entries, (QStringList{"Halvex Service|0|0|0|plain|", "Halvex Service|1|3|7|e|data",
                                       "Halvex Service|2|0|0|w|", "Halvex Service|4|0|0|i|"}));
    }

    void whoServes_data()
    {
        QTest::addColumn<QByteArray>("option");
        QTest::addColumn<bool>("serves");
        row("none", QByteArray(), true);
        row("unknown", QByteArray("-x"), true);
        row("exec", QByteArray("-e"), true);
        row("version", QByteArray("-version"), false);
    }

    void whoServes()
    {
        QFETCH(QByteArray, option);
        QByteArray program("prog");
        char *argv[] = {program.data(), option.data(), nullptr};
        QTEST(wouldServe(option.isEmpty() ? 1 : 2, argv), "serves");
    }
};

QTEST_APPLESS_MAIN(TestServiceHost)
#include "tst_service_host.moc"
