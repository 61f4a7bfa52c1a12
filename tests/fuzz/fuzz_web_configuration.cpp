// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/configuration.h"

#include "fuzz/fuzz_input.h"

/// Input: a configuration file, also used as the words of options. What is accepted is safe to serve.
void fuzz(const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes);
    if (const auto service = web::parseServiceOption(text))
        require(!service->name.isEmpty() && !service->endpoint.host.isEmpty());
    if (const auto listen = web::parseListenAddress(text))
        require(!listen->address.isNull());

    const Result<web::Configuration> configuration = web::parseConfiguration(bytes);
    if (!configuration)
        return;
    require(configuration->basePath.startsWith(u'/') && configuration->basePath.endsWith(u'/'));
    require(configuration->pollSeconds >= 5 && configuration->pollSeconds <= 3600);
    require(configuration->retentionDays >= 1 && configuration->retentionDays <= 36500);
    for (const web::ServiceAddress &service : configuration->services)
        require(!service.name.isEmpty() && !service.endpoint.host.isEmpty() && service.endpoint.port > 0);
    if (!web::checkConfiguration(*configuration))
        return;
    require(configuration->listen.address.isLoopback() || configuration->isOpen ||
            configuration->needsLogin());
}
