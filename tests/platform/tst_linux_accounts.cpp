// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_accounts.h"
#include "rows.h"

#include <QTest>

#include <algorithm>

class TestLinuxAccounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void uidRange_data()
    {
        QTest::addColumn<QByteArray>("loginDefs");
        QTest::addColumn<quint32>("first");
        QTest::addColumn<quint32>("last");
        row("missing file", QByteArray(), 1000U, 60000U);
        row("both", QByteArray("# UIDs\nUID_MIN\t\t  500\nUID_MAX 900\nSYS_UID_MIN 1\n"), 500U, 900U);
        row("commented out", QByteArray("#UID_MIN 500\n# UID_MAX 900\n"), 1000U, 60000U);
        row("no numbers", QByteArray("UID_MIN\nUID_MAX many\n"), 1000U, 60000U);
    }

    void uidRange()
    {
        QFETCH(QByteArray, loginDefs);
        const UidRange range = uidRangeOf(loginDefs);
        QTEST(range.first, "first");
        QTEST(range.last, "last");
    }

    void normalAccounts_data()
    {
        QTest::addColumn<quint32>("uid");
        QTest::addColumn<QByteArray>("shell");
        QTest::addColumn<bool>("isNormal");
        row("root", 0U, QByteArray("/usr/sbin/nologin"), true);
        row("below people", 999U, QByteArray("/bin/bash"), false);
        row("first person", 1000U, QByteArray("/bin/bash"), true);
        row("last person", 2000U, QByteArray(), true);
        row("above people", 2001U, QByteArray("/bin/bash"), false);
        row("nologin", 1500U, QByteArray("/usr/sbin/nologin"), false);
        row("false", 1500U, QByteArray("/bin/false"), false);
    }

    void normalAccounts()
    {
        QFETCH(quint32, uid);
        QFETCH(QByteArray, shell);
        QTEST(isNormalAccount(uid, shell, {1000, 2000}), "isNormal");
    }

    void rootIsAnAdministrator()
    {
        const QVector<Account> accounts = LinuxAccounts().accounts();
        const auto root = std::find_if(accounts.begin(), accounts.end(), [](const Account &account) {
            return account.name == QLatin1String("root");
        });
        QVERIFY(root != accounts.end());
        QCOMPARE(root->privilege, 2U);
    }
};

QTEST_APPLESS_MAIN(TestLinuxAccounts)
#include "tst_linux_accounts.moc"
