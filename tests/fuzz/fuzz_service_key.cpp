// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_service_key.h"

#include "config/service_options.h"
#include "fuzz/fuzz_input.h"

#include <QLoggingCategory>

#include <algorithm>

#include <sys/mman.h>
#include <unistd.h>

namespace {

void checkOptions(const ServiceOptions &options)
{
    require(options.alertReminder.count() >= 0 && options.alertReminder.count() <= 8760);
    require(options.smtpReplyTimeout.count() >= 0 && options.smtpReplyTimeout.count() <= 3600);
    const QVector<quint32> &ids = options.alertGrowth;
    require(std::is_sorted(ids.begin(), ids.end()) &&
            std::adjacent_find(ids.begin(), ids.end()) == ids.end());
    require(ids.isEmpty() || (ids.first() >= 1 && ids.last() <= 255));
    require(!options.listenAddress.isNull());
    const QUrl &url = options.alertWebhook;
    require(url.isEmpty() || (!url.host().isEmpty() && url.scheme().startsWith(QLatin1String("http"))));
    (void)options.allowFrom.allows(QHostAddress(QStringLiteral("192.0.2.1")));
    (void)options.allowFrom.allows(QHostAddress(QStringLiteral("::1")));
}

/// A webhook's URL holds a secret, which no message may repeat.
void checkRefusal(const QString &text, const OpenKey &key)
{
    require(text.startsWith(QLatin1String("The option ")));
    const auto value = key.value(QStringLiteral("AlertWebhook"));
    const QString *const url = value ? std::get_if<QString>(&*value) : nullptr;
    constexpr int kLongerThanOurTexts = 40;
    require(!url || url->size() < kLongerThanOurTexts || !text.contains(*url));
}

} // namespace

/// Input: the file of the service's key. Its options are within their ranges, or refused.
void fuzz(const QByteArray &bytes)
{
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    static const int file = ::memfd_create("service-key.json", 0);
    require(::ftruncate(file, 0) == 0);
    require(::pwrite(file, bytes.constData(), std::size_t(bytes.size()), 0) == bytes.size());
    LinuxServiceKey key(QStringLiteral("/proc/self/fd/%1").arg(file));
    const auto opened = key.open();
    const Result<ServiceOptions> options = readServiceOptions(key);
    if (options)
        checkOptions(*options);
    else if (opened)
        checkRefusal(options.failure().text, **opened);
}
