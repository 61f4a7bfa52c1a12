// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QTimer>

/// The deadline of one worker.
class SMART_timer : public QTimer
{
    Q_OBJECT

public:
    explicit SMART_timer(int index, QObject *parent = nullptr);

Q_SIGNALS:
    void needTerminated(int index);

public Q_SLOTS:
    void itsTime();

private:
    const int m_index;
};
