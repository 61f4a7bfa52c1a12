// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/settings_table.h"

#include "console/client/numbers.h"
#include "console/client/requests.h"
#include "console/render/units.h"

#include <algorithm>

namespace {

using client::ServiceSettings;

Setting numberSetting(const char *name, qint32 ServiceSettings::*member, qint32 lowest, qint32 highest,
                      const char *explanation)
{
    Setting setting;
    setting.name = QLatin1String(name);
    setting.explanation = QString::fromUtf8(explanation);
    setting.range = QStringLiteral("a number from %1 to %2").arg(lowest).arg(highest);
    setting.text = [member](const ServiceSettings &settings) { return QString::number(settings.*member); };
    setting.json = [member](const ServiceSettings &settings) { return settings.*member; };
    setting.assign = [=](ServiceSettings &settings, const QString &value) {
        const auto number = client::strictNumber<qint32>(value);
        if (!number || *number < lowest || *number > highest)
            return false;
        settings.*member = *number;
        return true;
    };
    return setting;
}

Setting intervalSetting(const char *name, qint64 ServiceSettings::*member, const char *explanation)
{
    constexpr qint64 kSecond = 1000;
    constexpr qint64 kLongest = 360000 * kSecond; // the service takes no more when it starts again
    Setting setting;
    setting.name = QLatin1String(name);
    setting.explanation = QString::fromUtf8(explanation);
    setting.range = QStringLiteral("a time from 1s to 100h");
    setting.text = [member](const ServiceSettings &settings) {
        const qint64 milliseconds = settings.*member;
        return milliseconds % kSecond == 0 ? QStringLiteral("%1s").arg(milliseconds / kSecond)
                                           : QStringLiteral("%1ms").arg(milliseconds);
    };
    setting.json = [member](const ServiceSettings &settings) { return settings.*member; };
    setting.assign = [=](ServiceSettings &settings, const QString &value) {
        const auto interval = render::parseInterval(value);
        if (!interval || *interval < kSecond || *interval > kLongest)
            return false;
        settings.*member = *interval;
        return true;
    };
    return setting;
}

Setting switchSetting(const char *name, bool ServiceSettings::*member, const char *explanation)
{
    Setting setting;
    setting.name = QLatin1String(name);
    setting.explanation = QString::fromUtf8(explanation);
    setting.range = QStringLiteral("on or off");
    setting.text = [member](const ServiceSettings &settings) {
        return settings.*member ? QStringLiteral("on") : QStringLiteral("off");
    };
    setting.json = [member](const ServiceSettings &settings) { return settings.*member; };
    setting.assign = [=](ServiceSettings &settings, const QString &value) {
        const QStringList on{QStringLiteral("on"), QStringLiteral("1"), QStringLiteral("yes"),
                             QStringLiteral("true")};
        const QStringList off{QStringLiteral("off"), QStringLiteral("0"), QStringLiteral("no"),
                              QStringLiteral("false")};
        const QString word = value.toLower();
        if (!on.contains(word) && !off.contains(word))
            return false;
        settings.*member = on.contains(word);
        return true;
    };
    return setting;
}

Setting textSetting(const char *name, QString ServiceSettings::*member, const char *explanation)
{
    Setting setting;
    setting.name = QLatin1String(name);
    setting.explanation = QString::fromUtf8(explanation);
    setting.range = QStringLiteral("a text on one line without ]![ and ~; and without % before a digit");
    setting.text = [member](const ServiceSettings &settings) { return settings.*member; };
    setting.json = setting.text;
    setting.assign = [=](ServiceSettings &settings, const QString &value) {
        if (!client::isPlainField(value))
            return false;
        settings.*member = value;
        return true;
    };
    return setting;
}

Setting secretSetting(const char *name, QString ServiceSettings::*member, const char *explanation)
{
    Setting setting = textSetting(name, member, explanation);
    setting.isSecret = true;
    setting.text = [member](const ServiceSettings &settings) {
        return (settings.*member).isEmpty() ? QString() : QStringLiteral("(set)");
    };
    setting.json = [member](const ServiceSettings &settings) { return !(settings.*member).isEmpty(); };
    return setting;
}

QString assignOne(ServiceSettings &settings, const QString &assignment, const QVector<Setting> &table)
{
    const int equals = int(assignment.indexOf(QLatin1Char('=')));
    if (equals < 0)
        return QStringLiteral("'%1' is no NAME=VALUE").arg(assignment);
    const QString name = assignment.left(equals);
    const QString value = assignment.mid(equals + 1);
    const auto setting = std::find_if(table.cbegin(), table.cend(), [&](const Setting &candidate) {
        return candidate.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    if (setting == table.cend())
        return QStringLiteral("there is no setting '%1'").arg(name);
    if (setting->isSecret && !value.isEmpty()) // a command line is seen by others and kept in histories
        return QStringLiteral("%1 is not taken from the command line; use --password-file or --ask-password")
            .arg(setting->name);
    if (!setting->assign(settings, value))
        return QStringLiteral("%1 takes %2, not '%3'").arg(setting->name, setting->range, value);
    return {};
}

} // namespace

QVector<Setting> settingsTable()
{
    return {
        numberSetting("port", &ServiceSettings::port, 1, 65535, "TCP port; moves when a console disconnects"),
        intervalSetting("smartPollInterval", &ServiceSettings::smartPollInterval,
                        "between two looks at the drives"),
        intervalSetting("freeSpacePollInterval", &ServiceSettings::freeSpacePollInterval,
                        "between two looks at the volumes"),
        numberSetting("wTemp", &ServiceSettings::wTemp, 1, 99, "warning from this temperature on, °C"),
        numberSetting("cTemp", &ServiceSettings::cTemp, 1, 99, "critical from this temperature on, °C"),
        switchSetting("logSysEvLog", &ServiceSettings::logSysEvLog, "alerts go to the system's event log"),
        switchSetting("emailNotify", &ServiceSettings::emailNotify, "alerts go out by mail"),
        textSetting("smtpServer", &ServiceSettings::smtpServer, "mail server"),
        numberSetting("smtpPort", &ServiceSettings::smtpPort, 1, 65535, "its port"),
        textSetting("smtpFrom", &ServiceSettings::smtpFrom, "sender of alert mail"),
        textSetting("smtpTo", &ServiceSettings::smtpTo, "recipient of alert mail"),
        textSetting("smtpSubj", &ServiceSettings::smtpSubj, "subject of alert mail"),
        switchSetting("smtpNeedAuth", &ServiceSettings::smtpNeedAuth, "the mail server wants a login"),
        textSetting("smtpUser", &ServiceSettings::smtpUser, "user name for it"),
        secretSetting("smtpPass", &ServiceSettings::smtpPass, "password for it"),
        switchSetting("popupNotify", &ServiceSettings::popupNotify, "consoles may show a message"),
        textSetting("warnExtTask", &ServiceSettings::warnExtTask, "kept for consoles, never started"),
        textSetting("critExtTask", &ServiceSettings::critExtTask, "kept for consoles, never started"),
    };
}

MergedSettings mergeSettings(const ServiceSettings &settings, const QStringList &assignments)
{
    MergedSettings merged{settings, {}};
    const QVector<Setting> table = settingsTable();
    for (const QString &assignment : assignments) {
        merged.error = assignOne(merged.settings, assignment, table);
        if (!merged.error.isEmpty())
            break;
    }
    return merged;
}
