#include "reading/CSProListing.h"

#include "listing/CodeRange.h"
#include "reading/ValueTypes.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>

#include <memory>

namespace {

SpecialCode specialOf(const TValueSetItem& entry)
{
    if (!entry.special)
        return SpecialCode::None;
    switch (entry.type) {
    case 1:
        return SpecialCode::Missing;
    case 2:
        return SpecialCode::NotApplicable;
    case 3:
        return SpecialCode::Refused;
    default:
        return SpecialCode::Default;
    }
}

ListedValueSet listValueSet(const TCSProValueSet& valueSet, const TCSPro& dictionary)
{
    ListedValueSet listed;
    listed.name = valueSet.name;
    listed.label = dictionary.labelText(valueSet.label);
    listed.note = orNull(valueSet.note());
    listed.codes.reserve(valueSet.getCount());
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        const CSProValueDetail& detail = valueSet.detail(entry);
        if (detail.hasRemarks()) {
            listed.details.insert(
                listed.codes.size(), { orNull(detail.note), orNull(detail.image) });
        }
        listed.codes.append({ entry->code, detail.highCode, dictionary.labelText(entry->label),
            specialOf(*entry) });
    }
    return listed;
}

// Occurrences share their value sets, so the codes and the range of one are those of all.
class ValueSetLister {
public:
    explicit ValueSetLister(const TCSPro& dictionary)
        : m_dictionary(dictionary)
    {
    }

    void listFor(const TCSProVariable& variable, ListedField& field)
    {
        if (*variable.item->valueSets != m_valueSets)
            list(*variable.item->valueSets);
        field.valueSets = m_listed;
        if (!variable.isString())
            m_range.applyTo(field);
    }

private:
    void list(const QList<TCSProValueSet*>& valueSets)
    {
        m_valueSets = valueSets;
        m_listed.clear();
        for (const TCSProValueSet* valueSet : valueSets)
            m_listed.append(listValueSet(*valueSet, m_dictionary));
        m_range = CodeRange::of(m_listed);
    }

    const TCSPro& m_dictionary;
    QList<TCSProValueSet*> m_valueSets;
    QVector<ListedValueSet> m_listed;
    CodeRange m_range;
};

ListedRecord listRecord(const TCSProRecord& record, const TCSPro& dictionary)
{
    ListedRecord listed;
    listed.name = record.name;
    listed.label = dictionary.labelText(record.label);
    listed.recordType = record.recordTypeValue;
    listed.level = record.level;
    listed.maxRecords = record.maxRecords;
    listed.isRequired = record.required.compare(QLatin1String("No"), Qt::CaseInsensitive) != 0;
    listed.length = record.recordLen;
    listed.note = orNull(record.note);
    return listed;
}

ListedField listField(const TOxSourceField& source, const TCSProVariable& variable,
    const TCSPro& dictionary, ValueSetLister& valueSets)
{
    const TCSProItem& item = *variable.item;
    const CSProItemDetail& detail = item.detail();
    ListedField field;
    field.item = item.dictionaryName;
    field.occurrence = item.occurrence;
    field.name = dictionary.nameOfOccurrence(item, source.fieldName);
    // The field's own is that of the language which the file was opened with.
    field.label =
        dictionary.languages().isEmpty() ? source.fieldLabel : dictionary.labelText(item.label);
    field.occurrenceLabel = orNull(dictionary.labelText(detail.occurrenceLabel));
    field.isIdentification = item.record == dictionary.commonRecord;
    if (item.record && !field.isIdentification)
        field.record = item.record->name;
    if (detail.parent)
        field.parent = detail.parent->dictionaryName;
    field.type = valueTypeOf(source.getFieldType());
    field.start = source.start;
    field.length = source.length;
    field.decimals = item.decimal; // the source field's are lost under the established rules
    field.level = detail.level;
    field.isZeroFilled = item.isZeroFill;
    field.hasDecimalChar = item.hasDecimalChar;
    field.isSubItem = item.isSubItem != 0;
    field.missing = orNull(source.missingValue);
    field.notApplicable = orNull(source.notApplicableValue);
    field.note = orNull(detail.note);
    if (!variable.isString()) {
        field.min = orNull(source.minValue);
        field.max = orNull(source.maxValue);
        if (dictionary.reading() == CSProReading::AsWritten)
            field.rangeSource = RangeSource::Length; // unless a value set has one
    }
    valueSets.listFor(variable, field);
    return field;
}

} // namespace

Listing listFields(const QString& file, TCSProDataImport& importer)
{
    const TCSPro& dictionary = *importer.dictionary;
    Listing listing;
    listing.file = file;
    listing.kind = ListingKind::CSPro;
    listing.name = dictionary.name;
    listing.label = dictionary.labelText(dictionary.label);
    listing.encoding = QString::fromLatin1(dictionary.textEncoding());
    for (const CSProLanguage& language : dictionary.languages()) {
        listing.languages.append(language.name);
        listing.languageLabels.append(language.label);
    }
    for (const CSProLevel& level : dictionary.levels())
        listing.levels.append(level.name);
    if (!dictionary.note().isEmpty())
        listing.notes.append(dictionary.note());
    listing.version = dictionary.version;
    listing.recordTypeStart = dictionary.recordTypeStart;
    listing.recordTypeLength = dictionary.recordTypeLen;
    for (const TCSProRecord* record : qAsConst(*dictionary.records))
        listing.records.append(listRecord(*record, dictionary));
    TOxDataProvider provider;
    provider.genericGetFieldsFrom(&importer);
    const std::unique_ptr<TOxRecord> tree(provider.recordTree);
    ValueSetLister valueSets(dictionary);
    listing.fields.reserve(provider.fields->size());
    for (int i = 0; i < provider.fields->size(); ++i) {
        const std::unique_ptr<TOxSourceField> source(provider.fields->at(i));
        const auto& variable = static_cast<const TCSProVariable&>(*importer.getField(i));
        listing.fields.append(listField(*source, variable, dictionary, valueSets));
    }
    return listing;
}

QVector<Listing> listLanguages(const QString& file, TCSProDataImport& importer)
{
    TCSPro& dictionary = *importer.dictionary;
    QVector<Listing> listings;
    for (const CSProLanguage& language : dictionary.languages()) {
        dictionary.setLanguage(language.name);
        listings.append(listFields(file, importer));
    }
    if (listings.isEmpty())
        listings.append(listFields(file, importer));
    return listings;
}
