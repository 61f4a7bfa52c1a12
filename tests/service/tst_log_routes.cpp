// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
#include "platform/event_log.h"
#include "service/log_routes.h"

#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

Q_LOGGING_CATEGORY(lcTest, "halvex.test", QtInfoMsg)

namespace {

struct RecordingEventLog : EventLog
{
    QStringList events;

    void report(const Event &event) override
    {
        events << QString("%1 %2 %3").arg(event.source).arg(int(event.type)).arg(event.text);
    }
};

void ignore(QtMsgType, const QMessageLogContext &, const QString &)
{}

} // namespace

class TestLogRoutes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repeatedTextOncePerHour()
    {
        using namespace std::chrono_literals;
        RepeatFilter filter;
        const RepeatFilter::Time start{};
        QVERIFY(filter.admits("drive 0 does not answer", start));
        QVERIFY(!filter.admits("drive 0 does not answer", start + 3599s));
        QVERIFY(filter.admits("drive 1 does not answer", start + 3599s));
        QVERIFY(filter.admits("drive 0 does not answer", start + 3600s));
        for (int i = 0; i < 1000; ++i) // the memory is bounded: the oldest text is forgotten first
            QVERIFY(filter.admits(QString::number(i), start + 3601s));
        QVERIFY(!filter.admits("999", start + 3602s));
        QVERIFY(filter.admits("drive 1 does not answer", start + 3602s));
    }

    void fileIsBounded()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("log");
        constexpr int kLines = 60;
        for (int i = 0; i < kLines; ++i) {
            RotatingLog log(path); // each is a restart
            QVERIFY(log.append(QByteArray::number(i) + QByteArray(100 * 1024, '.')));
        }
        const QStringList files = QDir(folder.path()).entryList(QDir::Files, QDir::Name);
        QCOMPARE(files, QStringList({"log", "log.1", "log.2", "log.3", "log.4"}));
        int expected = kLines;
        for (const QString &file : files) {
            const QByteArray bytes = contentOf(folder.filePath(file));
            QVERIFY(bytes.size() <= RotatingLog::kMaxFileSize);
            const QList<QByteArray> lines = bytes.trimmed().split('\n');
            expected -= lines.size();
            QCOMPARE(lines.first().left(3).replace('.', ""), QByteArray::number(expected));
        }
    }

    void fileThatCannotBeWritten()
    {
        const QTemporaryDir folder;
        RotatingLog log(folder.filePath("missing/log"));
        QVERIFY(!log.append("lost"));
        QVERIFY(QDir(folder.path()).mkdir("missing"));
        QVERIFY(log.append("kept"));
        QCOMPARE(contentOf(folder.filePath("missing/log")), QByteArray("kept\n"));
    }

    void routes()
    {
        const QTemporaryDir folder;
        RecordingEventLog events;
        const QtMessageHandler usual = qInstallMessageHandler(ignore);
        {
            LogRoutes routes;
            routes.addEventLog(events);
            routes.addFile(folder.filePath("log"));
            for (int i = 0; i < 2; ++i)
                qCWarning(lcTest, "peer sent \x1b[2J\nforged");
            qCInfo(lcTest, "started");
            qCDebug(lcTest, "not enabled");
            qCCritical(lcTest, "out of memory");
        }
        qInstallMessageHandler(usual);
        QCOMPARE(events.events, QStringList({"Halvex Service 2 peer sent \\x1b[2J\\x0aforged",
                                             "Halvex Service 1 out of memory"}));
        QStringList lines;
        for (const QByteArray &line : contentOf(folder.filePath("log")).trimmed().split('\n'))
            lines << line.mid(line.indexOf(' ') + 1);
        const QString warning = "warning halvex.test: peer sent \\x1b[2J\\x0aforged";
        QCOMPARE(lines, QStringList({warning, warning, "info halvex.test: started",
                                     "critical halvex.test: out of memory"}));
    }
};

QTEST_GUILESS_MAIN(TestLogRoutes)
#include "tst_log_routes.moc"
