#pragma once

#include "AddRow.h"
#include "CSProProblemTexts.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>

#include <QMessageBox>
#include <QtTest>

#include <algorithm>
#include <vector>

// Dictionaries made of a few lines, and all that a host sees of them.

using Kind = CSProProblem::Kind;
using Reading = CSProReading;

// Control characters as their number in braces.
inline QString printable(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        if (character.unicode() < 32)
            result += QLatin1Char('{') + QString::number(character.unicode()) + QLatin1Char('}');
        else
            result += character;
    }
    return result;
}

// Line and kind of every problem.
inline QStringList problemsOf(const TCSPro& parser)
{
    QStringList texts;
    for (const CSProProblem& problem : parser.problems())
        texts.append(QString::number(problem.line) + QLatin1Char(' ') + kindName(problem.kind));
    return texts;
}

inline bool hasProblem(const TCSPro& parser, Kind kind)
{
    const QVector<CSProProblem>& problems = parser.problems();
    return std::any_of(problems.begin(), problems.end(),
        [kind](const CSProProblem& problem) { return problem.kind == kind; });
}

/*
 * Everything that a host sees of a dictionary, one attribute a line; what is empty, zero or false
 * is left out.
 */
class Description {
public:
    Description(const TCSPro& parser, const TCSProDataImport& import, int questions)
    {
        add("dictionary.version", parser.version);
        add("dictionary.label", parser.label);
        add("dictionary.name", parser.name);
        add("dictionary.recordType", parser.recordTypeStart, parser.recordTypeLen);
        add("dictionary.positions", parser.positions);
        add("dictionary.zeroFill", parser.zeroFill);
        add("dictionary.decimalChar", parser.decimalChar);
        add("dictionary.note", parser.note());
        for (int i = 0; i < parser.languages().size(); ++i) {
            const CSProLanguage& language = parser.languages().at(i);
            add(key("language", i), language.name + QLatin1Char('|') + language.label);
        }
        for (int i = 0; i < parser.levels().size(); ++i) {
            const CSProLevel& level = parser.levels().at(i);
            add(key("level", i), QStringList { level.name, level.label, level.note });
        }
        for (int i = 0; i < parser.relations().size(); ++i)
            addRelation(key("relation", i), parser.relations().at(i));
        for (int i = 0; i < parser.records->size(); ++i)
            addRecord(key("r", i), *parser.getRecord(i));
        for (int i = 0; i < parser.getItemsCount(); ++i)
            addItem(key("i", i), *parser.getItem(i));
        for (int i = 0; i < import.fields->size(); ++i)
            addField(key("f", i), *import.fields->at(i));
        add("questions", questions);
        add("problems", problemsOf(parser).join(QLatin1String(", ")));
    }

    // "key: before -> after" for every attribute that differs.
    static QStringList differences(const Description& before, const Description& after)
    {
        QStringList texts;
        for (const auto& entry : before.m_values) {
            const QString other = after.value(entry.first);
            if (other != entry.second)
                texts.append(entry.first + ": " + entry.second + " -> " + other);
        }
        for (const auto& entry : after.m_values) {
            if (before.value(entry.first) == QLatin1String("-"))
                texts.append(entry.first + ": - -> " + entry.second);
        }
        texts.sort();
        return texts;
    }

private:
    static QString key(const char* name, int index)
    {
        return QLatin1String(name) + QString::number(index);
    }

    QString value(const QString& key) const
    {
        for (const auto& entry : m_values) {
            if (entry.first == key)
                return entry.second;
        }
        return QStringLiteral("-");
    }

    void add(const QString& key, const QString& value)
    {
        if (!value.isEmpty())
            m_values.emplace_back(key, printable(value));
    }

    void add(const QString& key, const QStringList& values)
    {
        add(key, values.join(QLatin1Char('|')));
    }

    void add(const QString& key, int value)
    {
        add(key, value == 0 ? QString() : QString::number(value));
    }

    void add(const QString& key, int first, int second)
    {
        add(key, QString::number(first) + QLatin1Char('+') + QString::number(second));
    }

    void addRelation(const QString& key, const CSProRelation& relation)
    {
        QStringList texts { relation.name, relation.primary };
        for (const CSProRelationLink& link : relation.links)
            texts.append(link.primaryLink + '/' + link.secondary + '/' + link.secondaryLink);
        add(key, texts);
    }

    void addRecord(const QString& key, const TCSProRecord& record)
    {
        add(key + ".label", record.label);
        add(key + ".name", record.name);
        add(key + ".value", record.recordTypeValue);
        add(key + ".required", record.required);
        add(key + ".max", record.maxRecords);
        add(key + ".len", record.recordLen);
        add(key + ".level", record.level);
        add(key + ".note", record.note);
        add(key + ".occurrences", record.occurrenceLabels.toList());
    }

    void addItem(const QString& key, const TCSProItem& item)
    {
        add(key + ".label", item.label);
        add(key + ".name", item.name);
        add(key + ".written", item.dictionaryName == item.name ? QString() : item.dictionaryName);
        add(key + ".missing", quoted(item.missingCode));
        add(key + ".notApplicable", quoted(item.notApplicableCode));
        add(key + ".refused", quoted(item.detail().refusedCode));
        add(key + ".alpha", item.isAlpha);
        add(key + ".sub", item.isSubItem);
        add(key + ".decimal", item.decimal);
        add(key + ".at", item.start, item.len);
        add(key + ".point", item.hasDecimalChar ? 1 : 0);
        add(key + ".zero", item.isZeroFill ? 1 : 0);
        add(key + ".firstOccurrence", item.firstOccurrenceIndex);
        add(key + ".occurrence", item.occurrence);
        add(key + ".occurrenceLabel", item.detail().occurrenceLabel);
        add(key + ".level", item.detail().level);
        add(key + ".note", item.detail().note);
        add(key + ".record", item.record ? item.record->name : QString());
        if (item.detail().parent)
            add(key + ".parent",
                item.detail().parent->name + '@' + QString::number(item.detail().parent->start));
        for (int i = 0; i < item.valueSets->size(); ++i)
            addValueSet(key + ".v" + QString::number(i), *item.valueSets->at(i));
    }

    void addValueSet(const QString& key, const TCSProValueSet& valueSet)
    {
        add(key + ".name", valueSet.name);
        add(key + ".label", valueSet.label);
        add(key + ".text", valueSet.isNumeric ? 0 : 1);
        add(key + ".link", valueSet.link());
        if (valueSet.linkedSet())
            add(key + ".linked", valueSet.linkedSet()->name);
        add(key + ".note", valueSet.note());
        for (int i = 0; i < valueSet.items->size(); ++i)
            addEntry(key + '[' + QString::number(i) + ']', valueSet, *valueSet.items->at(i));
    }

    void addEntry(const QString& key, const TCSProValueSet& valueSet, const TValueSetItem& entry)
    {
        const CSProValueDetail& detail = valueSet.detail(&entry);
        QString text = '<' + entry.code + '>';
        if (!detail.highCode.isNull())
            text += "..<" + detail.highCode + '>';
        text += ' ' + entry.label;
        if (entry.type != 0 || entry.special)
            text += " type" + QString::number(entry.type);
        if (entry.special)
            text += QLatin1String(" special");
        add(key, text);
        add(key + ".note", detail.note);
        add(key + ".image", detail.image);
        add(key + ".color", detail.textColor);
    }

    void addField(const QString& key, const TGenericField& field)
    {
        add(key + ".type", field.fieldType);
        add(key + ".name", field.name);
        add(key + ".label", field.label);
        add(key + ".decimals", field.decimals);
        add(key + ".at", field.start, field.length);
        add(key + ".from", field.minValue);
        add(key + ".to", field.maxValue);
        add(key + ".missing", quoted(field.missingValue));
        add(key + ".notApplicable", quoted(field.notApplicableValue));
        add(key + ".values", field.valueLabels);
    }

    static QString quoted(const QString& code)
    {
        return code.isEmpty() ? QString() : '<' + code + '>';
    }

    std::vector<std::pair<QString, QString>> m_values;
};

// A dictionary, given as its text, and the fields that an importer makes of it.
class Model {
public:
    Model(Reading reading, const QString& text, int answer = QMessageBox::No,
        const QString& language = QString())
    {
        parser.setReading(reading);
        parser.setDecimalQuestion([this, answer](const CSProProblem&) {
            ++questions;
            return answer;
        });
        QStringList lines = text.split(QLatin1Char('\n'));
        parser.loadFromStr(&lines);
        parser.setLanguage(language);
        import.dictionary = &parser;
        import.recordTypeLen = parser.recordTypeLen;
        import.copyDataFromDictionary();
    }

    Description description() const
    {
        return { parser, import, questions };
    }

    TCSProItem& item(const QString& name) const
    {
        for (TCSProItem* item : qAsConst(*parser.items)) {
            if (item->name == name)
                return *item;
        }
        qFatal("No item %s", qPrintable(name));
    }

    TCSProVariable& variable(const QString& name) const
    {
        for (TGenericField* field : qAsConst(*import.fields)) {
            auto* variable = dynamic_cast<TCSProVariable*>(field);
            if (variable && variable->name == name)
                return *variable;
        }
        qFatal("No field %s", qPrintable(name));
    }

    TCSPro parser;
    TCSProDataImport import;
    int questions = 0;
};

// A field after a text of the data was assigned to it.
inline TCSProVariable& assigned(TCSProVariable& variable, const QString& text)
{
    variable.setAsString(text);
    return variable;
}

// The header of a dictionary with one record; item sections follow, from line 11 on.
constexpr char head[] =
    "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
    "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=1\nRecordLen=9\n";

inline QString dictionary(const QString& sections)
{
    return QLatin1String(head) + sections;
}

// One item A of five columns, numeric unless told otherwise, with the value lines given.
inline QString values(const QString& lines, const QString& more = QString())
{
    return dictionary("[Item]\nName=A\nStart=2\nLen=5\n" + more + "[ValueSet]\nName=V\n" + lines);
}

inline QString textValues(const QString& lines)
{
    return values(lines, QStringLiteral("DataType=Alpha\n"));
}

// "code", "low..high", with a type behind it when special, of value set index of the item.
inline QStringList codesOf(const TCSProItem& item, int index = 0)
{
    QStringList codes;
    if (item.valueSets->size() <= index)
        return { "none" };
    for (const TValueSetItem* entry : qAsConst(*item.valueSets->at(index)->items)) {
        const QString& highCode = item.valueSets->at(index)->detail(entry).highCode;
        QString text = entry->code;
        if (!highCode.isNull())
            text += ".." + highCode;
        if (entry->special)
            text += " special " + QString::number(entry->type);
        codes.append(text);
    }
    return codes;
}

inline QStringList labelsOf(const TCSProItem& item)
{
    QStringList labels;
    for (const TValueSetItem* entry : qAsConst(*item.valueSets->at(0)->items))
        labels.append(entry->label);
    return labels;
}

inline QStringList namesOf(const TCSPro& parser)
{
    QStringList names;
    for (const TCSProItem* item : qAsConst(*parser.items))
        names.append(printable(item->name));
    return names;
}
