#include "text/TextTable.h"

#include "text/ShownText.h"

#include <model_Tessel/UtilStrings.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace {

constexpr int Gap = 1;
constexpr int NarrowestLast = 16; // below that the last column goes under the row
constexpr int Indent = 4;
constexpr int WidestOfMany = 18; // of a column where all together are too wide

using Range = std::pair<uint, uint>;

// East Asian wide and fullwidth characters, in blocks.
constexpr Range wideRanges[] = { { 0x1100, 0x115F }, { 0x2E80, 0x303E }, { 0x3041, 0xA4CF },
    { 0xAC00, 0xD7A3 }, { 0xF900, 0xFAFF }, { 0xFE30, 0xFE6F }, { 0xFF00, 0xFF60 },
    { 0xFFE0, 0xFFE6 }, { 0x1F300, 0x1FAFF }, { 0x20000, 0x3FFFD } };

int characterWidth(uint code)
{
    switch (QChar::category(code)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
        return 0;
    default:
        break;
    }
    const bool isWide = std::any_of(std::begin(wideRanges), std::end(wideRanges),
        [code](const Range& range) { return code >= range.first && code <= range.second; });
    return isWide ? 2 : 1;
}

QString padding(int width)
{
    return QString(std::max(width, 0), QLatin1Char(' '));
}

// What a column takes of a line; nothing when it is left out.
int fixedWidth(int column)
{
    return column > 0 ? column + Gap : 0;
}

QString aligned(const QString& text, int width, TextTable::Align align)
{
    const QString blanks = padding(width - displayWidth(text));
    return align == TextTable::Align::Right ? blanks + text : text + blanks;
}

// Details of a row, indented.
QString linesOf(const QStringList& details, int width)
{
    QString text;
    for (const QString& detail : details) {
        const QStringList parts = wrapped(detail, width - Indent);
        for (const QString& part : parts)
            text += withoutTrailingBlanks(padding(Indent) + part) + QLatin1Char('\n');
    }
    return text;
}

// The text of a long list is kept for the rows after it that share it; lines of their own stand
// between.
class DetailTexts {
public:
    explicit DetailTexts(int width)
        : m_width(width)
    {
    }

    QByteArray textOf(const QStringList& details)
    {
        if (details.size() < 2)
            return linesOf(details, m_width).toUtf8();
        if (!details.isSharedWith(m_details)) {
            m_details = details;
            m_text = linesOf(details, m_width).toUtf8();
        }
        return m_text;
    }

private:
    int m_width;
    QStringList m_details;
    QByteArray m_text;
};

} // namespace

int displayWidth(const QString& text)
{
    int width = 0;
    const QVector<uint> codes = text.toUcs4();
    for (const uint code : codes)
        width += characterWidth(code);
    return width;
}

QStringList wrapped(const QString& text, int width)
{
    QStringList lines;
    int start = 0; // of the line
    int blank = -1; // last place to break it
    int used = 0;
    bool hasWord = false; // an indented word is not parted from its indentation
    for (int i = 0; i < text.size();) {
        const bool isPair = text.at(i).isHighSurrogate() && i + 1 < text.size();
        const uint code =
            isPair ? QChar::surrogateToUcs4(text.at(i), text.at(i + 1)) : text.at(i).unicode();
        used += characterWidth(code);
        if (!text.at(i).isSpace())
            hasWord = true;
        else if (hasWord)
            blank = i;
        while (used > width && i > start) {
            const int end = blank > start ? blank : i;
            lines.append(text.mid(start, end - start));
            start = blank > start ? blank + 1 : i;
            blank = -1;
            hasWord = start <= i;
            used = displayWidth(text.mid(start, i - start)) + characterWidth(code);
            if (start > i)
                used = 0;
        }
        i += isPair ? 2 : 1;
    }
    if (start < text.size() || lines.isEmpty())
        lines.append(text.mid(start));
    return lines;
}

TextTable::TextTable(const QVector<Column>& columns)
    : m_columns(columns)
{
}

void TextTable::beginGroup(const QString& title)
{
    m_groups.append({ title, {} });
}

void TextTable::addRow(const QStringList& cells)
{
    m_groups.last().rows.append({ cells, {} });
}

void TextTable::addDetail(const QString& text)
{
    m_groups.last().rows.last().details.append({ text });
}

void TextTable::addDetails(const QStringList& texts)
{
    m_groups.last().rows.last().details.append(texts); // shared
}

// Of all columns but the last; 0 for one that no row fills.
QVector<int> TextTable::columnWidths(int width) const
{
    QVector<int> widths(m_columns.size() - 1, 0);
    for (const Group& group : m_groups) {
        for (const Row& row : group.rows) {
            for (int i = 0; i < widths.size(); ++i)
                widths[i] = std::max(widths[i], displayWidth(row.cells.at(i)));
        }
    }
    int total = 0;
    for (int i = 0; i < widths.size(); ++i) {
        if (widths[i] > 0)
            widths[i] = std::max(widths[i], displayWidth(m_columns.at(i).heading));
        total += fixedWidth(widths[i]);
    }
    for (int i = 0; i < widths.size() && total > width; ++i) {
        const int narrow = std::min(widths[i], WidestOfMany);
        total -= widths[i] - narrow;
        widths[i] = narrow;
    }
    return widths;
}

// Line number of a row: that part of each cell, in its column.
QString TextTable::fixedCells(
    const QVector<QStringList>& parts, int number, const QVector<int>& widths) const
{
    QString text;
    for (int i = 0; i < widths.size(); ++i) {
        if (widths.at(i) > 0) {
            text += aligned(parts.at(i).value(number), widths.at(i), m_columns.at(i).align)
                + padding(Gap);
        }
    }
    return text;
}

QString TextTable::line(QStringList cells, const QVector<int>& widths, int width) const
{
    QString result;
    if (widths.constFirst() > 0 && displayWidth(cells.constFirst()) > widths.constFirst()) {
        result = wrapped(cells.constFirst(), width).join(QLatin1Char('\n')) + QLatin1Char('\n');
        cells.first().clear();
    }
    QVector<QStringList> parts;
    int height = 1;
    for (int i = 0; i < widths.size(); ++i) {
        parts.append(widths.at(i) > 0 ? wrapped(cells.at(i), widths.at(i)) : QStringList());
        height = std::max(height, parts.constLast().size());
    }
    const int margin = std::accumulate(widths.cbegin(), widths.cend(), 0,
        [](int sum, int column) { return sum + fixedWidth(column); });
    const bool isUnderRow = width - margin < NarrowestLast;
    const QStringList last =
        isUnderRow ? QStringList() : wrapped(cells.constLast(), width - margin);
    height = std::max(height, last.size());
    for (int number = 0; number < height; ++number) {
        result += withoutTrailingBlanks(fixedCells(parts, number, widths) + last.value(number))
            + QLatin1Char('\n');
    }
    if (isUnderRow && !cells.constLast().isEmpty()) {
        const QStringList lines = wrapped(cells.constLast(), width - Indent);
        for (const QString& part : lines)
            result += padding(Indent) + part + QLatin1Char('\n');
    }
    return result;
}

QString TextTable::toText(int width) const
{
    QByteArray text;
    write(width, [&text](const QByteArray& piece) { text += piece; });
    return QString::fromUtf8(text);
}

void TextTable::write(int width, const ByteSink& sink) const
{
    const QVector<int> widths = columnWidths(width);
    QStringList headings;
    for (const Column& column : m_columns)
        headings.append(column.heading);

    DetailTexts detailTexts(width);
    for (const Group& group : m_groups) {
        const QStringList title = wrapped(group.title, width);
        sink((QLatin1Char('\n') + title.join(QLatin1Char('\n')) + QLatin1Char('\n')
            + line(headings, widths, width))
                 .toUtf8());
        for (const Row& row : group.rows) {
            sink(line(row.cells, widths, width).toUtf8());
            for (const QStringList& details : row.details)
                sink(detailTexts.textOf(details));
        }
    }
}
