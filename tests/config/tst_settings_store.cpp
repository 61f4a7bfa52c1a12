// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/fake_service_key.h"
#include "config/settings_file.h"
#include "config/settings_store.h"
#include "files.h"
#include "rows.h"

#include <QDeadlineTimer>
#include <QTemporaryDir>

#include <atomic>
#include <thread>

class TestSettingsStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        m_key = std::make_unique<FakeServiceKey>();
        m_key->values["ImagePath"] = m_home->filePath("halvex-monitor-service");
        m_settings = Settings();
    }

    void filePath()
    {
        QCOMPARE(settingsFilePath("C:\\Program Files\\Halvex\\"),
                 "C:/Program Files/Halvex/HalvexService.ini");
        QCOMPARE(settingsFilePath("C:\\Halve"), "C:/HalveHalvexService.ini");
    }

    void fileIsWrittenWithoutAKeyAndNotRead()
    {
        SettingsStore store(m_settings, *m_key, offset);
        m_key->error = AccessError{AccessError::Kind::Missing, {}};
        m_settings.programDirectory = m_home->path() + u'/';
        m_settings.cTemp = 70;
        QVERIFY(store.writeSettings({}));
        m_settings.cTemp = 65;
        QCOMPARE(store.readSettings(), 100);
        QCOMPARE(m_settings.cTemp, 65);
        m_key->error.reset();
        QCOMPARE(store.readSettings(), 0);
        QCOMPARE(m_settings.cTemp, 70);
    }

    void writtenFileIsReadBack()
    {
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        m_settings.port = 6000;
        m_settings.smtpServer = "mail.example.org";
        DeviceList devices(1);
        devices[0].scan.percent = 57;
        QVERIFY(store.writeSettings(devices));

        Settings settings;
        SettingsStore later(settings, *m_key, offset);
        later.readSettings();
        QCOMPARE(settings.port, 6000U);
        QCOMPARE(settings.smtpServer, "mail.example.org");
        DeviceList read(1);
        later.readDriveState(read);
        QCOMPARE(read[0].scan.percent, 57);
        // The file holds a password. On Windows the folder's access list protects it.
        const auto others = QFileDevice::ReadGroup | QFileDevice::ReadOther;
        const bool isWindows = QSysInfo::kernelType() == "winnt";
        QVERIFY(isWindows || !(QFile(path()).permissions() & others));

        QVERIFY(QFile::remove(path()));
        later.readDriveState(read);
        QCOMPARE(read[0].scan.percent, 0);
        QVERIFY(read[0].schedule.date.isValid());
    }

    void keyThatCannotBeWritten()
    {
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        m_key->error = AccessError{AccessError::Kind::Failed, "disk full"};
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("service's key has failed.*disk full"));
        QVERIFY(!store.writeSettings({}));
        m_key->error.reset();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("works again"));
        QVERIFY(store.writeSettings({}));
    }

    /// A folder in the file's place cannot be read. It is renamed with its content, and the drives keep the
    /// state in memory.
    void unreadableFile()
    {
        DeviceList devices(2);
        devices[1].scan.percent = 57;
        devices[1].schedule.kind = ScheduleKind::Daily;
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        QVERIFY(store.writeSettings(devices));
        QVERIFY(QFile::remove(path()) && QDir().mkpath(path() + "/content"));

        DeviceList detected(2);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Reading the settings file has failed"));
        store.readDriveState(detected);
        QCOMPARE(detected[1].scan.percent, 57);
        QCOMPARE(detected[1].schedule.kind, ScheduleKind::Daily);
        QVERIFY(QFileInfo(path()).isDir());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("was kept as .*\\.damaged-"));
        QVERIFY(store.writeSettings(detected));
        QVERIFY(QFileInfo(path()).isFile());
        const QStringList kept = QDir(m_home->path()).entryList({"*.damaged-*"}, QDir::Dirs);
        QCOMPARE(kept.size(), 1);
        QVERIFY(QFileInfo::exists(m_home->filePath(kept.first()) + "/content"));
    }

    /// The last drive's line lies beyond 64 MiB.
    void largeFile()
    {
        DeviceList devices(10);
        for (DeviceRecord &device : devices)
            device.scan.badRanges.fill({123456789012, 123456789013}, kMaxBadRanges);
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        QVERIFY(store.writeSettings(devices));
        QVERIFY(QFileInfo(path()).size() > 64 << 20);
        DeviceList detected(10);
        SettingsStore afterARestart(m_settings, *m_key, offset);
        afterARestart.readDriveState(detected);
        QCOMPARE(detected.last().scan.badRanges, devices.last().scan.badRanges);
    }

    /// A reader that has the old file open can still read all of it. Where an open file blocks the write, the
    /// write waits, so the reader closes the file soon.
    void fileIsReplacedAsAWhole()
    {
        putFile("the old file");
        QFile old(path());
        QVERIFY(old.open(QIODevice::ReadOnly));
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        std::atomic<bool> isOver{false};
        QByteArray seen;
        std::thread reader([&] {
            const auto files = [this] { return QDir(m_home->path()).entryList(QDir::Files).size(); };
            while (!isOver && files() < 2) { // the new one appears ...
            }
            const QDeadlineTimer soon(200);
            while (!isOver && files() > 1 && !soon.hasExpired()) { // ... and replaces the old one
            }
            seen = old.readAll();
            old.close();
        });
        const bool isWritten = store.writeSettings({});
        isOver = true;
        reader.join();
        QVERIFY(isWritten);
        QCOMPARE(seen, QByteArray("the old file"));
        QCOMPARE(contentOf(path()), settingsFileText(m_settings, {}, offset));
    }

    void relativeDirectoryIsLeftAlone()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_home->path()));
        m_settings.programDirectory.clear();
        putFile(scramble("scan=0;0;57;0;0;260304050607;", 1));
        SettingsStore store(m_settings, *m_key, offset);
        DeviceList devices(1);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Reading .*not an absolute path"));
        store.readDriveState(devices);
        QVERIFY(QFile::remove(path()));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Writing .*not an absolute path"));
        QVERIFY(!store.writeSettings(devices));
        const bool written = QFile::exists(path());
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(devices[0].scan.percent, 0);
        QVERIFY(!written);
    }

private:
    QString path() const { return m_home->filePath("HalvexService.ini"); }

    void putFile(const QByteArray &bytes) const { writeFile(path(), bytes); }

    static int offset() { return 5; }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<FakeServiceKey> m_key;
    Settings m_settings;
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settings_store.moc"
