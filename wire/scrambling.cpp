// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "wire/scrambling.h"

#include <algorithm>
#include <array>

namespace {

constexpr char kKey[] = "Md8uTw5ymfE+xtk/@u(RRrU7Uw/f2bU>MPTWPlAme0m45S'pEooNGSacHrNLttOt"
                        "//vQ.Vp!6VL/oXph04xsBy>H0d2pJyYcn>j,BFcGr34U3muZ;cQEpd+p@UC'S@aE";
constexpr int kKeyLength = 128;
static_assert(sizeof(kKey) == kKeyLength + 1, "service and consoles share a key of 128 characters");

constexpr int kLengthDigits = 8;
constexpr int kOffsetDigits = 2;
constexpr int kHeaderLength = kLengthDigits + kOffsetDigits;

/// Returns the next position in the key. Past 127 the walk goes back by 127, not 128, so that position 0 is
/// used with offset 0 alone.
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

/// Returns the lower-case hexadecimal digit of a value below 16. It uses no table, because the compiler makes
/// vector instructions of a loop over it.
constexpr char hexDigit(unsigned value)
{
    return char(value + (value < 10 ? '0' : 'a' - 10));
}

constexpr quint8 kNoDigit = 0xFF;

/// Returns the value of a hexadecimal digit, or kNoDigit for another character. It has no branch, so that the
/// compiler can vectorise the loop over a body.
constexpr quint8 hexValue(char c)
{
    const auto digit = quint8(c - '0');
    const auto letter = quint8((c | 0x20) - 'a');
    const quint8 letterValue = letter < 6 ? quint8(letter + 10) : kNoDigit;
    return digit < 10 ? digit : letterValue;
}

constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr quint8 kNotBase64 = 0xFF;

/// The six bits of every character of the Base64 alphabet, kNotBase64 for the others.
constexpr std::array<quint8, 256> makeBase64Values()
{
    std::array<quint8, 256> values{};
    for (std::size_t c = 0; c < 256; ++c)
        values[c] = kNotBase64;
    for (quint8 i = 0; i < 64; ++i)
        values[quint8(kBase64Alphabet[i])] = i;
    return values;
}

constexpr std::array<quint8, 256> kBase64Values = makeBase64Values();

/// Returns the byte that two digits write; 0 if one of them is not a hexadecimal digit.
quint8 hexByte(const char *digits)
{
    const quint8 high = hexValue(digits[0]);
    const quint8 low = hexValue(digits[1]);
    return (high | low) == kNoDigit ? quint8(0) : quint8(high << 4 | low);
}

/// Returns the length in a line's header; 0 if the header is not a hexadecimal number.
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
    for (int i = digitCount - 1; i >= 0; --i, number >>= 4)
        out[i] = hexDigit(number & 0xF);
}

static_assert(kPieceBytes == KeyMask::kSize / 4 * 3, "the Base64 of a piece is as long as the mask");

qint64 base64Length(qint64 bytes)
{
    return (bytes + 2) / 3 * 4;
}

/// Writes each of `count` characters, combined with its byte of the mask, as two digits. Returns the end of
/// the output. The three buffers must not overlap.
char *putScrambled(char *__restrict out, const char *__restrict base64, const char *__restrict mask,
                   int count)
{
    for (int i = 0; i < count; ++i) {
        const auto value = quint8(base64[i] ^ mask[i]);
        out[2 * i] = hexDigit(value >> 4);
        out[2 * i + 1] = hexDigit(value & 0xF);
    }
    return out + 2 * count;
}

/// Encodes `size` bytes, several times faster than QByteArray. `out` has room for base64Length(size)
/// characters.
void encodeBase64(const char *bytes, int size, char *out)
{
    const auto putGroup = [&out](quint32 bits) {
        for (int shift = 18; shift >= 0; shift -= 6)
            *out++ = kBase64Alphabet[bits >> shift & 0x3F];
    };
    const auto byte = [bytes](int i) { return quint32(quint8(bytes[i])); };
    int i = 0;
    for (; i + 3 <= size; i += 3)
        putGroup(byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2));
    const int rest = size - i;
    if (rest == 0)
        return;
    putGroup(byte(i) << 16 | (rest == 2 ? byte(i + 1) << 8 : 0));
    std::fill(out - (3 - rest), out, '=');
}

/// Combines every character of the Base64 of `bytes` with the key and writes it as two digits. Works piece by
/// piece, so that the Base64 of a long text does not fill further memory.
void scrambleBody(const QByteArray &bytes, int offset, char *out)
{
    const KeyMask mask(offset, int(base64Length(bytes.size())));
    std::array<char, KeyMask::kSize> base64; // set as far as it is used
    for (int start = 0; start < bytes.size(); start += kPieceBytes) {
        const int size = std::min(bytes.size() - start, kPieceBytes);
        encodeBase64(bytes.constData() + start, size, base64.data());
        out = putScrambled(out, base64.data(), mask.data(), int(base64Length(size)));
    }
}

/// Returns the Base64 that `count` pairs of digits contain.
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

/// Decodes `base64`; characters outside the alphabet are skipped. Groups of four valid characters are decoded
/// here, several times faster than by QByteArray, which decodes everything from the first other group on.
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
    return lineHeader(bytes.size(), offset) + lineBody(bytes, offset);
}

QByteArray lineHeader(qint64 textBytes, int offset)
{
    const qint64 lineLength = kHeaderLength + 2 * base64Length(textBytes);
    QByteArray header(kHeaderLength, Qt::Uninitialized);
    putHexNumber(header.data(), kLengthDigits, quint32(lineLength));
    putHexNumber(header.data() + kLengthDigits, kOffsetDigits, quint32(offset));
    return header;
}

QByteArray lineBody(const QByteArray &utf8, int offset)
{
    QByteArray body(int(2 * base64Length(utf8.size())), Qt::Uninitialized);
    scrambleBody(utf8, offset, body.data());
    return body;
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
    QString text =
        QString::fromUtf8(utf8.constData(), utf8.size()); // the array's overload would end at a NUL
    if (utf8.startsWith("\xEF\xBB\xBF")) // read as a byte order mark, which is not part of the text
        text.prepend(QChar(QChar::ByteOrderMark));
    return text;
}

QByteArray sendReply(const QString &text, const OffsetSource &offsets)
{
    QByteArray wire = scramble(text, offsets());
    wire += "\r\n";
    return wire;
}
