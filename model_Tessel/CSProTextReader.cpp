#include <model_Tessel/CSProTextReader_p.h>

#include <model_Tessel/Constants.h>

#include <algorithm>

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

// Of value sets, levels and whatever else has no more.
enum NamedKey { NamedLabel, NamedName };

const CSProKeyFinder& namedKeys()
{
    static const CSProKeyFinder keys { QLatin1String("Label"), QLatin1String("Name") };
    return keys;
}

QString withoutEnds(const QString& text)
{
    return text.mid(1, qMax(text.size() - 2, 0));
}

} // namespace

void appendNoteLine(QString& note, QStringView line)
{
    QString text = line.toString();
    if (text.startsWith(QLatin1Char('~')))
        text[0] = QLatin1Char(' ');
    text.replace(QLatin1String("\\r\\n"), QLatin1String("\n"));
    if (!note.isEmpty() && !note.endsWith(QLatin1Char('\n')))
        note += QLatin1Char(' ');
    note += text;
}

CSProTextReader::CSProTextReader(TCSPro& dictionary, CSProBuilder& builder)
    : m_dictionary(dictionary)
    , m_builder(builder)
{
}

// Rule: whole keys, or a key's word anywhere in a line.
CSProTextReader::Values CSProTextReader::find(
    const CSProKeyFinder& keys, const CSProSection& section, std::size_t count)
{
    const CSProReadingRules& rules = m_builder.rules();
    if (rules.wholeKeys) {
        Values values = keys.findWhole(section, count);
        for (const CSProKeyLine& line : values.repeated)
            m_builder.note(Kind::RepeatedKey, line.line, QString(), line.key.toString());
        return values;
    }
    Values values = keys.findAnywhere(section);
    if (rules.structure || rules.occurrenceNumbers)
        values.others = keys.findWhole(section, count).others;
    return values;
}

CSProTextReader::Values CSProTextReader::find(
    const CSProKeyFinder& keys, const CSProSection& section)
{
    return find(keys, section, section.lines.size());
}

QString CSProTextReader::text(const Values& values, std::size_t key) const
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
    noteValue(Kind::NotANumber, values, key);
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
        noteValue(Kind::UnknownWord, values, key);
    return false;
}

// With a key's word anywhere in a line, odd values are part of the bargain.
void CSProTextReader::noteValue(Kind kind, const Values& values, std::size_t key)
{
    if (m_builder.rules().wholeKeys)
        m_builder.note(kind, values.line.at(key), QString(), text(values, key));
}

void CSProTextReader::noteOther(
    const CSProKeyLine& line, std::initializer_list<const char*> passedOver)
{
    if (!m_builder.rules().wholeKeys)
        return;
    if (line.key.isEmpty()) {
        m_builder.note(Kind::LineWithoutKey, line.line, QString(), line.value.toString());
        return;
    }
    const bool isKnown = std::any_of(
        passedOver.begin(), passedOver.end(), [&](const char* key) { return line.hasKey(key); });
    if (!isKnown)
        m_builder.note(Kind::UnknownKey, line.line, QString(), line.key.toString());
}

bool CSProTextReader::takeNote(const CSProKeyLine& line, QString& note) const
{
    if (!line.hasKey("Note"))
        return false;
    if (m_builder.rules().structure)
        appendNoteLine(note, line.value);
    return true;
}

// "OccurrenceLabel=2,Second wife"; the number may be followed by a colon.
bool CSProTextReader::takeOccurrenceLabel(
    const CSProKeyLine& line, int occurrences, QVector<QString>& labels) const
{
    if (!line.hasKey("OccurrenceLabel") && !line.hasKey("OccurenceLabel"))
        return false;
    const auto digits = std::find_if(line.value.begin(), line.value.end(), [](QChar character) {
        return character < QLatin1Char('0') || character > QLatin1Char('9');
    });
    const auto size = digits - line.value.begin();
    const int number = csproNumber(line.value.left(size), 0);
    const CSProReadingRules& rules = m_builder.rules();
    if (!rules.structure && !rules.occurrenceNumbers)
        return true;
    const int most = std::min(occurrences, CSProBuilder::MostOccurrenceLabels);
    if (number < 1 || number > most || size == line.value.size()) {
        m_builder.note(Kind::NotANumber, line.line, QString(), line.value.toString());
        return true;
    }
    if (labels.size() < number)
        labels.resize(number);
    labels[number - 1] = line.value.mid(size + 1).trimmed().toString();
    return true;
}

// Rule: quotes go where they are. Kept otherwise: the first and the last character go, whatever
// they are.
QString CSProTextReader::recordTypeValue(const QString& text) const
{
    const bool isQuoted = text.size() > 1 && text.startsWith(text.back())
        && (text.startsWith(QLatin1Char('\'')) || text.startsWith(QLatin1Char('"')));
    return m_builder.rules().quotedCodes && !isQuoted ? text : withoutEnds(text);
}

bool CSProTextReader::isValueLine(QStringView line) const
{
    return isCSProValueLine(line)
        || (m_builder.rules().wholeKeys && splitKeyLine(line, 0).hasKey("Value"));
}

void CSProTextReader::readDictionary(const CSProSection& section)
{
    const Values values = find(dictionaryKeys(), section);
    m_dictionary.version = text(values, DictionaryVersion);
    m_dictionary.label = text(values, DictionaryLabel);
    m_dictionary.name = text(values, DictionaryName);
    const int recordTypeDefault = m_builder.rules().formatDefaults ? 0 : 1;
    m_dictionary.recordTypeStart = number(values, DictionaryRecordTypeStart, recordTypeDefault);
    m_dictionary.recordTypeLen = number(values, DictionaryRecordTypeLen, recordTypeDefault);
    m_dictionary.positions = text(values, DictionaryPositions);
    m_dictionary.zeroFill = text(values, DictionaryZeroFill);
    m_dictionary.decimalChar = text(values, DictionaryDecimalChar);
    QString note;
    for (const CSProKeyLine& line : values.others) {
        if (!takeNote(line, note))
            noteOther(line, { "Alias", "SecurityOptions", "ValueSetImages" });
    }
    m_builder.setNote(note);
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
    record->maxRecords =
        number(values, RecordMaxRecords, m_builder.rules().formatDefaults ? 1 : record->maxRecords);
    record->recordLen = number(values, RecordRecordLen, record->recordLen);
    for (const CSProKeyLine& line : values.others) {
        if (!takeNote(line, record->note)
            && !takeOccurrenceLabel(line, record->maxRecords, record->occurrenceLabels))
            noteOther(line, { "Alias" });
    }
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
    for (const CSProKeyLine& line : values.others) {
        if (!takeNote(line, item->note)
            && !takeOccurrenceLabel(line, item->occurrences, item->occurrenceLabels))
            noteOther(line, { "Alias", "CaptureType", "CaptureDateFormat" });
    }
    if (m_builder.rules().wholeKeys && values.line.at(ItemStart) == 0)
        m_builder.note(Kind::ItemWithoutStart, section.headerLine, item->name);
    m_dictionary.lastItemNumeric = item->isAlpha == 0;
    m_builder.addItem(std::move(item));
}

void CSProTextReader::readValueSet(const CSProSection& section)
{
    const auto firstValue = std::find_if(section.lines.begin(), section.lines.end(),
        [this](QStringView line) { return isValueLine(line); });
    const auto headerSize = static_cast<std::size_t>(firstValue - section.lines.begin());
    const Values values = find(namedKeys(), section, headerSize);
    CSProBuilder::ValueSetPointer valueSet(new TCSProValueSet);
    valueSet->sourceLine = section.headerLine;
    valueSet->label = text(values, NamedLabel);
    valueSet->name = text(values, NamedName);
    valueSet->isNumeric = m_dictionary.lastItemNumeric;
    for (const CSProKeyLine& line : values.others) {
        if (line.hasKey("Link") && m_builder.rules().structure)
            valueSet->link = line.value.toString();
        else if (!takeNote(line, valueSet->note))
            noteOther(line, { "Alias", "Link" });
    }
    readValues(section, headerSize, *valueSet);
    m_builder.addValueSet(std::move(valueSet));
}

void CSProTextReader::readValues(
    const CSProSection& section, std::size_t first, TCSProValueSet& valueSet)
{
    const CSProReadingRules& rules = m_builder.rules();
    if (rules.quotedCodes || rules.ranges || rules.severalCodes)
        readWrittenValues(m_dictionary, m_builder, section, first, valueSet);
    else
        readEstablishedValues(m_dictionary, m_builder, section, valueSet);
}

void CSProTextReader::ignoreValueSet(const CSProSection& head)
{
    m_builder.noteValueSet(
        Kind::ValueSetIgnored, head.headerLine, text(find(namedKeys(), head), NamedName));
}

void CSProTextReader::readOther(
    const QString& word, const QString& header, const CSProSection& section)
{
    const CSProReadingRules& rules = m_builder.rules();
    if (word == QLatin1String("LEVEL")) {
        if (rules.structure)
            readLevel(section);
    } else if (word == QLatin1String("LANGUAGES")) {
        if (rules.languages)
            readLanguages(section);
    } else if (word == QLatin1String("RELATION")) {
        if (rules.structure)
            readRelation(section);
    } else if (word != QLatin1String("IDITEMS") && word != QLatin1String("NOEDIT")
        && rules.wholeKeys) {
        m_builder.note(Kind::UnknownSection, section.headerLine, QString(), header);
    }
}

void CSProTextReader::readLevel(const CSProSection& section)
{
    const Values values = find(namedKeys(), section);
    CSProLevel level { text(values, NamedName), text(values, NamedLabel), QString() };
    for (const CSProKeyLine& line : values.others) {
        if (!takeNote(line, level.note))
            noteOther(line, { "Alias" });
    }
    m_builder.addLevel(level);
}

void CSProTextReader::readLanguages(const CSProSection& section)
{
    for (std::size_t i = 0; i < section.lines.size(); ++i) {
        const CSProKeyLine line = splitKeyLine(section.lines[i], section.lineNumber(i));
        if (line.key.isEmpty())
            noteOther(line, {});
        else
            m_builder.addLanguage({ line.key.toString(), line.value.toString() });
    }
}

// Each "Secondary" begins a link; the "PrimaryLink" before it belongs to it.
void CSProTextReader::readRelation(const CSProSection& section)
{
    CSProRelation relation;
    CSProRelationLink link;
    bool isLinkOpen = false;
    const auto closeLink = [&] {
        if (isLinkOpen)
            relation.links.append(link);
        link = {};
        isLinkOpen = false;
    };
    for (std::size_t i = 0; i < section.lines.size(); ++i) {
        const CSProKeyLine line = splitKeyLine(section.lines[i], section.lineNumber(i));
        const QString value = line.value.toString();
        if (line.hasKey("Name")) {
            relation.name = value;
        } else if (line.hasKey("Primary")) {
            relation.primary = value;
        } else if (line.hasKey("PrimaryLink")) {
            closeLink();
            link.primaryLink = value;
        } else if (line.hasKey("Secondary")) {
            if (isLinkOpen)
                closeLink();
            link.secondary = value;
            isLinkOpen = true;
        } else if (line.hasKey("SecondaryLink")) {
            link.secondaryLink = value;
        } else {
            noteOther(line, { "Label" });
        }
    }
    closeLink();
    m_builder.addRelation(relation);
}
