// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "wire/attribute_catalogue.h"

#include <algorithm>
#include <iterator>

namespace {

struct Row
{
    qint32 id;
    const char *name;
    const char *description;
};

/// Part of the protocol in this form, including leading blanks, spelling and unbalanced tags.
constexpr Row kRows[] = {
    {1, "Raw read error rate",
     "  Indicates the rate of hardware read errors that occurred when reading data from a disk surface. Any "
     "number indicates a problem with either disk surface or read/write heads. <B>(Better RAW Value "
     "LESS)</B></p>"},
    {2, "Throughput performance",
     "  Overall (general) throughput performance of a hard disk drive. If the value of this attribute is "
     "decreasing thereis a high probability that there is a problem with your disk. <B>(Better RAW Value "
     "MORE)</B></p>"},
    {3, "Spinup time",
     "  Average time of spindle spin up (from zero RPM to fully operational). <B>(Better RAW Value "
     "LESS)</B></p>"},
    {4, "Start/Stop count", "  Number of spindle start/stop cycles.</p>"},
    {5, "Reallocated sector count",
     "  Count of reallocated sectors. When the hard drive finds a read/write/verification error, it marks "
     "this sector as \"reallocated\" and transfers data to a special reserved area (spare area). This "
     "process is also known as remapping and \"reallocated\" sectors are called remaps. This is why, on "
     "modern hard disks, \"bad blocks\" cannot be found while testing the surface - all bad blocks are "
     "hidden in reallocated sectors. However, the more sectors that are reallocated, the more read/write "
     "speed will decrease. <B>(Better RAW Value LESS)</B>"},
    {6, "Read channel margin",
     " Margin of a channel while reading data. The function of this attribute is not specified."},
    {7, "Seek error rate",
     "  Rate of seek errors of the magnetic heads. If there is a failure in the mechanical positioning "
     "system, a servo damage or a thermal widening of the hard disk, seek errors arise. More seek errors "
     "indicates a worsening condition of a disk surface and the mechanical subsystem. <B>(Better RAW Value "
     "LESS)</B>"},
    {8, "Seek timer performance",
     "  Average performance of seek operations of the magnetic heads. If this attribute is decreasing, it is "
     "a sign of problems in the mechanical subsystem. <B>(Better Value LESS)</B>"},
    {9, "Power-on hours count",
     "  Count of hours in power-on state. The raw value of this attribute shows total count of hours (or "
     "minutes, or seconds, depending on manufacturer) in power-on state. A decrease of this attribute value "
     "to the critical level (threshold) indicates a decrease of the MTBF (Mean Time Between Failure). "
     "However, in reality, even if the MTBF value falls to zero, it does not mean the MTBF resource is "
     "completely exhausted and the drive will not function normally."},
    {10, "Spinup retry count",
     " Count of retry of spin start attempts. This attribute stores a total count of the spin start attempts "
     "to reach the fully operational speed (under the condition that the first attempt was unsuccessful). An "
     "increase of this attribute value is a sign of problems in the hard disk mechanical subsystem. "
     "<B>(Better RAW Value LESS)</B>"},
    {11, "Calibration retry count",
     "  This attribute indicates the number of times recalibration was requested (under the condition that "
     "the first attempt was unsuccessful). A decrease of this attribute value is a sign of problems in the "
     "hard disk mechanical subsystem. <B>(Better Value MORE)</B>"},
    {12, "Power cycle count", "  This attribute indicates the count of full hard disk power on/off cycles."},
    {13, "Soft read error rate",
     "  Uncorrected read errors reported to the operating system. If the value is non-zero, you should "
     "backup your data. <B>(Better RAW Value LESS)"},
    {190, "Airflow Temperature/Temperature Difference from 100",
     "  Airflow temperature on Western Digital HD (Same as Current internal temperature, but current value "
     "is 50 less.) Value is equal to (100 - temp Celsius) allowing manufacturer to set a minimum threshold "
     "which corresponds ta a maximum temperature on Seagate HD"},
    {191, "G-sense error rate", "  Fequency of mistakes as a result of impact loads."},
    {192, "Power-off retract count",
     "  Number of times the heads are loaded off the media. Heads can be unloaded without actually powering "
     "off. (or Emergency Retract Cycle count - Fujitsu)"},
    {193, "Load/Unload cycle count", "  Count of load/unload cycles into head landing zone position."},
    {194, "Temperature", "  Current internal temperature. <B>(Better RAW Value LESS)"},
    {195, "Hardware ECC recovered",
     "  Time between ECC-corrected errors. It goes up and down, low is bad. <B>(Better Value MORE)"},
    {196, "Reallocation count",
     "  Count of remap operations. The raw value of this attribute shows the total number of attempts to "
     "transfer data from reallocated sectors to a spare area. Both successful & unsuccessful attempts are "
     "counted. <B>(Better RAW Value LESS)"},
    {197, "Current pending sector count",
     "  Number of \"unstable\" sectors (waiting to be remapped). If the unstable sector is subsequently "
     "written or read successfully, this value is decreased and the sector is not remapped. Read errors on "
     "the sector will not remap the sector, it will only be remapped on a failed write attempt. This can be "
     "problematic to test because cached writes will not remap the sector, only direct I/O writes to the "
     "disk. <B>(Better RAW Value LESS)"},
    {198, "Offline scan uncorrectable count",
     "  The total number of uncorrectable errors when reading/writing a sector. A rise in the value of this "
     "attribute indicates defects of the disk surface and/or problems in the mechanical subsystem. "
     "<B>(Better RAW Value LESS)"},
    {199, "UDMA CRC error rate",
     "  The number of errors in data transfer via the interface cable as determined by ICRC (Interface "
     "Cyclic Redundancy Check). <B>(Better RAW Value LESS)"},
    {200, "Write error rate",
     "  The total number of errors when writing a sector. <B>(Better RAW Value LESS)"},
    {201, "Soft read error rate",
     "  Number of off-track errors. If non-zero, make a backup. <B>(Better RAW Value LESS)"},
    {202, "Data Address Mark errors", "  Number of Data Address Mark errors (or vendor-specific)."},
    {203, "Run out cancel", "  Number of ECC errors. <B>(Better RAW Value LESS)"},
    {204, "Soft ECC correction", "  Number of errors corrected by software ECC."},
    {205, "Thermal asperity rate (TAR)", "  Number of thermal asperity errors."},
    {206, "Flying height", "  Height of heads above the disk surface."},
    {207, "Spin high current", "  Amount of high current used to spin up the drive."},
    {208, "Spin buzz", "  Number of buzz routines to spin up the drive."},
    {209, "Offline seek performance", "  Drive's seek performance during offline."},
    {220, "Disk shift",
     "  Shift of disk is possible as a result of strong shock loading in the store, as a result of falling "
     "(or) temperature. <B>(Better RAW Value LESS)"},
    {221, "G-sense error rate",
     "  Number of errors as a result of impact loads as detected by a shock sensor. The number of errors "
     "resulting from externally-induced shock & vibration. <B>(Better RAW Value LESS)"},
    {222, "Loaded hours", "  Time spent operating under data load (movement of magnetic head armature)."},
    {223, "Load/unload retry count",
     "  Loading on drive caused by numerous recurrences of operations, like reading, recording, positioning "
     "of heads, etc."},
    {224, "Load friction", "  Load on drive caused by friction in mechanical parts of the store."},
    {225, "Load/Unload cycle count", "  Total number of load cycles."},
    {226, "Load-in time",
     "  Total time of loading on the magnetic heads actuator (time not spent in parking area)."},
    {227, "Torque amplification count", "  Number of attempts to compensate for platter speed variations."},
    {228, "Power-off retract count",
     "  The number of times the magnetic armature was retracted automatically as a result of cutting power."},
    {230, "GMR head amplitude",
     "  Amplitude of \"thrashing\" (distance of repetitive forward/reverse head motion)."},
    {231, "Temperature", "  Temperature of a drive."},
    {240, "Head flying hours", "  Time while head is positioning."},
    {250, "Read error retry rate",
     "  Number of errors while reading from a disk. <B>(Better RAW Value LESS)"},
};

const Row *findRow(qint32 id)
{
    const auto *const row = std::find_if(std::begin(kRows), std::end(kRows),
                                         [id](const Row &candidate) { return candidate.id == id; });
    return row == std::end(kRows) ? nullptr : row;
}

} // namespace

QString attribute_catalogue::name(qint32 id)
{
    const Row *const row = findRow(id);
    return row != nullptr ? QString::fromLatin1(row->name) : QStringLiteral("Unknown attribute");
}

QString attribute_catalogue::description(qint32 id)
{
    const Row *const row = findRow(id);
    return row != nullptr ? QString::fromLatin1(row->description) : QStringLiteral(" Unknown attribute");
}
