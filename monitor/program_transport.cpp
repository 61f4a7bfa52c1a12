// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/program_transport.h"

#include "monitor/alert_text.h"
#include "platform/process_group.h"

#include <QDir>
#include <QJsonDocument>

#include <utility>

namespace {

QProcessEnvironment environmentOf(const OutboxEntry &entry)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HALVEX_EVENT"), eventWord(entry.event));
    environment.insert(QStringLiteral("HALVEX_LEVEL"), severityWord(entry.level));
    return environment;
}

Result<void> resultOf(int exitCode, QProcess::ExitStatus status)
{
    if (status == QProcess::CrashExit)
        return Error{QStringLiteral("the program was ended by a signal")};
    if (exitCode != 0)
        return Error{QStringLiteral("the program ended with status %1").arg(exitCode)};
    return {};
}

} // namespace

ProgramTransport::ProgramTransport(QString program, std::chrono::milliseconds timeout)
    : m_program(std::move(program))
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(timeout);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        killProcessGroup(*m_process);
        finish(Error{QStringLiteral("the program did not end within %1 s").arg(m_timer.interval() / 1000)});
    });
}

ProgramTransport::~ProgramTransport()
{
    if (m_process && m_process->state() != QProcess::NotRunning) {
        m_process->disconnect(this);
        killProcessGroup(*m_process);
        m_process->waitForFinished();
    }
    for (QProcess *killed : findChildren<QProcess *>())
        killed->waitForFinished();
}

void ProgramTransport::send(const OutboxEntry &entry, Done done)
{
    m_done = std::move(done);
    m_process = makeProcessGroup();
    m_process->setProcessEnvironment(environmentOf(entry));
    m_process->setWorkingDirectory(QDir::rootPath());
    m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setStandardErrorFile(QProcess::nullDevice());
    connect(m_process.get(), qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int exitCode, QProcess::ExitStatus status) { finish(resultOf(exitCode, status)); });
    connect(
        m_process.get(), &QProcess::errorOccurred, this,
        [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                finish(Error{QStringLiteral("the program cannot be started")});
        },
        Qt::QueuedConnection);
    m_timer.start();
    m_process->start(m_program, QStringList());
    m_process->write(QJsonDocument(entry.document).toJson(QJsonDocument::Compact) + '\n');
    m_process->closeWriteChannel();
}

void ProgramTransport::finish(const Result<void> &result)
{
    m_timer.stop();
    if (QProcess *const process = m_process.release()) {
        process->disconnect(this);
        // It is destroyed when the system has reported its end, or with the transport.
        process->setParent(this);
        if (process->state() == QProcess::NotRunning)
            process->deleteLater();
        else
            connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), process,
                    &QObject::deleteLater);
    }
    if (const Done done = std::exchange(m_done, nullptr))
        done(result);
}
