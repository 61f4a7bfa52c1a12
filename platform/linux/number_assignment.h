// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

/// The numbers that disks keep by their identity, so that a disk has the same number after a restart, a new
/// enumeration by the kernel, or re-plugging. Values only; DiskNumbers applies them to the machine.
namespace number_assignment {

/// Numbers below this are probed by a detection.
inline constexpr int kNumbers = 99;

struct Entry
{
    int number = 0;
    QString identity;
    QString node;           ///< where the disk was seen last by this process; not stored
    bool isStored = true;   ///< false for removable media, which no detection lists
    bool isPresent = false; ///< whether a disk of the latest assignment has it; not stored
};

struct Disk
{
    QString identity; ///< may be empty, or shared by several disks
    QString node;
    bool isRemovable = false;
};

/// Returns a number for each of `disks`, in their order, and adds the entries of new disks. A new disk gets
/// the lowest free number. Disks that share an identity have a number each: as long as the process runs by
/// their nodes, else in their order. When all numbers are taken, a new disk gets the one of the absent disk
/// that has been known longest; without any such it gets one from kNumbers on.
[[nodiscard]] QVector<int> assign(QVector<Entry> &entries, const QVector<Disk> &disks);

/// Parses the stored entries; returns nullopt if the text is damaged.
[[nodiscard]] std::optional<QVector<Entry>> parse(const QByteArray &json);
[[nodiscard]] QByteArray format(const QVector<Entry> &entries);

} // namespace number_assignment
