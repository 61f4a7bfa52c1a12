// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "wire/result.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>

/// A log file of bounded size. A full file is renamed to PATH.1, PATH.1 to PATH.2, and so on; the oldest is
/// deleted. One thread at a time.
class RotatingLog
{
public:
    static constexpr qint64 kMaxFileSize = 1024 * 1024; ///< bytes
    static constexpr int kFiles = 5;                    ///< the current one included

    explicit RotatingLog(QString path);

    /// Appends a line; the line feed is added. Fails if the file cannot be opened or written; the next call
    /// tries again.
    Result<void> append(const QByteArray &line);

private:
    Result<void> open();
    Result<void> rotate();

    const QString m_path;
    std::unique_ptr<QFile> m_file; // null until it has been opened
};
