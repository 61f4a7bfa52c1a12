// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alarms.h"

#include "monitor/alert_delivery.h"
#include "monitor/smtp_sender.h"
#include "monitor/webhook_server.h"
#include "platform/event_log.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int kLimitMs = 60000;
const QDateTime kStart(QDate(2026, 3, 1), QTime(0, 0), Qt::UTC);

/// The alarms of a machine with one drive, with a clock of their own and a file that restarts do not change.
class Machine : public EventLog
{
public:
    QDateTime now = kStart;
    Settings settings;
    ServiceOptions options;
    QStringList events; ///< "HOURS ID" of each

    Machine()
    {
        settings.logSysEvLog = true;
        options.alertPolicy = AlertPolicy::Changes;
        DeviceRecord drive;
        drive.model = "MODEL";
        drive.serial = "S1";
        drive.smart.fullRead = FullRead::Attributes;
        drive.smart.lastRead = LastRead::Answered;
        drive.smart.hasTemperature = true;
        drive.smart.attributes.resize(1);
        drive.smart.attributes[0].id = 194;
        drive.smart.attributes[0].notPrefailure = 1;
        m_devices << drive;
    }

    void report(const Event &event) override
    {
        events << QString("%1 %2").arg(double(kStart.secsTo(now)) / 3600).arg(event.id);
    }

    /// Ends the alarms without any farewell, as a kill does, and starts them from their file.
    void restart()
    {
        alarms.reset();
        alarms = std::make_unique<Alarms>(settings, options, *this, m_every, m_folder.path() + u'/',
                                          [this] { return now; });
    }

    /// A poll, three minutes after the one before.
    void poll(qint32 celsius)
    {
        m_devices[0].smart.temperature = celsius;
        alarms->evaluated(evaluateHealth(m_devices, settings), m_devices, true, true);
        now = now.addSecs(180);
    }

    /// Returns what is pending for the webhook and whether it works: "1 down".
    [[nodiscard]] QString webhook() const
    {
        const QJsonObject channel = alarms->document().value("channels").toArray().at(2).toObject();
        return QString("%1 %2")
            .arg(channel.value("pending").toInt())
            .arg(channel.value("reason").isNull() ? "up" : "down");
    }

    std::unique_ptr<Alarms> alarms;

private:
    QTemporaryDir m_folder;
    smtp_sender m_sender;
    AlertDelivery m_every{*this, m_sender};
    DeviceList m_devices;
};

} // namespace

/// The policy `changes` through alerts.json, with a new object after each restart.
class TestAlarmRestarts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// 3,360 polls at 57 degrees, one alert, six reminders, one recovery.
    void heatedWeek_data()
    {
        QTest::addColumn<int>("pollsToRestart");
        QTest::newRow("one run") << 7 * 480;
        QTest::newRow("a restart each day") << 480;
        QTest::newRow("a restart just before each reminder") << 479;
    }

    void heatedWeek()
    {
        QFETCH(int, pollsToRestart);
        Machine machine;
        for (int poll = 0; poll < 7 * 480; ++poll) {
            if (poll % pollsToRestart == 0)
                machine.restart();
            machine.poll(57);
        }
        machine.poll(40);
        QCOMPARE(machine.events.join(u','), "0 2,24 2,48 2,72 2,96 2,120 2,144 2,168 1");
    }

    /// The endpoint is down for an hour in which the drive heats up and cools down; the process is killed
    /// in between.
    void endpointDownForAnHour()
    {
        WebhookServer endpoint;
        Machine machine;
        machine.options.alertWebhook = endpoint.url();
        endpoint.close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("webhook has failed"));
        machine.restart();
        machine.poll(57);
        QTRY_COMPARE_WITH_TIMEOUT(machine.webhook(), "1 down", kLimitMs);
        for (int poll = 1; poll < 20; ++poll) {
            if (poll == 10)
                machine.restart();
            machine.poll(poll < 15 ? 57 : 40);
        }
        QCOMPARE(machine.webhook(), "2 down");
        machine.restart();
        endpoint.open();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("webhook works again"));
        machine.now = machine.now.addSecs(15 * 60);
        machine.poll(40);
        QTRY_COMPARE_WITH_TIMEOUT(machine.webhook(), "0 up", kLimitMs);
        QCOMPARE(endpoint.events().join(u','), "alert warning,recovery fine");
        machine.restart();
        machine.poll(40);
        QCOMPARE(machine.webhook(), "0 up");
    }
};

QTEST_GUILESS_MAIN(TestAlarmRestarts)
#include "tst_alarm_restarts.moc"
