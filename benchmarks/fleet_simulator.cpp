// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// Answers the console protocol as many services at once, each on a port of its own on this machine.
// Usage: fleet_simulator SERVICES DRIVES. Prints the services as halvex-web's configuration lists them, on
// one line. The replies are the service's own; the drives change as those of an idle fleet do: a few degrees.

#include "protocol/fake_target.h"
#include "protocol/tcp_server.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

using namespace std::chrono_literals;

constexpr auto kPollInterval = 60s;
constexpr int kRecordsADay = 48;

/// The attributes of a common drive.
constexpr quint32 kAttributes[] = {1,   3,   4,   5,   7,   9,   10,  12,  184, 187,
                                   188, 189, 190, 191, 192, 193, 194, 197, 198, 199};

AttributeEntry attribute(quint32 id)
{
    AttributeEntry entry;
    entry.id = id;
    entry.flags = id < 12 ? 0x33 : 0x32;
    entry.notPrefailure = ~entry.flags & 1;
    entry.flagBit2 = entry.flags >> 1 & 1;
    entry.current = 100;
    entry.worst = 99;
    entry.threshold = id < 12 ? 6 : 0;
    entry.raw = id == 9 ? 20000 : 0;
    return entry;
}

DeviceRecord drive(int service, int number)
{
    DeviceRecord device;
    device.deviceNumber = device.probeNumber = number;
    device.model = QStringLiteral("SIMULATED DISK 8TB");
    device.serial = QStringLiteral("F%1-%2").arg(service, 4, 10, QLatin1Char('0')).arg(number);
    device.firmware = QStringLiteral("1.0");
    device.ataVersion = QStringLiteral("ACS-3");
    device.capacity = 8001563222016;
    device.bytesPerSector = 512;
    device.smartSupported = device.smartEnabled = 1;
    device.rating = {level::kFine, 100};
    device.smart.fullRead = FullRead::Attributes;
    device.smart.lastRead = LastRead::Answered;
    device.smart.powerOn = {20000, PowerOnCounter::Unit::Hours, false};
    for (const quint32 id : kAttributes)
        device.smart.attributes.append(attribute(id));
    device.smart.attributeCount = device.smart.attributes.size();
    return device;
}

/// Returns the temperatures of the last day, as the service logs them.
QByteArray temperatureLog(int drives)
{
    QByteArray log;
    const QDateTime now = QDateTime::currentDateTime();
    for (int age = kRecordsADay; age > 0; --age) {
        const QDateTime at = now.addSecs(-age * (24 * 3600 / kRecordsADay));
        const int moment[] = {at.date().year() - 2000, at.date().month(),  at.date().day(),
                              at.time().hour(),        at.time().minute(), at.time().second()};
        for (int drive = 0; drive < drives; ++drive) {
            for (const int part : moment)
                log += char(33 + part);
            log += char(33 + drive);
            log += char(33 + 30 + age % 8);
        }
    }
    return log;
}

class SimulatedService
{
public:
    SimulatedService(int number, int drives)
        : m_server(m_target, [] { return QRandomGenerator::global()->bounded(100); },
                   {QHostAddress(QHostAddress::LocalHost), {}})
    {
        m_target.settingsRecord.alertLevel = level::kFine;
        for (int i = 0; i < drives; ++i)
            m_target.deviceList.append(drive(number, i));
        m_target.setTemperatures(temperatureLog(drives));
        changeTemperatures();
    }

    [[nodiscard]] bool listen() { return m_server.listenOn(0); }
    [[nodiscard]] quint16 port() const { return m_server.serverPort(); }

    void changeTemperatures()
    {
        for (DeviceRecord &device : m_target.deviceList) {
            device.smart.hasTemperature = true;
            device.smart.temperature = QRandomGenerator::global()->bounded(30, 34);
            for (AttributeEntry &entry : device.smart.attributes) {
                if (entry.id == 194)
                    entry.raw = quint64(device.smart.temperature);
            }
        }
    }

private:
    FakeTarget m_target;
    TcpServer m_server;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int count = arguments.value(1).toInt();
    const int drives = arguments.value(2).toInt();
    if (count < 1 || drives < 1 || drives > 94) {
        std::fputs("usage: fleet_simulator SERVICES DRIVES (1 to 94)\n", stderr);
        return 2;
    }
    std::vector<std::unique_ptr<SimulatedService>> services;
    QJsonArray entries;
    for (int i = 0; i < count; ++i) {
        services.push_back(std::make_unique<SimulatedService>(i, drives));
        if (!services.back()->listen())
            return 1;
        entries.append(QJsonObject{{QStringLiteral("name"), QStringLiteral("machine-%1").arg(i)},
                                   {QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                                   {QStringLiteral("port"), services.back()->port()}});
    }
    std::puts(QJsonDocument(entries).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);

    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&services] {
        for (const auto &service : services)
            service->changeTemperatures();
    });
    timer.start(kPollInterval);
    return QCoreApplication::exec();
}
