// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QHash>
#include <QString>

#include <chrono>

/// Admits a text once an hour, for a log in which a lasting fault would bury everything else.
class RepeatFilter
{
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Returns whether `text` was not admitted during the hour before `now`. Remembers the latest 1000 texts.
    [[nodiscard]] bool admits(const QString &text, Time now);

private:
    QHash<QString, Time> m_admitted;
};
