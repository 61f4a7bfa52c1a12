// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/metrics/metric_family.h"

#include <QList>

#include <memory>
#include <utility>

namespace web::metrics {

namespace {

const char *typeWord(Type type, Format format)
{
    switch (type) {
    case Type::Counter:
        return "counter";
    case Type::Unknown:
        return format == Format::OpenMetrics ? "unknown" : "gauge";
    case Type::Gauge:
        break;
    }
    return "gauge";
}

/// OpenMetrics names a counter without the ending of its samples.
QByteArray familyName(const Family &family, Format format)
{
    const QByteArray name(family.name);
    const bool isShortened = format == Format::OpenMetrics && family.type == Type::Counter;
    return isShortened ? name.left(name.size() - int(sizeof "_total") + 1) : name;
}

/// The place of the next line in the text.
struct Position
{
    QVector<Family> families;
    Format format = Format::Text;
    int family = 0;
    int part = 0;
    bool hasHeader = false;
    bool isAtEnd = false;
};

void appendPart(Position &position, QByteArray &text)
{
    const Family &family = position.families.at(position.family);
    QByteArray samples;
    SampleWriter writer(samples, family.name);
    family.parts.at(position.part)(writer);
    if (!samples.isEmpty() && !std::exchange(position.hasHeader, true))
        appendHeader(text, family, position.format);
    text += samples;
    if (++position.part < family.parts.size())
        return;
    ++position.family;
    position.part = 0;
    position.hasHeader = false;
}

} // namespace

void SampleWriter::begin(const QByteArray &labels)
{
    m_text += m_name;
    if (!labels.isEmpty())
        m_text += '{' + labels + '}';
    m_text += ' ';
}

void SampleWriter::add(const QByteArray &labels, double value)
{
    begin(labels);
    m_text += QByteArray::number(value, 'g', 15) + '\n';
}

void SampleWriter::add(const QByteArray &labels, qint64 value)
{
    begin(labels);
    m_text += QByteArray::number(value) + '\n';
}

Labels &Labels::add(const char *name, const QString &value)
{
    if (!m_text.isEmpty())
        m_text += ',';
    m_text += name;
    m_text += "=\"";
    for (const char byte : value.toUtf8()) {
        if (byte == '\\' || byte == '"')
            m_text += '\\';
        if (byte == '\n')
            m_text += "\\n";
        else
            m_text += byte;
    }
    m_text += '"';
    return *this;
}

void appendHeader(QByteArray &text, const Family &family, Format format)
{
    const QByteArray name = familyName(family, format);
    text += "# HELP " + name + ' ' + family.help + "\n# TYPE " + name + ' ' + typeWord(family.type, format) +
            '\n';
}

std::function<bool(QByteArray &)> textSource(QVector<Family> families, Format format)
{
    const auto position = std::make_shared<Position>();
    position->families = std::move(families);
    position->format = format;
    return [position](QByteArray &text) {
        if (position->isAtEnd)
            return false;
        if (position->family < position->families.size()) {
            appendPart(*position, text);
            return true;
        }
        position->isAtEnd = true;
        if (position->format == Format::OpenMetrics)
            text += "# EOF\n";
        return true;
    };
}

Format formatFor(const QByteArray &accept)
{
    for (const QByteArray &choice : accept.split(',')) {
        const QList<QByteArray> parts = choice.simplified().replace(' ', "").toLower().split(';');
        const bool isRefused = parts.contains("q=0") || parts.contains("q=0.0");
        if (parts.first() == "application/openmetrics-text" && !isRefused)
            return Format::OpenMetrics;
    }
    return Format::Text;
}

QByteArray contentType(Format format)
{
    return format == Format::OpenMetrics ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                                         : "text/plain; version=0.0.4; charset=utf-8";
}

} // namespace web::metrics
