// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_accounts.h"
#include "rows.h"

#include <algorithm>

class TestLinuxAccounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalAccounts_data()
    {
        QTest::addColumn<QByteArray>("loginDefs");
        QTest::addColumn<quint32>("uid");
        QTest::addColumn<QByteArray>("shell");
        QTest::addColumn<bool>("isNormal");
        const QByteArray range = "# UIDs\nUID_MIN\t\t  500\nUID_MAX 2000\nSYS_UID_MIN 1\n";
        const QByteArray comments = "#UID_MIN 500\n# UID_MAX 900\n";
        const QByteArray noNumbers = "UID_MIN\nUID_MAX many\n";
        const QByteArray bash = "/bin/bash";
        row("root, although without a login shell → normal", range, 0U, QByteArray("/usr/sbin/nologin"),
            true);
        row("below UID_MIN → system", range, 499U, bash, false);
        row("at UID_MIN → normal", range, 500U, bash, true);
        row("at UID_MAX, no shell named → normal", range, 2000U, QByteArray(), true);
        row("above UID_MAX → system", range, 2001U, bash, false);
        row("login shell nologin → system", range, 1500U, QByteArray("/usr/sbin/nologin"), false);
        row("login shell false → system", range, 1500U, QByteArray("/bin/false"), false);
        row("below the default UID_MIN → system", QByteArray(), 999U, bash, false);
        row("at the default UID_MAX → normal", QByteArray(), 60000U, bash, true);
        row("limits commented out → defaults, system", comments, 999U, bash, false);
        row("limits that are not numbers → defaults, normal", noNumbers, 1000U, bash, true);
    }

    void normalAccounts()
    {
        QFETCH(QByteArray, loginDefs);
        QFETCH(quint32, uid);
        QFETCH(QByteArray, shell);
        QTEST(isNormalAccount(uid, shell, uidRangeOf(loginDefs)), "isNormal");
    }

    void rootIsAnAdministrator()
    {
        const QVector<Account> accounts = LinuxAccounts().accounts();
        QVERIFY(std::any_of(accounts.begin(), accounts.end(), [](const Account &account) {
            return account.name == "root" && account.privilege == 2;
        }));
    }
};

QTEST_APPLESS_MAIN(TestLinuxAccounts)
#include "tst_linux_accounts.moc"
