// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/requests.h"
#include "web/key_reader.h"
#include "web/routes.h"
#include "web/schedule_request.h"

#include <QJsonDocument>

namespace web {

namespace {

constexpr qint64 kLargestSector = qint64(1) << 53; ///< JSON carries numbers exactly up to here

HttpResponse badBody(const QString &reason)
{
    return errorResponse(400, reason);
}

/// Answers with the response of the service of the path to `work`.
Answer start(const Call &call, const ServiceWork &work)
{
    return Deferred{[&gateway = call.site.gateway, name = call.captured.at(0), work](const Reply &reply) {
        gateway.start(name, work, reply);
    }};
}

/// Returns the object in the body, an empty body as one without keys; nullopt for anything else.
std::optional<QJsonObject> bodyOf(const Call &call)
{
    if (call.request.body.trimmed().isEmpty())
        return QJsonObject();
    const QJsonDocument document = QJsonDocument::fromJson(call.request.body);
    return document.isObject() ? std::optional<QJsonObject>(document.object()) : std::nullopt;
}

/// Calls `make` with a reader of the body and starts the work that it returns, unless the reader has a fault.
template <typename Make>
Answer startFromBody(const Call &call, Make make)
{
    if (!serviceOf(call))
        return errorResponse(404, QStringLiteral("there is no such service"));
    const auto body = bodyOf(call);
    if (!body)
        return badBody(QStringLiteral("the body must be a JSON object"));
    KeyReader keys(*body, {});
    const ServiceWork work = make(keys);
    if (const auto fault = keys.fault())
        return badBody(*fault);
    return start(call, work);
}

/// Like startFromBody() for a request about the drive in the path, whose serial the body holds.
template <typename Make>
Answer startForDrive(const Call &call, Make make)
{
    const auto number = driveNumber(call);
    if (!number)
        return noSuchDrive();
    return startFromBody(call, [&](KeyReader &keys) {
        const QString key = QStringLiteral("serial");
        const work::Drive drive{*number, keys.text(key)};
        if (!keys.has(key))
            keys.refuse(key, QStringLiteral("is missing"));
        return make(keys, drive);
    });
}

Answer startScan(const Call &call)
{
    return startForDrive(call, [](KeyReader &keys, const work::Drive &drive) {
        work::StartScan work{drive, keys.numberOrNull(QStringLiteral("first"), kLargestSector),
                             keys.numberOrNull(QStringLiteral("last"), kLargestSector), kUsualScanBlockSize};
        work.block =
            keys.number(QStringLiteral("block"), kUsualScanBlockSize, kMinScanBlockSize, kMaxScanBlockSize);
        return work;
    });
}

Answer stopScan(const Call &call)
{
    const auto number = driveNumber(call);
    if (!serviceOf(call))
        return errorResponse(404, QStringLiteral("there is no such service"));
    if (!number)
        return noSuchDrive();
    if (!call.query.contains(QStringLiteral("serial")))
        return badBody(QStringLiteral("serial: is missing"));
    return start(call, work::StopScan{{*number, call.query.value(QStringLiteral("serial"))}});
}

Answer setSchedule(const Call &call)
{
    return startForDrive(call, [](KeyReader &keys, const work::Drive &drive) {
        work::SetSchedule work{drive, {}};
        // A document that was read may be sent back: null stands for what its kind does not need.
        const QString kind = keys.text(QStringLiteral("kind"));
        const QString date = keys.textOrNull(QStringLiteral("date"));
        const QString time = keys.textOrNull(QStringLiteral("time"));
        const auto entry =
            scheduleEntry(drive.number, kind, date, time, keys.textOrNull(QStringLiteral("weekday")));
        if (entry)
            work.entry = *entry;
        else
            keys.refuse(QStringLiteral("kind"), entry.failure().text);
        return work;
    });
}

Answer setSettings(const Call &call)
{
    if (!serviceOf(call))
        return errorResponse(404, QStringLiteral("there is no such service"));
    const auto body = bodyOf(call);
    if (!body || body->isEmpty())
        return badBody(QStringLiteral("the body must be a JSON object with settings"));
    if (body->contains(QStringLiteral("port")))
        return badBody(QStringLiteral("port: cannot be changed here"));
    return start(call, work::SetSettings{*body});
}

Answer testMail(const Call &call)
{
    if (!serviceOf(call))
        return errorResponse(404, QStringLiteral("there is no such service"));
    const auto body = bodyOf(call);
    if (!body)
        return badBody(QStringLiteral("the body must be a JSON object"));
    QJsonObject changes = *body;
    const QJsonValue text = changes.take(QStringLiteral("body"));
    const QString usual = QStringLiteral("Test mail of the Halvex Service.");
    if (!client::isPlainField(text.toString()))
        return badBody(QStringLiteral("body: holds characters that the protocol cannot carry"));
    return start(call, work::TestMail{changes, text.toString(usual)});
}

Answer refresh(const Call &call)
{
    return startFromBody(call, [](KeyReader &) { return work::Refresh(); });
}

Answer detect(const Call &call)
{
    return startFromBody(call, [](KeyReader &) { return work::Detect(); });
}

Answer acknowledge(const Call &call)
{
    return startFromBody(call, [](KeyReader &keys) {
        const QString serial = QStringLiteral("serial");
        const QString kind = QStringLiteral("kind");
        const auto id = keys.numberOrNull(QStringLiteral("id"), 255);
        work::Acknowledge work{keys.text(serial), keys.textOrNull(kind),
                               id ? QString::number(*id) : QString()};
        if (work.serial.isEmpty())
            keys.refuse(serial, QStringLiteral("is missing"));
        if (!client::isPlainField(work.serial))
            keys.refuse(serial, QStringLiteral("holds characters that the protocol cannot carry"));
        if (!client::isPlainField(work.kind))
            keys.refuse(kind, QStringLiteral("holds characters that the protocol cannot carry"));
        return work;
    });
}

} // namespace

QVector<Route> workRoutes()
{
    return {
        {"POST", "api/v1/services/*/drives/*/scan", Access::Operator, startScan},
        {"DELETE", "api/v1/services/*/drives/*/scan", Access::Operator, stopScan},
        {"PUT", "api/v1/services/*/drives/*/schedule", Access::Operator, setSchedule},
        {"PUT", "api/v1/services/*/settings", Access::Operator, setSettings},
        {"POST", "api/v1/services/*/refresh", Access::Operator, refresh},
        {"POST", "api/v1/services/*/detect", Access::Operator, detect},
        {"POST", "api/v1/services/*/mail-test", Access::Operator, testMail},
        {"POST", "api/v1/services/*/acknowledge", Access::Operator, acknowledge},
    };
}

} // namespace web
