// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_service_key.h"

#include "platform/windows/wide_text.h"

#include <QtEndian>

#include <vector>
#include <windows.h>

namespace {

constexpr wchar_t kKeyPath[] = L"System\\CurrentControlSet\\Services\\Halvex Service";
constexpr int kValueSize = 1 << 16;     // bytes
constexpr DWORD kMaxNameLength = 16383; // characters, the registry's own limit

AccessError errorOf(LSTATUS error)
{
    using Kind = AccessError::Kind;
    return {error == ERROR_FILE_NOT_FOUND ? Kind::Missing : Kind::Failed,
            QStringLiteral("the service's registry key: ") + qt_error_string(int(error))};
}

class RegistryKey : public OpenKey
{
public:
    explicit RegistryKey(REGSAM access)
    {
        m_error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKeyPath, 0, access, &m_key);
        if (m_error != ERROR_SUCCESS)
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
    [[nodiscard]] AccessError openError() const { return errorOf(m_error); }
    [[nodiscard]] std::optional<KeyValue> value(const QString &name) const override;
    [[nodiscard]] QStringList names() const override;
    Result<void, AccessError> setNumber(const NamedNumber &number) const;

private:
    HKEY m_key = nullptr;
    LSTATUS m_error = ERROR_SUCCESS; ///< of opening
};

std::optional<KeyValue> RegistryKey::value(const QString &name) const
{
    // Room for one more character: a text may be stored without its terminator.
    std::vector<wchar_t> buffer(kValueSize / sizeof(wchar_t) + 1);
    auto *const bytes = reinterpret_cast<BYTE *>(buffer.data());
    DWORD type = REG_NONE;
    DWORD size = kValueSize;
    if (RegQueryValueExW(m_key, wide(name), nullptr, &type, bytes, &size) != ERROR_SUCCESS)
        return std::nullopt;
    if (type == REG_SZ || type == REG_EXPAND_SZ)
        return QString::fromWCharArray(buffer.data());
    if (type == REG_DWORD && size == sizeof(quint32))
        return qFromLittleEndian<quint32>(bytes);
    return std::nullopt;
}

QStringList RegistryKey::names() const
{
    QStringList names;
    std::vector<wchar_t> buffer(kMaxNameLength + 1);
    for (DWORD index = 0;; ++index) {
        DWORD length = kMaxNameLength + 1; // characters: the terminating NUL on entry, not on return
        if (RegEnumValueW(m_key, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return names;
        names << QString::fromWCharArray(buffer.data(), int(length));
    }
}

Result<void, AccessError> RegistryKey::setNumber(const NamedNumber &number) const
{
    const DWORD value = number.value;
    const LSTATUS error = RegSetValueExW(m_key, wide(number.name), 0, REG_DWORD,
                                         reinterpret_cast<const BYTE *>(&value), sizeof(value));
    if (error != ERROR_SUCCESS)
        return errorOf(error);
    return {};
}

} // namespace

Result<std::unique_ptr<OpenKey>, AccessError> WindowsServiceKey::open()
{
    auto key = std::make_unique<RegistryKey>(KEY_QUERY_VALUE);
    if (!key->isOpen())
        return key->openError();
    return std::unique_ptr<OpenKey>(std::move(key));
}

Result<void, AccessError> WindowsServiceKey::write(const QVector<NamedNumber> &values)
{
    const RegistryKey key(KEY_ALL_ACCESS);
    if (!key.isOpen())
        return key.openError();
    for (const NamedNumber &number : values) {
        if (const auto stored = key.setNumber(number); !stored)
            return stored;
    }
    return {};
}
