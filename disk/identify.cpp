// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/identify.h"

#include "platform/drive_requests.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr int kMajorVersion = 80;
constexpr int kMinorVersion = 81;
constexpr int kCommandSets = 82;         // bit 0: S.M.A.R.T. supported
constexpr int kCommandSetsMark = 83;     // shows whether 82 and 83 are valid
constexpr int kCommandsEnabled = 85;     // bit 0: S.M.A.R.T. enabled
constexpr int kCommandsEnabledMark = 87; // shows whether 85 to 87 are valid
constexpr quint16 kMarkMask = 0xC000;
constexpr quint16 kMarkValid = 0x4000;
constexpr quint16 kSmartBit = 0x0001;

struct VersionRow
{
    qint32 major; ///< 0: not determined by word 81
    const char *text;
};

/// By word 81. Consoles identify the two ATA-3 drafts by -3.
constexpr std::array<VersionRow, 35> kVersions{{
    {0, "Device does not report version"},
    {1, "ATA-1 X3T9.2 781D prior to revision 4"},
    {1, "ATA-1 published, ANSI X3.221-1994"},
    {1, "ATA-1 X3T9.2 781D revision 4"},
    {2, "ATA-2 published, ANSI X3.279-1996"},
    {2, "ATA-2 X3T10 948D prior to revision 2k"},
    {-3, "ATA-3 X3T10 2008D revision 1"},
    {2, "ATA-2 X3T10 948D revision 2k"},
    {-3, "ATA-3 X3T10 2008D revision 0"},
    {2, "ATA-2 X3T10 948D revision 3"},
    {3, "ATA-3 published, ANSI X3.298-199x"},
    {3, "ATA-3 X3T10 2008D revision 6"},
    {3, "ATA-3 X3T13 2008D revision 7 and 7a"},
    {4, "ATA/ATAPI-4 X3T13 1153D revision 6"},
    {4, "ATA/ATAPI-4 T13 1153D revision 13"},
    {4, "ATA/ATAPI-4 X3T13 1153D revision 7"},
    {4, "ATA/ATAPI-4 T13 1153D revision 18"},
    {4, "ATA/ATAPI-4 T13 1153D revision 15"},
    {4, "ATA/ATAPI-4 published, ANSI NCITS 317-1998"},
    {5, "ATA/ATAPI-5 T13 1321D revision 3"},
    {4, "ATA/ATAPI-4 T13 1153D revision 14"},
    {5, "ATA/ATAPI-5 T13 1321D revision 1"},
    {5, "ATA/ATAPI-5 published, ANSI NCITS 340-2000"},
    {4, "ATA/ATAPI-4 T13 1153D revision 17"},
    {6, "ATA/ATAPI-6 T13 1410D revision 0"},
    {6, "ATA/ATAPI-6 T13 1410D revision 3a"},
    {7, "ATA/ATAPI-7 T13 1532D revision 1"},
    {6, "ATA/ATAPI-6 T13 1410D revision 2"},
    {6, "ATA/ATAPI-6 T13 1410D revision 1"},
    {0, "reserved"},
    {7, "ATA/ATAPI-7 T13 1532D revision 0"},
    {0, "reserved"},
    {0, "reserved"},
    {7, "ATA/ATAPI-7 T13 1532D revision 4a"},
    {6, "ATA/ATAPI-6 published, ANSI INCITS 361-2002"},
}};

quint16 word(ByteView sector, int number)
{
    return sector.le16(2 * number);
}

void setWord(MutableBytes sector, int number, quint16 value)
{
    sector.setLe16(2 * number, value);
}

/// Exchanges the two characters of each word; an odd last one is paired with a NUL.
QByteArray swapped(QByteArray characters)
{
    if (characters.size() % 2 != 0)
        characters.append('\0');
    char *const data = characters.data();
    for (int i = 0; i < characters.size(); i += 2)
        std::swap(data[i], data[i + 1]);
    return characters;
}

void setText(MutableBytes sector, identify::TextField field, QByteArray line)
{
    const auto isLineEnd = [](char c) { return c == '\r' || c == '\n'; };
    line.truncate(int(std::find_if(line.cbegin(), line.cend(), isLineEnd) - line.cbegin()));
    line.truncate(2 * field.wordCount);
    sector.copyIn(2 * field.firstWord, ByteView(swapped(line)));
}

qint32 highestVersionBit(quint16 majorWord)
{
    for (int bit = 15; bit > 1; --bit) {
        if ((majorWord >> bit & 1) != 0)
            return bit;
    }
    return 1;
}

} // namespace

namespace identify {

QString text(ByteView sector, TextField field)
{
    QByteArray characters = swapped(sector.mid(2 * field.firstWord, 2 * field.wordCount).toByteArray());
    const int end = characters.indexOf('\0');
    if (end >= 0)
        characters.truncate(end);
    return QString::fromLatin1(characters.trimmed());
}

qint32 smartSupported(ByteView sector)
{
    if ((word(sector, kCommandSetsMark) & kMarkMask) != kMarkValid)
        return -1;
    return word(sector, kCommandSets) & kSmartBit;
}

qint32 smartEnabled(ByteView sector)
{
    if ((word(sector, kCommandsEnabledMark) & kMarkMask) != kMarkValid)
        return 1;
    return word(sector, kCommandsEnabled) & kSmartBit;
}

AtaVersion ataVersion(ByteView sector)
{
    const quint16 majorWord = word(sector, kMajorVersion);
    if (majorWord == 0x0000 || majorWord == 0xFFFF)
        return {};
    const std::size_t minor = word(sector, kMinorVersion);
    if (minor > 0 && minor < kVersions.size() && kVersions[minor].major != 0)
        return {kVersions[minor].major, QString::fromLatin1(kVersions[minor].text)};
    return {highestVersionBit(majorWord), QString()};
}

QByteArray fromDescriptor(const StorageDescriptor &descriptor)
{
    QByteArray bytes(ata::kSectorSize, '\0');
    const MutableBytes sector(bytes);
    setText(sector, kModelNumber, descriptor.product);
    setText(sector, kFirmwareRevision, descriptor.revision);
    setWord(sector, kMajorVersion, 0x0008); // ATA-3
    setWord(sector, kCommandSets, kSmartBit);
    setWord(sector, kCommandSetsMark, kMarkValid);
    setWord(sector, kCommandsEnabled, kSmartBit);
    setWord(sector, kCommandsEnabledMark, kMarkValid);
    return bytes;
}

} // namespace identify
