#include "AddRow.h"
#include "CSProImporters.h"
#include "CSProTexts.h"
#include "DebugLines.h"
#include "ErrorOf.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QLoggingCategory>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

const char twoRecordTypes[] =
    "[Dictionary]\nName=CENSUS\nRecordTypeStart=3\nRecordTypeLen=1\n"
    "[IdItems]\n[Item]\nName=PROVINCE\nLabel=Province\nStart=1\nLen=2\n"
    "[Record]\nName=HOUSE\nRecordTypeValue='1'\n"
    "[Item]\nName=ROOMS\nLabel=Rooms\nStart=4\nLen=2\n"
    "[Record]\nName=PERSON\nRecordTypeValue='2'\n"
    "[Item]\nName=SURNAME\nLabel=Surname\nStart=4\nLen=20\nDataType=Alpha\n"
    "[Item]\nName=INCOME\nLabel=Income\nStart=24\nLen=8\nDecimal=2\n";

} // namespace

class tst_CSProDataImport : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void startValues();
    void startValuesWithoutAName();
    void theConstructorWritesALine();
    void providerId_data();
    void providerId();
    void baseAnswers();

    void openFile();
    void openFileAgain();
    void openFileReadsTheSourceName();
    void openData();
    void openReadAddsToTheFields();
    void aMissingDictionary();
    void aFailingDictionary();
    void selectLayoutSource();
    void codecAndQuestion();

    void groups_data();
    void groups();
    void getGroupValue_data();
    void getGroupValue();
    void recordTypes_data();
    void recordTypes();
    void getRecordTypeIndex_data();
    void getRecordTypeIndex();

    void fieldTypes_data();
    void fieldTypes();
    void fieldProperties();
    void occurrencesAreFields();
    void fieldsOfOneName();
    void noDictionaryMakesNoFields();
    void copyingAgainAddsNewFields();
    void rangeWithoutValueSets_data();
    void rangeWithoutValueSets();
    void aDamagedLength();

    void openReadMakesTheGroupsItMisses();
};

void tst_CSProDataImport::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProDataImport::startValues()
{
    TCSProDataImport importer(QStringLiteral("some/where/census.dcf"));
    QCOMPARE(importer.sourceName, QString("some/where/census.dcf"));
    QVERIFY(importer.groups && importer.groups->isEmpty());
    QCOMPARE(importer.dictionaryPending, true);
    QCOMPARE(importer.recordTypeStart, 0);
    QCOMPARE(importer.recordTypeLen, 0);
    QVERIFY(importer.openState == 0);
    QVERIFY(!importer.dictionary);
    QCOMPARE(importer.currentRecordType, QString());
    QVERIFY(importer.fields && importer.fields->isEmpty());

    QCOMPARE(importer.isMultiple(), false);
    QCOMPARE(importer.getGroupCount(), 0);
    QCOMPARE(importer.getRecordTypeStart(), 0);
    QCOMPARE(importer.getRecordTypeSize(), 0);
    QCOMPARE(importer.getRecordTypeIndex("1"), -1);
    QCOMPARE(importer.getRecordTypeIndex(), -1);
}

void tst_CSProDataImport::startValuesWithoutAName()
{
    TCSProDataImport importer;
    QCOMPARE(importer.sourceName, QString());
    QCOMPARE(importer.currentRecordType, QString());
    QVERIFY(!importer.dictionary);
    QVERIFY(importer.fields->isEmpty());
    QCOMPARE(importer.getDataProviderId(), QString("CSPRO_"));
    QCOMPARE(importer.isMultiple(), false);
}

void tst_CSProDataImport::theConstructorWritesALine()
{
    const DebugOn debugOn;
    QTest::ignoreMessage(QtDebugMsg, "TCSProDataImport Constructor");
    const TCSProDataImport importer(QStringLiteral("census.dcf"));
    QCOMPARE(importer.sourceName, QString("census.dcf"));
}

void tst_CSProDataImport::providerId_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("id");
    row("relative name", "census.dcf", "CSPRO_census.dcf");
    row("name as it was given", "./a/../census.dcf", "CSPRO_./a/../census.dcf");
    row("absolute name", "/data/census.dcf", "CSPRO_/data/census.dcf");
    row("no name", "", "CSPRO_");
}

void tst_CSProDataImport::providerId()
{
    QFETCH(QString, name);
    QFETCH(QString, id);
    TCSProDataImport importer(name);
    QCOMPARE(importer.getDataProviderId(), id);
    QCOMPARE(importer.getDataProviderType(), QString("CSPRO"));
    TDataImport& base = importer;
    QCOMPARE(base.getDataProviderId(), id);
    QCOMPARE(base.getDataProviderType(), QString("CSPRO"));
}

void tst_CSProDataImport::baseAnswers()
{
    Opened importer(twoRecordTypes);
    importer.currentRecordType = QStringLiteral("2");
    QCOMPARE(importer.getRecordTypeCurrent(), QString());
    const std::unique_ptr<QStringList> first(importer.getLayoutSource());
    const std::unique_ptr<QStringList> second(importer.getLayoutSource());
    QVERIFY(first && first->isEmpty());
    QVERIFY(first != second);
    QList<TOxSourceField*> list;
    QStringList sources { "x" };
    importer.getDictionary(&list, &sources);
    QVERIFY(list.isEmpty());
    QCOMPARE(sources, QStringList { "x" });
}

void tst_CSProDataImport::openFile()
{
    const DictionaryOnDisk file(twoRecordTypes);
    TCSProDataImport importer(file.path());
    TDataImport& base = importer;
    QCOMPARE(base.openFile(), true);
    QVERIFY(importer.openState == 1);
    QCOMPARE(importer.importRatio, 1.0);
    QCOMPARE(importer.dictionaryPending, false);
    QVERIFY(importer.dictionary);
    QCOMPARE(importer.dictionary->name, QString("CENSUS"));
    QCOMPARE(importer.recordTypeStart, 3);
    QCOMPARE(importer.recordTypeLen, 1);
    QCOMPARE(base.getRecordTypeStart(), 3);
    QCOMPARE(base.getRecordTypeSize(), 1);
    QCOMPARE(*importer.groups, (QStringList { "HOUSE=1", "PERSON=2" }));
    QCOMPARE(importer.fields->size(), 4);
    QCOMPARE(static_cast<int>(importer.fieldsByName.size()), 4);
    QCOMPARE(importer.getField(2)->name, QString("SURNAME"));
    QCOMPARE(importer.fieldByName("INCOME"), importer.getField(3));
    QVERIFY(!importer.fieldByName("income"));
    QCOMPARE(importer.closeDataImport(), true);
}

void tst_CSProDataImport::openFileAgain()
{
    Opened importer(twoRecordTypes);
    const TCSPro* first = importer.dictionary;
    TCSProVariable* firstField = importer.variable(0);
    const DictionaryOnDisk other("[Dictionary]\nRecordTypeLen=0\n[Record]\nName=ONE\n"
                                 "RecordTypeValue='9'\n[Item]\nName=ONLY\nLen=3");
    importer.setSourceName(other.path());
    QCOMPARE(importer.openFile(), true);
    QVERIFY(importer.dictionary != first);
    QCOMPARE(*importer.groups, QStringList { "ONE=9" });
    QCOMPARE(importer.fields->size(), 1);
    QCOMPARE(static_cast<int>(importer.fieldsByName.size()), 1);
    QCOMPARE(importer.getField(0)->name, QString("ONLY"));
    QCOMPARE(importer.recordTypeStart, 1);
    QCOMPARE(importer.recordTypeLen, 0);
    // What was handed out before is still there.
    QCOMPARE(first->name, QString("CENSUS"));
    QCOMPARE(firstField->name, QString("PROVINCE"));
    QCOMPARE(firstField->item->label, QString("Province"));
}

void tst_CSProDataImport::openFileReadsTheSourceName()
{
    const DictionaryOnDisk file(twoRecordTypes);
    TCSProDataImport importer(QStringLiteral("no/such/file.dcf"));
    importer.openFile();
    QCOMPARE(importer.getGroupCount(), 0);
    importer.setSourceName(file.path());
    importer.openFile();
    QCOMPARE(importer.getGroupCount(), 2);
    QCOMPARE(importer.getDataProviderId(), QStringLiteral("CSPRO_") + file.path());
}

void tst_CSProDataImport::openData()
{
    TCSProDataImport importer(QStringLiteral("no/such/file.dcf"));
    importer.openData(twoRecordTypes);
    Opened expected(twoRecordTypes);
    QCOMPARE(*importer.groups, *expected.groups);
    QCOMPARE(importer.recordTypeStart, expected.recordTypeStart);
    QCOMPARE(importer.recordTypeLen, expected.recordTypeLen);
    QCOMPARE(importer.openState, expected.openState);
    QCOMPARE(importer.importRatio, expected.importRatio);
    QVERIFY(!importer.dictionaryPending);
    QCOMPARE(importer.fields->size(), expected.fields->size());
    for (int i = 0; i < expected.fields->size(); ++i)
        QCOMPARE(importer.getField(i)->name, expected.getField(i)->name);
    importer.openData(QByteArray());
    QVERIFY(importer.fields->isEmpty());
    QVERIFY(importer.groups->isEmpty());
}

void tst_CSProDataImport::openReadAddsToTheFields()
{
    const DictionaryOnDisk file(twoRecordTypes);
    TCSProDataImport importer;
    importer.openRead(file.path());
    importer.openRead(file.path());
    QCOMPARE(importer.fields->size(), 8);
    QCOMPARE(importer.fieldByName("ROOMS"), importer.getField(5));
    QCOMPARE(importer.getGroupCount(), 2);
    QVERIFY(importer.openState == 0);
    QCOMPARE(importer.sourceName, QString());
    QCOMPARE(importer.dictionaryPending, false);
}

void tst_CSProDataImport::aMissingDictionary()
{
    QTemporaryDir folder;
    TCSProDataImport importer(folder.filePath(QStringLiteral("missing.dcf")));
    importer.groups->append(QStringLiteral("OLD=1"));
    QCOMPARE(importer.openFile(), true);
    QCOMPARE(importer.dictionaryPending, false);
    QVERIFY(importer.groups->isEmpty());
    QVERIFY(importer.fields->isEmpty());
    QCOMPARE(importer.recordTypeStart, 1);
    QCOMPARE(importer.recordTypeLen, 1);
    QCOMPARE(importer.isMultiple(), true);
}

void tst_CSProDataImport::aFailingDictionary()
{
    const DictionaryOnDisk file("[Dictionary]\nRecordTypeLen=7\n[Record]\nName=R\n[Item]\nName=A\n"
                                "[Item]\nName=B\nOccurrences=1000000000\n[Item]\nName=C\n");
    TCSProDataImport importer(file.path());
    const ErrorPointer error = errorOf([&] { importer.openFile(); });
    QVERIFY(error);
    QCOMPARE(error->className, QString("CSPro"));
    QCOMPARE(error->code, 242);
    QCOMPARE(error->text, character(8));
    QVERIFY(importer.openState == 1);
    QCOMPARE(importer.importRatio, 1.0);
    QCOMPARE(importer.dictionaryPending, true);
    QVERIFY(importer.dictionary);
    QCOMPARE(importer.dictionary->getItemsCount(), 1);
    QCOMPARE(importer.recordTypeLen, 0);
    QVERIFY(importer.groups->isEmpty());
    QVERIFY(importer.fields->isEmpty());
}

void tst_CSProDataImport::selectLayoutSource()
{
    const DictionaryOnDisk file(twoRecordTypes);
    TCSProDataImport importer(file.path());
    TDataImport& base = importer;
    std::unique_ptr<QStringList> names;
    {
        const DebugOn debugOn;
        QTest::ignoreMessage(QtDebugMsg, "TCSProDataImport - selectLayoutSource");
        QTest::ignoreMessage(QtDebugMsg, "DataImport - selectLayoutSource");
        names.reset(base.selectLayoutSource());
    }
    QCOMPARE(*names, (QStringList { "PROVINCE", "ROOMS", "SURNAME", "INCOME" }));
    QCOMPARE(importer.fields->size(), 4);
    QVERIFY(importer.openState == 1);
    const std::unique_ptr<QStringList> again(base.selectLayoutSource());
    QCOMPARE(*again, *names);
    QVERIFY(again != names);
    QCOMPARE(importer.fields->size(), 4);
}

void tst_CSProDataImport::codecAndQuestion()
{
    const DictionaryOnDisk file("[Item]\nName=A\xE9\nLen=1\n[ValueSet]\nName=V\nValue=1.5;x\n");
    TCSProDataImport importer(file.path());
    QStringList asked;
    importer.setTextCodec("ISO-8859-1");
    importer.setDecimalQuestion([&](const CSProProblem& problem) {
        asked.append(problem.valueSet);
        return int(QMessageBox::Yes);
    });
    importer.openFile();
    QCOMPARE(importer.getField(0)->name, QStringLiteral("A\u00e9"));
    QCOMPARE(asked, QStringList { "V" });
    QCOMPARE(importer.getField(0)->valueLabels, QString("0 x\t"));
    // The next dictionary is read in the same way, by a parser that remembers nothing.
    importer.openFile();
    QCOMPARE(importer.getField(0)->name, QStringLiteral("A\u00e9"));
    QCOMPARE(asked, (QStringList { "V", "V" }));
    QCOMPARE(importer.dictionary->problems().size(), 1);
}

void tst_CSProDataImport::groups_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("groups");

    row("no record", QByteArray("[Dictionary]\nName=D\n[IdItems]\n[Item]\nName=A\nLen=1"),
        QStringList());
    row("one record", QByteArray("[Record]\nName=PERSON\nRecordTypeValue='2'"),
        QStringList { "PERSON=2" });
    row("in order of the dictionary",
        QByteArray("[Record]\nName=Z\nRecordTypeValue='9'\n[Record]\nName=A\nRecordTypeValue='1'"),
        QStringList { "Z=9", "A=1" });
    row("no name, no value", QByteArray("[Record]"), QStringList { "=" });
    row("two records of one value",
        QByteArray("[Record]\nName=A\nRecordTypeValue='1'\n[Record]\nName=A\nRecordTypeValue='1'"),
        QStringList { "A=1", "A=1" });
    row("the label is not the name", QByteArray("[Record]\nLabel=L\nName=N\nRecordTypeValue='x'"),
        QStringList { "N=x" });
}

void tst_CSProDataImport::groups()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, groups);
    Opened importer(text);
    TDataImport& base = importer;
    QCOMPARE(*importer.groups, groups);
    QCOMPARE(base.getGroupCount(), groups.size());
    for (int i = 0; i < groups.size(); ++i)
        QCOMPARE(base.getGroupName(i), groups.at(i));
}

void tst_CSProDataImport::getGroupValue_data()
{
    QTest::addColumn<QStringList>("groups");
    QTest::addColumn<QStringList>("values");

    row("each its own", QStringList { "HOUSE=1", "PERSON=2" },
        QStringList { "HOUSE=1", "PERSON=2" });
    row("an earlier entry contains it", QStringList { "HOUSE=10", "HOUSE=1" },
        QStringList { "HOUSE=10", "HOUSE=10" });
    row("a later entry contains it", QStringList { "HOUSE=1", "HOUSE=10" },
        QStringList { "HOUSE=1", "HOUSE=10" });
    row("the end of an earlier entry", QStringList { "FARMHOUSE=1", "HOUSE=1" },
        QStringList { "FARMHOUSE=1", "FARMHOUSE=1" });
    row("case counts", QStringList { "house=1", "HOUSE=1" }, QStringList { "house=1", "HOUSE=1" });
    row("two alike", QStringList { "A=1", "A=1" }, QStringList { "A=1", "A=1" });
    row("no name, no value", QStringList { "A=1", "=" }, QStringList { "A=1", "A=1" });
}

void tst_CSProDataImport::getGroupValue()
{
    QFETCH(QStringList, groups);
    QFETCH(QStringList, values);
    TCSProDataImport importer;
    *importer.groups = groups;
    TDataImport& base = importer;
    for (int i = 0; i < groups.size(); ++i) {
        QCOMPARE(base.getGroupName(i), groups.at(i));
        QCOMPARE(base.getGroupValue(i), values.at(i));
    }
}

void tst_CSProDataImport::recordTypes_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("len");
    QTest::addColumn<QStringList>("groupsOfFields"); // of a common item and one of a record

    row("no width", QByteArray("RecordTypeStart=0\nRecordTypeLen=0"), 0, 0, QStringList { "", "" });
    row("width below zero", QByteArray("RecordTypeLen=-1"), 1, -1, QStringList { "", "" });
    row("one column", QByteArray("RecordTypeStart=5\nRecordTypeLen=1"), 5, 1,
        QStringList { "Common", "PERSON" });
    row("two columns", QByteArray("RecordTypeStart=2\nRecordTypeLen=2"), 2, 2,
        QStringList { "Common", "PERSON" });
    row("nothing said", QByteArray("Name=D"), 1, 1, QStringList { "Common", "PERSON" });
}

void tst_CSProDataImport::recordTypes()
{
    QFETCH(QByteArray, header);
    QFETCH(int, start);
    QFETCH(int, len);
    QFETCH(QStringList, groupsOfFields);
    Opened importer("[Dictionary]\n" + header
        + "\n[IdItems]\n[Item]\nName=ID\nLen=1\n[Record]\nName=PERSON\nRecordTypeValue='2'\n"
          "[Item]\nName=AGE\nLen=3");
    TDataImport& base = importer;
    QCOMPARE(base.getRecordTypeStart(), start);
    QCOMPARE(base.getRecordTypeSize(), len);
    QCOMPARE(base.isMultiple(), len > 0);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(importer.variable(i)->group, groupsOfFields.at(i));
        QCOMPARE(importer.getField(i)->getGroup(), groupsOfFields.at(i));
    }
}

void tst_CSProDataImport::getRecordTypeIndex_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("last");
    QTest::addColumn<int>("first");

    row("the only one", "1", 0, 0);
    row("of two, the later and the earlier", "2", 3, 1);
    row("no record", "5", -1, -1);
    row("blank counts", "1 ", -1, -1);
    row("case counts", "h", -1, -1);
    row("exactly", "H", 4, 4);
    row("empty value", "", 5, 2);
    row("the common record is none", "_COMMON_", -1, -1);
}

void tst_CSProDataImport::getRecordTypeIndex()
{
    QFETCH(QString, value);
    QFETCH(int, last);
    QFETCH(int, first);
    Opened importer("[Record]\nRecordTypeValue='1'\n[Record]\nRecordTypeValue='2'\n[Record]\n"
                    "[Record]\nRecordTypeValue='2'\n[Record]\nRecordTypeValue='H'\n[Record]\n");
    TDataImport& base = importer;
    QCOMPARE(base.getRecordTypeIndex(value), last);
    importer.currentRecordType = value;
    QCOMPARE(importer.getRecordTypeIndex(), first);
    QCOMPARE(base.getRecordTypeIndex(value), last);
}

void tst_CSProDataImport::fieldTypes_data()
{
    QTest::addColumn<bool>("alpha");
    QTest::addColumn<int>("len");
    QTest::addColumn<int>("decimal");
    QTest::addColumn<bool>("hasDecimalChar");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("decimals");

    row("text", true, 5, 0, false, 3, QString());
    row("text with decimals", true, 5, 2, true, 3, QString());
    row("long text", true, 200, 0, false, 3, QString());
    row("short number", false, 1, 0, false, 1, "0");
    row("number of nine digits", false, 9, 0, false, 1, "0");
    row("number of ten digits", false, 10, 0, false, 2, "0");
    row("number without a length", false, 0, 0, false, 1, "0");
    row("number with a decimal point but no decimals", false, 5, 0, true, 1, "0");
    row("two decimals are one character", false, 5, 2, false, 2, character(2));
    row("two decimals and a point", false, 5, 2, true, 2, character(2));
    row("ten decimals are a line feed", false, 12, 10, false, 2, character(10));
    row("forty-eight decimals read as the digit 0", false, 60, 48, false, 2, "0");
    row("decimals below zero", false, 5, -1, false, 2, character(0xffff));
}

void tst_CSProDataImport::fieldTypes()
{
    QFETCH(bool, alpha);
    QFETCH(int, len);
    QFETCH(int, decimal);
    QFETCH(bool, hasDecimalChar);
    QFETCH(int, type);
    QFETCH(QString, decimals);
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), len, alpha);
    item->decimal = decimal;
    item->hasDecimalChar = hasDecimalChar;
    importer.copyDataFromDictionary();
    const TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->fieldType, type);
    QCOMPARE(field->decimals, decimals);
    QCOMPARE(field->length, len);
    QCOMPARE(field->isString(), type == 3);
}

void tst_CSProDataImport::fieldProperties()
{
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("AGE"), 3);
    item->label = QStringLiteral("Age in years");
    item->start = 17;
    item->missingCode = QStringLiteral(" 9");
    item->notApplicableCode = QStringLiteral("8 ");
    importer.copyDataFromDictionary();
    QCOMPARE(importer.fields->size(), 1);
    TCSProVariable* field = importer.variable(0);
    QVERIFY(field);
    QCOMPARE(field->owner, &importer);
    QCOMPARE(field->item, item);
    QCOMPARE(field->name, QString("AGE"));
    QCOMPARE(field->label, QString("Age in years"));
    QCOMPARE(field->start, 17);
    QCOMPARE(field->length, 3);
    QCOMPARE(field->missingValue, QString(" 9"));
    QCOMPARE(field->notApplicableValue, QString("8 "));
    QCOMPARE(field->valueLabels, QString());
    QCOMPARE(field->group, QString());
    QCOMPARE(field->hasDecimalChar, true);
    QCOMPARE(field->conversionFailed, false);
    QCOMPARE(textOf(*field), QString());
    QCOMPARE(field->realValue, NoValue);
    QCOMPARE(field->integerValue, 0.0);
    QCOMPARE(importer.fieldByName("AGE"), field);
}

void tst_CSProDataImport::occurrencesAreFields()
{
    Opened importer("[Item]\nName=ID\nLen=1\n[Item]\nName=C\nLabel=Child\nStart=10\nLen=3\n"
                    "Occurrences=3\n");
    QCOMPARE(importer.fields->size(), 4);
    for (int k = 1; k <= 3; ++k) {
        const TCSProVariable* field = importer.variable(k);
        QCOMPARE(field->name, QStringLiteral("C_") + character(k));
        QCOMPARE(field->label, QString("Child"));
        QCOMPARE(field->start, 10 + (k - 1) * 3);
        QCOMPARE(field->length, 3);
        QCOMPARE(field->item, importer.dictionary->getItem(k));
    }
}

void tst_CSProDataImport::fieldsOfOneName()
{
    HandMade importer;
    importer.addItem(QStringLiteral("A"), 1);
    importer.addItem(QStringLiteral("A"), 2);
    importer.copyDataFromDictionary();
    QCOMPARE(importer.fields->size(), 2);
    QCOMPARE(importer.fieldByName("A"), importer.getField(1));
}

void tst_CSProDataImport::noDictionaryMakesNoFields()
{
    TCSProDataImport importer;
    importer.copyDataFromDictionary();
    QVERIFY(importer.fields->isEmpty());
    HandMade withoutItems;
    withoutItems.copyDataFromDictionary();
    QVERIFY(withoutItems.fields->isEmpty());
}

void tst_CSProDataImport::copyingAgainAddsNewFields()
{
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 1);
    importer.addSet(item, { "1", "one" });
    importer.copyDataFromDictionary();
    importer.addEntry(item->getValueSet(0), "2", "two");
    importer.copyDataFromDictionary();
    QCOMPARE(importer.fields->size(), 2);
    QCOMPARE(importer.getField(0)->valueLabels, QString("1 one\t"));
    QCOMPARE(importer.getField(1)->valueLabels, QString("1 one\t2 two\t"));
}

void tst_CSProDataImport::rangeWithoutValueSets_data()
{
    QTest::addColumn<bool>("alpha");
    QTest::addColumn<int>("len");
    QTest::addColumn<int>("decimal");
    QTest::addColumn<bool>("hasDecimalChar");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max");

    row("text", true, 5, 0, false, "", "");
    row("text with decimals", true, 5, 2, true, "", "");
    row("number", false, 3, 0, false, "0", "999");
    row("number with a point but no decimals", false, 3, 0, true, "0", "999");
    row("number without a length", false, 0, 0, false, "0", "");
    row("number with a length below zero", false, -3, 0, false, "0", "");
    row("decimals", false, 5, 2, false, "0", "999");
    row("decimals and a point", false, 5, 2, true, "0", "9999");
    row("only decimals", false, 2, 2, false, "0", "9");
    row("only decimals and a point", false, 2, 2, true, "0", "9");
    row("one column of decimals and a point", false, 1, 1, true, "0", "");
    row("one column of decimals", false, 1, 1, false, "0", "9");
    row("more decimals than columns", false, 2, 3, false, "0", "");
    row("more decimals than columns and a point", false, 2, 3, true, "0", "9");
    row("decimals below zero", false, 3, -1, false, "0", "999");
    row("decimals below zero and a point", false, 3, -1, true, "0", "999");
    row("ten columns", false, 10, 0, false, "0", "9999999999");
}

void tst_CSProDataImport::rangeWithoutValueSets()
{
    QFETCH(bool, alpha);
    QFETCH(int, len);
    QFETCH(int, decimal);
    QFETCH(bool, hasDecimalChar);
    QFETCH(QString, min);
    QFETCH(QString, max);
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), len, alpha);
    item->decimal = decimal;
    item->hasDecimalChar = hasDecimalChar;
    importer.copyDataFromDictionary();
    QCOMPARE(importer.getField(0)->minValue, min);
    QCOMPARE(importer.getField(0)->maxValue, max);
    QCOMPARE(importer.getField(0)->valueLabels, QString());
}

// A length that no record can have does not fill the memory.
void tst_CSProDataImport::aDamagedLength()
{
    HandMade importer;
    importer.addItem(QStringLiteral("LONG"), 32'000);
    importer.addItem(QStringLiteral("DAMAGED"), 2147483647);
    importer.copyDataFromDictionary();
    QCOMPARE(importer.getField(0)->maxValue, QString(32'000, '9'));
    QCOMPARE(importer.getField(1)->length, 2147483647);
    const QString max = importer.getField(1)->maxValue;
    QVERIFY(max.size() >= 32'000 && max.size() < 10'000'000);
    QCOMPARE(max, QString(max.size(), '9'));
}

void tst_CSProDataImport::openReadMakesTheGroupsItMisses()
{
    const DictionaryOnDisk file(twoRecordTypes);
    TCSProDataImport importer;
    delete importer.groups;
    importer.groups = nullptr;
    importer.openRead(file.path());
    QVERIFY(importer.groups);
    QCOMPARE(*importer.groups, (QStringList { "HOUSE=1", "PERSON=2" }));
}

QTEST_MAIN(tst_CSProDataImport)

#include "tst_CSProDataImport.moc"
