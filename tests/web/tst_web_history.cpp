// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "web/fake_snapshot.h"
#include "web/history_changes.h"
#include "web/history_store.h"

#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>

using web::EventKind;
using web::HistoryChanges;
using web::HistoryStore;
using web::Timestamp;

namespace {

constexpr Timestamp kStart = 1794744000;
const QString kService = "files";

QVector<int> kinds(const HistoryChanges &changes)
{
    QVector<int> list;
    for (const web::Event &event : changes.events)
        list.append(int(event.kind));
    return list;
}

QVector<int> listOf(std::initializer_list<EventKind> events)
{
    QVector<int> list;
    for (const EventKind kind : events)
        list.append(int(kind));
    return list;
}

HistoryChanges firstPoll(const web::ServiceData &data)
{
    return web::compare({}, true, kService, data, kStart);
}

/// Writes one transaction after another until it is killed.
int writeForEver(const QString &folder)
{
    HistoryStore store(folder);
    if (!store.open())
        return 1;
    HistoryChanges changes = firstPoll(*fakeData());
    for (Timestamp time = kStart;; ++time) {
        changes.events = {{time, kService, 0, {}, {}, EventKind::Level, QString("event %1").arg(time)}};
        for (auto &attribute : changes.attributes)
            attribute.value.raw = time;
        if (!store.add(changes, time))
            return 1;
        std::printf("%lld\n", static_cast<long long>(time));
        std::fflush(stdout);
    }
}

} // namespace

class TestWebHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsEvents()
    {
        auto data = fakeData();
        HistoryChanges known = firstPoll(*data);
        QVERIFY(known.events.isEmpty()); // the first drives of a new service are not events
        QCOMPARE(known.attributes.size(), 4);

        const auto poll = [&](bool keepsAll = true) {
            HistoryChanges changes = web::compare(known.drives, false, kService, *data, kStart + 60);
            if (keepsAll)
                known = changes;
            return changes;
        };
        QVERIFY(poll().events.isEmpty());
        QVERIFY(poll().attributes.isEmpty());

        data->attributes[0][0].raw = 8;
        QCOMPARE(poll().attributes.size(), 1);

        data->drives[1].statusLevel = client::Level::Critical;
        data->drives[1].temperature = 65;
        QCOMPARE(kinds(poll()), listOf({EventKind::Level, EventKind::Finding}));
        data->drives[1].temperature = 54;
        data->drives[1].statusLevel = client::Level::Fine;
        QCOMPARE(kinds(poll()), listOf({EventKind::Level, EventKind::Recovered}));

        data->scans[0].state = client::ScanState::Running;
        QVERIFY(poll().events.isEmpty());
        data->scans[0].state = client::ScanState::Idle;
        data->scans[0].percent = 100;
        QCOMPARE(kinds(poll()), listOf({EventKind::Scan}));

        const auto all = *data;
        data->drives.removeLast();
        data->attributes.removeLast();
        QCOMPARE(kinds(poll()), listOf({EventKind::Lost}));
        QVERIFY(poll().events.isEmpty());
        *data = all;
        QCOMPARE(kinds(poll()), listOf({EventKind::Returned}));

        data->drives[0].serial = "NEW"; // swapped
        QCOMPARE(kinds(poll()), listOf({EventKind::Appeared, EventKind::Lost}));
    }

    void takesFindingsOfThePolicy()
    {
        auto data = fakeData();
        data->drives[0].temperature = 70; // not a finding of the policy
        const HistoryChanges known = firstPoll(*fakeData());
        data->alerts = QJsonDocument::fromJson(
                           R"({"policy": "changes", "findings": [{"number": 1, "kind": "growth", "id": 5,
                               "severity": "warning", "name": "Reallocated sector count"}]})")
                           .object();
        const HistoryChanges changes = web::compare(known.drives, false, kService, *data, kStart);
        QCOMPARE(kinds(changes), listOf({EventKind::Finding}));
        QCOMPARE(changes.events.first().drive, 1);
    }

    void distinguishesEqualSerials()
    {
        auto data = fakeData();
        data->drives[1].serial = data->drives[0].serial;
        const auto keys = web::driveKeys(kService, data->drives);
        QCOMPARE(keys.at(1).slot, 1);
        data->drives[1].serial = "S1";
        QCOMPARE(web::driveKeys(kService, data->drives).at(1).slot, -1);
    }

    void remembersAcrossARestart()
    {
        QTemporaryDir folder;
        auto data = fakeData();
        {
            HistoryStore store(folder.path());
            QVERIFY(store.open());
            HistoryChanges changes = firstPoll(*data);
            QVERIFY(store.add(changes, kStart));
            data->drives.removeLast();
            data->attributes.removeLast();
            changes = web::compare(changes.drives, false, kService, *data, kStart + 60);
            QVERIFY(store.add(changes, kStart + 60));
        }
        HistoryStore store(folder.path());
        QVERIFY(store.open());
        const auto known = store.knownDrives();
        QCOMPARE(known.size(), 2);
        const HistoryChanges changes = web::compare(known, false, kService, *data, kStart + 120);
        QVERIFY(changes.events.isEmpty());
        QVERIFY(changes.attributes.isEmpty());
        const auto former = store.formerDrives();
        QCOMPARE(former.size(), 1);
        QCOMPARE(former.first().key.serial, "S1");
        QCOMPARE(former.first().lastSeen, kStart);
        QCOMPARE(*former.first().healthPercent, 98);
        const auto events = store.events({}, kStart, kStart + 60, 10);
        QCOMPARE(events.size(), 1);
        QCOMPARE(events.first().kind, EventKind::Lost);
        QVERIFY(store.events("other", 0, kStart + 60, 10).isEmpty());
    }

    void removesOldRecords()
    {
        QTemporaryDir folder;
        HistoryStore store(folder.path());
        QVERIFY(store.open());
        HistoryChanges changes = firstPoll(*fakeData());
        for (const Timestamp time : {kStart, kStart + 10, kStart + 20}) {
            for (auto &attribute : changes.attributes)
                attribute.value.raw = time;
            changes.events = {{time, kService, -1, {}, {}, EventKind::Service, "service is ready"}};
            QVERIFY(store.add(changes, time));
        }
        QVERIFY(store.removeBefore(kStart + 100));
        QVERIFY(store.events({}, 0, kStart + 100, 10).isEmpty());
        const auto kept = store.attributeChanges(changes.drives.first().key, 5, 0, kStart + 100);
        QCOMPARE(kept.size(), 1); // the value that is still valid
        QCOMPARE(kept.first().value.raw, kStart + 20);
    }

    void setsADamagedFileAside_data()
    {
        QTest::addColumn<int>("offset"); // of the overwritten bytes
        row("damaged in the header", 0);
        row("damaged after the header", 4096);
    }

    void setsADamagedFileAside()
    {
        QFETCH(int, offset);
        QTemporaryDir folder;
        HistoryChanges changes = firstPoll(*fakeData());
        {
            HistoryStore store(folder.path());
            QVERIFY(store.open());
            QVERIFY(store.add(changes, kStart));
        }
        QFile file(folder.filePath("history.db"));
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.seek(offset);
        file.write(QByteArray(int(offset == 0 ? 4096 : file.size() - offset), 'x'));
        file.close();
        HistoryStore store(folder.path());
        QVERIFY(store.open());
        HistoryChanges again = firstPoll(*fakeData());
        (void)store.add(again, kStart); // detects the damage at the latest
        QVERIFY(store.add(again, kStart));
        const QStringList aside = QDir(folder.path()).entryList({"history.db.damaged-*"});
        QVERIFY(!aside.isEmpty());
    }

    /// A file size limit of the process replaces a full disk.
    void survivesAFullDisk()
    {
        QTemporaryDir folder;
        HistoryStore store(folder.path());
        QVERIFY(store.open());
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit small{64 * 1024, limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        HistoryChanges changes = firstPoll(*fakeData());
        changes.events.fill(
            {kStart, kService, -1, {}, {}, EventKind::Service, QString(1000, QLatin1Char('x'))}, 500);
        const auto added = store.add(changes, kStart);
        setrlimit(RLIMIT_FSIZE, &limit);
        QVERIFY(!added);
        QVERIFY(store.knownDrives().isEmpty()); // the failed transaction left nothing
        QVERIFY(store.add(changes, kStart));
        QCOMPARE(store.events({}, kStart, kStart, 1000).size(), 500);
    }

    void survivesAKill()
    {
        QTemporaryDir folder;
        QProcess writer;
        writer.start(QCoreApplication::applicationFilePath(), {"write", folder.path()});
        QByteArray output;
        while (output.count('\n') < 500) {
            QVERIFY(writer.waitForReadyRead());
            output += writer.readAllStandardOutput();
        }
        writer.kill();
        QVERIFY(writer.waitForFinished());
        output += writer.readAllStandardOutput();
        const Timestamp reported = output.left(output.lastIndexOf('\n')).split('\n').last().toLongLong();
        HistoryStore store(folder.path());
        QVERIFY(store.open());
        const auto events = store.events({}, 0, kStart * 2, 1000000);
        QVERIFY(events.first().time >= reported);
        QCOMPARE(Timestamp(events.size()), events.first().time - kStart + 1); // complete, without a gap
        QCOMPARE(store.knownDrives().first().attributes.value(5).raw, events.first().time);
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().value(1) == "write")
        return writeForEver(QCoreApplication::arguments().value(2));
    TestWebHistory test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_web_history.moc"
