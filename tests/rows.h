// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtTest>

/// Adds a row to the table of the test function that is being prepared: its name, then a value a column.
template <typename... Values>
void row(const char *name, const Values &...values)
{
    QTestData &data = QTest::newRow(name);
    (data << ... << values);
}
