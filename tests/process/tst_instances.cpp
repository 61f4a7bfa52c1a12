// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include <QFile>
#include <QTest>

#include <unistd.h>

namespace {

constexpr int kCouldNotStart = 256 - 4;

struct Ending
{
    int exitCode = -1; ///< -1 while the program runs
    QByteArray output;
    QByteArray errors;
};

/// Another process in a service's home.
class Other
{
public:
    Other(const ServiceFixture &service, const QStringList &words)
    {
        m_process.setProcessEnvironment(service.environment());
        m_process.start(words.first(), words.mid(1));
        m_process.waitForStarted(kPatienceMs);
    }
    ~Other()
    {
        m_process.kill();
        m_process.waitForFinished(kPatienceMs);
    }
    Other(const Other &) = delete;
    Other &operator=(const Other &) = delete;

    [[nodiscard]] bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    Ending end()
    {
        if (!m_process.waitForFinished(kPatienceMs))
            return {};
        return {m_process.exitCode(), m_process.readAllStandardOutput(), m_process.readAllStandardError()};
    }

private:
    QProcess m_process;
};

} // namespace

/// Several programs in one home.
class TestInstances : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_service->writeMachine(json(R"({"drives": []})"));
    }
    void cleanup() { m_service.reset(); }

    void secondServiceIsRefused()
    {
        QVERIFY2(m_service->serve(), m_service->output());
        for (const QStringList &options : {QStringList("-exec"), QStringList()}) {
            const Ending ending = Other(*m_service, QStringList(HALVEX_SERVICE_PROGRAM) + options).end();
            QCOMPARE(ending.exitCode, kCouldNotStart);
            QVERIFY2(
                ending.errors.startsWith("The service Halvex Service could not start\nanother service is "
                                         "running in this home: "),
                ending.errors);
        }
        m_service->process().kill(); // the lock ends with its process
        QVERIFY(m_service->process().waitForFinished(kPatienceMs));
        QVERIFY2(m_service->serve(), m_service->output());
        QCOMPARE(m_service->stop(), 0);
    }

    void onlyOneOfManyServicesStarts()
    {
        QVERIFY(m_service->start()); // writes the key
        QCOMPARE(m_service->stop(), 0);
        for (int round = 0; round < 5; ++round) {
            std::vector<std::unique_ptr<Other>> crowd;
            for (int i = 0; i < 4; ++i)
                crowd.push_back(
                    std::make_unique<Other>(*m_service, QStringList{HALVEX_SERVICE_PROGRAM, "-exec"}));
            const auto running = [&crowd] {
                return std::count_if(crowd.begin(), crowd.end(), [](auto &one) { return one->isRunning(); });
            };
            QTRY_VERIFY_WITH_TIMEOUT(running() <= 1, kPatienceMs);
            QVERIFY(QFile::exists(m_service->path("lock")));
            QCOMPARE(int(running()), 1);
        }
    }

    /// An account without rights gets the names of the facts that it cannot see.
    void versionWithoutPermission()
    {
        if (::geteuid() != 0)
            QSKIP("needs root to become another account");
        QVERIFY2(m_service->serve(), m_service->output());
        const QStringList asNobody{"setpriv", "--reuid=65534", "--clear-groups", HALVEX_SERVICE_PROGRAM,
                                   "-version"};
        Ending ending = Other(*m_service, asNobody).end(); // only the owner can enter the home
        QVERIFY2(ending.output.endsWith("\n\nmay be installed and may be running\n\n"), ending.output);
        QVERIFY2(ending.errors.contains("/control: Permission denied"), ending.errors);

        QVERIFY(QFile::setPermissions(m_service->home(), QFile::Permissions(0x7055)));
        ending = Other(*m_service, asNobody).end();
        QVERIFY2(ending.output.endsWith("\n\nis installed and may be running\n\n"), ending.output);
        ending = Other(*m_service, {HALVEX_SERVICE_PROGRAM, "-version"}).end();
        QVERIFY2(ending.output.endsWith("\n\nis installed and running\n\n"), ending.output);
        QCOMPARE(ending.errors, QByteArray());
    }

    void logFileReceivesEnabledCategories()
    {
        m_service->setKeyValue("LogFile", m_service->path("service.log"));
        m_service->setVariable("QT_LOGGING_RULES", "halvex.service.info=true");
        QVERIFY2(m_service->serve(), m_service->output());
        QCOMPARE(m_service->stop(), 0);
        const QByteArray line = m_service->content("service.log").split('\n').first();
        QVERIFY2(line.contains(" info halvex.service: "), line);
    }

    void unknownAccountIsNamed()
    {
        const Ending ending =
            Other(*m_service, {HALVEX_SERVICE_PROGRAM, "-install", "no-such-account"}).end();
        QCOMPARE(ending.exitCode, 255);
        QCOMPARE(ending.errors, QByteArray("The service Halvex Service could not be installed\n"
                                           "there is no account no-such-account\n"));
    }

private:
    std::unique_ptr<ServiceFixture> m_service;
};

QTEST_GUILESS_MAIN(TestInstances)
#include "tst_instances.moc"
