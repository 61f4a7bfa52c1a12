// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/alert_channel.h"

#include <QProcess>

/// Starts a program for each message, without a shell: the document on its standard input, HALVEX_EVENT and
/// HALVEX_LEVEL in its environment, its output discarded, in a process group of its own that is killed after
/// the timeout. Exit status 0 is success.
class ProgramTransport : public Transport
{
    Q_OBJECT

public:
    /// `program` is an absolute path.
    explicit ProgramTransport(QString program, std::chrono::milliseconds timeout = std::chrono::seconds(60));
    /// Kills the program that is running.
    ~ProgramTransport() override;

    void send(const OutboxEntry &entry, Done done) override;

private:
    void finish(const Result<void> &result);

    const QString m_program;
    QTimer m_timer;
    std::unique_ptr<QProcess> m_process;
    Done m_done;
};
