// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/fake_target.h"
#include "protocol/tcp_server.h"
#include "web/poller.h"

#include <QTcpSocket>
#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr int kPatienceMs = 60000;

/// Closes its first connection and answers nothing on further ones.
class HungService : public QTcpServer
{
public:
    HungService()
    {
        if (!listen(QHostAddress::LocalHost))
            qFatal("no port is free");
    }

    bool hasFailed = false;
    int openConnections = 0;

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = new QTcpSocket(this);
        socket->setSocketDescriptor(descriptor);
        if (!std::exchange(hasFailed, true)) {
            socket->abort();
            return;
        }
        ++openConnections;
        connect(socket, &QTcpSocket::disconnected, this, [this] { --openConnections; });
    }
};

web::ServiceAddress addressOf(const QTcpServer &server)
{
    const quint16 port = server.serverPort();
    return {QString::number(port), {"127.0.0.1", port, {}}, {}};
}

} // namespace

/// The poller with services of this process.
class TestWebPoller : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hungServicesHoldOnePlaceEachAndHalfOfAll()
    {
        std::vector<std::unique_ptr<HungService>> hung;
        web::Configuration configuration;
        configuration.pollSeconds = 1; // far below the deadline of a poll
        for (int i = 0; i < 20; ++i) {
            hung.push_back(std::make_unique<HungService>());
            configuration.services.append(addressOf(*hung.back()));
        }
        FakeTarget target;
        TcpServer good(target, [] { return 7; }, {});
        QVERIFY(good.listenOn(0));
        configuration.services.append(addressOf(good));

        web::Poller poller(configuration);
        poller.start();
        const auto connections = [&hung] {
            int all = 0;
            for (const auto &service : hung)
                all += service->openConnections;
            return all;
        };
        const auto answers = [&poller] { return poller.snapshot()->services.last()->answeredPolls; };
        QTRY_VERIFY_WITH_TIMEOUT(connections() >= 8, kPatienceMs);
        const qint64 before = answers();
        int mostAtOnce = 0;
        int mostOfOne = 0;
        const auto observe = [&] {
            mostAtOnce = std::max(mostAtOnce, connections());
            for (const auto &service : hung)
                mostOfOne = std::max(mostOfOne, service->openConnections);
            return answers() >= before + 3;
        };
        QTRY_VERIFY_WITH_TIMEOUT(observe(), kPatienceMs);
        QVERIFY2(mostAtOnce < 16,
                 "every place is taken"); // a place that is free again is seen a little later
        QCOMPARE(mostOfOne, 1);
    }
};

QTEST_GUILESS_MAIN(TestWebPoller)
#include "tst_web_poller.moc"
