// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/sectors.h"

#include "platform/drive_requests.h"
#include "platform/smart_layout.h"

#include <algorithm>

namespace {

namespace layout = smart_layout;

constexpr int kChecksumOffset = ata::kSectorSize - 1;
constexpr quint64 kMostSectors28Bits = 0x0FFFFFFF;

constexpr quint16 kSmartRevision = 0x0010;
constexpr quint16 kPrefailureFlag = 1;

/// Sets the checksum: the sum of all 512 bytes is 0 modulo 256.
void setChecksum(MutableBytes sector)
{
    quint8 sum = 0;
    for (int i = 0; i < kChecksumOffset; ++i)
        sum = quint8(sum + sector.view().u8(i));
    sector.setU8(kChecksumOffset, quint8(0x100 - sum));
}

/// Words of an IDENTIFY sector, by the standard's word numbers.
class Words
{
public:
    explicit Words(MutableBytes sector)
        : m_sector(sector)
    {}

    void set(int word, quint16 value) const { m_sector.setLe16(2 * word, value); }
    void set32(int word, quint64 value) const { m_sector.setLe32(2 * word, quint32(value)); }
    void set64(int word, quint64 value) const { m_sector.setLe64(2 * word, value); }

    /// Stores two characters per word, the first in its high byte; pads the field with blanks.
    void setText(int firstWord, int wordCount, const QString &text) const
    {
        const QByteArray latin1 = text.toLatin1().leftJustified(2 * wordCount, ' ', true);
        for (int i = 0; i < latin1.size(); ++i)
            m_sector.setU8((2 * firstWord + i) ^ 1, quint8(latin1.at(i)));
    }

private:
    MutableBytes m_sector;
};

void setCapacity(const Words &words, quint64 sectors, quint32 bytesPerSector)
{
    words.set(1, 16383); // the geometry of every drive beyond 8 GB
    words.set(3, 16);
    words.set(6, 63);
    words.set32(60, std::min(sectors, kMostSectors28Bits));
    words.set64(100, sectors);
    if (bytesPerSector > ata::kSectorSize) {
        words.set(106, 0x5000); // valid; the logical sector is longer than 256 words
        words.set32(117, bytesPerSector / 2);
    }
}

} // namespace

QByteArray identifySector(const DriveState &drive)
{
    QByteArray bytes(ata::kSectorSize, '\0');
    const MutableBytes sector(bytes);
    const Words words(sector);
    words.set(0, 0x0040); // an ATA drive, not removable
    words.setText(10, 10, drive.serial);
    words.setText(23, 4, drive.firmware);
    words.setText(27, 20, drive.model);
    words.set(49, 0x0F00); // DMA, LBA, IORDY
    words.set(53, 0x0006); // words 64 to 70 and 88 are valid
    words.set(63, 0x0007); // multiword DMA 0 to 2
    words.set(64, 0x0003); // PIO 3 and 4
    for (int word = 65; word <= 68; ++word)
        words.set(word, 120); // shortest cycle, in nanoseconds
    setCapacity(words, drive.capacityBytes / drive.bytesPerSector, drive.bytesPerSector);
    words.set(80, drive.ataMajor);
    words.set(81, drive.ataMinor);
    words.set(82, 0x0001); // S.M.A.R.T. supported
    words.set(83, 0x7400); // valid; flush cache, 48-bit addresses
    words.set(84, 0x4000); // valid
    words.set(85, drive.smart.enabled ? 0x0001 : 0x0000);
    words.set(86, 0x3400);       // as word 83
    words.set(87, 0x4000);       // valid
    words.set(88, 0x007F);       // Ultra DMA 0 to 6
    sector.setU8(2 * 255, 0xA5); // signature: the next byte is a checksum
    setChecksum(sector);
    return bytes;
}

QByteArray smartDataSector(const SmartState &smart)
{
    QByteArray bytes(ata::kSectorSize, '\0');
    const MutableBytes sector(bytes);
    sector.setLe16(0, kSmartRevision);
    for (int slot = 0; slot < smart.attributes.size(); ++slot) {
        const AttributeState &attribute = smart.attributes.at(slot);
        const int offset = layout::slotOffset(slot);
        // 48 bits; the bytes beside them are set below.
        sector.setLe64(offset + layout::kRaw - 1, attribute.raw << 8);
        sector.setU8(offset, attribute.id);
        sector.setLe16(offset + layout::kFlags, attribute.flags);
        sector.setU8(offset + layout::kCurrent, attribute.current);
        sector.setU8(offset + layout::kWorst, attribute.worst);
    }
    sector.setU8(layout::kOfflineStatus, smart.offlineStatus);
    sector.setU8(layout::kOfflineCapability, smart.offlineCapability);
    sector.setLe16(layout::kCapability, smart.smartCapability);
    setChecksum(sector);
    return bytes;
}

QByteArray smartThresholdSector(const SmartState &smart)
{
    QByteArray bytes(ata::kSectorSize, '\0');
    const MutableBytes sector(bytes);
    sector.setLe16(0, kSmartRevision);
    for (int slot = 0; slot < smart.attributes.size(); ++slot) {
        sector.setU8(layout::slotOffset(slot), smart.attributes.at(slot).id);
        sector.setU8(layout::slotOffset(slot) + layout::kThreshold, smart.attributes.at(slot).threshold);
    }
    setChecksum(sector);
    return bytes;
}

bool predictsFailure(ByteView smartData, ByteView smartThresholds)
{
    for (int slot = 0; slot < SmartState::kMostAttributes; ++slot) {
        const int offset = layout::slotOffset(slot);
        if (smartData.u8(offset) == 0)
            break;
        const bool prefailure = (smartData.le16(offset + layout::kFlags) & kPrefailureFlag) != 0;
        const quint8 threshold = smartThresholds.u8(offset + layout::kThreshold);
        if (prefailure && threshold > 0 && smartData.u8(offset + layout::kCurrent) <= threshold)
            return true;
    }
    return false;
}
