// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/number_assignment.h"

#include "fuzz/fuzz_input.h"

#include <QSet>

/// Input: the file with the drives' numbers. Each disk gets a number of its own, and the same one when
/// the file is written and read again.
void fuzz(const QByteArray &bytes)
{
    auto entries = number_assignment::parse(bytes);
    if (!entries)
        return;
    const QVector<number_assignment::Disk> disks{{QStringLiteral("wwn-1"), QStringLiteral("sda"), false},
                                                 {QStringLiteral("wwn-1"), QStringLiteral("sdb"), false},
                                                 {{}, QStringLiteral("sdc"), false},
                                                 {QStringLiteral("card"), QStringLiteral("sdd"), true}};
    const QVector<int> numbers = number_assignment::assign(*entries, disks);
    require(QSet<int>(numbers.begin(), numbers.end()).size() == disks.size());
    auto stored = number_assignment::parse(number_assignment::format(*entries));
    require(stored.has_value());
    // A removable disk is not stored, and what is numbered from 99 on neither.
    const QVector<int> again = number_assignment::assign(*stored, disks);
    for (int i = 0; i < 3; ++i)
        require(numbers[i] >= number_assignment::kNumbers || again[i] == numbers[i]);
}
