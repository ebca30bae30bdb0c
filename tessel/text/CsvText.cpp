#include "text/CsvText.h"

#include "text/Utf8Text.h"

#include <algorithm>

namespace {

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

// A minus, digits and at most one point among them.
bool isNegativeNumber(const QString& text)
{
    const QStringView digits = QStringView(text).mid(1);
    const auto points = std::count(digits.begin(), digits.end(), QLatin1Char('.'));
    return text.startsWith(QLatin1Char('-')) && points <= 1
        && std::any_of(digits.begin(), digits.end(), isDigit)
        && std::all_of(digits.begin(), digits.end(),
            [](QChar character) { return isDigit(character) || character == QLatin1Char('.'); });
}

// Some programs take the wide forms of the signs for the signs, and pass over a line end.
bool isFormula(const QString& text)
{
    static const QString signs = QStringLiteral("=+-@\t\r\n\uFF1D\uFF0B\uFF0D\uFF20");
    return !text.isEmpty() && signs.contains(text.front()) && !isNegativeNumber(text);
}

// All of it is looked at, many characters at once.
bool needsQuotes(const QString& text)
{
    bool isPlain = true;
    for (const QChar character : text) {
        const ushort code = character.unicode();
        isPlain &= code != ',' && code != '"' && code != '\n' && code != '\r';
    }
    return !isPlain;
}

void appendQuoted(QByteArray& bytes, const QString& text)
{
    if (!needsQuotes(text))
        return appendUtf8(bytes, text);
    bytes += '"';
    appendUtf8(bytes, QString(text).replace(QLatin1Char('"'), QLatin1String("\"\"")));
    bytes += '"';
}

} // namespace

CsvWriter::CsvWriter(const ByteSink& sink, bool forSpreadsheet)
    : m_sink(sink)
    , m_forSpreadsheet(forSpreadsheet)
{
    if (forSpreadsheet)
        m_sink("\xEF\xBB\xBF");
}

void CsvWriter::addLine(const QStringList& cells) const
{
    m_sink(textOf(cells) + "\r\n");
}

void CsvWriter::addLine(const QByteArray& first, const QByteArray& second) const
{
    m_sink(first + ',' + second + "\r\n");
}

QByteArray CsvWriter::textOf(const QStringList& cells) const
{
    QByteArray text;
    for (int i = 0; i < cells.size(); ++i) {
        if (i > 0)
            text += ',';
        appendCell(text, cells.at(i));
    }
    return text;
}

void CsvWriter::appendCell(QByteArray& text, const QString& cell) const
{
    if (m_forSpreadsheet && isFormula(cell))
        return appendQuoted(text, QLatin1Char('\'') + cell);
    appendQuoted(text, cell);
}
