// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtTest>

/// Adds a row to the table of the current test function: its name, then one value per column.
template <typename... Values>
void row(const char *name, const Values &...values)
{
    QTestData &data = QTest::newRow(name);
    (data << ... << values);
}

/// Returns `text` with quotation marks in place of apostrophes.
inline QByteArray quoted(const QString &text)
{
    return text.toUtf8().replace('\'', '"');
}
