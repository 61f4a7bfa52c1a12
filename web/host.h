// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/metrics/families.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

/// The functions of the system that Qt does not offer. One file for each system implements them.
namespace web::host {

/// Sends `lastBytes` without waiting and ends the connection in both directions; the descriptor stays open.
void endConnection(quintptr socket, const QByteArray &lastBytes);

/// Returns why the last call on a socket failed; empty if none did.
[[nodiscard]] QString lastSocketError();

/// Reports that the program is ready: prints the line `text`, and notifies a service manager if there is one.
void reportStarted(const QString &text);

/// Prints why the program ends, to the system's log where a service has no standard error.
void reportFailure(const QString &text);

/// Calls `requested` in the event loop when the system asks the program to end. A service manager that waits
/// for the end of the program learns of it when the result is destroyed.
[[nodiscard]] std::unique_ptr<QObject> watchStopRequests(std::function<void()> requested);

/// Hides what is typed at the terminal until the result is destroyed. Returns null if standard input is not a
/// terminal.
[[nodiscard]] std::shared_ptr<void> hideTyping();

/// Makes the folder `path`, which only this account and administrators may read. False on failure; true if
/// the folder is there already, whose access stays as it is.
[[nodiscard]] bool makePrivateFolder(const QString &path);

/// Returns the configuration file that is read where no option names one, and the state folder by default.
[[nodiscard]] QString defaultConfigurationFile(const QString &stateFolder);
[[nodiscard]] QString defaultStateFolder();

/// Returns the resources of this process now.
[[nodiscard]] metrics::ProcessFigures processFigures();

/// Returns whether the HTTP server can serve TLS by itself here.
[[nodiscard]] bool supportsTls();

} // namespace web::host
