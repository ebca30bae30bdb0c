#pragma once

#include "CSProTexts.h"
#include "DescribedDictionary.h"

#include <model_Tessel/CSProValueSet.h>

#include <QMap>
#include <QMessageBox>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

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

inline QString value(const QStringList& section, const QString& key)
{
    const QStringList lines = section.filter(key);
    if (lines.isEmpty())
        return QString();
    const QStringList parts = lines.first().split(QLatin1Char('='));
    return parts.size() == 2 ? parts.at(1) : QString();
}

inline int number(const QStringList& section, const QString& key, int defaultValue)
{
    bool isNumber = false;
    const int result = value(section, key).toInt(&isNumber, 10);
    return isNumber ? result : defaultValue;
}

inline bool isInteger(const QString& code)
{
    bool isNumber = false;
    code.toInt(&isNumber, 10);
    return isNumber;
}

inline bool isDecimal(const QString& code)
{
    return QRegExp(QStringLiteral("\\d*\\.\\d*$")).exactMatch(code);
}

inline QString withoutQuotes(const QString& code)
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

inline QStringList described(const plain::Reader& reader)
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
