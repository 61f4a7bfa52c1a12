// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <optional>
#include <utility>

/// A failure described by a text alone, for a person: one line, without credentials or control characters.
struct Error
{
    QString text;

    friend bool operator==(const Error &a, const Error &b) { return a.text == b.text; }
};

/// A value or a failure. `E` is Error, or a type that also has the kind of the failure.
template <typename T, typename E = Error>
class [[nodiscard]] Result
{
public:
    Result(T value) // NOLINT(google-explicit-constructor): a value is its own result
        : m_value(std::move(value))
    {}
    Result(E failure) // NOLINT(google-explicit-constructor): as above
        : m_failure(std::move(failure))
    {}

    [[nodiscard]] explicit operator bool() const { return m_value.has_value(); }
    [[nodiscard]] const T &operator*() const & { return *m_value; }
    [[nodiscard]] T &&operator*() && { return *std::move(m_value); }
    [[nodiscard]] const T *operator->() const { return &*m_value; }
    /// Returns the failure; a default-constructed one while there is a value.
    [[nodiscard]] const E &failure() const { return m_failure; }

private:
    std::optional<T> m_value;
    E m_failure;
};

/// Success without a value, or the failure.
template <typename E>
class [[nodiscard]] Result<void, E>
{
public:
    Result() = default;
    Result(E failure) // NOLINT(google-explicit-constructor): as above
        : m_failure(std::move(failure))
    {}

    [[nodiscard]] explicit operator bool() const { return !m_failure.has_value(); }
    /// Must be called only after a failure.
    [[nodiscard]] const E &failure() const { return *m_failure; }

private:
    std::optional<E> m_failure;
};
