// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/mount_table.h"

#include <QSet>

namespace {

/// mountinfo writes blanks, tabs, line feeds and backslashes as three octal digits.
QString unescaped(const QByteArray &field)
{
    QByteArray plain;
    for (int i = 0; i < field.size(); ++i) {
        bool isOctal = false;
        const int code = field.at(i) == '\\' ? field.mid(i + 1, 3).toInt(&isOctal, 8) : 0;
        if (isOctal && i + 3 < field.size()) {
            plain += char(code);
            i += 3;
        } else {
            plain += field.at(i);
        }
    }
    return QString::fromLocal8Bit(plain);
}

} // namespace

QVector<Mount> parseMountTable(const QByteArray &mountInfo)
{
    constexpr int kMountPoint = 4;
    constexpr int kFirstOptional = 6;
    QVector<Mount> mounts;
    QSet<QString> seen;
    for (const QByteArray &line : mountInfo.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const int separator = fields.indexOf("-", kFirstOptional);
        if (separator < 0 || separator + 2 >= fields.size())
            continue;
        const Mount mount{unescaped(fields.at(kMountPoint)), unescaped(fields.at(separator + 2)),
                          unescaped(fields.at(separator + 1))};
        if (!mount.source.startsWith(QLatin1String("/dev/")) || seen.contains(mount.source))
            continue;
        seen.insert(mount.source);
        mounts.append(mount);
    }
    return mounts;
}
