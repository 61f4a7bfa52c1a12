// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QHash>
#include <QMap>
#include <QString>
#include <QVector>

#include <optional>

namespace web {

/// Seconds since 1970.
using Timestamp = qint64;

/// The identity of a drive in the history, independent of its present number.
struct DriveKey
{
    QString service;
    QString model;
    QString serial;
    qint32 slot = -1; ///< the drive's number where its serial is empty or not unique, else -1

    friend bool operator==(const DriveKey &a, const DriveKey &b)
    {
        return a.service == b.service && a.model == b.model && a.serial == b.serial && a.slot == b.slot;
    }
};

inline uint qHash(const DriveKey &key, uint seed = 0)
{
    return qHash(key.service, seed) ^ qHash(key.model, seed + 1) ^ qHash(key.serial, seed + 2) ^
           uint(key.slot);
}

struct AttributeValue
{
    qint64 value = 0;
    qint64 worst = 0;
    qint64 raw = 0;

    friend bool operator==(const AttributeValue &a, const AttributeValue &b)
    {
        return a.value == b.value && a.worst == b.worst && a.raw == b.raw;
    }
};

struct AttributeChange
{
    Timestamp time = 0;
    AttributeValue value;
};

/// Kind and attribute of a fault, such as "attribute 5".
using FindingKey = QString;

/// A drive as the history knows it.
struct KnownDrive
{
    qint64 id = 0; ///< in the history store, which sets it
    DriveKey key;
    qint32 number = -1; ///< in the service's list
    bool isListed = true;
    Timestamp firstSeen = 0;
    Timestamp lastSeen = 0;
    std::optional<int> level; ///< 1 fine, 2 warning, 3 critical
    std::optional<int> healthPercent;
    std::optional<int> temperatureCelsius;
    bool isScanning = false;
    QHash<quint32, AttributeValue> attributes; ///< by identifier
    QMap<FindingKey, QString> findings;        ///< the text of each
};

enum class EventKind { Level, Finding, Recovered, Appeared, Lost, Returned, Scan, Service };

struct Event
{
    Timestamp time = 0;
    QString service;
    qint32 drive = -1; ///< the drive's number then; -1: an event of the whole service
    QString model;
    QString serial;
    EventKind kind = EventKind::Service;
    QString text;
};

/// Returns the word of the API for `kind`.
[[nodiscard]] QString eventWord(EventKind kind);

} // namespace web
