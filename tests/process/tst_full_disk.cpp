// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include <QCoreApplication>
#include <QFile>
#include <QTest>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/mount.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr char kInsideVariable[] = "HALVEX_TEST_OWN_MOUNTS";

/// Returns SET's items with `mark` in its long texts. Port and intervals are unchanged.
QString settingsCommand(const QString &mark)
{
    return QString("SET]![0~;180000~;300000~;1~;0~;0~;%1~;%1~;%1~;~;0~;~;~;25~;55~;65~;~;").arg(mark);
}

QString markOf(const ServiceFixture &service)
{
    return service.firstLine().split("]![").value(10);
}

} // namespace

/// The service with its home on a full disk.
class TestFullDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oldSettingsStayUntilThereIsRoom()
    {
        const QString before(5000, 'a');
        const QString after(5000, 'b');
        ServiceFixture service;
        QVERIFY2(::mount("tmpfs", service.home().toLocal8Bit().constData(), "tmpfs", 0, "size=512k") == 0,
                 std::strerror(errno));
        service.writeMachine(json(R"({"drives": [{"number": 0}]})"));
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask(settingsCommand(before)), "SET_OK");

        QFile ballast(service.path("ballast"));
        QVERIFY(ballast.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (ballast.write(QByteArray(4096, 'x')) > 0) {
        }
        // The reply confirms the settings in memory.
        QCOMPARE(service.ask(settingsCommand(after)), "SET_OK");
        QCOMPARE(markOf(service), after);
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        service.process().kill();
        QVERIFY(service.process().waitForFinished());

        QVERIFY2(service.serve(), service.output());
        QCOMPARE(markOf(service), before);
        QVERIFY(ballast.remove());
        QCOMPARE(service.ask(settingsCommand(after)), "SET_OK");
        QCOMPARE(service.stop(), 0);
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(markOf(service), after);
        QCOMPARE(service.stop(), 0);
        ::umount2(service.home().toLocal8Bit().constData(), MNT_DETACH);
    }
};

/// Restarts this program in a mount namespace of its own, for which root needs no user namespace.
int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty(kInsideVariable)) {
        qputenv(kInsideVariable, "1");
        std::vector<std::string> words{"unshare", "--mount"};
        if (::geteuid() != 0)
            words.emplace_back("--map-root-user");
        words.insert(words.end(), argv, argv + argc);
        std::vector<char *> command;
        command.reserve(words.size() + 1);
        for (std::string &word : words)
            command.push_back(word.data());
        command.push_back(nullptr);
        ::execvp(command.front(), command.data());
        std::perror("unshare");
        return 1;
    }
    const QCoreApplication application(argc, argv);
    TestFullDisk test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_full_disk.moc"
