// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QObject>

namespace client {

struct Endpoint;

/// What a Connection needs of a socket, TCP or local. Its signals come from the event loop, never from
/// within one of its functions.
class Link : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    virtual void connectTo(const Endpoint &endpoint) = 0;
    virtual QByteArray readAll() = 0;
    virtual void write(const QByteArray &bytes) = 0;
    virtual void flush(int milliseconds) = 0;
    [[nodiscard]] virtual bool isConnected() const = 0;

Q_SIGNALS:
    void readable();
    /// `isUnreachable` tells a connection that never was from one that ended.
    void ended(bool isUnreachable, const QString &text);
};

/// A socket of the kind that `endpoint` asks for, not connected yet. `parent` owns it.
Link *makeLink(const Endpoint &endpoint, QObject *parent);

} // namespace client
