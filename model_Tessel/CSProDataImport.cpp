#include <model_Tessel/CSProDataImport.h>

#include <model_Tessel/CSProFieldFiller_p.h>
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

const QString providerType = QStringLiteral("CSPRO"); // clazy:exclude=non-pod-global-static

// Without a point in the text the implied decimals scale it; a comma counts as a point.
double scaledNumber(const QString& text, int decimals, bool* isNumber)
{
    QString number = text;
    number.replace(QLatin1Char(','), QLatin1Char('.'));
    const double value = number.toDouble(isNumber);
    return number.contains(QLatin1Char('.')) ? value : value / std::pow(10.0, decimals);
}

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
    dictionary->setReading(m_reading);
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
    const std::unique_ptr<CSProFieldFiller> filler = CSProFieldFiller::create(*dictionary);
    const bool multiple = isMultiple();
    const int count = dictionary->getItemsCount();
    fields->reserve(fields->size() + count);
    for (int index = 0; index < count; ++index) {
        TCSProItem* item = dictionary->getItem(index);
        auto* field = new TCSProVariable(this);
        field->item = item;
        if (multiple && item->record)
            field->group = item->record->name;
        getVarMissingValue(field);
        getNotApplicable(field);
        filler->fill(*field, *item);
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

void TCSProDataImport::setReading(CSProReading reading)
{
    m_reading = reading;
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

// The text is the code to the blank; as written, they are the same number or the same text without
// the blanks that data lines lose at their end.
bool TCSProVariable::isCode(const QString& code) const
{
    if (code.isEmpty())
        return false;
    const QString value = currentText();
    if (value == code || !isAsWritten)
        return value == code;
    if (isString())
        return withoutTrailingBlanks(value) == withoutTrailingBlanks(code);
    bool valueIsNumber = false;
    bool codeIsNumber = false;
    const double valueNumber = scaledNumber(value, item->decimal, &valueIsNumber);
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
        if (isAsWritten)
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
