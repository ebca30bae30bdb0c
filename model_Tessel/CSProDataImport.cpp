#include <model_Tessel/CSProDataImport.h>

#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/Numbers_p.h>
#include <model_Tessel/UtilStrings.h>

#include <QStringBuilder>

#include <algorithm>
#include <string>

namespace {

// Codes of up to nine digits fit an int; longer numbers become real fields.
constexpr int LongestInteger = 9;

// What a longer "Len" says is damage: no record has more columns.
constexpr int LongestRecord = 32'000;

const QString providerType = QStringLiteral("CSPRO"); // clazy:exclude=non-pod-global-static

TGenericField::FieldType fieldTypeOf(const TCSProItem& item)
{
    if (item.isAlpha != 0)
        return TGenericField::StringType;
    return item.decimal != 0 || item.len > LongestInteger ? TGenericField::RealType
                                                          : TGenericField::IntegerType;
}

QString decimalsOf(const TCSProItem& item)
{
    if (item.isAlpha != 0)
        return QString();
    // Kept: the number is one character, so it never reads as a number and values are not scaled.
    return item.decimal != 0 ? QString(QChar(static_cast<ushort>(item.decimal)))
                             : QStringLiteral("0");
}

int digitsBeforePoint(const TCSProItem& item)
{
    if (item.decimal <= 0 || item.getHasValueSet())
        return item.len;
    if (item.hasDecimalChar)
        return item.len - 1;
    return item.len == item.decimal ? 1 : item.len - item.decimal;
}

// What a field takes from its value sets. Occurrences share their sets, so the text of one is the
// text of all.
class ValueSetSummary {
public:
    void summarize(const TCSProItem& item, int fieldType)
    {
        if (*item.valueSets == m_valueSets && fieldType == m_fieldType)
            return;
        m_valueSets = *item.valueSets;
        m_fieldType = fieldType;
        m_isNumeric = fieldType != TGenericField::StringType;
        m_min = 0;
        m_max = 0;
        m_labels.clear();
        m_hasMax = m_isNumeric && startBounds();
        for (const TCSProValueSet* valueSet : qAsConst(m_valueSets))
            addEntries(*valueSet);
        m_labels.squeeze();
    }

    void applyTo(TGenericField& field) const
    {
        field.valueLabels = m_labels;
        field.minValue = shortNumberText(m_min);
        if (m_hasMax)
            field.maxValue = shortNumberText(m_max);
    }

private:
    // Kept: the bounds start from the first and the last entry, special or not.
    bool startBounds()
    {
        const TCSProValueSet* first = m_valueSets.constFirst();
        if (first->getCount() == 0)
            return false;
        bool lowIsNumber = false;
        bool highIsNumber = false;
        const double low = first->items->constFirst()->code.toDouble(&lowIsNumber);
        const double high = first->items->constLast()->code.toDouble(&highIsNumber);
        if (!lowIsNumber || !highIsNumber)
            return false;
        m_min = low;
        m_max = high;
        return true;
    }

    void addEntries(const TCSProValueSet& valueSet)
    {
        int size = m_labels.size();
        for (const TValueSetItem* entry : qAsConst(*valueSet.items))
            size += entry->code.size() + entry->label.size() + 2;
        m_labels.reserve(size);
        for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
            if (entry->special)
                continue;
            QString code = entry->code;
            if (m_isNumeric) {
                bool isNumber = false;
                const double number = numberOf(code, &isNumber);
                if (!isNumber)
                    continue;
                m_min = std::min(m_min, number);
                m_max = std::max(m_max, number);
                if (m_fieldType == TGenericField::IntegerType)
                    code = shortNumberText(number);
            }
            m_labels += code % QLatin1Char(' ') % entry->label % QLatin1Char('\t');
        }
    }

    static double numberOf(const QString& code, bool* isNumber)
    {
        const int integer = integerOf(code, isNumber);
        return *isNumber ? integer : code.toDouble(isNumber);
    }

    QList<TCSProValueSet*> m_valueSets;
    int m_fieldType = TGenericField::NoType;
    bool m_isNumeric = false;
    double m_min = 0;
    double m_max = 0;
    bool m_hasMax = false;
    QString m_labels;
};

} // namespace

TCSProDataImport::TCSProDataImport()
    : groups(new QStringList)
{
}

TCSProDataImport::TCSProDataImport(const QString& dictionaryFile)
    : TDataImport(dictionaryFile)
    , groups(new QStringList)
{
    TESSEL_DEBUG << "TCSProDataImport Constructor";
    initDataImport();
}

// Kept: the dictionary, the groups and the fields stay alive for the hosts that hold them.
TCSProDataImport::~TCSProDataImport() = default;

QString TCSProDataImport::getDataProviderId()
{
    return providerType + TokenUnderscore + sourceName;
}

QString TCSProDataImport::getDataProviderType()
{
    return providerType;
}

bool TCSProDataImport::openFile()
{
    openState = 1;
    importRatio = 1.0;
    openDataImport();
    openRead(getSourceName());
    return true;
}

QStringList* TCSProDataImport::selectLayoutSource()
{
    TESSEL_DEBUG << "TCSProDataImport - selectLayoutSource";
    return TDataImport::selectLayoutSource();
}

bool TCSProDataImport::isMultiple()
{
    return getRecordTypeSize() > 0;
}

int TCSProDataImport::getGroupCount()
{
    return groups->size();
}

QString TCSProDataImport::getGroupName(int index)
{
    return groups->value(index);
}

QString TCSProDataImport::getGroupValue(int index)
{
    const QString group = getGroupName(index);
    for (const QString& entry : qAsConst(*groups)) {
        if (entry.contains(group))
            return entry;
    }
    return QLatin1String("");
}

int TCSProDataImport::getRecordTypeIndex(QString value)
{
    if (!dictionary)
        return -1;
    int index = dictionary->getRecordsCount() - 1;
    while (index >= 0 && dictionary->getRecord(index)->recordTypeValue != value)
        --index;
    return index;
}

int TCSProDataImport::getRecordTypeStart()
{
    return recordTypeStart;
}

int TCSProDataImport::getRecordTypeSize()
{
    return recordTypeLen;
}

int TCSProDataImport::getRecordTypeIndex()
{
    const int count = dictionary ? dictionary->getRecordsCount() : 0;
    for (int index = 0; index < count; ++index) {
        if (dictionary->getRecord(index)->recordTypeValue == currentRecordType)
            return index;
    }
    return -1;
}

void TCSProDataImport::openRead(const QString& dictionaryFile)
{
    dictionary = new TCSPro;
    dictionary->setTextCodec(m_codec);
    dictionary->setDecimalQuestion(m_decimalQuestion);
    dictionary->loadFromFile(dictionaryFile);
    recordTypeStart = dictionary->recordTypeStart;
    recordTypeLen = dictionary->recordTypeLen;
    groups->clear();
    for (const TCSProRecord* record : qAsConst(*dictionary->records))
        groups->append(record->name + TokenEquals + record->recordTypeValue);
    dictionaryPending = false;
    copyDataFromDictionary();
}

void TCSProDataImport::copyDataFromDictionary()
{
    ValueSetSummary summary;
    const bool multiple = isMultiple();
    const int count = dictionary ? dictionary->getItemsCount() : 0;
    fields->reserve(fields->size() + count);
    for (int index = 0; index < count; ++index) {
        TCSProItem* item = dictionary->getItem(index);
        auto* field = new TCSProVariable(this);
        field->item = item;
        if (multiple && item->record)
            field->group = item->record->name;
        field->fieldType = fieldTypeOf(*item);
        field->decimals = decimalsOf(*item);
        field->name = item->name;
        field->label = item->label;
        field->length = item->len;
        field->start = item->start;
        getVarMissingValue(field);
        getNotApplicable(field);
        if (item->isAlpha == 0) {
            field->minValue = QStringLiteral("0");
            field->maxValue = StringOfChar('9', std::min(digitsBeforePoint(*item), LongestRecord));
        }
        if (item->getHasValueSet()) {
            summary.summarize(*item, field->fieldType);
            summary.applyTo(*field);
        }
        addField(field);
    }
}

void TCSProDataImport::getVarMissingValue(TGenericField* field)
{
    const auto* variable = dynamic_cast<TCSProVariable*>(field);
    if (variable && variable->item)
        field->missingValue = variable->item->missingCode;
}

void TCSProDataImport::getNotApplicable(TGenericField* field)
{
    const auto* variable = dynamic_cast<TCSProVariable*>(field);
    if (variable && variable->item)
        field->notApplicableValue = variable->item->notApplicableCode;
}

QString TCSProDataImport::StringOfChar(char character, int count)
{
    return ::StringOfChar(character, count);
}

void TCSProDataImport::setTextCodec(const QByteArray& name)
{
    m_codec = name;
}

void TCSProDataImport::setDecimalQuestion(const CSProDecimalQuestion& question)
{
    m_decimalQuestion = question;
}

TCSProVariable::TCSProVariable(TDataImport* owner)
    : TGenericField(owner)
{
}

TCSProVariable::~TCSProVariable() = default;

bool TCSProVariable::isMissing()
{
    if (conversionFailed)
        return true;
    return item && !item->missingCode.isEmpty() && currentText() == item->missingCode;
}

bool TCSProVariable::isNotApplicable()
{
    return item && !item->notApplicableCode.isEmpty() && currentText() == item->notApplicableCode;
}

bool TCSProVariable::isBlank()
{
    return currentText().trimmed().isEmpty();
}

QString TCSProVariable::getGroup()
{
    return group;
}

void TCSProVariable::setAsString(const QString& value)
{
    const std::wstring wide = value.toStdWString();
    copyText(wide.data(), wide.size());
    try {
        assignNumber(value, !item || !item->hasDecimalChar);
        return;
    } catch (OxErrorManager* error) {
        delete error;
    } catch (...) { // the values below tell of it
    }
    integerValue = 0;
    realValue = NoRealValue;
}
