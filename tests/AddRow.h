#pragma once

#include <QtTest>

// Adds a row to a table of test data.
template <typename... Values> void row(const char* name, const Values&... values)
{
    (QTest::newRow(name) << ... << values);
}
