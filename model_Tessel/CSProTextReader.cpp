#include <model_Tessel/CSProTextReader_p.h>

#include <model_Tessel/Constants.h>

namespace {

// Keys of each kind of section, numbered by the enumeration before them.

enum DictionaryKey {
    DictionaryVersion,
    DictionaryLabel,
    DictionaryName,
    DictionaryRecordTypeStart,
    DictionaryRecordTypeLen,
    DictionaryPositions,
    DictionaryZeroFill,
    DictionaryDecimalChar
};

const CSProKeyFinder& dictionaryKeys()
{
    static const CSProKeyFinder keys { QLatin1String("Version"), QLatin1String("Label"),
        QLatin1String("Name"), QLatin1String("RecordTypeStart"), QLatin1String("RecordTypeLen"),
        QLatin1String("Positions"), QLatin1String("ZeroFill"), QLatin1String("DecimalChar") };
    return keys;
}

enum RecordKey {
    RecordLabel,
    RecordName,
    RecordTypeValue,
    RecordRequired,
    RecordMaxRecords,
    RecordRecordLen
};

const CSProKeyFinder& recordKeys()
{
    static const CSProKeyFinder keys { QLatin1String("Label"), QLatin1String("Name"),
        QLatin1String("RecordTypeValue"), QLatin1String("Required"), QLatin1String("MaxRecords"),
        QLatin1String("RecordLen") };
    return keys;
}

enum ItemKey {
    ItemLabel,
    ItemName,
    ItemStart,
    ItemLen,
    ItemDataType,
    ItemItemType,
    ItemOccurrences,
    ItemDecimal,
    ItemDecimalChar,
    ItemZeroFill
};

const CSProKeyFinder& itemKeys()
{
    static const CSProKeyFinder keys { QLatin1String("Label"), QLatin1String("Name"),
        QLatin1String("Start"), QLatin1String("Len"), QLatin1String("DataType"),
        QLatin1String("ItemType"), QLatin1String("Occurrences"), QLatin1String("Decimal"),
        QLatin1String("DecimalChar"), QLatin1String("ZeroFill") };
    return keys;
}

} // namespace

CSProTextReader::CSProTextReader(CSProModel& model, CSProBuilder& builder)
    : m_model(model)
    , m_builder(builder)
{
}

CSProTextReader::~CSProTextReader() = default;

const CSProKeyFinder& CSProTextReader::namedKeys()
{
    static const CSProKeyFinder keys { QLatin1String("Label"), QLatin1String("Name") };
    return keys;
}

void CSProTextReader::beginLoad()
{
}

void CSProTextReader::beginSection()
{
}

void CSProTextReader::readOutside(int line, QStringView text)
{
    Q_UNUSED(line)
    Q_UNUSED(text)
}

void CSProTextReader::readOther(
    const QString& word, const QString& header, const CSProSection& section)
{
    Q_UNUSED(word)
    Q_UNUSED(header)
    Q_UNUSED(section)
}

void CSProTextReader::reportValue(Kind kind, const Values& values, std::size_t key)
{
    Q_UNUSED(kind)
    Q_UNUSED(values)
    Q_UNUSED(key)
}

void CSProTextReader::readMore(const Values& values)
{
    Q_UNUSED(values)
}

void CSProTextReader::readMore(const Values& values, TCSProRecord& record)
{
    Q_UNUSED(values)
    Q_UNUSED(record)
}

void CSProTextReader::readMore(const Values& values, TCSProItem& item)
{
    Q_UNUSED(values)
    Q_UNUSED(item)
}

void CSProTextReader::reportMissingStart(const TCSProItem& item)
{
    Q_UNUSED(item)
}

QString CSProTextReader::text(const Values& values, std::size_t key)
{
    return values.value.at(key).toString();
}

int CSProTextReader::number(const Values& values, std::size_t key, int defaultValue)
{
    const QStringView value = values.value.at(key);
    bool isNumber = true;
    const int result = value.isEmpty() ? defaultValue : value.toString().toInt(&isNumber);
    if (isNumber)
        return result;
    reportValue(Kind::NotANumber, values, key);
    return defaultValue;
}

// Compares with a word in upper case; another word than otherWord is told of.
bool CSProTextReader::isWord(
    const Values& values, std::size_t key, const QString& word, const char* otherWord)
{
    const QString value = text(values, key).toUpper();
    if (value == word)
        return true;
    if (!value.isEmpty() && value != QLatin1String(otherWord))
        reportValue(Kind::UnknownWord, values, key);
    return false;
}

void CSProTextReader::readDictionary(const CSProSection& section)
{
    const Values values = find(dictionaryKeys(), section);
    m_model.version = text(values, DictionaryVersion);
    m_model.label = text(values, DictionaryLabel);
    m_model.name = text(values, DictionaryName);
    const int recordType = defaults().recordType;
    m_model.recordTypeStart = number(values, DictionaryRecordTypeStart, recordType);
    m_model.recordTypeLen = number(values, DictionaryRecordTypeLen, recordType);
    m_model.positions = text(values, DictionaryPositions);
    m_model.zeroFill = text(values, DictionaryZeroFill);
    m_model.decimalChar = text(values, DictionaryDecimalChar);
    readMore(values);
}

void CSProTextReader::readRecord(const CSProSection& section)
{
    const Values values = find(recordKeys(), section);
    auto record = std::make_unique<TCSProRecord>();
    record->sourceLine = section.headerLine;
    record->label = text(values, RecordLabel);
    record->name = text(values, RecordName);
    record->recordTypeValue = recordTypeValue(text(values, RecordTypeValue));
    record->required = text(values, RecordRequired);
    record->maxRecords = number(values, RecordMaxRecords, defaults().maxRecords);
    record->recordLen = number(values, RecordRecordLen, record->recordLen);
    readMore(values, *record);
    m_builder.addRecord(std::move(record));
}

void CSProTextReader::readItem(const CSProSection& section)
{
    const Values values = find(itemKeys(), section);
    CSProBuilder::ItemPointer item(new TCSProItem);
    item->sourceLine = section.headerLine;
    item->label = text(values, ItemLabel);
    item->name = text(values, ItemName);
    item->start = number(values, ItemStart, item->start);
    item->len = number(values, ItemLen, item->len);
    item->isAlpha = isWord(values, ItemDataType, CSProWordAlpha, "NUMERIC") ? 1 : 0;
    item->isSubItem = isWord(values, ItemItemType, CSProWordSubItem, "ITEM") ? 1 : 0;
    item->occurrences = number(values, ItemOccurrences, item->occurrences);
    item->decimal = number(values, ItemDecimal, item->decimal);
    item->hasDecimalChar = isWord(values, ItemDecimalChar, TokenYes, "NO");
    item->isZeroFill = isWord(values, ItemZeroFill, TokenYes, "NO");
    readMore(values, *item);
    if (values.line.at(ItemStart) == 0)
        reportMissingStart(*item);
    m_model.lastItemNumeric = item->isAlpha == 0;
    m_builder.addItem(std::move(item));
}

void CSProTextReader::readValueSet(const CSProSection& section)
{
    CSProBuilder::ValueSetPointer valueSet(new TCSProValueSet);
    valueSet->sourceLine = section.headerLine;
    valueSet->isNumeric = m_model.lastItemNumeric;
    fillValueSet(section, *valueSet);
    m_builder.addValueSet(std::move(valueSet));
}

void CSProTextReader::ignoreValueSet(const CSProSection& head)
{
    m_builder.reportValueSet(
        Kind::ValueSetIgnored, head.headerLine, text(find(namedKeys(), head), NamedName));
}
