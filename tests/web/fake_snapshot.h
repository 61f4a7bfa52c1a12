// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/snapshot.h"

/// Returns a poll of a service with two drives; tests change single values of it.
inline std::shared_ptr<web::ServiceData> fakeData()
{
    auto data = std::make_shared<web::ServiceData>();
    data->greeting.version = "Halvex Service v 5.0.5";
    data->greeting.hostName = "server-1";
    data->greeting.level = client::Level::Warning;
    data->greeting.time = QDateTime(QDate(2026, 11, 15), QTime(12, 0), Qt::UTC);
    data->greeting.settings.smtpPass = "*";
    data->greeting.settings.wTemp = 55;
    data->greeting.settings.cTemp = 65;
    for (qint32 i = 0; i < 2; ++i) {
        client::Drive drive;
        drive.number = i;
        drive.model = QString("MODEL %1").arg(i);
        drive.serial = QString("S%1").arg(i);
        drive.capacity = 1000204886016;
        drive.bytesPerSector = 512;
        drive.smartState = client::SmartState::Read;
        drive.powerOn = {600, PowerOnCounter::Unit::Minutes, true};
        drive.temperature = 30 + i;
        drive.statusLevel = client::Level::Fine;
        drive.health = 98;
        drive.monitored = 1;
        data->drives.append(drive);
        data->attributes.append(
            {{5, true, true, 100, 99, 36, 7, 0x33}, {12, false, true, 100, 100, 0, 44, 0x32}});
        data->scans.append(client::ScanStatus());
        data->scans.last().drive = i;
        data->temperatures.append(web::HourlyMeans());
    }
    data->volumes.append({1, "C:\\", "Sys", "NTFS", {}, 1000, 250});
    return data;
}

inline std::shared_ptr<web::ServiceSnapshot> fakeService(const QString &name,
                                                         std::shared_ptr<const web::ServiceData> data)
{
    auto service = std::make_shared<web::ServiceSnapshot>();
    service->name = name;
    service->host = "192.0.2.1";
    service->port = 5000;
    service->state = data ? web::ServiceState::Ready : web::ServiceState::Unreachable;
    service->error = data ? QString() : QStringLiteral("connection refused");
    service->lastAnswer = data ? QDateTime(QDate(2026, 11, 15), QTime(12, 0), Qt::UTC) : QDateTime();
    service->answeredPolls = data ? 1 : 0;
    service->data = std::move(data);
    return service;
}
