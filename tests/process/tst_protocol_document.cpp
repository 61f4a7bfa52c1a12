// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include "console/client/history.h"
#include "protocol/plain_scrambling.h"
#include "protocol/scrambling.h"

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <memory>

namespace {

constexpr int kPatienceMs = 60000;

/// Speaks the examples with a service of its own, over one connection after another.
class Conversation
{
public:
    /// `machine` as the document has it, `log` the temperatures recorded before.
    Conversation(const QByteArray &machine, const QByteArray &log)
    {
        m_service.writeMachine(QJsonDocument::fromJson(machine).object());
        QFile file(m_service.path(QStringLiteral("temperature.log")));
        m_isStarted = file.open(QIODevice::WriteOnly) && file.write(log) == log.size() && file.flush() &&
                      m_service.serve();
    }

    [[nodiscard]] bool isStarted() const { return m_isStarted; }

    void say(const QString &text) { m_console->send(withPort(text)); }
    void sayRaw(const QString &line) { m_console->sendBytes(line.toLatin1() + "\r\n"); }

    /// What is wrong with the next line, which has to be `expected`; nothing when it is.
    QString hear(const QString &expected)
    {
        const QString heard = m_console->readLine();
        if (m_port.isEmpty()) // the document has the usual port, the fixture any free one
            m_port = heard.split(QStringLiteral("]![")).value(2);
        QStringList parts = withPort(expected).split(QChar(0x2026));
        for (QString &part : parts)
            part = QRegularExpression::escape(part);
        const QRegularExpression pattern(QStringLiteral("\\A%1\\z").arg(parts.join(QStringLiteral(".*"))));
        return pattern.match(heard).hasMatch() ? QString() : QStringLiteral("heard ") + heard;
    }

    /// Makes `event` happen, or waits until it has; false when it does not, or is not known.
    bool happens(const QString &event)
    {
        static const QHash<QString, bool (Conversation::*)()> kEvents{
            {QStringLiteral("a console connects over TCP"), &Conversation::connectConsole},
            {QStringLiteral("the service closes the connection"), &Conversation::waitForEnd},
            {QStringLiteral("the drives are detected"), &Conversation::waitForDetection},
            {QStringLiteral("the scan has ended"), &Conversation::waitForScan},
            {QStringLiteral("the service is paused"), &Conversation::pause},
            {QStringLiteral("the service goes on"), &Conversation::resume},
            {QStringLiteral("the line has been read"), &Conversation::speakElsewhere},
        };
        const auto function = kEvents.value(event, nullptr);
        return function != nullptr && (this->*function)();
    }

    [[nodiscard]] int stop() { return m_service.stop(); }

private:
    [[nodiscard]] QString withPort(const QString &text) const
    {
        static const QRegularExpression kPort(QStringLiteral("\\b5000\\b"));
        return QString(text).replace(kPort, m_port);
    }

    bool connectConsole()
    {
        m_console = std::make_unique<RawConsole>(m_service.port());
        return m_console->isConnected();
    }

    bool waitForEnd() { return m_console->waitForEnd(); }
    bool waitForDetection() { return m_service.waitUntilReady(); }
    bool pause() { return m_service.pause(); }
    bool resume() { return m_service.resume(); }

    bool waitForScan()
    {
        return QTest::qWaitFor(
            [this] {
                return m_console->ask(QStringLiteral("GSTATSCAN")).contains(QLatin1String("|1;0;100;"));
            },
            kPatienceMs);
    }

    /// Two turns of the service's event loop, in the first of which it reads what was sent before.
    bool speakElsewhere()
    {
        RawConsole other(m_service.port());
        return !other.readLine().isEmpty() && !other.ask(QStringLiteral("DEVCOUNT")).isEmpty();
    }

    ServiceFixture m_service;
    std::unique_ptr<RawConsole> m_console;
    QString m_port;
    bool m_isStarted = false;
};

} // namespace

/// What docs/protocol.md shows is what the code does.
class TestProtocolDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QFile file(QStringLiteral(HALVEX_PROTOCOL_DOCUMENT));
        QVERIFY(file.open(QIODevice::ReadOnly));
        m_lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    }

    void showsTheKey()
    {
        QString key;
        for (const auto &match : matches("    (\\S{64})"))
            key += match.captured(1);
        QCOMPARE(key, QString(plain::kKey));
    }

    void scramblesLines()
    {
        const auto rows = matches("\\| (.+) \\| (\\d+) \\| `([0-9a-f]+)` \\|");
        QVERIFY(rows.size() >= 7);
        for (const auto &row : rows) {
            const QString text =
                row.captured(1).startsWith(QLatin1Char('`')) ? row.captured(1).mid(1).chopped(1) : QString();
            QCOMPARE(scramble(text, row.captured(2).toInt()), row.captured(3).toLatin1());
        }
    }

    /// The table that scrambles a line character by character, and the line that comes of it.
    void explainsALine()
    {
        const auto lines = matches("    ([0-9a-f]{8}) ([0-9a-f]{2}) ([0-9a-f]+) CR LF .*");
        QCOMPARE(lines.size(), 1);
        QString body;
        int position = lines.first().captured(2).toInt(nullptr, 16);
        const int offset = position;
        QString base64;
        for (const auto &row :
             matches("\\| (\\w) \\| (\\w\\w) \\| (?:.* )?(\\d+) \\| `(.)` (\\w\\w) \\| (\\w\\w) \\|")) {
            const char key = row.captured(4).at(0).toLatin1();
            QCOMPARE(row.captured(2).toInt(nullptr, 16), int(row.captured(1).at(0).unicode()));
            QCOMPARE(row.captured(3).toInt(), position);
            QCOMPARE(int(key), plain::keyByte(position));
            QCOMPARE(row.captured(5).toInt(nullptr, 16), int(key));
            base64 += row.captured(1);
            body += row.captured(6);
            position = plain::nextPosition(position, offset);
        }
        QCOMPARE(body, lines.first().captured(3));
        QCOMPARE(unscramble(lines.first()
                                .captured(0)
                                .remove(QLatin1Char(' '))
                                .section(QLatin1Char('C'), 0, 0)
                                .toLatin1()),
                 QString::fromUtf8(QByteArray::fromBase64(base64.toLatin1())));
    }

    void showsRecords()
    {
        QVERIFY(records().size() >= 3);
        for (const auto &row : records()) {
            const auto history = client::parseHistory(QStringLiteral("STATD]![") + row.captured(1));
            QVERIFY(history && history->records.size() == 1);
            const client::TemperatureRecord &record = history->records.first();
            QCOMPARE(record.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")), row.captured(2));
            QCOMPARE(record.drive, row.captured(3).toInt());
            QCOMPARE(record.temperature.value_or(-1), row.captured(4).toInt());
        }
    }

    void speaksTheExamples()
    {
        QByteArray log;
        for (const auto &row : records())
            log += row.captured(1).toLatin1();
        Conversation conversation(machine(), log);
        QVERIFY(conversation.isStarted());
        static const QRegularExpression kStep(QStringLiteral("\\A    (--|>>|>|<) (.*)\\z"));
        int steps = 0;
        for (int i = 0; i < m_lines.size(); ++i) {
            const auto step = kStep.match(m_lines.at(i));
            if (!step.hasMatch())
                continue;
            ++steps;
            const QString mark = step.captured(1);
            const QString text = step.captured(2);
            const QString where = QStringLiteral("line %1 of the document: %2: ").arg(i + 1).arg(text);
            if (mark == QLatin1String("--")) {
                QVERIFY2(conversation.happens(text), qPrintable(where));
            } else if (mark == QLatin1String("<")) {
                const QString problem = conversation.hear(text);
                QVERIFY2(problem.isEmpty(), qPrintable(where + problem));
            } else if (mark == QLatin1String(">>")) {
                conversation.sayRaw(text);
            } else {
                conversation.say(text);
            }
        }
        QVERIFY(steps > 50);
        QCOMPARE(conversation.stop(), 0);
    }

private:
    /// The lines that `form` matches as a whole, in order.

    [[nodiscard]] QVector<QRegularExpressionMatch> matches(const char *form) const
    {
        const QRegularExpression expression(QStringLiteral("\\A%1\\z").arg(QString::fromUtf8(form)));
        QVector<QRegularExpressionMatch> found;
        for (const QString &line : m_lines) {
            const auto match = expression.match(line);
            if (match.hasMatch())
                found.append(match);
        }
        return found;
    }

    [[nodiscard]] QByteArray machine() const
    {
        const int begin = int(m_lines.indexOf(QStringLiteral("    {")));
        const int end = int(m_lines.indexOf(QStringLiteral("    }"), begin));
        return m_lines.mid(begin, end - begin + 1).join(QLatin1Char('\n')).toUtf8();
    }

    [[nodiscard]] QVector<QRegularExpressionMatch> records() const
    {
        return matches("\\| `(.{8})` \\| (\\d{4}-.*) \\| (\\d+) \\| (\\d+) \\|");
    }

    QStringList m_lines;
};

QTEST_GUILESS_MAIN(TestProtocolDocument)
#include "tst_protocol_document.moc"
