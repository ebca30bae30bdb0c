// The value lines of a "[ValueSet]" section as they are written.
#include <model_Tessel/CSProWrittenReader_p.h>

#include <model_Tessel/Constants.h>

namespace {

struct Code {
    QStringView low;
    QStringView high; // null: no range
    bool isQuoted = false;
};

/*
 * Cuts the text behind "Value=" into its codes and its label. A code is in quotes or ends at a
 * blank; on a numeric item a ":" joins the two bounds of a range; the first ";" outside quotes ends
 * the codes.
 */
class ValueText {
public:
    ValueText(QStringView text, bool hasRanges)
        : m_rest(text)
        , m_hasRanges(hasRanges)
    {
        skipBlanks();
        while (!m_rest.isEmpty() && m_rest.front() != QLatin1Char(';')) {
            codes.push_back(takeCode());
            skipBlanks();
        }
        label = m_rest.mid(1).toString();
        if (codes.empty())
            codes.push_back({});
    }

    std::vector<Code> codes; // at least one
    QString label;
    bool hasUnclosedQuote = false;

private:
    void skipBlanks()
    {
        while (m_rest.startsWith(QLatin1Char(' ')) || m_rest.startsWith(QLatin1Char('\t')))
            m_rest = m_rest.mid(1);
    }

    Code takeCode()
    {
        Code code;
        const QChar first = m_rest.front();
        if (first == QLatin1Char('\'') || first == QLatin1Char('"')) {
            code.isQuoted = true;
            code.low = takeQuoted(first);
            return code;
        }
        code.low = takeBare(m_hasRanges);
        if (m_hasRanges && m_rest.startsWith(QLatin1Char(':'))) {
            m_rest = m_rest.mid(1);
            code.high = takeBare(false);
        }
        return code;
    }

    QStringView takeQuoted(QChar quote)
    {
        const auto end = m_rest.indexOf(quote, 1);
        if (end < 0) {
            hasUnclosedQuote = true;
            m_rest = m_rest.mid(1);
            const auto separator = m_rest.indexOf(QLatin1Char(';'));
            return take(separator < 0 ? m_rest.size() : separator);
        }
        const QStringView code = m_rest.mid(1, end - 1);
        m_rest = m_rest.mid(end + 1);
        return code;
    }

    QStringView takeBare(bool endsAtColon)
    {
        qsizetype end = 0;
        for (; end < m_rest.size(); ++end) {
            const QChar character = m_rest[end];
            const bool isColon = endsAtColon && end > 0 && character == QLatin1Char(':');
            if (isColon || character == QLatin1Char(';') || character == QLatin1Char(' ')
                || character == QLatin1Char('\t'))
                break;
        }
        return take(end);
    }

    QStringView take(qsizetype size)
    {
        const QStringView taken = m_rest.left(size);
        m_rest = m_rest.mid(size);
        return taken;
    }

    QStringView m_rest;
    bool m_hasRanges;
};

// "WORD,Special"; Ordinary for anything else.
CSProSpecial::Type specialType(QStringView value)
{
    const auto comma = value.indexOf(QLatin1Char(','));
    const bool isSpecial = comma >= 0
        && value.mid(comma + 1).trimmed().compare(CSProWordSpecial, Qt::CaseInsensitive) == 0;
    return isSpecial ? csproSpecialType(value.left(comma).trimmed()) : CSProSpecial::Ordinary;
}

/*
 * Fills a value set. The codes of one value stay pending until the next value, because the lines
 * behind it say more of it.
 */
class ValueLines {
public:
    ValueLines(CSProBuilder& builder, TCSProValueSet& valueSet)
        : m_builder(builder)
        , m_valueSet(valueSet)
    {
    }

    void read(const CSProSection& section, std::size_t first)
    {
        for (std::size_t i = first; i < section.lines.size(); ++i) {
            const CSProKeyLine line = splitKeyLine(section.lines[i], section.lineNumber(i));
            if (line.hasKey("Value")) {
                store();
                readValue(line);
            } else if (!isComment(section.lines[i])) {
                readMore(line);
            }
        }
        store();
    }

private:
    using Kind = CSProProblem::Kind;

    void readValue(const CSProKeyLine& line)
    {
        const ValueText value(line.value, m_valueSet.isNumeric);
        if (value.hasUnclosedQuote)
            report(Kind::UnclosedQuote, line.number, line.value);
        m_codes = value.codes;
        m_label = value.label;
    }

    void readMore(const CSProKeyLine& line)
    {
        if (line.hasKey("Name")) {
            readSpecial(line);
        } else if (line.hasKey("Note")) {
            appendNoteLine(m_remarks.note, line.value);
        } else if (line.hasKey("Image")) {
            m_remarks.image = line.value.toString();
        } else if (line.hasKey("TextColor")) {
            m_remarks.textColor = line.value.toString();
        } else {
            const Kind kind = line.key.isEmpty() ? Kind::LineWithoutKey : Kind::UnknownKey;
            report(kind, line.number, line.key.isEmpty() ? line.value : line.key);
        }
    }

    void readSpecial(const CSProKeyLine& line)
    {
        m_special = specialType(line.value);
        if (m_special == CSProSpecial::Ordinary)
            report(Kind::UnknownSpecial, line.number, line.value);
    }

    void store()
    {
        CSProValueDetail detail = m_remarks;
        for (const Code& code : m_codes) {
            auto* entry = new TValueSetItem;
            m_valueSet.addItem(entry);
            entry->code = code.low.toString();
            entry->label = m_label;
            entry->type = m_special;
            entry->special = m_special != CSProSpecial::Ordinary;
            detail.highCode = code.high.toString();
            m_valueSet.setDetail(entry, detail);
            detail.isFurtherCode = true;
        }
        m_codes.clear();
        m_remarks = {};
        m_special = CSProSpecial::Ordinary;
    }

    void report(Kind kind, int line, QStringView text)
    {
        m_builder.reportValueSet(kind, line, m_valueSet.name, text.toString());
    }

    CSProBuilder& m_builder;
    TCSProValueSet& m_valueSet;
    // Of the pending value:
    std::vector<Code> m_codes;
    QString m_label;
    CSProSpecial::Type m_special = CSProSpecial::Ordinary;
    CSProValueDetail m_remarks;
};

} // namespace

CSProSpecial::Type csproSpecialType(QStringView word)
{
    if (word.compare(CSProWordMissing, Qt::CaseInsensitive) == 0)
        return CSProSpecial::Missing;
    if (word.compare(CSProWordNotAppl, Qt::CaseInsensitive) == 0)
        return CSProSpecial::NotApplicable;
    if (word.compare(QLatin1String("REFUSED"), Qt::CaseInsensitive) == 0)
        return CSProSpecial::Refused;
    return word.compare(QLatin1String("DEFAULT"), Qt::CaseInsensitive) == 0
        ? CSProSpecial::Default
        : CSProSpecial::Ordinary;
}

void readWrittenValues(
    const CSProSection& section, std::size_t first, CSProBuilder& builder, TCSProValueSet& valueSet)
{
    ValueLines(builder, valueSet).read(section, first);
}
