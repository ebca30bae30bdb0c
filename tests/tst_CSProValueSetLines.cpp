#include "AddRow.h"
#include "CSProTexts.h"
#include "DebugLines.h"
#include "ValueSetEntries.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QLoggingCategory>
#include <QtTest>

#include <algorithm>
#include <stdexcept>

class tst_CSProValueSetLines : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void valueLines_data();
    void valueLines();
    void valueLinesOfNumbers_data();
    void valueLinesOfNumbers();
    void theLastEntryIsNotSplit();
    void processOtherRanges_data();
    void processOtherRanges();
    void entriesAreNewOnes();
    void nameLines_data();
    void nameLines();
    void nameLinesKeepTheCodeOfADroppedSet();
    void specialCodesBelongToTheLastOccurrence();
    void keysOfTheSection_data();
    void keysOfTheSection();
    void debugLines_data();
    void debugLines();
};

void tst_CSProValueSetLines::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

// For an alphanumeric item, whose different codes come out in the reverse of their order.
void tst_CSProValueSetLines::valueLines_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("entries"); // in the order in which they are stored

    row("no line", "", QStringList());
    row("code and label", "Value=1;Yes", QStringList { "1|Yes" });
    row("code alone", "Value=7", QStringList { "7|" });
    row("nothing behind the sign", "Value=", QStringList { "|" });
    row("empty label", "Value=1;", QStringList { "1|" });
    row("capitals", "VALUE=1;Yes", QStringList { "1|Yes" });
    row("any case", "vAlUe=1;Yes", QStringList { "1|Yes" });
    row("indented", "   Value=1;Yes  ", QStringList { "1|Yes" });
    row("blanks inside stay", "Value=1; Yes and no", QStringList { "1| Yes and no" });
    row("blank before the sign: no value line", "Value =1;Yes", QStringList());
    row("text before the key: no value line", "xValue=1;Yes", QStringList());
    row("the key once more belongs to the code", "Value=VALUE=3;x", QStringList { "VALUE=3|x" });
    row("sign in the label", "Value=3;a=b", QStringList { "3|a=b" });
    row("several lines", "Value=1;a\nValue=2;b\nValue=3;c", QStringList { "1|a", "2|b", "3|c" });
    row("lines of other keys between", "Value=1;a\nNote=x\n\nLink=y\nValue=2;b",
        QStringList { "1|a", "2|b" });

    row("quotes go", "Value='A';Alpha", QStringList { "A|Alpha" });
    row("quotes go without a label", "Value='A'", QStringList { "A|" });
    row("quotes around blanks", "Value='A B';x", QStringList { "A B|x" });
    row("quotes with nothing inside", "Value='';x", QStringList { "|x" });
    row("one quote alone", "Value=';x", QStringList { "|x" });
    row("opening quote takes the last character with it", "Value='AB;x", QStringList { "A|x" });
    row("closing quote alone stays", "Value=AB';x", QStringList { "AB'|x" });
    row("quotes inside stay", "Value=A'B'C;x", QStringList { "A'B'C|x" });
    row("only the outer quotes go", "Value=''A'';x", QStringList { "'A'|x" });
    row("double quotes stay", "Value=\"A\";x", QStringList { "\"A\"|x" });
    row("blank before the quotes keeps them", "Value= 'A';x", QStringList { " 'A'|x" });

    row("range with a label", "Value=1:5;Low", QStringList { "1|Low", "5|Low" });
    row("range with an empty label", "Value=1:5;", QStringList { "1|", "5|" });
    row("range without a label keeps the colon", "Value=1:5", QStringList { "1|", ":5|" });
    row("open range without a label", "Value=1:", QStringList { "1|", ":|" });
    row("open range with a label", "Value=1:;x", QStringList { "1|x", "|x" });
    row("colon in the label is no range", "Value=1;a:b", QStringList { "1|a:b" });
    row("second colon belongs to the high bound", "Value=1:2:3;x", QStringList { "1|x", "2:3|x" });
    row("second colon without a label", "Value=1:2:3", QStringList { "1|", ":2:3|" });
    row("range and a colon in the label", "Value=1:5;a:b", QStringList { "1|a:b", "5|a:b" });
    row("quotes of a range stay", "Value='A':'C';x", QStringList { "'A'|x", "'C'|x" });
    row("quotes of a range without a label stay", "Value='A':'C'", QStringList { "'A'|", ":'C'|" });
    row("range before other lines", "Value=1:5;x\nValue=9;y", QStringList { "1|x", "5|x", "9|y" });
    row("range without a label before other lines", "Value=1:5\nValue=9;y",
        QStringList { "1|", ":5|", "9|y" });

    row("second semicolon belongs to the label", "Value=1;a;b", QStringList { "1|a;b" });
    row("second semicolon of a range belongs to the label", "Value=1:5;a;b",
        QStringList { "1|a;b", "5|a;b" });
    row("semicolon at the start is none", "Value=;a", QStringList { ";a|" });
    row("semicolon at the start, another later, is none", "Value=;a;b", QStringList { ";a;b|" });
    row("semicolon at the start of a range", "Value=;1:5", QStringList { ";1|", ":5|" });
    row("colon at the start is none", "Value=:5", QStringList { ":5|" });
    row("colon at the start with a label is none", "Value=:5;x", QStringList { ":5|x" });
    row("colon at the start, another later, is none", "Value=:5:6;x", QStringList { ":5:6|x" });
    row("semicolon alone", "Value=;", QStringList { ";|" });
    row("colon alone", "Value=:", QStringList { ":|" });

    row("two codes on the last line stay one", "Value=1 2;x", QStringList { "1 2|x" });
    row("two codes before another line are two", "Value=1 2;x\nValue=9;y",
        QStringList { "1|x", "2|x", "9|y" });
    row("many codes", "Value=1 2 3 4 5;x\nValue=9;y",
        QStringList { "1|x", "2|x", "3|x", "4|x", "5|x", "9|y" });
    row("two codes without a label", "Value=1 2\nValue=9;y", QStringList { "1|", "2|", "9|y" });
    row("two blanks make an empty code", "Value=1  2;x\nValue=9;y",
        QStringList { "1|x", "|x", "2|x", "9|y" });
    row("blank before the code makes an empty code", "Value= 1;x\nValue=9;y",
        QStringList { "|x", "1|x", "9|y" });
    row("blank behind the code makes an empty code", "Value=1 ;x\nValue=9;y",
        QStringList { "1|x", "|x", "9|y" });
    row("blank before the code stays on the last line", "Value= 1;x", QStringList { " 1|x" });
    row("tab is no blank", "Value=1\t2;x\nValue=9;y", QStringList { "1\t2|x", "9|y" });
    row("pieces are trimmed", "Value=1 \t2;x\nValue=9;y", QStringList { "1|x", "2|x", "9|y" });
    row("quotes around two codes", "Value='A' 'B';x\nValue=9;y",
        QStringList { "A'|x", "'B|x", "9|y" });
    row("quoted code with a blank is split", "Value='A B';x\nValue=9;y",
        QStringList { "A|x", "B|x", "9|y" });

    row("codes before a range", "Value=1 3 5:9;x", QStringList { "1|x", "3|x", "5|x", "9|x" });
    row("two blanks before a range", "Value=1  5:9;x", QStringList { "1|x", "|x", "5|x", "9|x" });
    row("blank before a range", "Value= 5:9;x", QStringList { "|x", "5|x", "9|x" });
    row("blank before the colon", "Value=5 :9;x", QStringList { "5|x", "|x", "9|x" });
    row("low bounds are not trimmed", "Value=1 \t5:9;x", QStringList { "1|x", "\t5|x", "9|x" });
    row("codes before a range without a label stay one", "Value=1 3 5:9",
        QStringList { "1 3 5|", ":9|" });
    row("codes behind a range stay one on the last line", "Value=1:5 7;x",
        QStringList { "1|x", "5 7|x" });
    row("codes behind a range before another line", "Value=1:5 7;x\nValue=9;y",
        QStringList { "1|x", "5|x", "7|x", "9|y" });
    row("codes behind a range without a label", "Value=1:5 7\nValue=9;y",
        QStringList { "1|", ":5|", "7|", "9|y" });
    row("range behind a range stays one entry", "Value=1:2 4:5;x\nValue=9;y",
        QStringList { "1|x", "2|x", "4:5|x", "9|y" });
}

void tst_CSProValueSetLines::valueLines()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, entries);
    TCSPro parser;
    parse(parser, dictionary("Alpha", lines));
    QVERIFY(parser.lastItem->getHasValueSet());
    const TCSProValueSet* set = parser.lastItem->getValueSet(0);
    QCOMPARE(set->isNumeric, false);
    std::reverse(entries.begin(), entries.end());
    QCOMPARE(entriesOf(*set), entries);
    for (const TValueSetItem* entry : qAsConst(*set->items)) {
        QCOMPARE(entry->type, 0);
        QCOMPARE(entry->special, false);
    }
    QCOMPARE(parser.lastItem->missingCode, QString());
    QCOMPARE(parser.lastItem->notApplicableCode, QString());
}

void tst_CSProValueSetLines::valueLinesOfNumbers_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("entries"); // "none": the set was dropped

    row("in order", "Value=1;a\nValue=2;b\nValue=9;c", QStringList { "1|a", "2|b", "9|c" });
    row("sorted by number", "Value=10;a\nValue=9;b\nValue=-1;c",
        QStringList { "-1|c", "9|b", "10|a" });
    row("range among codes", "Value=20:30;a\nValue=25;b", QStringList { "20|a", "25|b", "30|a" });
    row("quoted numbers", "Value='2';a\nValue='1';b", QStringList { "1|b", "2|a" });
    row("codes stay as written", "Value=007;a\nValue=+3;b", QStringList { "+3|b", "007|a" });
    row("blank before the last code", "Value=1;a\nValue= 0;b", QStringList { " 0|b", "1|a" });
    row("no value line at all", "", QStringList());
    row("one code is no number", "Value=1;a\nValue=X;b", QStringList { "none" });
    row("empty code", "Value=1;a\nValue=", QStringList { "none" });
    row("range without a label", "Value=1:5\nValue=9;c", QStringList { "none" });
    row("open range", "Value=1:;a", QStringList { "none" });
    row("two codes on the last line", "Value=1;a\nValue=2 3;b", QStringList { "none" });
    row("two codes before another line", "Value=2 3;b\nValue=1;a",
        QStringList { "1|a", "2|b", "3|b" });
    row("range in a list", "Value=1:2 4:5;x\nValue=9;y", QStringList { "none" });
    row("blank before a code that is not the last", "Value= 1;x\nValue=9;y",
        QStringList { "none" });
    row("too large a code", "Value=1;a\nValue=99999999999;b", QStringList { "none" });
    row("negative decimal", "Value=-1.5;a", QStringList { "none" });
    row("special code that is no number is not looked at",
        "Value=1;a\nValue=X;b\nName=MISSING ,Special", QStringList { "1|a" });
}

void tst_CSProValueSetLines::valueLinesOfNumbers()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, entries);
    TCSPro parser;
    parser.setDecimalQuestion(
        [](const CSProProblem&) -> int { throw std::logic_error("nothing to ask about"); });
    parse(parser, dictionary("Numeric", lines));
    QCOMPARE(entriesOf(parser), entries);
    QCOMPARE(parser.decimalAnswer, 0);
    QCOMPARE(parser.decimalButton, 0);
    if (parser.lastItem->getHasValueSet())
        QCOMPARE(parser.lastItem->getValueSet(0)->isNumeric, true);
}

void tst_CSProValueSetLines::theLastEntryIsNotSplit()
{
    TCSPro parser;
    parse(parser, dictionary("Alpha", "Value=1 2;x\nValue=3 4;y"));
    QCOMPARE(entriesOf(parser), (QStringList { "3 4|y", "2|x", "1|x" }));
}

void tst_CSProValueSetLines::processOtherRanges_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QStringList>("codes");

    row("two codes", "1 2", QStringList { "1", "2" });
    row("codes and a range", "1 3:5 7", QStringList { "1", "3:5", "7" });
    row("one code", "1", QStringList { "1" });
    row("nothing", "", QStringList { "" });
    row("blanks only", "  ", QStringList { "", "", "" });
    row("tabs and line ends are trimmed", "1 \t2\t \n3", QStringList { "1", "2", "3" });
    row("quotes stay", "'A' 'B'", QStringList { "'A'", "'B'" });
}

void tst_CSProValueSetLines::processOtherRanges()
{
    QFETCH(QString, code);
    QFETCH(QStringList, codes);
    TCSPro parser;
    OwnedValueSet set({ "0" });
    TValueSetItem entry;
    entry.code = code;
    entry.label = QStringLiteral("label");
    entry.type = 1;
    entry.special = true;
    parser.processOtherRanges(&set, &entry);
    QCOMPARE(codesOf(set), QStringList { "0" } + codes);
    for (int i = 1; i < set.getCount(); ++i) {
        TValueSetItem* added = set.getValueSetItem(i);
        QVERIFY(added != &entry);
        QCOMPARE(added->label, QString("label"));
        QCOMPARE(added->type, 0);
        QCOMPARE(added->special, false);
        added->setParent(&set);
    }
    QCOMPARE(entry.code, code);
}

void tst_CSProValueSetLines::entriesAreNewOnes()
{
    TCSPro parser;
    parse(parser, dictionary("Numeric", "Value=1:5;x\nValue=7;y"));
    const TCSProValueSet* set = parser.lastItem->getValueSet(0);
    QCOMPARE(set->getCount(), 3);
    QVERIFY(set->getValueSetItem(0) != set->getValueSetItem(1));
    QVERIFY(set->getValueSetItem(1) != set->getValueSetItem(2));
}

void tst_CSProValueSetLines::nameLines_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("notApplicable");

    const QStringList kept { "1|a", "9|b" };
    const QStringList left { "1|a" };
    const auto behind9 = [](const char* nameLines) -> QString {
        return QStringLiteral("Value=1;a\nValue=9;b\n") + QLatin1String(nameLines);
    };
    row("missing", behind9("Name=MISSING ,Special"), left, "9", "");
    row("not applicable", behind9("Name=NOTAPPL ,Special"), left, "", "9");
    row("any case", behind9("nAmE=missing ,SPECIAL"), left, "9", "");
    row("not applicable in any case", behind9("NAME=NotAppl ,special"), left, "", "9");
    row("no character before the comma", behind9("Name=MISSING,Special"), kept, "", "");
    row("not applicable, no character before the comma", behind9("Name=NOTAPPL,Special"), kept, "",
        "");
    row("any character before the comma", behind9("Name=MISSINGx,Special"), left, "9", "");
    row("two characters before the comma", behind9("Name=MISSING  ,Special"), kept, "", "");
    row("another word behind the comma", behind9("Name=MISSING ,x"), left, "9", "");
    row("nothing behind the comma", behind9("Name=NOTAPPL ,"), left, "", "9");
    row("another name is never special", behind9("Name=DEFAULT ,Special"), kept, "", "");
    row("refused is never special", behind9("Name=REFUSED ,Special"), kept, "", "");
    row("no comma", behind9("Name=MISSING"), kept, "", "");
    row("no comma, blank behind", behind9("Name=MISSING Special"), kept, "", "");
    row("comma first", behind9("Name=,Special"), kept, "", "");
    row("one character before the comma", behind9("Name=M,Special"), kept, "", "");
    row("blank before the name", behind9("Name= MISSING ,Special"), kept, "", "");
    row("blank before the sign: no name line", behind9("Name =MISSING ,Special"), kept, "", "");
    row("second comma", behind9("Name=MISSING ,Special,x"), left, "9", "");
    row("indented", behind9("   Name=MISSING ,Special  "), left, "9", "");
    row("line of another key between", behind9("Note=x\nName=MISSING ,Special"), left, "9", "");
    row("another name behind does not undo it", behind9("Name=MISSING ,Special\nName=OTHER ,x"),
        left, "9", "");
    row("a name without a comma behind does not undo it",
        behind9("Name=MISSING ,Special\nName=OTHER"), left, "9", "");
    row("both names", behind9("Name=MISSING ,Special\nName=NOTAPPL ,Special"), left, "9", "9");
    row("two special codes",
        "Value=8;x\nName=NOTAPPL ,Special\nValue=1;a\nValue=9;b\nName=MISSING ,Special", left, "9",
        "8");
    row("the later missing code counts",
        "Value=8;x\nName=MISSING ,Special\nValue=1;a\nValue=9;b\nName=MISSING ,Special", left, "9",
        "");
    row("before the first value", "Name=MISSING ,Special\nValue=1;a\nValue=9;b", kept, "", "");
    row("special code first", "Value=9;x\nName=MISSING ,Special\nValue=1;a", left, "9", "");
    row("several codes", "Value=1;a\nValue=8 9;b\nName=MISSING ,Special", left, "8 9", "");
    row("several codes before another value", "Value=8 9;b\nName=MISSING ,Special\nValue=1;a", left,
        "8 9", "");
    row("range: the low bound was stored before", "Value=1:9;a\nName=MISSING ,Special", left, "9",
        "");
    row("quoted code", "Value=1;a\nValue=' 9';b\nName=MISSING ,Special", left, " 9", "");
    row("only special codes", "Value=9;x\nName=MISSING ,Special", QStringList(), "9", "");
    row("empty special code", "Value=1;a\nValue=\nName=MISSING ,Special", left, "", "");
}

void tst_CSProValueSetLines::nameLines()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, entries);
    QFETCH(QString, missing);
    QFETCH(QString, notApplicable);
    TCSPro parser;
    parse(parser, dictionary("Numeric", lines));
    QCOMPARE(entriesOf(parser), entries);
    QCOMPARE(parser.lastItem->missingCode, missing);
    QCOMPARE(parser.lastItem->notApplicableCode, notApplicable);
    for (const TValueSetItem* entry : qAsConst(*parser.lastItem->getValueSet(0)->items)) {
        QCOMPARE(entry->special, false);
        QCOMPARE(entry->type, 0);
    }
}

void tst_CSProValueSetLines::nameLinesKeepTheCodeOfADroppedSet()
{
    TCSPro parser;
    parse(parser, dictionary("Numeric", "Value=X;a\nValue=9;b\nName=MISSING ,Special"));
    QVERIFY(!parser.lastItem->getHasValueSet());
    QCOMPARE(parser.lastItem->missingCode, QString("9"));
}

void tst_CSProValueSetLines::specialCodesBelongToTheLastOccurrence()
{
    TCSPro parser;
    parse(parser,
        "[Item]\nName=X\n[Item]\nName=A\nOccurrences=3\n[ValueSet]\nValue=1;a\nValue=9;b\n"
        "Name=MISSING ,Special\nValue=8;c\nName=NOTAPPL ,Special");
    QCOMPARE(parser.getItemsCount(), 4);
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(parser.getItem(i)->missingCode, QString(i == 3 ? "9" : ""));
        QCOMPARE(parser.getItem(i)->notApplicableCode, QString(i == 3 ? "8" : ""));
    }
}

void tst_CSProValueSetLines::keysOfTheSection_data()
{
    QTest::addColumn<QString>("body");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("name");

    row("both keys", "Label=The codes\nName=V\nValue=1;x", "The codes", "V");
    row("no key", "Value=1;x", "", "");
    row("behind the values", "Value=1;x\nLabel=L\nName=V", "L", "V");
    row("label with a sign", "Label=a=b\nName=V\nValue=1;x", "", "V");
    row("a word in a value answers for its key", "Value=1;Name and Label\nName=V\nLabel=L",
        "1;Name and Label", "1;Name and Label");
    row("other case is no key", "LABEL=L\nNAME=V\nValue=1;x", "", "");
}

void tst_CSProValueSetLines::keysOfTheSection()
{
    QFETCH(QString, body);
    QFETCH(QString, label);
    QFETCH(QString, name);
    TCSPro parser;
    parse(parser, QStringLiteral("[Item]\nName=A\n[ValueSet]\n") + body);
    QVERIFY(parser.lastItem->getHasValueSet());
    const TCSProValueSet* set = parser.lastItem->getValueSet(0);
    QCOMPARE(set->label, label);
    QCOMPARE(set->name, name);
    QCOMPARE(set->reservedText, QString());
    QCOMPARE(set->getCount(), 1);
    QCOMPARE(set->getValueSetItem(0)->code, QString("1"));
}

void tst_CSProValueSetLines::debugLines_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("log");

    row("code and label", "Value=1;Yes", QStringList { "4. myValueSetItem->name \"Yes\"" });
    row("code alone", "Value=1", QStringList { "4. myValueSetItem->name \"\"" });
    row("range with a label", "Value=1:5;Low",
        QStringList { "1. myValueSetItemMin->name \"Low\"", "4. myValueSetItem->name \"Low\"" });
    row("codes before a range", "Value=1 3 5:9;x",
        QStringList { "2. myValueSetItemMin->name \"x\"", "2. myValueSetItemMin->name \"x\"",
            "1. myValueSetItemMin->name \"x\"", "4. myValueSetItem->name \"x\"" });
    row("range without a label", "Value=1:5",
        QStringList { "3. myValueSetItemMin->name \"\"", "4. myValueSetItem->name \"\"" });
    row("several codes before another line", "Value=1 2;x\nValue=3;y",
        QStringList { "4. myValueSetItem->name \"x\"", "PROCESAR OTROS RANGOS",
            "4. myValueSetItem->name \"y\"" });
    row("several codes on the last line", "Value=1 2;x",
        QStringList { "4. myValueSetItem->name \"x\"" });
    row("missing", "Value=9;x\nName=MISSING ,Special",
        QStringList { "4. myValueSetItem->name \"x\"", "5. myValueSetItem->special  true",
            "5. myValueSetItem->type  1" });
    row("not applicable", "Value=9;x\nName=NOTAPPL ,Special",
        QStringList { "4. myValueSetItem->name \"x\"", "5. myValueSetItem->special  true",
            "5. myValueSetItem->type  2" });
    row("another name", "Value=9;x\nName=DEFAULT ,Special",
        QStringList { "4. myValueSetItem->name \"x\"", "5. myValueSetItem->special  false",
            "5. myValueSetItem->type  0" });
    row("another name behind a special one", "Value=9;x\nName=MISSING ,Special\nName=OTHER ,y",
        QStringList { "4. myValueSetItem->name \"x\"", "5. myValueSetItem->special  true",
            "5. myValueSetItem->type  1", "5. myValueSetItem->special  true",
            "5. myValueSetItem->type  0" });
    row("name before the first value", "Name=MISSING ,Special", QStringList());
}

void tst_CSProValueSetLines::debugLines()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, log);
    TCSPro parser;
    QStringList records;
    {
        const DebugOn debugOn;
        const DebugLines debugLines;
        parse(parser, dictionary("Alpha", lines));
        records = debugLines.lines();
    }
    QCOMPARE(records, log);
}

QTEST_MAIN(tst_CSProValueSetLines)

#include "tst_CSProValueSetLines.moc"
