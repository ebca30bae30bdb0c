#include "AddRow.h"
#include "CSProTexts.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QLoggingCategory>
#include <QtTest>

#include <memory>

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

QTEST_MAIN(tst_CSPro)

#include "tst_CSPro.moc"
