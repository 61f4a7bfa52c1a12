// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_timer.h"

SMART_timer::SMART_timer(int index, QObject *parent)
    : QTimer(parent)
    , m_index(index)
{
    setTimerType(Qt::PreciseTimer); // others may end some percent too early
    connect(this, &QTimer::timeout, this, &SMART_timer::itsTime);
}

void SMART_timer::itsTime()
{
    Q_EMIT needTerminated(m_index);
}
