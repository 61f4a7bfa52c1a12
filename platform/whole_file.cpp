// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/whole_file.h"

#include <QSaveFile>
#include <QThread>

namespace {

/// Windows gives the new file no place while somebody reads the old one, as virus scanners and backups do for
/// a moment.
constexpr int kTries = 10;
constexpr unsigned long kPause = 50; // milliseconds

} // namespace

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
