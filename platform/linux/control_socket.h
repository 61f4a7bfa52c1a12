// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/linux/file_descriptor.h"
#include "platform/service_manager.h"

#include <QString>

#include <functional>
#include <optional>

/// The socket on which a running service accepts control requests: one packet with a control code in decimal,
/// answered by one packet "<error> <state>" with the system error code and the ServiceState.
namespace control_socket {

/// Requests the state alone (SERVICE_CONTROL_INTERROGATE).
inline constexpr quint32 kInterrogate = 4;

struct Answer
{
    quint32 error = system_error::kNone;
    ServiceState state = ServiceState::Stopped;
};

struct Exchange
{
    int errnoValue = 0; ///< 0 when a service answered
    Answer answer;
};

/// Sends one request to the service that listens at `path`. Waits for the answer for 30 s, like the Windows
/// service manager.
[[nodiscard]] Exchange request(const QString &path, quint32 code);

/// The service's end of the socket.
class Server
{
public:
    Server() = default;
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    ~Server(); ///< removes the socket file

    /// Binds the socket for the owner alone and replaces one that a killed service left. Returns an errno
    /// value; EADDRINUSE if another service answers there.
    [[nodiscard]] int listen(const QString &path);

    /// Answers requests, one at a time, until `stop` becomes readable. Disconnects a peer that sends nothing
    /// for a second.
    void serve(int stop, const std::function<Answer(quint32 code)> &answer);

private:
    QString m_path;
    FileDescriptor m_listener;
};

} // namespace control_socket
