// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/fake_service_key.h"
#include "config/settings_file.h"
#include "config/settings_store.h"
#include "rows.h"

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
        m_key->values[QStringLiteral("ImagePath")] =
            m_home->filePath(QStringLiteral("halvex-monitor-service"));
        m_settings = Settings();
    }

    void filePath()
    {
        QCOMPARE(settingsFilePath(QStringLiteral("C:\\Program Files\\Halvex\\")),
                 QStringLiteral("C:/Program Files/Halvex/HalvexService.ini"));
        QCOMPARE(settingsFilePath(QStringLiteral("C:\\Halve")), QStringLiteral("C:/HalveHalvexService.ini"));
    }

    void fileIsWrittenWithoutAKeyAndNotRead()
    {
        SettingsStore store(m_settings, *m_key, offset);
        m_key->exists = false;
        m_settings.programDirectory = m_home->path() + u'/';
        m_settings.cTemp = 70;
        store.writeSettings({});
        m_settings.cTemp = 65;
        QCOMPARE(store.readSettings(), 100);
        QCOMPARE(m_settings.cTemp, 65);
        m_key->exists = true;
        QCOMPARE(store.readSettings(), 0);
        QCOMPARE(m_settings.cTemp, 70);
    }

    void whatIsWrittenComesBack()
    {
        SettingsStore store(m_settings, *m_key, offset);
        store.readSettings();
        m_settings.port = 6000;
        m_settings.smtpServer = QStringLiteral("mail.example.org");
        DeviceList devices(1);
        devices[0].scanPercent = 57;
        store.writeSettings(devices);

        Settings settings;
        SettingsStore later(settings, *m_key, offset);
        later.readSettings();
        QCOMPARE(settings.port, 6000U);
        QCOMPARE(settings.smtpServer, QStringLiteral("mail.example.org"));
        DeviceList read(1);
        later.readDriveState(read);
        QCOMPARE(read[0].scanPercent, 57);
        // It holds a password. On Windows the folder's access list is the file's.
        const auto others = QFileDevice::ReadGroup | QFileDevice::ReadOther;
        const bool isWindows = QSysInfo::kernelType() == QLatin1String("winnt");
        QVERIFY(isWindows || !(QFile(path()).permissions() & others));

        QVERIFY(QFile::remove(path()));
        later.readDriveState(read);
        QCOMPARE(read[0].scanPercent, 0);
        QVERIFY(read[0].schedDate.isValid());
    }

    /// Whoever has the old file open still has all of it; where it keeps the new one out, that one waits.
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
            while (!isOver && files() > 1) { // ... and where it is refused, it goes again
            }
            seen = old.readAll();
            old.close();
        });
        store.writeSettings({});
        isOver = true;
        reader.join();
        QCOMPARE(seen, QByteArray("the old file"));
        QFile written(path());
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll(), settingsFileText(m_settings, {}, offset));
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
