// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/fake_service_key.h"
#include "config/settings_file.h"
#include "config/settings_store.h"
#include "rows.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <thread>

namespace {

bool isWindows()
{
    return QSysInfo::kernelType() == QLatin1String("winnt");
}

} // namespace

class TestSettingsStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        m_key = std::make_unique<FakeServiceKey>();
        m_key->values[QStringLiteral("ImagePath")] =
            m_home->filePath(QStringLiteral("halvex-monitor-service"));
        m_settings = Settings();
    }

    void filePath_data()
    {
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QString>("file");
        row("backslashes", "C:\\Program Files\\Halvex\\", "C:/Program Files/Halvex/HalvexService.ini");
        row("slashes", "/var/lib/halvex/", "/var/lib/halvex/HalvexService.ini");
        row("no separator is added", "C:\\Halve", "C:/HalveHalvexService.ini");
    }

    void filePath()
    {
        QFETCH(QString, directory);
        QTEST(settingsFilePath(directory), "file");
    }

    void keyDecidesWhetherTheFileIsRead()
    {
        putFile(scramble(QStringLiteral("cTemp=70"), 1) + '\n');
        SettingsStore store(m_settings, *m_key, offset);
        m_key->exists = false;
        m_settings.programDirectory = m_home->path() + u'/';
        QCOMPARE(store.readSettings(), 100);
        QCOMPARE(m_settings.cTemp, 65);
        m_key->exists = true;
        QCOMPARE(store.readSettings(), 0);
        QCOMPARE(m_settings.cTemp, 70);
    }

    void writtenSettingsComeBack()
    {
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        m_settings.port = 6000;
        m_settings.smtpServer = QStringLiteral("mail.example.org");
        store.writeSettings({});

        Settings read;
        SettingsStore(read, *m_key, offset).readSettings();
        QCOMPARE(read.port, 6000U);
        QCOMPARE(read.smtpServer, QStringLiteral("mail.example.org"));
        // It holds a password. On Windows the folder's access list is the file's.
        const auto others = QFileDevice::ReadGroup | QFileDevice::ReadOther;
        QVERIFY(isWindows() || !(QFile(path()).permissions() & others));
    }

    void driveStateComesBack()
    {
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        DeviceList devices(1);
        devices[0].scanPercent = 57;
        store.writeSettings(devices);

        DeviceList read(1);
        store.readDriveState(read);
        QCOMPARE(read[0].scanPercent, 57);
        QVERIFY(QFile::remove(path()));
        store.readDriveState(read);
        QCOMPARE(read[0].scanPercent, 0);
        QCOMPARE(read[0].schedDate.isValid(), true);
    }

    void fileIsReplacedAsAWhole()
    {
        if (isWindows())
            QSKIP("a file that somebody has open cannot be replaced here");
        putFile("the old file");
        QFile old(path());
        QVERIFY(old.open(QIODevice::ReadOnly));
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        store.writeSettings({});
        // Whoever has the old file open still has all of it: nothing was written over it.
        QCOMPARE(old.readAll(), QByteArray("the old file"));
        QFile written(path());
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll(), settingsFileText(m_settings, {}, offset));
    }

    void fileIsWrittenWhenItsReaderIsDone()
    {
        putFile("the old file");
        QFile old(path());
        QVERIFY(old.open(QIODevice::ReadOnly));
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        std::atomic<bool> isOver{false};
        std::thread reader([&] {
            const auto files = [this] { return QDir(m_home->path()).entryList(QDir::Files).size(); };
            while (!isOver && files() < 2) { // the new one appears ...
            }
            while (!isOver && files() > 1) { // ... and where it is refused, it goes again
            }
            old.close();
        });
        store.writeSettings({});
        isOver = true;
        reader.join();
        QFile written(path());
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll(), settingsFileText(m_settings, {}, offset));
    }

    void fileIsWrittenWithoutAKey()
    {
        m_key->exists = false;
        m_settings.programDirectory = m_home->path() + u'/';
        SettingsStore(m_settings, *m_key, offset).writeSettings({});
        QVERIFY(QFile::exists(path()));
    }

    void relativeDirectoryIsLeftAlone()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_home->path()));
        m_settings.programDirectory.clear();
        putFile(scramble(QStringLiteral("scan=0;0;57;0;0;260304050607;"), 1));
        SettingsStore store(m_settings, *m_key, offset);
        DeviceList devices(1);
        store.readDriveState(devices);
        QVERIFY(QFile::remove(path()));
        store.writeSettings(devices);
        const bool written = QFile::exists(path());
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(devices[0].scanPercent, 0);
        QVERIFY(!written);
    }

private:
    QString path() const { return m_home->filePath(QStringLiteral("HalvexService.ini")); }

    void putFile(const QByteArray &bytes) const
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    static int offset() { return 5; }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<FakeServiceKey> m_key;
    Settings m_settings;
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settings_store.moc"
