// Dictionaries in the JSON form of CSPro 8 and later.
#include "AddRow.h"
#include "JsonDictionaries.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QLoggingCategory>
#include <QtTest>

class tst_CSProJsonProblems : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void missingMembers_data();
    void missingMembers();
    void emptyArrays_data();
    void emptyArrays();
    void wrongTypes_data();
    void wrongTypes();
    void wrongPairs_data();
    void wrongPairs();
    void unknownMembers_data();
    void unknownMembers();
    void invalidJson_data();
    void invalidJson();
    void tooManyItems();

    void largeNumbers_data();
    void largeNumbers();
};

void tst_CSProJsonProblems::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProJsonProblems::missingMembers_data()
{
    QTest::addColumn<QString>("levels");
    QTest::addColumn<QStringList>("items");
    row("no members of levels", ", 'levels': []", QStringList());
    row("a level without members", ", 'levels': [ { } ]", QStringList());
    row("a level without ids",
        ", 'levels': [ { 'name': 'L', 'records': [ { 'name': 'R', 'items': [ " + numeric("A", 1)
            + " ] } ] } ]",
        QStringList { "A@1" });
    row("a level without records",
        ", 'levels': [ { 'name': 'L', 'ids': { 'items': [ " + numeric("A", 1, ", 'start': 1")
            + " ] } } ]",
        QStringList { "A@1" });
    row("a record without members", ", 'levels': [ { 'name': 'L', 'records': [ { } ] } ]",
        QStringList());
    row("a value set without members",
        ", 'levels': [ { 'name': 'L', 'records': [ { 'name': 'R', 'items': [ "
            + numeric("A", 1, ", 'valueSets': [ { } ]") + " ] } ] } ]",
        QStringList { "A@1" });
    row("a relation without members", ", 'levels': [], 'relations': [ { } ]", QStringList());
    row("a language without members", ", 'levels': [], 'languages': [ { } ]", QStringList());
}

void tst_CSProJsonProblems::missingMembers()
{
    QFETCH(QString, levels);
    QFETCH(QStringList, items);
    const Loaded loaded(json("{ 'name': 'D'" + levels + " }"));
    QVERIFY(!loaded.error);
    QCOMPARE(loaded.parser.name, QStringLiteral("D"));
    QCOMPARE(loaded.positions(), items);
    for (const TCSProRecord* record : qAsConst(*loaded.parser.records)) {
        QCOMPARE(record->maxRecords, 1);
        QCOMPARE(record->required, QStringLiteral("Yes"));
    }
    QCOMPARE(loaded.wrongTypes(), QStringList());
}

void tst_CSProJsonProblems::emptyArrays_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("items");
    row("everything",
        "{ 'name': 'D', 'aliases': [], 'labels': [], 'languages': [], 'levels': [], "
        "'relations': [] }",
        QStringList());
    row("the level",
        "{ 'name': 'D', 'levels': [ { 'name': 'L', 'labels': [], "
        "'ids': { 'items': [] }, 'records': [] } ] }",
        QStringList());
    row("the record",
        "{ 'name': 'D', 'levels': [ { 'name': 'L', 'ids': { 'items': [] }, "
        "'records': [ { 'name': 'R', 'labels': [], 'items': [] } ] } ] }",
        QStringList());
    row("the item",
        "{ 'name': 'D', 'levels': [ { 'name': 'L', 'ids': { 'items': [] }, 'records': [ { "
        "'name': 'R', 'items': [ "
            + numeric("A", 1, ", 'valueSets': []") + ", "
            + numeric("B", 1, ", 'valueSets': [ { 'name': 'V', 'values': [] } ]") + ", "
            + numeric("C", 1, ", 'occurrences': { 'maximum': 2, 'labels': [] }") + " ] } ] } ] }",
        QStringList { "A@1", "B@2", "C_1@3", "C_2@4" });
}

void tst_CSProJsonProblems::emptyArrays()
{
    QFETCH(QString, text);
    QFETCH(QStringList, items);
    const Loaded loaded(json(text));
    QVERIFY(!loaded.error);
    QCOMPARE(loaded.positions(), items);
    QCOMPARE(loaded.parser.problems().size(), 0);
}

void tst_CSProJsonProblems::wrongTypes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("path");

    const QString id = QLatin1String(identification);
    const auto inRoot = [&](const char* name, const char* member, const char* path) {
        row(name,
            json(QStringLiteral("{ 'name': 'D', ") + QLatin1String(member)
                + (QString(member).startsWith(QLatin1String("'levels'")) ? " }"
                                                                         : ", 'levels': [] }")),
            QString(path));
    };
    inRoot("the name", "'note': 7", "note");
    inRoot("the version", "'version': '8.0'", "version");
    inRoot("the labels", "'labels': 'Survey'", "labels");
    inRoot("a label", "'labels': [ 'Survey' ]", "labels");
    inRoot("a label's text", "'labels': [ { 'text': 1 } ]", "text");
    inRoot("the languages", "'languages': { 'EN': 'English' }", "languages");
    inRoot("the record type", "'recordType': 1", "recordType");
    inRoot("the record type's start", "'recordType': { 'start': '1', 'length': 0 }", "start");
    inRoot("the defaults", "'defaults': []", "defaults");
    inRoot("a default", "'defaults': { 'zeroFill': 1 }", "zeroFill");
    inRoot("the positions", "'relativePositions': 'yes'", "relativePositions");
    inRoot("a level", "'levels': [ 1 ]", "levels");
    inRoot("null", "'languages': null", "languages");
    inRoot("the ids", "'levels': [ { 'name': 'L', 'ids': [] } ]", "L/ids");
    inRoot("the records", "'levels': [ { 'name': 'L', 'records': 1 } ]", "L/records");
    inRoot("the relations", "'relations': 'all'", "relations");
    inRoot("a relation's links", "'relations': [ { 'name': 'X', 'links': { } } ]", "X/links");
    inRoot("a record's type",
        "'levels': [ { 'name': 'L', 'records': [ { 'name': 'R', 'recordType': 1 } ] } ]",
        "L/R/recordType");

    const auto inItem = [&](const char* name, const char* member, const char* path) {
        row(name,
            dictionary(id,
                QStringLiteral("{ 'name': 'A', 'contentType': 'numeric', 'length': 1, ")
                    + QLatin1String(member) + " }"),
            QString(path));
    };
    inItem("the length", "'length': '1'", "L/R/A/length");
    inItem("a fraction", "'start': 1.5", "L/R/A/start");
    inItem("a huge number", "'start': 1e12", "L/R/A/start");
    inItem("the decimals", "'decimals': true", "L/R/A/decimals");
    inItem("the decimal mark", "'decimalMark': 'No'", "L/R/A/decimalMark");
    inItem("the zero fill", "'zeroFill': 0", "L/R/A/zeroFill");
    inItem("the subitem", "'subitem': 'yes'", "L/R/A/subitem");
    inItem("the occurrences", "'occurrences': 3", "L/R/A/occurrences");
    inItem("the maximum", "'occurrences': { 'maximum': '3' }", "L/R/A/maximum");
    inItem("an occurrence's number",
        "'occurrences': { 'maximum': 2, 'labels': [ { 'occurrence': 0, 'labels': [] } ] }",
        "L/R/A/occurrence");
    inItem("the value sets", "'valueSets': { }", "L/R/A/valueSets");
    inItem("a value set", "'valueSets': [ 'V' ]", "L/R/A/valueSets");
    inItem("a link", "'valueSets': [ { 'name': 'V', 'link': 1 } ]", "L/R/A/V/link");
    inItem("the values", "'valueSets': [ { 'name': 'V', 'values': { } } ]", "L/R/A/V/values");
    inItem("a value", "'valueSets': [ { 'name': 'V', 'values': [ '1' ] } ]", "L/R/A/V/values");
    inItem("the pairs", "'valueSets': [ { 'name': 'V', 'values': [ { 'pairs': '1' } ] } ]",
        "L/R/A/V/pairs");
    inItem("a special",
        "'valueSets': [ { 'name': 'V', 'values': [ { 'pairs': [ { 'value': '1' } ], 'special': "
        "true } ] } ]",
        "L/R/A/V/special");
    row("an item", dictionary(id, "'A'"), "L/R/items");
}

void tst_CSProJsonProblems::wrongTypes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, path);
    const Loaded loaded(bytes);
    QVERIFY(!loaded.error);
    QCOMPARE(loaded.parser.name, QStringLiteral("D"));
    QCOMPARE(loaded.wrongTypes(), QStringList { path });
}

void tst_CSProJsonProblems::wrongPairs_data()
{
    QTest::addColumn<QString>("pair");
    row("a number", "{ 'value': 5 }");
    row("null", "{ 'value': null }");
    row("nothing", "{ }");
    row("a range of one", "{ 'range': [ '1' ] }");
    row("a range of three", "{ 'range': [ '1', '2', '3' ] }");
    row("a range of nothing", "{ 'range': [] }");
    row("a range of numbers", "{ 'range': [ 1, 7 ] }");
    row("a range that is a text", "{ 'range': '1:7' }");
    row("a text", "'5'");
    row("none", "");
}

void tst_CSProJsonProblems::wrongPairs()
{
    QFETCH(QString, pair);
    const Loaded loaded(values("{ 'labels': [], 'pairs': [ " + pair
        + " ] }, { 'labels': [], 'pairs': [ { 'value': '9' } ] }"));
    QVERIFY(!loaded.error);
    QCOMPARE(loaded.valueSet("V").items->constLast()->code, QStringLiteral("9"));
    QVERIFY(!loaded.parser.problems().isEmpty());
}

void tst_CSProJsonProblems::unknownMembers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("key");
    const QString id = QLatin1String(identification);
    row("of the root", json("{ 'name': 'D', 'colour': 1, 'levels': [] }"), "colour");
    row("of a level", json("{ 'name': 'D', 'levels': [ { 'name': 'L', 'height': 1 } ] }"),
        "height");
    row("of a record",
        json("{ 'name': 'D', 'levels': [ { 'name': 'L', 'records': [ { 'name': 'R', "
             "'speed': 1 } ] } ] }"),
        "speed");
    row("of an item", dictionary(id, numeric("A", 1, ", 'Start': 9")), "Start");
    row("of a value set",
        dictionary(id, numeric("A", 1, ", 'valueSets': [ { 'name': 'V', 'kind': 1 } ]")), "kind");
    row("of a value", values("{ 'labels': [], 'pairs': [ { 'value': '1' } ], 'shape': 'round' }"),
        "shape");
    row("of a pair", values("{ 'labels': [], 'pairs': [ { 'value': '1', 'to': '2' } ] }"), "to");
    row("of a relation",
        json("{ 'name': 'D', 'levels': [], 'relations': [ { 'name': 'X', 'kind': 1 } ] }"), "kind");
}

void tst_CSProJsonProblems::unknownMembers()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, key);
    const Loaded loaded(bytes);
    QVERIFY(!loaded.error);
    QCOMPARE(loaded.parser.problems().size(), 1);
    QCOMPARE(loaded.parser.problems().at(0).kind, Kind::UnknownKey);
    QCOMPARE(loaded.parser.problems().at(0).text, key);
}

void tst_CSProJsonProblems::invalidJson_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("line");
    row("a brace", QByteArray("{"), 1);
    row("a brace on the third line", QByteArray("\n\n{"), 3);
    row("a name without a value", QByteArray("{\n  \"name\"\n}"), 3);
    row("a comma too many", QByteArray("{\n  \"name\": \"D\",\n}"), 3);
    row("no comma", QByteArray("{\n  \"name\": \"D\"\n  \"note\": \"\"\n}"), 3);
    row("an unclosed text", QByteArray("{\n\n  \"name\": \"D\n}"), 4);
    row("an unclosed array", QByteArray("{ \"levels\": [\n{ }\n"), 3);
    row("apostrophes", QByteArray("{ 'name': 'D' }"), 1);
    row("something behind", QByteArray("{ }\n{ }"), 2);
    row("no UTF-8", QByteArray("{\n  \"name\": \"\xE9\"\n}"), 2);
    row("a byte-order mark and a brace", QByteArray("\xEF\xBB\xBF\n{"), 2);
    row("deep nesting",
        QByteArray("{ \"levels\":\n") + QByteArray(5000, '[') + QByteArray(5000, ']') + "}", 2);
    row("deeper nesting than is closed", QByteArray("{ \"levels\": ") + QByteArray(100000, '['), 1);
    row("nested objects", QByteArray("{\"a\":").repeated(100000), 1);
    row("no dictionary", QByteArray("{\n  \"name\": \"D\"\n}"), 0);
    row("nothing in it", QByteArray("{ }"), 0);
    row("levels that are no array", QByteArray("{ \"levels\": { } }"), 0);
    row("levels that are null", QByteArray("{ \"levels\": null }"), 0);
}

void tst_CSProJsonProblems::invalidJson()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, line);
    const Loaded loaded(bytes);
    QVERIFY(loaded.error);
    QCOMPARE(loaded.error->code, 242);
    QCOMPARE(loaded.parser.problems().size(), 1);
    const CSProProblem& problem = loaded.parser.problems().at(0);
    QCOMPARE(problem.kind, Kind::InvalidJson);
    QVERIFY(!problem.text.isEmpty());
    QCOMPARE(problem.line, line);
    QCOMPARE(loaded.parser.getItemsCount(), 0);
}

void tst_CSProJsonProblems::tooManyItems()
{
    const Loaded loaded(dictionary(QLatin1String(identification),
        numeric("A", 1, ", 'occurrences': { 'maximum': 2000000000 }") + ", " + numeric("B", 1)));
    QVERIFY(loaded.error);
    QCOMPARE(loaded.error->code, 242);
    QVERIFY(loaded.hasProblem(Kind::TooManyItems));
    QCOMPARE(loaded.parser.getItemsCount(), 1);
}

void tst_CSProJsonProblems::largeNumbers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    for (const char* number : { "2147483647", "-2147483648" }) {
        const QString value = QLatin1String(number);
        const auto add = [&](const char* name, const QByteArray& bytes) {
            QTest::newRow(qPrintable(QLatin1String(name) + ' ' + value)) << bytes;
        };
        add("an item's length",
            dictionary(QLatin1String(identification),
                "{ 'name': 'A', 'contentType': 'numeric', 'length': " + value + " }, "
                    + numeric("B", 1)));
        add("an item's start and length",
            dictionary(QLatin1String(identification),
                "{ 'name': 'A', 'contentType': 'numeric', 'start': " + value
                    + ", 'length': " + value + " }, "
                    + numeric("B", 1, ", 'subitem': true, 'subitemOffset': " + value)));
        add("an item's decimals",
            dictionary(QLatin1String(identification),
                numeric("A", 5, ", 'decimals': " + value) + ", "
                    + numeric("B", 1, ", 'occurrences': { 'maximum': 2 }, 'start': " + value)));
        add("an id's length",
            dictionary("{ 'name': 'ID', 'contentType': 'numeric', 'start': " + value
                    + ", 'length': " + value + " }",
                numeric("A", 1)));
        add("the record type",
            json("{ 'name': 'D', 'recordType': { 'start': " + value + ", 'length': " + value
                + " }, 'levels': [ { 'name': 'L', 'records': [ { 'name': 'R', 'items': [ "
                + numeric("A", 1) + " ] } ] } ] }"));
        add("an alpha special's width",
            dictionary(QLatin1String(identification),
                "{ 'name': 'A', 'contentType': 'alpha', 'length': " + value
                    + ", 'valueSets': [ { 'name': 'V', 'values': [ { 'pairs': [ { 'value': '' } ], "
                      "'special': 'NOTAPPL' } ] } ] }"));
    }
}

void tst_CSProJsonProblems::largeNumbers()
{
    QFETCH(QByteArray, bytes);
    const Loaded loaded(bytes);
    QVERIFY(!loaded.error);
    QVERIFY(!loaded.parser.items->isEmpty());
    QCOMPARE(loaded.parser.name, QStringLiteral("D"));
}

QTEST_GUILESS_MAIN(tst_CSProJsonProblems)
#include "tst_CSProJsonProblems.moc"
