// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// Asks an ATA drive through SG_IO and prints what it answers in hex; shares nothing with the service.
//
//   drive_reader NODE           identify, data and thresholds, a line each: the name, then 512 bytes or
//   "failed" drive_reader NODE enable    turns S.M.A.R.T. on drive_reader NODE disable   turns it off

#include <fcntl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>

namespace {

using Sector = std::array<unsigned char, 512>;

/// ATA PASS-THROUGH (16) of a 28-bit command, with a sector from the drive or without data.
bool ask(int descriptor, unsigned char command, unsigned char feature, Sector *sector)
{
    std::array<unsigned char, 16> cdb{};
    cdb[0] = 0x85;
    cdb[1] = sector ? 4 << 1 : 3 << 1; // PIO data-in, or no data
    cdb[2] = sector ? 0x0E : 0x00;     // from the drive, in blocks, as many as the sector count says
    cdb[4] = feature;
    cdb[6] = sector ? 1 : 0;
    cdb[10] = command == 0xB0 ? 0x4F : 0;
    cdb[12] = command == 0xB0 ? 0xC2 : 0;
    cdb[14] = command;
    std::array<unsigned char, 32> sense{};
    sg_io_hdr request{};
    request.interface_id = 'S';
    request.cmdp = cdb.data();
    request.cmd_len = cdb.size();
    request.sbp = sense.data();
    request.mx_sb_len = sense.size();
    request.dxfer_direction = sector ? SG_DXFER_FROM_DEV : SG_DXFER_NONE;
    request.dxferp = sector ? sector->data() : nullptr;
    request.dxfer_len = sector ? unsigned(sector->size()) : 0;
    request.timeout = 20000; // milliseconds
    return ::ioctl(descriptor, SG_IO, &request) == 0 && request.status == 0 && request.host_status == 0;
}

void print(const char *name, int descriptor, unsigned char command, unsigned char feature)
{
    Sector sector{};
    std::printf("%s ", name);
    if (!ask(descriptor, command, feature, &sector)) {
        std::printf("failed\n");
        return;
    }
    for (const unsigned char byte : sector)
        std::printf("%02x", byte);
    std::printf("\n");
}

} // namespace

int main(int argc, char *argv[])
{
    const int descriptor = argc > 1 ? ::open(argv[1], O_RDONLY | O_NONBLOCK | O_CLOEXEC) : -1;
    if (descriptor < 0) {
        std::perror("drive_reader");
        return 2;
    }
    if (argc > 2)
        return ask(descriptor, 0xB0, std::strcmp(argv[2], "enable") == 0 ? 0xD8 : 0xD9, nullptr) ? 0 : 1;
    print("identify", descriptor, 0xEC, 0);
    print("data", descriptor, 0xB0, 0xD0);
    print("thresholds", descriptor, 0xB0, 0xD1);
    return 0;
}
