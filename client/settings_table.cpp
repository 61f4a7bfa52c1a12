// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/settings_table.h"

#include "client/numbers.h"
#include "client/requests.h"
#include "client/units.h"
#include "wire/poll_limits.h"

#include <algorithm>
#include <cmath>

namespace client {

namespace {

constexpr qint64 kSecond = 1000;
constexpr qint64 kLongestInterval = kLongestPollSeconds * kSecond; // the service accepts no more from its key
constexpr qint32 kHighestPort = 65535;
constexpr qint32 kHighestTemperature = 99;

using Kind = Setting::Kind;
using S = ServiceSettings;

/// Parses on and off and their synonyms.
std::optional<bool> parseSwitch(const QString &text)
{
    static const QStringList kWords{QStringLiteral("off"),   QStringLiteral("on"),  QStringLiteral("no"),
                                    QStringLiteral("yes"),   QStringLiteral("0"),   QStringLiteral("1"),
                                    QStringLiteral("false"), QStringLiteral("true")};
    const int place = int(kWords.indexOf(text.toLower()));
    return place < 0 ? std::nullopt : std::optional<bool>(place % 2 == 1);
}

bool assignNumber(const Setting &setting, ServiceSettings &settings, std::optional<qint64> number)
{
    if (!number || *number < setting.lowest || *number > setting.highest)
        return false;
    const auto assign = [&](auto member) {
        using Value = std::decay_t<decltype(settings.*member)>;
        if constexpr (std::is_integral_v<Value>)
            settings.*member = Value(*number);
    };
    std::visit(assign, setting.member);
    return true;
}

/// Returns whether the settings file would take a part of `text` for another setting: its lines are searched
/// for every key.
bool containsFileKey(const QString &text)
{
    const auto holds = [&text](const QString &name) { return text.contains(name + QLatin1Char('=')); };
    const QVector<Setting> &table = settingsTable();
    return holds(QStringLiteral("disk")) || holds(QStringLiteral("scan")) ||
           std::any_of(table.cbegin(), table.cend(), [&](const Setting &setting) {
               const bool isInFile = setting.kind != Kind::Interval && setting.name != QLatin1String("port");
               return isInFile && holds(setting.name);
           });
}

bool assignText(const Setting &setting, ServiceSettings &settings, const QString &text)
{
    if (!isPlainField(text) || containsFileKey(text))
        return false;
    settings.*std::get<QString S::*>(setting.member) = text;
    return true;
}

std::optional<qint64> wholeNumber(const QJsonValue &value)
{
    constexpr double kLargestExact = 9007199254740992.0; // 2^53
    const double number = value.toDouble();
    if (!value.isDouble() || std::abs(number) > kLargestExact || std::floor(number) != number)
        return std::nullopt;
    return qint64(number);
}

/// Returns the value of a document that a person's text means; null if it means none.
QJsonValue documentValue(const Setting &setting, const QString &text)
{
    switch (setting.kind) {
    case Kind::Number:
        return toJson(strictNumber<qint32>(text));
    case Kind::Interval:
        return toJson(parseInterval(text));
    case Kind::Switch:
        return toJson(parseSwitch(text));
    case Kind::Text:
    case Kind::Secret:
        return text;
    }
    return {};
}

/// Applies a value of a document. Returns false without a change if it is not in range.
bool assign(const Setting &setting, ServiceSettings &settings, const QJsonValue &value)
{
    switch (setting.kind) {
    case Kind::Number:
    case Kind::Interval:
        return assignNumber(setting, settings, wholeNumber(value));
    case Kind::Switch:
        if (value.isBool())
            settings.*std::get<bool S::*>(setting.member) = value.toBool();
        return value.isBool();
    case Kind::Text:
    case Kind::Secret:
        return value.isString() && assignText(setting, settings, value.toString());
    }
    return false;
}

Failure refused(const QString &text)
{
    return {FailureKind::Refused, text};
}

Failure outOfRange(const Setting &setting, const QString &name)
{
    return refused(QStringLiteral("%1 takes %2").arg(name, setting.range()));
}

/// Two limits of which the lower one would never be reached are a mistake.
Result<ServiceSettings> withOrderedLimits(const ServiceSettings &settings, const ServiceSettings &before)
{
    const bool areNew = settings.wTemp != before.wTemp || settings.cTemp != before.cTemp;
    if (areNew && settings.wTemp > settings.cTemp)
        return refused(QStringLiteral("wTemp (%1) must not be above cTemp (%2)")
                           .arg(settings.wTemp)
                           .arg(settings.cTemp));
    return settings;
}

std::optional<Failure> applyOne(ServiceSettings &settings, const QString &assignment,
                                const QStringList &names)
{
    const QVector<Setting> &table = settingsTable();
    const int equals = int(assignment.indexOf(QLatin1Char('=')));
    if (equals < 0)
        return refused(QStringLiteral("'%1' is not NAME=VALUE").arg(assignment));
    const QString name = assignment.left(equals);
    const QString value = assignment.mid(equals + 1);
    const auto setting = std::find_if(table.cbegin(), table.cend(), [&](const Setting &candidate) {
        return candidate.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    if (setting == table.cend())
        return refused(QStringLiteral("there is no setting '%1'").arg(name));
    if (!names.isEmpty() && !names.contains(setting->name))
        return refused(QStringLiteral("%1 is not a mail setting").arg(setting->name));
    if (setting->kind == Kind::Secret && !value.isEmpty()) // other users can see a command line
        return refused(QStringLiteral("%1 is not accepted on the command line; use --password-file or "
                                      "--ask-password")
                           .arg(setting->name));
    if (!assign(*setting, settings, documentValue(*setting, value)))
        return outOfRange(*setting, setting->name);
    return std::nullopt;
}

} // namespace

QString Setting::text(const ServiceSettings &settings) const
{
    const QJsonValue value = json(settings);
    switch (kind) {
    case Kind::Number:
        return value.toVariant().toString();
    case Kind::Interval: {
        const qint64 milliseconds = value.toVariant().toLongLong();
        return milliseconds % kSecond == 0 ? QStringLiteral("%1s").arg(milliseconds / kSecond)
                                           : QStringLiteral("%1ms").arg(milliseconds);
    }
    case Kind::Switch:
        return value.toBool() ? QStringLiteral("on") : QStringLiteral("off");
    case Kind::Text:
        return value.toString();
    case Kind::Secret:
        return value.toBool() ? QStringLiteral("(set)") : QString();
    }
    return {};
}

QJsonValue Setting::json(const ServiceSettings &settings) const
{
    const auto document = [&settings](auto value) { return toJson(settings.*value); };
    const QJsonValue value = std::visit(document, member);
    return kind == Kind::Secret ? !value.toString().isEmpty() : value;
}

QString Setting::range() const
{
    switch (kind) {
    case Kind::Number:
        return QStringLiteral("a number from %1 to %2").arg(lowest).arg(highest);
    case Kind::Interval:
        return QStringLiteral("a time from 1s to 100h");
    case Kind::Switch:
        return QStringLiteral("on or off");
    case Kind::Text:
    case Kind::Secret:
        return QStringLiteral("one line without ]![ and ~; and %1, and without a setting's name before '='");
    }
    return {};
}

const QVector<Setting> &settingsTable()
{
    const auto row = [](Kind kind, const char *name, Setting::Member member, const char *help,
                        qint64 highest = 0) {
        const QString text = QString::fromLatin1(name);
        return Setting{kind, text, text, QString::fromUtf8(help), member, 1, highest};
    };
    const auto interval = [](const char *name, qint64 S::*member, const char *help) {
        const QString text = QString::fromLatin1(name);
        return Setting{Kind::Interval,          text,   text + QStringLiteral("Ms"),
                       QString::fromUtf8(help), member, kSecond,
                       kLongestInterval};
    };
    static const QVector<Setting> kTable{
        row(Kind::Number, "port", &S::port, "TCP port; used once a console disconnects", kHighestPort),
        interval("smartPollInterval", &S::smartPollInterval, "between two reads of the drives"),
        interval("freeSpacePollInterval", &S::freeSpacePollInterval, "between two reads of the volumes"),
        row(Kind::Number, "wTemp", &S::wTemp, "warning from this temperature on, °C", kHighestTemperature),
        row(Kind::Number, "cTemp", &S::cTemp, "critical from this temperature on, °C", kHighestTemperature),
        row(Kind::Switch, "logSysEvLog", &S::logSysEvLog, "alerts to the system's event log"),
        row(Kind::Switch, "emailNotify", &S::emailNotify, "alerts by mail"),
        row(Kind::Text, "smtpServer", &S::smtpServer, "mail server"),
        row(Kind::Number, "smtpPort", &S::smtpPort, "port of the mail server", kHighestPort),
        row(Kind::Text, "smtpFrom", &S::smtpFrom, "sender of alert mail"),
        row(Kind::Text, "smtpTo", &S::smtpTo, "recipient of alert mail"),
        row(Kind::Text, "smtpSubj", &S::smtpSubj, "subject of alert mail"),
        row(Kind::Switch, "smtpNeedAuth", &S::smtpNeedAuth, "the mail server requires a login"),
        row(Kind::Text, "smtpUser", &S::smtpUser, "user name of the login"),
        row(Kind::Secret, "smtpPass", &S::smtpPass, "password of the login"),
        row(Kind::Switch, "popupNotify", &S::popupNotify, "consoles may show a message"),
        row(Kind::Text, "warnExtTask", &S::warnExtTask, "stored for consoles, never started"),
        row(Kind::Text, "critExtTask", &S::critExtTask, "stored for consoles, never started"),
    };
    return kTable;
}

Columns<Setting> settingColumns(const ServiceSettings &settings)
{
    return {
        column<Setting>("name", "Name", Layout::Left, &Setting::name),
        column<Setting>(
            "value", "Value", Layout::Shrinking, [settings](const Setting &s) { return s.json(settings); },
            [settings](const Setting &s) { return Cell{visible(s.text(settings))}; }),
        column<Setting>("meaning", "Meaning", Layout::Shrinking, &Setting::help,
                        [](const Setting &s) {
                            return Cell{s.help, Tone::Dim};
                        }),
    };
}

Result<ServiceSettings> changeSettings(ServiceSettings settings, const QStringList &assignments,
                                       const QStringList &names)
{
    const ServiceSettings before = settings;
    for (const QString &assignment : assignments) {
        if (auto failure = applyOne(settings, assignment, names))
            return *failure;
    }
    return withOrderedLimits(settings, before);
}

Result<ServiceSettings> changeSettings(ServiceSettings settings, const QJsonObject &changes)
{
    const ServiceSettings before = settings;
    const QVector<Setting> &table = settingsTable();
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        const auto setting = std::find_if(table.cbegin(), table.cend(), [&](const Setting &candidate) {
            return candidate.key == change.key();
        });
        if (setting == table.cend())
            return refused(QStringLiteral("there is no setting '%1'").arg(visible(change.key())));
        if (!assign(*setting, settings, change.value()))
            return outOfRange(*setting, setting->key);
    }
    return withOrderedLimits(settings, before);
}

} // namespace client
