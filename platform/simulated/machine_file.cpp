// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/machine_file.h"

#include "platform/drive_requests.h"
#include "platform/simulated/key_reader.h"
#include "platform/simulated/sectors.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>

#include <algorithm>

namespace {

constexpr int kHighestDriveNumber = 98; // the highest number that a detection probes
constexpr qint64 kHighest16Bits = 0xFFFF;
constexpr qint64 kHighest31Bits = 0x7FFFFFFF;
constexpr qint64 kHighest32Bits = 0xFFFFFFFF;
constexpr qint64 kHighest48Bits = 0xFFFFFFFFFFFF;
constexpr qint64 kHighestExact = (qint64(1) << 53) - 1; // larger whole numbers are not exact in JSON
constexpr qint64 kLongestDelayMs = 3600000;
constexpr qint64 kCylindersThatFit = -1;

const QStringList &allAnswers()
{
    using namespace answer_name;
    static const QStringList names{kGeometry, kPartition, kDeviceNumber, kDescriptor, kSmartVersion,
                                   kAta,      kSmart,     kIde,          kPredict};
    return names;
}

const QStringList &allHangs()
{
    using namespace hang_name;
    static const QStringList names{kOpen, kGeometry, kIdentify, kSmart, kRead};
    return names;
}

const QStringList &allFailures()
{
    using namespace failure_name;
    static const QStringList names{kSpace, kInformation, kDeviceNumber};
    return names;
}

const QStringList &allLetters()
{
    static const QStringList letters =
        QStringLiteral("A B C D E F G H I J K L M N O P Q R S T U V W X Y Z").split(QLatin1Char(' '));
    return letters;
}

/// Returns the object that `json` holds; empty, with a problem, if it holds none.
QJsonObject parseObject(const QString &file, const QByteArray &json, QString &problem)
{
    QJsonParseError error = {};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        const int line = 1 + json.left(error.offset).count('\n');
        problem = QStringLiteral("%1: line %2: ").arg(file).arg(line) + error.errorString();
    } else if (!document.isObject()) {
        problem = file + QStringLiteral(": line 1: must be an object");
    }
    return document.object();
}

/// Returns a path, relative to the folder of the file that contains it.
void readPath(KeyReader &keys, const char *key, QString &target)
{
    QString path;
    keys.text(key, path);
    if (keys.has(key))
        target = path.isEmpty() ? path : QFileInfo(keys.file()).dir().filePath(path);
}

AttributeState readAttribute(KeyReader &keys)
{
    AttributeState attribute;
    keys.require("id");
    keys.whole("id", attribute.id, 1, 255);
    keys.whole("flags", attribute.flags, 0, kHighest16Bits);
    keys.whole("current", attribute.current, 0, 255);
    keys.whole("worst", attribute.worst, 0, 255);
    keys.whole("threshold", attribute.threshold, 0, 255);
    keys.whole("raw", attribute.raw, 0, kHighest48Bits);
    keys.refuseUnknownKeys();
    return attribute;
}

void readSmart(KeyReader keys, SmartState &smart)
{
    keys.boolean("enabled", smart.enabled);
    keys.whole("offlineStatus", smart.offlineStatus, 0, 255);
    keys.whole("offlineCapability", smart.offlineCapability, 0, 255);
    keys.whole("smartCapability", smart.smartCapability, 0, kHighest16Bits);
    if (keys.has("attributes"))
        smart.attributes.clear();
    for (KeyReader &attribute : keys.objects("attributes"))
        smart.attributes.append(readAttribute(attribute));
    if (smart.attributes.size() > SmartState::kMostAttributes)
        keys.fail("attributes",
                  QStringLiteral("holds more than %1 attributes").arg(SmartState::kMostAttributes));
    keys.refuseUnknownKeys();
}

void readGeometry(KeyReader keys, GeometryState &geometry)
{
    keys.whole("cylinders", geometry.cylinders, 0, kHighestExact);
    keys.whole("tracksPerCylinder", geometry.tracksPerCylinder, 1, kHighest31Bits);
    keys.whole("sectorsPerTrack", geometry.sectorsPerTrack, 1, kHighest31Bits);
    keys.refuseUnknownKeys();
}

void readDescriptor(KeyReader keys, DescriptorState &descriptor)
{
    keys.text("vendor", descriptor.vendor);
    keys.text("product", descriptor.product);
    keys.text("revision", descriptor.revision);
    keys.text("serial", descriptor.serial);
    keys.refuseUnknownKeys();
}

void readBadSectors(KeyReader &keys, QVector<BadSectors> &badSectors)
{
    const QJsonArray ranges = keys.list("badSectors");
    if (keys.has("badSectors"))
        badSectors.clear();
    for (const QJsonValue &value : ranges) {
        const QJsonArray ends = value.toArray();
        const bool whole = ends.size() == 2 && isWhole(ends.at(0), 0, kHighestExact) &&
                           isWhole(ends.at(1), 0, kHighestExact);
        if (!whole || ends.at(0).toDouble() > ends.at(1).toDouble())
            return keys.fail("badSectors", QStringLiteral("must hold pairs of a first and a last sector"));
        badSectors.append({quint64(ends.at(0).toDouble()), quint64(ends.at(1).toDouble())});
    }
}

/// Reads the keys from which others derive their defaults.
void readIdentity(KeyReader &keys, DriveState &drive)
{
    keys.text("model", drive.model);
    keys.text("serial", drive.serial);
    keys.text("firmware", drive.firmware);
    keys.whole("capacity", drive.capacityBytes, 0, kHighestExact);
    keys.whole("bytesPerSector", drive.bytesPerSector, 512, 4096);
    if ((drive.bytesPerSector & (drive.bytesPerSector - 1)) != 0)
        keys.fail("bytesPerSector", QStringLiteral("must be 512, 1024, 2048 or 4096"));
}

void readBehaviour(KeyReader &keys, DriveState &drive)
{
    readGeometry(keys.object("geometry"), drive.geometry);
    keys.whole("ataMajor", drive.ataMajor, 0, kHighest16Bits);
    keys.whole("ataMinor", drive.ataMinor, 0, kHighest16Bits);
    readSmart(keys.object("smart"), drive.smart);
    keys.bytes("identify", drive.identify, ata::kSectorSize);
    keys.bytes("smartData", drive.smartData, ata::kSectorSize);
    keys.bytes("smartThresholds", drive.smartThresholds, ata::kSectorSize);
    readDescriptor(keys.object("descriptor"), drive.descriptor);
    keys.whole("deviceNumber", drive.deviceNumber, 0, kHighest31Bits);
    keys.whole("mediaType", drive.mediaType, 0, kHighest32Bits);
    keys.words("answers", drive.answers, allAnswers());
    keys.whole("openError", drive.openError, 0, kHighest32Bits);
    readPath(keys, "image", drive.image);
    readBadSectors(keys, drive.badSectors);
    keys.whole("smartDelayMs", drive.smartDelayMs, 0, kLongestDelayMs);
    keys.whole("readDelayMs", drive.readDelayMs, 0, kLongestDelayMs);
    keys.whole("identifyDelayMs", drive.identifyDelayMs, 0, kLongestDelayMs);
    keys.words("hangs", drive.hangs, allHangs());
    keys.boolean("sleeping", drive.sleeping);
}

/// Sets the defaults of keys that are not in the file.
void completeDrive(DriveState &drive)
{
    GeometryState &geometry = drive.geometry;
    if (geometry.cylinders == kCylindersThatFit) {
        const quint64 sectors = drive.capacityBytes / drive.bytesPerSector;
        geometry.cylinders = qint64(sectors / geometry.tracksPerCylinder / geometry.sectorsPerTrack);
    }
    if (drive.identify.isEmpty())
        drive.identify = identifySector(drive);
    if (drive.smartData.isEmpty())
        drive.smartData = smartDataSector(drive.smart);
    if (drive.smartThresholds.isEmpty())
        drive.smartThresholds = smartThresholdSector(drive.smart);
}

/// Returns the reader of the drive's dump, if it names one.
std::optional<KeyReader> readDump(KeyReader &keys, MachineFiles &files, QString &problem)
{
    QString path;
    readPath(keys, "dump", path);
    if (path.isEmpty() || !keys.ok())
        return std::nullopt;
    const std::optional<QByteArray> json = files.read(path);
    if (!json) {
        keys.fail("dump", path + QStringLiteral(" cannot be read"));
        return std::nullopt;
    }
    return KeyReader(parseObject(path, *json, problem), path, QString(), problem);
}

DriveState readDrive(KeyReader &keys, MachineFiles &files, QString &problem)
{
    DriveState drive;
    keys.require("number");
    keys.whole("number", drive.number, 0, kHighestDriveNumber);
    drive.deviceNumber = quint32(drive.number);
    drive.geometry.cylinders = kCylindersThatFit;
    drive.answers = allAnswers();

    std::vector<KeyReader> layers; // later ones take precedence
    if (const std::optional<KeyReader> dump = readDump(keys, files, problem))
        layers.push_back(*dump);
    layers.push_back(keys);
    for (KeyReader &layer : layers)
        readIdentity(layer, drive);
    drive.descriptor = {QString(), drive.model, drive.firmware, drive.serial};
    for (KeyReader &layer : layers) {
        readBehaviour(layer, drive);
        layer.refuseUnknownKeys();
    }
    if (problem.isEmpty() && !drive.image.isEmpty() && !files.canRead(drive.image))
        keys.fail("image", drive.image + QStringLiteral(" cannot be read"));
    if (problem.isEmpty())
        completeDrive(drive);
    return drive;
}

VolumeState readVolume(KeyReader &keys)
{
    VolumeState volume;
    QStringList letters;
    keys.require("name");
    keys.text("name", volume.name);
    if (!volume.name.endsWith(QLatin1Char('\\')))
        keys.fail("name", QStringLiteral("must end with a backslash"));
    keys.words("letters", letters, allLetters());
    volume.letters = letters.join(QString());
    keys.whole("driveType", volume.driveType, 0, 6);
    keys.text("label", volume.information.label);
    keys.text("fileSystem", volume.information.fileSystem);
    keys.whole("serial", volume.information.serial, 0, kHighest32Bits);
    keys.whole("deviceNumber", volume.deviceNumber, 0, kHighest31Bits);
    keys.whole("totalBytes", volume.space.totalBytes, 0, kHighestExact);
    keys.whole("freeBytes", volume.space.freeBytes, 0, kHighestExact);
    keys.words("fails", volume.fails, allFailures());
    keys.refuseUnknownKeys();
    return volume;
}

Account readAccount(KeyReader &keys)
{
    Account account;
    keys.require("name");
    keys.text("name", account.name);
    keys.whole("privilege", account.privilege, 0, kHighest32Bits);
    keys.refuseUnknownKeys();
    return account;
}

void readDrives(KeyReader &root, MachineFiles &files, QString &problem, MachineState &machine)
{
    for (KeyReader &keys : root.objects("drives")) {
        const DriveState drive = readDrive(keys, files, problem);
        if (machine.drive(drive.number))
            keys.fail("number", QStringLiteral("is taken by another drive"));
        machine.drives.append(drive);
    }
}

void readVolumes(KeyReader &root, MachineState &machine)
{
    QStringList names;
    QString letters;
    for (KeyReader &keys : root.objects("volumes")) {
        const VolumeState volume = readVolume(keys);
        if (names.contains(volume.name))
            keys.fail("name", QStringLiteral("is taken by another volume"));
        for (const QChar letter : volume.letters) {
            if (letters.contains(letter))
                keys.fail("letters", QStringLiteral("%1 is taken by another volume").arg(letter));
        }
        names.append(volume.name);
        letters += volume.letters;
        machine.volumes.append(volume);
    }
}

} // namespace

MachineReply parseMachine(const QString &file, const QByteArray &json, MachineFiles &files)
{
    MachineReply reply;
    KeyReader root(parseObject(file, json, reply.problem), file, QString(), reply.problem);
    readDrives(root, files, reply.problem, reply.machine);
    readVolumes(root, reply.machine);
    for (KeyReader &keys : root.objects("accounts"))
        reply.machine.accounts.append(readAccount(keys));
    readPath(root, "eventLog", reply.machine.eventLog);
    root.refuseUnknownKeys();
    return reply;
}
