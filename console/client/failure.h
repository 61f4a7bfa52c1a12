// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QMetaType>
#include <QString>

#include <optional>
#include <utility>

namespace client {

enum class FailureKind {
    Unreachable,   ///< nobody listens, or the name leads nowhere
    TimedOut,      ///< no whole line within the deadline
    Closed,        ///< the connection ended before the answer
    NotUnderstood, ///< what came is no line of the protocol, or no answer to what was asked
    Detecting,     ///< the service is looking for drives and answers nothing else
    Paused,        ///< the service is paused and answers nothing else
    Refused,       ///< the service understood and said no
};

/// Why an answer is missing, in words for a person. `text` may quote what the peer sent, with every
/// character that could steer a terminal made visible.
struct Failure
{
    FailureKind kind = FailureKind::Unreachable;
    QString text;
};

/// A value, or the reason why there is none.
template <typename T>
class Result
{
public:
    Result(T value) // NOLINT(google-explicit-constructor): a value is its own result
        : m_value(std::move(value))
    {}
    Result(Failure failure) // NOLINT(google-explicit-constructor): as above
        : m_failure(std::move(failure))
    {}

    [[nodiscard]] explicit operator bool() const { return m_value.has_value(); }
    [[nodiscard]] const T &operator*() const { return *m_value; }
    [[nodiscard]] const T *operator->() const { return &*m_value; }
    [[nodiscard]] const Failure &failure() const { return m_failure; }

private:
    std::optional<T> m_value;
    Failure m_failure;
};

/// `text` with control, format and unassigned characters written as \u{hex}: nothing that a peer sent may
/// move a cursor or hide other text. At most `limit` characters are kept; 0 keeps all.
[[nodiscard]] QString visible(const QString &text, int limit = 0);

} // namespace client

Q_DECLARE_METATYPE(client::Failure)
