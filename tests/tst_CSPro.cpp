#include "DebugLines.h"
#include "ErrorOf.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QMap>
#include <QMessageBox>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QTextStream>
#include <QTimer>
#include <QTranslator>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

void parse(TCSPro& parser, const QString& text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    parser.loadFromStr(&lines);
}

// Adds a row to a table of test data.
template <typename... Values> void row(const char* name, const Values&... values)
{
    (QTest::newRow(name) << ... << values);
}

QString character(int code)
{
    return QString(QChar(static_cast<ushort>(code)));
}

QString kindName(CSProProblem::Kind kind)
{
    using Kind = CSProProblem::Kind;
    static const QMap<Kind, QString> names {
        { Kind::ItemWithoutLength, "ItemWithoutLength" },
        { Kind::ItemDropped, "ItemDropped" },
        { Kind::RecordTypeRepeated, "RecordTypeRepeated" },
        { Kind::ValueSetIgnored, "ValueSetIgnored" },
        { Kind::ValueSetWithoutItem, "ValueSetWithoutItem" },
        { Kind::ValueSetOnLastOccurrence, "ValueSetOnLastOccurrence" },
        { Kind::DecimalCodesDropped, "DecimalCodesDropped" },
        { Kind::DecimalCodesConverted, "DecimalCodesConverted" },
        { Kind::CodesNotInteger, "CodesNotInteger" },
        { Kind::TooManyItems, "TooManyItems" },
    };
    return names.value(kind, QStringLiteral("another kind"));
}

QString problemText(const CSProProblem& problem)
{
    const QStringList parts { kindName(problem.kind), QString::number(problem.line), problem.name,
        problem.valueSet, problem.text };
    return parts.join(QLatin1Char('|'));
}

QStringList problemTexts(const TCSPro& parser)
{
    QStringList texts;
    for (const CSProProblem& problem : parser.problems())
        texts.append(problemText(problem));
    return texts;
}

// Presses one button of every modal message box and keeps what the latest box showed.
class BoxUser : public QObject {
public:
    explicit BoxUser(QMessageBox::StandardButton button)
    {
        m_timer.setInterval(1);
        connect(&m_timer, &QTimer::timeout, this, [this, button] {
            auto* shownBox = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!shownBox)
                return;
            ++boxes;
            box = shownBox;
            text = box->text();
            informativeText = box->informativeText();
            title = box->windowTitle();
            icon = box->icon();
            format = box->textFormat();
            buttons = box->standardButtons();
            defaultButton = box->standardButton(box->defaultButton());
            isModal = box->isModal();
            box->button(button)->click();
        });
        m_timer.start();
        qApp->installEventFilter(this);
    }

    // A message box fixes its size once it is shown, so the minimum is read just before.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* shownBox = qobject_cast<QMessageBox*>(watched);
        if (shownBox && event->type() == QEvent::Show)
            minimumSize = shownBox->minimumSize();
        return QObject::eventFilter(watched, event);
    }

    int boxes = 0;
    QMessageBox* box = nullptr;
    QString text;
    QString informativeText;
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    Qt::TextFormat format = Qt::PlainText;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    bool isModal = false;
    QSize minimumSize;

private:
    QTimer m_timer;
};

// Translates every text into itself between angle quotes.
class MarkingTranslator : public QTranslator {
public:
    QString translate(const char*, const char* sourceText, const char*, int) const override
    {
        return QLatin1Char('<') + QString::fromLatin1(sourceText) + QLatin1Char('>');
    }

    bool isEmpty() const override
    {
        return false;
    }
};

/*
 * A second reader, as plain as the rules allow: every key is looked up on its own, every line is
 * split anew. It knows no problems and no limits.
 */
namespace plain {

struct Entry {
    QString label;
    QString code = character(3);
    int type = 0;
    bool special = false;
};

struct ValueSet {
    QString label;
    QString name;
    bool isNumeric = true;
    std::vector<std::shared_ptr<Entry>> entries;

    void add(const QString& code, const QString& entryLabel)
    {
        auto entry = std::make_shared<Entry>();
        entry->code = code;
        entry->label = entryLabel;
        entries.push_back(entry);
    }
};

struct Record {
    QString label;
    QString name;
    QString recordTypeValue;
    QString required;
    int maxRecords = 100;
    int recordLen = 0;
    int sourceLine = 0;
};

struct Item {
    QString label;
    QString missingCode;
    QString name;
    QString notApplicableCode;
    int isAlpha = 0;
    int decimal = 0;
    int isSubItem = 0;
    int len = 0;
    int occurrences = 1;
    int start = 1;
    bool hasDecimalChar = false;
    bool isZeroFill = false;
    int firstOccurrenceIndex = 0;
    int sourceLine = 0;
    std::shared_ptr<Record> record;
    std::shared_ptr<ValueSet> valueSet;
};

QString value(const QStringList& section, const QString& key)
{
    const QStringList lines = section.filter(key);
    if (lines.isEmpty())
        return QString();
    const QStringList parts = lines.first().split(QLatin1Char('='));
    return parts.size() == 2 ? parts.at(1) : QString();
}

int number(const QStringList& section, const QString& key, int defaultValue)
{
    bool isNumber = false;
    const int result = value(section, key).toInt(&isNumber, 10);
    return isNumber ? result : defaultValue;
}

bool isInteger(const QString& code)
{
    bool isNumber = false;
    code.toInt(&isNumber, 10);
    return isNumber;
}

bool isDecimal(const QString& code)
{
    return QRegExp(QStringLiteral("\\d*\\.\\d*$")).exactMatch(code);
}

QString withoutQuotes(const QString& code)
{
    if (!code.startsWith(QLatin1Char('\'')))
        return code;
    QString rest = code;
    rest.chop(1);
    return rest.mid(1);
}

class Reader {
public:
    explicit Reader(std::function<int()> question)
        : m_question(std::move(question))
    {
    }

    void read(const QStringList& lines)
    {
        for (int i = 0; i < lines.size(); ++i) {
            const QString line = lines.at(i).trimmed();
            if (line.size() < 2 || !line.startsWith(QLatin1Char('[')))
                continue;
            QString word = line.mid(1);
            if (word.contains(QLatin1Char(']')))
                word = word.left(word.indexOf(QLatin1Char(']')));
            word = word.toUpper();
            if (word == QLatin1String("DICTIONARY"))
                readDictionary(sectionAfter(lines, i));
            else if (word == QLatin1String("RECORD"))
                readRecord(lines, i);
            else if (word == QLatin1String("ITEM"))
                readItem(lines, i);
            else if (word == QLatin1String("VALUESET"))
                readValueSet(lines, i);
            else
                currentRecord = commonRecord;
        }
    }

    QString version;
    QString label;
    QString name;
    QString positions;
    QString zeroFill;
    QString decimalChar;
    int recordTypeStart = 1;
    int recordTypeLen = 1;
    std::shared_ptr<Record> commonRecord = std::make_shared<Record>();
    std::shared_ptr<Record> currentRecord = commonRecord;
    std::vector<std::shared_ptr<Record>> records;
    QMap<QString, std::shared_ptr<Record>> recordsByValue;
    std::vector<std::shared_ptr<Item>> items;
    std::shared_ptr<Item> lastItem;
    bool lastItemNumeric = false;
    int decimalAnswer = 0;
    int decimalButton = 0;

private:
    static QStringList sectionAfter(const QStringList& lines, int& index)
    {
        QStringList section;
        int j = index + 1;
        if (j >= lines.size())
            return section;
        for (; j < lines.size(); ++j) {
            if (lines.at(j).startsWith(QLatin1Char('[')))
                break;
            const QString line = lines.at(j).trimmed();
            if (!line.isEmpty())
                section.append(line);
        }
        index = j - 1;
        return section;
    }

    void readDictionary(const QStringList& section)
    {
        version = value(section, QStringLiteral("Version"));
        label = value(section, QStringLiteral("Label"));
        name = value(section, QStringLiteral("Name"));
        recordTypeStart = number(section, QStringLiteral("RecordTypeStart"), 1);
        recordTypeLen = number(section, QStringLiteral("RecordTypeLen"), 1);
        positions = value(section, QStringLiteral("Positions"));
        zeroFill = value(section, QStringLiteral("ZeroFill"));
        decimalChar = value(section, QStringLiteral("DecimalChar"));
    }

    void readRecord(const QStringList& lines, int& index)
    {
        auto record = std::make_shared<Record>();
        record->sourceLine = index + 1;
        const QStringList section = sectionAfter(lines, index);
        record->label = value(section, QStringLiteral("Label"));
        record->name = value(section, QStringLiteral("Name"));
        QString code = value(section, QStringLiteral("RecordTypeValue"));
        code.chop(1);
        record->recordTypeValue = code.mid(1);
        record->required = value(section, QStringLiteral("Required"));
        record->maxRecords = number(section, QStringLiteral("MaxRecords"), 100);
        record->recordLen = number(section, QStringLiteral("RecordLen"), 0);
        records.push_back(record);
        recordsByValue.insert(record->recordTypeValue, record);
        currentRecord = record;
    }

    void readItem(const QStringList& lines, int& index)
    {
        Item item;
        item.sourceLine = index + 1;
        const QStringList section = sectionAfter(lines, index);
        item.label = value(section, QStringLiteral("Label"));
        item.name = value(section, QStringLiteral("Name"));
        item.start = number(section, QStringLiteral("Start"), 1);
        item.len = number(section, QStringLiteral("Len"), 0);
        lastItemNumeric = true;
        if (value(section, QStringLiteral("DataType")).toUpper() == QLatin1String("ALPHA")) {
            item.isAlpha = 1;
            lastItemNumeric = false;
        }
        if (value(section, QStringLiteral("ItemType")).toUpper() == QLatin1String("SUBITEM"))
            item.isSubItem = 1;
        item.occurrences = number(section, QStringLiteral("Occurrences"), 1);
        item.decimal = number(section, QStringLiteral("Decimal"), 0);
        item.hasDecimalChar =
            value(section, QStringLiteral("DecimalChar")).toUpper() == QLatin1String("YES");
        item.isZeroFill =
            value(section, QStringLiteral("ZeroFill")).toUpper() == QLatin1String("YES");

        if (item.occurrences == 1) {
            append(item);
        } else if (item.occurrences > 1) {
            const int first = static_cast<int>(items.size());
            for (int k = 1; k <= item.occurrences; ++k) {
                Item copy = item;
                copy.name = item.name + QLatin1Char('_') + character(k);
                copy.start = item.start + (k - 1) * item.len;
                copy.occurrences = 1;
                copy.isZeroFill = false;
                copy.firstOccurrenceIndex = first;
                append(copy);
            }
        }
    }

    void append(const Item& item)
    {
        lastItem = std::make_shared<Item>(item);
        lastItem->record = currentRecord;
        items.push_back(lastItem);
    }

    void readValueSet(const QStringList& lines, int& index)
    {
        if (lastItem && lastItem->valueSet)
            return;
        const QStringList section = sectionAfter(lines, index);
        auto set = std::make_shared<ValueSet>();
        set->label = value(section, QStringLiteral("Label"));
        set->name = value(section, QStringLiteral("Name"));
        set->isNumeric = lastItemNumeric;
        readEntries(*set, section);

        if (set->isNumeric) {
            if (anyCode(*set, isDecimal) && !keepsDecimals(*set))
                return;
            if (anyCode(*set, [](const QString& code) { return !isInteger(code); }))
                return;
        }
        sort(*set);
        attach(set);
    }

    void readEntries(ValueSet& set, const QStringList& section)
    {
        std::shared_ptr<Entry> pending;
        for (const QString& sectionLine : section) {
            const QString line = sectionLine.trimmed();
            if (line.left(6).toUpper() == QLatin1String("VALUE=")) {
                if (pending && !pending->special) {
                    if (pending->code.contains(QLatin1Char(' '))) {
                        for (const QString& piece : pending->code.split(QLatin1Char(' ')))
                            set.add(piece.trimmed(), pending->label);
                    } else {
                        set.entries.push_back(pending);
                    }
                }
                pending = std::make_shared<Entry>();
                readValue(set, *pending, line.mid(6));
            } else if (pending && line.left(5).toUpper() == QLatin1String("NAME=")) {
                readName(*pending, line.mid(5));
            }
        }
        if (pending && !pending->special)
            set.entries.push_back(pending);
    }

    static void readValue(ValueSet& set, Entry& pending, QString rest)
    {
        const int semicolon = rest.indexOf(QLatin1Char(';'));
        const int colon = rest.indexOf(QLatin1Char(':'));
        if (semicolon <= 0 && colon <= 0) {
            pending.code = withoutQuotes(rest);
        } else if (semicolon <= 0) {
            set.add(rest.left(colon), QString());
            pending.code = rest.remove(0, colon);
        } else if (colon > 0 && colon < semicolon) {
            const QStringList low = rest.left(colon).split(QLatin1Char(' '));
            rest.remove(0, colon + 1);
            pending.code = rest.left(rest.indexOf(QLatin1Char(';')));
            pending.label = rest.mid(rest.indexOf(QLatin1Char(';')) + 1);
            for (const QString& code : low)
                set.add(code, pending.label);
        } else {
            pending.code = withoutQuotes(rest.left(semicolon));
            pending.label = rest.mid(semicolon + 1);
        }
    }

    void readName(Entry& pending, const QString& rest)
    {
        const int comma = rest.indexOf(QLatin1Char(','));
        pending.type = 0;
        if (comma <= 0)
            return;
        QString word = rest.left(comma);
        word.chop(1);
        if (word.toUpper() == QLatin1String("MISSING")) {
            pending.type = 1;
            pending.special = true;
            if (lastItem)
                lastItem->missingCode = pending.code;
        } else if (word.toUpper() == QLatin1String("NOTAPPL")) {
            pending.type = 2;
            pending.special = true;
            if (lastItem)
                lastItem->notApplicableCode = pending.code;
        }
    }

    static bool anyCode(const ValueSet& set, const std::function<bool(const QString&)>& test)
    {
        return std::any_of(set.entries.begin(), set.entries.end(),
            [&](const std::shared_ptr<Entry>& entry) { return test(entry->code); });
    }

    bool keepsDecimals(ValueSet& set)
    {
        if (decimalAnswer == 0)
            decimalButton = m_question();
        if (decimalButton == QMessageBox::YesToAll)
            decimalAnswer = 1;
        if (decimalButton == QMessageBox::NoToAll)
            decimalAnswer = 2;
        if (decimalButton == QMessageBox::No || decimalButton == QMessageBox::NoToAll)
            return false;
        for (const auto& entry : set.entries) {
            if (!isInteger(entry->code))
                entry->code = QStringLiteral("0");
        }
        return true;
    }

    // Up to 16 entries a text comparator that is no order keeps the sort inside the list.
    static void sort(ValueSet& set)
    {
        if (set.isNumeric) {
            std::sort(set.entries.begin(), set.entries.end(),
                [](const std::shared_ptr<Entry>& a, const std::shared_ptr<Entry>& b) {
                    return a->code.toDouble() < b->code.toDouble();
                });
        } else if (set.entries.size() <= 16) {
            std::sort(set.entries.begin(), set.entries.end(),
                [](const std::shared_ptr<Entry>& a, const std::shared_ptr<Entry>& b) {
                    return QString::compare(a->code, b->code) != 0;
                });
        }
    }

    void attach(const std::shared_ptr<ValueSet>& set)
    {
        if (!lastItem)
            return;
        if (lastItem->firstOccurrenceIndex == 0) {
            lastItem->valueSet = set;
            return;
        }
        const int first = lastItem->firstOccurrenceIndex;
        for (auto item = items.rbegin(); item != items.rend(); ++item) {
            if ((*item)->firstOccurrenceIndex != first)
                break;
            if (!(*item)->valueSet)
                (*item)->valueSet = set;
        }
    }

    std::function<int()> m_question;
};

} // namespace plain

QString field(const char* name, const QString& value)
{
    return QLatin1String(name) + QLatin1String("=<") + value + QLatin1Char('>');
}

QString field(const char* name, int value)
{
    return QLatin1String(name) + QLatin1Char('=') + QString::number(value);
}

// Both readers as a list of lines, one for each record, item and entry.
template <typename Dictionary> QString headerText(const Dictionary& read)
{
    return QStringList { field("version", read.version), field("label", read.label),
        field("name", read.name), field("positions", read.positions),
        field("zeroFill", read.zeroFill), field("decimalChar", read.decimalChar),
        field("recordTypeStart", read.recordTypeStart), field("recordTypeLen", read.recordTypeLen),
        field("lastItemNumeric", read.lastItemNumeric), field("answer", read.decimalAnswer),
        field("button", read.decimalButton) }
        .join(QLatin1Char(' '));
}

template <typename Record> QString recordText(const Record& record)
{
    return QStringList { field("label", record.label), field("name", record.name),
        field("value", record.recordTypeValue), field("required", record.required),
        field("maxRecords", record.maxRecords), field("recordLen", record.recordLen),
        field("line", record.sourceLine) }
        .join(QLatin1Char(' '));
}

template <typename Item> QString itemText(const Item& item, int record, int valueSet)
{
    return QStringList { field("label", item.label), field("name", item.name),
        field("missing", item.missingCode), field("notAppl", item.notApplicableCode),
        field("isAlpha", item.isAlpha), field("decimal", item.decimal),
        field("isSubItem", item.isSubItem), field("len", item.len),
        field("occurrences", item.occurrences), field("start", item.start),
        field("hasDecimalChar", item.hasDecimalChar), field("isZeroFill", item.isZeroFill),
        field("first", item.firstOccurrenceIndex), field("line", item.sourceLine),
        field("record", record), field("valueSet", valueSet) }
        .join(QLatin1Char(' '));
}

template <typename ValueSet> QString valueSetText(const ValueSet& set, QStringList entries)
{
    if (!set.isNumeric && entries.size() > 16)
        entries.sort();
    return field("set", set.name) + QLatin1Char(' ') + field("label", set.label) + QLatin1Char(' ')
        + field("isNumeric", set.isNumeric) + QLatin1Char(' ') + entries.join(QLatin1Char(' '));
}

template <typename Entry> QString entryText(const Entry& entry)
{
    return QStringList { field("code", entry.code), field("label", entry.label),
        field("type", entry.type), field("special", entry.special) }
        .join(QLatin1Char(' '));
}

QStringList described(TCSPro& parser)
{
    const auto recordNumber = [&](TCSProRecord* record) {
        return record == parser.commonRecord ? -1 : parser.records->indexOf(record);
    };
    QStringList texts { headerText(parser), field("current", recordNumber(parser.currentRecord)),
        field("lastItem", parser.items->lastIndexOf(parser.lastItem)) };
    for (const TCSProRecord* record : qAsConst(*parser.records))
        texts.append(recordText(*record));
    for (const auto& ofValue : parser.recordsByValue)
        texts.append(
            field("value", ofValue.first) + field(" record", recordNumber(ofValue.second)));
    QList<TCSProValueSet*> sets;
    for (TCSProItem* item : qAsConst(*parser.items)) {
        int number = -1;
        if (item->getHasValueSet()) {
            TCSProValueSet* set = item->getValueSet(0);
            if (!sets.contains(set))
                sets.append(set);
            number = sets.indexOf(set);
        }
        texts.append(itemText(*item, recordNumber(item->record), number));
    }
    for (const TCSProValueSet* set : qAsConst(sets)) {
        QStringList entries;
        for (const TValueSetItem* entry : qAsConst(*set->items))
            entries.append(entryText(*entry));
        texts.append(valueSetText(*set, entries));
    }
    return texts;
}

QStringList described(const plain::Reader& reader)
{
    const auto recordNumber = [&](const std::shared_ptr<plain::Record>& record) {
        const auto found = std::find(reader.records.begin(), reader.records.end(), record);
        return found == reader.records.end() ? -1
                                             : static_cast<int>(found - reader.records.begin());
    };
    const auto lastItem = std::find(reader.items.begin(), reader.items.end(), reader.lastItem);
    QStringList texts { headerText(reader), field("current", recordNumber(reader.currentRecord)),
        field("lastItem",
            lastItem == reader.items.end() ? -1
                                           : static_cast<int>(lastItem - reader.items.begin())) };
    for (const auto& record : reader.records)
        texts.append(recordText(*record));
    for (auto ofValue = reader.recordsByValue.begin(); ofValue != reader.recordsByValue.end();
         ++ofValue) {
        texts.append(
            field("value", ofValue.key()) + field(" record", recordNumber(ofValue.value())));
    }
    std::vector<std::shared_ptr<plain::ValueSet>> sets;
    for (const auto& item : reader.items) {
        int number = -1;
        if (item->valueSet) {
            auto found = std::find(sets.begin(), sets.end(), item->valueSet);
            number = static_cast<int>(found - sets.begin());
            if (found == sets.end())
                sets.push_back(item->valueSet);
        }
        texts.append(itemText(*item, recordNumber(item->record), number));
    }
    for (const auto& set : sets) {
        QStringList entries;
        for (const auto& entry : set->entries)
            entries.append(entryText(*entry));
        texts.append(valueSetText(*set, entries));
    }
    return texts;
}

// Writes dictionaries that are right in the main and odd in the details.
class DictionaryWriter {
public:
    explicit DictionaryWriter(quint32 seed)
        : m_random(seed)
    {
    }

    QStringList lines()
    {
        m_lines.clear();
        const int sections = below(14) + 1;
        for (int i = 0; i < sections; ++i)
            writeSection();
        return m_lines;
    }

    int below(int limit)
    {
        return m_random.bounded(limit);
    }

    QString oneOf(const QStringList& list)
    {
        return list.at(below(list.size()));
    }

private:
    bool chance(int percent)
    {
        return below(100) < percent;
    }

    void writeSection()
    {
        static const QStringList headers { "[Dictionary]", "[Record]", "[Item]", "[Item]", "[Item]",
            "[ValueSet]", "[ValueSet]", "[ValueSet]", "[IdItems]" };
        static const QStringList oddHeaders { "[Level]", "[Relation]", "[ITEM]", "[item", "[Item]x",
            "  [Item]", "\t[Record]", " [ValueSet] ", "[", "[]", "[record]", "[VALUESET", "[Items]",
            "x[Item]", "", "; comment" };
        const QString header = oneOf(chance(80) ? headers : oddHeaders);
        m_lines.append(header);
        const QString body = chance(90) ? header : oneOf(headers);
        if (body.contains(QLatin1String("Dict")))
            writeKeys({ "Version", "Label", "Name", "RecordTypeStart", "RecordTypeLen", "Positions",
                "ZeroFill", "DecimalChar", "Note" });
        else if (body.contains(QLatin1String("ecord")))
            writeKeys(
                { "Label", "Name", "RecordTypeValue", "Required", "MaxRecords", "RecordLen" });
        else if (body.contains(QLatin1String("tem"), Qt::CaseInsensitive))
            writeKeys({ "Label", "Name", "Start", "Len", "DataType", "ItemType", "Occurrences",
                "Decimal", "DecimalChar", "ZeroFill", "RecordTypeStart" });
        else
            writeValues();
    }

    void writeKeys(QStringList keys)
    {
        if (chance(30))
            std::shuffle(keys.begin(), keys.end(), m_random);
        for (const QString& key : qAsConst(keys)) {
            if (chance(85))
                writeKey(key);
        }
    }

    void writeKey(const QString& key)
    {
        static const QStringList numbers { "1", "2", "3", "4", "007", "-1", "0", " 3", "+2" };
        static const QStringList words { "", "x", "a=b", "Yes", "YES", "no", "Alpha", "ALPHA",
            "Numeric", "SubItem", "'1'", "'H'", "'", "'AB'", "Label", "Name of it", "Start", "Len",
            "Decimal", "0x1", "1.5", "9999999999", "\u00dcberschrift", "Occurrences" };
        static const QStringList signs { "=", "=", "=", "=", "=", "=", " = ", "==", "", "= " };
        static const QStringList flags { "Yes", "yes", "YES", "No", " Yes" };
        QString value = oneOf(chance(50) ? numbers : words);
        if (key == QLatin1String("DataType") && chance(80))
            value = oneOf({ "Alpha", "ALPHA", "Numeric", "alpha" });
        else if ((key == QLatin1String("DecimalChar") || key == QLatin1String("ZeroFill"))
            && chance(70))
            value = oneOf(flags);
        else if (key == QLatin1String("RecordTypeValue") && chance(80))
            value = oneOf({ "'1'", "'2'", "'H'", "''", "12" });
        const QString indent = chance(10) ? QStringLiteral("  ") : QString();
        m_lines.append(indent + key + oneOf(signs) + value + (chance(10) ? " " : ""));
        if (chance(5))
            m_lines.append(chance(50) ? QString() : QStringLiteral("  "));
    }

    void writeValues()
    {
        writeKeys({ "Label", "Name" });
        const Codes codes = chance(50) ? Integers : chance(50) ? Numbers : AnyCodes;
        const int count = below(4);
        for (int i = 0; i < count; ++i) {
            writeValue(codes);
            if (chance(25))
                writeName();
        }
    }

    enum Codes { Integers, Numbers, AnyCodes };

    QString code(Codes codes)
    {
        static const QStringList integers { "1", "2", "3", "10", "-4", "007", "+5", "100000" };
        static const QStringList decimals { "1.5", "2.", ".5", "10.25" };
        static const QStringList odd { ".", "'A'", "B", "'", "''", "", "\u00c4", "'A B'",
            "99999999999", "\t7", "'x" };
        if (codes == Integers || chance(60))
            return oneOf(integers);
        return oneOf(codes == Numbers ? decimals : odd);
    }

    void writeValue(Codes codes)
    {
        QString text = oneOf({ "Value=", "VALUE=", "value=", "Value =", " Value=" });
        text += code(codes);
        if (chance(25))
            text += oneOf({ " ", "  " }) + code(codes);
        if (chance(25))
            text += QLatin1Char(':') + code(codes);
        if (chance(80))
            text += QLatin1Char(';') + oneOf({ "Yes", "No", "", "a:b", "x;y", " z ", "Name" });
        if (chance(3))
            text.insert(6, oneOf({ ";", ":" }));
        m_lines.append(text);
    }

    void writeName()
    {
        m_lines.append(oneOf({ "Name=MISSING ,Special", "NAME=NOTAPPL ,Special",
            "name=missing ,SPECIAL", "Name=MISSING,Special", "Name=DEFAULT ,Special",
            "Name=MISSING", "Name=,Special", "Name=NOTAPPLx,", "Name= MISSING ,Special" }));
    }

    QRandomGenerator m_random;
    QStringList m_lines;
};

} // namespace

class tst_CSPro : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void startValues();
    void recordStartValues();
    void itemStartValues();
    void aRecordDoesNotHoldItsItems();
    void anItemKeepsItsFirstValueSet();
    void anItemWithoutAListHasNoValueSet();

    void getItemType_data();
    void getItemType();
    void getSection_data();
    void getSection();
    void processLine_data();
    void processLine();

    void dictionary_data();
    void dictionary();
    void aSecondDictionarySectionOverwrites();
    void record_data();
    void record();
    void recordsOfOneValue();
    void item_data();
    void item();
    void occurrences();
    void occurrencesBeyondTheDigits();
    void noOccurrences_data();
    void noOccurrences();
    void aDroppedItemStillSetsTheKindOfTheNextValueSet();
    void identificationItemsAreCommon();
    void sectionLoop_data();
    void sectionLoop();
    void processingOneSection();
    void aSecondLoadAppends();
    void whatWasReadOutlivesTheParser();

    void loadFromFile_data();
    void loadFromFile();
    void loadFromData_data();
    void loadFromData();
    void loadFromFileUsesTheLocaleCodec();
    void loadFromFileReadsTheLinesOfATextStream_data();
    void loadFromFileReadsTheLinesOfATextStream();
    void brokenTextAsATextStreamReadsIt();
    void partsOfAFileJoinWithoutATrace_data();
    void partsOfAFileJoinWithoutATrace();
    void aMissingFileIsAnEmptyDictionary_data();
    void aMissingFileIsAnEmptyDictionary();
    void loadFromCSDBLoadsNothing();

    void exceptionsBecomeOneError_data();
    void exceptionsBecomeOneError();
    void theErrorTellsTheIndexAsOneCharacter_data();
    void theErrorTellsTheIndexAsOneCharacter();
    void tooManyItems_data();
    void tooManyItems();
    void tooManyItemsOfOneLoad();

    void messageBox_data();
    void messageBox();
    void theMessageBoxIsReused();
    void undefinedQuestion_data();
    void undefinedQuestion();
    void theDecimalQuestionIsTranslated();

    void problems_data();
    void problems();

    void bothReadersAgree_data();
    void bothReadersAgree();
};

void tst_CSPro::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSPro::startValues()
{
    TCSPro parser;
    QCOMPARE(parser.recordTypeStart, 1);
    QCOMPARE(parser.recordTypeLen, 1);
    QVERIFY(parser.msgBox);
    QVERIFY(!parser.msgBox->parent());
    QCOMPARE(parser.recordsCount, 0);
    QCOMPARE(parser.decimalAnswer, 0);
    QCOMPARE(parser.undefinedAnswer, 0);
    QCOMPARE(parser.version, QString());
    QCOMPARE(parser.label, QString());
    QCOMPARE(parser.name, QString());
    QCOMPARE(parser.positions, QString());
    QCOMPARE(parser.zeroFill, QString());
    QCOMPARE(parser.decimalChar, QString());
    QVERIFY(parser.commonRecord);
    QCOMPARE(parser.commonRecord->name, QString("Common"));
    QCOMPARE(parser.commonRecord->recordTypeValue, QString("_COMMON_"));
    QCOMPARE(parser.commonRecord->label, QString());
    QVERIFY(parser.records && parser.records->isEmpty());
    QVERIFY(parser.recordsByValue.empty());
    QVERIFY(parser.items && parser.items->isEmpty());
    QVERIFY(!parser.lastItem);
    QCOMPARE(parser.currentRecord, parser.commonRecord);
    QCOMPARE(parser.lastItemNumeric, false);
    QVERIFY(!parser.parent());

    QCOMPARE(parser.getRecordsCount(), 0);
    QCOMPARE(parser.getItemsCount(), 0);
    QCOMPARE(parser.getItemsList(), parser.items);
    QVERIFY(!parser.findRecordByValue("_COMMON_"));
    QVERIFY(parser.problems().isEmpty());
    QCOMPARE(TCSPro::CSPRO_VER, QString("CSPRO"));
}

void tst_CSPro::recordStartValues()
{
    const TCSProRecord record;
    QCOMPARE(record.label, QString());
    QCOMPARE(record.name, QString());
    QCOMPARE(record.recordTypeValue, QString());
    QCOMPARE(record.required, QString());
    QCOMPARE(record.maxRecords, 100);
    QCOMPARE(record.recordLen, 0);
}

void tst_CSPro::itemStartValues()
{
    TCSProItem item;
    QCOMPARE(item.label, QString());
    QCOMPARE(item.missingCode, QString());
    QCOMPARE(item.name, QString());
    QCOMPARE(item.notApplicableCode, QString());
    QCOMPARE(item.isAlpha, 0);
    QCOMPARE(item.decimal, 0);
    QCOMPARE(item.isSubItem, 0);
    QCOMPARE(item.len, 0);
    QCOMPARE(item.occurrences, 1);
    QCOMPARE(item.start, 1);
    QCOMPARE(item.hasDecimalChar, false);
    QCOMPARE(item.isZeroFill, false);
    QCOMPARE(item.firstOccurrenceIndex, 0);
    QVERIFY(!item.record);
    QVERIFY(item.valueSets && item.valueSets->isEmpty());
    QCOMPARE(item.getCount(), 0);
    QCOMPARE(item.getHasValueSet(), false);
    const QObject& object = item;
    QVERIFY(!object.parent());
}

void tst_CSPro::aRecordDoesNotHoldItsItems()
{
    TCSProRecord record;
    TCSProItem item;
    QCOMPARE(record.getCount(), 1);
    record.addItem(&item);
    record.addItem(&item);
    QCOMPARE(record.getCount(), 1);
    for (int index : { -1, 0, 1, 2 })
        QVERIFY(!record.getItem(index));
    QVERIFY(!item.record);
}

void tst_CSPro::anItemKeepsItsFirstValueSet()
{
    TCSProItem item;
    TCSProValueSet first;
    TCSProValueSet second;
    item.valueSetCount = 7;
    item.addValueSet(&first);
    QVERIFY(item.getHasValueSet());
    item.addValueSet(&second);
    QCOMPARE(item.valueSetCount, 7);
    QCOMPARE(item.getCount(), 1);
    QCOMPARE(item.valueSetCount, 1);
    QCOMPARE(item.getValueSet(0), &first);
    QCOMPARE(*item.valueSets, QList<TCSProValueSet*> { &first });
}

void tst_CSPro::anItemWithoutAListHasNoValueSet()
{
    TCSProItem item;
    const std::unique_ptr<QList<TCSProValueSet*>> list(item.valueSets);
    item.valueSets = nullptr;
    QCOMPARE(item.getHasValueSet(), false);
}

void tst_CSPro::getItemType_data()
{
    QTest::addColumn<QString>("header");
    QTest::addColumn<int>("kind");

    row("dictionary", "[Dictionary]", 1);
    row("record", "[Record]", 2);
    row("item", "[Item]", 3);
    row("value set", "[ValueSet]", 4);
    row("upper case", "[DICTIONARY]", 1);
    row("lower case", "[valueset]", 4);
    row("mixed case", "[rEcOrD]", 2);
    row("no closing bracket", "[Item", 3);
    row("text behind the bracket", "[Item] of a person", 3);
    row("second bracket behind the first", "[Item]]", 3);
    row("any first character goes", "(Item]", 3);
    row("identification items", "[IdItems]", 0);
    row("level", "[Level]", 0);
    row("relation", "[Relation]", 0);
    row("longer word", "[Items]", 0);
    row("shorter word", "[Ite]", 0);
    row("blank before the word", "[ Item]", 0);
    row("blank behind the word", "[Item ]", 0);
    row("bracket doubled", "[[Item]]", 0);
    row("no bracket loses its first letter", "Item", 0);
    row("empty brackets", "[]", 0);
    row("one character", "[", 0);
    row("nothing", "", 0);
}

void tst_CSPro::getItemType()
{
    QFETCH(QString, header);
    QFETCH(int, kind);
    TCSPro parser;
    TCSProRecord record;
    parser.currentRecord = &record;
    QCOMPARE(parser.getItemType(header), kind);
    QCOMPARE(parser.currentRecord, kind == 0 ? parser.commonRecord : &record);
}

void tst_CSPro::getSection_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("section");
    QTest::addColumn<int>("lastLine");

    row("ends before the next header",
        QStringList { "[Item]", "Name=A", "Len=1", "[Item]", "Name=B" }, 0,
        QStringList { "Name=A", "Len=1" }, 2);
    row("runs to the end of the file", QStringList { "[Item]", "[Item]", "Name=B", "Len=2" }, 1,
        QStringList { "Name=B", "Len=2" }, 3);
    row("lines are trimmed, blank ones left out",
        QStringList { "[Item]", "  Name=A\t", "", "   ", "Len = 1 ", "" }, 0,
        QStringList { "Name=A", "Len = 1" }, 5);
    row("header directly behind", QStringList { "[Item]", "[Record]", "Name=R" }, 0, QStringList(),
        0);
    row("indented header is an ordinary line",
        QStringList { "[Item]", "Name=A", "  [Item]", "Name=B", "[Item]" }, 0,
        QStringList { "Name=A", "[Item]", "Name=B" }, 3);
    row("a lone bracket ends a section", QStringList { "[Item]", "Name=A", "[", "Len=1" }, 0,
        QStringList { "Name=A" }, 1);
    row("header on the last line", QStringList { "Name=A", "[Item]" }, 1, QStringList(), 1);
    row("index behind the end", QStringList { "[Item]", "Name=A" }, 2, QStringList(), 2);
    row("index far behind the end", QStringList { "[Item]", "Name=A" }, 9, QStringList(), 9);
    row("no lines at all", QStringList(), 0, QStringList(), 0);
    row("from the middle of a section", QStringList { "[Item]", "Name=A", "Len=1", "[Item]" }, 1,
        QStringList { "Len=1" }, 2);
}

void tst_CSPro::getSection()
{
    QFETCH(QStringList, lines);
    QFETCH(int, index);
    QFETCH(QStringList, section);
    QFETCH(int, lastLine);
    const QStringList before = lines;
    TCSPro parser;
    const std::unique_ptr<QStringList> result(parser.getSection(&lines, index));
    QVERIFY(result);
    QVERIFY(result.get() != &lines);
    QCOMPARE(*result, section);
    QCOMPARE(index, lastLine);
    QCOMPARE(lines, before);
}

void tst_CSPro::processLine_data()
{
    QTest::addColumn<QStringList>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("number"); // -77: the default

    row("no lines", QStringList(), "Len", "", -77);
    row("key is missing", QStringList { "Name=A" }, "Len", "", -77);
    row("text", QStringList { "Name=A" }, "Name", "A", -77);
    row("number", QStringList { "Name=A", "Len=12" }, "Len", "12", 12);
    row("value is not trimmed", QStringList { "Len= 12 " }, "Len", " 12 ", 12);
    row("blanks around the sign", QStringList { "Name = A" }, "Name", " A", -77);
    row("no sign", QStringList { "Len 12" }, "Len", "", -77);
    row("key alone", QStringList { "Len" }, "Len", "", -77);
    row("empty value", QStringList { "Len=" }, "Len", "", -77);
    row("value holds a sign", QStringList { "Label=a=b" }, "Label", "", -77);
    row("two signs at the end", QStringList { "Len=5=" }, "Len", "", -77);
    row("two signs at the start", QStringList { "Len==5" }, "Len", "", -77);
    row("first of two lines wins", QStringList { "Len=5", "Len=6" }, "Len", "5", 5);
    row("a bad first line hides a good one", QStringList { "Len=5=5", "Len=6" }, "Len", "", -77);
    row("key inside a longer key", QStringList { "RecordTypeStart=7", "Start=2" }, "Start", "7", 7);
    row("longer key behind the key", QStringList { "Start=2", "RecordTypeStart=7" }, "Start", "2",
        2);
    row("key at the start of a longer key", QStringList { "DecimalChar=Yes", "Decimal=2" },
        "Decimal", "Yes", -77);
    row("key inside a value", QStringList { "Label=Len of stay", "Len=3" }, "Len", "Len of stay",
        -77);
    row("key behind the sign only", QStringList { "Note=Len" }, "Len", "Len", -77);
    row("other case is another key", QStringList { "LEN=5", "len=6" }, "Len", "", -77);
    row("empty key takes the first line", QStringList { "Name=A", "Len=3" }, "", "A", -77);
    row("sign first", QStringList { "=Len" }, "Len", "Len", -77);
    row("negative number", QStringList { "Len=-3" }, "Len", "-3", -3);
    row("number with a plus", QStringList { "Len=+4" }, "Len", "+4", 4);
    row("leading zeros are decimal", QStringList { "Len=012" }, "Len", "012", 12);
    row("hexadecimal is no number", QStringList { "Len=0x10" }, "Len", "0x10", -77);
    row("decimal point is no integer", QStringList { "Len=1.5" }, "Len", "1.5", -77);
    row("grouped digits are no number", QStringList { "Len=1,000" }, "Len", "1,000", -77);
    row("largest number", QStringList { "Len=2147483647" }, "Len", "2147483647", 2147483647);
    row("too large a number", QStringList { "Len=2147483648" }, "Len", "2147483648", -77);
    row("number with a unit", QStringList { "Len=3 columns" }, "Len", "3 columns", -77);
}

void tst_CSPro::processLine()
{
    QFETCH(QStringList, section);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(int, number);
    TCSPro parser;
    QCOMPARE(parser.processLine(section, key, QString()), value);
    QCOMPARE(parser.processLine(section, key, QStringLiteral("anything=1")), value);
    QCOMPARE(parser.processLineToInt(section, key, -77), number);
}

void tst_CSPro::dictionary_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("texts"); // version, label, name, positions, zero fill, point
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("len");

    row("every key",
        "[Dictionary]\nVersion=4.0\nLabel=Census\nName=CEN\n"
        "RecordTypeStart=3\nRecordTypeLen=2\nPositions=Relative\n"
        "ZeroFill=No\nDecimalChar=Yes",
        QStringList { "4.0", "Census", "CEN", "Relative", "No", "Yes" }, 3, 2);
    row("no key", "[Dictionary]", QStringList { "", "", "", "", "", "" }, 1, 1);
    row("texts as written, numbers as defaults",
        "[Dictionary]\nVersion=CSPRO\nLabel= x\nName=\nRecordTypeStart=one\nRecordTypeLen=\n"
        "Positions=a=b\nZeroFill=yes\nDecimalChar=1",
        QStringList { "CSPRO", " x", "", "", "yes", "1" }, 1, 1);
    row("one record type", "[dictionary]\nRecordTypeStart=0\nRecordTypeLen=0",
        QStringList { "", "", "", "", "", "" }, 0, 0);
    row("a word in the label answers for its key",
        "[Dictionary]\nLabel=Version of the Name\nVersion=4\nName=N",
        QStringList {
            "Version of the Name", "Version of the Name", "Version of the Name", "", "", "" },
        1, 1);
    row("lines below an indented header belong here", "[Dictionary]\n [Record]\nName=R",
        QStringList { "", "", "R", "", "", "" }, 1, 1);
}

void tst_CSPro::dictionary()
{
    QFETCH(QString, text);
    QFETCH(QStringList, texts);
    QFETCH(int, start);
    QFETCH(int, len);
    TCSPro parser;
    parse(parser, text);
    QCOMPARE((QStringList { parser.version, parser.label, parser.name, parser.positions,
                 parser.zeroFill, parser.decimalChar }),
        texts);
    QCOMPARE(parser.recordTypeStart, start);
    QCOMPARE(parser.recordTypeLen, len);
    QCOMPARE(parser.getRecordsCount(), 0);
    QCOMPARE(parser.getItemsCount(), 0);
}

void tst_CSPro::aSecondDictionarySectionOverwrites()
{
    TCSPro parser;
    parse(parser,
        "[Dictionary]\nVersion=4\nLabel=L\nName=N\nRecordTypeStart=5\nRecordTypeLen=6\nPositions="
        "P\n"
        "ZeroFill=Z\nDecimalChar=D\n[Dictionary]\nName=M\n[Level]");
    QCOMPARE(parser.name, QString("M"));
    QCOMPARE(parser.version, QString());
    QCOMPARE(parser.label, QString());
    QCOMPARE(parser.positions, QString());
    QCOMPARE(parser.zeroFill, QString());
    QCOMPARE(parser.decimalChar, QString());
    QCOMPARE(parser.recordTypeStart, 1);
    QCOMPARE(parser.recordTypeLen, 1);
}

void tst_CSPro::record_data()
{
    QTest::addColumn<QString>("body");
    QTest::addColumn<QStringList>("texts"); // label, name, record-type value, required
    QTest::addColumn<int>("maxRecords");
    QTest::addColumn<int>("recordLen");

    row("every key",
        "Label=House\nName=HOUSE\nRecordTypeValue='1'\nRequired=No\n"
        "MaxRecords=30\nRecordLen=120",
        QStringList { "House", "HOUSE", "1", "No" }, 30, 120);
    row("no key", "", QStringList { "", "", "", "" }, 100, 0);
    row("bad numbers", "MaxRecords=many\nRecordLen=1.5", QStringList { "", "", "", "" }, 100, 0);
    row("numbers below zero", "MaxRecords=-1\nRecordLen=-2", QStringList { "", "", "", "" }, -1,
        -2);
    row("longer value", "RecordTypeValue='H10'", QStringList { "", "", "H10", "" }, 100, 0);
    row("blank value", "RecordTypeValue=' '", QStringList { "", "", " ", "" }, 100, 0);
    row("quotes only", "RecordTypeValue=''", QStringList { "", "", "", "" }, 100, 0);
    row("empty value", "RecordTypeValue=", QStringList { "", "", "", "" }, 100, 0);
    row("one character", "RecordTypeValue=1", QStringList { "", "", "", "" }, 100, 0);
    row("two characters", "RecordTypeValue=12", QStringList { "", "", "", "" }, 100, 0);
    row("no quotes lose their ends all the same", "RecordTypeValue=1234",
        QStringList { "", "", "23", "" }, 100, 0);
    row("blank before the quotes", "RecordTypeValue= 'H'", QStringList { "", "", "'H", "" }, 100,
        0);
    row("value with a sign", "RecordTypeValue='='", QStringList { "", "", "", "" }, 100, 0);
    row("a word in the label answers for its key", "Label=Name and RecordLen\nName=R\nRecordLen=9",
        QStringList { "Name and RecordLen", "Name and RecordLen", "", "" }, 100, 0);
}

void tst_CSPro::record()
{
    QFETCH(QString, body);
    QFETCH(QStringList, texts);
    QFETCH(int, maxRecords);
    QFETCH(int, recordLen);
    TCSPro parser;
    parse(parser, QStringLiteral("[Record]\n") + body);
    QCOMPARE(parser.getRecordsCount(), 1);
    QCOMPARE(parser.recordsCount, 1);
    TCSProRecord* record = parser.getRecord(0);
    QCOMPARE(
        (QStringList { record->label, record->name, record->recordTypeValue, record->required }),
        texts);
    QCOMPARE(record->maxRecords, maxRecords);
    QCOMPARE(record->recordLen, recordLen);
    QCOMPARE(record->sourceLine, 1);
    QCOMPARE(parser.currentRecord, record);
    QCOMPARE(parser.findRecordByValue(texts.at(2)), record);
    QCOMPARE(static_cast<int>(parser.recordsByValue.size()), 1);
    QVERIFY(record != parser.commonRecord);
}

void tst_CSPro::recordsOfOneValue()
{
    TCSPro parser;
    parse(parser,
        "[Record]\nName=A\nRecordTypeValue='h'\n[Record]\nName=B\nRecordTypeValue='H'\n"
        "[Record]\nName=C\nRecordTypeValue='h'");
    parser.recordsCount = 9;
    QCOMPARE(parser.getRecordsCount(), 3);
    QCOMPARE(parser.recordsCount, 3);
    QCOMPARE(parser.getRecord(0)->name, QString("A"));
    QCOMPARE(parser.getRecord(2)->name, QString("C"));
    QCOMPARE(parser.findRecordByValue("h"), parser.getRecord(2));
    QCOMPARE(parser.findRecordByValue("H"), parser.getRecord(1));
    QVERIFY(!parser.findRecordByValue(""));
    QVERIFY(!parser.findRecordByValue("h "));
    QCOMPARE(static_cast<int>(parser.recordsByValue.size()), 2);
}

void tst_CSPro::item_data()
{
    QTest::addColumn<QString>("body");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QList<int>>("numbers"); // start, len, isAlpha, isSubItem, decimal
    QTest::addColumn<bool>("hasDecimalChar");
    QTest::addColumn<bool>("isZeroFill");

    row("every key",
        "Label=Income\nName=INC\nStart=10\nLen=8\nDataType=Alpha\nItemType=SubItem\n"
        "Occurrences=1\nDecimal=2\nDecimalChar=Yes\nZeroFill=Yes",
        "Income", "INC", QList<int> { 10, 8, 1, 1, 2 }, true, true);
    row("no key", "", "", "", QList<int> { 1, 0, 0, 0, 0 }, false, false);
    row("any case of a word", "DataType=aLPHA\nItemType=SUBITEM\nDecimalChar=yES\nZeroFill=yes", "",
        "", QList<int> { 1, 0, 1, 1, 0 }, true, true);
    row("other words", "DataType=Numeric\nItemType=Item\nDecimalChar=No\nZeroFill=Y", "", "",
        QList<int> { 1, 0, 0, 0, 0 }, false, false);
    row("a blank makes another word",
        "DataType= Alpha\nItemType=Sub Item\nDecimalChar= Yes\nZeroFill= Yes", "", "",
        QList<int> { 1, 0, 0, 0, 0 }, false, false);
    row("longer words",
        "DataType=Alphanumeric\nItemType=SubItems\nDecimalChar=Yes!\nZeroFill=Yesno", "", "",
        QList<int> { 1, 0, 0, 0, 0 }, false, false);
    row("bad numbers", "Start=a\nLen=b\nOccurrences=c\nDecimal=d", "", "",
        QList<int> { 1, 0, 0, 0, 0 }, false, false);
    row("negative numbers", "Start=-4\nLen=-3\nDecimal=-2", "", "", QList<int> { -4, -3, 0, 0, -2 },
        false, false);
    row("decimal point before the decimals hides them", "DecimalChar=Yes\nDecimal=2", "", "",
        QList<int> { 1, 0, 0, 0, 0 }, true, false);
    row("decimals before the decimal point", "Decimal=2\nDecimalChar=Yes", "", "",
        QList<int> { 1, 0, 0, 0, 2 }, true, false);
    row("start of the record type before the start", "RecordTypeStart=7\nStart=2", "", "",
        QList<int> { 7, 0, 0, 0, 0 }, false, false);
    row("length of the record before the length", "RecordLen=80\nLen=2", "", "",
        QList<int> { 1, 80, 0, 0, 0 }, false, false);
    row("a word in the label answers for its key", "Label=Length at Start\nName=LS\nStart=4\nLen=2",
        "Length at Start", "LS", QList<int> { 1, 0, 0, 0, 0 }, false, false);
    row("label with a sign", "Label=a=b\nName=N", "", "N", QList<int> { 1, 0, 0, 0, 0 }, false,
        false);
    row("blank lines between", "\nName=N\n\n  \nLen=3\n", "", "N", QList<int> { 1, 3, 0, 0, 0 },
        false, false);
}

void tst_CSPro::item()
{
    QFETCH(QString, body);
    QFETCH(QString, label);
    QFETCH(QString, name);
    QFETCH(QList<int>, numbers);
    QFETCH(bool, hasDecimalChar);
    QFETCH(bool, isZeroFill);
    TCSPro parser;
    parse(parser, QStringLiteral("[Record]\n[Item]\n") + body);
    QCOMPARE(parser.getItemsCount(), 1);
    TCSProItem* item = parser.getItem(0);
    QCOMPARE(item->label, label);
    QCOMPARE(item->name, name);
    QCOMPARE((QList<int> { item->start, item->len, item->isAlpha, item->isSubItem, item->decimal }),
        numbers);
    QCOMPARE(item->hasDecimalChar, hasDecimalChar);
    QCOMPARE(item->isZeroFill, isZeroFill);
    QCOMPARE(item->occurrences, 1);
    QCOMPARE(item->firstOccurrenceIndex, 0);
    QCOMPARE(item->record, parser.getRecord(0));
    QCOMPARE(item->missingCode, QString());
    QCOMPARE(item->notApplicableCode, QString());
    QCOMPARE(item->getHasValueSet(), false);
    QCOMPARE(item->sourceLine, 2);
    QCOMPARE(parser.lastItem, item);
    QCOMPARE(parser.lastItemNumeric, item->isAlpha == 0);
}

void tst_CSPro::occurrences()
{
    TCSPro parser;
    parse(parser,
        "[Record]\nName=R\n[Item]\nName=A\n[Item]\nName=B\n[Item]\nLabel=Child\nName=C\nStart=10\n"
        "Len=3\nDataType=Alpha\nItemType=SubItem\nOccurrences=4\nDecimal=2\nDecimalChar=Yes\n"
        "ZeroFill=Yes\n[Item]\nName=D\nOccurrences=2\nStart=5\nLen=0");
    QCOMPARE(parser.getItemsCount(), 8);
    for (int k = 1; k <= 4; ++k) {
        const TCSProItem* item = parser.getItem(1 + k);
        QCOMPARE(item->label, QString("Child"));
        QCOMPARE(item->name, QStringLiteral("C_") + character(k));
        QCOMPARE(item->start, 10 + (k - 1) * 3);
        QCOMPARE(item->len, 3);
        QCOMPARE(item->isAlpha, 1);
        QCOMPARE(item->isSubItem, 1);
        QCOMPARE(item->decimal, 2);
        QCOMPARE(item->hasDecimalChar, true);
        QCOMPARE(item->isZeroFill, false);
        QCOMPARE(item->occurrences, 1);
        QCOMPARE(item->occurrence, k);
        QCOMPARE(item->firstOccurrenceIndex, 2);
        QCOMPARE(item->missingCode, QString());
        QCOMPARE(item->notApplicableCode, QString());
        QCOMPARE(item->record, parser.getRecord(0));
        QCOMPARE(item->sourceLine, 7);
        QVERIFY(!item->getHasValueSet());
    }
    QVERIFY(parser.getItem(2)->valueSets != parser.getItem(3)->valueSets);
    for (int index : { 6, 7 }) {
        QCOMPARE(parser.getItem(index)->firstOccurrenceIndex, 6);
        QCOMPARE(parser.getItem(index)->start, 5);
    }
    QCOMPARE(parser.lastItem, parser.getItem(7));
    QCOMPARE(parser.lastItemNumeric, true);
}

// The suffix is one character, however large the number.
void tst_CSPro::occurrencesBeyondTheDigits()
{
    TCSPro parser;
    parse(parser, "[Item]\nName=A\nLen=2\nStart=-1\nOccurrences=300");
    QCOMPARE(parser.getItemsCount(), 300);
    QCOMPARE(parser.getItem(0)->name, QStringLiteral("A_") + character(1));
    QCOMPARE(parser.getItem(47)->name, QString("A_0"));
    QCOMPARE(parser.getItem(299)->name, QStringLiteral("A_") + character(300));
    QCOMPARE(parser.getItem(299)->start, -1 + 299 * 2);
    QCOMPARE(parser.getItem(299)->firstOccurrenceIndex, 0);
}

void tst_CSPro::noOccurrences_data()
{
    QTest::addColumn<QString>("occurrences");
    QTest::addColumn<int>("items");

    row("none", "Occurrences=0", 0);
    row("fewer than none", "Occurrences=-2", 0);
    row("one", "Occurrences=1", 1);
    row("two", "Occurrences=2", 2);
    row("no number", "Occurrences=two", 1);
    row("no key", "", 1);
}

void tst_CSPro::noOccurrences()
{
    QFETCH(QString, occurrences);
    QFETCH(int, items);
    TCSPro parser;
    parse(parser, QStringLiteral("[Item]\nName=A\n[Item]\nName=B\nLen=1\n") + occurrences);
    QCOMPARE(parser.getItemsCount(), 1 + items);
    QCOMPARE(parser.lastItem, parser.getItem(items));
    QCOMPARE(parser.lastItem->name.left(1), QString(items == 0 ? "A" : "B"));
}

void tst_CSPro::aDroppedItemStillSetsTheKindOfTheNextValueSet()
{
    TCSPro parser;
    parse(parser,
        "[Item]\nName=A\nLen=1\n[Item]\nName=B\nDataType=Alpha\nOccurrences=0\n"
        "[ValueSet]\nName=V\nValue='x';X");
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(parser.lastItemNumeric, false);
    TCSProItem* item = parser.getItem(0);
    QVERIFY(item->getHasValueSet());
    QCOMPARE(item->getValueSet(0)->isNumeric, false);
    QCOMPARE(item->getValueSet(0)->getValueSetItem(0)->code, QString("x"));
}

void tst_CSPro::identificationItemsAreCommon()
{
    TCSPro parser;
    parse(parser,
        "[Dictionary]\nName=D\n[Level]\nName=L\n[IdItems]\n[Item]\nName=PROVINCE\nLen=2\n"
        "[Item]\nName=DISTRICT\nLen=2\n[Record]\nName=PERSON\nRecordTypeValue='2'\n"
        "[Item]\nName=AGE\nLen=3\n[Relation]\n[Item]\nName=LATE");
    QCOMPARE(parser.getItemsCount(), 4);
    for (int index : { 0, 1, 3 }) {
        QCOMPARE(parser.getItem(index)->record, parser.commonRecord);
        QCOMPARE(parser.getItem(index)->record->name, QString("Common"));
        QCOMPARE(parser.getItem(index)->record->recordTypeValue, QString("_COMMON_"));
    }
    QCOMPARE(parser.getItem(2)->record, parser.getRecord(0));
    QCOMPARE(parser.getRecordsCount(), 1);
    QVERIFY(!parser.findRecordByValue("_COMMON_"));
    QCOMPARE(parser.findRecordByValue("2"), parser.getRecord(0));
    QCOMPARE(parser.name, QString("D"));
}

void tst_CSPro::sectionLoop_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("items"); // name and record of each

    row("nothing", "", QStringList());
    row("no section", "Name=A\n; comment\n\nItem]", QStringList());
    row("lines before the first section", "; comment\nName=X\n\n[Item]\nName=A",
        QStringList { "A Common" });
    row("header without lines", "[Item]", QStringList { " Common" });
    row("headers one behind the other", "[Record]\n[Item]\n[Item]", QStringList { " ", " " });
    row("indented header before any section opens one", "  [Item]\nName=A",
        QStringList { "A Common" });
    row("tab before and blanks behind the header", "\t[Item]  \nName=A",
        QStringList { "A Common" });
    row("indented header behind a section belongs to it",
        "[Item]\nName=A\n  [Item]\nName=B\n[Item]\nName=C", QStringList { "A Common", "C Common" });
    row("indented header below an unknown section opens one",
        "[Record]\nName=R\n[Level]\nName=L\n  [Item]\nName=A", QStringList { "A Common" });
    row("an unknown section ends the record",
        "[Record]\nName=R\n[Item]\nName=A\n[Other]\n[Item]\nName=B",
        QStringList { "A R", "B Common" });
    row("empty brackets end the record", "[Record]\nName=R\n[]\n[Item]\nName=B",
        QStringList { "B Common" });
    row("a lone bracket does not end the record", "[Record]\nName=R\n[\n[Item]\nName=B",
        QStringList { "B R" });
    row("keys below a lone bracket are lost", "[Item]\nName=A\n[\nLabel=L\n[Item]\nName=B",
        QStringList { "A Common", "B Common" });
    row("a dictionary or a value set does not end the record",
        "[Record]\nName=R\n[Dictionary]\n[ValueSet]\n[Item]\nName=B", QStringList { "B R" });
    row("a record after the common items",
        "[IdItems]\n[Item]\nName=A\n[Record]\nName=R\n[Item]\nName=B\n[Record]\nName=S\n"
        "[Item]\nName=C",
        QStringList { "A Common", "B R", "C S" });
    row("header in capitals without closing bracket", "[RECORD\nName=R\n[ITEM\nName=A",
        QStringList { "A R" });
}

void tst_CSPro::sectionLoop()
{
    QFETCH(QString, text);
    QFETCH(QStringList, items);
    TCSPro parser;
    QStringList lines = text.split(QLatin1Char('\n'));
    const QStringList before = lines;
    parser.loadFromStr(&lines);
    QCOMPARE(lines, before);
    QStringList found;
    for (const TCSProItem* item : qAsConst(*parser.getItemsList()))
        found.append(item->name + QLatin1Char(' ') + item->record->name);
    QCOMPARE(found, items);
}

void tst_CSPro::processingOneSection()
{
    QStringList lines { "[Dictionary]", "Name=D", "[Record]", "Name=R", "", "[Item]", "Name=A",
        "Len=1", "[ValueSet]", "Name=V", "Value=1;One", "[ValueSet]", "Name=W", "Value=2;Two" };
    TCSPro parser;
    int index = 0;
    parser.processDictionary(&lines, index);
    QCOMPARE(index, 1);
    QCOMPARE(parser.name, QString("D"));
    index = 2;
    parser.processRecord(&lines, index);
    QCOMPARE(index, 4);
    QCOMPARE(parser.getRecord(0)->name, QString("R"));
    index = 5;
    parser.processItem(&lines, index);
    QCOMPARE(index, 7);
    QCOMPARE(parser.lastItem->name, QString("A"));
    QCOMPARE(parser.lastItem->record, parser.getRecord(0));
    index = 8;
    parser.processValueSet(&lines, index);
    QCOMPARE(index, 10);
    QCOMPARE(parser.lastItem->getValueSet(0)->name, QString("V"));
    // A second set is not even read, so the index stays.
    index = 11;
    parser.processValueSet(&lines, index);
    QCOMPARE(index, 11);
    QCOMPARE(parser.lastItem->getCount(), 1);
}

void tst_CSPro::aSecondLoadAppends()
{
    TCSPro parser;
    parse(parser,
        "[Dictionary]\nName=D\nVersion=1\n[Record]\nName=R\nRecordTypeValue='1'\n[Item]\nName=A");
    parse(parser, "[Item]\nName=B\n[Dictionary]\nName=E\n[Record]\nName=S\nRecordTypeValue='1'");
    QCOMPARE(parser.getRecordsCount(), 2);
    QCOMPARE(parser.getItemsCount(), 2);
    QCOMPARE(parser.getItem(1)->record, parser.getRecord(0));
    QCOMPARE(parser.findRecordByValue("1"), parser.getRecord(1));
    QCOMPARE(parser.name, QString("E"));
    QCOMPARE(parser.version, QString());
}

void tst_CSPro::whatWasReadOutlivesTheParser()
{
    auto parser = std::make_unique<TCSPro>();
    parse(*parser,
        "[IdItems]\n[Item]\nName=A\n[Record]\nName=R\n[Item]\nName=B\n[ValueSet]\nName=V\nValue=1;"
        "x");
    const QList<TCSProItem*>* items = parser->getItemsList();
    const QList<TCSProRecord*>* records = parser->records;
    parser.reset();
    QCOMPARE(items->size(), 2);
    QCOMPARE(items->at(0)->record->name, QString("Common"));
    QCOMPARE(items->at(1)->name, QString("B"));
    QCOMPARE(items->at(1)->record, records->at(0));
    QCOMPARE(items->at(1)->getValueSet(0)->getValueSetItem(0)->label, QString("x"));
}

void tst_CSPro::loadFromFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QString>("name"); // of the one item

    const QString text = QStringLiteral("[Item]\nName=A\u00e9\u20ac\nLen=2\n");
    const auto encoded = [](const char* codecName, const QString& content) {
        QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
        return QTextCodec::codecForName(codecName)->fromUnicode(
            content.constData(), content.size(), &withoutMark);
    };
    const QString name = QStringLiteral("A\u00e9\u20ac");
    const QString windowsText = QString(text).replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    const QByteArray mark("\xEF\xBB\xBF");

    row("line feeds", QByteArray("[Item]\nName=A\nLen=2\n"), QByteArray(), "A");
    row("carriage returns and line feeds", QByteArray("[Item]\r\nName=A\r\nLen=2\r\n"),
        QByteArray(), "A");
    row("no end of the last line", QByteArray("[Item]\nLen=2\nName=A"), QByteArray(), "A");
    row("carriage return at the very end", QByteArray("[Item]\nLen=2\nName=A\r"), QByteArray(),
        "A");
    row("blank lines at the end", QByteArray("[Item]\nLen=2\nName=A\n\n\n"), QByteArray(), "A");
    row("byte-order mark before the first header", QByteArray(mark + text.toUtf8()), QByteArray(),
        name);
    row("byte-order mark and carriage returns", QByteArray(mark + windowsText.toUtf8()),
        QByteArray(), name);
    row("UTF-8 by its name", text.toUtf8(), QByteArray("UTF-8"), name);
    row("UTF-8 by its name, carriage returns", windowsText.toUtf8(), QByteArray("UTF-8"), name);
    row("UTF-8 by its name, with its mark", QByteArray(mark + text.toUtf8()), QByteArray("UTF-8"),
        name);
    row("the mark wins over the name", QByteArray(mark + text.toUtf8()), QByteArray("ISO-8859-1"),
        name);
    row("Latin 1 by its name", QByteArray("[Item]\r\nLen=2\r\nName=A\xE9\r\n"),
        QByteArray("ISO-8859-1"), QStringLiteral("A\u00e9"));
    row("Windows code page by its name", QByteArray("[Item]\nLen=2\nName=A\xE9\x80\n"),
        QByteArray("windows-1252"), name);
    row("UTF-16 by its name, with its mark",
        encoded("UTF-16LE", QChar(QChar::ByteOrderMark) + windowsText), QByteArray("UTF-16"), name);
    row("UTF-16 by its name, big end first, with its mark",
        encoded("UTF-16BE", QChar(QChar::ByteOrderMark) + windowsText), QByteArray("UTF-16"), name);
    row("UTF-16 without a mark, little end first", encoded("UTF-16LE", windowsText),
        QByteArray("UTF-16LE"), name);
    row("UTF-16 without a mark, big end first", encoded("UTF-16BE", windowsText),
        QByteArray("UTF-16BE"), name);
    row("UTF-16 with a byte that looks like a carriage return",
        encoded("UTF-16LE", QStringLiteral("[Item]\r\nLen=2\r\nName=\u010d\u0d0a\r\n")),
        QByteArray("UTF-16LE"), QStringLiteral("\u010d\u0d0a"));
    row("UTF-16 by its mark alone", encoded("UTF-16LE", QChar(QChar::ByteOrderMark) + text),
        QByteArray(), name);
    row("UTF-16 by its mark alone, carriage returns",
        encoded("UTF-16LE", QChar(QChar::ByteOrderMark) + windowsText), QByteArray(), name);
    row("UTF-16 by its mark alone, big end first, bytes that look like carriage returns",
        encoded("UTF-16BE",
            QChar(QChar::ByteOrderMark)
                + QStringLiteral("[Item]\r\nLen=2\r\nName=\u010d\u0d0a\r\n")),
        QByteArray(), QStringLiteral("\u010d\u0d0a"));
    row("UTF-32 by its name", encoded("UTF-32BE", windowsText), QByteArray("UTF-32BE"), name);
    row("a codec that does not exist", QByteArray("[Item]\r\nName=A\r\nLen=2"),
        QByteArray("no-such-codec"), "A");
}

void tst_CSPro::loadFromFile()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, codec);
    QFETCH(QString, name);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
    file.close();

    TCSPro parser;
    parser.setTextCodec(codec);
    parser.loadFromFile(path);
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(parser.getItem(0)->name, name);
    QCOMPARE(parser.getItem(0)->len, 2);
    QCOMPARE(parser.getItem(0)->sourceLine, 1);
}

void tst_CSPro::loadFromData_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("asWritten");
    const QStringList names = QDir(TESSEL_TEST_DATA).entryList({ "*.dcf" }, QDir::Files);
    QVERIFY(names.contains("basic_utf16.dcf"));
    for (const QString& name : names) {
        QTest::addRow("%s, established", qPrintable(name)) << name << false;
        QTest::addRow("%s, as written", qPrintable(name)) << name << true;
    }
}

namespace {

// All that a parser says of a dictionary, errors included.
QStringList contentsOf(TCSPro& parser, bool asWritten, const std::function<void()>& load)
{
    if (asWritten)
        parser.setReading(CSProReading::AsWritten);
    parser.setDecimalQuestion([](const CSProProblem&) { return int(QMessageBox::NoToAll); });
    QStringList result;
    try {
        load();
    } catch (OxErrorManager* error) {
        result.append(QString::number(error->code));
        delete error;
    }
    result << parser.name << parser.label << QString::fromLatin1(parser.textEncoding());
    for (const TCSProItem* item : *parser.items)
        result << item->name << item->label << QString::number(item->valueSets->size());
    for (const CSProProblem& problem : parser.problems())
        result << QString::number(problem.line) << problem.text;
    return result;
}

} // namespace

void tst_CSPro::loadFromData()
{
    QFETCH(QString, name);
    QFETCH(bool, asWritten);
    const QString path = QStringLiteral(TESSEL_TEST_DATA "/") + name;
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    TCSPro ofFile;
    TCSPro ofBytes;
    const QStringList expected = contentsOf(ofFile, asWritten, [&] { ofFile.loadFromFile(path); });
    QCOMPARE(contentsOf(ofBytes, asWritten, [&] { ofBytes.loadFromData(bytes); }), expected);
}

void tst_CSPro::loadFromFileUsesTheLocaleCodec()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Item]\nName=\xC1\n");
    file.close();

    QTextCodec* before = QTextCodec::codecForLocale();
    QStringList names;
    for (const char* codec : { "ISO-8859-1", "windows-1251" }) {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
        TCSPro parser;
        parser.loadFromFile(path);
        names.append(parser.getItem(0)->name);
    }
    QTextCodec::setCodecForLocale(before);
    QCOMPARE(names, (QStringList { QStringLiteral("\u00c1"), QStringLiteral("\u0411") }));
}

void tst_CSPro::loadFromFileReadsTheLinesOfATextStream_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QByteArray>("writtenAs");
    QTest::addColumn<bool>("withMark");

    row("no codec, plain text", QByteArray(), QByteArray("ISO-8859-1"), false);
    row("no codec, UTF-8 mark", QByteArray(), QByteArray("UTF-8"), true);
    row("no codec, UTF-16 mark", QByteArray(), QByteArray("UTF-16LE"), true);
    row("UTF-8", QByteArray("UTF-8"), QByteArray("UTF-8"), false);
    row("UTF-8, UTF-16 mark", QByteArray("UTF-8"), QByteArray("UTF-16BE"), true);
    row("UTF-16", QByteArray("UTF-16"), QByteArray("UTF-16LE"), true);
    row("UTF-16, big end first", QByteArray("UTF-16BE"), QByteArray("UTF-16BE"), false);
    row("Latin 1", QByteArray("ISO-8859-1"), QByteArray("ISO-8859-1"), false);
}

/*
 * Long files, whose characters and line ends fall across the borders of whatever is read at once,
 * and every kind of line end.
 */
void tst_CSPro::loadFromFileReadsTheLinesOfATextStream()
{
    QFETCH(QByteArray, codec);
    QFETCH(QByteArray, writtenAs);
    QFETCH(bool, withMark);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QStringList pieces { "[Item]\n", "Name=A", "\u00e9", "\u010d", "\u20ac", "\r\n", "\n", "\n\n",
        "Len=", "1", "Label=", "\u2028", "\U0001F600", "Decimal=2\r\n", "[Record]\r\n",
        "RecordTypeValue='1'\n", "\t", " ", "\x0c", "\u0d0a", "\u0a0d" };
    if (codec.isEmpty())
        pieces.append(QStringLiteral("\r"));
    for (quint32 seed = 0; seed < 60; ++seed) {
        DictionaryWriter writer(seed);
        QString text = withMark ? QString(QChar(QChar::ByteOrderMark)) : QString();
        const int length = seed % 3 == 0 ? 70'000 : writer.below(200);
        while (text.size() < length)
            text += writer.oneOf(pieces);
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        const QByteArray bytes =
            QTextCodec::codecForName(writtenAs)->fromUnicode(text.constData(), text.size(), &state);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();

        QStringList lines;
        QVERIFY(file.open(codec.isEmpty() ? QIODevice::ReadOnly | QIODevice::Text
                                          : QIODevice::OpenMode(QIODevice::ReadOnly)));
        QTextStream stream(&file);
        if (!codec.isEmpty())
            stream.setCodec(codec.constData());
        while (!stream.atEnd())
            lines.append(stream.readLine());
        TCSPro expected;
        expected.loadFromStr(&lines);

        TCSPro parser;
        parser.setTextCodec(codec);
        parser.loadFromFile(path);
        const QStringList found = described(parser);
        const QStringList wanted = described(expected);
        for (int i = 0; i < wanted.size(); ++i) {
            QVERIFY2(found.value(i) == wanted.at(i),
                qPrintable(
                    QStringLiteral("seed %1\n%2\n%3").arg(seed).arg(found.value(i), wanted.at(i))));
        }
        QCOMPARE(found.size(), wanted.size());
        QCOMPARE(problemTexts(parser), problemTexts(expected));
    }
}

// How many characters stand for a broken one depends on the pieces in which a text is decoded.
void tst_CSPro::brokenTextAsATextStreamReadsIt()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("census.dcf")));
    const QByteArray head("[Item]\nLen=2\nName=");
    for (const QByteArray broken :
        { "\xE2\x82z", "\xF0\x9F\x98z", "\xF0\x9F\xF0\x9Fz", "\xED\xA0\x80z" }) {
        for (int before = 0; before <= broken.size(); ++before) {
            const QByteArray filling(16'384 - head.size() - before - 1, 'x');
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(filling + '\n' + head + broken);
            file.close();
            QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
            QTextStream stream(&file);
            stream.setCodec("UTF-8");
            QStringList lines;
            while (!stream.atEnd())
                lines.append(stream.readLine());
            file.close();
            TCSPro parser;
            parser.setTextCodec("UTF-8");
            parser.loadFromFile(file.fileName());
            QCOMPARE(parser.getItemsCount(), 1);
            QCOMPARE("Name=" + parser.getItem(0)->name, lines.last());
        }
    }
}

void tst_CSPro::partsOfAFileJoinWithoutATrace_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QString>("name");
    row("two, three and four bytes", QByteArray("UTF-8"), QStringLiteral("\u00e9\u20ac\U0001F600"));
    row("surrogates", QByteArray("UTF-16LE"), QStringLiteral("\u20ac\U0001F600\U0001F600"));
    row("surrogates, big end first", QByteArray("UTF-16BE"), QStringLiteral("\U0001F600\u0d0a"));
    row("bytes that look like a mark", QByteArray("ISO-8859-1"), QStringLiteral("\u00ff\u00fea"));
    row("bytes that look like another mark", QByteArray("ISO-8859-1"),
        QStringLiteral("\u00ef\u00bb\u00bfa"));
}

// A character, a line end or a mark across the border of two parts that are read one by one.
void tst_CSPro::partsOfAFileJoinWithoutATrace()
{
    QFETCH(QByteArray, codec);
    QFETCH(QString, name);
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("census.dcf")));
    QTextCodec* textCodec = QTextCodec::codecForName(codec);
    const auto encoded = [&](const QString& text) {
        QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
        return textCodec->fromUnicode(text.constData(), text.size(), &withoutMark);
    };
    const QByteArray head = encoded(QStringLiteral("\n[Item]\r\nName="));
    const QByteArray rest = encoded(name + QStringLiteral("\r\nLen=2\r\n"));
    const int unit = encoded(QStringLiteral("x")).size();
    for (int border : { 4096, 16'384, 65'536 }) {
        for (int shift = 0; shift <= rest.size(); shift += unit) {
            const int before = border - shift - head.size();
            const QByteArray bytes = encoded(QString(before / unit, 'x')) + head + rest;
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(bytes);
            file.close();
            TCSPro parser;
            parser.setTextCodec(codec);
            parser.loadFromFile(file.fileName());
            QCOMPARE(parser.getItemsCount(), 1);
            QCOMPARE(parser.getItem(0)->name, name);
            QCOMPARE(parser.getItem(0)->len, 2);
            QCOMPARE(parser.getItem(0)->sourceLine, 2);
        }
    }
}

void tst_CSPro::aMissingFileIsAnEmptyDictionary_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("codec");

    row("no such file", QByteArray(), "missing.dcf", QByteArray());
    row("no such file, with a codec", QByteArray(), "missing.dcf", QByteArray("UTF-16"));
    row("no name", QByteArray(), "", QByteArray());
    row("a folder", QByteArray(), ".", QByteArray());
    row("empty file", QByteArray(), "census.dcf", QByteArray());
    row("empty file, with a codec", QByteArray(), "census.dcf", QByteArray("UTF-8"));
    row("only a byte-order mark", QByteArray("\xEF\xBB\xBF"), "census.dcf", QByteArray());
    row("only a byte-order mark, with a codec", QByteArray("\xFF\xFE"), "census.dcf",
        QByteArray("UTF-16"));
    row("only a line end", QByteArray("\r\n"), "census.dcf", QByteArray());
    row("null bytes", QByteArray(100, '\0'), "census.dcf", QByteArray());
    row("no dictionary", QByteArray("\x89PNG\r\n\x1a\n"), "census.dcf", QByteArray());
}

void tst_CSPro::aMissingFileIsAnEmptyDictionary()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, name);
    QFETCH(QByteArray, codec);
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("census.dcf")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();

    TCSPro parser;
    parser.setTextCodec(codec);
    parser.loadFromFile(name.isEmpty() ? QString() : folder.filePath(name));
    QCOMPARE(parser.getRecordsCount(), 0);
    QCOMPARE(parser.getItemsCount(), 0);
    QVERIFY(!parser.lastItem);
    QCOMPARE(parser.recordTypeStart, 1);
    QCOMPARE(parser.recordTypeLen, 1);
    QCOMPARE(parser.currentRecord, parser.commonRecord);
    QVERIFY(parser.problems().isEmpty());
}

void tst_CSPro::loadFromCSDBLoadsNothing()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.csdb"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Dictionary]\nName=E\n[IdItems]\n[Record]\n[Item]\nName=B\n");
    file.close();

    TCSPro parser;
    parse(parser, "[Dictionary]\nName=D\n[Record]\nName=R\n[Item]\nName=A");
    const QStringList before = described(parser);
    parser.loadFromCSDB(path);
    QCOMPARE(described(parser), before);
    parser.loadFromCSDB(QString());
    parser.loadFromCSDB(folder.filePath(QStringLiteral("missing")));
    QCOMPARE(described(parser), before);
    QCOMPARE(parser.currentRecord, parser.getRecord(0));
}

void tst_CSPro::exceptionsBecomeOneError_data()
{
    QTest::addColumn<int>("kind");
    row("standard exception", 0);
    row("error object", 1);
    row("anything else", 2);
}

void tst_CSPro::exceptionsBecomeOneError()
{
    QFETCH(int, kind);
    TCSPro parser;
    parser.setDecimalQuestion([kind](const CSProProblem&) -> int {
        if (kind == 0)
            throw std::runtime_error("no answer");
        if (kind == 1)
            throw new OxErrorManager(QStringLiteral("Other"), 7, QStringLiteral("no answer"));
        throw 5;
    });
    QStringList log;
    ErrorPointer error;
    {
        const DebugOn debugOn;
        const DebugLines debugLines;
        error = errorOf([&] {
            parse(parser,
                "[Record]\nName=R\n[Item]\nName=A\n[ValueSet]\nName=V\nValue=1.5;x\n"
                "[Item]\nName=B");
        });
        log = debugLines.lines();
    }
    QVERIFY(error);
    QCOMPARE(error->className, QString("CSPro"));
    QCOMPARE(error->code, 242);
    QCOMPARE(error->code, int(InvalidContents));
    QCOMPARE(error->line, 0);
    QCOMPARE(error->text, character(6));
    QCOMPARE(error->getErrorMessage(),
        QStringLiteral(
            "Class : CSPro\r\nError : \u00f2\r\n\r\nMessage : Invalid contents in line\r\n"
            "[\u0006 ]"));

    // The error is logged once, when it is made.
    QCOMPARE(log.filter(QStringLiteral("Class : CSPro")).size(), 1);

    // What stood before the value set is there.
    QCOMPARE(parser.getRecordsCount(), 1);
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(parser.getItem(0)->name, QString("A"));
    QVERIFY(!parser.getItem(0)->getHasValueSet());

    // The parser goes on with what it is given next.
    parser.setDecimalQuestion({});
    parse(parser, "[Item]\nName=B");
    QCOMPARE(parser.getItemsCount(), 2);
}

void tst_CSPro::theErrorTellsTheIndexAsOneCharacter_data()
{
    QTest::addColumn<int>("linesBefore");
    row("one line before", 1);
    row("sixty lines before: a visible character", 60);
    row("three hundred lines before: beyond one byte", 300);
    row("forty thousand lines before", 40'000);
}

// The index is the one that the section has reached: its last line.
void tst_CSPro::theErrorTellsTheIndexAsOneCharacter()
{
    QFETCH(int, linesBefore);
    QStringList lines;
    for (int i = 0; i < linesBefore; ++i)
        lines.append(QStringLiteral("; comment"));
    lines << "[Item]"
          << "Name=A"
          << ""
          << "Occurrences=100000000"
          << ""
          << "[Item]"
          << "Name=B";
    TCSPro parser;
    const ErrorPointer error = errorOf([&] { parser.loadFromStr(&lines); });
    QVERIFY(error);
    QCOMPARE(error->text.size(), 1);
    QCOMPARE(static_cast<int>(error->text.at(0).unicode()), linesBefore + 4);
    QCOMPARE(parser.getItemsCount(), 0);
    QVERIFY(!parser.lastItem);
}

void tst_CSPro::tooManyItems_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("occurrences");
    QTest::addColumn<bool>("loads");
    row("as many as there may be", 0, 500'000, true);
    row("one too many", 0, 500'001, false);
    row("the last item is one too many", 500'000, 1, false);
    row("the rest of the room", 499'990, 10, true);
    row("more than the rest of the room", 499'990, 11, false);
    row("the largest number there is", 1, 2147483647, false);
}

void tst_CSPro::tooManyItems()
{
    QFETCH(int, before);
    QFETCH(int, occurrences);
    QFETCH(bool, loads);
    const QString item = QStringLiteral("[Item]\nName=A\nLen=1\nOccurrences=%1\n");
    TCSPro parser;
    const ErrorPointer error =
        errorOf([&] { parse(parser, item.arg(before) + item.arg(occurrences)); });
    QCOMPARE(!error, loads);
    QCOMPARE(parser.getItemsCount(), loads ? before + occurrences : before);
    QStringList problems;
    if (before == 0)
        problems << "ItemDropped|1|A||0";
    if (!loads) {
        QCOMPARE(error->code, 242);
        problems << "TooManyItems|5|A||500000";
    }
    QCOMPARE(problemTexts(parser), problems);
    qDeleteAll(*parser.items);
    parser.items->clear();
}

// What earlier loads made, or a host put in, counts in no later load.
void tst_CSPro::tooManyItemsOfOneLoad()
{
    const QString item = QStringLiteral("[Item]\nName=A\nLen=1\nOccurrences=%1\n");
    TCSPro parser;
    TCSProItem other;
    parser.items->append(&other);
    parse(parser, item.arg(500'000));
    QCOMPARE(parser.getItemsCount(), 500'001);
    parse(parser, item.arg(1) + item.arg(2));
    QCOMPARE(parser.getItemsCount(), 500'004);
    QCOMPARE(parser.getItem(500'002)->firstOccurrenceIndex, 500'002);

    QStringList lines = item.arg(3).split(QLatin1Char('\n'));
    int index = 0;
    parser.processItem(&lines, index);
    QCOMPARE(parser.getItemsCount(), 500'007);

    QVERIFY(parser.problems().isEmpty());
    const ErrorPointer error = errorOf([&] { parse(parser, item.arg(500'001)); });
    QVERIFY(error);
    QCOMPARE(error->code, 242);
    QCOMPARE(parser.getItemsCount(), 500'007);
    qDeleteAll(parser.items->begin() + 1, parser.items->end());
    parser.items->clear();
}

void tst_CSPro::messageBox_data()
{
    QTest::addColumn<int>("button");
    row("yes", int(QMessageBox::Yes));
    row("yes to all", int(QMessageBox::YesToAll));
    row("no", int(QMessageBox::No));
    row("no to all", int(QMessageBox::NoToAll));
}

void tst_CSPro::messageBox()
{
    QFETCH(int, button);
    TCSPro parser;
    BoxUser user(static_cast<QMessageBox::StandardButton>(button));
    QCOMPARE(
        parser.showMessageBox("<b>text</b>", "more", "title", QMessageBox::Warning), int(button));
    QCOMPARE(user.boxes, 1);
    QCOMPARE(user.box, parser.msgBox);
    QVERIFY(user.isModal);
    QCOMPARE(user.text, QString("<b>text</b>"));
    QCOMPARE(user.informativeText, QString("more"));
    QCOMPARE(user.title, QString("title"));
    QCOMPARE(user.icon, QMessageBox::Warning);
    QCOMPARE(user.format, Qt::RichText);
    QCOMPARE(user.minimumSize, QSize(300, 200));
    QCOMPARE(user.buttons,
        QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No | QMessageBox::NoToAll);
    QCOMPARE(user.defaultButton, QMessageBox::No);
    QCOMPARE(parser.decimalButton, 0);
    QCOMPARE(parser.undefinedButton, 0);
}

void tst_CSPro::theMessageBoxIsReused()
{
    TCSPro parser;
    const QMessageBox* box = parser.msgBox;
    BoxUser user(QMessageBox::No);
    parser.showMessageBox("one", "1", "first", QMessageBox::Question);
    parser.showMessageBox("two", "2", "second", QMessageBox::Critical);
    QCOMPARE(user.boxes, 2);
    QCOMPARE(parser.msgBox, box);
    QCOMPARE(user.text, QString("two"));
    QCOMPARE(user.informativeText, QString("2"));
    QCOMPARE(user.title, QString("second"));
    QCOMPARE(user.icon, QMessageBox::Critical);
}

void tst_CSPro::undefinedQuestion_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("boxes");
    row("not answered yet", 0, 1);
    row("yes to all", 1, 0);
    row("no to all", 2, 0);
    row("asked every time", 3, 1);
}

// Nothing but the button is stored: who asks stores the answer for all.
void tst_CSPro::undefinedQuestion()
{
    QFETCH(int, answer);
    QFETCH(int, boxes);
    TCSPro parser;
    parser.undefinedAnswer = answer;
    parser.undefinedButton = -1;
    parser.decimalButton = -2;
    parser.decimalAnswer = 1;
    BoxUser user(QMessageBox::YesToAll);
    parser.showMessageBoxUndefined("text", "more", "title", QMessageBox::Information);
    QCOMPARE(user.boxes, boxes);
    QCOMPARE(parser.undefinedButton, boxes > 0 ? int(QMessageBox::YesToAll) : -1);
    QCOMPARE(parser.undefinedAnswer, answer);
    QCOMPARE(parser.decimalButton, -2);
    QCOMPARE(parser.decimalAnswer, 1);
    if (boxes > 0) {
        QCOMPARE(user.text, QString("text"));
        QCOMPARE(user.informativeText, QString("more"));
        QCOMPARE(user.title, QString("title"));
        QCOMPARE(user.icon, QMessageBox::Information);
    }
}

void tst_CSPro::theDecimalQuestionIsTranslated()
{
    MarkingTranslator translator;
    QVERIFY(QCoreApplication::installTranslator(&translator));
    TCSPro parser;
    BoxUser user(QMessageBox::No);
    parse(parser, "[Item]\nName=A\n[ValueSet]\nValue=1.5;x");
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(user.boxes, 1);
    QCOMPARE(user.text, QString("<<b>A decimal number was found</b>>"));
    QCOMPARE(user.informativeText, QString("<Would you like to convert it to an integer number?>"));
    QCOMPARE(user.title, QString("<Caution>"));
}

void tst_CSPro::problems_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("problems");

    const int no = QMessageBox::No;
    row("none",
        "[Dictionary]\n[Record]\nRecordTypeValue='1'\n[Record]\n"
        "RecordTypeValue='2'\n[Item]\nName=A\nLen=1\n[ValueSet]\nValue=1;x",
        no, QStringList());
    row("odd lines, keys and values are none",
        "Name=lost\n[Other]\nKey=1\n[Dictionary]\nRecordTypeLen=one\nno key\n[Record]\n"
        "RecordTypeValue=1\nMaxRecords=x\n[Item]\nName=A\nLen=1\nStart=first\nDataType=Date\n"
        "ItemType=Other\nDecimalChar=Maybe\nUnknown=1\n[ValueSet]\nValue=1;x\nName=OTHER,Special\n"
        "Colour=red",
        no, QStringList());
    row("item without a length", "\n[Item]\nName=A", no,
        QStringList { "ItemWithoutLength|2|A||0" });
    row("item with a length below zero", "[Item]\nName=A\nLen=-3", no,
        QStringList { "ItemWithoutLength|1|A||-3" });
    row("item that does not occur", "[Record]\n\n[Item]\nName=A\nLen=1\nOccurrences=-1", no,
        QStringList { "ItemDropped|3|A||-1" });
    row("record type once more",
        "[Record]\nName=A\nRecordTypeValue='1'\n[Record]\nName=B\nRecordTypeValue='1'\n"
        "[Record]\nName=C\nRecordTypeValue='1'",
        no, QStringList { "RecordTypeRepeated|4|B||1", "RecordTypeRepeated|7|C||1" });
    row("second value set",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;x\n[ValueSet]\nName=W\nValue=2;y", no,
        QStringList { "ValueSetIgnored|7|A|W|" });
    row("second value set of a repeated item",
        "[Item]\nName=X\nLen=1\n[Item]\nName=A\nLen=1\nOccurrences=3\n"
        "[ValueSet]\nName=V\nValue=1;x\n[ValueSet]\nLabel=no name",
        no, QStringList { "ValueSetIgnored|11|A||" });
    row("value set before any item", "[Record]\nName=R\n[ValueSet]\nName=V\nValue=1;x", no,
        QStringList { "ValueSetWithoutItem|3||V|" });
    row("first item of the file is repeated",
        "[Item]\nName=A\nLen=1\nOccurrences=2\n[ValueSet]\nName=V\nValue=1;x", no,
        QStringList { "ValueSetOnLastOccurrence|5|A|V|" });
    row("decimal codes are dropped",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;x\nValue=2.5;y\nValue=3.5;z", no,
        QStringList { "DecimalCodesDropped|4|A|V|2.5" });
    row("decimal codes become zero",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;x\nValue=2.5;y\nValue=3.5;z",
        int(QMessageBox::Yes), QStringList { "DecimalCodesConverted|4|A|V|2.5" });
    row("code is no integer",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;x\nValue='B';y\nValue=C;z", no,
        QStringList { "CodesNotInteger|4|A|V|B" });
    row("no answer to the decimal question",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=2.5;y", int(QMessageBox::Cancel),
        QStringList { "CodesNotInteger|4|A|V|2.5" });
    row("in order of the lines",
        "[ValueSet]\nName=V\n[Item]\nName=A\n[Item]\nName=B\nLen=1\nOccurrences=0\n"
        "[ValueSet]\nName=W\nValue=1.0;x\n[ValueSet]\nName=U\nValue=1;x\n[ValueSet]\nName=T",
        no,
        QStringList { "ValueSetWithoutItem|1||V|", "ItemWithoutLength|3|A||0", "ItemDropped|5|B||0",
            "DecimalCodesDropped|9|A|W|1.0", "ValueSetIgnored|15|A|T|" });
}

void tst_CSPro::problems()
{
    QFETCH(QString, text);
    QFETCH(int, answer);
    QFETCH(QStringList, problems);
    TCSPro parser;
    parser.setDecimalQuestion([answer](const CSProProblem&) { return answer; });
    parse(parser, text);
    QCOMPARE(problemTexts(parser), problems);
}

void tst_CSPro::bothReadersAgree_data()
{
    QTest::addColumn<quint32>("firstSeed");
    for (quint32 block = 0; block < 10; ++block)
        QTest::addRow("dictionaries %u to %u", block * 400, block * 400 + 399) << block * 400;
}

void tst_CSPro::bothReadersAgree()
{
    QFETCH(quint32, firstSeed);
    const QList<int> buttons { QMessageBox::Yes, QMessageBox::No, QMessageBox::Yes,
        QMessageBox::YesToAll, QMessageBox::NoToAll };
    int valueSets = 0;
    int occurrences = 0;
    int decimals = 0;
    for (quint32 seed = firstSeed; seed < firstSeed + 400; ++seed) {
        const int firstButton = static_cast<int>(seed);
        QStringList lines = DictionaryWriter(seed).lines();

        TCSPro parser;
        int asked = firstButton;
        parser.setDecimalQuestion(
            [&](const CSProProblem&) { return buttons.at(asked++ % buttons.size()); });
        parser.loadFromStr(&lines);

        int askedPlainly = firstButton;
        plain::Reader reader([&] { return buttons.at(askedPlainly++ % buttons.size()); });
        reader.read(lines);

        const QStringList found = described(parser);
        const QStringList wanted = described(reader);
        for (int i = 0; i < std::max(found.size(), wanted.size()); ++i) {
            QVERIFY2(found.value(i) == wanted.value(i),
                qPrintable(QStringLiteral("seed %1\n%2\n%3\n%4")
                               .arg(seed)
                               .arg(found.value(i), wanted.value(i), lines.join('\n'))));
        }
        QCOMPARE(asked, askedPlainly);
        decimals += asked - firstButton;
        for (const TCSProItem* item : qAsConst(*parser.items)) {
            valueSets += item->getHasValueSet() ? 1 : 0;
            occurrences += item->occurrence > 1 ? 1 : 0;
        }
    }
    // The generated dictionaries hold what they are there for.
    QVERIFY2(valueSets > 100, qPrintable(QString::number(valueSets)));
    QVERIFY2(occurrences > 100, qPrintable(QString::number(occurrences)));
    QVERIFY2(decimals > 10, qPrintable(QString::number(decimals)));
}

QTEST_MAIN(tst_CSPro)

#include "tst_CSPro.moc"
