// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <cstring>

/// Read-only view of bytes that the caller owns, with little-endian numbers by offset. Reading outside the
/// bytes returns 0, so that a short answer of a drive cannot cause an overrun. Call covers() first where a
/// short buffer must be distinguished from zeros.
class ByteView
{
public:
    ByteView() = default;
    ByteView(const char *data, int size)
        : m_data(data)
        , m_size(std::max(size, 0))
    {}
    explicit ByteView(const QByteArray &bytes)
        : ByteView(bytes.constData(), bytes.size())
    {}

    [[nodiscard]] const char *data() const { return m_data; }
    [[nodiscard]] int size() const { return m_size; }
    [[nodiscard]] QByteArray toByteArray() const { return QByteArray(m_data, m_size); }

    /// Returns whether `length` bytes from `offset` on all lie inside.
    [[nodiscard]] bool covers(int offset, int length) const
    {
        return offset >= 0 && length >= 0 && length <= m_size && offset <= m_size - length;
    }

    /// Returns the bytes from `offset` on, at most `length`; empty if they lie outside.
    [[nodiscard]] ByteView mid(int offset, int length) const
    {
        if (offset < 0 || offset >= m_size)
            return {};
        return {m_data + offset, std::min(length, m_size - offset)};
    }

    [[nodiscard]] quint8 u8(int offset) const { return number<quint8>(offset); }
    [[nodiscard]] quint16 le16(int offset) const { return number<quint16>(offset); }
    [[nodiscard]] quint32 le32(int offset) const { return number<quint32>(offset); }
    [[nodiscard]] quint64 le64(int offset) const { return number<quint64>(offset); }

private:
    template <typename T>
    [[nodiscard]] T number(int offset) const
    {
        return covers(offset, int(sizeof(T))) ? qFromLittleEndian<T>(m_data + offset) : T(0);
    }

    const char *m_data = nullptr;
    int m_size = 0;
};

/// Writable view of bytes that the caller owns. Writing outside them is an error of the caller.
class MutableBytes
{
public:
    MutableBytes() = default;
    MutableBytes(char *data, int size)
        : m_data(data)
        , m_size(std::max(size, 0))
    {}
    explicit MutableBytes(QByteArray &bytes)
        : MutableBytes(bytes.data(), bytes.size())
    {}

    [[nodiscard]] char *data() const { return m_data; }
    [[nodiscard]] int size() const { return m_size; }
    [[nodiscard]] ByteView view() const { return {m_data, m_size}; }

    void setU8(int offset, quint8 value) const { put(offset, value); }
    void setLe16(int offset, quint16 value) const { put(offset, value); }
    void setLe32(int offset, quint32 value) const { put(offset, value); }
    void setLe64(int offset, quint64 value) const { put(offset, value); }

    void copyIn(int offset, ByteView bytes) const
    {
        Q_ASSERT(view().covers(offset, bytes.size()));
        if (bytes.size() > 0)
            std::memcpy(m_data + offset, bytes.data(), std::size_t(bytes.size()));
    }

private:
    template <typename T>
    void put(int offset, T value) const
    {
        Q_ASSERT(view().covers(offset, int(sizeof(T))));
        qToLittleEndian(value, m_data + offset);
    }

    char *m_data = nullptr;
    int m_size = 0;
};
