#pragma once

#include <QString>

class TCSProItem;

// Columns of the longest record that the format allows; what says of more is damaged.
constexpr int CSProMostColumns = 32'000;

/*
 * The numbers that fit the columns of a numeric item as CSPro writes them: a sign takes a column,
 * and so does the point where it stands in the data.
 */
struct CSProLengthRange {
    explicit CSProLengthRange(const TCSProItem& item);

    QString lowest;
    QString highest;
};
