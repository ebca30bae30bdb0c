#include <model_Tessel/DictionaryBuilder_p.h>

#include <model_Tessel/Entity.h>
#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/Variable.h>

#include <QStringBuilder>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

// The variables of an SPSS or Stata file as it is written.
class WrittenFields final : public ImportedFields {
public:
    WrittenFields(TDataImport& unopened, const TStatFileDescription& file)
        : ImportedFields(unopened)
        , m_file(file)
    {
        setDataProviderLabel(file.fileLabel);
        fields->reserve(file.variables.size());
        for (const TStatVariableDescription& variable : file.variables)
            addField(variable);
    }

private:
    using Bounds = std::pair<QString, QString>;

    void addField(const TStatVariableDescription& variable)
    {
        auto* field = new TOxSourceField;
        fields->append(field);
        field->fieldName = variable.name;
        field->fieldLabel = variable.label;
        field->setFieldType(variable.typeName(m_file.kind));
        field->length = variable.width(m_file.kind);
        field->decimals = variable.decimals();
        field->dataProviderId = dataProviderId;
        takeMissing(*field, variable);
        takeBounds(*field, variable);
    }

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

// Builds of the written fields, which are the file's variables one by one.
class StatTreeBuilder final : public DictionaryTreeBuilder {
public:
    StatTreeBuilder(const WrittenFields& provider, const TStatFileDescription& file,
        const QVector<LookupDictionary>& lookups)
        : DictionaryTreeBuilder(provider, lookups)
        , m_file(file)
    {
    }

protected:
    void describeRoot() override
    {
        DictionaryTreeBuilder::describeRoot();
        root().setDocumentationEntity(m_file.notes.join(QLatin1Char('\n')));
        root().setNrElements(std::max<qint64>(m_file.rowCount, 0));
    }

    void addField(const TOxSourceField& source, int index) override
    {
        TOxVariable& variable = addVariable(root(), source);
        takeLabels(variable, m_file.variables.at(index).labelSet);
        takeBounds(variable, source);
    }

private:
    // The number of the label set is below 0 where there is none.
    void takeLabels(TOxVariable& variable, int set)
    {
        if (set < 0 || sharesLabels(variable, m_labelsOfSets[set]))
            return;
        for (const TStatLabelledValue& entry : m_file.labelSets.at(set).labels)
            addLabel(variable, entry.value.text, entry.label);
    }

    const TStatFileDescription& m_file;
    QHash<int, LabelList*> m_labelsOfSets;
};

std::unique_ptr<TDataImport> newImporter(const TStatFileDescription& file)
{
    if (file.kind == TStatFileKind::Spss)
        return std::make_unique<TSPSSDataImport>(file.path);
    return std::make_unique<TSTATADataImport>(file.path);
}

} // namespace

DictionaryPointer buildStatTree(
    const TStatFileDescription& file, const QVector<LookupDictionary>& lookups)
{
    const std::unique_ptr<TDataImport> importer = newImporter(file);
    const std::unique_ptr<QList<TGenericField*>> noFields(importer->fields);
    return StatTreeBuilder(WrittenFields(*importer, file), file, lookups).build();
}
