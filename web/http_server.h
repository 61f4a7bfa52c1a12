// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/answer.h"
#include "web/configuration.h"
#include "wire/result.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace web {

/// Serves HTTP on threads of its own. The limits hold for everybody: 8 KiB of headers within 10 s,
/// 64 KiB of body within 30 s, 60 s without a request, 200 connections, 32 of one address.
class HttpServer
{
public:
    /// Returns what is sent for a request. Called on the server's threads, several at a time.
    using Handler = std::function<Answer(const HttpRequest &)>;

    HttpServer(const Configuration &configuration, Handler handler);
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;
    ~HttpServer();

    /// Listens on the configured address. Fails with the system's reason.
    [[nodiscard]] Result<void> start();

    /// Ends every connection; requests that wait are answered 503. Afterwards no handler runs.
    void stop();

    /// Returns the port that it listens on, after start().
    [[nodiscard]] quint16 port() const;

    /// Sends `name` to every event stream. May be called on any thread.
    void publish(const QString &name);

private:
    class Daemon;
    std::unique_ptr<Daemon> m_daemon;
};

} // namespace web
