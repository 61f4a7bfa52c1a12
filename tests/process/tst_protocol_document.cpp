// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include "wire/scrambling.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <memory>

namespace {

/// Carries out the examples with a service of its own, one connection after another.
class Conversation
{
public:
    explicit Conversation(ServiceFixture &service)
        : m_service(service)
    {}

    /// Returns the difference between one step of the examples (a mark and a text) and the service; empty if
    /// none.
    QString take(const QString &mark, const QString &text)
    {
        if (mark == "--")
            return happens(text) ? QString() : "it does not happen";
        if (mark == "<")
            return hear(text);
        if (mark == ">")
            m_console->send(withPort(text));
        else
            m_console->sendBytes(text.toLatin1() + "\r\n");
        return {};
    }

private:
    QString hear(const QString &expected)
    {
        const QString heard = m_console->readLine();
        if (m_port.isEmpty()) // the document uses the default port, the fixture any free one
            m_port = heard.split("]![").value(2);
        QStringList parts = withPort(expected).split(QChar(0x2026));
        for (QString &part : parts)
            part = QRegularExpression::escape(part);
        const QRegularExpression pattern("\\A" + parts.join(".*") + "\\z");
        return pattern.match(heard).hasMatch() ? QString() : "heard " + heard;
    }

    /// Causes the event, or waits for it; returns false if it fails or is not known.
    bool happens(const QString &event)
    {
        const QHash<QString, std::function<bool()>> events{
            {"a console connects over TCP",
             [this] {
                 m_console = std::make_unique<RawConsole>(m_service.port());
                 return m_console->isConnected();
             }},
            {"the service closes the connection", [this] { return m_console->waitForEnd(); }},
            {"the drives are detected", [this] { return m_service.waitUntilReady(); }},
            {"the scan has ended",
             [this] {
                 return QTest::qWaitFor([this] { return m_console->ask("GSTATSCAN").contains("|1;0;100;"); },
                                        kPatienceMs);
             }},
            {"the service is paused", [this] { return m_service.pause(); }},
            {"the service goes on", [this] { return m_service.resume(); }},
            // Two turns of the service's event loop; in the first one it reads the lines sent before.
            {"the line has been read",
             [this] { return !m_service.firstLine().isEmpty() && !m_service.ask("DEVCOUNT").isEmpty(); }},
        };
        const auto function = events.value(event);
        return function && function();
    }

    [[nodiscard]] QString withPort(const QString &text) const
    {
        return QString(text).replace(QRegularExpression("\\b5000\\b"), m_port);
    }

    ServiceFixture &m_service;
    std::unique_ptr<RawConsole> m_console;
    QString m_port;
};

} // namespace

/// The examples of docs/protocol.md match the service.
class TestProtocolDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_lines = QString::fromUtf8(contentOf(HALVEX_PROTOCOL_DOCUMENT)).split('\n'); }

    /// A line of one repeated character, with offset 1, shows the whole key.
    void showsTheKey()
    {
        QByteArray key;
        for (const auto &match : matches("    (\\S{64})"))
            key += match.captured(1).toLatin1();
        QCOMPARE(key.size(), 128);
        const QByteArray base64 = QByteArray(96, 'A').toBase64();
        const QByteArray body = QByteArray::fromHex(scramble(QString(96, 'A'), 1).mid(10));
        for (int position = 1; position < 128; ++position)
            QCOMPARE(key.at(position), char(body.at(position - 1) ^ base64.at(position - 1)));
    }

    void scramblesLines()
    {
        const auto rows = matches("\\| (.+) \\| (\\d+) \\| `([0-9a-f]+)` \\|");
        QVERIFY(rows.size() >= 7);
        for (const auto &row : rows) {
            const QString text =
                row.captured(1).startsWith('`') ? row.captured(1).mid(1).chopped(1) : QString();
            QCOMPARE(scramble(text, row.captured(2).toInt()), row.captured(3).toLatin1());
        }
    }

    void repliesMatchTheExamples()
    {
        ServiceFixture service;
        const int begin = int(m_lines.indexOf("    {"));
        const int end = int(m_lines.indexOf("    }", begin));
        service.writeMachine(json(m_lines.mid(begin, end - begin + 1).join('\n').toUtf8()));
        QByteArray records;
        for (const auto &row : matches("\\| `(.{8})` \\| (\\d{4}-.*) \\| (\\d+) \\| (\\d+) \\|"))
            records += row.captured(1).toLatin1();
        writeFile(service.path("temperature.log"), records);
        QVERIFY2(service.serve(), service.output());

        Conversation conversation(service);
        static const QRegularExpression kStep("\\A    (--|>>|>|<) (.*)\\z");
        int steps = 0;
        for (int i = 0; i < m_lines.size(); ++i) {
            const auto step = kStep.match(m_lines.at(i));
            if (!step.hasMatch())
                continue;
            ++steps;
            const QString problem = conversation.take(step.captured(1), step.captured(2));
            const QString where = QString("line %1 of the document: %2: ").arg(i + 1).arg(step.captured(2));
            QVERIFY2(problem.isEmpty(), qPrintable(where + problem));
        }
        QVERIFY(steps > 50);
        QCOMPARE(service.stop(), 0);
    }

private:
    /// Returns the lines that `form` matches as a whole, in order.
    [[nodiscard]] QVector<QRegularExpressionMatch> matches(const QString &form) const
    {
        const QRegularExpression expression("\\A" + form + "\\z");
        QVector<QRegularExpressionMatch> found;
        for (const QString &line : m_lines) {
            const auto match = expression.match(line);
            if (match.hasMatch())
                found.append(match);
        }
        return found;
    }

    QStringList m_lines;
};

QTEST_GUILESS_MAIN(TestProtocolDocument)
#include "tst_protocol_document.moc"
