// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/user_accounts.h"
#include "rows.h"

class TestUserAccounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void userInfo_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        row("guest", 0, "Visitor,Guest");
        row("user", 1, "Smith, J.,User");
        row("administrator", 2, "Operator,Admin");
        row("no level we know", 3, "Robot,Unknown");
        row("index equal to the count", 4, "");
        row("negative index", -1, "");
    }

    void userInfo()
    {
        const QVector<Account> accounts{{QStringLiteral("Visitor"), 0},
                                        {QStringLiteral("Smith, J."), 1},
                                        {QStringLiteral("Operator"), 2},
                                        {QStringLiteral("Robot"), 3}};
        QFETCH(int, index);
        QTEST(getUserInfo(accounts, index), "text");
    }
};

QTEST_APPLESS_MAIN(TestUserAccounts)
#include "tst_user_accounts.moc"
