// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_service_key.h"

#include "platform/windows/wide_text.h"

#include <QtEndian>

#include <windows.h>

namespace {

constexpr wchar_t kKeyPath[] = L"System\\CurrentControlSet\\Services\\Halvex Service";
constexpr int kValueSize = 2048; // bytes

class RegistryKey : public OpenKey
{
public:
    explicit RegistryKey(REGSAM access)
    {
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKeyPath, 0, access, &m_key) != ERROR_SUCCESS)
            m_key = nullptr;
    }
    ~RegistryKey() override
    {
        if (m_key)
            RegCloseKey(m_key);
    }
    RegistryKey(const RegistryKey &) = delete;
    RegistryKey &operator=(const RegistryKey &) = delete;

    [[nodiscard]] bool isOpen() const { return m_key != nullptr; }
    [[nodiscard]] std::optional<KeyValue> value(const QString &name) const override;
    void setNumber(const QString &name, quint32 number) const;

private:
    HKEY m_key = nullptr;
};

std::optional<KeyValue> RegistryKey::value(const QString &name) const
{
    // One character more than may be filled: a text may be stored without its end.
    wchar_t buffer[kValueSize / sizeof(wchar_t) + 1] = {};
    auto *const bytes = reinterpret_cast<BYTE *>(buffer);
    DWORD type = REG_NONE;
    DWORD size = kValueSize;
    if (RegQueryValueExW(m_key, wide(name), nullptr, &type, bytes, &size) != ERROR_SUCCESS)
        return std::nullopt;
    if (type == REG_SZ || type == REG_EXPAND_SZ)
        return QString::fromWCharArray(buffer);
    if (type == REG_DWORD && size == sizeof(quint32))
        return qFromLittleEndian<quint32>(bytes);
    return std::nullopt;
}

void RegistryKey::setNumber(const QString &name, quint32 number) const
{
    const DWORD value = number;
    RegSetValueExW(m_key, wide(name), 0, REG_DWORD, reinterpret_cast<const BYTE *>(&value), sizeof(value));
}

} // namespace

std::unique_ptr<OpenKey> WindowsServiceKey::open()
{
    auto key = std::make_unique<RegistryKey>(KEY_QUERY_VALUE);
    return key->isOpen() ? std::move(key) : nullptr;
}

bool WindowsServiceKey::write(const QVector<NamedNumber> &values)
{
    const RegistryKey key(KEY_ALL_ACCESS);
    if (!key.isOpen())
        return false;
    for (const NamedNumber &number : values)
        key.setNumber(number.name, number.value);
    return true;
}
