// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QObject>

namespace client {

struct Endpoint;

/// The part of a TCP or local socket that Connection uses. Signals are emitted from the event loop, never
/// from within a function.
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
    /// `isUnreachable` is false if there was a connection that ended.
    void ended(bool isUnreachable, const QString &text);
};

/// Returns an unconnected socket of the kind of `endpoint`. `parent` owns it.
Link *makeLink(const Endpoint &endpoint, QObject *parent);

} // namespace client
