// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_service_key.h"
#include "rows.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(std::optional<KeyValue>)

namespace {

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

void writeFile(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), qint64(contents.size()));
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestServiceKey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<std::optional<KeyValue>>("value");
        const auto number = [](quint32 value) { return std::optional<KeyValue>(value); };
        const std::optional<KeyValue> none;

        row("number", QByteArray(R"({"Port": 5001})"), number(5001));
        row("largest", QByteArray(R"({"Port": 4294967295})"), number(4294967295U));
        row("too large", QByteArray(R"({"Port": 4294967296})"), none);
        row("negative", QByteArray(R"({"Port": -1})"), none);
        row("fraction", QByteArray(R"({"Port": 1.5})"), none);
        row("text", QByteArray(R"({"Port": "5001"})"), std::optional<KeyValue>(QStringLiteral("5001")));
        row("neither", QByteArray(R"({"Port": [5001]})"), none);
        row("other case", QByteArray(R"({"port": 5001})"), none);
    }

    void values()
    {
        QFETCH(QByteArray, json);
        QFETCH(std::optional<KeyValue>, value);
        writeFile(m_path, json);
        const std::unique_ptr<OpenKey> key = m_key.open();
        QVERIFY(key);
        QVERIFY(key->value(text("Port")) == value);
    }

    void unusableFiles_data()
    {
        QTest::addColumn<QByteArray>("contents");
        row("empty", QByteArray());
        row("cut off", QByteArray(R"({"Port": 50)"));
        row("no object", QByteArray("[1]"));
        row("huge", QByteArray(R"({"Port": 1})") + QByteArray(1024 * 1024, ' '));
        row("nested", QByteArray(100000, '['));
    }

    void unusableFiles()
    {
        QFETCH(QByteArray, contents);
        writeFile(m_path, contents);
        QVERIFY(!m_key.open());
        QVERIFY(!m_key.write({{text("Port"), 1}}));
        QCOMPARE(readFile(m_path), contents);
    }

    void missingFile()
    {
        QFile::remove(m_path);
        QVERIFY(!m_key.open());
        QVERIFY(!m_key.write({{text("Port"), 1}}));
        QVERIFY(!QFile::exists(m_path));
    }

    void writeKeepsOtherValues()
    {
        writeFile(m_path, R"({"ImagePath": "/srv/x", "Note": [1, null], "Port": "text"})");
        QVERIFY(m_key.write({{text("Port"), 4294967295U}, {text("SMARTPollInterval"), 0}}));
        QCOMPARE(QJsonDocument::fromJson(readFile(m_path)),
                 QJsonDocument::fromJson(R"({"ImagePath": "/srv/x", "Note": [1, null], "Port": 4294967295,
                                         "SMARTPollInterval": 0})"));
    }

    void create()
    {
        QVERIFY(m_key.create(text("/srv/halvex-monitor-service")));
        const std::unique_ptr<OpenKey> key = m_key.open();
        QVERIFY(key);
        QVERIFY(key->value(text("ImagePath")) ==
                std::optional<KeyValue>(text("/srv/halvex-monitor-service")));
        QVERIFY(!LinuxServiceKey(m_folder.filePath(text("no/folder"))).create(text("x")));
    }

private:
    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(text("service-key.json"));
    LinuxServiceKey m_key{m_path};
};

QTEST_APPLESS_MAIN(TestServiceKey)
#include "tst_service_key.moc"
