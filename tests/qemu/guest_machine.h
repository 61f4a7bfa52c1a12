// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// A virtual machine that carries out command lines. The destructor kills it.
class GuestMachine
{
public:
    GuestMachine() { m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel); }
    ~GuestMachine()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    GuestMachine(const GuestMachine &) = delete;
    GuestMachine &operator=(const GuestMachine &) = delete;

    /// The result of a command line in the machine.
    struct Answer
    {
        int exitCode = -1; ///< -1: no answer in time
        QByteArray output;
    };

    /// The arguments are those of the script `boot`, which runs in a temporary folder.
    Answer boot(const QStringList &arguments)
    {
        m_process.setWorkingDirectory(m_folder.path());
        m_process.start(QStringLiteral(HALVEX_BOOT), arguments);
        return readAnswer();
    }

    /// Runs a line of the machine's shell, without a line feed. Variables, the working directory and programs
    /// in the background last as long as the machine.
    Answer run(const QByteArray &commandLine)
    {
        m_process.write(commandLine + '\n');
        return readAnswer();
    }

    [[nodiscard]] QString path(const QString &fileName) const { return m_folder.filePath(fileName); }

private:
    Answer readAnswer()
    {
        constexpr int kPatienceMs = 300000; // longer than halvexctl waits for one answer
        Answer answer;
        while (m_process.canReadLine() || m_process.waitForReadyRead(kPatienceMs)) {
            if (!m_process.canReadLine())
                continue;
            const QByteArray line = m_process.readLine().replace('\r', "");
            if (line.startsWith("@@ ")) {
                answer.exitCode = line.mid(3).trimmed().toInt();
                break;
            }
            answer.output += line;
        }
        return answer;
    }

    QTemporaryDir m_folder;
    QProcess m_process;
};
