// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/simulated_event_log.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

SimulatedEventLog::SimulatedEventLog(std::shared_ptr<Machine> machine)
    : m_machine(std::move(machine))
{}

void SimulatedEventLog::report(const Event &event)
{
    const QString path = m_machine->state()->eventLog;
    if (path.isEmpty())
        return;
    const QJsonObject entry{
        {QStringLiteral("source"), event.source},
        {QStringLiteral("type"), int(event.type)},
        {QStringLiteral("category"), int(event.category)},
        {QStringLiteral("id"), qint64(event.id)},
        {QStringLiteral("text"), event.text},
    };
    QFile file(path);
    if (file.open(QIODevice::Append | QIODevice::Unbuffered)) // one write: readers never see half a line
        file.write(QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n');
}
