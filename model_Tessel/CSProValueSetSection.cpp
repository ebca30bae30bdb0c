// What TCSPro does with a "[ValueSet]" section.
#include <model_Tessel/CSPro.h>

#include <model_Tessel/CSProSection_p.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace {

// A value set that was dropped reached nobody, so it goes with its entries.
struct DropValueSet {
    void operator()(TCSProValueSet* valueSet) const
    {
        qDeleteAll(*valueSet->items);
        delete valueSet->items;
        delete valueSet;
    }
};
using ValueSetPointer = std::unique_ptr<TCSProValueSet, DropValueSet>;

enum ValueSetKey { ValueSetLabel, ValueSetName };

const CSProKeyFinder& valueSetKeys()
{
    static const CSProKeyFinder keys { QLatin1String("Label"), QLatin1String("Name") };
    return keys;
}

// Length of a key that begins a line, with its "=": "VALUE=", "NAME=".
constexpr int ValueKeyLength = 6;
constexpr int NameKeyLength = 5;

bool isValueLine(QStringView line)
{
    return line.startsWith(QLatin1String("VALUE="), Qt::CaseInsensitive);
}

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

/*
 * Walks the lines of one section and fills a value set. An entry stays pending until the next value
 * line or the end of the section, because a name line may still make it special.
 */
class ValueSetReader {
public:
    ValueSetReader(TCSPro& parser, TCSProValueSet& valueSet)
        : m_parser(parser)
        , m_valueSet(valueSet)
    {
    }

    void read(const CSProSection& section)
    {
        for (const QStringView line : section) {
            if (isValueLine(line)) {
                storePending();
                readValueLine(line.mid(ValueKeyLength));
            } else if (m_pending && isNameLine(line)) {
                readNameLine(line.mid(NameKeyLength));
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
            m_parser.processOtherRanges(&m_valueSet, m_pending.get());
        } else {
            m_valueSet.addItem(m_pending.release());
        }
    }

    void readValueLine(QStringView value)
    {
        m_pending = std::make_unique<TValueSetItem>();
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
            m_pending->code =
                value.mid(colon).toString(); // kept: the ":" stays with the high bound
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
        m_pending->type = 0;
        const auto comma = value.indexOf(QLatin1Char(','));
        if (comma > 0) {
            // Kept: the name loses its last character and the rest still begins with the comma, so
            // "MISSING,Special" is not recognised and "MISSING ,Special" is.
            const QString name = value.left(comma - 1).toString().toUpper();
            const QString rest = value.mid(comma).toString().toUpper();
            if (rest == CSProWordSpecial)
                m_pending->special = true;
            if (name == CSProWordMissing)
                markSpecial(1, &TCSProItem::missingCode);
            else if (name == CSProWordNotAppl)
                markSpecial(2, &TCSProItem::notApplicableCode);
        }
        TESSEL_DEBUG << "5. myValueSetItem->special " << m_pending->special;
        TESSEL_DEBUG << "5. myValueSetItem->type " << m_pending->type;
    }

    void markSpecial(int type, QString TCSProItem::*code)
    {
        m_pending->type = type;
        m_pending->special = true;
        if (m_parser.lastItem)
            m_parser.lastItem->*code = m_pending->code;
    }

    TCSPro& m_parser;
    TCSProValueSet& m_valueSet;
    std::unique_ptr<TValueSetItem> m_pending;
};

// First code of a value set that \a isWanted accepts; empty when there is none.
template <typename Predicate> QString firstCode(const TCSProValueSet& valueSet, Predicate isWanted)
{
    const auto& items = qAsConst(*valueSet.items);
    const auto found = std::find_if(items.begin(), items.end(),
        [&](const TValueSetItem* item) { return isWanted(item->code); });
    return found == items.end() ? QString() : (*found)->code;
}

} // namespace

// Kept: an item keeps its first value set.
bool TCSPro::ignoresValueSets() const
{
    return lastItem && lastItem->getHasValueSet();
}

void TCSPro::ignoreValueSet(const Section& section, int headerLine)
{
    noteValueSet(CSProProblem::Kind::ValueSetIgnored, headerLine,
        csproValue(valueSetKeys().find(section)[ValueSetName]));
}

void TCSPro::readValueSet(const Section& section, int headerLine)
{
    using Kind = CSProProblem::Kind;
    const CSProKeyFinder::Lines line = valueSetKeys().find(section);
    ValueSetPointer valueSet(new TCSProValueSet);
    valueSet->label = csproValue(line[ValueSetLabel]);
    valueSet->name = csproValue(line[ValueSetName]);
    valueSet->isNumeric = lastItemNumeric;
    ValueSetReader(*this, *valueSet).read(section);

    if (!valueSet->validateItems(0) && !settleDecimalCodes(valueSet.get(), headerLine))
        return;
    if (!valueSet->validateItems(1)) {
        noteValueSet(Kind::CodesNotInteger, headerLine, valueSet->name,
            firstCode(*valueSet, [](const QString& code) { return !IsNumeric2(code); }));
        return;
    }
    valueSet->sortItems();
    if (!lastItem) {
        noteValueSet(Kind::ValueSetWithoutItem, headerLine, valueSet->name);
        return;
    }
    attachToItems(valueSet.release(), headerLine);
}

void TCSPro::processOtherRanges(TCSProValueSet* valueSet, TValueSetItem* entry)
{
    const QStringList pieces = entry->code.split(QLatin1Char(' '));
    for (const QString& piece : pieces)
        valueSet->addItem(makeEntry(piece.trimmed(), entry->label).release());
}

// False when the value set is to be dropped.
bool TCSPro::settleDecimalCodes(TCSProValueSet* valueSet, int line)
{
    using Kind = CSProProblem::Kind;
    m_decimalCase = { Kind::DecimalCodesDropped, line,
        lastItem ? lastItem->dictionaryName() : QString(), valueSet->name,
        firstCode(*valueSet, IsDecimal) };
    showMessageBoxDecimal(tr("<b>A decimal number was found</b>"),
        tr("Would you like to convert it to an integer number?"), tr("Caution"),
        QMessageBox::Question);
    switch (decimalButton) {
    case QMessageBox::YesToAll:
        decimalAnswer = 1;
        break;
    case QMessageBox::NoToAll:
        decimalAnswer = 2;
        break;
    default:
        break;
    }
    switch (decimalButton) {
    case QMessageBox::Yes:
    case QMessageBox::YesToAll:
        valueSet->itemsAsNumberZero();
        m_decimalCase.kind = Kind::DecimalCodesConverted;
        m_problems.append(m_decimalCase);
        return true;
    case QMessageBox::No:
    case QMessageBox::NoToAll:
        m_problems.append(m_decimalCase);
        return false;
    default:
        return true;
    }
}

void TCSPro::attachToItems(TCSProValueSet* valueSet, int line)
{
    const int firstIndex = lastItem->firstOccurrenceIndex;
    if (firstIndex == 0) {
        // Kept: when the file's first item is repeated, its last occurrence alone gets the set.
        if (lastItem->occurrence > 1)
            noteValueSet(CSProProblem::Kind::ValueSetOnLastOccurrence, line, valueSet->name);
        lastItem->addValueSet(valueSet);
        return;
    }
    lastItem->addValueSet(valueSet);
    for (int i = items->size() - 1; i >= 0; --i) {
        TCSProItem* item = items->at(i);
        if (item->firstOccurrenceIndex != firstIndex)
            break;
        if (!item->getHasValueSet())
            *item->valueSets = *lastItem->valueSets; // shares the list's one allocation
    }
}

void TCSPro::showMessageBoxDecimal(const QString& text, const QString& informativeText,
    const QString& title, QMessageBox::Icon icon)
{
    if (decimalAnswer == 1 || decimalAnswer == 2)
        return;
    decimalButton = m_decimalQuestion ? m_decimalQuestion(m_decimalCase)
                                      : showMessageBox(text, informativeText, title, icon);
}

void TCSPro::showMessageBoxUndefined(const QString& text, const QString& informativeText,
    const QString& title, QMessageBox::Icon icon)
{
    if (undefinedAnswer == 1 || undefinedAnswer == 2)
        return;
    undefinedButton = showMessageBox(text, informativeText, title, icon);
}
