#include <model_Tessel/CSPro.h>

#include <model_Tessel/CSProSection_p.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/TextLines_p.h>

#include <QApplication>
#include <QFile>
#include <QTextCodec>

#include <exception>
#include <memory>
#include <stdexcept>

namespace {

// The format ends at 32,000 columns a record, so no dictionary comes near; a larger number of
// occurrences is a damaged file, which must not fill the memory.
constexpr int MaxItems = 500'000;

enum SectionKind { OtherSection, DictionarySection, RecordSection, ItemSection, ValueSetSection };

// Keys of each section kind, numbered by the enumeration beside it.

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

// An item that reached nobody goes with its list; others leave theirs to the hosts.
struct DropItem {
    void operator()(TCSProItem* item) const
    {
        delete item->valueSets;
        delete item;
    }
};

bool isWord(const QString& text, const QString& word)
{
    return text.toUpper() == word;
}

QString withoutEnds(const QString& text)
{
    return text.mid(1, qMax(text.size() - 2, 0));
}

} // namespace

const QString TCSPro::CSPRO_VER = QStringLiteral("CSPRO"); // clazy:exclude=non-pod-global-static

TCSProItem::TCSProItem()
    : valueSets(new QList<TCSProValueSet*>)
{
}

TCSProItem::~TCSProItem() = default;

int TCSProItem::getCount()
{
    valueSetCount = valueSets->size();
    return valueSetCount;
}

bool TCSProItem::getHasValueSet() const
{
    return valueSets && !valueSets->isEmpty();
}

TCSProValueSet* TCSProItem::getValueSet(int index) const
{
    return valueSets->at(index);
}

void TCSProItem::addValueSet(TCSProValueSet* valueSet)
{
    if (!getHasValueSet()) // kept: an item has one value set at most
        valueSets->append(valueSet);
}

QString TCSProItem::dictionaryName() const
{
    return occurrence > 0 ? name.chopped(2) : name;
}

// Kept: a record does not hold its items, they link to it.

void TCSProRecord::addItem(TCSProItem* item)
{
    Q_UNUSED(item)
}

int TCSProRecord::getCount() const
{
    return 1;
}

TCSProItem* TCSProRecord::getItem(int index) const
{
    Q_UNUSED(index)
    return nullptr;
}

TCSPro::TCSPro()
    : commonRecord(new TCSProRecord)
    , records(new QList<TCSProRecord*>)
    , items(new QList<TCSProItem*>)
    , currentRecord(commonRecord)
{
    commonRecord->name = QStringLiteral("Common");
    commonRecord->recordTypeValue = QStringLiteral("_COMMON_");
    createMessageBox();
}

// Kept: what was read outlives the parser.
TCSPro::~TCSPro()
{
    delete msgBox;
}

void TCSPro::loadFromFile(const QString& path)
{
    QTextCodec* codec = m_codec.isEmpty() ? nullptr : QTextCodec::codecForName(m_codec);
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        parse(TextLines(file, codec ? codec : QTextCodec::codecForLocale()).lines());
}

void TCSPro::loadFromStr(QStringList* lines)
{
    parse(*lines);
}

template <typename Lines> void TCSPro::parse(const Lines& lines)
{
    int index = 0;
    try {
        const int count = static_cast<int>(lines.size());
        for (; index < count; ++index)
            parseSection(lines, index);
        return;
    } catch (OxErrorManager* error) {
        delete error;
    } catch (...) { // the error below tells of it
    }
    // Kept: the line's index is one character, not digits.
    throw new OxErrorManager(
        ClassNameCSPro, InvalidContents, QString(QChar(static_cast<ushort>(index))));
}

void TCSPro::loadFromCSDB(const QString& path)
{
    Q_UNUSED(path)
    // Kept: such files hold their dictionary in a database, which is not opened.
    try {
        QStringList lines;
        loadFromStr(&lines);
    } catch (OxErrorManager* error) {
        delete error;
    } catch (...) { // nothing is reported here
    }
}

void TCSPro::setTextCodec(const QByteArray& name)
{
    m_codec = name;
}

void TCSPro::setDecimalQuestion(CSProDecimalQuestion question)
{
    m_decimalQuestion = std::move(question);
}

const QVector<CSProProblem>& TCSPro::problems() const
{
    return m_problems;
}

// A section that starts at the line index; any other line is passed over.
template <typename Lines> void TCSPro::parseSection(const Lines& lines, int& index)
{
    const QStringView header = QStringView(lines.at(index)).trimmed();
    if (header.size() < 2 || header.front() != QLatin1Char('['))
        return;
    const int line = index + 1;
    switch (getItemType(header.toString())) {
    case DictionarySection:
        readDictionary(gatherSection(lines, index));
        break;
    case RecordSection:
        readRecord(gatherSection(lines, index), line);
        break;
    case ItemSection:
        readItem(gatherSection(lines, index), line);
        break;
    case ValueSetSection:
        if (ignoresValueSets()) {
            int end = index; // kept: an ignored set's lines are left to the loop over all lines
            ignoreValueSet(gatherSection(lines, end), line);
        } else {
            readValueSet(gatherSection(lines, index), line);
        }
        break;
    default:
        break;
    }
}

int TCSPro::getItemType(const QString& header)
{
    QString word = header.mid(1);
    const int end = word.indexOf(QLatin1Char(']'));
    if (end >= 0)
        word.truncate(end);
    word = word.toUpper();
    if (word == CSProTypeDictionary)
        return DictionarySection;
    if (word == CSProTypeRecord)
        return RecordSection;
    if (word == CSProTypeItem)
        return ItemSection;
    if (word == CSProTypeValueSet)
        return ValueSetSection;
    // This is what makes the items after "[IdItems]" common ones.
    currentRecord = commonRecord;
    return OtherSection;
}

QStringList* TCSPro::getSection(QStringList* lines, int& index)
{
    auto section = std::make_unique<QStringList>();
    for (const QStringView line : gatherSection(*lines, index))
        section->append(line.toString());
    return section.release();
}

QString TCSPro::processLine(const QStringList& section, const QString& key, const QString& scratch)
{
    Q_UNUSED(scratch)
    try {
        for (const QString& line : section) {
            if (line.contains(key))
                return csproValue(line);
        }
    } catch (const std::exception& error) {
        TESSEL_DEBUG << error.what();
    }
    return QString();
}

int TCSPro::processLineToInt(const QStringList& section, const QString& key, int defaultValue)
{
    for (const QString& line : section) {
        if (line.contains(key))
            return csproNumber(line, defaultValue);
    }
    return defaultValue;
}

void TCSPro::processDictionary(QStringList* lines, int& index)
{
    readDictionary(gatherSection(*lines, index));
}

void TCSPro::processRecord(QStringList* lines, int& index)
{
    const int line = index + 1;
    readRecord(gatherSection(*lines, index), line);
}

void TCSPro::processItem(QStringList* lines, int& index)
{
    const int line = index + 1;
    readItem(gatherSection(*lines, index), line);
}

void TCSPro::processValueSet(QStringList* lines, int& index)
{
    if (ignoresValueSets())
        return;
    const int line = index + 1;
    readValueSet(gatherSection(*lines, index), line);
}

void TCSPro::readDictionary(const Section& section)
{
    const CSProKeyFinder::Lines line = dictionaryKeys().find(section);
    version = csproValue(line[DictionaryVersion]);
    label = csproValue(line[DictionaryLabel]);
    name = csproValue(line[DictionaryName]);
    recordTypeStart = csproNumber(line[DictionaryRecordTypeStart], 1);
    recordTypeLen = csproNumber(line[DictionaryRecordTypeLen], 1);
    positions = csproValue(line[DictionaryPositions]);
    zeroFill = csproValue(line[DictionaryZeroFill]);
    decimalChar = csproValue(line[DictionaryDecimalChar]);
}

void TCSPro::readRecord(const Section& section, int headerLine)
{
    const CSProKeyFinder::Lines line = recordKeys().find(section);

    auto record = std::make_unique<TCSProRecord>();
    record->sourceLine = headerLine;
    record->label = csproValue(line[RecordLabel]);
    record->name = csproValue(line[RecordName]);
    // Kept: the first and the last character go, whether they are quotes or not.
    record->recordTypeValue = withoutEnds(csproValue(line[RecordTypeValue]));
    record->required = csproValue(line[RecordRequired]);
    record->maxRecords = csproNumber(line[RecordMaxRecords], record->maxRecords);
    record->recordLen = csproNumber(line[RecordRecordLen], record->recordLen);

    currentRecord = record.release();
    records->append(currentRecord);
    TCSProRecord*& ofValue = recordsByValue[currentRecord->recordTypeValue];
    if (ofValue) {
        noteProblem(CSProProblem::Kind::RecordTypeRepeated, headerLine, currentRecord->name,
            currentRecord->recordTypeValue);
    }
    ofValue = currentRecord;
}

void TCSPro::readItem(const Section& section, int headerLine)
{
    using Kind = CSProProblem::Kind;
    const CSProKeyFinder::Lines line = itemKeys().find(section);

    std::unique_ptr<TCSProItem, DropItem> item(new TCSProItem);
    item->sourceLine = headerLine;
    item->label = csproValue(line[ItemLabel]);
    item->name = csproValue(line[ItemName]);
    item->start = csproNumber(line[ItemStart], item->start);
    item->len = csproNumber(line[ItemLen], item->len);
    lastItemNumeric = true;
    if (isWord(csproValue(line[ItemDataType]), CSProWordAlpha)) {
        item->isAlpha = 1;
        lastItemNumeric = false;
    }
    if (isWord(csproValue(line[ItemItemType]), CSProWordSubItem))
        item->isSubItem = 1;
    item->occurrences = csproNumber(line[ItemOccurrences], item->occurrences);
    item->decimal = csproNumber(line[ItemDecimal], item->decimal);
    item->hasDecimalChar = isWord(csproValue(line[ItemDecimalChar]), TokenYes);
    item->isZeroFill = isWord(csproValue(line[ItemZeroFill]), TokenYes);

    if (item->len <= 0)
        noteProblem(Kind::ItemWithoutLength, headerLine, item->name, QString::number(item->len));
    if (item->occurrences < 1) {
        noteProblem(Kind::ItemDropped, headerLine, item->name, QString::number(item->occurrences));
        return;
    }
    checkItemLimit(*item, item->occurrences);
    if (item->occurrences == 1)
        appendItem(item.release());
    else
        appendOccurrences(*item);
}

void TCSPro::appendItem(TCSProItem* item)
{
    item->record = currentRecord;
    currentRecord->addItem(item);
    lastItem = item;
    items->append(item);
}

void TCSPro::appendOccurrences(const TCSProItem& item)
{
    const int firstIndex = items->size();
    qint64 start = item.start;
    for (int number = 1; number <= item.occurrences; ++number) {
        // Kept: zero fill and special codes stay behind, and the suffix is the character whose code
        // is the number.
        auto* copy = new TCSProItem;
        copy->label = item.label;
        copy->name = item.name + QLatin1Char('_') + QChar(static_cast<ushort>(number));
        copy->len = item.len;
        copy->isAlpha = item.isAlpha;
        copy->isSubItem = item.isSubItem;
        copy->decimal = item.decimal;
        copy->hasDecimalChar = item.hasDecimalChar;
        copy->firstOccurrenceIndex = firstIndex;
        copy->start = static_cast<int>(start);
        copy->occurrence = number;
        copy->sourceLine = item.sourceLine;
        appendItem(copy);
        start += item.len;
    }
}

void TCSPro::checkItemLimit(const TCSProItem& item, int more)
{
    if (more <= MaxItems - items->size())
        return;
    noteProblem(
        CSProProblem::Kind::TooManyItems, item.sourceLine, item.name, QString::number(MaxItems));
    throw std::length_error("too many items in a dictionary");
}

int TCSPro::getRecordsCount()
{
    recordsCount = records->size();
    return recordsCount;
}

TCSProRecord* TCSPro::getRecord(int index) const
{
    return records->at(index);
}

int TCSPro::getItemsCount() const
{
    return items->size();
}

TCSProItem* TCSPro::getItem(int index) const
{
    return items->at(index);
}

QList<TCSProItem*>* TCSPro::getItemsList() const
{
    return items;
}

TCSProRecord* TCSPro::findRecordByValue(const QString& value) const
{
    const auto found = recordsByValue.find(value);
    return found == recordsByValue.end() ? nullptr : found->second;
}

void TCSPro::createMessageBox()
{
    if (!msgBox && qobject_cast<QApplication*>(QCoreApplication::instance()))
        msgBox = new QMessageBox;
}

int TCSPro::showMessageBox(const QString& text, const QString& informativeText,
    const QString& title, QMessageBox::Icon icon)
{
    createMessageBox();
    if (!msgBox)
        return QMessageBox::No;
    msgBox->setTextFormat(Qt::RichText);
    msgBox->setMinimumSize(300, 200);
    msgBox->setText(text);
    msgBox->setInformativeText(informativeText);
    msgBox->setIcon(icon);
    msgBox->setStandardButtons(
        QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No | QMessageBox::NoToAll);
    msgBox->setDefaultButton(QMessageBox::No);
    msgBox->setWindowTitle(title);
    return msgBox->exec();
}

void TCSPro::noteProblem(
    CSProProblem::Kind kind, int line, const QString& name, const QString& text)
{
    m_problems.append({ kind, line, name, QString(), text });
}

void TCSPro::noteValueSet(
    CSProProblem::Kind kind, int line, const QString& valueSet, const QString& text)
{
    m_problems.append(
        { kind, line, lastItem ? lastItem->dictionaryName() : QString(), valueSet, text });
}
