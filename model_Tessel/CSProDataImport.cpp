#include <model_Tessel/CSProDataImport.h>

#include <model_Tessel/CSProLengthRange_p.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/Numbers_p.h>
#include <model_Tessel/UtilStrings.h>

#include <QStringBuilder>

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>

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

QString decimalsOf(const TCSProItem& item, const CSProReadingRules& rules)
{
    if (item.isAlpha != 0)
        return QString();
    if (rules.scaledValues)
        return QString::number(item.decimal);
    // Kept: the number is one character, so it never reads as a number and values are not scaled.
    return item.decimal != 0 ? asCharacter(item.decimal) : QStringLiteral("0");
}

int digitsBeforePoint(const TCSProItem& item)
{
    qint64 digits = item.len;
    if (item.decimal > 0 && !item.getHasValueSet()) {
        if (item.hasDecimalChar)
            digits -= 1;
        else
            digits = item.len == item.decimal ? 1 : digits - item.decimal;
    }
    return int(std::clamp<qint64>(digits, 0, LongestRecord));
}

// The range of a numeric field that no value set bounds; the texts of one width are shared.
class LengthLimits {
public:
    explicit LengthLimits(const CSProReadingRules& rules)
        : m_rules(rules)
    {
    }

    // Rule: what fits the columns, or nines from 0 on.
    void applyTo(TGenericField& field, const TCSProItem& item)
    {
        if (!m_rules.lengthRanges) {
            field.minValue = QStringLiteral("0");
            field.maxValue = StringOfChar('9', digitsBeforePoint(item));
            return;
        }
        const auto width = std::make_tuple(item.len, item.decimal, item.hasDecimalChar);
        if (!m_range || width != m_width) {
            m_width = width;
            m_range = CSProLengthRange(item);
        }
        field.minValue = m_range->lowest;
        field.maxValue = m_range->highest;
    }

private:
    const CSProReadingRules& m_rules;
    std::tuple<int, int, bool> m_width;
    std::optional<CSProLengthRange> m_range; // of that width
};

// Without a point in the text the implied decimals scale it; a comma counts as a point.
double scaledNumber(const QString& text, int decimals, bool* isNumber)
{
    QString number = text;
    number.replace(QLatin1Char(','), QLatin1Char('.'));
    const double value = number.toDouble(isNumber);
    return number.contains(QLatin1Char('.')) ? value : value / std::pow(10.0, decimals);
}

QString withoutTrailingBlanks(const QString& text)
{
    int size = text.size();
    while (size > 0 && text.at(size - 1) == QLatin1Char(' '))
        --size;
    return text.left(size);
}

// What a field takes from its value sets. Occurrences share their sets, so the text of one is the
// text of all.
class ValueSetSummary {
public:
    explicit ValueSetSummary(const TCSPro& dictionary)
        : m_dictionary(dictionary)
        , m_rules(dictionary.readingRules())
    {
    }

    void summarize(const TCSProItem& item, int fieldType)
    {
        if (*item.valueSets == m_valueSets && fieldType == m_fieldType)
            return;
        m_valueSets = *item.valueSets;
        m_fieldType = fieldType;
        m_isNumeric = fieldType != TGenericField::StringType;
        m_min = 0;
        m_max = 0;
        m_hasBounds = false;
        m_labels.clear();
        if (m_isNumeric && !m_rules.specials)
            startBounds();
        for (const TCSProValueSet* valueSet : qAsConst(m_valueSets)) {
            // Rule: several sets are alternatives, of which the first with numbers has the bounds.
            m_isBounded = m_hasBounds && m_rules.specials && m_rules.allValueSets;
            addEntries(*valueSet);
        }
        m_labels.squeeze();
    }

    void applyTo(TGenericField& field) const
    {
        field.valueLabels = m_labels;
        if (m_hasBounds || !m_isNumeric || !m_rules.specials)
            field.minValue = shortNumberText(m_min);
        if (m_hasBounds)
            field.maxValue = shortNumberText(m_max);
    }

private:
    // Kept: without the rule the bounds start from the first and the last entry, special or not.
    void startBounds()
    {
        const TCSProValueSet* first = m_valueSets.constFirst();
        if (first->getCount() == 0)
            return;
        bool lowIsNumber = false;
        bool highIsNumber = false;
        const double low = first->items->constFirst()->code.toDouble(&lowIsNumber);
        const double high = first->items->constLast()->code.toDouble(&highIsNumber);
        if (!lowIsNumber || !highIsNumber)
            return;
        m_min = low;
        m_max = high;
        m_hasBounds = true;
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
            QString highCode = entry->highCode;
            if (m_isNumeric && !highCode.isNull() && !isFiniteNumber(highCode))
                continue; // no range, so its low bound is none either
            if (m_isNumeric && (!takeNumber(code) || (!highCode.isNull() && !takeNumber(highCode))))
                continue;
            if (!highCode.isNull())
                code += TokenColon % highCode;
            m_labels +=
                code % QLatin1Char(' ') % m_dictionary.labelText(entry->label) % QLatin1Char('\t');
        }
    }

    // Widens the bounds by a code, which takes the form that the field's type has; false for no
    // number.
    bool takeNumber(QString& code)
    {
        bool isNumber = false;
        const int integer = integerOf(code, &isNumber);
        const double number = isNumber ? integer : code.toDouble(&isNumber);
        if (!isNumber)
            return false;
        if (!m_isBounded)
            widen(number);
        if (m_fieldType == TGenericField::IntegerType)
            code = shortNumberText(number);
        return true;
    }

    void widen(double number)
    {
        const bool isFirst = m_rules.specials && !m_hasBounds;
        m_min = isFirst ? number : std::min(m_min, number);
        m_max = isFirst ? number : std::max(m_max, number);
        m_hasBounds = m_hasBounds || isFirst;
    }

    const TCSPro& m_dictionary;
    const CSProReadingRules& m_rules;
    QList<TCSProValueSet*> m_valueSets;
    int m_fieldType = TGenericField::NoType;
    bool m_isNumeric = false;
    double m_min = 0;
    double m_max = 0;
    bool m_hasBounds = false;
    bool m_isBounded = false; // by an earlier set
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
    beginOpening();
    openRead(getSourceName());
    return true;
}

void TCSProDataImport::openData(const QByteArray& bytes)
{
    beginOpening();
    beginReading();
    dictionary->loadFromData(bytes);
    finishReading();
}

void TCSProDataImport::beginOpening()
{
    openState = 1;
    importRatio = 1.0;
    openDataImport();
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
    beginReading();
    dictionary->loadFromFile(dictionaryFile);
    finishReading();
}

void TCSProDataImport::beginReading()
{
    dictionary = new TCSPro;
    dictionary->setReadingRules(m_rules);
    dictionary->setTextCodec(m_codec);
    dictionary->setDecimalQuestion(m_decimalQuestion);
}

void TCSProDataImport::finishReading()
{
    dictionary->setLanguage(m_language);
    recordTypeStart = dictionary->recordTypeStart;
    recordTypeLen = dictionary->recordTypeLen;
    if (!groups)
        groups = new QStringList;
    groups->clear();
    for (const TCSProRecord* record : qAsConst(*dictionary->records))
        groups->append(record->name + TokenEquals + record->recordTypeValue);
    dictionaryPending = false;
    copyDataFromDictionary();
}

void TCSProDataImport::copyDataFromDictionary()
{
    if (!dictionary)
        return;
    const CSProReadingRules& rules = dictionary->readingRules();
    ValueSetSummary summary(*dictionary);
    LengthLimits limits(rules);
    const bool multiple = isMultiple();
    const int count = dictionary->getItemsCount();
    fields->reserve(fields->size() + count);
    for (int index = 0; index < count; ++index) {
        TCSProItem* item = dictionary->getItem(index);
        auto* field = new TCSProVariable(this);
        field->item = item;
        if (multiple && item->record)
            field->group = item->record->name;
        field->fieldType = fieldTypeOf(*item);
        field->decimals = decimalsOf(*item, rules);
        field->name = item->name;
        field->label = dictionary->labelText(item->label);
        field->length = item->len;
        field->start = item->start;
        field->readsCodes = rules.specials;
        field->scalesValues = rules.scaledValues;
        if (rules.scaledValues) // for assignments through the base
            field->hasDecimalChar = item->hasDecimalChar;
        getVarMissingValue(field);
        getNotApplicable(field);
        if (item->isAlpha == 0)
            limits.applyTo(*field, *item);
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

void TCSProDataImport::setReadingRules(const CSProReadingRules& rules)
{
    m_rules = rules;
}

void TCSProDataImport::setLanguage(const QString& name)
{
    m_language = name;
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
    return item && isCode(item->missingCode);
}

bool TCSProVariable::isNotApplicable()
{
    return item && isCode(item->notApplicableCode);
}

// Rule: the text is the code to the blank; or they are the same number, or the same text without
// the blanks that data lines lose at their end.
bool TCSProVariable::isCode(const QString& code) const
{
    if (code.isEmpty())
        return false;
    const QString value = currentText();
    if (value == code || !readsCodes)
        return value == code;
    if (isString())
        return withoutTrailingBlanks(value) == withoutTrailingBlanks(code);
    bool valueIsNumber = false;
    bool codeIsNumber = false;
    const double valueNumber =
        scaledNumber(value, scalesValues ? item->decimal : 0, &valueIsNumber);
    const double codeNumber = code.toDouble(&codeIsNumber);
    if (valueIsNumber && codeIsNumber)
        return valueNumber == codeNumber;
    return value.trimmed().isEmpty() && code.trimmed().isEmpty();
}

bool TCSProVariable::isBlank()
{
    return currentText().trimmed().isEmpty();
}

QString TCSProVariable::getGroup()
{
    return group;
}

void TCSProVariable::setAsString(QString value)
{
    copyText(value.toStdWString().c_str());
    try {
        if (scalesValues)
            assignScaled(value);
        else
            assignNumber(value, !item || !item->hasDecimalChar);
        return;
    } catch (OxErrorManager* error) {
        delete error;
    } catch (...) { // the values below tell of it
    }
    integerValue = 0;
    realValue = NoRealValue;
}

void TCSProVariable::assignScaled(const QString& value)
{
    if (fieldType != RealType || isMissing() || isNotApplicable() || isBlank()) {
        assignNumber(value, false);
        return;
    }
    bool isNumber = false;
    const double number = scaledNumber(value, item ? item->decimal : 0, &isNumber);
    realValue = isNumber ? number : 0;
}
