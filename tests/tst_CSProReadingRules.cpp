// The reading rules of CSPro dictionaries in text form: each alone, and all together.
#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QFile>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

using Kind = CSProProblem::Kind;
using Rules = CSProReadingRules;
using Flag = bool Rules::*;

struct NamedFlag {
    const char* name;
    Flag flag;
};

const std::vector<NamedFlag>& allFlags()
{
    static const std::vector<NamedFlag> flags {
        { "wholeKeys", &Rules::wholeKeys },
        { "formatDefaults", &Rules::formatDefaults },
        { "quotedCodes", &Rules::quotedCodes },
        { "ranges", &Rules::ranges },
        { "severalCodes", &Rules::severalCodes },
        { "specials", &Rules::specials },
        { "allValueSets", &Rules::allValueSets },
        { "decimalCodes", &Rules::decimalCodes },
        { "keptValueSets", &Rules::keptValueSets },
        { "writtenOrder", &Rules::writtenOrder },
        { "occurrenceNumbers", &Rules::occurrenceNumbers },
        { "repeatedSubItems", &Rules::repeatedSubItems },
        { "scaledValues", &Rules::scaledValues },
        { "lengthRanges", &Rules::lengthRanges },
        { "structure", &Rules::structure },
        { "languages", &Rules::languages },
        { "foundEncoding", &Rules::foundEncoding },
        { "allLineEnds", &Rules::allLineEnds },
        { "json", &Rules::json },
    };
    return flags;
}

// A rule that is missing above would go untested.
static_assert(sizeof(Rules) == 19 * sizeof(bool), "every reading rule is in allFlags()");

QStringList flagsOn(const Rules& rules)
{
    QStringList names;
    for (const NamedFlag& flag : allFlags()) {
        if (rules.*flag.flag)
            names.append(QLatin1String(flag.name));
    }
    return names;
}

Rules alone(Flag flag)
{
    Rules rules = Rules::established();
    rules.*flag = true;
    return rules;
}

Rules without(Flag flag)
{
    Rules rules = Rules::asWritten();
    rules.*flag = false;
    return rules;
}

// Adds a row to a table of test data.
template <typename... Values> void row(const char* name, const Values&... values)
{
    (QTest::newRow(name) << ... << values);
}

// Control characters as their number in braces.
QString printable(const QString& text)
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

QString kindName(Kind kind)
{
    switch (kind) {
    case Kind::ItemWithoutLength:
        return QStringLiteral("ItemWithoutLength");
    case Kind::ItemWithoutStart:
        return QStringLiteral("ItemWithoutStart");
    case Kind::ItemDropped:
        return QStringLiteral("ItemDropped");
    case Kind::RecordTypeRepeated:
        return QStringLiteral("RecordTypeRepeated");
    case Kind::ValueSetIgnored:
        return QStringLiteral("ValueSetIgnored");
    case Kind::ValueSetWithoutItem:
        return QStringLiteral("ValueSetWithoutItem");
    case Kind::ValueSetOnLastOccurrence:
        return QStringLiteral("ValueSetOnLastOccurrence");
    case Kind::DecimalCodesDropped:
        return QStringLiteral("DecimalCodesDropped");
    case Kind::DecimalCodesConverted:
        return QStringLiteral("DecimalCodesConverted");
    case Kind::CodesNotInteger:
        return QStringLiteral("CodesNotInteger");
    case Kind::TooManyItems:
        return QStringLiteral("TooManyItems");
    case Kind::UnknownSection:
        return QStringLiteral("UnknownSection");
    case Kind::UnknownKey:
        return QStringLiteral("UnknownKey");
    case Kind::LineWithoutKey:
        return QStringLiteral("LineWithoutKey");
    case Kind::LineOutsideSection:
        return QStringLiteral("LineOutsideSection");
    case Kind::RepeatedKey:
        return QStringLiteral("RepeatedKey");
    case Kind::NotANumber:
        return QStringLiteral("NotANumber");
    case Kind::UnknownWord:
        return QStringLiteral("UnknownWord");
    case Kind::UnknownSpecial:
        return QStringLiteral("UnknownSpecial");
    case Kind::UnclosedQuote:
        return QStringLiteral("UnclosedQuote");
    case Kind::RangeReversed:
        return QStringLiteral("RangeReversed");
    case Kind::CodeNotANumber:
        return QStringLiteral("CodeNotANumber");
    case Kind::SubItemWithoutParent:
        return QStringLiteral("SubItemWithoutParent");
    case Kind::LinkWithoutValues:
        return QStringLiteral("LinkWithoutValues");
    case Kind::InvalidJson:
        return QStringLiteral("InvalidJson");
    case Kind::WrongJsonType:
        return QStringLiteral("WrongJsonType");
    }
    return QStringLiteral("another kind");
}

// Line and kind of every problem.
QStringList problemsOf(const TCSPro& parser)
{
    QStringList texts;
    for (const CSProProblem& problem : parser.problems())
        texts.append(QString::number(problem.line) + QLatin1Char(' ') + kindName(problem.kind));
    return texts;
}

bool hasProblem(const TCSPro& parser, Kind kind)
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
        add(key + ".refused", quoted(item.refusedCode));
        add(key + ".alpha", item.isAlpha);
        add(key + ".sub", item.isSubItem);
        add(key + ".decimal", item.decimal);
        add(key + ".at", item.start, item.len);
        add(key + ".point", item.hasDecimalChar ? 1 : 0);
        add(key + ".zero", item.isZeroFill ? 1 : 0);
        add(key + ".firstOccurrence", item.firstOccurrenceIndex);
        add(key + ".occurrence", item.occurrence);
        add(key + ".occurrenceLabel", item.occurrenceLabel);
        add(key + ".level", item.level);
        add(key + ".note", item.note);
        add(key + ".record", item.record ? item.record->name : QString());
        if (item.parent)
            add(key + ".parent", item.parent->name + '@' + QString::number(item.parent->start));
        for (int i = 0; i < item.valueSets->size(); ++i)
            addValueSet(key + ".v" + QString::number(i), *item.valueSets->at(i));
    }

    void addValueSet(const QString& key, const TCSProValueSet& valueSet)
    {
        add(key + ".name", valueSet.name);
        add(key + ".label", valueSet.label);
        add(key + ".text", valueSet.isNumeric ? 0 : 1);
        add(key + ".link", valueSet.link);
        if (valueSet.linkedSet)
            add(key + ".linked", valueSet.linkedSet->name);
        add(key + ".note", valueSet.note);
        for (int i = 0; i < valueSet.items->size(); ++i)
            addEntry(key + '[' + QString::number(i) + ']', valueSet, *valueSet.items->at(i));
    }

    void addEntry(const QString& key, const TCSProValueSet& valueSet, const TValueSetItem& entry)
    {
        QString text = '<' + entry.code + '>';
        if (!entry.highCode.isNull())
            text += "..<" + entry.highCode + '>';
        text += ' ' + entry.label;
        if (entry.type != 0 || entry.special)
            text += " type" + QString::number(entry.type);
        if (entry.special)
            text += QLatin1String(" special");
        add(key, text);
        const CSProValueDetail detail = valueSet.details.value(&entry);
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
    Model(const Rules& rules, const QString& text, int answer = QMessageBox::No,
        const QString& language = QString())
    {
        parser.setReadingRules(rules);
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
TCSProVariable& assigned(TCSProVariable& variable, const QString& text)
{
    variable.setAsString(text);
    return variable;
}

// The header of a dictionary with one record; item sections follow, from line 11 on.
const char head[] = "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
                    "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=1\nRecordLen=9\n";

QString dictionary(const QString& sections)
{
    return QLatin1String(head) + sections;
}

// One item A of five columns, numeric unless told otherwise, with the value lines given.
QString values(const QString& lines, const QString& more = QString())
{
    return dictionary("[Item]\nName=A\nStart=2\nLen=5\n" + more + "[ValueSet]\nName=V\n" + lines);
}

QString textValues(const QString& lines)
{
    return values(lines, QStringLiteral("DataType=Alpha\n"));
}

// "code", "low..high", with a type behind it when special, of value set index of the item.
QStringList codesOf(const TCSProItem& item, int index = 0)
{
    QStringList codes;
    if (item.valueSets->size() <= index)
        return { "none" };
    for (const TValueSetItem* entry : qAsConst(*item.valueSets->at(index)->items)) {
        QString text = entry->code;
        if (!entry->highCode.isNull())
            text += ".." + entry->highCode;
        if (entry->special)
            text += " special " + QString::number(entry->type);
        codes.append(text);
    }
    return codes;
}

QStringList labelsOf(const TCSProItem& item)
{
    QStringList labels;
    for (const TValueSetItem* entry : qAsConst(*item.valueSets->at(0)->items))
        labels.append(entry->label);
    return labels;
}

QStringList namesOf(const TCSPro& parser)
{
    QStringList names;
    for (const TCSProItem* item : qAsConst(*parser.items))
        names.append(printable(item->name));
    return names;
}

// What one rule, alone, changes of a dictionary; the rules in also rightly change something too.
struct Change {
    const char* name;
    Flag flag;
    QString text;
    QStringList differences;
    std::vector<Flag> also;
};

const char structured[] = "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\n"
                          "RecordTypeLen=1\nNote=About all\n"
                          "[Level]\nLabel=First level\nName=L\nNote=About it\n"
                          "[IdItems]\n[Item]\nName=ID\nStart=2\nLen=2\n"
                          "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=1\nNote=Of a record\n"
                          "[Item]\nName=A\nStart=4\nLen=2\nNote=Of an item\n"
                          "[ValueSet]\nName=V\nLink=7\nNote=Of a set\n"
                          "Value=1;One\nImage=..\\i\\1.jpg\nNote=Of a value\nTextColor=#010203\n"
                          "[Item]\nName=S\nStart=4\nLen=1\nItemType=SubItem\n"
                          "[Item]\nName=B\nStart=6\nLen=2\n[ValueSet]\nName=W\nLink=7\n"
                          "[Relation]\nName=REL\nPrimary=R\nPrimaryLink=A\nSecondary=R\n"
                          "SecondaryLink=B\n";

const char translated[] = "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\n"
                          "RecordTypeLen=1\n[Languages]\nEN=English\nFR=French\n"
                          "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=1\n"
                          "[Item]\nLabel=Sex|Sexe\nName=A\nStart=2\nLen=1\n"
                          "[ValueSet]\nName=V\nValue=1;Man|Homme\nValue=2;Woman\n";

const char repeatedParent[] = "[Item]\nName=P\nStart=2\nLen=3\nOccurrences=2\n"
                              "[Item]\nName=S\nStart=3\nLen=1\nItemType=SubItem\n"
                              "[Item]\nName=Z\nStart=8\nLen=1\n";

const std::vector<Change>& changes()
{
    static const std::vector<Change> list {
        { "a label with the word of a number's key", &Rules::wholeKeys,
            dictionary("[Item]\nLabel=Start time\nName=A\nStart=5\nLen=2\n"),
            { "f0.at: 1+2 -> 5+2", "i0.at: 1+2 -> 5+2" }, {} },
        { "a label with the word of a text's key", &Rules::wholeKeys,
            dictionary("[Item]\nLabel=Name of person\nName=A\nStart=2\nLen=2\n"),
            { "f0.name: Name of person -> A", "i0.name: Name of person -> A" }, {} },
        { "a label with an equals sign", &Rules::wholeKeys,
            dictionary("[Item]\nLabel=a=b\nName=A\nStart=2\nLen=2\n"),
            { "f0.label: - -> a=b", "i0.label: - -> a=b" }, {} },
        { "keys in another case", &Rules::wholeKeys,
            dictionary("[Item]\nLABEL=Age\nname=A\nSTART=2\nlen=2\n"),
            { "f0.at: 1+0 -> 2+2", "f0.label: - -> Age", "f0.name: - -> A", "f0.to: - -> 99",
                "i0.at: 1+0 -> 2+2", "i0.label: - -> Age", "i0.name: - -> A",
                "problems: 11 ItemWithoutLength -> -" },
            {} },
        { "blanks around a key's sign", &Rules::wholeKeys,
            dictionary("[Item]\nLabel = Age\nName=A\nStart = 2\nLen =2\n"),
            { "f0.label:  Age -> Age", "i0.label:  Age -> Age" }, {} },
        { "a set without a name of its own", &Rules::wholeKeys,
            dictionary("[Item]\nName=A\nStart=2\nLen=2\n[ValueSet]\nLabel=L\n"
                       "Value=1;One\nName=MISSING ,Other\n"),
            { "i0.v0.name: MISSING ,Other -> -" }, { &Rules::specials } },

        { "a quoted code with a blank", &Rules::quotedCodes,
            textValues("Value='a b';First\nValue='z';Last"),
            { "f0.values: z Last{9}b First{9}a First{9} -> z Last{9}a b First{9}",
                "i0.v0[1]: <b> First -> <a b> First", "i0.v0[2]: <a> First -> -" },
            { &Rules::writtenOrder } },
        { "a code in the other quotes", &Rules::quotedCodes, textValues("Value=\"it's\";Quoted"),
            { "f0.values: \"it's\" Quoted{9} -> it's Quoted{9}",
                "i0.v0[0]: <\"it's\"> Quoted -> <it's> Quoted" },
            { &Rules::ranges, &Rules::severalCodes } },
        { "a quoted semicolon", &Rules::quotedCodes, textValues("Value='a;b';Both"),
            { "f0.values:  b';Both{9} -> a;b Both{9}", "i0.v0[0]: <> b';Both -> <a;b> Both" },
            { &Rules::ranges, &Rules::severalCodes } },
        { "a quoted colon", &Rules::quotedCodes, textValues("Value='10:30';Time"),
            { "f0.values: 30' Time{9}'10 Time{9} -> 10:30 Time{9}",
                "i0.v0[0]: <30'> Time -> <10:30> Time", "i0.v0[1]: <'10> Time -> -" },
            { &Rules::writtenOrder, &Rules::ranges, &Rules::severalCodes } },
        { "a padded code on the last line", &Rules::quotedCodes,
            textValues("Value='a';First\nValue='N    ';Last"), {},
            { &Rules::writtenOrder, &Rules::severalCodes } },

        { "a range before a code", &Rules::ranges, values("Value=0:95;Age\nValue=99;Unknown"),
            { "f0.values: 0 Age{9}95 Age{9}99 Unknown{9} -> 0:95 Age{9}99 Unknown{9}",
                "i0.v0[0]: <0> Age -> <0>..<95> Age", "i0.v0[1]: <95> Age -> <99> Unknown",
                "i0.v0[2]: <99> Unknown -> -" },
            {} },
        { "a range at the end", &Rules::ranges, values("Value=-9;None\nValue=0:95;Age"),
            { "f0.values: -9 None{9}0 Age{9}95 Age{9} -> -9 None{9}0:95 Age{9}",
                "i0.v0[1]: <0> Age -> <0>..<95> Age", "i0.v0[2]: <95> Age -> -" },
            {} },
        { "a range without a label", &Rules::ranges, values("Value=15:49"),
            { "f0.from: 0 -> 15", "f0.to: 99999 -> 49", "f0.values: - -> 15:49 {9}",
                "i0.v0.name: - -> V", "i0.v0[0]: - -> <15>..<49> ",
                "problems: 15 CodesNotInteger -> -" },
            { &Rules::keptValueSets } },
        { "a range among codes", &Rules::ranges, values("Value=1:7 10;Other\nValue=8;Eight"),
            { "f0.values: 1 Other{9}7 Other{9}8 Eight{9}10 Other{9} -> "
              "1:7 Other{9}8 Eight{9}10 Other{9}",
                "i0.v0[0]: <1> Other -> <1>..<7> Other", "i0.v0[1]: <7> Other -> <8> Eight",
                "i0.v0[2]: <8> Eight -> <10> Other", "i0.v0[3]: <10> Other -> -" },
            { &Rules::writtenOrder } },

        { "several codes on the last line", &Rules::severalCodes, values("Value=0 2 4;Even"),
            { "f0.to: 99999 -> 4", "f0.values: - -> 0 Even{9}2 Even{9}4 Even{9}",
                "i0.v0.name: - -> V", "i0.v0[0]: - -> <0> Even", "i0.v0[1]: - -> <2> Even",
                "i0.v0[2]: - -> <4> Even", "problems: 15 CodesNotInteger -> -" },
            { &Rules::keptValueSets } },
        { "several codes before the last line", &Rules::severalCodes,
            values("Value=0 2 4;Even\nValue=9;Nine"), {}, {} },
        { "a range among codes on the last line", &Rules::severalCodes,
            values("Value=8;Eight\nValue=1:7 10;Other"),
            { "f0.from: 0 -> 1", "f0.to: 99999 -> 10",
                "f0.values: - -> 1 Other{9}7 Other{9}8 Eight{9}10 Other{9}", "i0.v0.name: - -> V",
                "i0.v0[0]: - -> <1> Other", "i0.v0[1]: - -> <7> Other", "i0.v0[2]: - -> <8> Eight",
                "i0.v0[3]: - -> <10> Other", "problems: 15 CodesNotInteger -> -" },
            { &Rules::keptValueSets } },

        { "a missing code", &Rules::specials,
            values("Value=1;Yes\nValue=9;None\nName=MISSING,Special"),
            { "f0.missing: - -> <9>", "f0.to: 9 -> 1", "f0.values: 1 Yes{9}9 None{9} -> 1 Yes{9}",
                "i0.missing: - -> <9>", "i0.v0[1]: <9> None -> <9> None type1 special" },
            {} },
        { "a missing code in the form that was known", &Rules::specials,
            values("Value=1;Yes\nValue=9;None\nName=MISSING ,Special"),
            { "i0.v0[1]: - -> <9> None type1 special" }, {} },
        { "a blank code that is not applicable", &Rules::specials,
            values("Value=1;Yes\nValue='     ';None\nName=NOTAPPL,Special"),
            { "f0.from: 0 -> 1", "f0.notApplicable: - -> <     >", "f0.to: 99999 -> 1",
                "f0.values: - -> 1 Yes{9}", "i0.notApplicable: - -> <     >", "i0.v0.name: - -> V",
                "i0.v0[0]: - -> <     > None type2 special", "i0.v0[1]: - -> <1> Yes",
                "problems: 15 CodesNotInteger -> -" },
            { &Rules::keptValueSets, &Rules::severalCodes } },

        { "two value sets", &Rules::allValueSets,
            values("Value=1;Yes\n[ValueSet]\nName=W\nValue=0;No\nValue=7;Maybe"),
            { "f0.from: 1 -> 0", "f0.to: 1 -> 7",
                "f0.values: 1 Yes{9} -> 1 Yes{9}0 No{9}7 Maybe{9}", "i0.v1.name: - -> W",
                "i0.v1[0]: - -> <0> No", "i0.v1[1]: - -> <7> Maybe",
                "problems: 18 ValueSetIgnored -> -" },
            {} },
        { "the first item of all repeated", &Rules::allValueSets,
            dictionary("[Item]\nName=A\nStart=2\nLen=1\nOccurrences=2\n[ValueSet]\nName=V\n"
                       "Value=1;Yes"),
            { "f0.from: 0 -> 1", "f0.to: 9 -> 1", "f0.values: - -> 1 Yes{9}", "i0.v0.name: - -> V",
                "i0.v0[0]: - -> <1> Yes", "problems: 16 ValueSetOnLastOccurrence -> -" },
            { &Rules::occurrenceNumbers } },
        { "a repeated item behind another", &Rules::allValueSets,
            dictionary("[Item]\nName=B\nStart=2\nLen=1\n[Item]\nName=A\nStart=3\nLen=1\n"
                       "Occurrences=2\n[ValueSet]\nName=V\nValue=1;Yes\n[ValueSet]\nName=W\n"
                       "Value=2;No"),
            { "f1.to: 1 -> 2", "f1.values: 1 Yes{9} -> 1 Yes{9}2 No{9}", "f2.to: 1 -> 2",
                "f2.values: 1 Yes{9} -> 1 Yes{9}2 No{9}", "i1.v1.name: - -> W",
                "i1.v1[0]: - -> <2> No", "i2.v1.name: - -> W", "i2.v1[0]: - -> <2> No",
                "problems: 23 ValueSetIgnored -> -" },
            { &Rules::occurrenceNumbers } },

        { "a decimal code of an item with decimals", &Rules::decimalCodes,
            values("Value=0.5;Half", "Decimal=1\n"),
            { "f0.from: 0 -> 0.5", "f0.to: 9999 -> 0.5", "f0.values: - -> 0.5 Half{9}",
                "i0.v0.name: - -> V", "i0.v0[0]: - -> <0.5> Half",
                "problems: 16 DecimalCodesDropped -> -", "questions: 1 -> -" },
            { &Rules::keptValueSets, &Rules::scaledValues } },
        { "a negative decimal code", &Rules::decimalCodes, values("Value=-0.5;Half", "Decimal=1\n"),
            { "f0.from: 0 -> -0.5", "f0.to: 9999 -> -0.5", "f0.values: - -> -0.5 Half{9}",
                "i0.v0.name: - -> V", "i0.v0[0]: - -> <-0.5> Half",
                "problems: 16 CodesNotInteger -> -" },
            { &Rules::keptValueSets, &Rules::scaledValues } },
        { "a decimal code of an item without decimals", &Rules::decimalCodes,
            values("Value=0.5;Half"), {}, { &Rules::keptValueSets } },

        { "a code that is no number", &Rules::keptValueSets, values("Value=x;None"),
            { "i0.v0.name: - -> V", "i0.v0[0]: - -> <x> None",
                "problems: 15 CodesNotInteger -> 15 CodeNotANumber" },
            {} },
        { "a decimal code nobody is asked about", &Rules::keptValueSets, values("Value=0.5;Half"),
            { "f0.from: 0 -> 0.5", "f0.to: 99999 -> 0.5", "f0.values: - -> 0.5 Half{9}",
                "i0.v0.name: - -> V", "i0.v0[0]: - -> <0.5> Half",
                "problems: 15 DecimalCodesDropped -> -", "questions: 1 -> -" },
            {} },

        { "numbers out of order", &Rules::writtenOrder,
            values("Value=3;Three\nValue=1;One\nValue=2;Two"),
            { "f0.values: 1 One{9}2 Two{9}3 Three{9} -> 3 Three{9}1 One{9}2 Two{9}",
                "i0.v0[0]: <1> One -> <3> Three", "i0.v0[1]: <2> Two -> <1> One",
                "i0.v0[2]: <3> Three -> <2> Two" },
            {} },
        { "texts", &Rules::writtenOrder, textValues("Value='a';First\nValue='b';Last"),
            { "f0.values: b Last{9}a First{9} -> a First{9}b Last{9}",
                "i0.v0[0]: <b> Last -> <a> First", "i0.v0[1]: <a> First -> <b> Last" },
            {} },

        { "a repeated item", &Rules::occurrenceNumbers,
            dictionary("[Item]\nLabel=Age\nName=A\nStart=2\nLen=2\nOccurrences=2\nZeroFill=Yes\n"
                       "OccurrenceLabel=1,Wife\nOccurrenceLabel=2,Second wife\n"),
            { "f0.name: A_{1} -> A_1", "f1.name: A_{2} -> A_2", "i0.name: A_{1} -> A_1",
                "i0.occurrenceLabel: - -> Wife", "i0.zero: - -> 1", "i1.name: A_{2} -> A_2",
                "i1.occurrenceLabel: - -> Second wife", "i1.zero: - -> 1" },
            {} },

        { "a subitem of a repeated item", &Rules::repeatedSubItems, dictionary(repeatedParent),
            { "f2.name: S -> S_{1}", "f3.at: 8+1 -> 6+1", "f3.name: Z -> S_{2}", "f4.at: - -> 8+1",
                "f4.decimals: - -> 0", "f4.from: - -> 0", "f4.name: - -> Z", "f4.to: - -> 9",
                "f4.type: - -> 1", "i2.firstOccurrence: - -> 2", "i2.name: S -> S_{1}",
                "i2.occurrence: - -> 1", "i2.written: - -> S", "i3.at: 8+1 -> 6+1",
                "i3.firstOccurrence: - -> 2", "i3.name: Z -> S_{2}", "i3.occurrence: - -> 2",
                "i3.sub: - -> 1", "i3.written: - -> S", "i4.at: - -> 8+1", "i4.name: - -> Z",
                "i4.record: - -> R" },
            { &Rules::occurrenceNumbers, &Rules::structure } },

        { "implied decimals", &Rules::scaledValues,
            dictionary("[Item]\nName=A\nStart=2\nLen=5\nDecimal=2\n"
                       "[Item]\nName=B\nStart=7\nLen=5\nDecimal=2\nDecimalChar=Yes\n"),
            { "f0.decimals: {2} -> 2", "f1.decimals: {2} -> 2" }, {} },
        { "numbers without a value set", &Rules::lengthRanges,
            dictionary("[Item]\nName=A\nStart=2\nLen=5\nDecimal=2\n"
                       "[Item]\nName=B\nStart=7\nLen=5\nDecimal=2\nDecimalChar=Yes\n"
                       "[Item]\nName=C\nStart=12\nLen=1\n[Item]\nName=D\nStart=13\nLen=2\n"),
            { "f0.from: 0 -> -99.99", "f0.to: 999 -> 999.99", "f1.from: 0 -> -9.99",
                "f1.to: 9999 -> 99.99", "f3.from: 0 -> -9" },
            { &Rules::scaledValues } },

        { "levels, notes, relations, parents, links and images", &Rules::structure,
            QLatin1String(structured),
            { "dictionary.note: - -> About all", "f3.from: 0 -> 1", "f3.to: 99 -> 1",
                "f3.values: - -> 1 One{9}", "i0.level: - -> 1", "i1.level: - -> 1",
                "i1.note: - -> Of an item", "i1.v0.link: - -> 7", "i1.v0.note: - -> Of a set",
                "i1.v0[0].color: - -> #010203", "i1.v0[0].image: - -> ..\\i\\1.jpg",
                "i1.v0[0].note: - -> Of a value", "i2.level: - -> 1", "i2.parent: - -> A@4",
                "i3.level: - -> 1", "i3.v0.link: - -> 7", "i3.v0.linked: - -> V",
                "i3.v0[0].color: - -> #010203", "i3.v0[0].image: - -> ..\\i\\1.jpg",
                "i3.v0[0].note: - -> Of a value", "i3.v0[0]: - -> <1> One",
                "level0: - -> L|First level|About it", "r0.level: - -> 1",
                "r0.note: - -> Of a record", "relation0: - -> REL|R|A/R/B" },
            {} },

        { "labels in two languages", &Rules::languages, QLatin1String(translated),
            { "f0.label: Sex|Sexe -> Sex",
                "f0.values: 1 Man|Homme{9}2 Woman{9} -> 1 Man{9}2 Woman{9}",
                "language0: - -> EN|English", "language1: - -> FR|French" },
            {} },

        { "keys that are missing", &Rules::formatDefaults,
            "[Dictionary]\nName=D\n[Record]\nName=R\nRecordTypeValue='1'\n"
            "[Item]\nName=A\nStart=1\nLen=1\n",
            { "dictionary.recordType: 1+1 -> 0+0", "r0.max: 100 -> 1" }, {} },

        { "a text", &Rules::foundEncoding, textValues("Value='a';First"), {}, {} },
        { "lines without a file", &Rules::allLineEnds, textValues("Value='a';First\rValue='b';x"),
            {}, {} },
        { "a brace", &Rules::json, dictionary("{\n}\n[Item]\nName=A\nLen=1\n"), {},
            { &Rules::wholeKeys } },
    };
    return list;
}

bool isConcerned(const Change& change, Flag flag)
{
    return change.flag == flag
        || std::find(change.also.begin(), change.also.end(), flag) != change.also.end();
}

CSProValueDetail detail(const TCSProValueSet& valueSet, int index)
{
    return valueSet.details.value(valueSet.getValueSetItem(index));
}

} // namespace

class tst_CSProReadingRules : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void readySets();
    void establishedIsTheDefault();
    void importTakesRules();
    void aloneRulesChange_data();
    void aloneRulesChange();
    void aloneRulesChangeNothingElse_data();
    void aloneRulesChangeNothingElse();
    void plainDictionaryIsTheSameToAll();

    void keysAndProblems_data();
    void keysAndProblems();
    void problemsTellTheLine_data();
    void problemsTellTheLine();
    void problemsComeInOrderOfLines();
    void absentKeysHaveTheFormatsDefaults();
    void recordTypeValues_data();
    void recordTypeValues();
    void numericValues_data();
    void numericValues();
    void textValues_data();
    void textValues();
    void ranges();
    void oneValueHasOneNumber();
    void specialWords_data();
    void specialWords();
    void specialsStayOutOfRanges();
    void specialsOfOccurrences_data();
    void specialsOfOccurrences();
    void specialsAreNotConverted();
    void firstSpecialCodeCounts();
    void codesInTheData_data();
    void codesInTheData();
    void allValueSetsOfOccurrences();
    void decimalCodes_data();
    void decimalCodes();
    void keptValueSets();
    void occurrences();
    void repeatedSubItems();
    void scaledValues_data();
    void scaledValues();
    void levels();
    void notes_data();
    void notes();
    void relations();
    void parents();
    void links();
    void linkIsToTheFirstSetWithValues();
    void details();
    void labelTexts_data();
    void labelTexts();
    void languageOfFields();
    void foundEncoding_data();
    void foundEncoding();
    void lineEnds_data();
    void lineEnds();
    void json_data();
    void json();
    void malformedValues_data();
    void malformedValues();
    void malformedSections_data();
    void malformedSections();
    void largeNumbers_data();
    void largeNumbers();
};

void tst_CSProReadingRules::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProReadingRules::readySets()
{
    QCOMPARE(flagsOn(Rules::established()), QStringList());
    QCOMPARE(flagsOn(Rules()), QStringList());
    QStringList names;
    for (const NamedFlag& flag : allFlags())
        names.append(QLatin1String(flag.name));
    QCOMPARE(flagsOn(Rules::asWritten()), names);
}

void tst_CSProReadingRules::establishedIsTheDefault()
{
    TCSPro parser;
    QCOMPARE(flagsOn(parser.readingRules()), QStringList());
    parser.setReadingRules(alone(&Rules::ranges));
    QCOMPARE(flagsOn(parser.readingRules()), QStringList { "ranges" });

    const QString text = dictionary("[Item]\nLabel=Start time\nName=A\nStart=5\nLen=2\n");
    TCSPro untouched;
    QStringList lines = text.split(QLatin1Char('\n'));
    untouched.loadFromStr(&lines);
    QCOMPARE(untouched.getItem(0)->start, 1);
}

void tst_CSProReadingRules::importTakesRules()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(dictionary("[Item]\nLabel=Start time\nName=A\nStart=5\nLen=2\n").toUtf8());
    file.close();

    TCSProDataImport import(path);
    QVERIFY(import.openFile());
    QCOMPARE(flagsOn(import.dictionary->readingRules()), QStringList());
    QCOMPARE(import.getField(0)->start, 1);
    const TCSPro* const before = import.dictionary;
    import.setReadingRules(Rules::asWritten());
    QCOMPARE(flagsOn(before->readingRules()), QStringList());
    QVERIFY(import.openFile());
    QCOMPARE(flagsOn(import.dictionary->readingRules()), flagsOn(Rules::asWritten()));
    QCOMPARE(import.getField(0)->start, 5);
    import.setReadingRules(Rules::established());
    QVERIFY(import.openFile());
    QCOMPARE(import.getField(0)->start, 1);
}

void tst_CSProReadingRules::aloneRulesChange_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < changes().size(); ++i)
        row(changes().at(i).name, static_cast<int>(i));
}

void tst_CSProReadingRules::aloneRulesChange()
{
    QFETCH(int, index);
    const Change& change = changes().at(static_cast<std::size_t>(index));
    const Model established(Rules::established(), change.text);
    const Model changed(alone(change.flag), change.text);
    QCOMPARE(Description::differences(established.description(), changed.description())
                 .join(QLatin1Char('\n')),
        change.differences.join(QLatin1Char('\n')));
}

void tst_CSProReadingRules::aloneRulesChangeNothingElse_data()
{
    aloneRulesChange_data();
}

void tst_CSProReadingRules::aloneRulesChangeNothingElse()
{
    QFETCH(int, index);
    const Change& change = changes().at(static_cast<std::size_t>(index));
    const Model established(Rules::established(), change.text);
    QStringList found;
    for (const NamedFlag& flag : allFlags()) {
        if (isConcerned(change, flag.flag) || flag.flag == &Rules::lengthRanges)
            continue; // most dictionaries have a number without a value set
        const Model other(alone(flag.flag), change.text);
        const QStringList differences =
            Description::differences(established.description(), other.description());
        for (const QString& difference : differences)
            found.append(QLatin1String(flag.name) + ", " + difference);
    }
    QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1Char('\n'))));
}

void tst_CSProReadingRules::plainDictionaryIsTheSameToAll()
{
    const QString text = QStringLiteral(
        "[Dictionary]\nVersion=CSPro 7.7\nLabel=Survey\nName=D\nRecordTypeStart=1\n"
        "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=No\n"
        "[Level]\nLabel=Levels\nName=L\n[IdItems]\n[Item]\nLabel=Number\nName=ID\nStart=2\nLen=4\n"
        "[Record]\nLabel=Person\nName=R\nRecordTypeValue='1'\nMaxRecords=9\nRecordLen=9\n"
        "[Item]\nLabel=Sex\nName=A\nStart=6\nLen=1\nZeroFill=Yes\n"
        "[ValueSet]\nLabel=Sexes\nName=V\nValue=1;Man\nValue=2;Woman\n"
        "[Item]\nLabel=Given\nName=B\nStart=7\nLen=3\nDataType=Alpha\n");
    const Model established(Rules::established(), text);
    for (const NamedFlag& flag : allFlags()) {
        if (flag.flag == &Rules::lengthRanges) // a number of it has no value set
            continue;
        if (flag.flag == &Rules::structure) // levels are in every dictionary
            continue;
        const Model other(alone(flag.flag), text);
        QCOMPARE(Description::differences(established.description(), other.description()),
            QStringList());
    }
    Rules others = without(&Rules::structure);
    others.lengthRanges = false;
    const Model all(others, text);
    QCOMPARE(Description::differences(established.description(), all.description()), QStringList());
}

void tst_CSProReadingRules::keysAndProblems_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("problems");

    row("nothing", QString(), QStringList());
    row("a sound dictionary", values("Value=1;One\n"), QStringList());
    row("sections in another case",
        QStringLiteral("[DICTIONARY]\nName=D\n[iditems]\n[level]\n"
                       "[LANGUAGES]\n[relation]\n[NoEdit]\n"),
        QStringList());
    row("an unknown section", dictionary("[Odd]\nName=x\n[Item]\nStart=2\nLen=1\n"),
        QStringList { "11 UnknownSection" });
    row("an unknown section behind blank lines", dictionary("\n\n[Odd]\n"),
        QStringList { "13 UnknownSection" });
    row("an unknown key of the dictionary", "[Dictionary]\nName=D\nColour=red\n",
        QStringList { "3 UnknownKey" });
    row("an unknown key of a level", "[Level]\nName=L\nColour=red\n",
        QStringList { "3 UnknownKey" });
    row("an unknown key of a record", "[Record]\nName=R\nColour=red\nRecordTypeValue='1'\n",
        QStringList { "3 UnknownKey" });
    row("an unknown key of an item", dictionary("[Item]\nStart=2\nColour=red\nLen=1\n"),
        QStringList { "13 UnknownKey" });
    row("an unknown key of a value set",
        dictionary("[Item]\nStart=2\nLen=1\n[ValueSet]\nColour=red\n"),
        QStringList { "15 UnknownKey" });
    row("an unknown key of a value", values("Value=1;One\nColour=red\nValue=2;Two\n"),
        QStringList { "18 UnknownKey" });
    row("an unknown key of a relation", "[Relation]\nName=L\nColour=red\n",
        QStringList { "3 UnknownKey" });
    row("keys that begin with a known one",
        dictionary("[Item]\nNames=B\nStart=2\nLen=1\nLength=9\n"),
        QStringList { "12 UnknownKey", "15 UnknownKey" });
    row("unknown keys behind blank lines",
        dictionary("[Item]\n\nStart=2\n\n\nColour=red\nLen=1\n  \nShape=round\n"),
        QStringList { "16 UnknownKey", "19 UnknownKey" });
    row("an unknown key behind blank lines alone",
        dictionary("[Item]\nStart=2\nLen=1\n\n\nShape=x\n"), QStringList { "16 UnknownKey" });
    row("a value's key behind blank lines", values("\nValue=1;One\n\n\nColour=red\n"),
        QStringList { "21 UnknownKey" });
    row("lines that end in a carriage return",
        QString(dictionary("[Item]\nStart=2\n\nLen=1\nColour=red\n")).replace("\n", "\r\n"),
        QStringList { "15 UnknownKey" });
    row("keys that are passed over",
        "[Dictionary]\nName=D\nAlias=E\nSecurityOptions=00\nValueSetImages=Yes\n[Level]\nAlias=E\n"
        "[Record]\nName=R\nAlias=E\nRecordTypeValue='1'\nNote=n\nOccurrenceLabel=1,a\n"
        "[Item]\nStart=2\nLen=1\nAlias=E\nAlias=F\nCaptureType=RadioButton\n"
        "CaptureDateFormat=YYYYMMDD\nNote=n\nOccurenceLabel=1,a\n"
        "[ValueSet]\nName=V\nAlias=E\nNote=n\nValue=1;x\nNote=n\nImage=i\nTextColor=#000000\n",
        QStringList());
    row("a malformed number", dictionary("[Item]\nName=A\nLen=1\nStart=x\n"),
        QStringList { "14 NotANumber" });
    row("a malformed number behind a blank line",
        dictionary("[Item]\n\nName=A\nLen=1\nStart=1,5\n"), QStringList { "15 NotANumber" });
    row("a number that is too large", dictionary("[Item]\nName=A\nLen=1\nStart=99999999999\n"),
        QStringList { "14 NotANumber" });
    row("malformed numbers of the dictionary", "[Dictionary]\nRecordTypeStart=a\nRecordTypeLen=b\n",
        QStringList { "2 NotANumber", "3 NotANumber" });
    row("malformed numbers of a record",
        "[Record]\nRecordTypeValue='1'\nMaxRecords=a\nRecordLen=b\n",
        QStringList { "3 NotANumber", "4 NotANumber" });
    row("unknown words",
        dictionary("[Item]\nStart=2\nLen=1\nItemType=Half\nDataType=Greek\n"
                   "DecimalChar=Perhaps\nZeroFill=1\n"),
        QStringList { "14 UnknownWord", "15 UnknownWord", "16 UnknownWord", "17 UnknownWord" });
    row("the words of the defaults",
        dictionary("[Item]\nStart=2\nLen=1\nItemType=Item\n"
                   "DataType=numeric\nDecimalChar=no\nZeroFill=No\n"),
        QStringList());
    row("a line without a key", dictionary("[Item]\nStart=2\nLen=1\nnonsense\n"),
        QStringList { "14 LineWithoutKey" });
    row("a line with an empty key", dictionary("[Item]\nStart=2\nLen=1\n=nonsense\n"),
        QStringList { "14 LineWithoutKey" });
    row("a line without a key among values", values("Value=1;One\nnonsense\n"),
        QStringList { "18 LineWithoutKey" });
    row("a line without a key among languages", "[Languages]\nEN=English\nnonsense\n",
        QStringList { "3 LineWithoutKey" });
    row("a comment", dictionary("[Item]\nStart=2\nLen=1\n.remark\n"), QStringList());
    row("a comment with an equals sign", dictionary("[Item]\nStart=2\nLen=1\n.Start=7\n"),
        QStringList());
    row("a comment among values", values("Value=1;One\n.remark\n"), QStringList());
    row("an item without a length", dictionary("[Item]\nStart=2\n"),
        QStringList { "11 ItemWithoutLength" });
    row("an item that never occurs", dictionary("[Item]\nStart=2\nLen=1\nOccurrences=0\n"),
        QStringList { "11 ItemDropped" });
    row("a record type twice", dictionary("[Record]\nName=S\nRecordTypeValue='1'\n"),
        QStringList { "11 RecordTypeRepeated" });
    row("a value set without an item", dictionary("[ValueSet]\nName=V\nValue=1;One\n"),
        QStringList { "11 ValueSetWithoutItem" });
    row("a subitem without an item", dictionary("[Item]\nStart=2\nLen=1\nItemType=SubItem\n"),
        QStringList { "11 SubItemWithoutParent" });
    row("a subitem of an item of another record",
        dictionary("[Item]\nName=A\nStart=2\nLen=1\n[Record]\nName=S\nRecordTypeValue='2'\n"
                   "[Item]\nName=B\nStart=2\nLen=1\nItemType=SubItem\n"),
        QStringList { "18 SubItemWithoutParent" });
    row("a link without values", dictionary("[Item]\nStart=2\nLen=1\n[ValueSet]\nName=V\nLink=3\n"),
        QStringList { "14 LinkWithoutValues" });
    row("an occurrence label without a number",
        dictionary("[Item]\nStart=2\nLen=1\nOccurrences=2\nOccurrenceLabel=Wife\n"),
        QStringList { "15 NotANumber" });
    row("an item without a start", dictionary("[Item]\nName=A\nLen=1\n"),
        QStringList { "11 ItemWithoutStart" });
    row("lines before any section", "Name=D\n.remark\nLabel=x\n[Dictionary]\nName=D\n",
        QStringList { "1 LineOutsideSection" });
    row("a key twice", dictionary("[Item]\nStart=2\nLen=1\nStart=3\nstart=4\n"),
        QStringList { "14 RepeatedKey", "15 RepeatedKey" });
    row("notes and labels of occurrences twice",
        dictionary("[Item]\nStart=2\nLen=1\nOccurrences=2\nNote=a\nNote=b\n"
                   "OccurrenceLabel=1,a\nOccurrenceLabel=2,b\n"),
        QStringList());
    row("a range from high to low", values("Value=9:1;Back\n"), QStringList { "15 RangeReversed" });
    row("a range of one", values("Value=9:9;One\n"), QStringList());
}

void tst_CSProReadingRules::keysAndProblems()
{
    QFETCH(QString, text);
    QFETCH(QStringList, problems);
    const Model model(Rules::asWritten(), text);
    QCOMPARE(problemsOf(model.parser).join(QLatin1Char('\n')), problems.join(QLatin1Char('\n')));
}

void tst_CSProReadingRules::problemsTellTheLine_data()
{
    QTest::addColumn<QString>("sections");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("valueSet");
    QTest::addColumn<QString>("text");

    const auto add = [](const char* name, const QString& sections, Kind kind, const char* item,
                         const char* valueSet, const char* text) {
        row(name, sections, static_cast<int>(kind), QString(item), QString(valueSet),
            QString(text));
    };
    const QString item = QStringLiteral("[Item]\nName=A\nLen=1\nStart=1\n");
    const QString set = item + QStringLiteral("[ValueSet]\nName=V\nValue=1;One\n");
    const QString alphaSet = QString(set).replace("Start=1", "Start=1\nDataType=Alpha");
    add("a section", "[Odd thing]\n", Kind::UnknownSection, "", "", "[Odd thing]");
    add("a key", "[Item]\nName=A\nLen=1\nStart=1\nColour=red\n", Kind::UnknownKey, "", "",
        "Colour");
    add("a key of a value", set + "Colour=red\n", Kind::UnknownKey, "A", "V", "Colour");
    add("a line", "[Item]\nName=A\nLen=1\nStart=1\nnonsense\n", Kind::LineWithoutKey, "", "",
        "nonsense");
    add("a number", "[Item]\nName=A\nLen=1\nStart = x\n", Kind::NotANumber, "", "", "x");
    add("a word", "[Item]\nName=A\nLen=1\nStart=1\nDataType=Greek\n", Kind::UnknownWord, "", "",
        "Greek");
    add("a special", set + "Name=ODD,Special\n", Kind::UnknownSpecial, "A", "V", "ODD,Special");
    add("a quote", alphaSet + "Value='x;y\n", Kind::UnclosedQuote, "A", "V", "'x;y");
    add("a code", set + "Value=x;y\n", Kind::CodeNotANumber, "A", "V", "x");
    add("a link", item + "[ValueSet]\nName=V\nLink=7\n", Kind::LinkWithoutValues, "A", "V", "7");
    add("a subitem", "[Item]\nName=A\nLen=1\nStart=1\nItemType=SubItem\n",
        Kind::SubItemWithoutParent, "A", "", "");
}

void tst_CSProReadingRules::problemsTellTheLine()
{
    QFETCH(QString, sections);
    QFETCH(int, kind);
    QFETCH(QString, item);
    QFETCH(QString, valueSet);
    QFETCH(QString, text);
    const Model model(Rules::asWritten(), dictionary(sections));
    const CSProProblem problem = model.parser.problems().value(0);
    QCOMPARE(kindName(problem.kind), kindName(static_cast<Kind>(kind)));
    QCOMPARE(problem.name, item);
    QCOMPARE(problem.valueSet, valueSet);
    QCOMPARE(problem.text, text);
}

void tst_CSProReadingRules::problemsComeInOrderOfLines()
{
    const Model model(Rules::asWritten(),
        dictionary("[Item]\nColour=red\nName=A\nLen=1\nOdd=1\nDecimal=x\nStart=y\n"
                   "[ValueSet]\nName=V\nValue=x;Odd\nColour=red\nValue='z;Other\n"));
    QVector<int> lines;
    for (const CSProProblem& problem : model.parser.problems())
        lines.append(problem.line);
    QVERIFY(lines.size() >= 6);
    QVector<int> sorted = lines;
    std::sort(sorted.begin(), sorted.end());
    QCOMPARE(lines, sorted);
}

void tst_CSProReadingRules::absentKeysHaveTheFormatsDefaults()
{
    const QString text = QStringLiteral(
        "[Dictionary]\nName=D\n[Level]\nName=L\n[IdItems]\n[Record]\nName=R\nRecordTypeValue=''\n"
        "[Item]\nName=A\nStart=1\nLen=1\n");
    const Model established(Rules::established(), text);
    QCOMPARE(established.parser.recordTypeStart, 1);
    QCOMPARE(established.parser.recordTypeLen, 1);
    QCOMPARE(established.parser.getRecord(0)->maxRecords, 100);

    const Model written(Rules::asWritten(), text);
    QCOMPARE(written.parser.recordTypeStart, 0);
    QCOMPARE(written.parser.recordTypeLen, 0);
    QCOMPARE(written.parser.getRecord(0)->maxRecords, 1);
    QCOMPARE(problemsOf(written.parser), QStringList());
}

void tst_CSProReadingRules::recordTypeValues_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("established");
    row("quoted", "RecordTypeValue='HH1'", "HH1", "HH1");
    row("quoted with blanks", "RecordTypeValue=' 1 '", " 1 ", " 1 ");
    row("in the other quotes", "RecordTypeValue=\"1\"", "1", "1");
    row("nothing in the quotes", "RecordTypeValue=''", "", "");
    row("no quotes", "RecordTypeValue=012", "012", "1");
    row("one character", "RecordTypeValue=1", "1", "");
    row("nothing", "RecordTypeValue=", "", "");
    row("no line", "Label=x", "", "");
}

void tst_CSProReadingRules::recordTypeValues()
{
    QFETCH(QString, line);
    QFETCH(QString, written);
    QFETCH(QString, established);
    const QString text = "[Record]\nName=R\n" + line + '\n';
    QCOMPARE(Model(Rules::asWritten(), text).parser.getRecord(0)->recordTypeValue, written);
    QCOMPARE(Model(Rules::established(), text).parser.getRecord(0)->recordTypeValue, established);
}

void tst_CSProReadingRules::numericValues_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QStringList>("labels");

    row("a code", "Value=1;Male", QStringList { "1" }, QStringList { "Male" });
    row("a code without a label", "Value=0", QStringList { "0" }, QStringList { "" });
    row("an empty label", "Value=0;", QStringList { "0" }, QStringList { "" });
    row("separators in the label", "Value=1;a; b:c = 'd'", QStringList { "1" },
        QStringList { "a; b:c = 'd'" });
    row("a range", "Value=0:95;Age", QStringList { "0..95" }, QStringList { "Age" });
    row("a range without a label", "Value=15:49", QStringList { "15..49" }, QStringList { "" });
    row("negative numbers", "Value=-9;Quit\nValue=-600:600\nValue=-90.0:-10.5;Low",
        QStringList { "-9", "-600..600", "-90.0..-10.5" }, QStringList { "Quit", "", "Low" });
    row("several codes", "Value=0 2 4 6 8;Even", QStringList { "0", "2", "4", "6", "8" },
        QStringList { "Even", "Even", "Even", "Even", "Even" });
    row("several codes before another", "Value=0 2;Even\nValue=9;None",
        QStringList { "0", "2", "9" }, QStringList { "Even", "Even", "None" });
    row("ranges among codes", "Value=1:7 10 11:12 99;Other",
        QStringList { "1..7", "10", "11..12", "99" },
        QStringList { "Other", "Other", "Other", "Other" });
    row("a quoted code", "Value='12';Quoted", QStringList { "12" }, QStringList { "Quoted" });
    row("a value key in another case", "VALUE=1;a\nvalue=2;b", QStringList { "1", "2" },
        QStringList { "a", "b" });
    row("blanks around the first value's sign", "Value = 1;a\nValue = 2;b",
        QStringList { "1", "2" }, QStringList { "a", "b" });
    row("repeated codes", "Value=1;a\nValue=1;b\nValue=0:5;c", QStringList { "1", "1", "0..5" },
        QStringList { "a", "b", "c" });
}

void tst_CSProReadingRules::numericValues()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, codes);
    QFETCH(QStringList, labels);
    const Model model(Rules::asWritten(), values(lines, QStringLiteral("Decimal=1\n")));
    QCOMPARE(codesOf(model.item("A")), codes);
    QCOMPARE(labelsOf(model.item("A")), labels);
    QCOMPARE(problemsOf(model.parser), QStringList());
    QCOMPARE(model.questions, 0);
}

void tst_CSProReadingRules::textValues_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QStringList>("labels");

    row("a padded code", "Value='N    ';North", QStringList { "N    " }, QStringList { "North" });
    row("blanks within", "Value='a b c';x", QStringList { "a b c" }, QStringList { "x" });
    row("blanks before", "Value='  a';x", QStringList { "  a" }, QStringList { "x" });
    row("a blank code", "Value='     ';x", QStringList { "     " }, QStringList { "x" });
    row("a blank code without a label", "Value=' '", QStringList { " " }, QStringList { "" });
    row("a bare code", "Value=1;One", QStringList { "1" }, QStringList { "One" });
    row("several quoted codes", "Value='a b' 'c';x", QStringList { "a b", "c" },
        QStringList { "x", "x" });
    row("a quoted code beside a bare one", "Value='a b' c;x", QStringList { "a b", "c" },
        QStringList { "x", "x" });
    row("separators within", "Value='a;b:c';x", QStringList { "a;b:c" }, QStringList { "x" });
    row("the other quotes", "Value=\"it's\";x", QStringList { "it's" }, QStringList { "x" });
    row("a colon in a bare code", "Value=10:30;Time", QStringList { "10:30" },
        QStringList { "Time" });
    row("nothing in the quotes", "Value='';x", QStringList { "" }, QStringList { "x" });
}

void tst_CSProReadingRules::textValues()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, codes);
    QFETCH(QStringList, labels);
    const Model model(Rules::asWritten(), ::textValues(lines));
    QCOMPARE(codesOf(model.item("A")), codes);
    QCOMPARE(labelsOf(model.item("A")), labels);
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProReadingRules::ranges()
{
    const Model model(
        Rules::asWritten(), values("Value=10:20;a\nValue=5;b\nValue=-3:2;c\nValue=7:7;d"));
    const TCSProValueSet& set = *model.item("A").valueSets->at(0);
    QCOMPARE(set.getCount(), 4);
    QCOMPARE(set.getValueSetItem(0)->code, QStringLiteral("10"));
    QCOMPARE(set.getValueSetItem(0)->highCode, QStringLiteral("20"));
    QVERIFY(set.getValueSetItem(1)->highCode.isNull());
    QCOMPARE(set.getValueSetItem(3)->highCode, QStringLiteral("7"));
    const TCSProVariable& field = model.variable("A");
    QCOMPARE(field.minValue, QStringLiteral("-3"));
    QCOMPARE(field.maxValue, QStringLiteral("20"));
    QCOMPARE(field.valueLabels, QStringLiteral("10:20 a\t5 b\t-3:2 c\t7:7 d\t"));
}

void tst_CSProReadingRules::oneValueHasOneNumber()
{
    const Model model(
        Rules::asWritten(), values("Value=1:7 10;Other\nValue=8;Eight\nValue=9;Nine"));
    QVector<int> numbers;
    for (const TValueSetItem* entry : qAsConst(*model.item("A").valueSets->at(0)->items))
        numbers.append(entry->valueNumber);
    QCOMPARE(numbers, (QVector<int> { 1, 1, 2, 3 }));
}

void tst_CSProReadingRules::specialWords_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("type");

    row("missing", "Name=MISSING,Special", 1);
    row("not applicable", "Name=NOTAPPL,Special", 2);
    row("refused", "Name=REFUSED,Special", 3);
    row("default", "Name=DEFAULT,Special", 4);
    row("other cases", "NAME=Missing,SPECIAL", 1);
    row("small letters", "name=notappl,special", 2);
    row("blanks around the comma", "Name= REFUSED , Special ", 3);
    row("blanks around the sign", "Name = DEFAULT,Special", 4);
    row("an unknown word", "Name=ODD,Special", 0);
    row("no word", "Name=,Special", 0);
    row("another mark", "Name=MISSING,Odd", 0);
    row("no mark", "Name=MISSING", 0);
    row("nothing", "Name=", 0);
    row("two marks", "Name=MISSING,Special,Special", 0);
}

void tst_CSProReadingRules::specialWords()
{
    QFETCH(QString, line);
    QFETCH(int, type);
    const Model model(
        Rules::asWritten(), values("Value=1;Yes\nValue=9;None\n" + line + "\nValue=2;No"));
    const TCSProItem& item = model.item("A");
    const TCSProValueSet& set = *item.valueSets->at(0);
    QCOMPARE(set.getCount(), 3);
    QCOMPARE(set.getValueSetItem(1)->type, type);
    QCOMPARE(set.getValueSetItem(1)->special, type != 0);
    QCOMPARE(set.getValueSetItem(1)->label, QStringLiteral("None"));
    for (const int other : { 0, 2 }) {
        QCOMPARE(set.getValueSetItem(other)->type, 0);
        QVERIFY(!set.getValueSetItem(other)->special);
    }
    QCOMPARE(set.name, QStringLiteral("V"));
    QCOMPARE(item.missingCode, type == 1 ? QStringLiteral("9") : QString());
    QCOMPARE(item.notApplicableCode, type == 2 ? QStringLiteral("9") : QString());
    QCOMPARE(item.refusedCode, type == 3 ? QStringLiteral("9") : QString());
    QCOMPARE(
        problemsOf(model.parser), type == 0 ? QStringList { "19 UnknownSpecial" } : QStringList());
}

void tst_CSProReadingRules::specialsStayOutOfRanges()
{
    const Model model(Rules::asWritten(),
        values(
            "Value='     ';Skipped\nName=NOTAPPL,Special\nValue=1:5;Some\nValue=99998;No answer\n"
            "Name=REFUSED,Special\nValue=99999;Unknown\nName=MISSING,Special"));
    const TCSProVariable& field = model.variable("A");
    QCOMPARE(codesOf(model.item("A")),
        (QStringList { "      special 2", "1..5", "99998 special 3", "99999 special 1" }));
    QCOMPARE(field.minValue, QStringLiteral("1"));
    QCOMPARE(field.maxValue, QStringLiteral("5"));
    QCOMPARE(field.valueLabels, QStringLiteral("1:5 Some\t"));
    QCOMPARE(field.missingValue, QStringLiteral("99999"));
    QCOMPARE(field.notApplicableValue, QStringLiteral("     "));
    QCOMPARE(model.item("A").refusedCode, QStringLiteral("99998"));
    QCOMPARE(problemsOf(model.parser), QStringList());

    const Model onlySpecials(Rules::asWritten(), values("Value=9;None\nName=MISSING,Special"));
    QCOMPARE(onlySpecials.variable("A").minValue, QStringLiteral("-9999"));
    QCOMPARE(onlySpecials.variable("A").maxValue, QStringLiteral("99999"));
    QCOMPARE(onlySpecials.variable("A").valueLabels, QString());
}

void tst_CSProReadingRules::specialsOfOccurrences_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<bool>("allRules");
    row("the first item of the file, as written", "", true);
    row("a later item, as written", "[Item]\nName=B\nStart=2\nLen=1\n", true);
    row("the first item of the file, specials alone", "", false);
    row("a later item, specials alone", "[Item]\nName=B\nStart=2\nLen=1\n", false);
}

void tst_CSProReadingRules::specialsOfOccurrences()
{
    QFETCH(QString, before);
    QFETCH(bool, allRules);
    const Model model(allRules ? Rules::asWritten() : alone(&Rules::specials),
        dictionary(before
            + "[Item]\nName=A\nStart=3\nLen=1\nOccurrences=3\n[ValueSet]\nName=V\nValue=1;Yes\n"
              "Value=7;a\nName=NOTAPPL,Special\nValue=8;b\nName=REFUSED,Special\nValue=9;c\n"
              "Name=MISSING,Special\n"));
    int occurrences = 0;
    for (const TCSProItem* item : qAsConst(*model.parser.items)) {
        if (item->dictionaryName != QLatin1String("A"))
            continue;
        ++occurrences;
        QCOMPARE(item->missingCode, QStringLiteral("9"));
        QCOMPARE(item->notApplicableCode, QStringLiteral("7"));
        QCOMPARE(item->refusedCode, QStringLiteral("8"));
        QCOMPARE(model.variable(item->name).missingValue, QStringLiteral("9"));
    }
    QCOMPARE(occurrences, 3);
}

// Whoever lets decimal codes become integers means those of ordinary values.
void tst_CSProReadingRules::specialsAreNotConverted()
{
    const Model model(alone(&Rules::specials),
        values("Value=1.5;Half\nValue='     ';None\nName=NOTAPPL,Special"), QMessageBox::Yes);
    QCOMPARE(model.questions, 1);
    QCOMPARE(model.item("A").notApplicableCode, QStringLiteral("     "));
}

void tst_CSProReadingRules::firstSpecialCodeCounts()
{
    const Model model(Rules::asWritten(),
        values("Value=8;a\nName=MISSING,Special\nValue=9;b\nName=MISSING,Special\n"
               "[ValueSet]\nName=W\nValue=7;c\nName=MISSING,Special\nValue=6;d\n"
               "Name=REFUSED,Special\n"));
    QCOMPARE(model.item("A").missingCode, QStringLiteral("8"));
    QCOMPARE(model.item("A").refusedCode, QStringLiteral("6"));
}

void tst_CSProReadingRules::codesInTheData_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("data");
    QTest::addColumn<bool>("isCode");

    const QString alpha = QStringLiteral("DataType=Alpha\n");
    row("the same text", "", "99999", "99999", true);
    row("blanks before", "", "9", "    9", true);
    row("zeros before", "", "9", "00009", true);
    row("another number", "", "9", "00099", false);
    row("a blank field", "", "9", "     ", false);
    row("a negative number", "", "-9", "   -9", true);
    row("blanks as wide as the item", "", "'     '", "     ", true);
    row("fewer blanks than the item has columns", "", "' '", "     ", true);
    row("blanks and a line that ended", "", "'     '", "", true);
    row("blanks and a number", "", "'     '", "    0", false);
    row("asterisks", "", "9", "*****", false);
    row("a decimal code and implied decimals", "Decimal=3\n", "9.998", " 9998", true);
    row("a decimal code and a point in the data", "Decimal=3\nDecimalChar=Yes\n", "9.998", "9.998",
        true);
    row("a decimal code and a comma in the data", "Decimal=3\n", "9.998", "9,998", true);
    row("a decimal code and another value", "Decimal=3\n", "9.998", " 9997", false);
    row("a whole code and implied decimals", "Decimal=1\n", "99.0", "  990", true);
    row("a text", alpha, "'NA   '", "NA   ", true);
    row("a text whose line ended", alpha, "'NA   '", "NA", true);
    row("a bare code of a text", alpha, "NA", "NA   ", true);
    row("another text", alpha, "'NA   '", "NAN  ", false);
    row("a text of digits is no number", alpha, "'9    '", "    9", false);
    row("a text of blanks", alpha, "'     '", "     ", true);
}

void tst_CSProReadingRules::codesInTheData()
{
    QFETCH(QString, keys);
    QFETCH(QString, code);
    QFETCH(QString, data);
    QFETCH(bool, isCode);
    const Model missing(
        Rules::asWritten(), values("Value=" + code + ";None\nName=MISSING,Special", keys));
    TCSProVariable& field = assigned(missing.variable("A"), data);
    QCOMPARE(field.isMissing(), isCode);
    QVERIFY(!field.isNotApplicable());

    const Model notApplicable(
        Rules::asWritten(), values("Value=" + code + ";None\nName=NOTAPPL,Special", keys));
    TCSProVariable& other = assigned(notApplicable.variable("A"), data);
    QCOMPARE(other.isNotApplicable(), isCode);
    QVERIFY(!other.isMissing());
}

void tst_CSProReadingRules::allValueSetsOfOccurrences()
{
    const Model model(Rules::asWritten(),
        dictionary("[Item]\nName=A\nStart=2\nLen=1\nOccurrences=3\n[ValueSet]\nName=V\nValue=1;a\n"
                   "[ValueSet]\nName=W\nValue=2;b\n[ValueSet]\nName=X\n"
                   "[Item]\nName=B\nStart=5\nLen=1\n[ValueSet]\nName=Y\nValue=3;c\n"));
    QCOMPARE(namesOf(model.parser), (QStringList { "A_1", "A_2", "A_3", "B" }));
    for (int i = 0; i < 3; ++i) {
        TCSProItem& item = *model.parser.getItem(i);
        QCOMPARE(item.getCount(), 3);
        for (int set = 0; set < 3; ++set)
            QCOMPARE(item.getValueSet(set), model.parser.getItem(0)->getValueSet(set));
        QCOMPARE(codesOf(item, 0), QStringList { "1" });
        QCOMPARE(codesOf(item, 1), QStringList { "2" });
        QCOMPARE(codesOf(item, 2), QStringList());
    }
    QCOMPARE(model.item("B").getCount(), 1);
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProReadingRules::decimalCodes_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<int>("questions");
    row("an item with decimals", "Decimal=1\n", QStringList { "0.5", "1.5..2.5" }, 0);
    row("an item with a point in the data", "Decimal=1\nDecimalChar=Yes\n",
        QStringList { "0.5", "1.5..2.5" }, 0);
    row("an item without decimals", "", QStringList { "none" }, 1);
}

void tst_CSProReadingRules::decimalCodes()
{
    QFETCH(QString, keys);
    QFETCH(QStringList, codes);
    QFETCH(int, questions);
    const Model model(without(&Rules::keptValueSets), values("Value=0.5;a\nValue=1.5:2.5;b", keys));
    QCOMPARE(codesOf(model.item("A")), codes);
    QCOMPARE(model.questions, questions);
}

void tst_CSProReadingRules::keptValueSets()
{
    const Model model(Rules::asWritten(),
        values("Value=1;a\nValue=x;b\nValue=1.5;c\nValue=2:y;d\n[ValueSet]\nName=W\nValue=3;e"));
    QCOMPARE(codesOf(model.item("A")), (QStringList { "1", "x", "1.5", "2..y" }));
    QCOMPARE(codesOf(model.item("A"), 1), QStringList { "3" });
    QCOMPARE(model.questions, 0);
    QVERIFY(hasProblem(model.parser, Kind::CodeNotANumber));
    QCOMPARE(model.variable("A").minValue, QStringLiteral("1"));
    QCOMPARE(model.variable("A").maxValue, QStringLiteral("1.5")); // of the first set
}

void tst_CSProReadingRules::occurrences()
{
    const Model model(Rules::asWritten(),
        dictionary("[Item]\nLabel=Wives\nName=A\nStart=2\nLen=2\nOccurrences=12\nZeroFill=Yes\n"
                   "Decimal=1\nDecimalChar=Yes\nOccurrenceLabel=1,First\nOccurrenceLabel=3:Third\n"
                   "OccurenceLabel=12, Last, of all \n"));
    QCOMPARE(model.parser.getItemsCount(), 12);
    for (int number = 1; number <= 12; ++number) {
        const TCSProItem& item = *model.parser.getItem(number - 1);
        QCOMPARE(item.name, "A_" + QString::number(number));
        QCOMPARE(item.dictionaryName, QStringLiteral("A"));
        QCOMPARE(item.label, QStringLiteral("Wives"));
        QCOMPARE(item.occurrence, number);
        QCOMPARE(item.start, 2 + (number - 1) * 2);
        QCOMPARE(item.len, 2);
        QCOMPARE(item.decimal, 1);
        QVERIFY(item.hasDecimalChar);
        QVERIFY(item.isZeroFill);
        QCOMPARE(model.variable(item.name).start, item.start);
    }
    QCOMPARE(model.parser.getItem(0)->occurrenceLabel, QStringLiteral("First"));
    QCOMPARE(model.parser.getItem(1)->occurrenceLabel, QString());
    QCOMPARE(model.parser.getItem(2)->occurrenceLabel, QStringLiteral("Third"));
    QCOMPARE(model.parser.getItem(11)->occurrenceLabel, QStringLiteral("Last, of all"));
    QCOMPARE(model.parser.getItem(0)->occurrenceLabels.size(), 12);
    QCOMPARE(problemsOf(model.parser), QStringList());

    const Model record(Rules::asWritten(),
        "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=3\nOccurrenceLabel=2,Second\n");
    QCOMPARE(record.parser.getRecord(0)->occurrenceLabels.toList(),
        (QStringList { QString(), "Second" }));
}

void tst_CSProReadingRules::repeatedSubItems()
{
    const Model model(Rules::asWritten(),
        dictionary("[Item]\nName=P\nStart=10\nLen=6\nOccurrences=2\nOccurrenceLabel=2,Second\n"
                   "[Item]\nName=S\nStart=11\nLen=2\nItemType=SubItem\n[ValueSet]\nName=V\n"
                   "Value=9;None\nName=MISSING,Special\n"
                   "[Item]\nName=T\nStart=13\nLen=1\nOccurrences=3\nItemType=SubItem\n"
                   "[Item]\nName=Q\nStart=22\nLen=4\n"
                   "[Item]\nName=U\nStart=23\nLen=1\nOccurrences=2\nItemType=SubItem\n"
                   "[Item]\nName=W\nStart=25\nLen=1\nItemType=SubItem\n"));
    QCOMPARE(namesOf(model.parser),
        (QStringList { "P_1", "P_2", "S_1", "S_2", "T_1_1", "T_1_2", "T_1_3", "T_2_1", "T_2_2",
            "T_2_3", "Q", "U_1", "U_2", "W" }));
    QVector<int> starts;
    QStringList parents;
    QVector<int> numbers;
    for (const TCSProItem* item : qAsConst(*model.parser.items)) {
        starts.append(item->start);
        parents.append(item->parent ? item->parent->name : QStringLiteral("-"));
        numbers.append(item->occurrence);
    }
    QCOMPARE(starts, (QVector<int> { 10, 16, 11, 17, 13, 14, 15, 19, 20, 21, 22, 23, 24, 25 }));
    QCOMPARE(parents,
        (QStringList { "-", "-", "P_1", "P_2", "P_1", "P_1", "P_1", "P_2", "P_2", "P_2", "-", "Q",
            "Q", "Q" }));
    QCOMPARE(numbers, (QVector<int> { 1, 2, 1, 2, 1, 2, 3, 4, 5, 6, 0, 1, 2, 0 }));
    QCOMPARE(model.item("S_2").occurrenceLabel, QStringLiteral("Second"));
    for (const char* name : { "S_1", "S_2" }) {
        QCOMPARE(model.item(name).getCount(), 1);
        QCOMPARE(model.item(name).missingCode, QStringLiteral("9"));
    }
    QCOMPARE(model.item("P_2").getCount(), 0);
}

void tst_CSProReadingRules::scaledValues_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("data");
    QTest::addColumn<double>("scaled");
    QTest::addColumn<double>("established");

    const QString implied = QStringLiteral("Decimal=2\n");
    const QString pointed = QStringLiteral("Decimal=2\nDecimalChar=Yes\n");
    row("implied decimals", implied, "12345", 123.45, 12345.0);
    row("implied decimals and blanks", implied, "   45", 0.45, 45.0);
    row("implied decimals and zeros", implied, "00045", 0.45, 45.0);
    row("implied decimals, negative", implied, " -150", -1.5, -150.0);
    row("a point although the decimals are implied", implied, " 12.5", 12.5, 12.5);
    row("a point in the data", pointed, "12.34", 12.34, 12.34);
    row("no point where the dictionary has one", pointed, " 1234", 12.34, 1234.0);
    row("no decimals", "Len=10\n", " 1234", 1234.0, 1234.0);
}

void tst_CSProReadingRules::scaledValues()
{
    QFETCH(QString, keys);
    QFETCH(QString, data);
    QFETCH(double, scaled);
    QFETCH(double, established);
    const QString text = dictionary("[Item]\nName=A\nStart=2\n" + keys + "Len=5\n");
    for (const Rules& rules : { Rules::asWritten(), alone(&Rules::scaledValues) }) {
        const Model model(rules, text);
        QCOMPARE(assigned(model.variable("A"), data).realValue, scaled);
    }
    const Model model(Rules::established(), text);
    QCOMPARE(assigned(model.variable("A"), data).realValue, established);

    const Model comma(Rules::asWritten(), text);
    const QString withComma = QString(data).replace(QLatin1Char('.'), QLatin1Char(','));
    QCOMPARE(assigned(comma.variable("A"), withComma).realValue, scaled);
    QCOMPARE(QString::fromWCharArray(comma.variable("A").text), withComma);
}

void tst_CSProReadingRules::levels()
{
    const Model model(Rules::asWritten(),
        "[Dictionary]\nName=D\n[Level]\nLabel=Household\nName=HH\n[IdItems]\n"
        "[Item]\nName=ID1\nStart=2\nLen=1\n[Record]\nName=R1\nRecordTypeValue='1'\n"
        "[Item]\nName=A\nStart=5\nLen=1\n[Level]\nLabel=Person\nName=PP\nNote=Each\n[IdItems]\n"
        "[Item]\nName=ID2\nStart=3\nLen=1\n[Record]\nName=R2\nRecordTypeValue='2'\n"
        "[Item]\nName=B\nStart=5\nLen=1\n[Level]\nName=EMPTY\n[IdItems]\n"
        "[Item]\nName=ID3\nStart=4\nLen=1\n");
    QCOMPARE(model.parser.levels().size(), 3);
    QCOMPARE(model.parser.levels().at(0).name, QStringLiteral("HH"));
    QCOMPARE(model.parser.levels().at(0).label, QStringLiteral("Household"));
    QCOMPARE(model.parser.levels().at(1).note, QStringLiteral("Each"));
    QCOMPARE(model.parser.levels().at(2).name, QStringLiteral("EMPTY"));
    QVector<int> levels;
    for (const TCSProItem* item : qAsConst(*model.parser.items))
        levels.append(item->level);
    QCOMPARE(levels, (QVector<int> { 1, 1, 2, 2, 3 }));
    QCOMPARE(model.parser.getRecord(0)->level, 1);
    QCOMPARE(model.parser.getRecord(1)->level, 2);
    for (const char* name : { "ID1", "ID2", "ID3" })
        QCOMPARE(model.item(name).record, model.parser.commonRecord);
}

void tst_CSProReadingRules::notes_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QString>("note");
    row("one line", "Note=One note = x", "One note = x");
    row("two lines", "Note=One\nNote=two", "One two");
    row("a break between", "Note=One\\r\\n\nNote=two", "One\ntwo");
    row("a break within", "Note=One\\r\\ntwo", "One\ntwo");
    row("an empty line", "Note=One\\r\\n\nNote=\\r\\n\nNote=two", "One\n\ntwo");
    row("a blank before", "Note=One\\r\\n\nNote=~two", "One\n two");
    row("another tilde", "Note=One~two", "One~two");
    row("no text", "Note=", "");
}

void tst_CSProReadingRules::notes()
{
    QFETCH(QString, lines);
    QFETCH(QString, note);
    const Model model(Rules::asWritten(),
        "[Dictionary]\nName=D\n" + lines + "\n[Level]\nName=L\n" + lines
            + "\n[IdItems]\n[Record]\nName=R\n" + lines
            + "\nRecordTypeValue='1'\n[Item]\nName=A\nStart=1\n" + lines
            + "\nLen=1\n[ValueSet]\nName=V\n" + lines + "\nValue=1 2;x\n" + lines
            + "\nValue=3;y\n");
    QCOMPARE(model.parser.note(), note);
    QCOMPARE(model.parser.levels().at(0).note, note);
    QCOMPARE(model.parser.getRecord(0)->note, note);
    QCOMPARE(model.item("A").note, note);
    const TCSProValueSet& set = *model.item("A").valueSets->at(0);
    QCOMPARE(set.note, note);
    QCOMPARE(detail(set, 0).note, note);
    QCOMPARE(detail(set, 1).note, note);
    QCOMPARE(detail(set, 2).note, QString());
    QCOMPARE(set.details.size(), note.isEmpty() ? 0 : 2);
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProReadingRules::relations()
{
    const Model model(Rules::asWritten(),
        "[Relation]\nName=ONE\nPrimary=A\nPrimaryLink=A1\nSecondary=B\nSecondaryLink=B1\n"
        "PrimaryLink=A2\nSecondary=C\nSecondaryLink=C1\n"
        "[Relation]\nName=TWO\nPrimary=A\nSecondary=B\nSecondary=C\nPrimaryLink=A3\nSecondary=D\n"
        "SecondaryLink=D1\n");
    const QVector<CSProRelation>& relations = model.parser.relations();
    QCOMPARE(relations.size(), 2);
    QStringList links;
    for (const CSProRelation& relation : relations) {
        links.append(relation.name + ' ' + relation.primary);
        for (const CSProRelationLink& link : relation.links)
            links.append(link.primaryLink + '/' + link.secondary + '/' + link.secondaryLink);
    }
    QCOMPARE(
        links, (QStringList { "ONE A", "A1/B/B1", "A2/C/C1", "TWO A", "/B/", "/C/", "A3/D/D1" }));
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProReadingRules::parents()
{
    const Model model(Rules::asWritten(),
        dictionary("[Item]\nName=A\nStart=2\nLen=4\n[Item]\nName=B\nStart=2\nLen=2\n"
                   "ItemType=SubItem\n[Item]\nName=C\nStart=4\nLen=2\nItemType=SubItem\n"
                   "[Item]\nName=D\nStart=6\nLen=4\n[Item]\nName=E\nStart=6\nLen=2\n"
                   "ItemType=SubItem\n"));
    QCOMPARE(model.item("A").parent, nullptr);
    QCOMPARE(model.item("B").parent, &model.item("A"));
    QCOMPARE(model.item("C").parent, &model.item("A"));
    QCOMPARE(model.item("D").parent, nullptr);
    QCOMPARE(model.item("E").parent, &model.item("D"));
}

void tst_CSProReadingRules::links()
{
    const Model model(Rules::asWritten(),
        dictionary("[Item]\nName=A\nStart=2\nLen=1\n[ValueSet]\nName=V\nLink=1\nValue=1;a\n"
                   "Value=9;b\nName=MISSING,Special\n"
                   "[Item]\nName=B\nStart=3\nLen=1\nOccurrences=2\n[ValueSet]\nName=W\nLink=1\n"
                   "[Item]\nName=C\nStart=5\nLen=1\n[ValueSet]\nName=X\nLink=1\n"
                   "[ValueSet]\nName=Y\nLink=2\nValue=5;c\n[ValueSet]\nName=Z\n"));
    const TCSProValueSet* const first = model.item("A").getValueSet(0);
    QCOMPARE(first->link, QStringLiteral("1"));
    QCOMPARE(first->linkedSet, nullptr);
    for (const char* name : { "B_1", "B_2", "C" }) {
        const TCSProItem& item = model.item(name);
        QCOMPARE(item.getValueSet(0)->linkedSet, first);
        QCOMPARE(*item.getValueSet(0)->items, *first->items);
        QCOMPARE(item.missingCode, QStringLiteral("9"));
        QCOMPARE(model.variable(name).valueLabels.left(4), QStringLiteral("1 a\t"));
    }
    QCOMPARE(codesOf(model.item("C"), 1), QStringList { "5" });
    QCOMPARE(codesOf(model.item("C"), 2), QStringList());
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProReadingRules::linkIsToTheFirstSetWithValues()
{
    const Model model(Rules::asWritten(),
        dictionary("[Item]\nName=A\nStart=2\nLen=1\n[ValueSet]\nName=V\nLink=1\n"
                   "[Item]\nName=B\nStart=3\nLen=1\n[ValueSet]\nName=W\nLink=1\nValue=1;a\n"
                   "[Item]\nName=C\nStart=4\nLen=1\n[ValueSet]\nName=X\nLink=1\n"));
    QCOMPARE(problemsOf(model.parser), QStringList { "15 LinkWithoutValues" });
    QCOMPARE(codesOf(model.item("B")), QStringList { "1" });
    QCOMPARE(model.item("C").getValueSet(0)->linkedSet, model.item("B").getValueSet(0));
    QCOMPARE(codesOf(model.item("C")), QStringList { "1" });
}

void tst_CSProReadingRules::details()
{
    const Model model(Rules::asWritten(),
        values("Value=1;a\nImage=..\\Images\\a=b.jpg\nTextColor=#FF0000\nValue=2:3 5;b\n"
               "Image=c.png\nName=MISSING,Special\nValue=4;d\n"));
    const TCSProValueSet& set = *model.item("A").valueSets->at(0);
    QCOMPARE(set.getCount(), 4);
    QCOMPARE(detail(set, 0).image, QStringLiteral("..\\Images\\a=b.jpg"));
    QCOMPARE(detail(set, 0).textColor, QStringLiteral("#FF0000"));
    for (const int index : { 1, 2 }) {
        QCOMPARE(detail(set, index).image, QStringLiteral("c.png"));
        QCOMPARE(set.getValueSetItem(index)->type, 1);
    }
    QCOMPARE(detail(set, 3).image, QString());
    QCOMPARE(set.details.size(), 3);
    QCOMPARE(set.getValueSetItem(3)->type, 0);
}

void tst_CSProReadingRules::labelTexts_data()
{
    QTest::addColumn<QString>("languages");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("text");

    const QString three = QStringLiteral("[Languages]\nEN=English\nFR=Français\nJP=日本語\n");
    row("no languages", "", "", "Sex|Sexe", "Sex|Sexe");
    row("no choice", three, "", "Sex|Sexe|性", "Sex");
    row("the first", three, "EN", "Sex|Sexe|性", "Sex");
    row("the second", three, "FR", "Sex|Sexe|性", "Sexe");
    row("the last", three, "JP", "Sex|Sexe|性", "性");
    row("another case", three, "fr", "Sex|Sexe|性", "Sexe");
    row("an unknown language", three, "XX", "Sex|Sexe|性", "Sex");
    row("an empty text", three, "FR", "Sex||性", "Sex");
    row("a text too few", three, "JP", "Sex|Sexe", "Sex");
    row("one text", three, "JP", "Sex", "Sex");
    row("no text", three, "JP", "", "");
}

void tst_CSProReadingRules::labelTexts()
{
    QFETCH(QString, languages);
    QFETCH(QString, chosen);
    QFETCH(QString, label);
    QFETCH(QString, text);
    const Model model(Rules::asWritten(),
        languages + "[Item]\nLabel=" + label + "\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;"
            + label + "\n",
        QMessageBox::No, chosen);
    QCOMPARE(model.item("A").label, label);
    QCOMPARE(model.parser.labelText(label), text);
    QCOMPARE(model.variable("A").label, text);
    QCOMPARE(model.variable("A").valueLabels, "1 " + text + '\t');
}

void tst_CSProReadingRules::languageOfFields()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(translated);
    file.close();

    TCSProDataImport import(path);
    import.setReadingRules(Rules::asWritten());
    import.openFile();
    QCOMPARE(import.getField(0)->label, QStringLiteral("Sex"));
    import.setLanguage(QStringLiteral("fr"));
    import.openFile();
    QCOMPARE(import.getField(0)->label, QStringLiteral("Sexe"));
    QCOMPARE(import.getField(0)->valueLabels, QStringLiteral("1 Homme\t2 Woman\t"));

    TCSPro& parser = *import.dictionary;
    QCOMPARE(parser.languages().size(), 2);
    QCOMPARE(parser.languages().at(1).name, QStringLiteral("FR"));
    QCOMPARE(parser.languages().at(1).label, QStringLiteral("French"));
    QVERIFY(parser.setLanguage(QStringLiteral("EN")));
    QVERIFY(parser.setLanguage(QStringLiteral("FR")));
    QVERIFY(!parser.setLanguage(QStringLiteral("XX")));
    QCOMPARE(parser.labelText(QStringLiteral("Sex|Sexe")), QStringLiteral("Sexe"));
}

void tst_CSProReadingRules::foundEncoding_data()
{
    QTest::addColumn<QByteArray>("mark");
    QTest::addColumn<QByteArray>("writtenAs");
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QByteArray>("encoding");

    const auto add = [](const char* name, const char* mark, const char* writtenAs,
                         const char* codec, const QString& label, const char* encoding) {
        row(name, QByteArray(mark), QByteArray(writtenAs), QByteArray(codec), label,
            QByteArray(encoding));
    };
    const QString western = QStringLiteral("Âge révolu");
    const QString greek = QStringLiteral("Ηλικία");
    add("a mark", "\xEF\xBB\xBF", "UTF-8", "", greek, "UTF-8");
    add("a mark and plain text", "\xEF\xBB\xBF", "UTF-8", "", "Age", "UTF-8");
    add("a mark of two bytes", "\xFF\xFE", "UTF-16LE", "", greek, "UTF-16LE");
    add("a mark of two bytes, the other way round", "\xFE\xFF", "UTF-16BE", "", greek, "UTF-16BE");
    add("no mark, valid", "", "UTF-8", "", greek, "UTF-8");
    add("no mark, plain text", "", "UTF-8", "", "Age", "UTF-8");
    add("no mark, invalid", "", "windows-1252", "", western, "windows-1252");
    add("a codec and invalid text", "", "ISO-8859-7", "ISO-8859-7", greek, "ISO-8859-7");
    add("a codec wins over valid text", "", "windows-1251", "windows-1251",
        QStringLiteral("Возраст"), "windows-1251");
    add("a codec that does not exist", "", "windows-1252", "no-such-codec", western,
        "windows-1252");
}

void tst_CSProReadingRules::foundEncoding()
{
    QFETCH(QByteArray, mark);
    QFETCH(QByteArray, writtenAs);
    QFETCH(QByteArray, codec);
    QFETCH(QString, label);
    QFETCH(QByteArray, encoding);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
    const QString text = "[Dictionary]\r\nName=D\r\nLabel=" + label + "\r\n";
    file.write(mark);
    file.write(QTextCodec::codecForName(writtenAs)->fromUnicode(
        text.constData(), text.size(), &withoutMark));
    file.close();
    for (const Rules& rules : { Rules::asWritten(), alone(&Rules::foundEncoding) }) {
        TCSPro parser;
        QCOMPARE(parser.textEncoding(), QByteArray());
        parser.setReadingRules(rules);
        parser.setTextCodec(codec);
        parser.loadFromFile(path);
        QCOMPARE(parser.label, label);
        QCOMPARE(parser.textEncoding(), encoding);
    }
}

void tst_CSProReadingRules::lineEnds_data()
{
    QTest::addColumn<QByteArray>("end");
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<bool>("isRead"); // by the established rules

    row("line feeds", QByteArray("\n"), QByteArray("UTF-8"), true);
    row("both", QByteArray("\r\n"), QByteArray("UTF-8"), true);
    row("carriage returns", QByteArray("\r"), QByteArray("UTF-8"), false);
    row("carriage returns, UTF-16", QByteArray("\r"), QByteArray("UTF-16"), false);
    row("carriage returns, Windows-1252", QByteArray("\r"), QByteArray("windows-1252"), false);
}

void tst_CSProReadingRules::lineEnds()
{
    QFETCH(QByteArray, end);
    QFETCH(QByteArray, codec);
    QFETCH(bool, isRead);
    QString text = "[Dictionary]\nName=D\n\n[Record]\nName=R\nRecordTypeValue='1'\n[Item]\n"
                   "Name=A\nLabel=S\u00e9x\nStart=2\nLen=1\n[ValueSet]\nName=V\nValue=1;Man\n"
                   "Value=2;Woman\nColour=red\n";
    text.replace(QLatin1Char('\n'), QString::fromLatin1(end));
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("census.dcf")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QTextCodec::codecForName(codec)->fromUnicode(text));
    file.close();

    TCSPro established;
    established.setTextCodec(codec);
    established.loadFromFile(file.fileName());
    QCOMPARE(established.getItemsCount(), isRead ? 1 : 0);
    for (const Rules& rules : { Rules::asWritten(), alone(&Rules::allLineEnds) }) {
        TCSPro parser;
        parser.setReadingRules(rules);
        parser.setTextCodec(codec);
        parser.loadFromFile(file.fileName());
        QCOMPARE(parser.getRecordsCount(), 1);
        QCOMPARE(parser.getItemsCount(), 1);
        QCOMPARE(parser.getItem(0)->label, QStringLiteral("S\u00e9x"));
        QCOMPARE(parser.getItem(0)->sourceLine, 7);
        QCOMPARE(parser.getItem(0)->getValueSet(0)->getCount(), 2);
        QCOMPARE(parser.problems().size(), rules.wholeKeys ? 1 : 0);
        if (rules.wholeKeys)
            QCOMPARE(parser.problems().first().line, 16);
    }
}

void tst_CSProReadingRules::json_data()
{
    QTest::addColumn<QByteArray>("before");
    row("at once", QByteArray());
    row("behind white space", QByteArray(" \r\n\t"));
    row("behind a byte-order mark", QByteArray("\xEF\xBB\xBF"));
    row("behind both", QByteArray("\xEF\xBB\xBF\n"));
}

void tst_CSProReadingRules::json()
{
    QFETCH(QByteArray, before);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(before + "{ \"name\": \"D\", \"levels\": [] }\n[Item]\nName=A\nLen=1\n");
    file.close();
    // Without the rule the text form's sections are found, wherever they stand.
    for (const Rules& rules : { Rules::established(), without(&Rules::json) }) {
        TCSPro parser;
        parser.setReadingRules(rules);
        parser.loadFromFile(path);
        QCOMPARE(parser.name, QString());
        QCOMPARE(namesOf(parser), QStringList { "A" });
    }
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(before + "{ \"name\": \"D\", \"levels\": [] }\n");
    file.close();
    for (const Rules& rules : { Rules::asWritten(), alone(&Rules::json) }) {
        TCSPro parser;
        parser.setReadingRules(rules);
        parser.loadFromFile(path);
        QCOMPARE(parser.name, QStringLiteral("D"));
    }
}

void tst_CSProReadingRules::malformedValues_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("numeric");
    QTest::addColumn<QStringList>("text");
    QTest::addColumn<bool>("isToldOfNumeric");
    QTest::addColumn<bool>("isToldOfText");

    const QStringList none { "" };
    row("an unclosed quote", "Value='abc", QStringList { "abc" }, QStringList { "abc" }, true,
        true);
    row("an unclosed quote before a label", "Value='abc;Label", QStringList { "abc" },
        QStringList { "abc" }, true, true);
    row("an unclosed quote of the other kind", "Value=\"12;Label", QStringList { "12" },
        QStringList { "12" }, true, true);
    row("a quote alone", "Value='", none, none, true, true);
    row("a quote and a separator", "Value=';", none, none, true, true);
    row("nothing", "Value=", none, none, true, false);
    row("a label alone", "Value=;Label", none, none, true, false);
    row("two separators", "Value=;;", none, none, true, false);
    row("two separators behind a code", "Value=1;;", QStringList { "1" }, QStringList { "1" },
        false, false);
    row("a colon", "Value=:", QStringList { ":" }, QStringList { ":" }, true, false);
    row("no low bound", "Value=:5;x", QStringList { ":5" }, QStringList { ":5" }, true, false);
    row("no high bound", "Value=5:;x", QStringList { "5.." }, QStringList { "5:" }, true, false);
    row("two colons", "Value=1:2:3;x", QStringList { "1..2:3" }, QStringList { "1:2:3" }, true,
        false);
    row("a name line without a mark", "Value=1;x\nName=", QStringList { "1" }, QStringList { "1" },
        true, true);
    row("a comma for a name", "Value=1;x\nName=,", QStringList { "1" }, QStringList { "1" }, true,
        true);
    row("a name line twice", "Value=1;x\nName=MISSING,Special\nName=ODD", QStringList { "1" },
        QStringList { "1" }, true, true);
    row("a special name before any value", "Name=MISSING,Special\nValue=1;x", QStringList { "1" },
        QStringList { "1" }, true, true);
    row("an image before any value", "Image=x.jpg\nValue=1;x", QStringList { "1" },
        QStringList { "1" }, true, true);
    row("no values", "", QStringList(), QStringList(), false, false);
    row("a key without a sign", "Value\nValue=1;x", QStringList { "1" }, QStringList { "1" }, true,
        true);
}

void tst_CSProReadingRules::malformedValues()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, numeric);
    QFETCH(QStringList, text);
    QFETCH(bool, isToldOfNumeric);
    QFETCH(bool, isToldOfText);
    for (const NamedFlag& flag : allFlags()) {
        for (const Rules& rules : { alone(flag.flag), without(flag.flag) }) {
            QCOMPARE(Model(rules, values(lines)).parser.getItemsCount(), 1);
            QCOMPARE(Model(rules, ::textValues(lines)).parser.getItemsCount(), 1);
        }
    }
    const Model numbers(Rules::asWritten(), values(lines));
    QCOMPARE(codesOf(numbers.item("A")), numeric);
    QCOMPARE(!numbers.parser.problems().isEmpty(), isToldOfNumeric);
    const Model texts(Rules::asWritten(), ::textValues(lines));
    QCOMPARE(codesOf(texts.item("A")), text);
    QCOMPARE(!texts.parser.problems().isEmpty(), isToldOfText);
}

void tst_CSProReadingRules::malformedSections_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<bool>("isTold");
    const QString item = QStringLiteral("[Item]\nName=A\nLen=1\nStart=1\n");
    row("a bracket", "[\n" + item, QStringList { "A" }, true);
    row("empty brackets", "[]\n" + item, QStringList { "A" }, true);
    row("no closing bracket", "[Item\nName=A\nLen=1\nStart=1\n", QStringList { "A" }, false);
    row("nothing but headers",
        "[Dictionary]\n[Languages]\n[Level]\n[IdItems]\n[Relation]\n[NoEdit]", QStringList(),
        false);
    row("an empty record", "[Record]\n" + item, QStringList { "A" }, false);
    row("an empty item", "[Item]\n" + item, QStringList { "", "A" }, true);
    row("an empty value set first", "[ValueSet]\n" + item, QStringList { "A" }, true);
    row("an empty value set last", item + "[ValueSet]", QStringList { "A" }, false);
    row("signs alone", "[Item]\nName=A\nLen=1\n=\n==\n", QStringList { "A" }, true);
    row("lines before any section", "Name=B\nnonsense\n" + item, QStringList { "A" }, true);
    row("occurrence labels of no occurrence",
        item + "OccurrenceLabel=0,x\nOccurrenceLabel=99999999,y\nOccurrenceLabel=,\n",
        QStringList { "A" }, true);
    row("a relation without its parts", "[Relation]\nSecondaryLink=X\n[Relation]\n" + item,
        QStringList { "A" }, false);
    row("languages without names", "[Languages]\n=English\n" + item, QStringList { "A" }, true);
}

void tst_CSProReadingRules::malformedSections()
{
    QFETCH(QString, text);
    QFETCH(QStringList, items);
    QFETCH(bool, isTold);
    for (const NamedFlag& flag : allFlags()) {
        for (const Rules& rules : { alone(flag.flag), without(flag.flag) })
            QCOMPARE(Model(rules, text).parser.getItemsCount(), items.size());
    }
    const Model model(Rules::asWritten(), text);
    QCOMPARE(namesOf(model.parser), items);
    QVERIFY2(model.parser.problems().isEmpty() != isTold,
        qPrintable(problemsOf(model.parser).join(QLatin1Char('\n'))));
}

void tst_CSProReadingRules::largeNumbers_data()
{
    QTest::addColumn<QString>("keys");
    const QString most = QString::number(std::numeric_limits<int>::max());
    const QString least = QString::number(std::numeric_limits<int>::min());
    for (const QString& number : { most, least }) {
        for (const char* keys : { "Len=%1\n", "Start=%1\nLen=1\nOccurrences=2\n",
                 "Start=%1\nLen=%1\nOccurrences=2\n", "Decimal=%1\nLen=5\n", "Decimal=1\nLen=%1\n",
                 "Decimal=1\nDecimalChar=Yes\nLen=%1\n", "Decimal=5\nLen=-2147483648\nStart=%1\n",
                 "Decimal=%1\nLen=-2\n" }) {
            const QString text = QString::fromLatin1(keys).arg(number);
            QTest::newRow(qPrintable(QString(text).replace(QLatin1Char('\n'), QLatin1Char(' '))))
                << text;
        }
    }
}

void tst_CSProReadingRules::largeNumbers()
{
    QFETCH(QString, keys);
    const QString text = dictionary("[Item]\nName=A\n" + keys
        + "[Item]\nName=S\nItemType=SubItem\nStart=1\nLen=1\n[Item]\nName=Z\nStart=1\nLen=1\n");
    for (const Rules& rules : { Rules::established(), Rules::asWritten() }) {
        const Model model(rules, text);
        QCOMPARE(model.parser.items->constLast()->name, QStringLiteral("Z"));
    }
}

QTEST_GUILESS_MAIN(tst_CSProReadingRules)
#include "tst_CSProReadingRules.moc"
