// Dictionaries in the JSON form of CSPro 8 and later.
#include "AddRow.h"
#include "JsonDictionaries.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// "code label", "low..high label", with its type behind it when special.
QStringList entriesOf(const TCSProValueSet& valueSet)
{
    QStringList texts;
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        QString text = entry->code;
        const QString& highCode = valueSet.detail(entry).highCode;
        if (!highCode.isNull())
            text += ".." + highCode;
        text += ' ' + entry->label;
        if (entry->special)
            text += " special " + QString::number(entry->type);
        texts.append(text);
    }
    return texts;
}

QString withoutTrailingBlanks(QString text)
{
    while (text.endsWith(QLatin1Char(' ')))
        text.chop(1);
    return text;
}

/*
 * Everything that both forms of a dictionary say, one line for each part. Texts of the data stand
 * without trailing blanks, paths of images with "/" and an absent "Required" as the word it means,
 * because the forms write them differently.
 */
class Description {
public:
    explicit Description(const Loaded& loaded)
    {
        const TCSPro& parser = loaded.parser;
        add({ "dictionary", parser.version, parser.name, parser.label, parser.note(),
            QString::number(parser.recordTypeStart), QString::number(parser.recordTypeLen),
            parser.positions, parser.zeroFill, parser.decimalChar });
        for (const CSProLanguage& language : parser.languages())
            add({ "language", language.name, language.label });
        for (const CSProLevel& level : parser.levels())
            add({ "level", level.name, level.label, level.note });
        for (const CSProRelation& relation : parser.relations()) {
            add({ "relation", relation.name, relation.primary });
            for (const CSProRelationLink& link : relation.links)
                add({ "link", link.primaryLink, link.secondary, link.secondaryLink });
        }
        for (const TCSProRecord* record : qAsConst(*parser.records))
            addRecord(*record);
        for (const TCSProItem* item : qAsConst(*parser.items))
            addItem(*item);
        for (const TGenericField* field : qAsConst(*loaded.import.fields))
            addField(*field);
        add({ "problems", QString::number(parser.problems().size()) });
    }

    const QStringList& lines() const
    {
        return m_lines;
    }

private:
    void add(const QStringList& parts)
    {
        m_lines.append(parts.join(QLatin1String(" | ")));
    }

    static QString joined(const QVector<QString>& texts)
    {
        return QStringList(texts.begin(), texts.end()).join(',');
    }
    void addRecord(const TCSProRecord& record)
    {
        const bool isRequired = record.required != QLatin1String("No");
        add({ "record", record.name, record.label, record.note, record.recordTypeValue,
            isRequired ? "Yes" : "No", QString::number(record.maxRecords),
            QString::number(record.recordLen), QString::number(record.level),
            joined(record.occurrenceLabels) });
    }

    void addItem(const TCSProItem& item)
    {
        add({ "item", item.record->name, item.name, item.dictionaryName, item.label,
            item.detail().note, QString::number(item.start), QString::number(item.len),
            QString::number(item.occurrence), QString::number(item.firstOccurrenceIndex),
            QString::number(item.decimal), item.isAlpha != 0 ? "alpha" : "numeric",
            item.hasDecimalChar ? "point" : "", item.isZeroFill ? "zeros" : "",
            item.isSubItem != 0 ? "subitem" : "",
            item.detail().parent ? item.detail().parent->name : QString(),
            QString::number(item.detail().level), item.detail().occurrenceLabel,
            joined(item.detail().occurrenceLabels), item.detail().contentType });
        add({ "codes of", item.name, item.missingCode, item.notApplicableCode,
            item.detail().refusedCode });
        for (const TCSProValueSet* valueSet : qAsConst(*item.valueSets))
            addValueSet(*valueSet);
    }

    void addValueSet(const TCSProValueSet& valueSet)
    {
        add({ "set", valueSet.name, valueSet.label, valueSet.note(), valueSet.link(),
            valueSet.linkedSet() ? valueSet.linkedSet()->name : QString(),
            valueSet.isNumeric ? "numeric" : "text" });
        for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
            const CSProValueDetail& detail = valueSet.detail(entry);
            add({ "value", detail.isFurtherCode ? "further" : "first",
                valueSet.isNumeric ? entry->code : withoutTrailingBlanks(entry->code),
                detail.highCode, entry->label, QString::number(entry->type),
                entry->special ? "special" : "", detail.note,
                QString(detail.image).replace(QLatin1Char('\\'), QLatin1Char('/')),
                detail.textColor });
        }
    }

    void addField(const TGenericField& field)
    {
        const bool isText = field.fieldType == TGenericField::StringType;
        add({ "field", field.name, field.label, QString::number(field.fieldType),
            QString::number(field.start), QString::number(field.length), field.decimals,
            field.minValue, field.maxValue, field.missingValue, field.notApplicableValue,
            isText ? QString() : field.valueLabels });
    }

    QStringList m_lines;
};

QString fixture(const char* name)
{
    return QStringLiteral(TESSEL_TEST_DATA "/") + QLatin1String(name);
}

// The lines that only one of two lists has, in a form to be read.
QString differences(const QStringList& text, const QStringList& json)
{
    QStringList found;
    for (const QString& line : text) {
        if (!json.contains(line))
            found.append("text: " + line);
    }
    for (const QString& line : json) {
        if (!text.contains(line))
            found.append("JSON: " + line);
    }
    return found.join(QLatin1Char('\n'));
}

} // namespace

class tst_CSProJson : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void header();
    void headerWithoutMembers();
    void levelsAndRecords();
    void items();
    void zeroFillDefault();
    void contentTypes_data();
    void contentTypes();
    void relativePositions();
    void idsOfDeeperLevelsComeFirst();
    void recordTypeBehindIds();
    void noRecordType();
    void startWins();
    void absolutePositions();
    void subItemsAndOccurrences();
    void recordLength();
    void valuePairs_data();
    void valuePairs();
    void specials_data();
    void specials();
    void specialsOfData();
    void links();
    void notesAndImages();
    void languages();
    void unknownLanguageOfALabel();
    void relations();
    void binaryItems();
    void encoding();

    void bothFormsAreOneModel();
};

void tst_CSProJson::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProJson::header()
{
    const Loaded loaded(
        json("{ 'software': 'CSPro', 'version': 8.1, 'fileType': 'dictionary', 'editable': false, "
             "'name': 'D', 'aliases': [ 'OLD_D' ], 'labels': [ { 'text': 'A survey' } ], "
             "'note': 'One\\nTwo', 'security': { 'allowExport': true }, 'readOptimization': true, "
             "'enableBinaryItems': true, 'recordType': { 'start': 3, 'length': 2 }, "
             "'defaults': { 'decimalMark': true, 'zeroFill': true }, 'relativePositions': false, "
             "'levels': [] }"));
    QVERIFY(!loaded.error);
    QCOMPARE(loaded.parser.version, QStringLiteral("CSPro 8.1"));
    QCOMPARE(loaded.parser.name, QStringLiteral("D"));
    QCOMPARE(loaded.parser.label, QStringLiteral("A survey"));
    QCOMPARE(loaded.parser.note(), QStringLiteral("One\nTwo"));
    QCOMPARE(loaded.parser.recordTypeStart, 3);
    QCOMPARE(loaded.parser.recordTypeLen, 2);
    QCOMPARE(loaded.parser.decimalChar, QStringLiteral("Yes"));
    QCOMPARE(loaded.parser.zeroFill, QStringLiteral("Yes"));
    QCOMPARE(loaded.parser.positions, QStringLiteral("Absolute"));
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::headerWithoutMembers()
{
    const Loaded loaded(json("{ 'levels': [] }"));
    QVERIFY(!loaded.error);
    QCOMPARE(loaded.parser.name, QString());
    QCOMPARE(loaded.parser.version, QString());
    QCOMPARE(loaded.parser.recordTypeStart, 0);
    QCOMPARE(loaded.parser.recordTypeLen, 0);
    QCOMPARE(loaded.parser.getItemsCount(), 0);
    QCOMPARE(loaded.parser.records->size(), 0);
    QVERIFY(loaded.parser.levels().isEmpty());
}

void tst_CSProJson::levelsAndRecords()
{
    const Loaded loaded(json(
        "{ 'name': 'D', 'levels': [ "
        "{ 'name': 'L1', 'labels': [ { 'text': 'First' } ], 'note': 'n', 'ids': { 'items': [ "
        "{ 'name': 'ID1', 'contentType': 'numeric', 'start': 1, 'length': 1, 'zeroFill': false } ] "
        "}, "
        "'records': [ { 'name': 'R1', 'labels': [ { 'text': 'One' } ], 'note': 'm', "
        "'recordType': 'HH1', 'occurrences': { 'required': false, 'maximum': 9999, 'labels': [ "
        "{ 'occurrence': 2, 'labels': [ { 'text': 'Second' } ] } ] }, 'items': [] }, "
        "{ 'name': 'R2', 'occurrences': { 'required': true, 'maximum': 1 }, 'items': [] } ] }, "
        "{ 'name': 'L2', 'labels': [], 'ids': { 'items': [] }, 'records': [ { 'name': 'R3', "
        "'recordType': '3', 'occurrences': { 'required': true, 'maximum': 5 }, 'items': [ "
        "{ 'name': 'A', 'contentType': 'alpha', 'length': 1 } ] } ] } ] }"));
    QCOMPARE(loaded.parser.levels().size(), 2);
    QCOMPARE(loaded.parser.levels().at(0).name, QStringLiteral("L1"));
    QCOMPARE(loaded.parser.levels().at(0).label, QStringLiteral("First"));
    QCOMPARE(loaded.parser.levels().at(0).note, QStringLiteral("n"));
    QCOMPARE(loaded.parser.records->size(), 3);
    const TCSProRecord& first = *loaded.parser.getRecord(0);
    QCOMPARE(first.name, QStringLiteral("R1"));
    QCOMPARE(first.label, QStringLiteral("One"));
    QCOMPARE(first.note, QStringLiteral("m"));
    QCOMPARE(first.recordTypeValue, QStringLiteral("HH1"));
    QCOMPARE(first.required, QStringLiteral("No"));
    QCOMPARE(first.maxRecords, 9999);
    QCOMPARE(first.occurrenceLabels.toList(), (QStringList { QString(), "Second" }));
    QCOMPARE(first.level, 1);
    QCOMPARE(loaded.parser.getRecord(1)->recordTypeValue, QString());
    QCOMPARE(loaded.parser.getRecord(1)->required, QStringLiteral("Yes"));
    QCOMPARE(loaded.parser.getRecord(2)->level, 2);
    QCOMPARE(loaded.parser.findRecordByValue(QStringLiteral("3")), loaded.parser.getRecord(2));
    QCOMPARE(loaded.item("ID1").record, loaded.parser.commonRecord);
    QCOMPARE(loaded.item("ID1").detail().level, 1);
    QCOMPARE(loaded.item("A").record, loaded.parser.getRecord(2));
    QCOMPARE(loaded.item("A").detail().level, 2);
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::items()
{
    const Loaded loaded(dictionary(QLatin1String(identification),
        "{ 'name': 'A', 'aliases': [ 'B' ], 'labels': [ { 'text': 'Weight' } ], 'note': 'x', "
        "'contentType': 'numeric', 'length': 6, 'decimals': 3, 'decimalMark': true, "
        "'zeroFill': true, 'capture': { 'type': 'TextBox' } }, "
        "{ 'name': 'C', 'contentType': 'alpha', 'length': 20 }, "
        "{ 'name': 'E', 'contentType': 'numeric', 'length': 2, 'decimals': 1, "
        "'decimalMark': false, 'zeroFill': false }"));
    QCOMPARE(loaded.parser.problems().size(), 0);
    const TCSProItem& first = loaded.item("A");
    QCOMPARE(first.label, QStringLiteral("Weight"));
    QCOMPARE(first.detail().note, QStringLiteral("x"));
    QCOMPARE(first.len, 6);
    QCOMPARE(first.decimal, 3);
    QCOMPARE(first.isAlpha, 0);
    QVERIFY(first.hasDecimalChar);
    QVERIFY(first.isZeroFill);
    QCOMPARE(loaded.item("C").isAlpha, 1);
    QCOMPARE(loaded.item("C").decimal, 0);
    QVERIFY(!loaded.item("C").isZeroFill);
    QCOMPARE(loaded.item("C").detail().contentType, QString());
    QVERIFY(!loaded.item("E").hasDecimalChar);
    QCOMPARE(loaded.item("E").occurrence, 0);
    QVERIFY(loaded.item("ID").isZeroFill);

    auto* const field = dynamic_cast<TCSProVariable*>(loaded.import.fields->constLast());
    QVERIFY(field);
    field->setAsString(QStringLiteral("25"));
    QCOMPARE(field->realValue, 2.5);
}

void tst_CSProJson::zeroFillDefault()
{
    const QByteArray bytes =
        json("{ 'name': 'D', 'defaults': { 'decimalMark': true, 'zeroFill': true }, 'levels': [ "
             "{ 'name': 'L', 'ids': { 'items': [] }, 'records': [ { 'name': 'R', 'items': [ "
             "{ 'name': 'A', 'contentType': 'numeric', 'length': 1 }, "
             "{ 'name': 'B', 'contentType': 'numeric', 'length': 1, 'zeroFill': false }, "
             "{ 'name': 'C', 'contentType': 'alpha', 'length': 1 } ] } ] } ] }");
    const Loaded loaded(bytes);
    QVERIFY(loaded.item("A").isZeroFill);
    QVERIFY(!loaded.item("B").isZeroFill);
    QVERIFY(!loaded.item("C").isZeroFill);
    QVERIFY(!loaded.item("A").hasDecimalChar);
    QCOMPARE(loaded.item("A").decimal, 0);
}

void tst_CSProJson::contentTypes_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<int>("isAlpha");
    QTest::addColumn<QString>("contentType");
    row("numeric", "numeric", 0, "");
    row("Numeric", "Numeric", 0, "");
    row("alpha", "alpha", 1, "");
    row("ALPHA", "ALPHA", 1, "");
    for (const char* type : { "Audio", "Document", "Geometry", "Image", "image" })
        row(type, type, 1, QString(type).toLower());
}

void tst_CSProJson::contentTypes()
{
    QFETCH(QString, written);
    QFETCH(int, isAlpha);
    QFETCH(QString, contentType);
    const Loaded loaded(dictionary(QLatin1String(identification),
        "{ 'name': 'A', 'contentType': '" + written + "', 'length': 1 }"));
    QCOMPARE(loaded.item("A").isAlpha, isAlpha);
    QCOMPARE(loaded.item("A").detail().contentType, contentType);
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::relativePositions()
{
    const Loaded loaded(dictionary(QLatin1String(identification),
        numeric("A", 3) + ", " + numeric("B", 2, ", 'occurrences': { 'maximum': 3 }") + ", "
            + numeric("C", 4) + ", " + numeric("D", 1, ", 'subitem': true, 'subitemOffset': 2")
            + ", " + numeric("E", 1)));
    QCOMPARE(loaded.positions(),
        (QStringList { "ID@2", "A@6", "B_1@9", "B_2@11", "B_3@13", "C@15", "D@17", "E@19" }));
}

void tst_CSProJson::idsOfDeeperLevelsComeFirst()
{
    const Loaded loaded(
        json("{ 'name': 'D', 'recordType': { 'start': 1, 'length': 1 }, 'relativePositions': true, "
             "'levels': [ { 'name': 'L1', 'ids': { 'items': [ "
            + numeric("ID1", 3, ", 'start': 2") + " ] }, 'records': [ { 'name': 'R1', "
            + "'recordType': '1', 'items': [ " + numeric("A", 2) + ", " + numeric("B", 2)
            + " ] }, { 'name': 'R2', 'recordType': '2', 'items': [ " + numeric("C", 1)
            + " ] } ] }, { 'name': 'L2', 'ids': { 'items': [ " + numeric("ID2", 2, ", 'start': 5")
            + ", " + numeric("ID3", 4, ", 'start': 7") + ", "
            + numeric("ID3_SUB", 2, ", 'start': 7, 'subitem': true, 'subitemOffset': 0")
            + " ] }, 'records': [ { 'name': 'R3', 'recordType': '3', 'items': [ " + numeric("E", 2)
            + ", " + numeric("F", 1) + " ] } ] } ] }"));
    QCOMPARE(loaded.positions(),
        (QStringList {
            "ID1@2", "A@11", "B@13", "C@11", "ID2@5", "ID3@7", "ID3_SUB@7", "E@11", "F@13" }));
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::recordTypeBehindIds()
{
    const Loaded loaded(
        json("{ 'name': 'D', 'recordType': { 'start': 7, 'length': 2 }, 'relativePositions': true, "
             "'levels': [ { 'name': 'L', 'ids': { 'items': [ "
            + numeric("ID", 6, ", 'start': 1")
            + " ] }, 'records': [ { 'name': 'R', 'recordType': '01', " + "'items': [ "
            + numeric("A", 2) + " ] } ] } ] }"));
    QCOMPARE(loaded.positions(), (QStringList { "ID@1", "A@9" }));
}

void tst_CSProJson::noRecordType()
{
    const Loaded loaded(
        json("{ 'name': 'D', 'recordType': { 'start': 0, 'length': 0 }, 'relativePositions': true, "
             "'levels': [ { 'name': 'L', 'ids': { 'items': [ "
            + numeric("ID", 2, ", 'start': 1") + " ] }, 'records': [ { 'name': 'R', 'items': [ "
            + numeric("A", 2) + " ] } ] } ] }"));
    QCOMPARE(loaded.positions(), (QStringList { "ID@1", "A@3" }));
    QCOMPARE(loaded.parser.recordTypeStart, 0);
    QCOMPARE(loaded.parser.recordTypeLen, 0);
    QCOMPARE(loaded.parser.getRecord(0)->recordTypeValue, QString());
}

void tst_CSProJson::startWins()
{
    const Loaded loaded(dictionary(QLatin1String(identification),
        numeric("A", 2) + ", " + numeric("B", 2, ", 'start': 20") + ", "
            + numeric("C", 1, ", 'subitem': true, 'subitemOffset': 1") + ", "
            + numeric("D", 1, ", 'subitem': true, 'subitemOffset': 1, 'start': 20") + ", "
            + numeric("E", 2)));
    QCOMPARE(loaded.positions(), (QStringList { "ID@2", "A@6", "B@20", "C@21", "D@20", "E@22" }));
}

void tst_CSProJson::absolutePositions()
{
    const Loaded loaded(json(
        "{ 'name': 'D', 'recordType': { 'start': 1, 'length': 1 }, 'relativePositions': false, "
        "'levels': [ { 'name': 'L', 'ids': { 'items': [ "
        + numeric("ID", 2, ", 'start': 4") + " ] }, 'records': [ { 'name': 'R', 'recordType': '1', "
        + "'items': [ " + numeric("A", 4, ", 'start': 30") + ", "
        + numeric("B", 2, ", 'subitem': true, 'subitemOffset': 2, 'start': 32") + ", "
        + numeric("C", 2, ", 'start': 10, 'occurrences': { 'maximum': 2 }") + " ] } ] } ] }"));
    QCOMPARE(loaded.positions(), (QStringList { "ID@4", "A@30", "B@32", "C_1@10", "C_2@12" }));
    QCOMPARE(loaded.parser.positions, QStringLiteral("Absolute"));
}

void tst_CSProJson::subItemsAndOccurrences()
{
    const Loaded loaded(dictionary(QLatin1String(identification),
        "{ 'name': 'P', 'contentType': 'alpha', 'length': 6, 'occurrences': { 'maximum': 2, "
        "'labels': [ { 'occurrence': 2, 'labels': [ { 'text': 'Second' } ] } ] } }, "
            + numeric("S", 2, ", 'subitem': true, 'subitemOffset': 1") + ", "
            + numeric(
                "T", 1, ", 'subitem': true, 'subitemOffset': 3, 'occurrences': { 'maximum': 2 }")
            + ", " + numeric("Z", 1)));
    QCOMPARE(loaded.positions(),
        (QStringList { "ID@2", "P_1@6", "P_2@12", "S_1@7", "S_2@13", "T_1_1@9", "T_1_2@10",
            "T_2_1@15", "T_2_2@16", "Z@18" }));
    QCOMPARE(loaded.item("S_2").detail().parent, &loaded.item("P_2"));
    QCOMPARE(loaded.item("P_2").detail().occurrenceLabel, QStringLiteral("Second"));
    QCOMPARE(loaded.item("P_1").detail().occurrenceLabel, QString());
    QCOMPARE(loaded.item("P_2").dictionaryName, QStringLiteral("P"));
    QCOMPARE(loaded.item("P_2").occurrence, 2);
    QCOMPARE(loaded.item("S_1").isSubItem, 1);
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::recordLength()
{
    const Loaded items(dictionary(QLatin1String(identification),
        numeric("A", 3, ", 'occurrences': { 'maximum': 4 }") + ", "
            + numeric("B", 2, ", 'subitem': true, 'subitemOffset': 1")));
    QCOMPARE(items.parser.getRecord(0)->recordLen, 17);
    const Loaded none(dictionary(QLatin1String(identification), QString()));
    QCOMPARE(none.parser.getRecord(0)->recordLen, 5);
}

void tst_CSProJson::valuePairs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("contentType");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QList<int>>("numbers");

    const QString numeric = QStringLiteral("numeric");
    row("a value", "{ 'labels': [ { 'text': 'Male' } ], 'pairs': [ { 'value': '1' } ] }", numeric,
        QStringList { "1 Male" }, QList<int> { 1 });
    row("a range", "{ 'labels': [ { 'text': 'Age' } ], 'pairs': [ { 'range': [ '0', '95' ] } ] }",
        numeric, QStringList { "0..95 Age" }, QList<int> { 1 });
    row("several pairs",
        "{ 'labels': [ { 'text': 'Other' } ], 'pairs': [ { 'range': [ '1', '7' ] }, "
        "{ 'value': '10' }, { 'value': '99' } ] }, "
        "{ 'labels': [ { 'text': 'Eight' } ], 'pairs': [ { 'value': '8' } ] }",
        numeric, QStringList { "1..7 Other", "10 Other", "99 Other", "8 Eight" },
        QList<int> { 1, 1, 1, 2 });
    row("decimals and signs",
        "{ 'labels': [], 'pairs': [ { 'value': '-9' }, { 'value': '24.0' }, "
        "{ 'range': [ '-90.0', '90.0' ] } ] }",
        numeric, QStringList { "-9 ", "24.0 ", "-90.0..90.0 " }, QList<int> { 1, 1, 1 });
    row("no label", "{ 'labels': [ { 'text': '' } ], 'pairs': [ { 'value': '0' } ] }", numeric,
        QStringList { "0 " }, QList<int> { 1 });
    row("no labels", "{ 'pairs': [ { 'value': '0' } ] }", numeric, QStringList { "0 " },
        QList<int> { 1 });
    row("text with separators",
        "{ 'labels': [ { 'text': 'a;b|c' } ], 'pairs': [ { 'value': 'A B;C' } ] }", "alpha",
        QStringList { "A B;C a;b|c" }, QList<int> { 1 });
}

void tst_CSProJson::valuePairs()
{
    QFETCH(QString, text);
    QFETCH(QString, contentType);
    QFETCH(QStringList, entries);
    QFETCH(QList<int>, numbers);
    const Loaded loaded(values(text, contentType));
    const TCSProValueSet& set = loaded.valueSet("V");
    QCOMPARE(entriesOf(set), entries);
    QList<int> found;
    for (const TValueSetItem* entry : qAsConst(*set.items))
        found.append(
            set.detail(entry).isFurtherCode ? found.last() : found.value(found.size() - 1) + 1);
    QCOMPARE(found, numbers);
    QCOMPARE(set.label, QStringLiteral("Set"));
    QCOMPARE(set.isNumeric, contentType == QLatin1String("numeric"));
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::specials_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("stored");
    row("missing", "MISSING", "99999", 1, "99999");
    row("missing, shorter than the item", "MISSING", "9", 1, "9");
    row("not applicable, a blank", "NOTAPPL", "", 2, "     ");
    row("not applicable, a code", "NOTAPPL", "8", 2, "8");
    row("refused", "REFUSED", "9", 3, "9");
    row("default", "DEFAULT", "7", 4, "7");
    row("default, a blank", "DEFAULT", "", 4, "     ");
    row("missing, a blank", "MISSING", "", 1, "     ");
    row("an unknown word", "ODD", "6", 0, "6");
}

void tst_CSProJson::specials()
{
    QFETCH(QString, word);
    QFETCH(QString, code);
    QFETCH(int, type);
    QFETCH(QString, stored);
    const Loaded loaded(values("{ 'labels': [ { 'text': 'a' } ], 'pairs': [ { 'value': '1' } ] }, "
                               "{ 'labels': [ { 'text': 'b' } ], 'pairs': [ { 'value': '"
        + code + "' } ], 'special': '" + word + "' }"));
    const TValueSetItem& entry = *loaded.valueSet("V").getValueSetItem(1);
    QCOMPARE(entry.type, type);
    QCOMPARE(entry.special, type != 0);
    QCOMPARE(entry.code, stored);
    const TCSProItem& item = loaded.item("A");
    QCOMPARE(item.missingCode, type == 1 ? stored : QString());
    QCOMPARE(item.notApplicableCode, type == 2 ? stored : QString());
    QCOMPARE(item.detail().refusedCode, type == 3 ? stored : QString());
    QCOMPARE(loaded.hasProblem(Kind::UnknownSpecial), type == 0);
    if (type != 0) {
        QCOMPARE(loaded.import.fields->constLast()->maxValue, QStringLiteral("1"));
        QCOMPARE(loaded.parser.problems().size(), 0);
    }
}

void tst_CSProJson::specialsOfData()
{
    const Loaded numbers(
        values("{ 'labels': [], 'pairs': [ { 'value': '' } ], 'special': 'NOTAPPL' }, "
               "{ 'labels': [], 'pairs': [ { 'value': '9' } ], 'special': 'MISSING' }"));
    auto* field = dynamic_cast<TCSProVariable*>(numbers.import.fields->constLast());
    QVERIFY(field);
    field->setAsString(QStringLiteral("     "));
    QVERIFY(field->isNotApplicable());
    field->setAsString(QStringLiteral("00009"));
    QVERIFY(field->isMissing());
    QVERIFY(!field->isNotApplicable());

    const Loaded texts(
        values("{ 'labels': [], 'pairs': [ { 'value': 'NA' } ], 'special': 'NOTAPPL' }", "alpha"));
    field = dynamic_cast<TCSProVariable*>(texts.import.fields->constLast());
    QVERIFY(field);
    field->setAsString(QStringLiteral("NA   "));
    QVERIFY(field->isNotApplicable());
    field->setAsString(QStringLiteral("     "));
    QVERIFY(!field->isNotApplicable());
}

void tst_CSProJson::links()
{
    const QString set = QStringLiteral(", 'valueSets': [ { 'name': '%1', 'labels': [], "
                                       "'link': '7'%2 } ]");
    const Loaded loaded(dictionary(QLatin1String(identification),
        numeric("A", 1,
            set.arg("V",
                ", 'values': [ { 'labels': [], 'pairs': [ { 'value': '1' } ] }, { 'labels': [], "
                "'pairs': [ { 'value': '9' } ], 'special': 'MISSING' } ]"))
            + ", " + numeric("B", 1, set.arg("W", "")) + ", "
            + numeric("C", 1, ", 'valueSets': [ { 'name': 'X', 'labels': [], 'link': '8' } ]")));
    const TCSProValueSet& first = loaded.valueSet("V");
    QCOMPARE(first.link(), QStringLiteral("7"));
    QCOMPARE(loaded.valueSet("W").linkedSet(), &first);
    QCOMPARE(*loaded.valueSet("W").items, *first.items);
    QCOMPARE(loaded.item("B").missingCode, QStringLiteral("9"));
    QCOMPARE(loaded.valueSet("X").linkedSet(), nullptr);
    QCOMPARE(loaded.parser.problems().size(), 1);
    QVERIFY(loaded.hasProblem(Kind::LinkWithoutValues));
}

void tst_CSProJson::notesAndImages()
{
    const Loaded loaded(
        values("{ 'labels': [], 'note': 'a\\nb', 'pairs': [ { 'value': '1' }, { 'value': '2' } ], "
               "'image': '../Images/x.jpg', 'textColor': '#FF0000' }"));
    const TCSProValueSet& valueSet = loaded.valueSet("V");
    QCOMPARE(valueSet.getCount(), 2);
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        const CSProValueDetail detail = valueSet.detail(entry);
        QCOMPARE(detail.note, QStringLiteral("a\nb"));
        QCOMPARE(detail.image, QStringLiteral("../Images/x.jpg"));
        QCOMPARE(detail.textColor, QStringLiteral("#FF0000"));
    }
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::languages()
{
    Loaded loaded(dictionary(QLatin1String(identification),
        "{ 'name': 'A', 'labels': [ { 'text': 'Sexe', 'language': 'FR' }, { 'text': 'Sex', "
        "'language': 'EN' } ], 'contentType': 'numeric', 'length': 1, 'valueSets': [ { "
        "'name': 'V', 'labels': [], 'values': [ { 'labels': [ { 'text': '性', 'language': 'JP' }, "
        "{ 'text': 'Man', 'language': 'EN' } ], 'pairs': [ { 'value': '1' } ] } ] } ] }",
        QStringLiteral("'languages': [ { 'name': 'EN', 'label': 'English' }, { 'name': 'FR', "
                       "'label': 'Français' }, { 'name': 'JP', 'label': '日本語' } ], ")));
    TCSPro& parser = loaded.parser;
    QCOMPARE(parser.languages().size(), 3);
    QCOMPARE(parser.languages().at(1).name, QStringLiteral("FR"));
    QCOMPARE(parser.languages().at(1).label, QStringLiteral("Français"));
    const QString label = loaded.item("A").label;
    const QString valueLabel = loaded.valueSet("V").getValueSetItem(0)->label;
    QCOMPARE(parser.labelText(label), QStringLiteral("Sex"));
    QVERIFY(parser.setLanguage(QStringLiteral("fr")));
    QCOMPARE(parser.labelText(label), QStringLiteral("Sexe"));
    QCOMPARE(parser.labelText(valueLabel), QStringLiteral("Man"));
    QVERIFY(parser.setLanguage(QStringLiteral("JP")));
    QCOMPARE(parser.labelText(label), QStringLiteral("Sex"));
    QCOMPARE(parser.labelText(valueLabel), QStringLiteral("性"));
    QVERIFY(!parser.setLanguage(QStringLiteral("XX")));
    QCOMPARE(parser.problems().size(), 0);
}

void tst_CSProJson::unknownLanguageOfALabel()
{
    const Loaded loaded(dictionary(QLatin1String(identification),
        "{ 'name': 'A', 'labels': [ { 'text': 'Sex', 'language': 'EN' }, { 'text': 'Sexo', "
        "'language': 'ES' } ], 'contentType': 'numeric', 'length': 1 }",
        QStringLiteral("'languages': [ { 'name': 'EN', 'label': 'English' } ], ")));
    QCOMPARE(loaded.parser.labelText(loaded.item("A").label), QStringLiteral("Sex"));
    QVERIFY(!loaded.parser.problems().isEmpty());
}

void tst_CSProJson::relations()
{
    const Loaded loaded(json(
        "{ 'name': 'D', 'levels': [], 'relations': [ { 'name': 'ONE', 'primary': 'A', 'links': [ "
        "{ 'primaryLink': 'A1', 'secondary': 'B', 'secondaryLink': 'B1' }, "
        "{ 'primaryLink': '(occurrence)', 'secondary': 'C', 'secondaryLink': '(occurrence)' }, "
        "{ 'primaryLink': 'A2', 'secondary': 'E', 'secondaryLink': '(occurrence)' } ] }, "
        "{ 'name': 'TWO', 'primary': 'F', 'links': [] } ] }"));
    QStringList texts;
    for (const CSProRelation& relation : loaded.parser.relations()) {
        texts.append(relation.name + ' ' + relation.primary);
        for (const CSProRelationLink& link : relation.links)
            texts.append(link.primaryLink + '/' + link.secondary + '/' + link.secondaryLink);
    }
    QCOMPARE(texts, (QStringList { "ONE A", "A1/B/B1", "/C/", "A2/E/", "TWO F" }));
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::binaryItems()
{
    const Loaded loaded(dictionary(QLatin1String(identification),
        numeric("A", 2)
            + ", { 'name': 'PHOTO', 'labels': [], 'contentType': 'Image', "
              "'length': 1 }, "
            + numeric("B", 2)));
    QCOMPARE(loaded.positions(), (QStringList { "ID@2", "A@6", "PHOTO@8", "B@9" }));
    QCOMPARE(loaded.item("PHOTO").detail().contentType, QStringLiteral("image"));
    QCOMPARE(loaded.item("B").detail().contentType, QString());
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJson::encoding()
{
    const QByteArray bytes =
        json("{ 'name': 'D', 'labels': [ { 'text': 'Âge – возраст' } ], 'levels': [] }");
    for (const QByteArray& mark : { QByteArray(), QByteArray("\xEF\xBB\xBF") }) {
        const Loaded loaded(mark + bytes);
        QCOMPARE(loaded.parser.label, QStringLiteral("Âge – возраст"));
        QCOMPARE(loaded.parser.textEncoding(), QByteArray("UTF-8"));
    }
    // This form is UTF-8 whatever the text form's codec is.
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    TCSPro parser;
    parser.setReading(CSProReading::AsWritten);
    parser.setTextCodec("windows-1252");
    parser.loadFromFile(path);
    QCOMPARE(parser.label, QStringLiteral("Âge – возраст"));
    QCOMPARE(parser.textEncoding(), QByteArray("UTF-8"));
}

void tst_CSProJson::bothFormsAreOneModel()
{
    const Loaded text(fixture("written_household.dcf"), CSProReading::AsWritten);
    const Loaded json(fixture("json_household.dcf"), CSProReading::AsWritten);
    QVERIFY(!text.error);
    QVERIFY(!json.error);
    QCOMPARE(text.parser.getItemsCount(), 26);
    QCOMPARE(text.parser.problems().size(), 0);
    const QStringList textLines = Description(text).lines();
    const QStringList jsonLines = Description(json).lines();
    QVERIFY2(textLines == jsonLines, qPrintable(differences(textLines, jsonLines)));
}

QTEST_GUILESS_MAIN(tst_CSProJson)
#include "tst_CSProJson.moc"
