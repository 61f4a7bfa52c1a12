// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// A program for the thread sanitizer, so that its silence about the service is meaningful: two ways for a
// thread to pass a value to the event loop's thread, the second of them wrong.

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace {

using Work = std::function<void()>;

int value = 0; ///< the value that is passed

/// Runs the work on the event loop's thread, shows the value, and ends the loop.
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
    value = 1;
    showAfter([] {});
}

/// Writes after passing the value. The flag orders the threads in fact, but not for the sanitizer.
void afterTheCall()
{
    static std::atomic<bool> isWritten{false};
    showAfter([] {
        while (!isWritten.load(std::memory_order_relaxed)) {
        }
    });
    value = 1;
    isWritten.store(true, std::memory_order_relaxed);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const std::map<std::string, void (*)()> ways{{"queued-call", queuedCall},
                                                 {"after-the-call", afterTheCall}};
    // An unknown way ends the program with an exception.
    const std::unique_ptr<QThread> thread(QThread::create(ways.at(argc == 2 ? argv[1] : "")));
    thread->start();
    QCoreApplication::exec();
    thread->wait();
    return 0;
}
