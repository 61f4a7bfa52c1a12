// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/whole_file.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

class TestWholeFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// A limit on the size of files stands for a full disk: the first write beyond it fails.
    void noRoom()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("file"));
        QCOMPARE(replaceFile(path, "old"), QString());

        rlimit unlimited{};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
        rlimit limited = unlimited;
        limited.rlim_cur = 4;
        std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limited), 0);
        const QString reason = replaceFile(path, "newer");
        ::setrlimit(RLIMIT_FSIZE, &unlimited);

        QVERIFY(!reason.isEmpty());
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("old"));
        QCOMPARE(replaceFile(path, "newer"), QString());
    }
};

QTEST_GUILESS_MAIN(TestWholeFile)

#include "tst_whole_file.moc"
