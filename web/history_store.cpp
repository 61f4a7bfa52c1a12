// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/history_store.h"

#include "web/host.h"
#include "web/logging.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace web {

namespace {

const QString kFileName = QStringLiteral("history.db");

const char *const kTables[] = {
    "CREATE TABLE IF NOT EXISTS drive (id INTEGER PRIMARY KEY, service TEXT NOT NULL, model TEXT NOT NULL,"
    " serial TEXT NOT NULL, slot INTEGER NOT NULL, number INTEGER NOT NULL, listed INTEGER NOT NULL,"
    " first_seen INTEGER NOT NULL, last_seen INTEGER NOT NULL, level INTEGER, health INTEGER,"
    " temperature INTEGER, scanning INTEGER NOT NULL, findings TEXT NOT NULL,"
    " UNIQUE (service, model, serial, slot))",
    "CREATE TABLE IF NOT EXISTS attribute_change (drive INTEGER NOT NULL, attribute INTEGER NOT NULL,"
    " time INTEGER NOT NULL, value INTEGER NOT NULL, worst INTEGER NOT NULL, raw INTEGER NOT NULL,"
    " PRIMARY KEY (drive, attribute, time)) WITHOUT ROWID",
    "CREATE TABLE IF NOT EXISTS event (id INTEGER PRIMARY KEY, time INTEGER NOT NULL, service TEXT NOT NULL,"
    " number INTEGER NOT NULL, model TEXT NOT NULL, serial TEXT NOT NULL, kind INTEGER NOT NULL,"
    " text TEXT NOT NULL)",
    "CREATE INDEX IF NOT EXISTS event_by_time ON event (time)",
    "CREATE INDEX IF NOT EXISTS event_by_service ON event (service, time)",
};

QVariant orNull(const std::optional<int> &value)
{
    return value ? QVariant(*value) : QVariant();
}

std::optional<int> optionalAt(const DatabaseRow &row, int column)
{
    return row.isNull(column) ? std::nullopt : std::optional<int>(int(row.number(column)));
}

QString findingsText(const QMap<FindingKey, QString> &findings)
{
    QJsonObject object;
    for (auto finding = findings.cbegin(); finding != findings.cend(); ++finding)
        object.insert(finding.key(), finding.value());
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QMap<FindingKey, QString> findingsFrom(const QString &text)
{
    QMap<FindingKey, QString> findings;
    const QJsonObject object = QJsonDocument::fromJson(text.toUtf8()).object();
    for (auto finding = object.constBegin(); finding != object.constEnd(); ++finding)
        findings.insert(finding.key(), finding.value().toString());
    return findings;
}

} // namespace

HistoryStore::HistoryStore(QString folder)
    : m_folder(std::move(folder))
{}

Result<void> HistoryStore::open()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return openFile();
}

Result<void> HistoryStore::openFile()
{
    if (!host::makePrivateFolder(m_folder))
        return Error{QStringLiteral("%1: the folder cannot be made").arg(m_folder)};
    const QString path = QDir(m_folder).filePath(kFileName);
    bool isOpen = m_database.open(path) && makeTables();
    if (!isOpen && m_database.isDamaged()) {
        setAsideIfDamaged();
        isOpen = m_database.isOpen();
    }
    if (!isOpen)
        return Error{QStringLiteral("%1: %2").arg(path, m_database.error())};
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return {};
}

bool HistoryStore::makeTables()
{
    for (const char *table : kTables) {
        if (!m_database.run(table))
            return false;
    }
    return true;
}

/// After a failure that means damage, begins a new file; the old one stays for whoever wants to rescue it.
void HistoryStore::setAsideIfDamaged()
{
    if (!m_database.isDamaged())
        return;
    const QString reason = m_database.error();
    m_database.close();
    const QString path = QDir(m_folder).filePath(kFileName);
    const QString stamp = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const QString aside = QStringLiteral("%1.damaged-%2").arg(path, stamp);
    for (const char *suffix : {"", "-wal", "-shm"})
        QFile::rename(path + QLatin1String(suffix), aside + QLatin1String(suffix));
    qCCritical(lcWeb).noquote() << QStringLiteral("%1 is damaged (%2): set aside as %3, a new history begins")
                                       .arg(path, reason, aside);
    if (!m_database.open(path) || !makeTables())
        m_database.close();
}

Result<void> HistoryStore::runAsWhole(const std::function<bool()> &work)
{
    if (!m_database.isOpen()) {
        if (auto opened = openFile(); !opened)
            return opened;
    }
    if (m_database.run("BEGIN IMMEDIATE") && work() && m_database.run("COMMIT"))
        return {};
    const Error error{m_database.error()};
    const bool isDamaged = m_database.isDamaged();
    if (isDamaged)
        setAsideIfDamaged();
    else
        (void)m_database.run("ROLLBACK"); // fails where the failure has ended the transaction
    return error;
}

QVector<KnownDrive> HistoryStore::readDrives(const char *condition)
{
    const QByteArray sql =
        QByteArray("SELECT id, service, model, serial, slot, number, listed, first_seen, last_seen, level,"
                   " health, temperature, scanning, findings FROM drive ") +
        condition;
    QVector<KnownDrive> drives;
    (void)m_database.query(sql.constData(), {}, [&drives](const DatabaseRow &row) {
        KnownDrive drive;
        drive.id = row.number(0);
        drive.key = {row.text(1), row.text(2), row.text(3), qint32(row.number(4))};
        drive.number = qint32(row.number(5));
        drive.isListed = row.number(6) != 0;
        drive.firstSeen = row.number(7);
        drive.lastSeen = row.number(8);
        drive.level = optionalAt(row, 9);
        drive.healthPercent = optionalAt(row, 10);
        drive.temperatureCelsius = optionalAt(row, 11);
        drive.isScanning = row.number(12) != 0;
        drive.findings = findingsFrom(row.text(13));
        drives.append(drive);
    });
    return drives;
}

QVector<KnownDrive> HistoryStore::knownDrives()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    QVector<KnownDrive> drives = readDrives("");
    QHash<qint64, int> positions;
    for (int i = 0; i < drives.size(); ++i)
        positions.insert(drives.at(i).id, i);
    // Of a group with one max(), SQLite takes the other columns from the row that holds it.
    (void)m_database.query("SELECT drive, attribute, max(time), value, worst, raw FROM attribute_change"
                           " GROUP BY drive, attribute",
                           {}, [&](const DatabaseRow &row) {
                               const auto position = positions.constFind(row.number(0));
                               if (position != positions.constEnd())
                                   drives[*position].attributes.insert(
                                       quint32(row.number(1)), {row.number(3), row.number(4), row.number(5)});
                           });
    return drives;
}

bool HistoryStore::saveDrive(KnownDrive &drive)
{
    const QVariantList values{drive.key.service,
                              drive.key.model,
                              drive.key.serial,
                              drive.key.slot,
                              drive.number,
                              drive.isListed,
                              drive.firstSeen,
                              drive.lastSeen,
                              orNull(drive.level),
                              orNull(drive.healthPercent),
                              orNull(drive.temperatureCelsius),
                              drive.isScanning,
                              findingsText(drive.findings)};
    // By its key, because a file that was set aside has taken the drive's row with it.
    return m_database.query(
        "INSERT INTO drive (service, model, serial, slot, number, listed, first_seen, last_seen, level, "
        "health,"
        " temperature, scanning, findings) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"
        " ON CONFLICT (service, model, serial, slot) DO UPDATE SET number = excluded.number,"
        " listed = excluded.listed, last_seen = excluded.last_seen, level = excluded.level,"
        " health = excluded.health, temperature = excluded.temperature, scanning = excluded.scanning,"
        " findings = excluded.findings RETURNING id",
        values, [&drive](const DatabaseRow &row) { drive.id = row.number(0); });
}

bool HistoryStore::addAll(HistoryChanges &changes, Timestamp now)
{
    for (KnownDrive &drive : changes.drives) {
        if (!saveDrive(drive))
            return false;
    }
    for (const HistoryChanges::Attribute &change : qAsConst(changes.attributes)) {
        if (!m_database.run("INSERT OR REPLACE INTO attribute_change VALUES (?, ?, ?, ?, ?, ?)",
                            {changes.drives.at(change.drive).id, change.id, now, change.value.value,
                             change.value.worst, change.value.raw}))
            return false;
    }
    for (const Event &event : qAsConst(changes.events)) {
        if (!m_database.run("INSERT INTO event (time, service, number, model, serial, kind, text)"
                            " VALUES (?, ?, ?, ?, ?, ?, ?)",
                            {event.time, event.service, event.drive, event.model, event.serial,
                             int(event.kind), event.text}))
            return false;
    }
    return true;
}

Result<void> HistoryStore::add(HistoryChanges &changes, Timestamp now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return runAsWhole([&] { return addAll(changes, now); });
}

Result<void> HistoryStore::removeBefore(Timestamp cutoff)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto removed = runAsWhole([&] {
        return m_database.run("DELETE FROM event WHERE time < ?", {cutoff}) &&
               m_database.run("DELETE FROM attribute_change WHERE time < ? AND EXISTS (SELECT 1 FROM"
                              " attribute_change AS later WHERE later.drive = attribute_change.drive AND"
                              " later.attribute = attribute_change.attribute AND"
                              " later.time > attribute_change.time)",
                              {cutoff}) &&
               m_database.run("DELETE FROM attribute_change WHERE drive IN"
                              " (SELECT id FROM drive WHERE listed = 0 AND last_seen < ?)",
                              {cutoff}) &&
               m_database.run("DELETE FROM drive WHERE listed = 0 AND last_seen < ?", {cutoff});
    });
    if (removed)
        (void)m_database.run("PRAGMA incremental_vacuum");
    return removed;
}

QVector<Event> HistoryStore::events(const QString &service, Timestamp from, Timestamp to, int limit)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const QByteArray sql =
        QByteArray("SELECT time, service, number, model, serial, kind, text FROM event WHERE time >= ? AND"
                   " time <= ?") +
        (service.isEmpty() ? "" : " AND service = ?") + " ORDER BY time DESC, id DESC LIMIT ?";
    QVariantList arguments{from, to};
    if (!service.isEmpty())
        arguments.append(service);
    arguments.append(limit);
    QVector<Event> events;
    (void)m_database.query(sql.constData(), arguments, [&events](const DatabaseRow &row) {
        events.append({row.number(0), row.text(1), qint32(row.number(2)), row.text(3), row.text(4),
                       EventKind(row.number(5)), row.text(6)});
    });
    return events;
}

QVector<StoredChange> HistoryStore::attributeChanges(const DriveKey &drive, quint32 attribute, Timestamp from,
                                                     Timestamp to)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    QVector<StoredChange> changes;
    (void)m_database.query(
        "SELECT time, value, worst, raw FROM attribute_change WHERE drive ="
        " (SELECT id FROM drive WHERE service = ? AND model = ? AND serial = ? AND slot = ?)"
        " AND attribute = ? AND time >= ? AND time <= ? ORDER BY time",
        {drive.service, drive.model, drive.serial, drive.slot, attribute, from, to},
        [&changes](const DatabaseRow &row) {
            changes.append(StoredChange{row.number(0), {row.number(1), row.number(2), row.number(3)}});
        });
    return changes;
}

QVector<KnownDrive> HistoryStore::formerDrives()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return readDrives("WHERE listed = 0 ORDER BY last_seen DESC");
}

} // namespace web
