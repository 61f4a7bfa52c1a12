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
#include <cstring>
#include <functional>
#include <memory>

namespace {

using Work = std::function<void()>;

/// Runs on a thread from here to the end of the scope.
class Producer
{
public:
    explicit Producer(const Work &work)
        : m_thread(QThread::create(work))
    {
        m_thread->start();
    }
    ~Producer() { m_thread->wait(); }
    Producer(const Producer &) = delete;
    Producer &operator=(const Producer &) = delete;

private:
    const std::unique_ptr<QThread> m_thread;
};

void show(int value)
{
    std::printf("%d\n", value);
}

/// Has the event loop's thread do the work, and leave its loop.
void callLast(const Work &work)
{
    const auto call = [work] {
        work();
        QCoreApplication::quit();
    };
    QMetaObject::invokeMethod(QCoreApplication::instance(), call, Qt::QueuedConnection);
}

void queuedCall()
{
    int value = 0;
    const Producer producer([&value] {
        value = 1;
        callLast([&value] { show(value); });
    });
    QCoreApplication::exec();
}

void lock()
{
    int value = 0;
    QMutex mutex;
    QWaitCondition changed;
    const Producer producer([&] {
        const QMutexLocker locker(&mutex);
        value = 1;
        changed.wakeAll();
    });
    const QMutexLocker locker(&mutex);
    while (value == 0)
        changed.wait(&mutex);
    show(value);
}

void threadEnd()
{
    int value = 0;
    {
        const Producer producer([&value] { value = 1; });
    }
    show(value);
}

/// Written after it was handed over. The flag puts the threads in order for us and not for the sanitizer.
void afterTheCall()
{
    int value = 0;
    std::atomic<bool> isWritten{false};
    const Producer producer([&] {
        callLast([&] {
            while (!isWritten.load(std::memory_order_relaxed)) {
            }
            show(value);
        });
        value = 1;
        isWritten.store(true, std::memory_order_relaxed);
    });
    QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const struct
    {
        const char *name;
        void (*handOver)();
    } ways[] = {
        {"queued-call", queuedCall},
        {"lock", lock},
        {"thread-end", threadEnd},
        {"after-the-call", afterTheCall},
    };
    for (const auto &way : ways) {
        if (argc == 2 && std::strcmp(argv[1], way.name) == 0) {
            way.handOver();
            return 0;
        }
    }
    std::fputs("usage: hand_over queued-call | lock | thread-end | after-the-call\n", stderr);
    return 2;
}
