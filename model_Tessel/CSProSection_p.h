#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <initializer_list>
#include <vector>

// Trimmed, non-empty lines of one section, as views into the text that is being read.
struct CSProSection {
    int headerLine = 0; // from 1
    std::vector<QStringView> lines;
    std::vector<int> numbers; // of the lines, from 1; empty while they follow the header one by one

    int lineNumber(std::size_t index) const
    {
        return numbers.empty() ? headerLine + 1 + static_cast<int>(index) : numbers[index];
    }

    void append(QStringView line, int number)
    {
        const bool follows = numbers.empty() && lineNumber(lines.size()) == number;
        if (!follows) {
            for (std::size_t i = numbers.size(); i < lines.size(); ++i)
                numbers.push_back(headerLine + 1 + static_cast<int>(i));
            numbers.push_back(number);
        }
        lines.push_back(line);
    }
};

/*
 * The section behind the header at index, which moves to the section's last line. Lines is a
 * QStringList or a vector of views. Kept: a header behind blanks does not end the section.
 */
template <typename Lines> CSProSection gatherSection(const Lines& lines, int& index)
{
    CSProSection section;
    section.headerLine = index + 1;
    const int count = static_cast<int>(lines.size());
    int next = index + 1;
    for (; next < count; ++next) {
        const QStringView line(lines.at(next));
        if (line.startsWith(QLatin1Char('[')))
            break;
        const QStringView text = line.trimmed();
        if (!text.isEmpty())
            section.append(text, next + 1);
    }
    index = next - 1;
    return section;
}

// The part of that section before the next header, behind blanks or not.
template <typename Lines> CSProSection gatherSectionHead(const Lines& lines, int index)
{
    CSProSection section;
    section.headerLine = index + 1;
    const int count = static_cast<int>(lines.size());
    for (int next = index + 1; next < count; ++next) {
        const QStringView text = QStringView(lines.at(next)).trimmed();
        if (text.startsWith(QLatin1Char('[')))
            break;
        if (!text.isEmpty())
            section.append(text, next + 1);
    }
    return section;
}

// A line that splits at its first "=", both parts trimmed; without one the key is empty.
struct CSProKeyLine {
    QStringView key;
    QStringView value;
    int number = 0; // of the line, from 1

    bool hasKey(const char* name) const
    {
        return key.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
    }
};

CSProKeyLine splitKeyLine(QStringView text, int number);

// Lines that begin with a point are comments.
inline bool isComment(QStringView line)
{
    return line.startsWith(QLatin1Char('.'));
}

/*
 * The keys of one kind of section, and the values that its lines give for them.
 */
class CSProKeyFinder {
public:
    static constexpr int MaxKeys = 10;

    struct Values {
        std::array<QStringView, MaxKeys> value {}; // empty for a key without one
        std::array<int, MaxKeys> line {}; // from 1; 0: no line has the key
        std::vector<CSProKeyLine> others; // lines of other keys; whole keys only
        std::vector<CSProKeyLine> repeated; // further lines of a key; whole keys only
    };

    explicit CSProKeyFinder(std::initializer_list<QLatin1String> keys);

    /*
     * A key is answered by the first line that contains it anywhere, so a word in an early label
     * wins over the key's own line, and only by a line with exactly one "="; kept, hosts rely on
     * it. All keys are found in one walk over the lines.
     */
    Values findAnywhere(const CSProSection& section) const;

    // A key is answered by the first line whose key it is, in any case, among the first count
    // lines.
    Values findWhole(const CSProSection& section, std::size_t count) const;

private:
    std::vector<QLatin1String> m_keys;
    unsigned m_all = 0; // one bit a key
    std::array<unsigned, 128> m_byFirstLetter {};
};

// What stands behind the "=" of a line that has exactly one; empty otherwise.
QStringView csproValue(QStringView line);
// A value as a decimal integer, defaultValue where it is none.
int csproNumber(QStringView value, int defaultValue);
