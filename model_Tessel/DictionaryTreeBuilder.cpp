#include <model_Tessel/DictionaryBuilder_p.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/DataImport.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/Variable.h>

#include <QFileInfo>

#include <cmath>
#include <optional>

namespace {

std::optional<double> numberOf(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

void describe(TOxVariable& variable, const TOxSourceField& source)
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

void describeImport(MetadataVariables& metadata, const TOxSourceField& source)
{
    metadata.setField(source.fieldName);
    metadata.setStart(source.start);
    metadata.setLength(source.length);
}

} // namespace

ImportedFields::ImportedFields(TDataImport& importer)
{
    genericGetFieldsFrom(&importer);
}

ImportedFields::~ImportedFields()
{
    qDeleteAll(*fields);
    delete recordTree->references;
    delete recordTree;
}

DictionaryTreeBuilder::DictionaryTreeBuilder(
    const TOxDataProvider& provider, const QVector<LookupDictionary>& lookups)
    : m_provider(provider)
    , m_importer(provider.getImportData())
{
    addLookups(lookups);
}

DictionaryTreeBuilder::~DictionaryTreeBuilder() = default;

DictionaryPointer DictionaryTreeBuilder::build()
{
    describeSource();
    describeRoot();
    addEntities();
    const int count = m_provider.fields ? m_provider.fields->size() : 0;
    for (int index = 0; index < count; ++index)
        addField(*m_provider.fields->at(index), index);
    return std::move(m_dictionary);
}

void DictionaryTreeBuilder::addLookups(const QVector<LookupDictionary>& lookups)
{
    for (const LookupDictionary& lookup : lookups) {
        m_dictionary->getMetadataDictionary()->addLookUp(new LookupDictionary(lookup));
        m_lookupNames.insert(lookup.getName());
    }
}

// The provider knows the types in its own list alone, the importer knows its own.
void DictionaryTreeBuilder::describeSource()
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

void DictionaryTreeBuilder::describeRoot()
{
    QStringList names = { QFileInfo(m_provider.layoutFileName).completeBaseName(),
        QFileInfo(m_provider.dataFileName).completeBaseName(), m_provider.getDataProviderId() };
    names.removeAll(QString());
    root().setName(names.value(0));
    root().setLabel(m_provider.getDataProviderLabel());
}

void DictionaryTreeBuilder::addEntities()
{
    const int count = m_importer ? m_importer->getGroupCount() : 0;
    for (int index = 0; index < count; ++index)
        addEntity(m_importer->getGroupName(index), m_importer->getGroupValue(index));
}

void DictionaryTreeBuilder::addField(const TOxSourceField& source, int index)
{
    Q_UNUSED(index)
    TOxVariable& variable = addVariable(entityOf(source), source);
    takeJoinedLabels(variable, source);
    takeBounds(variable, source);
}

TOxEntity& DictionaryTreeBuilder::root() const
{
    return *m_dictionary->getRoot();
}

TOxEntity& DictionaryTreeBuilder::addEntity(const QString& name, const QString& recType)
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

TOxEntity& DictionaryTreeBuilder::entityOf(const TOxSourceField& source)
{
    if (source.record.isEmpty())
        return root();
    TOxEntity* entity = m_entitiesByName.value(source.record);
    return entity ? *entity : addEntity(source.record, QString());
}

TOxVariable& DictionaryTreeBuilder::addVariable(TOxEntity& entity, const TOxSourceField& source)
{
    auto* variable = new TOxVariable;
    entity.addVariables(variable);
    variable->setEntity(entity.getName());
    variable->setRecType(entity.getRecType());
    describe(*variable, source);
    MetadataVariables& metadata = *variable->getMetadataVariables();
    describeImport(metadata, source);
    metadata.setLookup(m_lookupNames.contains(source.fieldName));
    metadata.setRecord(&entity == &root() ? source.record : entity.getName());
    return *variable;
}

// Each entry is a code, a blank and a label. Entries end with a tab, or a newline once a label was
// asked for.
void DictionaryTreeBuilder::takeJoinedLabels(TOxVariable& variable, const TOxSourceField& source)
{
    const QString& text = source.valueLabels;
    if (text.isEmpty() || sharesLabels(variable, m_labelsOfTexts[text.constData()]))
        return;
    const QChar end = QLatin1Char(text.contains(QLatin1Char('\t')) ? '\t' : '\n');
    const QVector<QStringRef> entries = text.splitRef(end, Qt::SkipEmptyParts);
    for (const QStringRef& entry : entries) {
        const int blank = entry.indexOf(QLatin1Char(' '));
        addLabel(variable, entry.left(blank).toString(),
            blank < 0 ? QString() : entry.mid(blank + 1).toString());
    }
}

void DictionaryTreeBuilder::takeBounds(TOxVariable& variable, const TOxSourceField& source)
{
    if (source.getFieldType() != TypeNameString)
        addRange(*variable.getMetadataVariables(), source.minValue, source.maxValue);
}

bool DictionaryTreeBuilder::sharesLabels(TOxVariable& variable, LabelList*& labels)
{
    if (!labels) {
        labels = variable.getValueLabelElementList();
        return false;
    }
    delete variable.getValueLabelElementList();
    variable.setValueLabelElementList(labels);
    return true;
}

void DictionaryTreeBuilder::addLabel(
    TOxVariable& variable, const QString& value, const QString& label)
{
    auto* element = new ValueLabelElement;
    variable.addValueLabelElement(element);
    element->setValue(value);
    element->setLabel(label);
}

void DictionaryTreeBuilder::addRange(
    MetadataVariables& metadata, const QString& low, const QString& high)
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
