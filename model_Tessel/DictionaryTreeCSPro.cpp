#include <model_Tessel/DictionaryBuilder_p.h>

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/Variable.h>

#include <QStringBuilder>

namespace {

// The set that has the entries; linked sets count as one.
const TCSProValueSet* ownerOfEntries(const TCSProValueSet* valueSet)
{
    return valueSet && valueSet->linkedSet() ? valueSet->linkedSet() : valueSet;
}

// The set whose values an item has first, null when it has none.
const TCSProValueSet* valueSetOf(const TCSProItem& item)
{
    for (const TCSProValueSet* valueSet : qAsConst(*item.valueSets)) {
        if (!valueSet->items->isEmpty())
            return ownerOfEntries(valueSet);
    }
    return nullptr;
}

bool isFieldOf(TGenericField* field, const TOxSourceField& source)
{
    return field && field->name == source.fieldName && field->getGroup() == source.record;
}

// Tells of records, items and value sets what the fields do not.
class CSProTreeBuilder final : public DictionaryTreeBuilder {
public:
    CSProTreeBuilder(const TOxDataProvider& provider, const TCSPro& cspro,
        const QVector<LookupDictionary>& lookups)
        : DictionaryTreeBuilder(provider, lookups)
        , m_cspro(cspro)
    {
    }

protected:
    void describeRoot() override
    {
        DictionaryTreeBuilder::describeRoot();
        if (!m_cspro.name.isEmpty())
            root().setName(m_cspro.name);
        root().setLabel(m_cspro.labelText(m_cspro.label));
        root().setDocumentationEntity(m_cspro.note());
    }

    void addEntities() override
    {
        for (const TCSProRecord* record : qAsConst(*m_cspro.records)) {
            TOxEntity& entity = addEntity(record->name, record->recordTypeValue);
            entity.setLabel(m_cspro.labelText(record->label));
            entity.setDocumentationEntity(record->note);
            if (record->level > 0)
                entity.setLevel(record->level);
            m_entitiesByRecord.insert(record, &entity);
        }
        TOxEntity*& common = m_entitiesByName[m_cspro.commonRecord->name];
        if (!common)
            common = &root();
    }

    void addField(const TOxSourceField& source, int index) override
    {
        const TCSProItem* item = itemOf(source, index);
        if (!item) {
            DictionaryTreeBuilder::addField(source, index);
            return;
        }
        TOxEntity& entity = *m_entitiesByRecord.value(item->record, &root());
        TOxVariable& variable = addVariable(entity, source);
        describeItem(variable, *item);
        takeLabels(variable, source, *item);
        takeRanges(variable, source, *item);
    }

private:
    // The importer has its fields in the order of the source fields, unless a host changed that.
    const TCSProItem* itemOf(const TOxSourceField& source, int index) const
    {
        TGenericField* field = m_importer->getField(index);
        if (!isFieldOf(field, source))
            field = m_importer->fieldByName(source.fieldName);
        if (!isFieldOf(field, source))
            return nullptr;
        const auto* variable = dynamic_cast<const TCSProVariable*>(field);
        return variable ? variable->item : nullptr;
    }

    void describeItem(TOxVariable& variable, const TCSProItem& item) const
    {
        variable.setName(m_cspro.nameOfOccurrence(item, variable.getName()));
        const CSProItemDetail& detail = item.detail();
        const QString ofOccurrence = m_cspro.labelText(detail.occurrenceLabel);
        if (!ofOccurrence.isEmpty()) {
            variable.setLabel(
                variable.getLabel() % QLatin1String(" (") % ofOccurrence % QLatin1Char(')'));
        }
        variable.setDocumentation(detail.note);
        variable.setDecimals(item.decimal);
        if (detail.level > 0)
            variable.setLevel(detail.level);
        if (m_lookupNames.contains(item.dictionaryName))
            variable.getMetadataVariables()->setLookup(true);
    }

    void takeLabels(TOxVariable& variable, const TOxSourceField& source, const TCSProItem& item)
    {
        const TCSProValueSet* valueSet = valueSetOf(item);
        if (!valueSet)
            takeJoinedLabels(variable, source);
        else if (!sharesLabels(variable, m_labelsOfSets[valueSet]))
            addLabels(variable, *valueSet);
    }

    void addLabels(TOxVariable& variable, const TCSProValueSet& valueSet) const
    {
        for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
            const QString& highCode = valueSet.detail(entry).highCode;
            const QString value =
                highCode.isNull() ? entry->code : QString(entry->code % TokenColon % highCode);
            addLabel(variable, value, m_cspro.labelText(entry->label));
        }
    }

    void takeRanges(TOxVariable& variable, const TOxSourceField& source, const TCSProItem& item)
    {
        if (source.getFieldType() == TypeNameString)
            return;
        MetadataVariables& metadata = *variable.getMetadataVariables();
        if (m_cspro.reading() == CSProReading::AsWritten) {
            if (const TCSProValueSet* valueSet = boundingSetOf(item))
                takeSetRanges(metadata, *valueSet);
        }
        if (metadata.getRange()->isEmpty())
            takeBounds(variable, source);
    }

    // The occurrences of an item share its sets.
    const TCSProValueSet* boundingSetOf(const TCSProItem& item)
    {
        if (m_boundedSets != *item.valueSets) {
            m_boundedSets = *item.valueSets;
            m_boundingSet = ownerOfEntries(item.boundingValueSet());
        }
        return m_boundingSet;
    }

    void takeSetRanges(MetadataVariables& metadata, const TCSProValueSet& valueSet)
    {
        const auto known = m_rangesOfSets.constFind(&valueSet);
        if (known == m_rangesOfSets.constEnd()) {
            addRanges(metadata, valueSet);
            const bool isEmpty = metadata.getRange()->isEmpty();
            m_rangesOfSets.insert(&valueSet, isEmpty ? nullptr : metadata.getRange());
        } else if (*known) {
            delete metadata.getRange();
            metadata.setRange(*known);
        }
    }

    static void addRanges(MetadataVariables& metadata, const TCSProValueSet& valueSet)
    {
        for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
            if (entry->special)
                continue;
            const QString& highCode = valueSet.detail(entry).highCode;
            addRange(metadata, entry->code, highCode.isNull() ? entry->code : highCode);
        }
    }

    const TCSPro& m_cspro;
    QHash<const TCSProRecord*, TOxEntity*> m_entitiesByRecord;
    // Variables of one value set share what is made of it.
    QHash<const TCSProValueSet*, LabelList*> m_labelsOfSets;
    QHash<const TCSProValueSet*, QList<Range*>*> m_rangesOfSets; // null: it has none
    QList<TCSProValueSet*> m_boundedSets; // of the last item
    const TCSProValueSet* m_boundingSet = nullptr;
};

} // namespace

DictionaryPointer buildCSProTree(
    const TOxDataProvider& provider, const TCSPro& cspro, const QVector<LookupDictionary>& lookups)
{
    return CSProTreeBuilder(provider, cspro, lookups).build();
}
