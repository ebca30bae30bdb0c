// The value lines of a "[ValueSet]" section: as hosts have relied on so far, and as they are
// written.
#include <model_Tessel/CSProTextReader_p.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace {

// Length of a key that begins a line, with its "=": "VALUE=", "NAME=".
constexpr int ValueKeyLength = 6;
constexpr int NameKeyLength = 5;

bool isNameLine(QStringView line)
{
    return line.startsWith(QLatin1String("NAME="), Qt::CaseInsensitive);
}

QString withoutQuotes(QStringView code)
{
    const bool isQuoted = code.startsWith(QLatin1Char('\''));
    return (isQuoted ? code.mid(1, std::max<qsizetype>(code.size() - 2, 0)) : code).toString();
}

std::unique_ptr<TValueSetItem> makeEntry(const QString& code, const QString& label)
{
    auto entry = std::make_unique<TValueSetItem>();
    entry->code = code;
    entry->label = label;
    return entry;
}

// What a name line says of the entry before it, in the way that hosts rely on.
struct EstablishedSpecial {
    int type = CSProSpecial::Ordinary;
    bool isSpecial = false;

    explicit EstablishedSpecial(QStringView value)
    {
        const auto comma = value.indexOf(QLatin1Char(','));
        if (comma <= 0)
            return;
        // Kept: the name loses its last character and the rest still begins with the comma, so
        // "MISSING,Special" is not recognised and "MISSING ,Special" is.
        const QString name = value.left(comma - 1).toString().toUpper();
        isSpecial = value.mid(comma).toString().toUpper() == CSProWordSpecial;
        if (name == CSProWordMissing)
            type = CSProSpecial::Missing;
        else if (name == CSProWordNotAppl)
            type = CSProSpecial::NotApplicable;
        isSpecial = isSpecial || type != CSProSpecial::Ordinary;
    }

    void apply(TValueSetItem& entry, TCSProItem* item) const
    {
        entry.type = type;
        entry.special = entry.special || isSpecial; // kept: never turns back
        if (item && type == CSProSpecial::Missing)
            item->missingCode = entry.code;
        else if (item && type == CSProSpecial::NotApplicable)
            item->notApplicableCode = entry.code;
    }
};

// "WORD,Special"; 0 for anything else.
int writtenSpecialType(QStringView value)
{
    const auto comma = value.indexOf(QLatin1Char(','));
    const bool isSpecial = comma >= 0
        && value.mid(comma + 1).trimmed().compare(CSProWordSpecial, Qt::CaseInsensitive) == 0;
    return isSpecial ? csproSpecialType(value.left(comma).trimmed()) : int(CSProSpecial::Ordinary);
}

// Rule: specials as they are written, or as hosts have known them.
void applySpecial(
    QStringView value, const CSProReadingRules& rules, TValueSetItem& entry, TCSProItem* item)
{
    if (rules.specials) {
        entry.type = writtenSpecialType(value);
        entry.special = entry.type != CSProSpecial::Ordinary;
    } else {
        EstablishedSpecial(value).apply(entry, item);
    }
}

// Rule: a special entry stays in the set, marked, or goes.
bool staysInSet(const TValueSetItem& entry, const CSProReadingRules& rules)
{
    return !entry.special || rules.specials;
}

// Rule: notes, images and colours of values, or none.
void applyDetail(const CSProKeyLine& line, const CSProReadingRules& rules, CSProValueDetail& detail)
{
    if (!rules.structure)
        return;
    if (line.hasKey("Note"))
        appendNoteLine(detail.note, line.value);
    else if (line.hasKey("Image"))
        detail.image = line.value.toString();
    else if (line.hasKey("TextColor"))
        detail.textColor = line.value.toString();
}

void storeWithDetail(
    TCSProValueSet& valueSet, std::unique_ptr<TValueSetItem> entry, const CSProValueDetail& detail)
{
    if (!detail.isEmpty())
        valueSet.details.insert(entry.get(), detail);
    valueSet.addItem(entry.release());
}

/*
 * Walks the lines of one section and fills a value set. An entry stays pending until the next value
 * line or the end of the section, because a name line may still make it special.
 */
class EstablishedValues {
public:
    EstablishedValues(TCSPro& dictionary, const CSProReadingRules& rules, TCSProValueSet& valueSet)
        : m_dictionary(dictionary)
        , m_rules(rules)
        , m_valueSet(valueSet)
    {
    }

    void read(const CSProSection& section)
    {
        for (const QStringView line : section.lines) {
            if (isCSProValueLine(line)) {
                storePending();
                readValueLine(line.mid(ValueKeyLength));
            } else if (m_pending && isNameLine(line)) {
                readNameLine(line.mid(NameKeyLength));
            } else if (m_pending) {
                applyDetail(splitKeyLine(line, 0), m_rules, m_detail);
            }
        }
        // Kept: the last entry is stored as it stands, even when its code holds several values.
        if (m_pending && staysInSet(*m_pending, m_rules))
            storeWithDetail(m_valueSet, std::move(m_pending), m_detail);
    }

private:
    void storePending()
    {
        if (!m_pending || !staysInSet(*m_pending, m_rules))
            return;
        if (!m_pending->special && m_pending->code.contains(QLatin1Char(' '))) {
            TESSEL_DEBUG << "PROCESAR OTROS RANGOS";
            m_dictionary.processOtherRanges(&m_valueSet, m_pending.get());
        } else {
            storeWithDetail(m_valueSet, std::move(m_pending), m_detail);
        }
    }

    void readValueLine(QStringView value)
    {
        m_pending = std::make_unique<TValueSetItem>();
        m_detail = {};
        const auto colon = value.indexOf(QLatin1Char(':'));
        const auto semicolon = value.indexOf(QLatin1Char(';'));
        // A separator at the very start counts as none.
        if (semicolon > 0) {
            m_pending->label = value.mid(semicolon + 1).toString();
            if (colon > 0 && colon < semicolon) {
                storeLowBounds(value.left(colon).toString());
                m_pending->code = value.mid(colon + 1, semicolon - colon - 1).toString();
            } else {
                m_pending->code = withoutQuotes(value.left(semicolon));
            }
        } else if (colon > 0) {
            storeEntry("3. myValueSetItemMin->name", value.left(colon).toString());
            m_pending->code = value.mid(colon).toString(); // kept: the ":" stays
        } else {
            m_pending->code = withoutQuotes(value);
        }
        TESSEL_DEBUG << "4. myValueSetItem->name" << m_pending->label;
    }

    // Several values may stand before the ":"; the last of them is the low bound.
    void storeLowBounds(const QString& codes)
    {
        const QStringList pieces = codes.split(QLatin1Char(' '));
        for (auto piece = pieces.cbegin(); piece != std::prev(pieces.cend()); ++piece)
            storeEntry("2. myValueSetItemMin->name", *piece);
        storeEntry("1. myValueSetItemMin->name", pieces.constLast());
    }

    void storeEntry(const char* trace, const QString& code)
    {
        m_valueSet.addItem(makeEntry(code, m_pending->label).release());
        TESSEL_DEBUG << trace << m_pending->label;
    }

    void readNameLine(QStringView value)
    {
        applySpecial(value, m_rules, *m_pending, m_dictionary.lastItem);
        TESSEL_DEBUG << "5. myValueSetItem->special " << m_pending->special;
        TESSEL_DEBUG << "5. myValueSetItem->type " << m_pending->type;
    }

    TCSPro& m_dictionary;
    const CSProReadingRules& m_rules;
    TCSProValueSet& m_valueSet;
    std::unique_ptr<TValueSetItem> m_pending;
    CSProValueDetail m_detail; // of the pending entry
};

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
        codesText = text.left(text.size() - m_rest.size()).trimmed();
        hasLabel = !m_rest.isEmpty();
        label = m_rest.mid(1).toString();
        if (codes.empty())
            codes.push_back({});
    }

    std::vector<Code> codes; // at least one
    QStringView codesText;
    QString label;
    bool hasLabel = false;
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

/*
 * Fills a value set with its values as they are written. The entries of one value stay pending
 * until the next value, because the lines behind it say more of it.
 */
class WrittenValues {
public:
    WrittenValues(TCSPro& dictionary, CSProBuilder& builder, TCSProValueSet& valueSet)
        : m_dictionary(dictionary)
        , m_builder(builder)
        , m_rules(builder.rules())
        , m_valueSet(valueSet)
    {
    }

    void read(const CSProSection& section, std::size_t first)
    {
        for (std::size_t i = first; i < section.lines.size(); ++i) {
            const CSProKeyLine line = splitKeyLine(section.lines[i], section.lineNumber(i));
            if (line.hasKey("Value")) {
                store(false);
                readValue(line);
            } else if (!isComment(section.lines[i])) {
                readMore(line);
            }
        }
        store(true);
    }

private:
    using Kind = CSProProblem::Kind;

    void readValue(const CSProKeyLine& line)
    {
        ++m_number;
        const ValueText value(line.value, m_valueSet.isNumeric);
        if (value.hasUnclosedQuote)
            noteLine(Kind::UnclosedQuote, line.line, line.value);
        m_last = value;
        for (const Code& code : value.codes)
            addCode(code, value);
    }

    // Rules: quoted codes whole or cut at their blanks; a range as one entry or as its two bounds,
    // of which the upper one keeps its ":" in a range without a label.
    void addCode(const Code& code, const ValueText& value)
    {
        if (code.isQuoted && !m_rules.quotedCodes) {
            const QStringList pieces = code.low.toString().split(QLatin1Char(' '));
            for (const QString& piece : pieces)
                addEntry(piece, QString(), value.label);
        } else if (code.high.isNull() || m_rules.ranges) {
            addEntry(code.low.toString(), code.high.toString(), value.label);
        } else {
            const QString high = code.high.toString();
            addEntry(code.low.toString(), QString(), value.label);
            addEntry(value.hasLabel ? high : QLatin1Char(':') + high, QString(), value.label);
        }
    }

    void addEntry(const QString& code, const QString& highCode, const QString& label)
    {
        m_pending.push_back(makeEntry(code, label));
        m_pending.back()->highCode = highCode;
        m_pending.back()->valueNumber = m_number;
    }

    void readMore(const CSProKeyLine& line)
    {
        if (line.hasKey("Name")) {
            readSpecial(line);
        } else if (line.hasKey("Note") || line.hasKey("Image") || line.hasKey("TextColor")) {
            if (!m_pending.empty())
                applyDetail(line, m_rules, m_detail);
        } else if (m_rules.wholeKeys) {
            const Kind kind = line.key.isEmpty() ? Kind::LineWithoutKey : Kind::UnknownKey;
            noteLine(kind, line.line, line.key.isEmpty() ? line.value : line.key);
        }
    }

    void readSpecial(const CSProKeyLine& line)
    {
        if (m_rules.specials && writtenSpecialType(line.value) == CSProSpecial::Ordinary)
            noteLine(Kind::UnknownSpecial, line.line, line.value);
        for (const auto& entry : m_pending)
            applySpecial(line.value, m_rules, *entry, m_dictionary.lastItem);
    }

    void store(bool isLast)
    {
        // Rules: several codes, or a quoted one, on the last line as they are elsewhere, or as one.
        if (isLast && !m_pending.empty()) {
            const bool isSeveral = m_last->codes.size() > 1;
            const bool isCut = !isSeveral && m_last->codes.front().isQuoted;
            if (isSeveral ? !m_rules.severalCodes : isCut && !m_rules.quotedCodes) {
                m_pending.resize(1);
                m_pending.front()->code = withoutQuotes(m_last->codesText);
                m_pending.front()->highCode = QString();
            }
        }
        for (auto& entry : m_pending) {
            if (staysInSet(*entry, m_rules))
                storeWithDetail(m_valueSet, std::move(entry), m_detail);
        }
        m_pending.clear();
        m_detail = {};
    }

    void noteLine(Kind kind, int line, QStringView text)
    {
        m_builder.noteValueSet(kind, line, m_valueSet.name, text.toString());
    }

    TCSPro& m_dictionary;
    CSProBuilder& m_builder;
    const CSProReadingRules& m_rules;
    TCSProValueSet& m_valueSet;
    std::vector<std::unique_ptr<TValueSetItem>> m_pending;
    CSProValueDetail m_detail; // of the pending value
    std::optional<ValueText> m_last; // the pending value
    int m_number = 0;
};

} // namespace

bool isCSProValueLine(QStringView line)
{
    return line.startsWith(QLatin1String("VALUE="), Qt::CaseInsensitive);
}

int csproSpecialType(QStringView word)
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

void readEstablishedValues(TCSPro& dictionary, CSProBuilder& builder, const CSProSection& section,
    TCSProValueSet& valueSet)
{
    EstablishedValues(dictionary, builder.rules(), valueSet).read(section);
}

void readWrittenValues(TCSPro& dictionary, CSProBuilder& builder, const CSProSection& section,
    std::size_t first, TCSProValueSet& valueSet)
{
    WrittenValues(dictionary, builder, valueSet).read(section, first);
}

void TCSPro::processOtherRanges(TCSProValueSet* valueSet, TValueSetItem* entry)
{
    const QStringList pieces = entry->code.split(QLatin1Char(' '));
    for (const QString& piece : pieces)
        valueSet->addItem(makeEntry(piece.trimmed(), entry->label).release());
}
