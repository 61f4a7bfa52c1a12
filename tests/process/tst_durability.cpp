// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include "config/settings_file.h"
#include "files.h"
#include "process/failing_files.h"
#include "rows.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

namespace {

/// A service with injected faults of its files.
class FailingService : public ServiceFixture
{
public:
    FailingService()
        : m_file(path("plan"))
    {
        if (!m_file.open(QIODevice::ReadWrite) || !m_file.resize(sizeof(FaultPlan)))
            qFatal("cannot write %s", qPrintable(m_file.fileName()));
        m_plan = reinterpret_cast<FaultPlan *>(m_file.map(0, sizeof(FaultPlan)));
        setVariable("HALVEX_FAULT_PLAN", m_file.fileName());
        setVariable("LD_PRELOAD", HALVEX_FAILING_FILES);
        setVariable("ASAN_OPTIONS", qEnvironmentVariable("ASAN_OPTIONS") + ":verify_asan_link_order=0");
        writeMachine(json(R"({"drives": [{"number": 0, "dump": "drives/st500nm0011.json"}]})"));
    }

    /// Makes one operation fail, after `skipped` successful ones.
    void plan(FaultPlan::Kind kind, int skipped, const char *file = "")
    {
        qstrncpy(m_plan->file, file, sizeof(m_plan->file));
        m_plan->skipped = skipped;
        m_plan->injected = 0;
        m_plan->kind = kind;
    }
    [[nodiscard]] int injected() const { return m_plan->injected; }

    /// Returns how many operations of a SET the fault can hit.
    [[nodiscard]] int operations(FaultPlan::Kind kind)
    {
        constexpr int kMany = 1000;
        (void)history(); // the temperatures of the start are recorded
        plan(kind, kMany);
        set("count");
        const int left = m_plan->skipped;
        plan(FaultPlan::None, 0);
        return kMany - left;
    }

    /// Changes the subject of alert mails, and waits until the temperatures are recorded that this rates.
    bool set(const QString &subject) { return ask(setRequest(subject)) == "SET_OK" && !history().isNull(); }
    QString history() { return ask("GSTATD]![000101000000]![991231235959"); }
    static QString setRequest(const QString &subject)
    {
        return QString("SET]![0~;180000~;300000~;1~;0~;0~;~;~;%1~;~;0~;~;~;25~;55~;65~;~;").arg(subject);
    }

    [[nodiscard]] QString subject() const { return firstLine().split("]![").value(12); }

    /// Returns the subject in the settings file.
    [[nodiscard]] QString storedSubject() const
    {
        Settings settings;
        readSettingsLines(content("HalvexService.ini"), settings);
        return settings.smtpSubj;
    }

    [[nodiscard]] QStringList damagedFiles() const { return QDir(home()).entryList({"*.damaged-*"}); }

    int restart()
    {
        const int code = stop();
        return serve() ? code : -1;
    }

private:
    QFile m_file;
    FaultPlan *m_plan;
};

/// Returns the number of faults to inject: one for each operation, unless HALVEX_FAULT_ROUNDS is set.
int rounds(int operations)
{
    const int asked = qEnvironmentVariableIntValue("HALVEX_FAULT_ROUNDS");
    return asked > 0 ? asked : operations;
}

} // namespace

/// Stored state survives every fault of the files and the service, and each failure is reported.
class TestDurability : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void failedOperation_data()
    {
        QTest::addColumn<int>("kind");
        row("disk full", int(FaultPlan::NoSpace));
        row("write error", int(FaultPlan::WriteError));
        row("sync error", int(FaultPlan::SyncError));
    }

    void failedOperation()
    {
        QFETCH(int, kind);
        FailingService service;
        QVERIFY2(service.serve(), service.output());
        const int operations = service.operations(FaultPlan::Kind(kind));
        QVERIFY(operations >= 5);
        for (int i = 0; i < rounds(operations); ++i) {
            const QString before = QString::number(2 * i);
            const QString after = QString::number(2 * i + 1);
            QVERIFY(service.set(before));
            QCOMPARE(service.storedSubject(), before);
            const QByteArray history = service.content("temperature.log");
            QCOMPARE(history.size() % 8, 0);
            const int reports = service.output().count("has failed since");

            service.plan(FaultPlan::Kind(kind), i % operations);
            QVERIFY(service.set(after));
            QCOMPARE(service.injected(), 1);
            service.plan(FaultPlan::None, 0);
            QVERIFY(service.storedSubject() == before || service.storedSubject() == after);
            QVERIFY(service.content("temperature.log").startsWith(history));
            QTRY_COMPARE_WITH_TIMEOUT(service.output().count("has failed since"), reports + 1, kPatienceMs);
        }
        QCOMPARE(service.restart(), 0);
        QVERIFY(service.damagedFiles().isEmpty());
    }

    void killedInTheMiddle()
    {
        FailingService service;
        QVERIFY2(service.serve(), service.output());
        const int operations = service.operations(FaultPlan::Kill);
        for (int i = 0; i < rounds(operations); ++i) {
            const QString before = QString::number(2 * i);
            const QString after = QString::number(2 * i + 1);
            QVERIFY(service.set(before));
            const QByteArray history = service.content("temperature.log");
            service.plan(FaultPlan::Kill, i % operations);
            RawConsole console(service.port());
            console.readLine();
            console.send(FailingService::setRequest(after));
            QVERIFY(service.process().waitForFinished(kPatienceMs));
            service.plan(FaultPlan::None, 0);

            QVERIFY2(service.serve(), service.output());
            QVERIFY(!service.history().isNull()); // its first temperatures are recorded
            QVERIFY(service.subject() == before || service.subject() == after);
            QVERIFY(service.content("temperature.log").startsWith(history));
            QCOMPARE(service.content("temperature.log").size() % 8, 0);
        }
        QVERIFY(service.damagedFiles().isEmpty());
    }

    /// Nobody but a console that asks for the history waits for the disk, and the service ends without it.
    void temperaturesOnADiskThatHangs()
    {
        FailingService service;
        QVERIFY2(service.serve(), service.output());
        const int before = service.history().size();
        service.plan(FaultPlan::HangSync, 0, "temperature.log");
        for (int i = 0; i < 2; ++i)
            QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QTRY_COMPARE_WITH_TIMEOUT(service.injected(), 1, kPatienceMs);
        RawConsole reader(service.port());
        reader.readLine();
        reader.send("GSTATD]![000101000000]![991231235959");
        QCOMPARE(service.ask("DEVCOUNT"), "DEVCOUNT,1");
        QCOMPARE(reader.socket().bytesAvailable(), 0);
        service.plan(FaultPlan::None, 0);
        QCOMPARE(reader.readLine().size(), before + 2 * 8); // both records, in their order

        service.plan(FaultPlan::HangSync, 0, "temperature.log");
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QTRY_COMPARE_WITH_TIMEOUT(service.injected(), 1, kPatienceMs);
        QCOMPARE(service.stop(), 0);
    }

    void settingsThatCannotBeRead()
    {
        FailingService service;
        QVERIFY2(service.serve(), service.output());
        QVERIFY(service.set("old"));
        QCOMPARE(service.stop(), 0);
        const QByteArray old = service.content("HalvexService.ini");
        service.plan(FaultPlan::ReadError, 0, "HalvexService.ini");
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.injected(), 1);
        QVERIFY(service.output().contains("Reading the settings file has failed"));
        QCOMPARE(service.content("HalvexService.ini"), old);
        QVERIFY(service.set("new"));
        QCOMPARE(service.storedSubject(), "new");
        QCOMPARE(service.damagedFiles().size(), 1);
        QCOMPARE(service.content(service.damagedFiles().first()), old);
    }

    /// A schedule survives a RESET while the file cannot be read, and the next start.
    void scheduleThatCannotBeReadAgain()
    {
        FailingService service;
        QVERIFY2(service.serve(), service.output());
        const QString schedule = "SCANSCHED]![0~;2~;0~;261115~;033000";
        QCOMPARE(service.ask("SETSCANSCHED]![0~;2~;0~;261115033000~;0"), schedule);
        for (const bool isReadable : {true, false}) {
            service.plan(isReadable ? FaultPlan::None : FaultPlan::ReadError, 0, "HalvexService.ini");
            QCOMPARE(service.ask("RESET"), "RESET_OK");
            QVERIFY(service.waitUntilReady());
            QCOMPARE(service.ask("GETSCANSCHED"), schedule);
        }
        QCOMPARE(service.restart(), 0);
        QCOMPARE(service.ask("GETSCANSCHED"), schedule);
    }

    void pipesInPlaceOfTheFiles()
    {
        FailingService service;
        for (const QString &name : {QString("HalvexService.ini"), QString("temperature.log")})
            QCOMPARE(::mkfifo(QFile::encodeName(service.path(name)).constData(), S_IRWXU), 0);
        QVERIFY2(service.serve(), service.output());
        QVERIFY(service.set("new"));
        QCOMPARE(service.storedSubject(), "new");
        QCOMPARE(service.ask("GSTATD]![260101000000]![991231235959"), "STATD]![");
        QCOMPARE(service.stop(), 0);
    }

    void serviceKeyThatCannotBeRead()
    {
        FailingService service;
        writeFile(service.path("service-key.json"), "{\"Port\": 50");
        QVERIFY(!service.start({}));
        QCOMPARE(service.process().exitCode(), 1);
        QVERIFY2(service.output().contains("service-key.json: "), service.output());
    }

    /// The service ends while the lookups of its mail server and its webhook do not.
    void muteNameServer()
    {
        FailingService service;
        service.setVariable("HALVEX_MUTE_NAME_SERVER", "1");
        service.setKeyValue("AlertWebhook", "http://hook.example.org/");
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        console.readLine();
        console.send("SMTPTEST]![25~;0~;a@b~;c@d~;mail.example.org~;e~;f~;g~;h");
        RawConsole other(service.port());
        other.readLine();
        other.send("X-ALERTTEST");
        QTRY_COMPARE_WITH_TIMEOUT(service.injected(), 2, kPatienceMs);
        QCOMPARE(service.ask("DEVCOUNT"), "DEVCOUNT,1");
        QCOMPARE(service.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestDurability)
#include "tst_durability.moc"
