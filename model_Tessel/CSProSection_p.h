#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringList>

#include <array>
#include <initializer_list>

/*!
 * The keys of one kind of section, and which of its lines answers for each.
 *
 * A key is answered by the first line that contains it anywhere, so a word in an early label wins
 * over the key's own line; kept, hosts rely on it. All keys are found in one walk over the lines.
 */
class CSProKeyFinder {
public:
    static constexpr int MaxKeys = 16;
    using Lines = std::array<const QString*, MaxKeys>; // null: no line contains the key

    explicit CSProKeyFinder(std::initializer_list<QLatin1String> keys);

    Lines find(const QStringList& section) const;

private:
    std::array<QLatin1String, MaxKeys> m_keys;
    unsigned m_all = 0; // one bit a key
    std::array<unsigned, 128> m_byFirstLetter {};
};

//! Second part of a line that splits at "=" in exactly two; null otherwise.
QString csproValue(const QString* line);
//! csproValue() as a decimal integer, \a defaultValue where it is none.
int csproNumber(const QString* line, int defaultValue);
