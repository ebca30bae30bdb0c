#include <model_Tessel/DictionaryBuilder.h>

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/Variable.h>

#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QStringBuilder>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

namespace {

std::optional<double> numberOf(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

// The set whose values an item has first, null when it has none; linked sets count as one.
const TCSProValueSet* valueSetOf(const TCSProItem* item)
{
    if (!item)
        return nullptr;
    for (const TCSProValueSet* valueSet : qAsConst(*item->valueSets)) {
        if (!valueSet->items->isEmpty())
            return valueSet->linkedSet ? valueSet->linkedSet : valueSet;
    }
    return nullptr;
}

void addLabel(TOxVariable& variable, const QString& value, const QString& label)
{
    auto* element = new ValueLabelElement;
    variable.addValueLabelElement(element);
    element->setValue(value);
    element->setLabel(label);
}

void addRange(MetadataVariables& metadata, const QString& low, const QString& high)
{
    const std::optional<double> min = numberOf(low);
    const std::optional<double> max = numberOf(high);
    if (!min || !max)
        return;
    auto* range = new Range;
    metadata.addItemRange(range);
    range->setRangeMin(*min);
    range->setRangeMax(*max);
}

// The value labels and the ranges of variables. Those of one value set are made once.
class Codes {
public:
    explicit Codes(const TCSPro* cspro)
        : m_cspro(cspro)
    {
    }

    void takeLabels(TOxVariable& variable, const TOxSourceField& source, const TCSProItem* item)
    {
        if (const TCSProValueSet* valueSet = valueSetOf(item)) {
            if (!sharesLabels(variable, m_labelsOfSets[valueSet]))
                addLabels(variable, *valueSet);
        } else if (!source.valueLabels.isEmpty()) {
            if (!sharesLabels(variable, m_labelsOfTexts[source.valueLabels.constData()]))
                addJoinedLabels(variable, source.valueLabels);
        }
    }

    // Those of one label set; its number is below 0 where there is none.
    void takeLabels(TOxVariable& variable, const QVector<TStatLabelSet>& sets, int set)
    {
        if (set < 0 || sharesLabels(variable, m_labelsOfNumberedSets[set]))
            return;
        for (const TStatLabelledValue& entry : sets.at(set).labels)
            addLabel(variable, entry.value.text, entry.label);
    }

    void takeRanges(
        MetadataVariables& metadata, const TOxSourceField& source, const TCSProItem* item)
    {
        if (item && m_cspro->reading() == CSProReading::AsWritten) {
            if (const TCSProValueSet* valueSet = boundingSetOf(*item))
                takeSetRanges(metadata, *valueSet);
        }
        if (metadata.getRange()->isEmpty())
            addRange(metadata, source.minValue, source.maxValue);
    }

private:
    // Gives the variable the labels of an earlier one; false for the first, which fills its own.
    static bool sharesLabels(TOxVariable& variable, QList<ValueLabelElement*>*& labels)
    {
        if (!labels) {
            labels = variable.getValueLabelElementList();
            return false;
        }
        delete variable.getValueLabelElementList();
        variable.setValueLabelElementList(labels);
        return true;
    }

    void addLabels(TOxVariable& variable, const TCSProValueSet& valueSet) const
    {
        for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
            const QString& highCode = valueSet.detail(entry).highCode;
            const QString value =
                highCode.isNull() ? entry->code : QString(entry->code % TokenColon % highCode);
            addLabel(variable, value, m_cspro->labelText(entry->label));
        }
    }

    // Each entry is a code, a blank and a label. Entries end with a tab, or a newline once a label
    // was asked for.
    static void addJoinedLabels(TOxVariable& variable, const QString& text)
    {
        const QChar end = QLatin1Char(text.contains(QLatin1Char('\t')) ? '\t' : '\n');
        const QVector<QStringRef> entries = text.splitRef(end, Qt::SkipEmptyParts);
        for (const QStringRef& entry : entries) {
            const int blank = entry.indexOf(QLatin1Char(' '));
            addLabel(variable, entry.left(blank).toString(),
                blank < 0 ? QString() : entry.mid(blank + 1).toString());
        }
    }

    // Linked sets count as one; the occurrences of an item share its sets.
    const TCSProValueSet* boundingSetOf(const TCSProItem& item)
    {
        if (m_boundedSets != *item.valueSets) {
            m_boundedSets = *item.valueSets;
            m_boundingSet = item.boundingValueSet();
            if (m_boundingSet && m_boundingSet->linkedSet)
                m_boundingSet = m_boundingSet->linkedSet;
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

    const TCSPro* m_cspro; // what the importer read; null for other importers
    QHash<const TCSProValueSet*, QList<ValueLabelElement*>*> m_labelsOfSets;
    QHash<int, QList<ValueLabelElement*>*> m_labelsOfNumberedSets;
    QList<TCSProValueSet*> m_boundedSets; // of the last item
    const TCSProValueSet* m_boundingSet = nullptr;
    // By the text that fields share; to compare texts would read each once a field.
    QHash<const QChar*, QList<ValueLabelElement*>*> m_labelsOfTexts;
    QHash<const TCSProValueSet*, QList<Range*>*> m_rangesOfSets; // null: it has none
};

// The fields of an importer, deleted with what else the provider made.
class ImportedFields : public TOxDataProvider {
public:
    explicit ImportedFields(TDataImport& importer)
    {
        genericGetFieldsFrom(&importer);
    }

    ~ImportedFields() override
    {
        qDeleteAll(*fields);
        delete recordTree->references;
        delete recordTree;
    }

private:
    Q_DISABLE_COPY(ImportedFields)
};

// The variables of an SPSS or Stata file as it is written.
class WrittenFields : public ImportedFields {
public:
    WrittenFields(TDataImport& unopened, const TStatFileDescription& file)
        : ImportedFields(unopened)
        , m_file(file)
    {
        setDataProviderLabel(file.fileLabel);
        fields->reserve(file.variables.size());
        for (const TStatVariableDescription& variable : file.variables) {
            auto* field = new TOxSourceField;
            fields->append(field);
            field->fieldName = variable.name;
            field->fieldLabel = variable.label;
            field->setFieldType(variable.typeName(file.kind));
            field->length = variable.width(file.kind);
            field->decimals = variable.decimals();
            field->dataProviderId = dataProviderId;
            takeMissing(*field, variable);
            takeBounds(*field, variable);
        }
    }

private:
    using Bounds = std::pair<QString, QString>;

    static void takeMissing(TOxSourceField& field, const TStatVariableDescription& variable)
    {
        const auto single =
            std::find_if(variable.missingRanges.cbegin(), variable.missingRanges.cend(),
                [](const TStatMissingRange& range) { return range.low.text == range.high.text; });
        if (single != variable.missingRanges.cend())
            field.missingValue = single->low.text;
    }

    // Variables of one label set and the same missing values have the same bounds. Where labels
    // mark some values of a scale alone they bound nothing.
    void takeBounds(TOxSourceField& field, const TStatVariableDescription& variable)
    {
        if (variable.labelSet < 0 || variable.isString()
            || variable.measure == READSTAT_MEASURE_SCALE)
            return;
        QString key = QString::number(variable.labelSet);
        for (const TStatMissingRange& range : variable.missingRanges)
            key += QLatin1Char(' ') % range.low.text % QLatin1Char(' ') % range.high.text;
        if (!m_bounds.contains(key))
            m_bounds.insert(key, boundsOf(variable));
        const Bounds bounds = m_bounds.value(key);
        field.minValue = bounds.first;
        field.maxValue = bounds.second;
    }

    Bounds boundsOf(const TStatVariableDescription& variable) const
    {
        const TStatValue* lowest = nullptr;
        const TStatValue* highest = nullptr;
        for (const TStatLabelledValue& entry : m_file.labelSets.at(variable.labelSet).labels) {
            const TStatValue& value = entry.value;
            if (variable.isMissing(value))
                continue;
            if (!lowest || value.number < lowest->number)
                lowest = &value;
            if (!highest || value.number > highest->number)
                highest = &value;
        }
        return lowest != highest ? Bounds(lowest->text, highest->text) : Bounds();
    }

    const TStatFileDescription& m_file;
    QHash<QString, Bounds> m_bounds;
};

const TCSPro* csproOf(const TDataImport* importer)
{
    const auto* cspro = dynamic_cast<const TCSProDataImport*>(importer);
    return cspro ? cspro->dictionary : nullptr;
}

class Builder {
public:
    // The file is what the provider's fields were made of, variable by variable; null: something
    // else.
    Builder(const TOxDataProvider& provider, const QVector<LookupDictionary>& lookups,
        const TStatFileDescription* file = nullptr)
        : m_provider(provider)
        , m_importer(provider.getImportData())
        , m_cspro(csproOf(m_importer))
        , m_file(file)
        , m_codes(m_cspro)
    {
        addLookups(lookups);
    }

    DictionaryPointer build()
    {
        describeSource();
        describeRoot();
        if (m_cspro)
            addRecords();
        else if (m_importer)
            addGroups();
        addFields();
        return std::move(m_dictionary);
    }

private:
    TOxEntity& root() const
    {
        return *m_dictionary->getRoot();
    }

    void addLookups(const QVector<LookupDictionary>& lookups)
    {
        for (const LookupDictionary& lookup : lookups) {
            m_dictionary->getMetadataDictionary()->addLookUp(new LookupDictionary(lookup));
            m_lookupNames.insert(lookup.getName());
        }
    }

    // The provider knows the types in its own list alone, the importer knows its own.
    void describeSource()
    {
        QString type = m_provider.getDataProviderType();
        if (type.isEmpty() && m_importer)
            type = m_importer->getDataProviderType();
        QString file = m_provider.getDataFileName();
        if (file.isEmpty())
            file = m_provider.getLayoutFileName();
        Datasource& source = *m_dictionary->getMetadataDictionary()->getDatasource();
        source.setType(type);
        source.setFile(file);
    }

    void describeRoot()
    {
        QString label = m_provider.getDataProviderLabel();
        QStringList names = { QFileInfo(m_provider.layoutFileName).completeBaseName(),
            QFileInfo(m_provider.dataFileName).completeBaseName(), m_provider.getDataProviderId() };
        if (m_cspro) {
            names.prepend(m_cspro->name);
            label = m_cspro->labelText(m_cspro->label);
            root().setDocumentationEntity(m_cspro->note());
        }
        if (m_file) {
            root().setDocumentationEntity(m_file->notes.join(QLatin1Char('\n')));
            root().setNrElements(std::max<qint64>(m_file->rowCount, 0));
        }
        names.removeAll(QString());
        root().setName(names.value(0));
        root().setLabel(label);
    }

    TOxEntity& addEntity(const QString& name, const QString& recType)
    {
        auto* entity = new TOxEntity;
        root().addChildren(entity);
        entity->setName(name);
        entity->setRecType(recType);
        entity->setParent(root().getName());
        entity->setLevel(1);
        TOxEntity*& ofName = m_entitiesByName[name];
        if (!ofName)
            ofName = entity;
        return *entity;
    }

    void addRecords()
    {
        for (const TCSProRecord* record : qAsConst(*m_cspro->records)) {
            TOxEntity& entity = addEntity(record->name, record->recordTypeValue);
            entity.setLabel(m_cspro->labelText(record->label));
            entity.setDocumentationEntity(record->note);
            if (record->level > 0)
                entity.setLevel(record->level);
            m_entitiesByRecord.insert(record, &entity);
        }
        TOxEntity*& common = m_entitiesByName[m_cspro->commonRecord->name];
        if (!common)
            common = &root();
    }

    void addGroups()
    {
        const int count = m_importer->getGroupCount();
        for (int index = 0; index < count; ++index)
            addEntity(m_importer->getGroupName(index), m_importer->getGroupValue(index));
    }

    void addFields()
    {
        if (!m_provider.fields)
            return;
        for (int index = 0; index < m_provider.fields->size(); ++index) {
            const TOxSourceField& source = *m_provider.fields->at(index);
            const TCSProItem* item = itemOf(source, index);
            TOxEntity& entity = entityOf(source, item);
            auto* variable = new TOxVariable;
            entity.addVariables(variable);
            variable->setEntity(entity.getName());
            variable->setRecType(entity.getRecType());
            describe(*variable, source);
            describeImport(*variable->getMetadataVariables(), source);
            variable->getMetadataVariables()->setRecord(
                &entity == &root() ? source.record : entity.getName());
            if (item)
                describeItem(*variable, *item);
            if (m_file)
                m_codes.takeLabels(
                    *variable, m_file->labelSets, m_file->variables.at(index).labelSet);
            else
                m_codes.takeLabels(*variable, source, item);
            if (source.getFieldType() != TypeNameString)
                m_codes.takeRanges(*variable->getMetadataVariables(), source, item);
        }
    }

    // The importer has its fields in the order of the source fields, unless a host changed that.
    const TCSProItem* itemOf(const TOxSourceField& source, int index) const
    {
        if (!m_cspro)
            return nullptr;
        TGenericField* field = m_importer->getField(index);
        if (!isFieldOf(field, source))
            field = m_importer->fieldByName(source.fieldName);
        if (!isFieldOf(field, source))
            return nullptr;
        const auto* variable = dynamic_cast<const TCSProVariable*>(field);
        return variable ? variable->item : nullptr;
    }

    static bool isFieldOf(TGenericField* field, const TOxSourceField& source)
    {
        return field && field->name == source.fieldName && field->getGroup() == source.record;
    }

    TOxEntity& entityOf(const TOxSourceField& source, const TCSProItem* item)
    {
        if (item)
            return *m_entitiesByRecord.value(item->record, &root());
        if (source.record.isEmpty())
            return root();
        TOxEntity* entity = m_entitiesByName.value(source.record);
        return entity ? *entity : addEntity(source.record, QString());
    }

    static void describe(TOxVariable& variable, const TOxSourceField& source)
    {
        variable.setName(source.fieldName);
        variable.setLabel(source.fieldLabel);
        variable.setVarType(source.getFieldType());
        variable.setField(source.fieldName);
        variable.setStart(source.start);
        variable.setDataProvider(source.dataProviderId);
        variable.setNotappl(numberOf(source.notApplicableValue).value_or(0));
        variable.setMissing(numberOf(source.missingValue).value_or(0));
        variable.setDecimals(source.decimals);
        variable.setSize(source.length);
    }

    void describeImport(MetadataVariables& metadata, const TOxSourceField& source) const
    {
        metadata.setField(source.fieldName);
        metadata.setStart(source.start);
        metadata.setLength(source.length);
        metadata.setLookup(m_lookupNames.contains(source.fieldName));
    }

    // What the item says and the source field does not, under some reading rules or any.
    void describeItem(TOxVariable& variable, const TCSProItem& item) const
    {
        if (item.occurrence > 0 && m_cspro->reading() == CSProReading::Established) {
            variable.setName(
                item.dictionaryName % TokenUnderscore % QString::number(item.occurrence));
        }
        const QString ofOccurrence = m_cspro->labelText(item.occurrenceLabel);
        if (!ofOccurrence.isEmpty()) {
            variable.setLabel(
                variable.getLabel() % QLatin1String(" (") % ofOccurrence % QLatin1Char(')'));
        }
        variable.setDocumentation(item.note);
        variable.setDecimals(item.decimal);
        if (item.level > 0)
            variable.setLevel(item.level);
        if (m_lookupNames.contains(item.dictionaryName))
            variable.getMetadataVariables()->setLookup(true);
    }

    const TOxDataProvider& m_provider;
    TDataImport* m_importer;
    const TCSPro* m_cspro; // what the importer read; null for other importers
    const TStatFileDescription* m_file;
    Codes m_codes;
    DictionaryPointer m_dictionary { new Dictionary };
    QSet<QString> m_lookupNames;
    QHash<QString, TOxEntity*> m_entitiesByName; // the first of each name
    QHash<const TCSProRecord*, TOxEntity*> m_entitiesByRecord;
};

// Deletes what records hold; what several share is deleted once.
class Release {
public:
    void releaseTree(TOxEntity* top)
    {
        std::vector<TOxEntity*> pending = { top };
        while (!pending.empty()) {
            const std::unique_ptr<TOxEntity> entity(pending.back());
            pending.pop_back();
            if (!entity)
                continue;
            releaseList(
                entity->getChildren(), [&pending](TOxEntity* child) { pending.push_back(child); });
            releaseList(entity->getVariables(),
                [this](TOxVariable* variable) { releaseVariable(variable); });
        }
    }

private:
    void releaseVariable(TOxVariable* variable)
    {
        if (!variable)
            return;
        releaseList(variable->getValueLabelElementList(), std::default_delete<ValueLabelElement>());
        MetadataVariables* metadata = variable->getMetadataVariables();
        if (isFirst(metadata)) {
            releaseList(metadata->getRange(), std::default_delete<Range>());
            delete metadata;
        }
        delete variable;
    }

    template <typename Object, typename Job> void releaseList(QList<Object*>* list, Job job)
    {
        if (!isFirst(list))
            return;
        std::for_each(list->cbegin(), list->cend(), job);
        delete list;
    }

    bool isFirst(const void* object)
    {
        const int count = m_released.size();
        if (object)
            m_released.insert(object);
        return m_released.size() > count;
    }

    QSet<const void*> m_released;
};

} // namespace

Dictionary* buildDictionary(
    const TOxDataProvider& provider, const QVector<LookupDictionary>& lookups)
{
    return Builder(provider, lookups).build().release();
}

Dictionary* buildDictionary(TDataImport& importer, const QVector<LookupDictionary>& lookups)
{
    return buildDictionary(ImportedFields(importer), lookups);
}

Dictionary* buildDictionary(
    const TStatFileDescription& file, const QVector<LookupDictionary>& lookups)
{
    std::unique_ptr<TDataImport> importer;
    if (file.kind == TStatFileKind::Spss)
        importer = std::make_unique<TSPSSDataImport>(file.path);
    else
        importer = std::make_unique<TSTATADataImport>(file.path);
    const std::unique_ptr<QList<TGenericField*>> noFields(importer->fields);
    const WrittenFields provider(*importer, file);
    return Builder(provider, lookups, &file).build().release();
}

void releaseEntity(TOxEntity* entity)
{
    Release().releaseTree(entity);
}

void releaseDictionary(Dictionary* dictionary)
{
    if (!dictionary)
        return;
    releaseEntity(dictionary->getRoot());
    if (const MetadataDictionary* metadata = dictionary->getMetadataDictionary()) {
        if (const Datasource* source = metadata->getDatasource()) {
            delete source->getMetadataDataSource();
            delete source;
        }
        if (const QList<LookupDictionary*>* lookups = metadata->getLookUp()) {
            qDeleteAll(*lookups);
            delete lookups;
        }
        delete metadata;
    }
    delete dictionary;
}
