#include "FieldListing.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>

namespace {

QString typeName(int fieldType)
{
    switch (fieldType) {
    case TGenericField::IntegerType:
        return QStringLiteral("integer");
    case TGenericField::RealType:
        return QStringLiteral("real");
    default:
        return QStringLiteral("string");
    }
}

QString orNull(const QString& text)
{
    return text.isEmpty() ? QString() : text;
}

// The lowest and the highest code as they are written; the library's own have six digits.
void takeRange(ListedField& field)
{
    double lowest = 0;
    double highest = 0;
    QString min;
    QString max;
    for (const ListedCode& entry : qAsConst(field.codes)) {
        bool isNumber = false;
        const double number = entry.code.toDouble(&isNumber);
        if (!isNumber)
            continue;
        if (min.isNull() || number < lowest) {
            lowest = number;
            min = entry.code;
        }
        if (max.isNull() || number > highest) {
            highest = number;
            max = entry.code;
        }
    }
    if (!min.isNull()) {
        field.min = min;
        field.max = max;
    }
}

void takeCodes(ListedField& field, const TCSProItem& item)
{
    if (!item.getHasValueSet())
        return;
    const TCSProValueSet& valueSet = *item.getValueSet(0);
    field.valueSet = valueSet.name;
    field.codes.reserve(valueSet.getCount());
    for (const TValueSetItem* entry : qAsConst(*valueSet.items))
        field.codes.append({ entry->code, entry->label });
}

ListedField listField(const TCSProVariable& variable, const TCSPro& dictionary)
{
    const TCSProItem& item = *variable.item;
    ListedField field;
    field.item = item.dictionaryName();
    field.occurrence = item.occurrence;
    field.name = field.item;
    if (item.occurrence > 0)
        field.name += QLatin1Char('_') + QString::number(item.occurrence);
    field.label = variable.label;
    if (item.record && item.record != dictionary.commonRecord)
        field.record = item.record->name;
    field.type = typeName(variable.fieldType);
    field.start = variable.start;
    field.length = variable.length;
    field.decimals = item.decimal;
    field.hasDecimalChar = item.hasDecimalChar;
    field.isSubItem = item.isSubItem != 0;
    field.missing = orNull(variable.missingValue);
    field.notApplicable = orNull(variable.notApplicableValue);
    takeCodes(field, item);
    if (!variable.isString()) {
        field.min = orNull(variable.minValue);
        field.max = orNull(variable.maxValue);
        takeRange(field);
    }
    return field;
}

} // namespace

Listing listFields(const QString& file, TCSProDataImport& importer)
{
    const TCSPro& dictionary = *importer.dictionary;
    Listing listing;
    listing.file = file;
    listing.name = dictionary.name;
    listing.label = dictionary.label;
    listing.version = dictionary.version;
    listing.recordTypeStart = dictionary.recordTypeStart;
    listing.recordTypeLength = dictionary.recordTypeLen;
    for (const TCSProRecord* record : qAsConst(*dictionary.records)) {
        listing.records.append({ record->name, record->label, record->recordTypeValue,
            record->maxRecords, record->recordLen });
    }
    listing.fields.reserve(importer.fields->size());
    for (const TGenericField* field : qAsConst(*importer.fields))
        listing.fields.append(listField(*static_cast<const TCSProVariable*>(field), dictionary));
    return listing;
}
