// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QObject>

class QtServiceBase;

/// Starts the service once the event loop runs.
class QtServiceStarter : public QObject
{
    Q_OBJECT
public:
    explicit QtServiceStarter(QtServiceBase &service);

public Q_SLOTS:
    void slotStart();

private:
    QtServiceBase &m_service;
};
