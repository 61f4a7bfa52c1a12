// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QString>

/// The state of an operation that is repeated: a delivery channel, the writing of a file. Returns
/// a text to log only when that changes, so that a fault is logged when it starts, when its reason changes
/// and when it ends.
class FaultState
{
public:
    /// `name` is the subject of the texts: "Alert mail".
    explicit FaultState(QString name);

    /// Notes a failure. `reason` is one line; returns an empty text if it is the reason known already.
    [[nodiscard]] QString failed(const QString &reason, const QDateTime &now);

    /// Notes a success. Returns an empty text unless the attempt before failed.
    [[nodiscard]] QString succeeded();

    [[nodiscard]] bool isFailing() const { return !m_reason.isEmpty(); }

private:
    const QString m_name;
    QString m_reason;  ///< of the latest failure; empty while it works
    QDateTime m_since; ///< start of the fault
};
