// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
// The tables are made of texts: let them be plain literals.
#undef QT_NO_CAST_FROM_ASCII

#include "platform/datagram_socket.h"
#include "platform/linux/file_descriptor.h"
#include "platform/linux/linux_service_manager.h"
#include "platform/linux/systemd_unit.h"
#include "rows.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <atomic>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

using RunMode = ServiceManager::RunMode;

Q_DECLARE_METATYPE(ServiceManager::RunMode)
Q_DECLARE_METATYPE(ServiceState)

namespace {

constexpr quint32 kStopAndPause = accepted_controls::kStop | accepted_controls::kPauseContinue;

/// A service that runs its dispatcher until it is destroyed.
class RunningService : public QThread, public ServiceClient
{
    Q_OBJECT
public:
    RunningService(const QString &home, RunMode mode)
        : manager(home, false)
        , m_mode(mode)
    {
        start();
    }
    ~RunningService() override
    {
        report(ServiceState::Stopped);
        wait();
    }

    LinuxServiceManager manager;
    std::atomic<quint32> received{0}; // the last control code
    std::atomic<bool> wasStarted{false};
    std::atomic<bool> carriesOut{true};
    ServiceOutcome outcome; // once the thread has ended

    void report(ServiceState state, quint32 acceptedControls = kStopAndPause)
    {
        manager.reportStatus({state, acceptedControls, {}});
    }

    void started(const QStringList &) override
    {
        wasStarted = true;
        report(ServiceState::Running);
    }
    bool controlRequested(quint32 code) override
    {
        received = code;
        return carriesOut;
    }

protected:
    void run() override { outcome = manager.runDispatcher("Halvex Service", m_mode, *this); }

private:
    const RunMode m_mode;
};

FileDescriptor rawSocket(const QString &path, bool connected)
{
    FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, qPrintable(path), sizeof(address.sun_path) - 1);
    const auto *name = reinterpret_cast<const sockaddr *>(&address);
    const int failed = connected ? ::connect(socket.get(), name, sizeof(address))
                                 : ::bind(socket.get(), name, sizeof(address));
    return failed ? FileDescriptor() : std::move(socket);
}

} // namespace

class TestLinuxServiceManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_home = m_folder->filePath("home");
        m_manager = std::make_unique<LinuxServiceManager>(m_home, false);
    }

    void installation()
    {
        QVERIFY(!m_manager->isInstalled("Halvex Service"));
        QVERIFY(m_manager->install({}).ok());
        QVERIFY(m_manager->isInstalled("Halvex Service"));
        const std::unique_ptr<OpenKey> key = LinuxServiceKey(m_home + "/service-key.json").open();
        QVERIFY(key);
        QVERIFY(key->value("ImagePath") == std::optional<KeyValue>(m_home + "/halvex-monitor-service"));

        QFile settings(m_home + "/HalvexService.ini");
        QVERIFY(settings.open(QIODevice::WriteOnly));
        QVERIFY(m_manager->uninstall("Halvex Service").ok());
        QCOMPARE(QDir(m_home).entryList(QDir::Files), QStringList{"HalvexService.ini"});
        QVERIFY(!m_manager->uninstall("Halvex Service").ok());
    }

    void refusedInstallation()
    {
        ServiceDefinition service;
        service.account = ".\\no such account";
        QCOMPARE(m_manager->install(service).error, system_error::kInvalidParameter);
        QVERIFY(!QFileInfo::exists(m_home));
        service.account = ".\\root";
        QVERIFY(m_manager->install(service).ok());
    }

    void serviceNeedsItsKey()
    {
        QVERIFY(m_manager->install({}).ok());
        RunningService service(m_home, RunMode::Service);
        QTRY_COMPARE(m_manager->state("Halvex Service"), std::optional(ServiceState::Running));
        QVERIFY(service.wasStarted);
        QVERIFY(!(QFileInfo(m_home + "/control").permissions() &
                  (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther)));
    }

    void dispatcherFailures_data()
    {
        QTest::addColumn<RunMode>("mode");
        QTest::addColumn<QString>("home"); // in the test's folder, which has no key
        QTest::addColumn<quint32>("error");
        row("service without key", RunMode::Service, "", system_error::kNotStartedByManager);
        row("application without home", RunMode::Application, "missing", system_error::kFileNotFound);
        row("path too long for a socket", RunMode::Application, QString(120, 'x'), system_error::kBadLength);
    }

    void dispatcherFailures()
    {
        QFETCH(RunMode, mode);
        QFETCH(QString, home);
        RunningService service(m_folder->filePath(home), mode);
        QVERIFY(service.wait());
        QTEST(service.outcome.error, "error");
        QVERIFY(!service.outcome.text.isEmpty());
        QVERIFY(!service.wasStarted);
    }

    void onlyOneServiceAHome()
    {
        RunningService first(m_folder->path(), RunMode::Application);
        LinuxServiceManager outside(m_folder->path(), false);
        QTRY_COMPARE(outside.state({}), std::optional(ServiceState::StartPending));
        {
            RunningService second(m_folder->path(), RunMode::Application);
            QVERIFY(second.wait());
            QCOMPARE(second.outcome.error, system_error::kServiceAlreadyRunning);
        }
        QCOMPARE(outside.state({}), std::optional(ServiceState::StartPending)); // the first is still there
    }

    void leftBehindSocket()
    {
        QVERIFY(rawSocket(m_folder->filePath("control"), false).isOpen());
        RunningService service(m_folder->path(), RunMode::Application);
        service.report(ServiceState::Paused);
        LinuxServiceManager outside(m_folder->path(), false);
        QTRY_COMPARE(outside.state({}), std::optional(ServiceState::Paused));
        service.report(ServiceState::Stopped);
        QVERIFY(service.wait());
        QVERIFY(!QFileInfo::exists(m_folder->filePath("control")));
    }

    void controls_data()
    {
        QTest::addColumn<ServiceState>("state");
        QTest::addColumn<quint32>("accepted");
        QTest::addColumn<quint32>("code");
        QTest::addColumn<bool>("delivered");
        using State = ServiceState;
        row("stop", State::Running, kStopAndPause, 1U, true);
        row("stop when paused", State::Paused, kStopAndPause, 1U, true);
        row("second stop", State::StopPending, kStopAndPause, 1U, false);
        row("pause", State::Running, kStopAndPause, 2U, true);
        row("pause not accepted", State::Running, accepted_controls::kStop, 2U, false);
        row("continue", State::Paused, kStopAndPause, 3U, true);
        row("first user code", State::Running, accepted_controls::kNone, 128U, true);
        row("last user code", State::Running, accepted_controls::kNone, 255U, true);
        row("user code at start", State::StartPending, kStopAndPause, 128U, false);
        row("code of the system", State::Running, kStopAndPause, 127U, false);
        row("start code", State::Running, kStopAndPause, 256U, false);
    }

    void controls()
    {
        QFETCH(ServiceState, state);
        QFETCH(quint32, accepted);
        QFETCH(quint32, code);
        QFETCH(bool, delivered);
        RunningService service(m_folder->path(), RunMode::Application);
        service.report(state, accepted);
        LinuxServiceManager outside(m_folder->path(), false);
        QTRY_COMPARE(outside.state({}), std::optional(state));

        const ControlOutcome outcome = outside.control({}, code);
        QVERIFY(outcome.opened);
        QCOMPARE(outcome.sent.error,
                 delivered ? system_error::kNone : system_error::kServiceCannotAcceptControl);
        QCOMPARE(outcome.state, state);
        QCOMPARE(service.received.load(), delivered ? code : 0);

        service.carriesOut = false; // as when it has left its event loop
        QVERIFY(!outside.control({}, code).sent.ok());
    }

    void strangePeers_data()
    {
        QTest::addColumn<QByteArray>("packet");
        row("silent", QByteArray());
        row("no number", QByteArray("stop"));
        row("two numbers", QByteArray("1 1"));
        row("negative", QByteArray("-1"));
        row("beyond 32 bits", QByteArray("4294967297"));
        row("long", QByteArray(70000, '1'));
    }

    void strangePeers()
    {
        QFETCH(QByteArray, packet);
        RunningService service(m_folder->path(), RunMode::Application);
        service.report(ServiceState::Running);
        LinuxServiceManager outside(m_folder->path(), false);
        QTRY_COMPARE(outside.state({}), std::optional(ServiceState::Running));

        const FileDescriptor peer = rawSocket(m_folder->filePath("control"), true);
        QVERIFY(peer.isOpen());
        if (!packet.isEmpty())
            QCOMPARE(::send(peer.get(), packet.constData(), std::size_t(packet.size()), 0), packet.size());
        QVERIFY(outside.control({}, 2).sent.ok());
        QCOMPARE(service.received.load(), 2U);
    }

    void noService()
    {
        ControlOutcome outcome = m_manager->control({}, 1);
        QVERIFY(!outcome.opened);
        QVERIFY(m_manager->install({}).ok());
        outcome = m_manager->control({}, 1);
        QVERIFY(outcome.opened);
        QCOMPARE(outcome.sent.error, system_error::kServiceNotActive);
        QCOMPARE(m_manager->state({}), std::optional(ServiceState::Stopped));
    }

    void tellsSystemd()
    {
        const DatagramSocket systemd(m_folder->filePath("notify"));
        qputenv("NOTIFY_SOCKET", m_folder->filePath("notify").toLocal8Bit());
        QByteArrayList told;
        for (const auto state : {ServiceState::StartPending, ServiceState::Running, ServiceState::Paused,
                                 ServiceState::StopPending, ServiceState::Stopped}) {
            m_manager->reportStatus({state, kStopAndPause, {}});
            told << systemd.receive();
        }
        qunsetenv("NOTIFY_SOCKET");
        QCOMPARE(told.join('|'),
                 "|READY=1\nSTATUS=Watching the drives|STATUS=Paused|STOPPING=1\nSTATUS=Stopping|");
    }

    void unitText_data()
    {
        QTest::addColumn<QString>("programPath");
        QTest::addColumn<QString>("account");
        QTest::addColumn<QByteArray>("lines");
        row("root", "/usr/bin/halvex-monitor-service", "",
            QByteArray("ExecStart=\"/usr/bin/halvex-monitor-service\"\nStateDirectory="));
        row("account", "/x", "op",
            QByteArray("ExecStart=\"/x\"\nUser=op\nSupplementaryGroups=disk\n"
                       "AmbientCapabilities=CAP_SYS_RAWIO CAP_NET_BIND_SERVICE\nStateDirectory="));
        row("path that would be expanded", "/a b/%h$HOME/\"c\"\\", "",
            QByteArray("ExecStart=\"/a b/%%h$$HOME/\\\"c\\\"\\\\\"\n"));
    }

    void unitText()
    {
        QFETCH(QString, programPath);
        QFETCH(QString, account);
        QFETCH(QByteArray, lines);
        ServiceDefinition service;
        service.description = "Halvex\nLocal 100%";
        service.programPath = programPath;
        const QByteArray text = systemd_unit::text(service, account);
        QVERIFY2(text.contains(lines), text.constData());
        QVERIFY2(text.contains("\nDescription=Halvex Local 100%%\n"), text.constData());
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_home;
    std::unique_ptr<LinuxServiceManager> m_manager; // the one outside of the service
};

QTEST_APPLESS_MAIN(TestLinuxServiceManager)
#include "tst_linux_service_manager.moc"
