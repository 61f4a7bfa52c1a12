// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// A virtual machine that carries out command lines. It is killed when this object goes.
class GuestMachine
{
public:
    GuestMachine() = default;
    ~GuestMachine();
    GuestMachine(const GuestMachine &) = delete;
    GuestMachine &operator=(const GuestMachine &) = delete;

    /// How a command line in the machine ended.
    struct Answer
    {
        int exitCode = -1; ///< -1 when the machine does not answer in time
        QByteArray output;
    };

    /// Packs `programs` for the machine, boots it with `devices`, in QEMU's own words, and lets its
    /// `guestPort` be reached from this machine. False when it does not come up.
    [[nodiscard]] bool boot(const QStringList &programs, const QStringList &devices, quint16 guestPort);

    /// A line for the machine's shell, without a line feed. Variables, the working directory and programs in
    /// the background last until the machine goes.
    Answer run(const QByteArray &commandLine);
    /// run(), again and again until the exit code is 0; false when it never is.
    [[nodiscard]] bool waitFor(const QByteArray &commandLine);

    /// The port on this machine that leads to the machine's.
    [[nodiscard]] quint16 port() const { return m_port; }
    /// A path in a folder that goes with the machine.
    [[nodiscard]] QString path(const QString &fileName) const { return m_folder.filePath(fileName); }
    /// Pulls a device that was given an id at the start, and waits until it is gone.
    [[nodiscard]] bool pull(const QString &device);
    /// What the machine's kernel has said; for failure messages.
    [[nodiscard]] QByteArray kernelLog();

private:
    void startQemu(const QString &kernel, const QStringList &devices, quint16 guestPort);
    [[nodiscard]] bool connectTo(QLocalSocket &socket, const QString &name);
    [[nodiscard]] bool findPort();
    Answer readAnswer();
    QJsonObject readMessage();
    QJsonObject order(const QString &command, const QJsonObject &arguments = {});

    QTemporaryDir m_folder;
    QProcess m_process;
    QLocalSocket m_shell;
    QLocalSocket m_monitor; // speaks QMP, a JSON object a line
    quint16 m_port = 0;
};
