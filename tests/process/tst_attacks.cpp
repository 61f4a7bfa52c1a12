// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/proc_status.h"
#include "process/service_fixture.h"

#include "files.h"
#include "rows.h"
#include "wire/scrambling.h"

#include <QElapsedTimer>
#include <QFile>
#include <QHostAddress>
#include <QLocalSocket>
#include <QTest>

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <functional>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kPeers = 1000;
constexpr int kLogBytes = 32 * 1024 * 1024;
constexpr char kOtherAddress[] = "127.0.0.2";
constexpr int kAllowedKiB = 64 * 1000 * 1000 / 1024;
#ifdef HALVEX_SANITIZED
constexpr bool kMemoryCounts = false; // a sanitizer keeps freed memory, and notes about all of it
#else
constexpr bool kMemoryCounts = true;
#endif

const QByteArray kWholeLog = sendReply("GSTATD]![000101000000]![991231235959", [] { return 7; });

/// A connection that never reads. Plain sockets without Qt, so that a thousand of them cost little.
class SilentPeer
{
public:
    explicit SilentPeer(quint16 port)
        : m_descriptor(::socket(AF_INET, SOCK_STREAM, 0))
    {
        limitReceiveBuffer();
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connectTo(address);
    }
    explicit SilentPeer(const QString &localSocket)
        : m_descriptor(::socket(AF_UNIX, SOCK_STREAM, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, localSocket.toLocal8Bit().constData(), sizeof(address.sun_path));
        connectTo(address);
    }
    ~SilentPeer() { ::close(m_descriptor); }
    SilentPeer(SilentPeer &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {}

    /// Sends as much as the service accepts; it may close the connection.
    void send(QByteArray bytes)
    {
        while (!bytes.isEmpty()) {
            const auto sent =
                ::send(m_descriptor, bytes.constData(), std::size_t(bytes.size()), MSG_NOSIGNAL);
            if (sent <= 0)
                return;
            bytes = bytes.mid(int(sent));
        }
    }

private:
    void limitReceiveBuffer()
    {
        const int size = 4096;
        ::setsockopt(m_descriptor, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size));
    }
    template <typename Address>
    void connectTo(const Address &address)
    {
        if (::connect(m_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0)
            qFatal("cannot connect: %s", strerror(errno));
    }

    int m_descriptor;
};

using Peers = std::vector<SilentPeer>;

/// A service with a long log and one drive.
class Victim : public ServiceFixture
{
public:
    Victim()
    {
        writeMachine(json(R"({"drives": [{"number": 0, "dump": "drives/st500nm0011.json"}]})"));
        writeFile(path("temperature.log"), QByteArray(";,0+!!!a").repeated(kLogBytes / 8));
    }

    [[nodiscard]] int memoryKiB(const char *field) const { return int(procStatus(processId(), field)); }

    /// Starts the service, waits for the index of its log, and returns its memory when idle.
    [[nodiscard]] int serveIdle()
    {
        const bool isReady = serve() && ask("GSTATD]![000101000000]![000102000000").startsWith("STATD");
        return isReady ? memoryKiB("VmRSS") : 0;
    }
};

/// A console of another address, on a thread of its own: asks for the number of drives from before an attack
/// until it is destroyed, over a connection that stays and over a new one each time.
class Observer
{
public:
    explicit Observer(quint16 port)
        : m_thread([this, port] { run(port); })
    {}
    ~Observer() { stop(); }

    /// Ends the questions; afterwards the results may be read.
    void stop()
    {
        m_isStopping = true;
        if (m_thread.joinable())
            m_thread.join();
    }

    [[nodiscard]] int asked() const { return m_asked; }
    [[nodiscard]] bool isServed() const { return m_isServed; }
    /// Milliseconds to an answer, sorted: over the connection that stays, and from the start of a new one.
    [[nodiscard]] const std::vector<double> &answers() const { return m_answers; }
    [[nodiscard]] const std::vector<double> &arrivals() const { return m_arrivals; }

private:
    void run(quint16 port)
    {
        RawConsole lasting(port, kOtherAddress);
        m_isServed = !lasting.readLine().isNull();
        while (m_isServed && !m_isStopping) {
            note(m_answers, [&lasting] { return lasting.ask("DEVCOUNT"); });
            note(m_arrivals, [port] {
                RawConsole fresh(port, kOtherAddress);
                return fresh.readLine().isNull() ? QString() : fresh.ask("DEVCOUNT");
            });
        }
        std::sort(m_answers.begin(), m_answers.end());
        std::sort(m_arrivals.begin(), m_arrivals.end());
    }

    template <typename Ask>
    void note(std::vector<double> &times, Ask ask)
    {
        QElapsedTimer time;
        time.start();
        m_isServed = m_isServed && ask() == "DEVCOUNT,1";
        times.push_back(double(time.nsecsElapsed()) / 1e6);
        ++m_asked;
    }

    std::atomic<bool> m_isStopping{false};
    std::atomic<bool> m_isServed{true};
    std::atomic<int> m_asked{0};
    std::vector<double> m_answers;
    std::vector<double> m_arrivals;
    std::thread m_thread; ///< last: it uses the members above
};

} // namespace

using Attack = std::function<void(Victim &, Peers &)>;
Q_DECLARE_METATYPE(Attack)

/// Peers that use as many resources as they can: memory remains bounded, other consoles are served, and the
/// service stops in time.
class TestAttacks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
        QVERIFY(limit.rlim_cur > kPeers + 100);
    }

    void attacks_data()
    {
        QTest::addColumn<Attack>("attack");
        row("ask for the history and leave", Attack([](Victim &victim, Peers &) {
                for (int i = 0; i < kPeers; ++i)
                    SilentPeer(victim.port()).send(kWholeLog);
            }));
        row("ask for the history and do not read", Attack([](Victim &victim, Peers &peers) {
                for (int i = 0; i < kPeers; ++i)
                    peers.emplace_back(victim.port()).send(kWholeLog);
            }));
        row("send half lines", Attack([](Victim &victim, Peers &peers) {
                const QByteArray half(1024 * 1024, '0');
                for (int i = 0; i < kPeers; ++i)
                    peers.emplace_back(victim.port()).send(half);
            }));
        row("supersede local consoles", Attack([](Victim &victim, Peers &peers) {
                for (int i = 0; i < kPeers; ++i)
                    peers.emplace_back(victim.path("HalvexService001")).send(kWholeLog);
            }));
        row("hold all connections", Attack([](Victim &victim, Peers &peers) {
                for (int i = 0; i < kPeers + 50; ++i)
                    peers.emplace_back(victim.port());
            }));
    }

    void attacks()
    {
        QFETCH(Attack, attack);
        Victim victim;
        const int idleKiB = victim.serveIdle();
        QVERIFY2(idleKiB > 0, victim.output());
        Observer other(victim.port());
        QTRY_VERIFY_WITH_TIMEOUT(other.asked() > 0, kPatienceMs);
        Peers peers;
        attack(victim, peers);
        const int askedDuringAttack = other.asked();
        QTRY_VERIFY_WITH_TIMEOUT(other.asked() > askedDuringAttack + 100 || !other.isServed(), kPatienceMs);
        other.stop();
        QVERIFY(other.isServed());
        QLocalSocket local;
        local.connectToServer(victim.path("HalvexService001"));
        QVERIFY(local.waitForConnected(kPatienceMs) && local.waitForReadyRead(kPatienceMs));

        const int grownKiB = victim.memoryKiB("VmHWM") - idleKiB;
        QElapsedTimer end;
        end.start();
        QCOMPARE(victim.stop(), 0);
        const std::vector<double> &answers = other.answers();
        qInfo("%s: %d KiB above idle, %d answers during the attack; %.1f ms (median), %.1f ms (worst), "
              "%.1f ms (worst of a new connection); end after %lld ms",
              QTest::currentDataTag(), grownKiB, askedDuringAttack, answers[answers.size() / 2],
              answers.back(), other.arrivals().back(), end.elapsed());
        QVERIFY2(!kMemoryCounts || grownKiB < kAllowedKiB, qPrintable(QString::number(grownKiB)));
    }

    /// The service listens on one of two addresses of this machine, and only that address may connect.
    void restrictedAddresses()
    {
        ServiceFixture service;
        service.setKeyValue("ListenAddress", "127.0.0.1");
        service.setKeyValue("AllowFrom", "127.0.0.1, 192.0.2.0/24");
        service.writeMachine({});
        QVERIFY2(service.serve(), service.output());
        QTcpSocket elsewhere;
        QVERIFY(elsewhere.bind(QHostAddress("127.0.0.2")));
        elsewhere.connectToHost("127.0.0.1", service.port());
        QVERIFY(elsewhere.waitForConnected(kPatienceMs) && elsewhere.waitForDisconnected(kPatienceMs));
        QCOMPARE(elsewhere.bytesAvailable(), 0);
        QTcpSocket toElsewhere;
        toElsewhere.connectToHost("127.0.0.2", service.port());
        QVERIFY(!toElsewhere.waitForConnected(kPatienceMs));
        QCOMPARE(toElsewhere.error(), QAbstractSocket::ConnectionRefusedError);
    }

    /// The reader receives every byte, and memory remains small.
    void oneReader()
    {
        Victim victim;
        const int idleKiB = victim.serveIdle();
        QVERIFY2(idleKiB > 0, victim.output());
        RawConsole reader(victim.port());
        reader.readLine();
        QVERIFY(reader.ask("GSTATD]![000101000000]![991231235959").size() > kLogBytes);
        const int grownKiB = victim.memoryKiB("VmHWM") - idleKiB;
        qInfo("%d KiB above idle", grownKiB);
        QVERIFY2(!kMemoryCounts || grownKiB < 16 * 1024, qPrintable(QString::number(grownKiB)));
    }
};

QTEST_GUILESS_MAIN(TestAttacks)
#include "tst_attacks.moc"
