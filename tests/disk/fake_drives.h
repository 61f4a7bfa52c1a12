// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QWaitCondition>

#include <atomic>
#include <functional>
#include <utility>

/// A drive whose control requests are answered by a function.
class ScriptedDrive : public Drive
{
public:
    using Answer = std::function<ControlReply(quint32 code, ByteView input, MutableBytes output)>;

    explicit ScriptedDrive(Answer answer)
        : m_answer(std::move(answer))
    {}

    ControlReply control(quint32 code, ByteView input, MutableBytes output) override
    {
        return m_answer(code, input, output);
    }
    ReadReply readAt(quint64, MutableBytes) override { return {system_error::kNotSupported, 0}; }
    void cancel() override {}

private:
    const Answer m_answer;
};

/// Drives that answer every request with zeros except one byte, at once or only after stallNoMore().
class StallingDrives : public DriveSystem
{
public:
    enum class Stall { No, UntilCancelled, UntilReleased };

    std::atomic_int openDrives = 0; ///< at this moment
    std::atomic_int requests = 0;   ///< received by all drives so far

    /// Sets byte `offset` of every answer of the drive at `path` to `value`.
    void add(const QString &path, int offset, char value) { m_drives[path] = {offset, value, Stall::No}; }
    void stall(const QString &path, Stall stall)
    {
        const QMutexLocker lock(&m_mutex);
        m_drives[path].stall = stall;
        m_changed.wakeAll();
    }
    void stallNoMore()
    {
        for (const QString &path : m_drives.keys())
            stall(path, Stall::No);
    }

    OpenReply open(const QString &path) override
    {
        const QMutexLocker lock(&m_mutex);
        if (!m_drives.contains(path))
            return {nullptr, system_error::kFileNotFound};
        return {std::make_unique<StallingDrive>(*this, path), system_error::kNone};
    }

private:
    struct Script
    {
        int offset = 0;
        char value = 0;
        Stall stall = Stall::No;
    };

    class StallingDrive : public Drive
    {
    public:
        StallingDrive(StallingDrives &machine, const QString &path)
            : m_machine(machine)
            , m_path(path)
        {
            ++machine.openDrives;
        }
        ~StallingDrive() override { --m_machine.openDrives; }

        ControlReply control(quint32, ByteView, MutableBytes output) override
        {
            const QMutexLocker lock(&m_machine.m_mutex);
            ++m_machine.requests;
            while (m_machine.m_drives[m_path].stall == Stall::UntilReleased ||
                   (m_machine.m_drives[m_path].stall == Stall::UntilCancelled && !m_isCancelled))
                m_machine.m_changed.wait(&m_machine.m_mutex);
            if (m_isCancelled)
                return {system_error::kOperationAborted, 0};
            const Script script = m_machine.m_drives.value(m_path);
            output.setU8(script.offset, quint8(script.value));
            return {system_error::kNone, quint32(output.size())};
        }
        ReadReply readAt(quint64, MutableBytes) override { return {system_error::kNotSupported, 0}; }
        void cancel() override
        {
            const QMutexLocker lock(&m_machine.m_mutex);
            m_isCancelled = true;
            m_machine.m_changed.wakeAll();
        }

    private:
        StallingDrives &m_machine;
        const QString m_path;
        bool m_isCancelled = false;
    };

    QMutex m_mutex;
    QWaitCondition m_changed;
    QHash<QString, Script> m_drives;
};
