#include <model_Tessel/CSProEstablishedReader_p.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>

#include <algorithm>
#include <iterator>

namespace {

const QLatin1String valueKey("VALUE=");
const QLatin1String nameKey("NAME=");

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

// What a name line says of the entry before it.
struct Special {
    int type = CSProSpecial::Ordinary;
    bool isSpecial = false;

    explicit Special(QStringView value)
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

/*
 * Walks the lines of one section and fills a value set. An entry stays pending until the next value
 * line or the end of the section, because a name line may still make it special.
 */
class ValueLines {
public:
    ValueLines(TCSProItem* item, TCSProValueSet& valueSet)
        : m_item(item)
        , m_valueSet(valueSet)
    {
    }

    void read(const CSProSection& section)
    {
        for (const QStringView line : section.lines) {
            if (line.startsWith(valueKey, Qt::CaseInsensitive)) {
                storePending();
                readValueLine(line.mid(valueKey.size()));
            } else if (m_pending && line.startsWith(nameKey, Qt::CaseInsensitive)) {
                readNameLine(line.mid(nameKey.size()));
            }
        }
        // Kept: the last entry is stored as it stands, even when its code holds several values.
        if (m_pending && !m_pending->special)
            m_valueSet.addItem(m_pending.release());
    }

private:
    void storePending()
    {
        if (!m_pending || m_pending->special)
            return;
        if (m_pending->code.contains(QLatin1Char(' '))) {
            TESSEL_DEBUG << "PROCESAR OTROS RANGOS";
            storeSeparately(m_valueSet, *m_pending);
        } else {
            m_valueSet.addItem(m_pending.release());
        }
    }

    void readValueLine(QStringView value)
    {
        m_pending = std::make_unique<TValueSetItem>();
        // A separator at the very start counts as none, and a ":" of the label is no matter.
        const auto semicolon = value.indexOf(QLatin1Char(';'));
        const QStringView codes = semicolon > 0 ? value.left(semicolon) : value;
        const auto colon = codes.indexOf(QLatin1Char(':'));
        if (semicolon > 0) {
            m_pending->label = value.mid(semicolon + 1).toString();
            if (colon > 0) {
                storeLowBounds(codes.left(colon).toString());
                m_pending->code = codes.mid(colon + 1).toString();
            } else {
                m_pending->code = withoutQuotes(codes);
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
        Special(value).apply(*m_pending, m_item);
        TESSEL_DEBUG << "5. myValueSetItem->special " << m_pending->special;
        TESSEL_DEBUG << "5. myValueSetItem->type " << m_pending->type;
    }

    TCSProItem* m_item; // gets the special codes; may be null
    TCSProValueSet& m_valueSet;
    std::unique_ptr<TValueSetItem> m_pending;
};

} // namespace

void storeSeparately(TCSProValueSet& valueSet, const TValueSetItem& entry)
{
    const QStringList pieces = entry.code.split(QLatin1Char(' '));
    for (const QString& piece : pieces)
        valueSet.addItem(makeEntry(piece.trimmed(), entry.label).release());
}

CSProTextReader::Values CSProEstablishedReader::find(
    const CSProKeyFinder& keys, const CSProSection& section)
{
    return keys.findAnywhere(section);
}

CSProTextReader::Defaults CSProEstablishedReader::defaults() const
{
    return { 1, TCSProRecord().maxRecords };
}

// Kept: the first and the last character go, whatever they are.
QString CSProEstablishedReader::recordTypeValue(const QString& text) const
{
    return text.mid(1, std::max(text.size() - 2, 0));
}

void CSProEstablishedReader::fillValueSet(const CSProSection& section, TCSProValueSet& valueSet)
{
    const Values values = find(namedKeys(), section);
    valueSet.label = text(values, NamedLabel);
    valueSet.name = text(values, NamedName);
    ValueLines(m_model.lastItem, valueSet).read(section);
}
