// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QVector>

#include <functional>

/// The text formats that Prometheus reads, as functions over values.
namespace web::metrics {

enum class Format { Text, OpenMetrics };

enum class Type {
    Gauge,
    Counter,
    Unknown, ///< a count that may start anew: a gauge in the text format
};

/// Appends samples to a text. One sample a call.
class SampleWriter
{
public:
    SampleWriter(QByteArray &text, const char *name)
        : m_text(text)
        , m_name(name)
    {}

    /// `labels` is a list as Labels makes it, without braces; empty: none.
    void add(const QByteArray &labels, double value);
    void add(const QByteArray &labels, qint64 value);

private:
    void begin(const QByteArray &labels);

    QByteArray &m_text;
    const char *m_name;
};

/// A list of labels in the form of both formats.
class Labels
{
public:
    Labels() = default;
    explicit Labels(QByteArray text)
        : m_text(std::move(text))
    {}

    /// Appends NAME="value"; `value` may hold anything.
    Labels &add(const char *name, const QString &value);

    [[nodiscard]] const QByteArray &text() const { return m_text; }

private:
    QByteArray m_text;
};

/// A metric with its description, and what writes its samples, in parts, so that a long family never stands
/// in memory as a whole.
struct Family
{
    const char *name; ///< as the samples have it: of a counter with "_total"
    Type type;
    const char *help;
    QVector<std::function<void(SampleWriter &)>> parts;
};

/// Appends the HELP and TYPE lines of `family`.
void appendHeader(QByteArray &text, const Family &family, Format format);

/// Returns what appends the next part of the text of `families` to its argument, and false at the end. A
/// family without samples is left out.
[[nodiscard]] std::function<bool(QByteArray &)> textSource(QVector<Family> families, Format format);

/// Returns the format that the header Accept asks for.
[[nodiscard]] Format formatFor(const QByteArray &accept);
[[nodiscard]] QByteArray contentType(Format format);

} // namespace web::metrics
