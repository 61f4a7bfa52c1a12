// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QVector>

#include <optional>

enum class FindingKind { Temperature, Attribute, Unreadable, Growth };

/// Ordered; the numbers are those of namespace level.
enum class Severity { Fine = 1, Warning = 2, Critical = 3 };

/// A fault of one drive, from its start to its end. Times are UTC.
struct Finding
{
    /// The state that an administrator acknowledged: a worse one ends the acknowledgement.
    struct Acknowledgement
    {
        Severity severity = Severity::Warning;
        qint64 value = 0;
        quint64 raw = 0;
    };

    FindingKind kind = FindingKind::Temperature;
    quint32 id = 0; ///< of the attribute; 0 for the other kinds
    Severity severity = Severity::Warning;
    QDateTime since;

    qint64 value = 0;      ///< latest: degrees Celsius, or the attribute's normalized value
    quint32 threshold = 0; ///< of the attribute
    quint64 raw = 0;       ///< latest, of the attribute
    quint64 baseline = 0;  ///< raw value that a growth is compared with
    qint32 limit = 0;      ///< of the temperature, by severity; degrees Celsius

    int evaluationsAbsent = 0;        ///< in a row, of an attribute
    int evaluationsBelowCritical = 0; ///< in a row, of an attribute
    QDateTime lastGrowth;             ///< of the raw value

    Severity delivered = Severity::Fine; ///< the worst that an alert has reported
    std::optional<Acknowledgement> acknowledged;

    [[nodiscard]] bool isAbout(FindingKind aKind, quint32 anId) const { return kind == aKind && id == anId; }
};

/// Everything that the alarms remember of one drive.
struct DriveAlerts
{
    QString model;
    QString serial;
    int index = -1;           ///< place in the list of drives; the latest one if the drive is gone
    qint32 deviceNumber = -1; ///< the latest
    bool isListed = true;
    bool isKnown = false;             ///< a read has succeeded at least once
    int failedPolls = 0;              ///< in a row
    QMap<quint32, quint64> baselines; ///< raw values by attribute ID
    QVector<Finding> findings;
    bool isReported = false; ///< an alert about a finding was delivered, and no recovery since

    // From the latest evaluation; not stored.
    std::optional<Severity> level;
    std::optional<qint32> healthPercent;
    std::optional<qint32> temperatureCelsius;

    [[nodiscard]] Finding *find(FindingKind kind, quint32 id = 0);
    void remove(FindingKind kind, quint32 id = 0);
};
