// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/rotating_log.h"

#include "platform/regular_file.h"

#include <utility>

RotatingLog::RotatingLog(QString path)
    : m_path(std::move(path))
{}

Result<void> RotatingLog::append(const QByteArray &line)
{
    if (auto opened = open(); !opened)
        return opened;
    if (m_file->size() + line.size() >= kMaxFileSize) {
        if (auto rotated = rotate(); !rotated)
            return rotated;
        if (auto opened = open(); !opened)
            return opened;
    }
    const QByteArray bytes = line.left(int(kMaxFileSize) - 1) + '\n';
    if (m_file->write(bytes) == bytes.size())
        return {};
    const Error failure{m_file->errorString()};
    m_file.reset();
    return failure;
}

Result<void> RotatingLog::open()
{
    if (m_file)
        return {};
    auto file = std::make_unique<QFile>(m_path);
    if (const auto opened = regular_file::open(*file, QIODevice::Append); !opened)
        return Error{opened.failure().text};
    m_file = std::move(file);
    return {};
}

Result<void> RotatingLog::rotate()
{
    m_file.reset(); // an open file cannot be renamed on Windows
    const auto name = [this](int age) {
        return age == 0 ? m_path : m_path + QLatin1Char('.') + QString::number(age);
    };
    for (int age = kFiles - 1; age > 0; --age) {
        if (!QFile::exists(name(age - 1)))
            continue;
        if (auto renamed = regular_file::rename(name(age - 1), name(age)); !renamed)
            return renamed;
    }
    return {};
}
