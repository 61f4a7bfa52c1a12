// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alerts_file.h"

#include "monitor/logging.h"
#include "platform/whole_file.h"

#include <QJsonDocument>

#include <utility>

namespace {

constexpr qint64 kMaxFileSize = 64 * 1024 * 1024;

void logIfAny(const QString &text)
{
    if (!text.isEmpty())
        qCWarning(lcMonitor).noquote() << text;
}

} // namespace

AlertsFile::AlertsFile(QString path)
    : m_path(std::move(path))
{}

QJsonObject AlertsFile::load()
{
    if (m_path.isEmpty())
        return {};
    const auto bytes = whole_file::read(m_path, kMaxFileSize);
    if (!bytes && bytes.failure().kind == AccessError::Kind::Missing)
        return {};
    const QJsonDocument document = bytes ? QJsonDocument::fromJson(*bytes) : QJsonDocument();
    if (document.isObject())
        return document.object();
    const Result<QString> aside = whole_file::setAside(m_path, QDateTime::currentDateTime());
    m_canStore = bool(aside);
    qCWarning(lcMonitor).noquote() << m_path << "cannot be read; the alarms start afresh and"
                                   << (aside ? QStringLiteral("the file is now ") + *aside
                                             : QStringLiteral("nothing is stored: ") + aside.failure().text);
    return {};
}

void AlertsFile::save(const QJsonObject &document)
{
    if (m_path.isEmpty() || !m_canStore)
        return;
    const QByteArray bytes = QJsonDocument(document).toJson();
    if (bytes == m_stored)
        return;
    const auto result = whole_file::replace(m_path, bytes, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    if (result)
        m_stored = bytes;
    logIfAny(result ? m_storing.succeeded()
                    : m_storing.failed(result.failure().text, QDateTime::currentDateTime()));
}
