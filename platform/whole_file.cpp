// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/whole_file.h"

#include <QSaveFile>

QString replaceFile(const QString &path, const QByteArray &bytes, QFileDevice::Permissions permissions)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    if (permissions)
        file.setPermissions(permissions);
    // commit() flushes as well, but it would put the new file in place after a flush that failed.
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return reason;
    }
    return file.commit() ? QString() : file.errorString();
}
