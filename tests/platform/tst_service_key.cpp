// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
#include "platform/linux/linux_service_key.h"
#include "rows.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(std::optional<KeyValue>)

class TestServiceKey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<std::optional<KeyValue>>("value");
        const std::optional<KeyValue> none;
        row("number → number", R"({"Port": 5001})", std::optional<KeyValue>(5001U));
        row("largest 32-bit number → number", R"({"Port": 4294967295})",
            std::optional<KeyValue>(4294967295U));
        row("above 32 bits → no value", R"({"Port": 4294967296})", none);
        row("negative number → no value", R"({"Port": -1})", none);
        row("fraction → no value", R"({"Port": 1.5})", none);
        row("text → text", R"({"Port": "5001"})", std::optional<KeyValue>("5001"));
        row("array → no value", R"({"Port": [5001]})", none);
        row("name in another case → no value", R"({"port": 5001})", none);
    }

    void values()
    {
        QFETCH(QString, json);
        QFETCH(std::optional<KeyValue>, value);
        write(json.toLatin1());
        const auto key = m_key.open();
        QVERIFY(key);
        QVERIFY((*key)->value("Port") == value);
    }

    void unusableFiles_data()
    {
        QTest::addColumn<QByteArray>("contents"); // null: there is no file
        row("no file", QByteArray());
        row("empty file", QByteArray(""));
        row("JSON that is cut off", QByteArray(R"({"Port": 50)"));
        row("JSON that is not an object", QByteArray("[1]"));
        row("above the size limit", R"({"Port": 1})" + QByteArray(1024 * 1024, ' '));
        row("JSON nested too deep", QByteArray(100000, '['));
    }

    void unusableFiles()
    {
        QFETCH(QByteArray, contents);
        QFile::remove(m_path);
        if (!contents.isNull())
            write(contents);
        const auto key = m_key.open();
        QVERIFY(!key);
        QCOMPARE(key.failure().kind == AccessError::Kind::Missing, contents.isNull());
        QVERIFY(key.failure().text.startsWith(m_path));
        QVERIFY(!m_key.write({{"Port", 1}}));
        QCOMPARE(QFile::exists(m_path), !contents.isNull());
        QCOMPARE(read(), contents);
    }

    void writeKeepsOtherValues()
    {
        write(R"({"ImagePath": "/srv/x", "Note": [1, null], "Port": "text"})");
        QVERIFY(m_key.write({{"Port", 4294967295U}, {"SMARTPollInterval", 0}}));
        QCOMPARE(QJsonDocument::fromJson(read()),
                 QJsonDocument::fromJson(R"({"ImagePath": "/srv/x", "Note": [1, null], "Port": 4294967295,
                                         "SMARTPollInterval": 0})"));
    }

    void create()
    {
        QFile::remove(m_path);
        QVERIFY(m_key.create("/srv/x"));
        QCOMPARE(QJsonDocument::fromJson(read()), QJsonDocument::fromJson(R"({"ImagePath": "/srv/x"})"));
        QCOMPARE(QFile::permissions(m_path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
        write(R"({"AlertPolicy": "changes", "ImagePath": "/old"})");
        QVERIFY(m_key.create("/srv/x"));
        QCOMPARE(QJsonDocument::fromJson(read()),
                 QJsonDocument::fromJson(R"({"AlertPolicy": "changes", "ImagePath": "/srv/x"})"));
        write("damaged");
        QVERIFY(!m_key.create("/srv/x"));
        QVERIFY(!LinuxServiceKey(m_folder.filePath("no/folder")).create("x"));
    }

private:
    void write(const QByteArray &contents) const { writeFile(m_path, contents); }
    [[nodiscard]] QByteArray read() const { return contentOf(m_path); }

    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath("service-key.json");
    LinuxServiceKey m_key{m_path};
};

QTEST_APPLESS_MAIN(TestServiceKey)
#include "tst_service_key.moc"
