// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
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
    /// Waits until `outside` reports the state.
    RunningService(const QString &home, ServiceManager &outside, ServiceState state,
                   quint32 accepted = kStopAndPause)
        : RunningService(home, RunMode::Application)
    {
        manager.reportStatus({state, accepted, {}});
        QTRY_COMPARE(outside.state({}), std::optional(state));
    }
    ~RunningService() override
    {
        manager.reportStatus({ServiceState::Stopped, 0, {}});
        wait();
    }

    LinuxServiceManager manager;
    std::atomic<quint32> received{0}; // the last control code
    std::atomic<bool> carriesOut{true};
    ServiceOutcome outcome; // once the thread has ended

    void started(const QStringList &) override
    {
        manager.reportStatus({ServiceState::Running, kStopAndPause, {}});
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

} // namespace

class TestLinuxServiceManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_manager = std::make_unique<LinuxServiceManager>(m_folder->path(), false);
    }

    void installation()
    {
        QVERIFY(!m_manager->isInstalled({}));
        QVERIFY(!m_manager->control({}, 1).opened);
        {
            RunningService service(m_folder->path(), RunMode::Service);
            QVERIFY(service.wait());
            QCOMPARE(service.outcome.error, system_error::kNotStartedByManager);
        }
        QVERIFY(m_manager->install({}).ok());
        QVERIFY(m_manager->isInstalled({}));
        const ControlOutcome outcome = m_manager->control({}, 1);
        QVERIFY(outcome.opened);
        QCOMPARE(outcome.sent.error, system_error::kServiceNotActive);
        QCOMPARE(m_manager->state({}), std::optional(ServiceState::Stopped));
        {
            const RunningService service(m_folder->path(), RunMode::Service);
            QTRY_COMPARE(m_manager->state({}), std::optional(ServiceState::Running));
            QVERIFY(!(QFileInfo(m_folder->filePath("control")).permissions() &
                      (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther)));
        }

        writeFile(m_folder->filePath("HalvexService.ini"), {});
        QVERIFY(m_manager->uninstall({}).ok());
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{"HalvexService.ini"});
        QVERIFY(!m_manager->uninstall({}).ok());
    }

    void refusedInstallation()
    {
        ServiceDefinition service;
        service.account = ".\\no such account";
        QCOMPARE(m_manager->install(service).error, system_error::kInvalidParameter);
        QVERIFY(!m_manager->isInstalled({}));
        service.account = ".\\root";
        QVERIFY(m_manager->install(service).ok());
    }

    void homeWhosePathIsTooLongForASocket()
    {
        RunningService service(m_folder->filePath(QString(120, 'x')), RunMode::Application);
        QVERIFY(service.wait());
        QCOMPARE(service.outcome.error, system_error::kBadLength);
    }

    void onlyOneServiceAHome()
    {
        const RunningService first(m_folder->path(), *m_manager, ServiceState::Paused);
        {
            RunningService second(m_folder->path(), RunMode::Application);
            QVERIFY(second.wait());
            QCOMPARE(second.outcome.error, system_error::kServiceAlreadyRunning);
        }
        QCOMPARE(m_manager->state({}), std::optional(ServiceState::Paused)); // the first service still runs
    }

    void controls_data()
    {
        QTest::addColumn<ServiceState>("state");
        QTest::addColumn<quint32>("accepted");
        QTest::addColumn<quint32>("code");
        QTest::addColumn<bool>("delivered");
        using State = ServiceState;
        row("stop", State::Running, kStopAndPause, 1U, true);
        row("second stop", State::StopPending, kStopAndPause, 1U, false);
        row("pause", State::Running, kStopAndPause, 2U, true);
        row("pause not accepted", State::Running, accepted_controls::kStop, 2U, false);
        row("last user code", State::Running, accepted_controls::kNone, 255U, true);
        row("user code at start", State::StartPending, kStopAndPause, 128U, false);
        row("start code", State::Running, kStopAndPause, 256U, false);
    }

    void controls()
    {
        QFETCH(ServiceState, state);
        QFETCH(quint32, accepted);
        QFETCH(quint32, code);
        QFETCH(bool, delivered);
        RunningService service(m_folder->path(), *m_manager, state, accepted);
        const ControlOutcome outcome = m_manager->control({}, code);
        QVERIFY(outcome.opened);
        QCOMPARE(outcome.sent.error,
                 delivered ? system_error::kNone : system_error::kServiceCannotAcceptControl);
        QCOMPARE(outcome.state, state);
        QCOMPARE(service.received.load(), delivered ? code : 0);

        service.carriesOut = false; // a service that has left its event loop
        QVERIFY(!m_manager->control({}, code).sent.ok());
    }

    void strangePeers_data()
    {
        QTest::addColumn<QByteArray>("packet");
        row("peer that sends nothing", QByteArray());
        row("no number", QByteArray("stop"));
        row("packet above the limit", QByteArray(70000, '1'));
    }

    void strangePeers()
    {
        QFETCH(QByteArray, packet);
        const RunningService service(m_folder->path(), *m_manager, ServiceState::Running);

        const FileDescriptor peer(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, qPrintable(m_folder->filePath("control")),
                     sizeof(address.sun_path) - 1);
        QCOMPARE(::connect(peer.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
        if (!packet.isEmpty())
            QCOMPARE(::send(peer.get(), packet.constData(), std::size_t(packet.size()), 0), packet.size());
        QVERIFY(m_manager->control({}, 2).sent.ok());
        QCOMPARE(service.received.load(), 2U);
    }

    void unitText()
    {
        ServiceDefinition service;
        service.description = "Halvex\nLocal 100%";
        service.programPath = "/a b/%h$HOME/\"c\"\\";
        const QByteArray text = systemd_unit::text(service, "op");
        QVERIFY2(text.contains("\nDescription=Halvex Local 100%%\n"), text);
        QVERIFY2(text.contains("\nExecStart=\"/a b/%%h$$HOME/\\\"c\\\"\\\\\"\nUser=op\n"), text);
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<LinuxServiceManager> m_manager; // of another process, as the service sees it
};

QTEST_APPLESS_MAIN(TestLinuxServiceManager)
#include "tst_linux_service_manager.moc"
