// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/workers.h"

#include <QSemaphore>
#include <QtTest>

#include <atomic>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto kAgeLong = 1h;
const QString kSubject = "drive";

/// The state that several workers share with the test that controls them.
struct Script
{
    std::atomic_int started{0};
    std::atomic_bool isCancelled{false};
    QSemaphore permits; ///< one for each worker that may end
};

class ScriptedWorker : public Worker
{
public:
    explicit ScriptedWorker(Script &script, bool isBeside = false)
        : Worker(kSubject)
        , m_script(script)
        , m_isBeside(isBeside)
    {}

    void cancel() override { m_script.isCancelled = true; }
    [[nodiscard]] bool runsBeside() const override { return m_isBeside; }

protected:
    void run() override
    {
        ++m_script.started;
        m_script.permits.acquire();
        Q_EMIT workDone();
    }

private:
    Script &m_script;
    const bool m_isBeside;
};

struct Bench
{
    int start(std::chrono::milliseconds limit, bool isBeside = false)
    {
        return workers.start(std::make_unique<ScriptedWorker>(script, isBeside), limit,
                             [this](int, WorkEnd end) { ends.append(end); });
    }

    ~Bench() { script.permits.release(100); } // lets workers end when a test has failed

    Script script;
    QVector<WorkEnd> ends;
    Workers workers{{kAgeLong, kAgeLong, 0ms, 0ms}};
};

} // namespace

class TestWorkers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void workersOfASubjectTakeTurns()
    {
        Bench bench;
        bench.start(kAgeLong);
        bench.start(kAgeLong);
        QTRY_COMPARE(bench.script.started.load(), 1);
        bench.start(kAgeLong, true);
        QTRY_COMPARE(bench.script.started.load(), 2); // this one runs beside the first
        QVERIFY(bench.ends.isEmpty());
        bench.script.permits.release(2);
        QTRY_COMPARE(bench.script.started.load(), 3);
        bench.script.permits.release();
        QTRY_VERIFY(!bench.workers.isBusy());
        QCOMPARE(bench.ends, QVector<WorkEnd>(3, WorkEnd::Done));
    }

    void lateWorkerBlocksItsSubjectUntilItReturns()
    {
        Bench bench;
        bench.start(1ms);
        bench.start(kAgeLong); // waits, and fails with the first
        QTRY_COMPARE(bench.ends, QVector<WorkEnd>({WorkEnd::TimedOut, WorkEnd::Hung}));
        QVERIFY(bench.script.isCancelled);
        QVERIFY(bench.workers.isHung(kSubject));
        bench.start(kAgeLong);
        QCOMPARE(bench.ends.size(), 2); // not before the caller has returned
        QTRY_COMPARE(bench.ends.size(), 3);
        QCOMPARE(bench.ends.last(), WorkEnd::Hung);
        QTRY_COMPARE(bench.script.started.load(), 1); // its thread may start after its limit

        bench.script.permits.release(2);
        QTRY_VERIFY(!bench.workers.isHung(kSubject));
        bench.start(kAgeLong);
        QTRY_COMPARE(bench.ends.size(), 4); // late results are not reported
        QCOMPARE(bench.ends.last(), WorkEnd::Done);
    }

    /// The wait for a drive that is slow, but not hung, counts too.
    void limitIncludesTheWait()
    {
        Bench bench;
        bench.start(kAgeLong);
        const int second = bench.start(1ms);
        QVERIFY(bench.workers.isWaiting(second));
        QTRY_COMPARE(bench.ends, QVector<WorkEnd>({WorkEnd::TimedOut}));
        QVERIFY(!bench.workers.isHung(kSubject));
        bench.script.permits.release(2);
        QTRY_VERIFY(!bench.workers.isBusy());
        QCOMPARE(bench.script.started.load(), 1);
    }

    void abandonedWorkIsNotReported()
    {
        Bench bench;
        const int first = bench.start(kAgeLong);
        const int second = bench.start(kAgeLong);
        bench.workers.abandon(second);
        bench.workers.abandon(first);
        QVERIFY(bench.script.isCancelled);
        bench.script.permits.release(2);
        QTRY_VERIFY(!bench.workers.isBusy());
        QVERIFY(bench.ends.isEmpty());
        QCOMPARE(bench.script.started.load(), 1);
    }

    void stopAllReportsRunningThreads()
    {
        Bench bench;
        bench.start(kAgeLong);
        QVERIFY(!bench.workers.stopAll());
        bench.script.permits.release();
        QTRY_VERIFY(bench.workers.stopAll());
        QVERIFY(bench.ends.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestWorkers)
#include "tst_workers.moc"
