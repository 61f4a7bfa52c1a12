// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <sys/sysmacros.h>
#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

struct sg_io_hdr;

namespace stand_in {

constexpr unsigned kMajor = 240; // for local use
constexpr int kSectorSize = 512;

/// A disk of the file that STAND_IN_DISKS names (stand_in_disks.cpp).
struct Disk
{
    std::string name; // "sda"
    std::map<std::string, std::string> values;

    dev_t device() const { return makedev(kMajor, unsigned(name.back() - 'a')); }
    const char *value(const std::string &key) const
    {
        const auto found = values.find(key);
        return found == values.end() ? nullptr : found->second.c_str();
    }
};

/// Returns the path of the file; empty if there is none.
const char *specification();

/// Reads the file.
std::vector<Disk> disks();

template <typename Matches>
std::optional<Disk> find(Matches matches)
{
    for (const Disk &disk : disks()) {
        if (matches(disk))
            return disk;
    }
    return std::nullopt;
}

/// Answers an ATA command for the disk; never returns if the command hangs. Returns 0.
int answerSgIo(const Disk &disk, sg_io_hdr &header);

} // namespace stand_in
