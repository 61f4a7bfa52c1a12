// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/scrambling.h"

#include <cstring>

namespace {

constexpr char kKey[] = "Md8uTw5ymfE+xtk/@u(RRrU7Uw/f2bU>MPTWPlAme0m45S'pEooNGSacHrNLttOt"
                        "//vQ.Vp!6VL/oXph04xsBy>H0d2pJyYcn>j,BFcGr34U3muZ;cQEpd+p@UC'S@aE";
constexpr int kKeyLength = 128;
static_assert(sizeof(kKey) == kKeyLength + 1, "service and consoles share a key of 128 characters");

constexpr int kLengthDigits = 8;
constexpr int kOffsetDigits = 2;
constexpr char kHexDigits[] = "0123456789abcdef";

/// Where the key is read next. Past 127 the walk goes back by 127, not 128, so that position 0 serves
/// offset 0 alone.
int nextPosition(int position, int offset)
{
    const int sum = position + offset;
    return sum > kKeyLength - 1 ? sum - (kKeyLength - 1) : sum;
}

int keyAt(int position)
{
    return position < kKeyLength ? kKey[position] : 0;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

/// The number that `count` digits at `offset` write; 0 when they are not all there or not all hexadecimal.
quint32 hexNumber(const QByteArray &line, int offset, int count)
{
    if (offset + count > line.size())
        return 0;
    quint32 number = 0;
    for (int i = 0; i < count; ++i) {
        const int digit = hexDigit(line.at(offset + i));
        if (digit < 0)
            return 0;
        number = number << 4 | quint32(digit);
    }
    return number;
}

void putHexNumber(char *digits, int count, quint32 number)
{
    for (int i = count - 1; i >= 0; --i, number >>= 4)
        digits[i] = kHexDigits[number & 0xF];
}

} // namespace

QByteArray scramble(const QString &text, int offset)
{
    const QByteArray base64 = text.toUtf8().toBase64();
    const int bodyStart = kLengthDigits + kOffsetDigits;
    QByteArray line(bodyStart + 2 * base64.size(), Qt::Uninitialized);
    putHexNumber(line.data(), kLengthDigits, quint32(line.size()));
    putHexNumber(line.data() + kLengthDigits, kOffsetDigits, quint32(offset));
    char *out = line.data() + bodyStart;
    int position = offset;
    for (const char c : base64) {
        putHexNumber(out, 2, quint32(c ^ keyAt(position)));
        out += 2;
        position = nextPosition(position, offset);
    }
    return line;
}

QString unscramble(const QByteArray &line)
{
    if (line.size() < kLengthDigits || hexNumber(line, 0, kLengthDigits) != quint32(line.size()))
        return kScrambleError;
    const int offset = int(hexNumber(line, kLengthDigits, kOffsetDigits));
    const int bodyStart = kLengthDigits + kOffsetDigits;
    QByteArray base64;
    base64.reserve(line.size() / 2);
    int position = offset;
    for (int i = bodyStart; i + 2 <= line.size(); i += 2) {
        base64.append(char(int(hexNumber(line, i, 2)) ^ keyAt(position)));
        position = nextPosition(position, offset);
    }
    return QString::fromUtf8(QByteArray::fromBase64(base64));
}

QByteArray sendReply(const QString &text, const OffsetSource &offsets)
{
    return scramble(text, offsets()) + "\r\n";
}
