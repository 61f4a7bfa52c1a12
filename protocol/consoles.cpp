// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/consoles.h"

#include "config/user_accounts.h"
#include "protocol/command_target.h"
#include "protocol/dispatcher.h"
#include "protocol/greeting.h"
#include "protocol/logging.h"

#include <QDateTime>
#include <QHostInfo>
#include <QPointer>
#include <QStringList>

#include <utility>

Q_LOGGING_CATEGORY(logProtocol, "halvex.protocol", QtWarningMsg)

namespace {

QString authReply(const QString &user, const QString &password, const QString &peer)
{
    return QLatin1String("AUTH,") + checkUser(user, password) + QLatin1Char(',') + peer + QLatin1Char('.') +
           QString::number(QDateTime::currentSecsSinceEpoch());
}

/// What finds the whole of a reply whose rest takes time, as a line.
std::function<QByteArray()> workOf(const Reply &reply, int offset)
{
    return [reply, offset] {
        QString text = reply.rest();
        text.prepend(reply.text); // in place: the rest may be long
        return sendReply(text, [offset] { return offset; });
    };
}

} // namespace

Consoles::Consoles(CommandTarget &target, OffsetSource offsets, const ConnectionLimits &limits)
    : m_target(target)
    , m_offsets(std::move(offsets))
    , m_limits(limits)
{
    m_worker.setMaxThreadCount(1);
}

Consoles::~Consoles()
{
    m_worker.waitForDone();
}

bool Consoles::admit(const QObject &connection)
{
    if (m_connectionCount >= m_limits.connections) {
        qCDebug(logProtocol, "Refused a connection: there are %d already", m_connectionCount);
        return false;
    }
    ++m_connectionCount;
    connect(&connection, &QObject::destroyed, this, [this] { --m_connectionCount; });
    return true;
}

QByteArray Consoles::firstLine(const QString &peer) const
{
    QString text;
    if (m_target.isPaused())
        text = QStringLiteral("PAUSED");
    else if (m_target.isDetecting())
        text = QStringLiteral("DETECTING");
    else
        text = greeting(m_target.settings(), QHostInfo::localHostName(), peer,
                        QDateTime::currentSecsSinceEpoch());
    return sendReply(text, m_offsets);
}

Consoles::Answer Consoles::answer(QByteArray line, const QString &peer, const LateReply &lateReply) const
{
    line.replace('\r', "").replace('\n', "");
    const QStringList fields = unscramble(line).split(kRequestSeparator);
    const Reply found = reply(fields, peer, lateReply);
    if (found.rest)
        return {{}, workOf(found, m_offsets())};
    const bool closes = fields.first() == QLatin1String("DIS");
    return {found.text.isEmpty() ? QByteArray() : sendReply(found.text, m_offsets), {}, closes};
}

void Consoles::runElsewhere(std::function<QByteArray()> work, const QObject &context, LateReply done)
{
    const auto deliver = [context = QPointer<const QObject>(&context),
                          done = std::move(done)](const QByteArray &wire) {
        if (context)
            done(wire);
    };
    m_worker.start([this, work = std::move(work), deliver] {
        const QByteArray wire = work();
        QMetaObject::invokeMethod(
            this, [deliver, wire] { deliver(wire); }, Qt::QueuedConnection);
    });
}

Reply Consoles::reply(const QStringList &fields, const QString &peer, const LateReply &lateReply) const
{
    if (fields.first() == QLatin1String("AUTH"))
        return authReply(fields.value(1), fields.value(2), peer);
    if (fields.first() == QLatin1String("SMTPTEST"))
        return smtpTest(fields, lateReply);
    return processCommand(fields, m_target);
}

/// The reply word is the same for good and for bad: consoles look at the text behind it.
Reply Consoles::smtpTest(const QStringList &fields, const LateReply &lateReply) const
{
    const auto finished = [offsets = m_offsets, lateReply](const QString &outcome) {
        lateReply(sendReply(QLatin1String("SMTPTEST_OK") + kRequestSeparator + outcome, offsets));
    };
    const bool started = fields.size() >= 2 && m_target.startSmtpTest(fields[1], finished);
    return started ? QString() : kUnknownCommand;
}
