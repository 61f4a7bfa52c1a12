// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QLatin1String>
#include <QString>

/// The line scrambling written one character at a time, as its rules are stated: the reference for the tables
/// of the real one, in results and speed.
namespace plain {

inline const QLatin1String kKey("Md8uTw5ymfE+xtk/@u(RRrU7Uw/f2bU>MPTWPlAme0m45S'pEooNGSacHrNLttOt"
                                "//vQ.Vp!6VL/oXph04xsBy>H0d2pJyYcn>j,BFcGr34U3muZ;cQEpd+p@UC'S@aE");

inline int keyByte(int position)
{
    return position < kKey.size() ? kKey.at(position).toLatin1() : 0;
}

inline int nextPosition(int position, int offset)
{
    position += offset;
    return position > 127 ? position - 127 : position;
}

inline QString scramble(const QString &text, int offset)
{
    QString line = QString("%1").arg(offset, 2, 16, QLatin1Char('0'));
    int position = offset;
    const QByteArray base64 = text.toUtf8().toBase64();
    for (const char c : base64) {
        line += QString("%1").arg(c ^ keyByte(position), 2, 16, QLatin1Char('0'));
        position = nextPosition(position, offset);
    }
    return QString("%1").arg(line.length() + 8, 8, 16, QLatin1Char('0')) + line;
}

inline QString unscramble(const QString &line)
{
    if (line.length() < 8 || line.leftRef(8).toInt(nullptr, 16) != line.length())
        return "~ERR";
    const int offset = line.midRef(8, 2).toInt(nullptr, 16);
    QByteArray base64;
    int position = offset;
    for (int i = 10; i + 1 < line.length(); i += 2) {
        base64 += char(line.midRef(i, 2).toInt(nullptr, 16) ^ keyByte(position));
        position = nextPosition(position, offset);
    }
    const QByteArray utf8 = 'x' + QByteArray::fromBase64(base64); // after an x nothing is a byte order mark
    return QString::fromUtf8(utf8.constData(), utf8.size()).mid(1);
}

} // namespace plain
