// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/scrambling.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr char kKey[] = "Md8uTw5ymfE+xtk/@u(RRrU7Uw/f2bU>MPTWPlAme0m45S'pEooNGSacHrNLttOt"
                        "//vQ.Vp!6VL/oXph04xsBy>H0d2pJyYcn>j,BFcGr34U3muZ;cQEpd+p@UC'S@aE";
constexpr int kKeyLength = 128;
static_assert(sizeof(kKey) == kKeyLength + 1, "service and consoles share a key of 128 characters");

constexpr int kLengthDigits = 8;
constexpr int kOffsetDigits = 2;
constexpr int kHeaderLength = kLengthDigits + kOffsetDigits;

/// Where the key is read next. Past 127 the walk goes back by 127, not 128, so that position 0 serves
/// offset 0 alone.
constexpr int nextPosition(int position, int offset)
{
    const int sum = position + offset;
    return sum > kKeyLength - 1 ? sum - (kKeyLength - 1) : sum;
}

/// The key bytes that a line's body is combined with, in the order of the walk. The walk is back where it
/// was after 127 steps at the latest, so a mask of a few such rounds serves a line of any length.
/// Received offsets from 128 on never come back into the key: there every byte is 0.
class KeyMask
{
public:
    static constexpr int kPeriod = kKeyLength - 1;
    static constexpr int kSize = 16 * kPeriod;

    /// Only the first `size` bytes are set, so that a short line does not pay for a long one.
    KeyMask(int offset, int size)
    {
        size = std::min(size, kSize);
        int position = offset;
        for (int i = 0; i < std::min(size, kPeriod); ++i) {
            m_bytes[std::size_t(i)] = position < kKeyLength ? kKey[position] : '\0';
            position = nextPosition(position, offset);
        }
        for (int i = kPeriod; i < size; ++i)
            m_bytes[std::size_t(i)] = m_bytes[std::size_t(i - kPeriod)];
    }

    [[nodiscard]] const char *data() const { return m_bytes.data(); }

private:
    std::array<char, kSize> m_bytes; // set as far as it is used
};

/// The two small hexadecimal digits of every byte.
constexpr std::array<char, 512> makeHexPairs()
{
    constexpr char digits[] = "0123456789abcdef";
    std::array<char, 512> pairs{};
    for (std::size_t value = 0; value < 256; ++value) {
        pairs[2 * value] = digits[value >> 4];
        pairs[2 * value + 1] = digits[value & 0xF];
    }
    return pairs;
}

constexpr quint8 kNoDigit = 0xFF;

/// The value of a hexadecimal digit, kNoDigit for other characters. Choices without a branch: the compiler
/// makes vector instructions of the loop over a body.
constexpr quint8 hexValue(char c)
{
    const auto digit = quint8(c - '0');
    const auto letter = quint8((c | 0x20) - 'a');
    const quint8 letterValue = letter < 6 ? quint8(letter + 10) : kNoDigit;
    return digit < 10 ? digit : letterValue;
}

constexpr quint8 kNotBase64 = 0xFF;

/// The six bits of every character of the Base64 alphabet, kNotBase64 for the others.
constexpr std::array<quint8, 256> makeBase64Values()
{
    std::array<quint8, 256> values{};
    for (std::size_t c = 0; c < 256; ++c)
        values[c] = kNotBase64;
    for (std::size_t i = 0; i < 26; ++i) {
        values['A' + i] = quint8(i);
        values['a' + i] = quint8(26 + i);
    }
    for (std::size_t i = 0; i < 10; ++i)
        values['0' + i] = quint8(52 + i);
    values['+'] = 62;
    values['/'] = 63;
    return values;
}

constexpr std::array<char, 512> kHexPairs = makeHexPairs();
constexpr std::array<quint8, 256> kBase64Values = makeBase64Values();

/// The byte that two digits write; 0 when one of them is no hexadecimal digit.
quint8 hexByte(const char *digits)
{
    const quint8 high = hexValue(digits[0]);
    const quint8 low = hexValue(digits[1]);
    return (high | low) == kNoDigit ? quint8(0) : quint8(high << 4 | low);
}

void putHexByte(char *out, unsigned value)
{
    std::memcpy(out, kHexPairs.data() + 2 * (value & 0xFF), 2);
}

/// The length that a line claims to have; 0 when its header is no hexadecimal number.
quint32 claimedLength(const QByteArray &line)
{
    quint32 length = 0;
    for (int i = 0; i < kLengthDigits; ++i) {
        const quint8 value = hexValue(line.at(i));
        if (value == kNoDigit)
            return 0;
        length = length << 4 | value;
    }
    return length;
}

void putHexNumber(char *out, int digitCount, quint32 number)
{
    for (int i = digitCount - 2; i >= 0; i -= 2, number >>= 8)
        putHexByte(out + i, number);
}

/// As many bytes as have a Base64 as long as the mask.
constexpr int kChunkBytes = KeyMask::kSize / 4 * 3;

int base64Length(int bytes)
{
    return (bytes + 2) / 3 * 4;
}

/// Combines every character of the Base64 of `bytes` with the key and writes it as two digits. Chunk by
/// chunk: a long history would else fill fresh memory twice more on its way.
void scrambleBody(const QByteArray &bytes, int offset, char *out)
{
    const KeyMask mask(offset, base64Length(bytes.size()));
    for (int start = 0; start < bytes.size(); start += kChunkBytes) {
        const int count = std::min(bytes.size() - start, kChunkBytes);
        const QByteArray base64 = QByteArray::fromRawData(bytes.constData() + start, count).toBase64();
        for (int i = 0; i < base64.size(); ++i, out += 2)
            putHexByte(out, unsigned(base64.constData()[i] ^ mask.data()[i]));
    }
}

/// The Base64 that `count` pairs of digits hide.
QByteArray unscrambleBody(const char *pairs, int count, int offset)
{
    QByteArray base64(count, Qt::Uninitialized);
    char *out = base64.data();
    const KeyMask mask(offset, count);
    for (int start = 0; start < count; start += KeyMask::kSize) {
        const int blockCount = std::min(count - start, KeyMask::kSize);
        for (int i = 0; i < blockCount; ++i, pairs += 2)
            *out++ = char(hexByte(pairs) ^ mask.data()[i]);
    }
    return base64;
}

/// What `base64` encodes; characters outside the alphabet are skipped. Groups of four clean characters are
/// decoded here, which is several times faster than QByteArray does it; from the first other group on it
/// is QByteArray's business.
QByteArray decodeBase64(const QByteArray &base64)
{
    QByteArray bytes(base64.size() / 4 * 3, Qt::Uninitialized);
    char *out = bytes.data();
    int position = 0;
    for (; position + 4 <= base64.size(); position += 4) {
        const char *in = base64.constData() + position;
        const quint32 a = kBase64Values[quint8(in[0])];
        const quint32 b = kBase64Values[quint8(in[1])];
        const quint32 c = kBase64Values[quint8(in[2])];
        const quint32 d = kBase64Values[quint8(in[3])];
        if ((a | b | c | d) == kNotBase64)
            break;
        const quint32 bits = a << 18 | b << 12 | c << 6 | d;
        *out++ = char(bits >> 16);
        *out++ = char(bits >> 8);
        *out++ = char(bits);
    }
    bytes.truncate(int(out - bytes.constData()));
    return bytes + QByteArray::fromBase64(base64.mid(position));
}

} // namespace

QByteArray scramble(const QString &text, int offset)
{
    const QByteArray bytes = text.toUtf8();
    QByteArray line(kHeaderLength + 2 * base64Length(bytes.size()), Qt::Uninitialized);
    putHexNumber(line.data(), kLengthDigits, quint32(line.size()));
    putHexNumber(line.data() + kLengthDigits, kOffsetDigits, quint32(offset));
    scrambleBody(bytes, offset, line.data() + kHeaderLength);
    return line;
}

QString unscramble(const QByteArray &line)
{
    if (line.size() < kLengthDigits || claimedLength(line) != quint32(line.size()))
        return kScrambleError;
    if (line.size() < kHeaderLength)
        return QString();
    const int offset = hexByte(line.constData() + kLengthDigits);
    const int pairCount = (line.size() - kHeaderLength) / 2;
    const QByteArray utf8 = decodeBase64(unscrambleBody(line.constData() + kHeaderLength, pairCount, offset));
    return QString::fromUtf8(utf8.constData(), utf8.size()); // the array's overload would end at a NUL
}

QByteArray sendReply(const QString &text, const OffsetSource &offsets)
{
    QByteArray wire = scramble(text, offsets());
    wire += "\r\n";
    return wire;
}
