// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_accounts.h"

#include <QFile>
#include <QSet>

#include <grp.h>
#include <pwd.h>

namespace {

constexpr quint32 kUser = 1;          // USER_PRIV_USER
constexpr quint32 kAdministrator = 2; // USER_PRIV_ADMIN

/// Returns the accounts that may act as root by a group: as members, or because it is their own group.
struct Administrators
{
    QSet<gid_t> groups;
    QSet<QByteArray> members;

    [[nodiscard]] bool include(const passwd &entry) const
    {
        return entry.pw_uid == 0 || groups.contains(entry.pw_gid) || members.contains(entry.pw_name);
    }
};

Administrators administrators()
{
    Administrators found;
    for (const char *name : {"sudo", "wheel", "admin"}) {
        const group *entry = getgrnam(name);
        if (!entry)
            continue;
        found.groups.insert(entry->gr_gid);
        for (char **member = entry->gr_mem; *member; ++member)
            found.members.insert(QByteArray(*member));
    }
    return found;
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

UidRange uidRangeOf(const QByteArray &loginDefs)
{
    UidRange range;
    for (const QByteArray &line : loginDefs.split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        if (words.size() < 2)
            continue;
        bool isNumber = false;
        const quint32 number = words.at(1).toUInt(&isNumber);
        if (isNumber && words.at(0) == "UID_MIN")
            range.first = number;
        else if (isNumber && words.at(0) == "UID_MAX")
            range.last = number;
    }
    return range;
}

bool isNormalAccount(quint32 uid, const QByteArray &shell, UidRange people)
{
    if (uid == 0)
        return true;
    const QByteArray program = shell.mid(shell.lastIndexOf('/') + 1);
    return uid >= people.first && uid <= people.last && program != "nologin" && program != "false";
}

QVector<Account> LinuxAccounts::accounts()
{
    const UidRange people = uidRangeOf(contentsOf(QStringLiteral("/etc/login.defs")));
    const Administrators administrators = ::administrators();
    QVector<Account> accounts;
    setpwent();
    while (const passwd *entry = getpwent()) {
        if (isNormalAccount(entry->pw_uid, entry->pw_shell, people)) {
            accounts.append({QString::fromLocal8Bit(entry->pw_name),
                             administrators.include(*entry) ? kAdministrator : kUser});
        }
    }
    endpwent();
    return accounts;
}
