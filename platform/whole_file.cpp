// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/whole_file.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QThread>

namespace {

/// Windows gives the new file no place while somebody reads the old one, as virus scanners and backups do for
/// a moment.
constexpr int kTries = 10;
constexpr unsigned long kPause = 50; // milliseconds

} // namespace

std::optional<QByteArray> readFile(const QString &path, qint64 mostBytes)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly) || file.size() > mostBytes)
        return std::nullopt;
    // No more than there is: QFile makes room for all that it is asked for.
    QByteArray bytes = file.read(file.size());
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes;
}

QString replaceFile(const QString &path, const QByteArray &bytes, QFileDevice::Permissions permissions)
{
    for (int tries = 1;; ++tries) {
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return file.errorString();
        if (permissions)
            file.setPermissions(permissions);
        // commit() flushes as well, but it would put the new file in place after a flush that failed.
        if (file.write(bytes) != bytes.size() || !file.flush()) {
            QString reason = file.errorString();
            file.cancelWriting();
            return reason;
        }
        if (file.commit())
            return {};
        if (tries == kTries)
            return file.errorString();
        QThread::msleep(kPause);
    }
}
