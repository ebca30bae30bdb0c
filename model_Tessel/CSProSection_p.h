#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <initializer_list>
#include <vector>

// Trimmed, non-empty lines of one section, as views into the text that is being read.
using CSProSection = std::vector<QStringView>;

/*
 * The section behind the header at index, which moves to the section's last line. Lines is a
 * QStringList or a vector of views. Kept: a header behind blanks does not end the section.
 */
template <typename Lines> CSProSection gatherSection(const Lines& lines, int& index)
{
    CSProSection section;
    const int count = static_cast<int>(lines.size());
    int next = index + 1;
    for (; next < count; ++next) {
        const QStringView line(lines.at(next));
        if (line.startsWith(QLatin1Char('[')))
            break;
        const QStringView text = line.trimmed();
        if (!text.isEmpty())
            section.push_back(text);
    }
    if (index + 1 < count)
        index = next - 1;
    return section;
}

/*
 * The keys of one kind of section, and which of its lines answers for each.
 *
 * A key is answered by the first line that contains it anywhere, so a word in an early label wins
 * over the key's own line; kept, hosts rely on it. All keys are found in one walk over the lines.
 */
class CSProKeyFinder {
public:
    static constexpr int MaxKeys = 10;
    using Lines = std::array<QStringView, MaxKeys>; // null: no line contains the key

    explicit CSProKeyFinder(std::initializer_list<QLatin1String> keys);

    Lines find(const CSProSection& section) const;

private:
    std::array<QLatin1String, MaxKeys> m_keys;
    unsigned m_all = 0; // one bit a key
    std::array<unsigned, 128> m_byFirstLetter {};
};

// Second part of a line that splits at "=" in exactly two; empty otherwise.
QString csproValue(QStringView line);
// csproValue() as a decimal integer, defaultValue where it is none.
int csproNumber(QStringView line, int defaultValue);
