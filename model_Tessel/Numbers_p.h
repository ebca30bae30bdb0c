#pragma once

#include <QString>

#include <algorithm>
#include <cmath>
#include <limits>

// Whole part of a double; a NaN and what an int cannot hold give the smallest int.
inline int truncatedToInt(double value)
{
    constexpr double low = std::numeric_limits<int>::min();
    constexpr double high = std::numeric_limits<int>::max();
    const double whole = std::trunc(value);
    return whole >= low && whole <= high ? static_cast<int>(whole)
                                         : std::numeric_limits<int>::min();
}

// Columns beyond these are damage.
struct ColumnLimits {
    qint64 first;
    qint64 last;
};

// Kept: of text dictionaries hosts see all that an int holds.
constexpr ColumnLimits IntColumns { std::numeric_limits<int>::min(),
    std::numeric_limits<int>::max() };
// The reader of JSON dictionaries adds to its columns.
constexpr ColumnLimits JsonColumns { -1'000'000'000, 1'000'000'000 };

// A column that is damage stays the last one within the limits.
inline int columnWithin(const ColumnLimits& limits, qint64 column)
{
    return static_cast<int>(std::clamp(column, limits.first, limits.last));
}

// A number in at most six significant digits, as QString::number(value, 'g', 6) writes it. Whole
// numbers of up to six digits, nearly all codes, are written without its cost.
inline QString shortNumberText(double value)
{
    if (std::abs(value) < 1e6 && value == std::trunc(value) && (value != 0 || !std::signbit(value)))
        return QString::number(static_cast<int>(value));
    return QString::number(value, 'g', 6);
}

// True for texts that shortNumberText() gives of their number: up to six plain digits.
inline bool isShortNumberText(const QString& text)
{
    constexpr int MaxDigits = 6;
    if (text.isEmpty() || text.size() > MaxDigits)
        return false;
    for (const QChar character : text) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            return false;
    }
    return text.size() == 1 || text.at(0) != QLatin1Char('0');
}

// text as QString::toInt() reads it; codes of up to nine plain digits, nearly all, cost little.
inline int integerOf(const QString& text, bool* isInteger)
{
    constexpr int MaxDigits = 9;
    if (text.isEmpty() || text.size() > MaxDigits)
        return text.toInt(isInteger);
    int number = 0;
    for (const QChar character : text) {
        const int digit = character.unicode() - '0';
        if (digit < 0 || digit > 9)
            return text.toInt(isInteger);
        number = number * 10 + digit;
    }
    *isInteger = true;
    return number;
}

// text as a real number; 0 where it is none, one too large for a double included.
inline double realOrZero(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber ? number : 0;
}

inline bool isFiniteNumber(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number);
}

// Kept: hosts take the number out of a text as the one character with that 16-bit code.
inline QString asCharacter(int number)
{
    return QString(QChar(static_cast<ushort>(number)));
}
