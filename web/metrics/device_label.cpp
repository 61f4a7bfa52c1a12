// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/metrics/device_label.h"

#include <QHash>

namespace web::metrics {

namespace {

bool isPlain(QChar c)
{
    const char16_t code = c.unicode();
    return (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z') || (code >= '0' && code <= '9') ||
           code == '.' || code == '_' || code == '-';
}

} // namespace

QString deviceName(const QString &model, const QString &serial)
{
    QString name = QStringLiteral("ata-%1_%2").arg(model, serial);
    for (QChar &c : name) {
        if (!isPlain(c))
            c = QLatin1Char('_');
    }
    return name;
}

QStringList deviceNames(const QVector<client::Drive> &drives)
{
    QStringList names;
    QHash<QString, int> counts;
    for (const client::Drive &drive : drives) {
        names.append(deviceName(drive.model, drive.serial));
        ++counts[names.last()];
    }
    for (int i = 0; i < names.size(); ++i) {
        if (counts.value(names.at(i)) > 1)
            names[i] += QStringLiteral("-%1").arg(i);
    }
    return names;
}

} // namespace web::metrics
