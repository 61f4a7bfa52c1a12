// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/identify.h"

#include "fuzz/fuzz_input.h"
#include "platform/drive_requests.h"

#include <QList>

namespace {

/// Returns the text by the rule, one character at a time.
QString plainText(const QByteArray &sector, identify::TextField field)
{
    QByteArray text;
    for (int i = 0; i < 2 * field.wordCount; ++i) {
        const int place = (2 * field.firstWord + i) ^ 1;
        const char c = place < sector.size() ? sector.at(place) : '\0';
        if (c == '\0')
            break;
        text += c;
    }
    return QString::fromLatin1(text.trimmed());
}

/// Checks that the sector made from a descriptor has the descriptor's texts.
void checkSynthetic(const QByteArray &product, const QByteArray &revision)
{
    const QByteArray sector = identify::fromDescriptor({{}, product, revision, {}});
    require(sector.size() == ata::kSectorSize);
    const auto line = [](QByteArray text, int size) {
        text.replace('\r', '\n').replace('\0', '\n');
        return QString::fromLatin1(text.split('\n').first().left(size).trimmed());
    };
    require(identify::text(ByteView(sector), identify::kModelNumber) == line(product, 40));
    require(identify::text(ByteView(sector), identify::kFirmwareRevision) == line(revision, 8));
    require(identify::smartSupported(ByteView(sector)) == 1 && identify::smartEnabled(ByteView(sector)) == 1);
}

} // namespace

/// Input: a sector, possibly short; its parts are also the texts of a descriptor.
void fuzz(const QByteArray &bytes)
{
    const QByteArray sector = bytes.left(ata::kSectorSize);
    for (const auto field : {identify::kSerialNumber, identify::kFirmwareRevision, identify::kModelNumber})
        require(identify::text(ByteView(sector), field) == plainText(sector, field));
    const identify::AtaVersion version = identify::ataVersion(ByteView(sector));
    require((version.major >= 1 && version.major <= 15) || version.major == -1 || version.major == -3);
    require(version.major != -1 || version.text.isEmpty());
    require(qAbs(identify::smartSupported(ByteView(sector))) <= 1);
    require((identify::smartEnabled(ByteView(sector)) | 1) == 1);
    checkSynthetic(sector.left(sector.size() / 2), sector.mid(sector.size() / 2));
}
