// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/number_assignment.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

namespace number_assignment {

namespace {

const QLatin1String kDrives("drives");
const QLatin1String kNumber("number");
const QLatin1String kIdentity("identity");

int lowestFree(const QVector<Entry> &entries)
{
    QSet<int> taken;
    for (const Entry &entry : entries)
        taken.insert(entry.number);
    int number = 0;
    while (taken.contains(number))
        ++number;
    return number;
}

/// Returns the entry of a disk, by its identity and, if asked for, its node; null if there is none that no
/// other disk has.
Entry *find(QVector<Entry> &entries, const Disk &disk, bool atSameNode)
{
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry &entry) {
        return !entry.isPresent && entry.identity == disk.identity &&
               (!atSameNode || entry.node == disk.node);
    });
    return found == entries.end() ? nullptr : &*found;
}

Entry *add(QVector<Entry> &entries, const Disk &disk)
{
    if (lowestFree(entries) >= kNumbers) {
        const auto oldest =
            std::find_if(entries.begin(), entries.end(), [](const Entry &entry) { return !entry.isPresent; });
        if (oldest != entries.end())
            entries.erase(oldest);
    }
    Entry entry;
    entry.number = lowestFree(entries);
    entry.identity = disk.identity;
    entry.isStored = !disk.isRemovable && entry.number < kNumbers;
    entries.append(entry);
    return &entries.last();
}

} // namespace

QVector<int> assign(QVector<Entry> &entries, const QVector<Disk> &disks)
{
    for (Entry &entry : entries)
        entry.isPresent = false;
    QVector<int> numbers(disks.size(), -1);
    const auto take = [&](int place, Entry *entry) {
        if (!entry)
            return;
        entry->isPresent = true;
        entry->node = disks.at(place).node;
        numbers[place] = entry->number;
    };
    for (int i = 0; i < disks.size(); ++i)
        take(i, find(entries, disks.at(i), true));
    for (int i = 0; i < disks.size(); ++i) {
        if (numbers.at(i) < 0)
            take(i, find(entries, disks.at(i), false));
    }
    for (int i = 0; i < disks.size(); ++i) {
        if (numbers.at(i) < 0)
            take(i, add(entries, disks.at(i)));
    }
    return numbers;
}

std::optional<QVector<Entry>> parse(const QByteArray &json)
{
    const QJsonValue drives = QJsonDocument::fromJson(json).object().value(kDrives);
    if (!drives.isArray())
        return std::nullopt;
    QVector<Entry> entries;
    QSet<int> taken;
    for (const QJsonValue value : drives.toArray()) {
        Entry entry;
        entry.number = value.toObject().value(kNumber).toInt(-1);
        entry.identity = value.toObject().value(kIdentity).toString();
        const bool isIdentity = value.toObject().value(kIdentity).isString();
        if (!isIdentity || entry.number < 0 || entry.number >= kNumbers || taken.contains(entry.number))
            return std::nullopt;
        taken.insert(entry.number);
        entries.append(entry);
    }
    return entries;
}

QByteArray format(const QVector<Entry> &entries)
{
    QJsonArray drives;
    for (const Entry &entry : entries) {
        if (entry.isStored)
            drives.append(QJsonObject{{kNumber, entry.number}, {kIdentity, entry.identity}});
    }
    return QJsonDocument(QJsonObject{{kDrives, drives}}).toJson();
}

} // namespace number_assignment
