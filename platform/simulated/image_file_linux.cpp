// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/image_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

bool ImageFile::open(const QString &path)
{
    if (m_file.fileName() == path && m_file.isOpen())
        return true;
    m_file.close();
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    ::fcntl(m_file.handle(), F_SETFL, O_DIRECT); // file systems in memory refuse; reads then use the cache
    return true;
}

std::optional<int> ImageFile::readAt(quint64 offset, MutableBytes buffer)
{
    const int descriptor = m_file.handle();
    const auto read = [&] {
        ssize_t length = 0;
        do {
            length = ::pread(descriptor, buffer.data(), std::size_t(buffer.size()), off_t(offset));
        } while (length < 0 && errno == EINTR);
        return length;
    };
    ssize_t length = read();
    if (length < 0 && errno == EINVAL) { // not aligned for a direct read: through the cache
        ::fcntl(descriptor, F_SETFL, 0);
        length = read();
        ::fcntl(descriptor, F_SETFL, O_DIRECT);
    }
    return length < 0 ? std::nullopt : std::optional<int>(int(length));
}
