// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/control_socket.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>

namespace control_socket {

namespace {

constexpr time_t kAnswerTimeout = 30; // seconds
constexpr time_t kPeerTimeout = 1;    // seconds
constexpr int kPendingConnections = 16;
constexpr int kMaxPacket = 32;

std::optional<sockaddr_un> addressOf(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.size() >= int(sizeof(address.sun_path)))
        return std::nullopt;
    std::memcpy(address.sun_path, name.constData(), std::size_t(name.size()));
    return address;
}

FileDescriptor packetSocket(int flags = 0)
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | flags, 0));
}

int errnoUnless(bool ok)
{
    return ok ? 0 : errno;
}

int connectTo(const FileDescriptor &socket, const sockaddr_un &address)
{
    return errnoUnless(
        ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0);
}

void limitWaits(const FileDescriptor &socket, time_t seconds)
{
    const timeval limit{seconds, 0};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
}

int send(const FileDescriptor &socket, const QByteArray &packet)
{
    return errnoUnless(::send(socket.get(), packet.constData(), std::size_t(packet.size()), MSG_NOSIGNAL) ==
                       packet.size());
}

/// Returns the numbers of the next packet; nullopt if it is late or not a list of numbers.
QList<quint32> receive(const FileDescriptor &socket)
{
    char packet[kMaxPacket];
    const ssize_t size = ::recv(socket.get(), packet, sizeof(packet), 0);
    QList<quint32> numbers;
    if (size <= 0)
        return numbers;
    for (const QByteArray &word : QByteArray(packet, int(size)).split(' ')) {
        bool isNumber = false;
        numbers.append(word.toUInt(&isNumber));
        if (!isNumber)
            return {};
    }
    return numbers;
}

void serveConnection(const FileDescriptor &peer, const std::function<Answer(quint32 code)> &answer)
{
    limitWaits(peer, kPeerTimeout);
    const QList<quint32> request = receive(peer);
    if (request.size() != 1)
        return;
    const Answer reply = answer(request.first());
    send(peer, QByteArray::number(reply.error) + ' ' + QByteArray::number(quint32(reply.state)));
}

} // namespace

Exchange request(const QString &path, quint32 code)
{
    const std::optional<sockaddr_un> address = addressOf(path);
    if (!address)
        return {ENAMETOOLONG, {}};
    const FileDescriptor socket = packetSocket();
    if (!socket.isOpen())
        return {errno, {}};
    limitWaits(socket, kAnswerTimeout);
    if (const int error = connectTo(socket, *address))
        return {error, {}};
    if (const int error = send(socket, QByteArray::number(code)))
        return {error, {}};
    const QList<quint32> answer = receive(socket);
    if (answer.size() != 2)
        return {ETIMEDOUT, {}};
    return {0, {answer.at(0), ServiceState(answer.at(1))}};
}

Server::~Server()
{
    if (m_listener.isOpen())
        ::unlink(QFile::encodeName(m_path).constData());
}

int Server::listen(const QString &path)
{
    const std::optional<sockaddr_un> address = addressOf(path);
    if (!address)
        return ENAMETOOLONG;
    // Not blocking: a peer that disconnects before it is accepted must not delay the others.
    FileDescriptor socket = packetSocket(SOCK_NONBLOCK);
    if (!socket.isOpen())
        return errno;
    if (connectTo(packetSocket(), *address) == 0)
        return EADDRINUSE;
    ::unlink(address->sun_path);
    // The socket file takes its mode from the unbound socket, so other users can never connect.
    if (::fchmod(socket.get(), S_IRUSR | S_IWUSR) != 0 ||
        ::bind(socket.get(), reinterpret_cast<const sockaddr *>(&*address), sizeof(*address)) != 0)
        return errno;
    m_path = path;
    m_listener = std::move(socket);
    return errnoUnless(::listen(m_listener.get(), kPendingConnections) == 0);
}

void Server::serve(int stop, const std::function<Answer(quint32 code)> &answer)
{
    pollfd waiting[] = {{stop, POLLIN, 0}, {m_listener.get(), POLLIN, 0}};
    for (;;) {
        if (::poll(waiting, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        if (waiting[0].revents)
            return;
        const FileDescriptor peer(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (peer.isOpen())
            serveConnection(peer, answer);
    }
}

} // namespace control_socket
