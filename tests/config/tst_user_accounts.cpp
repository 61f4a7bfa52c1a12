// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/user_accounts.h"

#include <QtTest>

class TestUserAccounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void userInfo_data();
    void userInfo();
    void everyPairHasEveryRight();
};

void TestUserAccounts::userInfo_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("text");
    QTest::newRow("guest") << 0 << "Visitor,Guest";
    QTest::newRow("user") << 1 << "Smith, J.,User";
    QTest::newRow("administrator") << 2 << "Operator,Admin";
    QTest::newRow("no level we know") << 3 << "Robot,Unknown";
    QTest::newRow("index equal to the count") << 4 << "";
    QTest::newRow("negative index") << -1 << "";
}

void TestUserAccounts::userInfo()
{
    const QVector<Account> accounts{
        {QStringLiteral("Visitor"), 0},
        {QStringLiteral("Smith, J."), 1},
        {QStringLiteral("Operator"), 2},
        {QStringLiteral("Robot"), 3},
    };
    QCOMPARE(getUserCount(accounts), 4);
    QFETCH(int, index);
    QTEST(getUserInfo(accounts, index), "text");
}

void TestUserAccounts::everyPairHasEveryRight()
{
    QCOMPARE(checkUser(QStringLiteral("Operator"), QStringLiteral("wrong")), QStringLiteral("111"));
    QCOMPARE(checkUser(QString(), QString()), QStringLiteral("111"));
}

QTEST_APPLESS_MAIN(TestUserAccounts)
#include "tst_user_accounts.moc"
