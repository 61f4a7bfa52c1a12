// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// Turns S.M.A.R.T. on or off in an ATA drive: smart_switch NODE on|off. It shares nothing with the service.

#include <fcntl.h>
#include <linux/hdreg.h>
#include <sys/ioctl.h>

#include <cstring>

int main(int argc, char *argv[])
{
    if (argc != 3)
        return 2;
    const bool on = std::strcmp(argv[2], "on") == 0;
    unsigned char command[] = {WIN_SMART, 0, static_cast<unsigned char>(on ? SMART_ENABLE : SMART_DISABLE),
                               0};
    return ::ioctl(::open(argv[1], O_RDONLY | O_NONBLOCK | O_CLOEXEC), HDIO_DRIVE_CMD, command) == 0 ? 0 : 1;
}
