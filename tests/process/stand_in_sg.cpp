// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// The ATA commands of the stand-in disks, carried by SG_IO.

#include "stand_in_disks.h"

#include <scsi/sg.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <sstream>

namespace stand_in {

namespace {

using Sector = std::array<unsigned char, kSectorSize>;

void putText(Sector &sector, int word, int words, std::string text)
{
    text.resize(std::size_t(2 * words), ' ');
    for (int i = 0; i < 2 * words; ++i)
        sector[std::size_t((2 * word + i) ^ 1)] = static_cast<unsigned char>(text[std::size_t(i)]);
}

Sector identifySector(const Disk &disk)
{
    Sector sector{};
    std::istringstream texts(disk.value("ata") ? disk.value("ata") : "");
    std::string model, serial, firmware;
    std::getline(texts, model, '|');
    std::getline(texts, serial, '|');
    std::getline(texts, firmware, '|');
    putText(sector, 27, 20, model);
    putText(sector, 10, 10, serial);
    putText(sector, 23, 4, firmware);
    return sector;
}

/// Returns one attribute: a temperature of 33 degrees, with the threshold 20.
Sector smartSector(bool isData)
{
    Sector sector{};
    const unsigned char data[] = {194, 2, 0, 100, 100, 33};
    const unsigned char threshold[] = {194, 20};
    if (isData)
        std::copy(std::begin(data), std::end(data), sector.begin() + 2);
    else
        std::copy(std::begin(threshold), std::end(threshold), sector.begin() + 2);
    return sector;
}

void answerCommand(const Disk &disk, sg_io_hdr &header)
{
    constexpr int kIdentify = 0xEC;
    constexpr int kReadData = 0xD0;
    const bool isLong = header.cmd_len == 16;
    const int features = header.cmdp[isLong ? 4 : 3];
    const int command = header.cmdp[isLong ? 14 : 9];
    if (header.dxfer_len != kSectorSize)
        return;
    const Sector sector = command == kIdentify ? identifySector(disk) : smartSector(features == kReadData);
    std::copy(sector.begin(), sector.end(), static_cast<unsigned char *>(header.dxferp));
}

} // namespace

int answerSgIo(const Disk &disk, sg_io_hdr &header)
{
    const char *answer = disk.value(header.cmd_len == 16 ? "sg16" : "sg12");
    while (answer && std::strcmp(answer, "hang") == 0)
        pause();
    answerCommand(disk, header);
    int host = 0;
    int residue = 0;
    char sense[129] = "";
    if (answer)
        std::sscanf(answer, "%d,%d,%128s", &host, &residue, sense);
    header.host_status = static_cast<unsigned short>(host);
    header.resid = residue;
    header.sb_len_wr = static_cast<unsigned char>(std::strlen(sense) / 2);
    header.status = header.sb_len_wr > 0 ? 0x02 : 0;
    for (int i = 0; i < header.sb_len_wr; ++i)
        header.sbp[i] = static_cast<unsigned char>(std::stoi(std::string(sense + 2 * i, 2), nullptr, 16));
    return 0;
}

} // namespace stand_in
