// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/service_starter.h"

#include "service/controller_handler.h"
#include "service/service_base.h"

QtServiceStarter::QtServiceStarter(QtServiceBase &service)
    : m_service(service)
{}

void QtServiceStarter::slotStart()
{
    m_service.carryOut(QtServiceControllerHandler::kStartCode);
}
