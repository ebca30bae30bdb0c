#include "reading/StatListing.h"

#include "listing/CodeRange.h"

#include "text/ShownText.h"
#include "reading/ValueTypes.h"

#include <model_Tessel/DataImport.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/StatInput.h>

#include <QHash>

#include <memory>

namespace {

// ---- as written

Measure measureOf(readstat_measure_t measure)
{
    switch (measure) {
    case READSTAT_MEASURE_NOMINAL:
        return Measure::Nominal;
    case READSTAT_MEASURE_ORDINAL:
        return Measure::Ordinal;
    case READSTAT_MEASURE_SCALE:
        return Measure::Scale;
    default:
        return Measure::Untold;
    }
}

ListedValueSet listLabels(const TStatLabelSet& labels, const TStatVariableDescription& variable)
{
    ListedValueSet listed;
    listed.name = labels.name;
    listed.codes.reserve(labels.labels.size());
    for (const TStatLabelledValue& entry : labels.labels) {
        listed.codes.append({ entry.value.text, QString(), entry.label,
            variable.isMissing(entry.value) ? SpecialCode::Missing : SpecialCode::None });
    }
    return listed;
}

void takeMissing(ListedField& field, const QVector<TStatMissingRange>& ranges)
{
    QStringList texts;
    for (const TStatMissingRange& range : ranges) {
        const bool isRange = range.low.text != range.high.text;
        field.missingRanges.append(
            { range.low.text, isRange ? range.high.text : QString(), QString() });
        texts.append(
            isRange ? range.low.text + QLatin1String("..") + range.high.text : range.low.text);
    }
    field.missing = joinedCodes(texts);
}

// Variables of one label set and the same missing values share its codes, and what follows of them.
class LabelSetLister {
public:
    explicit LabelSetLister(const TStatFileDescription& file)
        : m_file(file)
    {
    }

    void listFor(const TStatVariableDescription& variable, ListedField& field)
    {
        if (variable.labelSet < 0)
            return;
        const QString key = QStringLiteral("%1 %2 %3")
                                .arg(QString::number(variable.labelSet),
                                    QString::number(int(field.type)), field.missing);
        const auto known = m_known.constFind(key);
        if (known != m_known.constEnd()) {
            field.valueSets = known->valueSets;
            known->range.applyTo(field);
            return;
        }
        field.valueSets.append(listLabels(m_file.labelSets.at(variable.labelSet), variable));
        const CodeRange range = variable.isString() ? CodeRange() : CodeRange::of(field.valueSets);
        range.applyTo(field);
        m_known.insert(key, { field.valueSets, range });
    }

private:
    struct Listed {
        QVector<ListedValueSet> valueSets;
        CodeRange range;
    };

    const TStatFileDescription& m_file;
    QHash<QString, Listed> m_known;
};

ListedField listVariable(
    const TStatVariableDescription& variable, TStatFileKind kind, LabelSetLister& labelSets)
{
    ListedField field;
    field.name = variable.name;
    field.item = variable.name;
    field.label = variable.label;
    field.type = valueTypeOf(variable.typeName(kind));
    field.length = variable.width(kind);
    field.decimals = variable.decimals();
    field.format = variable.format;
    field.measure = measureOf(variable.measure);
    if (!variable.notes.isEmpty())
        field.note = variable.notes.join(QLatin1Char('\n'));
    takeMissing(field, variable.missingRanges);
    labelSets.listFor(variable, field);
    return field;
}

void listWritten(const TStatFileDescription& file, Listing& listing)
{
    LabelSetLister labelSets(file);
    listing.fields.reserve(file.variables.size());
    for (const TStatVariableDescription& variable : file.variables)
        listing.fields.append(listVariable(variable, file.kind, labelSets));
}

// ---- as the importers give it

// "1 Male\t2 Female\t": each entry's code ends at its first blank.
ListedValueSet cutLabels(const QString& valueLabels)
{
    ListedValueSet listed;
    const QStringList entries = valueLabels.split(QLatin1Char('\t'), Qt::SkipEmptyParts);
    for (const QString& entry : entries) {
        const int blank = entry.indexOf(QLatin1Char(' '));
        listed.codes.append({ entry.left(blank), QString(), entry.mid(blank + 1) });
    }
    return listed;
}

void listEstablished(TDataImport& importer, Listing& listing)
{
    QHash<const QChar*, QVector<ListedValueSet>> known; // by the text that variables share
    TOxDataProvider provider;
    provider.genericGetFieldsFrom(&importer);
    const std::unique_ptr<TOxRecord> tree(provider.recordTree);
    for (const TOxSourceField* sourceField : qAsConst(*provider.fields)) {
        const std::unique_ptr<const TOxSourceField> source(sourceField);
        ListedField field;
        field.name = source->fieldName;
        field.item = source->fieldName;
        field.label = source->fieldLabel;
        field.type = valueTypeOf(source->getFieldType());
        field.length = source->length;
        field.min = source->minValue;
        field.max = source->maxValue;
        if (!source->valueLabels.isEmpty()) {
            QVector<ListedValueSet>& valueSets = known[source->valueLabels.constData()];
            if (valueSets.isEmpty())
                valueSets.append(cutLabels(source->valueLabels));
            field.valueSets = valueSets;
        }
        listing.fields.append(field);
    }
}

QString versionText(const TStatFileDescription& file)
{
    const QString name = file.kind == TStatFileKind::Spss
        ? QStringLiteral("SPSS system file, format %1")
        : QStringLiteral("Stata data file, format %1");
    return name.arg(file.formatVersion);
}

} // namespace

Listing listStatFile(const DictionaryFile& file)
{
    const TStatFileDescription& description = *file.description;
    Listing listing;
    listing.file = file.path;
    listing.kind = description.kind == TStatFileKind::Spss ? ListingKind::Spss : ListingKind::Stata;
    listing.label = description.fileLabel;
    listing.version = versionText(description);
    listing.encoding = file.encoding;
    listing.rowCount = description.rowCount;
    listing.notes = description.notes;
    listing.input = file.input;
    if (file.importer)
        listEstablished(*file.importer, listing);
    else
        listWritten(description, listing);
    return listing;
}
