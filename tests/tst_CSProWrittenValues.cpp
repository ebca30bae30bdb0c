// Values of CSPro dictionaries as they are written, and what fields take from them.
#include "CSProDictionaries.h"

#include <QLoggingCategory>

namespace {

const CSProValueDetail& detail(const TCSProValueSet& valueSet, int index)
{
    return valueSet.detail(valueSet.getValueSetItem(index));
}

} // namespace

class tst_CSProWrittenValues : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void numericValues_data();
    void numericValues();
    void textValues_data();
    void textValues();
    void ranges();
    void furtherCodesOfAValue();
    void specialWords_data();
    void specialWords();
    void specialsStayOutOfRanges();
    void specialsOfOccurrences_data();
    void specialsOfOccurrences();
    void firstSpecialCodeCounts();
    void codesInTheData_data();
    void codesInTheData();
    void allValueSetsOfOccurrences();
    void decimalCodes_data();
    void decimalCodes();
    void keptValueSets();
    void links();
    void linkIsToTheFirstSetWithValues();
    void details();
};

void tst_CSProWrittenValues::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProWrittenValues::numericValues_data()
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

void tst_CSProWrittenValues::numericValues()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, codes);
    QFETCH(QStringList, labels);
    const Model model(Reading::AsWritten, values(lines, QStringLiteral("Decimal=1\n")));
    QCOMPARE(codesOf(model.item("A")), codes);
    QCOMPARE(labelsOf(model.item("A")), labels);
    QCOMPARE(problemsOf(model.parser), QStringList());
    QCOMPARE(model.questions, 0);
}

void tst_CSProWrittenValues::textValues_data()
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

void tst_CSProWrittenValues::textValues()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, codes);
    QFETCH(QStringList, labels);
    const Model model(Reading::AsWritten, ::textValues(lines));
    QCOMPARE(codesOf(model.item("A")), codes);
    QCOMPARE(labelsOf(model.item("A")), labels);
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProWrittenValues::ranges()
{
    const Model model(
        Reading::AsWritten, values("Value=10:20;a\nValue=5;b\nValue=-3:2;c\nValue=7:7;d"));
    const TCSProValueSet& set = *model.item("A").valueSets->at(0);
    QCOMPARE(set.getCount(), 4);
    QCOMPARE(set.getValueSetItem(0)->code, QStringLiteral("10"));
    QCOMPARE(detail(set, 0).highCode, QStringLiteral("20"));
    QVERIFY(detail(set, 1).highCode.isNull());
    QCOMPARE(detail(set, 3).highCode, QStringLiteral("7"));
    const TCSProVariable& field = model.variable("A");
    QCOMPARE(field.minValue, QStringLiteral("-3"));
    QCOMPARE(field.maxValue, QStringLiteral("20"));
    QCOMPARE(field.valueLabels, QStringLiteral("10:20 a\t5 b\t-3:2 c\t7:7 d\t"));
}

void tst_CSProWrittenValues::furtherCodesOfAValue()
{
    const Model model(
        Reading::AsWritten, values("Value=1:7 10 11;Other\nValue=8;Eight\nValue=9;Nine"));
    const TCSProValueSet& set = *model.item("A").valueSets->at(0);
    QVector<bool> further;
    for (int i = 0; i < set.getCount(); ++i)
        further.append(detail(set, i).isFurtherCode);
    QCOMPARE(further, (QVector<bool> { false, true, true, false, false }));

    const Model plain(Reading::AsWritten, values("Value=1;a\nValue=2;b\n"));
    QVERIFY(!plain.item("A").valueSets->at(0)->hasDetails());
    const Model established(Reading::Established, values("Value=1:7 8;a\nImage=x\nValue=2;b\n"));
    QVERIFY(!established.item("A").valueSets->at(0)->hasDetails());
}

void tst_CSProWrittenValues::specialWords_data()
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

void tst_CSProWrittenValues::specialWords()
{
    QFETCH(QString, line);
    QFETCH(int, type);
    const Model model(
        Reading::AsWritten, values("Value=1;Yes\nValue=9;None\n" + line + "\nValue=2;No"));
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
    QCOMPARE(item.detail().refusedCode, type == 3 ? QStringLiteral("9") : QString());
    QCOMPARE(
        problemsOf(model.parser), type == 0 ? QStringList { "19 UnknownSpecial" } : QStringList());
}

void tst_CSProWrittenValues::specialsStayOutOfRanges()
{
    const Model model(Reading::AsWritten,
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
    QCOMPARE(model.item("A").detail().refusedCode, QStringLiteral("99998"));
    QCOMPARE(problemsOf(model.parser), QStringList());

    const Model onlySpecials(Reading::AsWritten, values("Value=9;None\nName=MISSING,Special"));
    QCOMPARE(onlySpecials.variable("A").minValue, QStringLiteral("-9999"));
    QCOMPARE(onlySpecials.variable("A").maxValue, QStringLiteral("99999"));
    QCOMPARE(onlySpecials.variable("A").valueLabels, QString());
}

void tst_CSProWrittenValues::specialsOfOccurrences_data()
{
    QTest::addColumn<QString>("before");
    row("the first item of the file", "");
    row("a later item", "[Item]\nName=B\nStart=2\nLen=1\n");
}

void tst_CSProWrittenValues::specialsOfOccurrences()
{
    QFETCH(QString, before);
    const Model model(Reading::AsWritten,
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
        QCOMPARE(item->detail().refusedCode, QStringLiteral("8"));
        QCOMPARE(model.variable(item->name).missingValue, QStringLiteral("9"));
    }
    QCOMPARE(occurrences, 3);
}

void tst_CSProWrittenValues::firstSpecialCodeCounts()
{
    const Model model(Reading::AsWritten,
        values("Value=8;a\nName=MISSING,Special\nValue=9;b\nName=MISSING,Special\n"
               "[ValueSet]\nName=W\nValue=7;c\nName=MISSING,Special\nValue=6;d\n"
               "Name=REFUSED,Special\n"));
    QCOMPARE(model.item("A").missingCode, QStringLiteral("8"));
    QCOMPARE(model.item("A").detail().refusedCode, QStringLiteral("6"));
}

void tst_CSProWrittenValues::codesInTheData_data()
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

void tst_CSProWrittenValues::codesInTheData()
{
    QFETCH(QString, keys);
    QFETCH(QString, code);
    QFETCH(QString, data);
    QFETCH(bool, isCode);
    const Model missing(
        Reading::AsWritten, values("Value=" + code + ";None\nName=MISSING,Special", keys));
    TCSProVariable& field = assigned(missing.variable("A"), data);
    QCOMPARE(field.isMissing(), isCode);
    QVERIFY(!field.isNotApplicable());

    const Model notApplicable(
        Reading::AsWritten, values("Value=" + code + ";None\nName=NOTAPPL,Special", keys));
    TCSProVariable& other = assigned(notApplicable.variable("A"), data);
    QCOMPARE(other.isNotApplicable(), isCode);
    QVERIFY(!other.isMissing());
}

void tst_CSProWrittenValues::allValueSetsOfOccurrences()
{
    const Model model(Reading::AsWritten,
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

void tst_CSProWrittenValues::decimalCodes_data()
{
    QTest::addColumn<QString>("keys");
    row("an item with decimals", "Decimal=1\n");
    row("an item with a point in the data", "Decimal=1\nDecimalChar=Yes\n");
    row("an item without decimals", "");
}

void tst_CSProWrittenValues::decimalCodes()
{
    QFETCH(QString, keys);
    const Model model(Reading::AsWritten, values("Value=0.5;a\nValue=1.5:2.5;b", keys));
    QCOMPARE(codesOf(model.item("A")), (QStringList { "0.5", "1.5..2.5" }));
    QCOMPARE(model.questions, 0);
}

void tst_CSProWrittenValues::keptValueSets()
{
    const Model model(Reading::AsWritten,
        values("Value=1;a\nValue=x;b\nValue=1.5;c\nValue=2:y;d\n[ValueSet]\nName=W\nValue=3;e"));
    QCOMPARE(codesOf(model.item("A")), (QStringList { "1", "x", "1.5", "2..y" }));
    QCOMPARE(codesOf(model.item("A"), 1), QStringList { "3" });
    QCOMPARE(model.questions, 0);
    QVERIFY(hasProblem(model.parser, Kind::CodeNotANumber));
    QCOMPARE(model.variable("A").minValue, QStringLiteral("1"));
    QCOMPARE(model.variable("A").maxValue, QStringLiteral("1.5")); // of the first set
}

void tst_CSProWrittenValues::links()
{
    const Model model(Reading::AsWritten,
        dictionary("[Item]\nName=A\nStart=2\nLen=1\n[ValueSet]\nName=V\nLink=1\nValue=1;a\n"
                   "Value=9;b\nName=MISSING,Special\n"
                   "[Item]\nName=B\nStart=3\nLen=1\nOccurrences=2\n[ValueSet]\nName=W\nLink=1\n"
                   "[Item]\nName=C\nStart=5\nLen=1\n[ValueSet]\nName=X\nLink=1\n"
                   "[ValueSet]\nName=Y\nLink=2\nValue=5;c\n[ValueSet]\nName=Z\n"));
    const TCSProValueSet* const first = model.item("A").getValueSet(0);
    QCOMPARE(first->link(), QStringLiteral("1"));
    QCOMPARE(first->linkedSet(), nullptr);
    for (const char* name : { "B_1", "B_2", "C" }) {
        const TCSProItem& item = model.item(name);
        QCOMPARE(item.getValueSet(0)->linkedSet(), first);
        QCOMPARE(*item.getValueSet(0)->items, *first->items);
        QCOMPARE(item.missingCode, QStringLiteral("9"));
        QCOMPARE(model.variable(name).valueLabels.left(4), QStringLiteral("1 a\t"));
    }
    QCOMPARE(codesOf(model.item("C"), 1), QStringList { "5" });
    QCOMPARE(codesOf(model.item("C"), 2), QStringList());
    QCOMPARE(problemsOf(model.parser), QStringList());
}

void tst_CSProWrittenValues::linkIsToTheFirstSetWithValues()
{
    const Model model(Reading::AsWritten,
        dictionary("[Item]\nName=A\nStart=2\nLen=1\n[ValueSet]\nName=V\nLink=1\n"
                   "[Item]\nName=B\nStart=3\nLen=1\n[ValueSet]\nName=W\nLink=1\nValue=1;a\n"
                   "[Item]\nName=C\nStart=4\nLen=1\n[ValueSet]\nName=X\nLink=1\n"));
    QCOMPARE(problemsOf(model.parser), QStringList { "15 LinkWithoutValues" });
    QCOMPARE(codesOf(model.item("B")), QStringList { "1" });
    QCOMPARE(model.item("C").getValueSet(0)->linkedSet(), model.item("B").getValueSet(0));
    QCOMPARE(codesOf(model.item("C")), QStringList { "1" });
}

void tst_CSProWrittenValues::details()
{
    const Model model(Reading::AsWritten,
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
    QVERIFY(detail(set, 3).isEmpty());
    QCOMPARE(set.getValueSetItem(3)->type, 0);
}

QTEST_GUILESS_MAIN(tst_CSProWrittenValues)
#include "tst_CSProWrittenValues.moc"
