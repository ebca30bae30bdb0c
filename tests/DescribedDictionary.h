#pragma once

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

// All that a dictionary holds, as lines that are compared.

inline QString field(const char* name, const QString& value)
{
    return QLatin1String(name) + QLatin1String("=<") + value + QLatin1Char('>');
}

inline QString field(const char* name, int value)
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

inline QStringList described(TCSPro& parser)
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
