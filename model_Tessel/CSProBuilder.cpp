#include <model_Tessel/CSProBuilder_p.h>

#include <model_Tessel/Numbers_p.h>

#include <algorithm>
#include <stdexcept>

namespace {

// The format ends at 32,000 columns a record, so no dictionary comes near; a larger number of
// occurrences is a damaged file, which must not fill the memory.
constexpr int MaxFields = 500'000;

} // namespace

void CSProBuilder::DropItem::operator()(TCSProItem* item) const
{
    delete item->valueSets;
    delete item;
}

void CSProBuilder::DropValueSet::operator()(TCSProValueSet* valueSet) const
{
    if (!valueSet->linkedSet())
        qDeleteAll(*valueSet->items);
    delete valueSet->items;
    delete valueSet;
}

CSProBuilder::CSProBuilder(CSProModel& model, CSProFindings& findings)
    : m_model(model)
    , m_findings(findings)
{
}

CSProBuilder::~CSProBuilder() = default;

void CSProBuilder::setNote(const QString& note)
{
    m_findings.note = note;
}

int CSProBuilder::addLanguage(const CSProLanguage& language)
{
    m_findings.languages.append(language);
    return m_findings.languages.size() - 1;
}

void CSProBuilder::addLevel(const CSProLevel& level)
{
    m_findings.levels.append(level);
}

void CSProBuilder::addRelation(const CSProRelation& relation)
{
    m_findings.relations.append(relation);
}

void CSProBuilder::addRecord(std::unique_ptr<TCSProRecord> record)
{
    finishItem();
    record->level = m_findings.levels.size();
    m_model.currentRecord = record.release();
    const TCSProRecord& added = *m_model.currentRecord;
    m_model.records->append(m_model.currentRecord);
    TCSProRecord*& ofValue = m_model.recordsByValue[added.recordTypeValue];
    if (ofValue)
        report(Kind::RecordTypeRepeated, added.sourceLine, added.name, added.recordTypeValue);
    ofValue = m_model.currentRecord;
}

void CSProBuilder::addItem(ItemPointer item)
{
    finishItem();
    item->dictionaryName = item->name;
    if (!m_findings.levels.isEmpty())
        item->editDetail().level = m_findings.levels.size();
    if (item->len <= 0)
        report(Kind::ItemWithoutLength, item->sourceLine, item->name, QString::number(item->len));
    if (item->occurrences >= 1) {
        placeItem(std::move(item));
        return;
    }
    report(Kind::ItemDropped, item->sourceLine, item->name, QString::number(item->occurrences));
    passOverItem(*item);
}

void CSProBuilder::passOverItem(const TCSProItem& item)
{
    Q_UNUSED(item)
}

void CSProBuilder::finishItem()
{
}

void CSProBuilder::countFields(const TCSProItem& item, qint64 count)
{
    if (count > MaxFields - m_fieldCount) {
        report(Kind::TooManyItems, item.sourceLine, item.name, QString::number(MaxFields));
        throw std::length_error("too many items in a dictionary");
    }
    m_fieldCount += static_cast<int>(count);
}

void CSProBuilder::appendItem(TCSProItem* item)
{
    item->record = m_model.currentRecord;
    m_model.currentRecord->addItem(item);
    m_model.lastItem = item;
    m_model.items->append(item);
}

TCSProItem* CSProBuilder::copyOf(const TCSProItem& item, qint64 start)
{
    auto* copy = new TCSProItem;
    copy->label = item.label;
    copy->len = item.len;
    copy->isAlpha = item.isAlpha;
    copy->isSubItem = item.isSubItem;
    copy->decimal = item.decimal;
    copy->hasDecimalChar = item.hasDecimalChar;
    copy->dictionaryName = item.dictionaryName;
    copy->sourceLine = item.sourceLine;
    copy->start = columnWithin(IntColumns, start);
    return copy;
}

void CSProBuilder::beginLoad()
{
    m_firstProblem = m_findings.problems.size();
    m_fieldCount = 0;
}

void CSProBuilder::finishLoad()
{
    finishItem();
    std::stable_sort(m_findings.problems.begin() + m_firstProblem, m_findings.problems.end(),
        [](const CSProProblem& first, const CSProProblem& second) {
            return first.line < second.line;
        });
}

void CSProBuilder::report(Kind kind, int line, const QString& name, const QString& text)
{
    m_findings.problems.append({ kind, line, name, QString(), text });
}

void CSProBuilder::reportValueSet(Kind kind, int line, const QString& valueSet, const QString& text)
{
    const TCSProItem* item = m_model.lastItem;
    m_findings.problems.append(
        { kind, line, item ? item->dictionaryName : QString(), valueSet, text });
}
