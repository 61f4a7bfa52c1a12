// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/linux/file_descriptor.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

/// Receives what a program sends to the system's services. The destructor removes the path.
class DatagramSocket
{
public:
    explicit DatagramSocket(const QString &path)
        : m_path(path)
        , m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, qPrintable(path), sizeof(address.sun_path) - 1);
        if (::bind(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0)
            qFatal("cannot listen at %s", qPrintable(path));
    }
    ~DatagramSocket() { QFile::remove(m_path); }
    DatagramSocket(const DatagramSocket &) = delete;
    DatagramSocket &operator=(const DatagramSocket &) = delete;

    /// Returns the oldest datagram; empty if there is none. A datagram is available as soon as its sender's
    /// call returns.
    [[nodiscard]] QByteArray receive() const
    {
        QByteArray datagram(4096, '\0');
        const ssize_t size = ::recv(m_socket.get(), datagram.data(), std::size_t(datagram.size()), 0);
        return datagram.left(int(std::max(size, ssize_t(0))));
    }

private:
    const QString m_path;
    const FileDescriptor m_socket;
};
