// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/whole_file.h"

#include "files.h"
#include "rows.h"

#include <QDir>
#include <QTemporaryDir>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#endif

namespace {

using Kind = AccessError::Kind;

constexpr qint64 kLimit = 10;

} // namespace

class TestWholeFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("state");
    }

    void reading_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("result");
        row("missing file", "nothing", "missing");
        row("missing folder", "no folder", "missing");
        row("folder instead of a file → unreadable", "folder", "unreadable");
        row("file of the size limit", "0123456789", "0123456789");
        row("file above the size limit", "0123456789a", "unreadable");
        row("empty file", QString(), "");
#ifndef Q_OS_WIN
        row("pipe that nobody writes to", "pipe", "unreadable");
#endif
    }

    void reading()
    {
        QFETCH(QString, what);
        QTEST(resultOf(make(what)), "result");
    }

    void replacing()
    {
        QVERIFY(whole_file::replace(m_path, "old"));
        writeFile(m_path + ".new", "half"); // left by a killed process
        const auto ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
        QVERIFY(whole_file::replace(m_path, "secret", ownerOnly));
        QCOMPARE(resultOf(m_path), "secret");
        QCOMPARE(files(), QStringList("state"));
        QVERIFY(whole_file::replace(m_path, "again"));
        if (QSysInfo::kernelType() != "winnt") // uses the folder's access list
            QVERIFY(!(QFile::permissions(m_path) & (QFileDevice::ReadGroup | QFileDevice::ReadOther)));
    }

    void failedReplacement()
    {
        const auto result = whole_file::replace(make("folder"), "new");
        QVERIFY(!result && !result.failure().text.isEmpty());
        QCOMPARE(files(), QStringList()); // the folder is not a file, and no partial file remains
        QVERIFY(!whole_file::replace(m_path + "/no folder/state", "new"));
    }

    void settingAside()
    {
        const QDateTime now(QDate(2026, 11, 15), QTime(0, 36, 7));
        for (const char *content : {"first", "second"}) {
            writeFile(m_path, content);
            QVERIFY(whole_file::setAside(m_path, now));
        }
        const QString name = "state.damaged-20261115-003607";
        QCOMPARE(files(), (QStringList{name, name + "-2"}));
        QCOMPARE(resultOf(m_folder->filePath(name)), "first");
        QVERIFY(!whole_file::setAside(m_path, now));
    }

private:
    /// Creates a file with the content `what`, or the named kind of object.
    QString make(const QString &what) const
    {
        if (what == "no folder")
            return m_path + "/state";
        if (what == "folder")
            QDir().mkdir(m_path);
#ifndef Q_OS_WIN
        else if (what == "pipe")
            ::mkfifo(QFile::encodeName(m_path).constData(), S_IRUSR | S_IWUSR);
#endif
        else if (what != "nothing")
            writeFile(m_path, what.toUtf8());
        return m_path;
    }

    static QString resultOf(const QString &path)
    {
        const auto bytes = whole_file::read(path, kLimit);
        if (bytes)
            return QString::fromUtf8(*bytes);
        return bytes.failure().kind == Kind::Missing ? QStringLiteral("missing")
                                                     : QStringLiteral("unreadable");
    }

    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_APPLESS_MAIN(TestWholeFile)
#include "tst_whole_file.moc"
