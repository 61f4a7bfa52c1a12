// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_text.h"

#include "monitor/health.h"
#include "wire/attribute_catalogue.h"

#include <algorithm>
#include <iterator>

namespace {

using Event = AlertMessage::Event;

template <typename T>
struct Word
{
    T value;
    const char *text;
};

constexpr Word<Event> kEvents[] = {{Event::Alert, "alert"},
                                   {Event::Recovery, "recovery"},
                                   {Event::Reminder, "reminder"},
                                   {Event::Test, "test"}};
constexpr Word<Severity> kSeverities[] = {
    {Severity::Fine, "fine"}, {Severity::Warning, "warning"}, {Severity::Critical, "critical"}};
constexpr Word<FindingKind> kKinds[] = {{FindingKind::Temperature, "temperature"},
                                        {FindingKind::Attribute, "attribute"},
                                        {FindingKind::Unreadable, "unreadable"},
                                        {FindingKind::Growth, "growth"}};

template <typename T, std::size_t N>
QString wordOf(const Word<T> (&words)[N], T value)
{
    const auto isIt = [value](const Word<T> &word) { return word.value == value; };
    return QString::fromLatin1(std::find_if(std::begin(words), std::end(words), isIt)->text);
}

template <typename T, std::size_t N>
std::optional<T> parse(const Word<T> (&words)[N], const QString &text)
{
    for (const Word<T> &word : words) {
        if (text == QLatin1String(word.text))
            return word.value;
    }
    return std::nullopt;
}

QString findingLine(const Finding &finding)
{
    switch (finding.kind) {
    case FindingKind::Temperature:
        return temperatureLine(finding.value);
    case FindingKind::Attribute:
        return attributeLine(finding.id, finding.value);
    case FindingKind::Unreadable:
        return QStringLiteral("   Drive not readable\n");
    case FindingKind::Growth:
        return QStringLiteral("   Parameter ID %1 grew from %2 to %3\n")
            .arg(finding.id)
            .arg(finding.baseline)
            .arg(finding.raw);
    }
    Q_UNREACHABLE();
    return {};
}

template <typename T>
QJsonValue orNull(const std::optional<T> &value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

QJsonObject driveDocument(const DriveAlerts &drive)
{
    QJsonArray findings;
    for (const Finding &finding : drive.findings)
        findings << findingDocument(finding);
    return {{QStringLiteral("number"), drive.isListed ? QJsonValue(drive.index) : QJsonValue()},
            {QStringLiteral("model"), drive.model},
            {QStringLiteral("serial"), drive.serial},
            {QStringLiteral("level"), drive.level ? QJsonValue(severityWord(*drive.level)) : QJsonValue()},
            {QStringLiteral("healthPercent"), orNull(drive.healthPercent)},
            {QStringLiteral("temperatureCelsius"), orNull(drive.temperatureCelsius)},
            {QStringLiteral("findings"), findings}};
}

} // namespace

QString eventWord(Event event)
{
    return wordOf(kEvents, event);
}

QString severityWord(Severity severity)
{
    return wordOf(kSeverities, severity);
}

QString kindWord(FindingKind kind)
{
    return wordOf(kKinds, kind);
}

std::optional<Event> parseEvent(const QString &word)
{
    return parse(kEvents, word);
}

std::optional<Severity> parseSeverity(const QString &word)
{
    return parse(kSeverities, word);
}

std::optional<FindingKind> parseKind(const QString &word)
{
    return parse(kKinds, word);
}

QString messageText(const AlertMessage &message)
{
    if (message.event == Event::Test)
        return QStringLiteral("Test");
    QString text;
    for (const DriveAlerts &drive : message.drives) {
        QString detail;
        for (const Finding &finding : drive.findings)
            detail += findingLine(finding);
        if (message.event == Event::Recovery)
            detail = QStringLiteral("   Recovered\n");
        text += alertBlock(drive.deviceNumber, drive.model, detail);
    }
    return text.chopped(std::min(text.size(), 1));
}

QJsonValue timeValue(const QDateTime &utc)
{
    return utc.isValid() ? QJsonValue(utc.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ")))
                         : QJsonValue();
}

QJsonObject findingDocument(const Finding &finding)
{
    const bool isTemperature = finding.kind == FindingKind::Temperature;
    const bool isGrowth = finding.kind == FindingKind::Growth;
    const bool isOfAttribute = finding.kind == FindingKind::Attribute || isGrowth;
    const auto valueIf = [](bool applies, const QJsonValue &value) { return applies ? value : QJsonValue(); };
    return {{QStringLiteral("kind"), kindWord(finding.kind)},
            {QStringLiteral("severity"), severityWord(finding.severity)},
            {QStringLiteral("id"), valueIf(isOfAttribute, qint64(finding.id))},
            {QStringLiteral("name"), valueIf(isOfAttribute, attribute_catalogue::name(qint32(finding.id)))},
            {QStringLiteral("value"), valueIf(isOfAttribute || isTemperature, finding.value)},
            {QStringLiteral("threshold"), valueIf(isOfAttribute, qint64(finding.threshold))},
            {QStringLiteral("raw"), valueIf(isOfAttribute, qint64(finding.raw))},
            {QStringLiteral("baseline"), valueIf(isGrowth, qint64(finding.baseline))},
            {QStringLiteral("limit"), valueIf(isTemperature, finding.limit)},
            {QStringLiteral("since"), timeValue(finding.since)}};
}

QJsonObject messageDocument(const AlertMessage &message, const QString &text, const QString &host,
                            const QDateTime &utc)
{
    QJsonArray drives;
    for (const DriveAlerts &drive : message.drives)
        drives << driveDocument(drive);
    return {{QStringLiteral("event"), eventWord(message.event)},
            {QStringLiteral("time"), timeValue(utc)},
            {QStringLiteral("host"), host},
            {QStringLiteral("level"), severityWord(message.level)},
            {QStringLiteral("text"), text},
            {QStringLiteral("drives"), drives}};
}
