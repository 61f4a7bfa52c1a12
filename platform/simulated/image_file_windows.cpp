// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/image_file.h"

bool ImageFile::open(const QString &path)
{
    if (m_file.fileName() == path && m_file.isOpen())
        return true;
    m_file.close();
    m_file.setFileName(path);
    return m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

std::optional<int> ImageFile::readAt(quint64 offset, MutableBytes buffer)
{
    const qint64 length = m_file.seek(qint64(offset)) ? m_file.read(buffer.data(), buffer.size()) : -1;
    return length < 0 ? std::nullopt : std::optional<int>(int(length));
}
