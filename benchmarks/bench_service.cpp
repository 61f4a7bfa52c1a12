// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// Measures the built service beside a bare QTcpServer: requests, start and memory, in one run.

#include "process/proc_status.h"

#include "process/service_fixture.h"

#include "wire/scrambling.h"

#include <QFile>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

/// Returns a drive with 30 attributes, which is all that a drive can have.
QJsonObject fullDrive(int number)
{
    QJsonArray attributes;
    for (int i = 1; i <= 30; ++i)
        attributes.append(QJsonObject{{QStringLiteral("id"), i},
                                      {QStringLiteral("flags"), 51},
                                      {QStringLiteral("current"), 100},
                                      {QStringLiteral("worst"), 99},
                                      {QStringLiteral("threshold"), 36},
                                      {QStringLiteral("raw"), 124179459 + i}});
    return {{QStringLiteral("number"), number},
            {QStringLiteral("model"), QStringLiteral("FULL DRIVE %1").arg(number)},
            {QStringLiteral("capacity"), 1000204886016.0},
            {QStringLiteral("smart"), QJsonObject{{QStringLiteral("attributes"), attributes}}}};
}

std::unique_ptr<ServiceFixture> serviceWith(int drives)
{
    QJsonArray list;
    for (int i = 0; i < drives; ++i)
        list.append(fullDrive(i));
    auto service = std::make_unique<ServiceFixture>();
    service->writeMachine({{QStringLiteral("drives"), list}});
    return service;
}

/// Starts the bare server as a process. Returns its port, or 0 if it does not start.
class BareServer
{
public:
    explicit BareServer(const QStringList &arguments = {})
    {
        m_process.start(QStringLiteral(HALVEX_BARE_SERVER), arguments);
        if (m_process.waitForReadyRead())
            m_port = m_process.readLine().trimmed().toUShort();
    }
    ~BareServer()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    BareServer(const BareServer &) = delete;
    BareServer &operator=(const BareServer &) = delete;

    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

private:
    QProcess m_process;
    quint16 m_port = 0;
};

QByteArray exchange(RawConsole &console, const QByteArray &question)
{
    console.sendBytes(question);
    while (!console.socket().canReadLine() && console.socket().waitForReadyRead()) {
    }
    return console.socket().readLine();
}

QByteArray question()
{
    return sendReply(QStringLiteral("ALLSMARTINFO"), [] { return 17; });
}

void askEverything(benchmark::State &state)
{
    const auto service = serviceWith(99);
    if (!service->serve())
        return state.SkipWithError("the service does not start");
    RawConsole console(service->port());
    if (console.readLine().isNull())
        return state.SkipWithError("no greeting");
    qint64 bytes = 0;
    for (auto _ : state)
        bytes += exchange(console, question()).size();
    state.SetBytesProcessed(bytes);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(askEverything)->Name("ALLSMARTINFO of 99 drives")->UseRealTime()->Unit(benchmark::kMillisecond);

void echoTheSame(benchmark::State &state)
{
    const auto service = serviceWith(99);
    if (!service->serve())
        return state.SkipWithError("the service does not start");
    RawConsole console(service->port());
    const QString answerFile = service->path(QStringLiteral("answer"));
    QFile file(answerFile);
    if (console.readLine().isNull() || !file.open(QIODevice::WriteOnly) ||
        file.write(exchange(console, question())) <= 0)
        return state.SkipWithError("no answer to echo");
    file.close();
    const BareServer bare({answerFile});
    RawConsole peer(bare.port());
    qint64 bytes = 0;
    for (auto _ : state)
        bytes += exchange(peer, question()).size();
    state.SetBytesProcessed(bytes);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(echoTheSame)
    ->Name("the same bytes from a bare QTcpServer")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void startToGreeting(benchmark::State &state)
{
    const auto service = serviceWith(8);
    for (auto _ : state) {
        if (!service->serve())
            return state.SkipWithError("the service does not start");
        state.PauseTiming();
        if (service->stop() != 0)
            return state.SkipWithError("the service does not end");
        state.ResumeTiming();
    }
}
BENCHMARK(startToGreeting)
    ->Name("start to greeting with 8 drives")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void startBareServer(benchmark::State &state)
{
    for (auto _ : state) {
        const BareServer bare;
        if (!RawConsole(bare.port()).isConnected())
            return state.SkipWithError("the bare server does not start");
    }
}
BENCHMARK(startBareServer)
    ->Name("start to connection of a bare QTcpServer")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void idleMemory(benchmark::State &state)
{
    const auto service = serviceWith(8);
    if (!service->serve())
        return state.SkipWithError("the service does not start");
    const BareServer bare;
    if (!RawConsole(bare.port()).isConnected())
        return state.SkipWithError("the bare server does not start");
    for (auto _ : state) {
        const double ours = procStatus(service->process().processId(), "VmRSS");
        const double bareKiB = procStatus(bare.processId(), "VmRSS");
        state.counters["service_KiB"] = ours;
        state.counters["bare_KiB"] = bareKiB;
        state.counters["ratio"] = ours / bareKiB;
    }
}
BENCHMARK(idleMemory)->Name("resident memory when idle")->Iterations(1);

} // namespace
