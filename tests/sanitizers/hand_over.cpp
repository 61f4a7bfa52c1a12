// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// What the thread sanitizer is to pass and what it is to report, so that its silence about the service means
// something: ways for a thread to hand a value to the event loop's thread, the last of them wrong.

#include <QCoreApplication>
#include <QMutex>
#include <QThread>
#include <QWaitCondition>

#include <atomic>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace {

using Work = std::function<void()>;

int value = 0; ///< what is handed over

/// Does the work on a thread of its own, and meanwhile something else on this one.
void beside(const Work &work, const Work &meanwhile)
{
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->start();
    meanwhile();
    thread->wait();
}

/// Has the event loop's thread do the work, show the value, and leave its loop.
void showAfter(const Work &work)
{
    const auto call = [work] {
        work();
        std::printf("%d\n", value);
        QCoreApplication::quit();
    };
    QMetaObject::invokeMethod(QCoreApplication::instance(), call, Qt::QueuedConnection);
}

void queuedCall()
{
    const auto produce = [] {
        value = 1;
        showAfter([] {});
    };
    beside(produce, QCoreApplication::exec);
}

void lock()
{
    QMutex mutex;
    QWaitCondition changed;
    const auto produce = [&] {
        const QMutexLocker locker(&mutex);
        value = 1;
        changed.wakeAll();
    };
    beside(produce, [&] {
        const QMutexLocker locker(&mutex);
        while (value == 0)
            changed.wait(&mutex);
    });
}

void threadEnd()
{
    beside([] { value = 1; }, [] {});
    std::printf("%d\n", value);
}

/// Written after it was handed over. The flag puts the threads in order for us and not for the sanitizer.
void afterTheCall()
{
    std::atomic<bool> isWritten{false};
    const auto produce = [&isWritten] {
        showAfter([&isWritten] {
            while (!isWritten.load(std::memory_order_relaxed)) {
            }
        });
        value = 1;
        isWritten.store(true, std::memory_order_relaxed);
    };
    beside(produce, QCoreApplication::exec);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const std::map<std::string, void (*)()> ways{
        {"queued-call", queuedCall},
        {"lock", lock},
        {"thread-end", threadEnd},
        {"after-the-call", afterTheCall},
    };
    ways.at(argc == 2 ? argv[1] : "")(); // an unknown way ends the program with an exception
    return 0;
}
