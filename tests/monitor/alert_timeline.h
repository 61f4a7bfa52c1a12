// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/alert_state.h"
#include "monitor/alert_text.h"
#include "monitor/findings.h"

/// One evaluation of a machine with one drive, and the events just before it.
struct Step
{
    double hours = 0; ///< since the start of the timeline
    std::optional<qint32> celsius = 30;
    quint32 value = 100; ///< of attribute 5, with threshold 20
    quint64 raw = 0;     ///< of attribute 197, which is not a pre-failure attribute
    ReadOutcome read = ReadOutcome::Succeeded;
    bool isListed = true;
    bool acknowledges = false; ///< acknowledges all findings
    bool hasChannel = true;
};
using Timeline = QVector<Step>;

inline Step at(double hours)
{
    Step step;
    step.hours = hours;
    return step;
}

inline Step celsius(double hours, qint32 degrees)
{
    Step step = at(hours);
    step.celsius = degrees;
    return step;
}

inline Step value(double hours, quint32 normalized)
{
    Step step = at(hours);
    step.value = normalized;
    return step;
}

inline Step raw(double hours, quint64 count)
{
    Step step = at(hours);
    step.raw = count;
    return step;
}

inline Step read(double hours, ReadOutcome outcome)
{
    Step step = at(hours);
    step.read = outcome;
    return step;
}

inline Step missing(double hours)
{
    Step step = at(hours);
    step.isListed = false;
    return step;
}

inline Step acknowledged(Step step)
{
    step.acknowledges = true;
    return step;
}

inline Step silent(Step step)
{
    step.hasChannel = false;
    return step;
}

inline AttributeEntry attribute(quint32 id, quint32 current, quint64 raw, bool isPreFailure)
{
    AttributeEntry entry;
    entry.id = id;
    entry.current = current;
    entry.threshold = 20;
    entry.raw = raw;
    entry.notPrefailure = isPreFailure ? 0 : 1;
    return entry;
}

inline DriveEvaluation evaluationOf(const Step &step)
{
    DriveEvaluation drive;
    drive.model = "MODEL";
    drive.serial = "S1";
    drive.deviceNumber = 7;
    drive.read = step.read;
    drive.isEvaluated = true;
    drive.temperatureCelsius = step.celsius;
    drive.attributes = {attribute(5, step.value, 0, true), attribute(197, 100, step.raw, false)};
    return drive;
}

inline const QDateTime kStart(QDate(2026, 3, 1), QTime(0, 0), Qt::UTC);

/// Runs the policy over time, with the default options.
class Machine
{
public:
    AlertState state;
    AlertState latest; ///< before it was stored

    /// Returns "HOURS EVENT LEVEL" for each message, and its lines after the first, trimmed.
    QStringList evaluate(const Step &step)
    {
        if (step.acknowledges) {
            for (DriveAlerts &drive : state.drives) {
                for (Finding &finding : drive.findings)
                    acknowledge(drive, finding);
            }
        }
        Evaluation evaluation;
        if (step.isListed)
            evaluation.drives << evaluationOf(step);
        return evaluate(evaluation, step.hours, step.hasChannel);
    }

    QStringList evaluate(const Evaluation &evaluation, double hours, bool hasChannel = true)
    {
        AlertRules rules;
        rules.growthIds = {5, 197};
        const QDateTime now = kStart.addSecs(qint64(hours * 3600));
        AlertDecision decision =
            decideAlerts(state, evaluation, rules, {hasChannel, std::chrono::hours(24)}, now);
        // The service is restarted after every evaluation.
        latest = decision.next;
        state = parseAlertState(alertStateDocument(latest));
        QStringList result;
        for (const AlertMessage &message : qAsConst(decision.messages)) {
            QStringList words{QString::number(hours), eventWord(message.event)};
            if (message.event != AlertMessage::Event::Recovery)
                words << severityWord(message.level);
            for (const QString &line : messageText(message).split(u'\n').mid(1))
                words << line.trimmed();
            result << words.join(u' ');
        }
        return result;
    }
};

Q_DECLARE_METATYPE(Timeline)
