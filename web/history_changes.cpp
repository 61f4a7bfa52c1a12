// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/history_changes.h"

#include "wire/attribute_catalogue.h"

#include <QJsonArray>

namespace web {

namespace {

QString levelText(std::optional<int> level)
{
    static const QStringList kWords{QStringLiteral("not rated"), QStringLiteral("fine"),
                                    QStringLiteral("warning"), QStringLiteral("critical")};
    return kWords.value(level.value_or(0), QStringLiteral("unknown"));
}

QString attributeText(const client::Attribute &attribute)
{
    return QStringLiteral("attribute %1 %2 is at %3, threshold %4")
        .arg(QString::number(attribute.id), attribute_catalogue::name(qint32(attribute.id)),
             QString::number(attribute.current), QString::number(attribute.threshold));
}

/// Returns the findings that the service's alert policy holds about drive `number`.
QMap<FindingKey, QString> reportedFindings(const QJsonArray &list, qint32 number)
{
    QMap<FindingKey, QString> findings;
    for (const QJsonValue &item : list) {
        const QJsonObject finding = item.toObject();
        if (finding.value(QStringLiteral("number")).toInt(-1) != number)
            continue;
        const QString kind = finding.value(QStringLiteral("kind")).toString();
        const QJsonValue id = finding.value(QStringLiteral("id"));
        const QString severity = finding.value(QStringLiteral("severity")).toString();
        const QString name = finding.value(QStringLiteral("name")).toString();
        const QString subject = id.isDouble() ? QStringLiteral("%1 %2").arg(kind).arg(id.toInt()) : kind;
        findings.insert(subject, QStringLiteral("%1 %2 (%3)").arg(subject, name, severity).simplified());
    }
    return findings;
}

/// Returns the findings that follow from values and limits, for a service without a policy of its own.
QMap<FindingKey, QString> derivedFindings(const ServiceData &data, int number)
{
    QMap<FindingKey, QString> findings;
    const client::Drive &drive = data.drives.at(number);
    const ServiceSettings &settings = data.greeting.settings;
    for (const client::Attribute &attribute : data.attributes.at(number)) {
        if (attribute.isFailing() && drive.isRated())
            findings.insert(QStringLiteral("attribute %1").arg(attribute.id), attributeText(attribute));
    }
    const qint32 limit = drive.temperature >= settings.cTemp ? settings.cTemp : settings.wTemp;
    if (drive.isRated() && drive.temperature && *drive.temperature >= limit && limit > 0)
        findings.insert(
            QStringLiteral("temperature"),
            QStringLiteral("temperature is %1 °C, limit %2 °C").arg(*drive.temperature).arg(limit));
    return findings;
}

QMap<FindingKey, QString> findingsOf(const ServiceData &data, int number)
{
    const QJsonObject alerts = data.alerts.value_or(QJsonObject());
    if (alerts.value(QStringLiteral("policy")).toString() == QLatin1String("changes"))
        return reportedFindings(alerts.value(QStringLiteral("findings")).toArray(), number);
    return derivedFindings(data, number);
}

bool isScanning(const ServiceData &data, int number, QString &outcome)
{
    for (const client::ScanStatus &scan : data.scans) {
        if (scan.drive != number)
            continue;
        outcome = scan.state == client::ScanState::Failed
                      ? QStringLiteral("surface scan failed: the drive could not be opened")
                      : QStringLiteral("surface scan ended at %1 %, unreadable ranges: %2")
                            .arg(scan.percent)
                            .arg(scan.badRanges.size());
        return scan.state == client::ScanState::Running;
    }
    return false;
}

/// Compares one drive with its known state.
class DriveComparison
{
public:
    DriveComparison(HistoryChanges &changes, Timestamp now)
        : m_changes(changes)
        , m_now(now)
    {}

    void take(KnownDrive drive, bool isNew, bool isFirstPoll, const ServiceData &data, int number)
    {
        drive.number = number;
        drive.lastSeen = m_now;
        if (isNew && !isFirstPoll)
            add(drive, EventKind::Appeared, QStringLiteral("drive appeared"));
        else if (!std::exchange(drive.isListed, true))
            add(drive, EventKind::Returned, QStringLiteral("drive is listed again"));
        takeRating(drive, isNew, data.drives.at(number));
        takeFindings(drive, findingsOf(data, number));
        QString outcome;
        if (std::exchange(drive.isScanning, isScanning(data, number, outcome)) && !drive.isScanning)
            add(drive, EventKind::Scan, outcome);
        takeAttributes(drive, data.attributes.at(number));
        m_changes.drives.append(drive);
    }

    void takeLost(KnownDrive drive)
    {
        if (std::exchange(drive.isListed, false))
            add(drive, EventKind::Lost, QStringLiteral("drive is not listed any more"));
        m_changes.drives.append(drive);
    }

private:
    void add(const KnownDrive &drive, EventKind kind, const QString &text)
    {
        m_changes.events.append(
            {m_now, drive.key.service, drive.number, drive.key.model, drive.key.serial, kind, text});
    }

    void takeRating(KnownDrive &drive, bool isNew, const client::Drive &reported)
    {
        const auto level = reported.isRated() ? std::optional<int>(int(reported.statusLevel)) : std::nullopt;
        const auto previous = std::exchange(drive.level, level);
        if (!isNew && level && previous && *level != *previous)
            add(drive, EventKind::Level,
                QStringLiteral("level changed from %1 to %2").arg(levelText(previous), levelText(level)));
        drive.healthPercent = reported.isRated() ? std::optional<int>(reported.health) : std::nullopt;
        drive.temperatureCelsius = reported.temperature;
    }

    void takeFindings(KnownDrive &drive, const QMap<FindingKey, QString> &findings)
    {
        for (auto finding = findings.cbegin(); finding != findings.cend(); ++finding) {
            if (!drive.findings.contains(finding.key()))
                add(drive, EventKind::Finding, finding.value());
        }
        for (auto finding = drive.findings.cbegin(); finding != drive.findings.cend(); ++finding) {
            if (!findings.contains(finding.key()))
                add(drive, EventKind::Recovered, QStringLiteral("%1: recovered").arg(finding.key()));
        }
        drive.findings = findings;
    }

    void takeAttributes(KnownDrive &drive, const QVector<client::Attribute> &attributes)
    {
        for (const client::Attribute &attribute : attributes) {
            const AttributeValue value{attribute.current, attribute.worst, attribute.raw};
            const auto known = drive.attributes.constFind(attribute.id);
            if (known != drive.attributes.constEnd() && *known == value)
                continue;
            drive.attributes.insert(attribute.id, value);
            m_changes.attributes.append({int(m_changes.drives.size()), attribute.id, value});
        }
    }

    HistoryChanges &m_changes;
    Timestamp m_now;
};

} // namespace

QVector<DriveKey> driveKeys(const QString &service, const QVector<client::Drive> &drives)
{
    QHash<QString, int> serials;
    for (const client::Drive &drive : drives)
        ++serials[drive.serial];
    QVector<DriveKey> keys;
    for (int i = 0; i < drives.size(); ++i) {
        const client::Drive &drive = drives.at(i);
        const bool isUnique = !drive.serial.isEmpty() && serials.value(drive.serial) == 1;
        keys.append({service, drive.model, drive.serial, isUnique ? -1 : i});
    }
    return keys;
}

HistoryChanges compare(const QVector<KnownDrive> &known, bool isFirstPoll, const QString &service,
                       const ServiceData &data, Timestamp now)
{
    QHash<DriveKey, KnownDrive> rest;
    for (const KnownDrive &drive : known)
        rest.insert(drive.key, drive);
    HistoryChanges changes;
    DriveComparison comparison(changes, now);
    const QVector<DriveKey> keys = driveKeys(service, data.drives);
    for (int i = 0; i < keys.size(); ++i) {
        const bool isNew = !rest.contains(keys.at(i));
        KnownDrive drive = rest.take(keys.at(i));
        if (isNew) {
            drive.key = keys.at(i);
            drive.firstSeen = now;
        }
        comparison.take(drive, isNew, isFirstPoll, data, i);
    }
    for (const KnownDrive &drive : qAsConst(rest))
        comparison.takeLost(drive);
    return changes;
}

std::optional<Event> stateEvent(const ServiceSnapshot &before, const ServiceSnapshot &after, Timestamp now)
{
    const bool wasAsked = before.answeredPolls + before.failedPolls > 0;
    if (before.state == after.state || (!wasAsked && after.state == ServiceState::Ready))
        return std::nullopt;
    QString text;
    switch (after.state) {
    case ServiceState::Ready:
        text = QStringLiteral("service is ready");
        break;
    case ServiceState::Detecting:
        text = QStringLiteral("service detects its drives");
        break;
    case ServiceState::Paused:
        text = QStringLiteral("service is paused");
        break;
    case ServiceState::Unreachable:
        text = QStringLiteral("service does not answer: %1").arg(after.error);
        break;
    }
    return Event{now, after.name, -1, {}, {}, EventKind::Service, text};
}

QString eventWord(EventKind kind)
{
    switch (kind) {
    case EventKind::Level:
        return QStringLiteral("level");
    case EventKind::Finding:
        return QStringLiteral("finding");
    case EventKind::Recovered:
        return QStringLiteral("recovered");
    case EventKind::Appeared:
        return QStringLiteral("appeared");
    case EventKind::Lost:
        return QStringLiteral("lost");
    case EventKind::Returned:
        return QStringLiteral("returned");
    case EventKind::Scan:
        return QStringLiteral("scan");
    case EventKind::Service:
        break;
    }
    return QStringLiteral("service");
}

} // namespace web
