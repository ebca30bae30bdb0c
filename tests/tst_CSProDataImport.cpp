#include "DebugLines.h"
#include "ErrorOf.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QFile>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace {

constexpr double NoValue = 2.2250738585072014e-308;

// Adds a row to a table of test data.
template <typename... Values> void row(const char* name, const Values&... values)
{
    (QTest::newRow(name) << ... << values);
}

QString character(int code)
{
    return QString(QChar(static_cast<ushort>(code)));
}

// A dictionary in a file of its own.
class DictionaryFile {
public:
    explicit DictionaryFile(const QByteArray& text)
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("No dictionary could be written");
    }

    QString path() const
    {
        return m_folder.filePath(QStringLiteral("census.dcf"));
    }

private:
    QTemporaryDir m_folder;
};

// An importer that has read a dictionary.
class Opened : public TCSProDataImport {
public:
    explicit Opened(const QByteArray& text)
    {
        const DictionaryFile file(text);
        setSourceName(file.path());
        openFile();
    }

    TCSProVariable* variable(int index) const
    {
        return dynamic_cast<TCSProVariable*>(getField(index));
    }
};

// An importer whose dictionary is made item by item.
class HandMade : public TCSProDataImport {
public:
    HandMade()
    {
        recordTypeLen = 0;
        dictionary = new TCSPro;
    }

    TCSProItem* addItem(const QString& name, int len, bool alpha = false)
    {
        auto* item = new TCSProItem;
        item->setParent(&m_owner);
        item->name = name;
        item->len = len;
        item->isAlpha = alpha ? 1 : 0;
        item->record = dictionary->commonRecord;
        dictionary->items->append(item);
        return item;
    }

    TCSProValueSet* makeSet()
    {
        auto* set = new TCSProValueSet;
        set->setParent(&m_owner);
        return set;
    }

    // Codes and labels; a code that begins with "!" is special.
    TCSProValueSet* addSet(TCSProItem* item, const QStringList& codesAndLabels)
    {
        TCSProValueSet* set = makeSet();
        for (int i = 0; i + 1 < codesAndLabels.size(); i += 2)
            addEntry(set, codesAndLabels.at(i), codesAndLabels.at(i + 1));
        item->valueSets->append(set);
        return set;
    }

    void addEntry(TCSProValueSet* set, const QString& code, const QString& label)
    {
        auto* entry = new TValueSetItem;
        entry->setParent(&m_owner);
        entry->special = code.startsWith(QLatin1Char('!'));
        entry->code = entry->special ? code.mid(1) : code;
        entry->label = label;
        set->addItem(entry);
    }

    TCSProVariable* variable(int index) const
    {
        return dynamic_cast<TCSProVariable*>(getField(index));
    }

private:
    QObject m_owner;
};

// A field that fails while its text is looked at.
class FailingVariable : public TCSProVariable {
public:
    using TCSProVariable::TCSProVariable;

    bool isBlank() override
    {
        switch (failure) {
        case 1:
            throw std::runtime_error("no text");
        case 2:
            throw new OxErrorManager(QStringLiteral("Test"), ToDouble);
        case 3:
            throw 5;
        default:
            return TCSProVariable::isBlank();
        }
    }

    int failure = 0;
};

QString textOf(const TGenericField& field)
{
    const auto* end = std::find(std::begin(field.text), std::end(field.text), L'\0');
    return QString::fromWCharArray(field.text, static_cast<int>(end - field.text));
}

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
    void valueSets_data();
    void valueSets();
    void severalValueSets_data();
    void severalValueSets();
    void anEmptyListOfValueSets();
    void parsedValueSets_data();
    void parsedValueSets();
    void missingCodeOfADictionary();
    void valueSetsAsAPlainLoopReadsThem();
    void occurrencesShareTheirLabels();
    void itemsOfOneSetAndSeveralTypes();

    void specialCodesOfTheItem();
    void specialCodesOfAnyOtherField();
    void stringOfChar_data();
    void stringOfChar();

    void variableStartValues();
    void assignedText_data();
    void assignedText();
    void assignedThroughTheBase_data();
    void assignedThroughTheBase();
    void aShorterTextReplacesALongerOne();
    void parsedFieldsAreNotScaled_data();
    void parsedFieldsAreNotScaled();
    void missing_data();
    void missing();
    void notApplicable_data();
    void notApplicable();
    void blank_data();
    void blank();
    void specialTextsKeepTheNumbers_data();
    void specialTextsKeepTheNumbers();
    void aFailedConversion_data();
    void aFailedConversion();
    void conversionFailedIsLeftAlone();
    void specialTextsAsText();

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
    const DictionaryFile file(twoRecordTypes);
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
    const DictionaryFile other("[Dictionary]\nRecordTypeLen=0\n[Record]\nName=ONE\n"
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
    const DictionaryFile file(twoRecordTypes);
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
    const DictionaryFile file(twoRecordTypes);
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
    const DictionaryFile file("[Dictionary]\nRecordTypeLen=7\n[Record]\nName=R\n[Item]\nName=A\n"
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
    const DictionaryFile file(twoRecordTypes);
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
    const DictionaryFile file("[Item]\nName=A\xE9\nLen=1\n[ValueSet]\nName=V\nValue=1.5;x\n");
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

void tst_CSProDataImport::valueSets_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("entries"); // codes and labels; "!" marks a special code
    QTest::addColumn<QString>("labels");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max"); // "999": what it is without a value set

    const int integer = 1;
    const int real = 2;
    const int text = 3;
    row("codes and labels", integer, QStringList { "1", "Yes", "2", "No" }, "1 Yes\t2 No\t", "1",
        "2");
    row("special last entry still bounds the range", integer,
        QStringList { "1", "Yes", "2", "No", "!9", "Missing" }, "1 Yes\t2 No\t", "1", "9");
    row("special first entry still bounds the range", integer,
        QStringList { "!-5", "Missing", "1", "Yes", "2", "No" }, "1 Yes\t2 No\t", "-5", "2");
    row("special entry in the middle does not", integer,
        QStringList { "1", "Yes", "!99", "Missing", "2", "No" }, "1 Yes\t2 No\t", "1", "2");
    row("only special entries", integer, QStringList { "!8", "a", "!9", "b" }, "", "8", "9");
    row("one entry", integer, QStringList { "4", "Four" }, "4 Four\t", "4", "4");
    row("no entry", integer, QStringList(), "", "0", "999");
    row("entries out of order", integer, QStringList { "5", "a", "1", "b", "9", "c", "4", "d" },
        "5 a\t1 b\t9 c\t4 d\t", "1", "9");
    row("low bound above the high one", integer, QStringList { "9", "a", "1", "b" }, "9 a\t1 b\t",
        "1", "9");
    row("codes below zero", integer, QStringList { "-9", "a", "-2", "b" }, "-9 a\t-2 b\t", "-9",
        "-2");
    row("empty label", integer, QStringList { "1", "" }, "1 \t", "1", "1");
    row("tab and blank in a label", integer, QStringList { "1", "a\tb c" }, "1 a\tb c\t", "1", "1");
    row("leading zeros go", integer, QStringList { "007", "a", "+8", "b" }, "7 a\t8 b\t", "7", "8");
    row("blanks around go", integer, QStringList { " 7", "a", "8 ", "b" }, "7 a\t8 b\t", "7", "8");
    row("six digits", integer, QStringList { "0", "a", "999999", "b" }, "0 a\t999999 b\t", "0",
        "999999");
    row("seven digits", integer, QStringList { "1000000", "a", "1234567", "b" },
        "1e+06 a\t1.23457e+06 b\t", "1e+06", "1.23457e+06");
    row("seven digits below zero", integer, QStringList { "-1234567", "a", "-999999", "b" },
        "-1.23457e+06 a\t-999999 b\t", "-1.23457e+06", "-999999");
    row("decimal codes of an integer field", integer, QStringList { "1.5", "a", "2.25", "b" },
        "1.5 a\t2.25 b\t", "1.5", "2.25");
    row("code that is no number is left out", integer, QStringList { "1", "a", "x", "b", "3", "c" },
        "1 a\t3 c\t", "1", "3");
    row("first code is no number", integer, QStringList { "x", "a", "5", "b", "7", "c" },
        "5 b\t7 c\t", "0", "999");
    row("last code is no number", integer, QStringList { "-5", "a", "-7", "b", "x", "c" },
        "-5 a\t-7 b\t", "-7", "999");
    row("no code is a number", integer, QStringList { "x", "a", "", "b" }, "", "0", "999");
    row("special last code is no number", integer, QStringList { "5", "a", "!x", "b" }, "5 a\t",
        "0", "999");
    row("start value of a code", integer, QStringList { "\x03", "a" }, "", "0", "999");

    row("real field keeps its codes as written", real,
        QStringList { "007", "a", "+8", "b", " 9", "c", "12345678", "d" },
        "007 a\t+8 b\t 9 c\t12345678 d\t", "7", "1.23457e+07");
    row("real field, code that is no number is left out", real,
        QStringList { "1", "a", "x", "b", "2", "c" }, "1 a\t2 c\t", "1", "2");
    row("real field, decimal codes", real, QStringList { "0.5", "a", "1.50", "b" },
        "0.5 a\t1.50 b\t", "0.5", "1.5");
    row("real field, special last entry", real, QStringList { "1", "a", "!99", "b" }, "1 a\t", "1",
        "99");

    row("text field keeps every code", text, QStringList { "A", "a", "007", "b", "", "c" },
        "A a\t007 b\t c\t", "0", "");
    row("text field leaves special entries out", text, QStringList { "A", "a", "!X", "b" }, "A a\t",
        "0", "");
    row("text field without entries", text, QStringList(), "", "0", "");
    row("text field of numbers has no bounds", text, QStringList { "5", "a", "9", "b" },
        "5 a\t9 b\t", "0", "");
}

void tst_CSProDataImport::valueSets()
{
    QFETCH(int, type);
    QFETCH(QStringList, entries);
    QFETCH(QString, labels);
    QFETCH(QString, min);
    QFETCH(QString, max);
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 3, type == 3);
    item->decimal = type == 2 ? 1 : 0;
    importer.addSet(item, entries);
    importer.copyDataFromDictionary();
    const TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->fieldType, type);
    QCOMPARE(field->valueLabels, labels);
    QCOMPARE(field->minValue, min);
    QCOMPARE(field->maxValue, max);
}

void tst_CSProDataImport::severalValueSets_data()
{
    QTest::addColumn<QStringList>("first");
    QTest::addColumn<QStringList>("second");
    QTest::addColumn<QString>("labels");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max");

    row("the second one widens the range", QStringList { "3", "a", "5", "b" },
        QStringList { "1", "c", "9", "d" }, "3 a\t5 b\t1 c\t9 d\t", "1", "9");
    row("special entries of the second one do not", QStringList { "3", "a", "5", "b" },
        QStringList { "!1", "c", "!9", "d" }, "3 a\t5 b\t", "3", "5");
    row("empty first one: the range starts at 0", QStringList(), QStringList { "5", "c", "9", "d" },
        "5 c\t9 d\t", "0", "999");
    row("empty first one, codes below zero", QStringList(), QStringList { "-5", "c" }, "-5 c\t",
        "-5", "999");
    row("first one without numbers", QStringList { "x", "a" }, QStringList { "-5", "c" }, "-5 c\t",
        "-5", "999");
    row("empty second one", QStringList { "3", "a" }, QStringList(), "3 a\t", "3", "3");
}

void tst_CSProDataImport::severalValueSets()
{
    QFETCH(QStringList, first);
    QFETCH(QStringList, second);
    QFETCH(QString, labels);
    QFETCH(QString, min);
    QFETCH(QString, max);
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 3);
    importer.addSet(item, first);
    importer.addSet(item, second);
    importer.copyDataFromDictionary();
    QCOMPARE(importer.getField(0)->valueLabels, labels);
    QCOMPARE(importer.getField(0)->minValue, min);
    QCOMPARE(importer.getField(0)->maxValue, max);
}

void tst_CSProDataImport::anEmptyListOfValueSets()
{
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 5);
    item->decimal = 2;
    TCSProItem* described = importer.addItem(QStringLiteral("B"), 5);
    described->decimal = 2;
    importer.addSet(described, {});
    importer.copyDataFromDictionary();
    // Decimals shorten the range of an item without value sets only.
    QCOMPARE(importer.getField(0)->maxValue, QString("999"));
    QCOMPARE(importer.getField(1)->maxValue, QString("99999"));
}

void tst_CSProDataImport::parsedValueSets_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QString>("labels");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max");
    QTest::addColumn<QString>("missing");

    row("missing code is no entry",
        QByteArray("Len=1\n[ValueSet]\nValue=1;Yes\nValue=2;No\nValue=9;x\nName=MISSING ,Special"),
        "1 Yes\t2 No\t", "1", "2", "9");
    row("missing code without the blank is an entry",
        QByteArray("Len=1\n[ValueSet]\nValue=1;Yes\nValue=2;No\nValue=9;x\nName=MISSING,Special"),
        "1 Yes\t2 No\t9 x\t", "1", "9", "");
    row("range", QByteArray("Len=3\n[ValueSet]\nValue=20:30;b\nValue=1;a"), "1 a\t20 b\t30 b\t",
        "1", "30", "");
    row("dropped set", QByteArray("Len=3\n[ValueSet]\nValue=x;b"), "", "0", "999", "");
    row("long codes", QByteArray("Len=10\n[ValueSet]\nValue=0012345678;a"), "0012345678 a\t",
        "1.23457e+07", "1.23457e+07", "");
    row("text", QByteArray("Len=3\nDataType=Alpha\n[ValueSet]\nValue='A';a\nValue='B';b"),
        "B b\tA a\t", "0", "", "");
}

void tst_CSProDataImport::parsedValueSets()
{
    QFETCH(QByteArray, item);
    QFETCH(QString, labels);
    QFETCH(QString, min);
    QFETCH(QString, max);
    QFETCH(QString, missing);
    const Opened importer("[Item]\nName=A\n" + item);
    const TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->valueLabels, labels);
    QCOMPARE(field->minValue, min);
    QCOMPARE(field->maxValue, max);
    QCOMPARE(field->missingValue, missing);
}

// The missing entry of a set that keeps it bounds the range, but is not among the labels.
void tst_CSProDataImport::missingCodeOfADictionary()
{
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 1);
    item->missingCode = QStringLiteral("9");
    importer.addSet(item, { "1", "Yes", "2", "No", "!9", "Missing" });
    item->getValueSet(0)->getValueSetItem(2)->type = 1;
    importer.copyDataFromDictionary();
    TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->valueLabels, QString("1 Yes\t2 No\t"));
    QCOMPARE(field->minValue, QString("1"));
    QCOMPARE(field->maxValue, QString("9"));
    QCOMPARE(field->missingValue, QString("9"));
    field->setAsString("9");
    QVERIFY(field->isMissing());
}

void tst_CSProDataImport::valueSetsAsAPlainLoopReadsThem()
{
    QRandomGenerator random(3);
    const QStringList odd { "x", "", "-0", "0", "1e3", "1.5e-7", "123456.7", "0.0000123", "-1e15",
        "999999", "1000000", "-999999.5", "2147483648", "1 2", "1:5", " 12", ".", "5." };
    for (int turn = 0; turn < 3000; ++turn) {
        HandMade importer;
        TCSProItem* item = importer.addItem(QStringLiteral("A"), 4);
        item->isAlpha = random.bounded(4) == 0 ? 1 : 0;
        item->decimal = random.bounded(3) == 0 ? 1 : 0;
        for (int sets = random.bounded(3) + 1; sets > 0; --sets) {
            QStringList entries;
            for (int i = random.bounded(turn % 10 == 0 ? 60 : 6); i > 0; --i) {
                const QString code = random.bounded(3) == 0
                    ? odd.at(random.bounded(odd.size()))
                    : QString::number(static_cast<int>(random.generate()) >> random.bounded(32));
                entries.append((random.bounded(5) == 0 ? QStringLiteral("!") : QString()) + code);
                entries.append(QStringLiteral("label %1").arg(i));
            }
            importer.addSet(item, entries);
        }
        importer.copyDataFromDictionary();
        const TCSProVariable* field = importer.variable(0);

        double min = 0;
        double max = 0;
        bool hasBounds = false;
        const TCSProValueSet* first = item->getValueSet(0);
        if (item->isAlpha == 0 && first->getCount() > 0) {
            bool isLow = false;
            bool isHigh = false;
            const double low = first->getValueSetItem(0)->code.toDouble(&isLow);
            const double high =
                first->getValueSetItem(first->getCount() - 1)->code.toDouble(&isHigh);
            hasBounds = isLow && isHigh;
            min = hasBounds ? low : 0;
            max = hasBounds ? high : 0;
        }
        QString labels;
        for (int set = 0; set < item->getCount(); ++set) {
            for (int i = 0; i < item->getValueSet(set)->getCount(); ++i) {
                const TValueSetItem* entry = item->getValueSet(set)->getValueSetItem(i);
                if (entry->special)
                    continue;
                QString code = entry->code;
                if (item->isAlpha == 0) {
                    bool isNumber = false;
                    const double number = code.toDouble(&isNumber);
                    if (!isNumber)
                        continue;
                    if (number > max)
                        max = number;
                    if (number < min)
                        min = number;
                    if (item->decimal == 0)
                        code = QString::number(number, 'g', 6);
                }
                labels += code + QStringLiteral(" ") + entry->label + QStringLiteral("\t");
            }
        }
        QCOMPARE(field->valueLabels, labels);
        QCOMPARE(field->minValue, QString::number(min, 'g', 6));
        QCOMPARE(field->maxValue,
            hasBounds                ? QString::number(max, 'g', 6)
                : item->isAlpha == 0 ? QStringLiteral("9999")
                                     : QString());
    }
}

void tst_CSProDataImport::occurrencesShareTheirLabels()
{
    const Opened importer("[Item]\nName=ID\nLen=1\n[Item]\nName=C\nLen=1\nOccurrences=20\n"
                          "[ValueSet]\nValue=1;Yes\nValue=2;No\nValue=9;x\nName=MISSING ,Special\n"
                          "[Item]\nName=D\nLen=1\n[ValueSet]\nValue=3;three\n");
    QCOMPARE(importer.fields->size(), 22);
    const TGenericField* first = importer.getField(1);
    QCOMPARE(first->valueLabels, QString("1 Yes\t2 No\t"));
    for (int i = 2; i <= 20; ++i) {
        QCOMPARE(importer.getField(i)->valueLabels, first->valueLabels);
        QVERIFY(importer.getField(i)->valueLabels.isSharedWith(first->valueLabels));
        QCOMPARE(importer.getField(i)->minValue, QString("1"));
        QCOMPARE(importer.getField(i)->maxValue, QString("2"));
        QCOMPARE(importer.getField(i)->missingValue, QString(i == 20 ? "9" : ""));
    }
    QCOMPARE(importer.getField(21)->valueLabels, QString("3 three\t"));
    QCOMPARE(importer.getField(21)->minValue, QString("3"));
    QCOMPARE(importer.getField(21)->maxValue, QString("3"));
}

// One set means something else to each type of field.
void tst_CSProDataImport::itemsOfOneSetAndSeveralTypes()
{
    HandMade importer;
    TCSProItem* integer = importer.addItem(QStringLiteral("I"), 3);
    TCSProItem* real = importer.addItem(QStringLiteral("R"), 3);
    real->decimal = 1;
    TCSProItem* text = importer.addItem(QStringLiteral("T"), 3, true);
    TCSProItem* integerAgain = importer.addItem(QStringLiteral("J"), 5);
    TCSProItem* undescribed = importer.addItem(QStringLiteral("U"), 2);
    TCSProItem* longer = importer.addItem(QStringLiteral("L"), 3);
    TCSProValueSet* set = importer.addSet(integer, { "01", "a", "x", "b", "02", "c" });
    for (TCSProItem* item : { real, text, integerAgain, longer })
        item->valueSets->append(set);
    importer.addSet(longer, { "7", "d" });
    importer.copyDataFromDictionary();
    QStringList found;
    for (const TGenericField* field : qAsConst(*importer.fields))
        found.append(field->valueLabels + field->minValue + QLatin1Char('-') + field->maxValue);
    QCOMPARE(found,
        (QStringList { "1 a\t2 c\t1-2", "01 a\t02 c\t1-2", "01 a\tx b\t02 c\t0-", "1 a\t2 c\t1-2",
            "0-99", "1 a\t2 c\t7 d\t1-7" }));
    QVERIFY(undescribed->valueSets->isEmpty());
}

void tst_CSProDataImport::specialCodesOfTheItem()
{
    TCSProDataImport importer;
    TCSProItem item;
    item.missingCode = QStringLiteral(" 9");
    item.notApplicableCode = QStringLiteral("8 ");
    TCSProVariable field(&importer);
    field.item = &item;
    field.missingValue = QStringLiteral("old");
    field.notApplicableValue = QStringLiteral("old");
    importer.getVarMissingValue(&field);
    QCOMPARE(field.missingValue, QString(" 9"));
    QCOMPARE(field.notApplicableValue, QString("old"));
    importer.getNotApplicable(&field);
    QCOMPARE(field.notApplicableValue, QString("8 "));
    item.missingCode.clear();
    item.notApplicableCode.clear();
    importer.getVarMissingValue(&field);
    importer.getNotApplicable(&field);
    QCOMPARE(field.missingValue, QString());
    QCOMPARE(field.notApplicableValue, QString());
}

// A field without an item keeps what it has.
void tst_CSProDataImport::specialCodesOfAnyOtherField()
{
    TCSProDataImport importer;
    TCSProVariable field(&importer);
    field.missingValue = QStringLiteral("9");
    field.notApplicableValue = QStringLiteral("8");
    importer.getVarMissingValue(&field);
    importer.getNotApplicable(&field);
    QCOMPARE(field.missingValue, QString("9"));
    QCOMPARE(field.notApplicableValue, QString("8"));
}

void tst_CSProDataImport::stringOfChar_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("text");
    row("three", 3, "xxx");
    row("one", 1, "x");
    row("none", 0, "");
    row("fewer than none", -1, "");
    row("far fewer", -2147483647, "");
}

void tst_CSProDataImport::stringOfChar()
{
    QFETCH(int, count);
    QFETCH(QString, text);
    TCSProDataImport importer;
    QCOMPARE(importer.StringOfChar('x', count), text);
}

void tst_CSProDataImport::variableStartValues()
{
    TCSProDataImport importer;
    TCSProVariable field(&importer);
    QCOMPARE(field.group, QString());
    QVERIFY(!field.item);
    QCOMPARE(field.owner, &importer);
    QCOMPARE(field.getGroup(), QString());
    field.group = QStringLiteral("PERSON");
    TGenericField& base = field;
    QCOMPARE(base.getGroup(), QString("PERSON"));
    QCOMPARE(field.fieldType, 0);
    QCOMPARE(field.realValue, NoValue);
    base.addValueLabel("1", "one");
    QCOMPARE(field.valueLabels, QString());
}

void tst_CSProDataImport::assignedText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<bool>("itemHasDecimalChar");
    QTest::addColumn<QString>("value");
    QTest::addColumn<double>("real");
    QTest::addColumn<double>("integer"); // 77 before

    const int integer = 1;
    const int real = 2;
    const int text = 3;
    row("integer sets both numbers", integer, "0", false, "12", 12.0, 12.0);
    row("integer with blanks around", integer, "0", false, " 12 ", 12.0, 12.0);
    row("integer below zero", integer, "0", false, "-4", -4.0, -4.0);
    row("integer with a point", integer, "0", false, "1.5", 1.5, 1.5);
    row("integer with an exponent", integer, "0", false, "1e3", 1000.0, 1000.0);
    row("integer is never scaled", integer, "2", false, "1234", 1234.0, 1234.0);
    row("integer that is no number", integer, "0", false, "abc", 0.0, 0.0);
    row("integer of zeros", integer, "0", false, "000", 0.0, 0.0);
    row("integer too large for any number", integer, "0", false, "1e999", 0.0, 0.0);
    row("real too large for any number", real, "0", false, "1e999", 0.0, 77.0);
    row("real", real, "0", false, "12.5", 12.5, 77.0);
    row("real that is no number", real, "0", false, "abc", 0.0, 77.0);
    row("real with blanks around", real, "0", false, "  1234 ", 1234.0, 77.0);
    row("real scaled by its decimals", real, "2", false, "1234", 12.34, 77.0);
    row("real with its own point is not scaled", real, "2", true, "1234", 1234.0, 77.0);
    row("real without decimals", real, "", false, "1234", 1234.0, 77.0);
    row("real with one character for decimals", real, character(2), false, "1234", 1234.0, 77.0);
    row("real with negative decimals", real, "-1", false, "5", 50.0, 77.0);
    row("text leaves the numbers alone", text, "", false, "12", 99.0, 77.0);
    row("type 0 leaves the numbers alone", 0, "", false, "12", 99.0, 77.0);
}

void tst_CSProDataImport::assignedText()
{
    QFETCH(int, type);
    QFETCH(QString, decimals);
    QFETCH(bool, itemHasDecimalChar);
    QFETCH(QString, value);
    QFETCH(double, real);
    QFETCH(double, integer);
    // The item decides about the point; the field's own flag does not count.
    for (bool fieldHasDecimalChar : { true, false }) {
        TCSProDataImport importer;
        TCSProItem item;
        item.hasDecimalChar = itemHasDecimalChar;
        TCSProVariable field(&importer);
        field.item = &item;
        field.fieldType = type;
        field.decimals = decimals;
        field.hasDecimalChar = fieldHasDecimalChar;
        field.length = 8;
        field.realValue = 99;
        field.integerValue = 77;
        field.setAsString(value);
        QCOMPARE(field.realValue, real);
        QCOMPARE(field.integerValue, integer);
        QCOMPARE(field.conversionFailed, false);
        if (type != 0) {
            QCOMPARE(textOf(field), value);
        } else {
            QCOMPARE(static_cast<unsigned>(field.text[0]), 0x15151515U);
            QCOMPARE(static_cast<unsigned>(field.text[1]), 0x15151515U);
            QCOMPARE(static_cast<unsigned>(field.text[2]), 0U);
        }
    }
}

void tst_CSProDataImport::assignedThroughTheBase_data()
{
    QTest::addColumn<bool>("fieldHasDecimalChar");
    QTest::addColumn<bool>("itemHasDecimalChar");
    QTest::addColumn<double>("real");
    row("the field's flag counts: no scaling", true, false, 1234.0);
    row("the field's flag counts: scaling", false, true, 12.34);
}

// Text from a wide string, or through the base, goes the base's way.
void tst_CSProDataImport::assignedThroughTheBase()
{
    QFETCH(bool, fieldHasDecimalChar);
    QFETCH(bool, itemHasDecimalChar);
    QFETCH(double, real);
    TCSProDataImport importer;
    TCSProItem item;
    item.hasDecimalChar = itemHasDecimalChar;
    TCSProVariable field(&importer);
    field.item = &item;
    field.fieldType = 2;
    field.decimals = QStringLiteral("2");
    field.hasDecimalChar = fieldHasDecimalChar;
    field.length = 6;
    field.setAsStringChar(L"  1234");
    QCOMPARE(field.realValue, real);
    field.realValue = 0;
    TGenericField& base = field;
    base.setAsString("  1234");
    QCOMPARE(field.realValue, real);
    field.conversionFailed = true;
    field.setAsStringChar(L"5");
    QCOMPARE(field.conversionFailed, false);
}

void tst_CSProDataImport::aShorterTextReplacesALongerOne()
{
    TCSProDataImport importer;
    TCSProItem item;
    TCSProVariable field(&importer);
    field.item = &item;
    field.fieldType = 3;
    field.length = 5;
    field.setAsString("abcdefgh");
    QCOMPARE(textOf(field), QString("abcde"));
    field.setAsString("xy");
    QCOMPARE(textOf(field), QString("xy"));
    QVERIFY(std::all_of(field.text + 2, field.text + 5, [](wchar_t c) { return c == L'\0'; }));
    field.setAsString(QString::fromLatin1("ab\0cd", 5));
    QCOMPARE(textOf(field), QString("ab"));
    QVERIFY(std::all_of(field.text + 2, field.text + 5, [](wchar_t c) { return c == L'\0'; }));
    field.length = 3;
    field.setAsString(QString());
    QCOMPARE(textOf(field), QString());

    // A number is read from the whole text, not from what was kept of it.
    field.fieldType = 1;
    field.setAsString("12345");
    QCOMPARE(textOf(field), QString("123"));
    QCOMPARE(field.integerValue, 12345.0);
}

void tst_CSProDataImport::parsedFieldsAreNotScaled_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("type");
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");

    row("implied decimals", QByteArray("Len=5\nDecimal=2"), "12345", 2, 12345.0, "12345");
    row("written decimals", QByteArray("Len=6\nDecimal=2\nDecimalChar=Yes"), "123.45", 2, 123.45,
        "123.45");
    row("written decimals without the flag", QByteArray("Len=6\nDecimal=2"), "123.45", 2, 123.45,
        "123.45");
    row("long number", QByteArray("Len=10"), "0012345678", 2, 12345678.0, "1.23457e+07");
    row("nine digits", QByteArray("Len=9"), "001200000", 1, 1200000.0, "1.2e+06");
    row("short number", QByteArray("Len=3"), " 42", 1, 42.0, "42");
    row("text", QByteArray("Len=3\nDataType=Alpha"), "4.5", 3, 4.5, "4.5");
}

void tst_CSProDataImport::parsedFieldsAreNotScaled()
{
    QFETCH(QByteArray, item);
    QFETCH(QString, value);
    QFETCH(int, type);
    QFETCH(double, number);
    QFETCH(QString, text);
    const Opened importer("[Item]\nName=A\n" + item);
    TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->fieldType, type);
    field->setAsString(value);
    QCOMPARE(field->getAsFloat(), number);
    QCOMPARE(field->getAsInteger(), type == 3 ? 0 : static_cast<int>(number));
    QCOMPARE(field->getAsString(), text);
}

void tst_CSProDataImport::missing_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("missing");

    row("the code", "9", "9", true);
    row("another value", "9", "8", false);
    row("blank before", "9", " 9", false);
    row("blank behind", "9", "9 ", false);
    row("code with a blank", " 9", " 9", true);
    row("code with a blank, value without", " 9", "9", false);
    row("same number, other digits", "9", "09", false);
    row("case counts", "na", "NA", false);
    row("letters", "NA", "NA", true);
    row("no code, no value", "", "", false);
    row("no code", "", "9", false);
    row("longer value", "9", "99", false);
    row("value cut to the length", "9999", "99999", true);
    row("blank code", " ", " ", true);
}

void tst_CSProDataImport::missing()
{
    QFETCH(QString, code);
    QFETCH(QString, value);
    QFETCH(bool, missing);
    for (int type : { 1, 2, 3 }) {
        TCSProDataImport importer;
        TCSProItem item;
        item.missingCode = code;
        TCSProVariable field(&importer);
        field.item = &item;
        field.fieldType = type;
        field.length = 4;
        field.setAsString(value);
        QCOMPARE(field.isMissing(), missing);
        QCOMPARE(field.isNotApplicable(), false);
        // The item's code counts, not the field's copy.
        field.missingValue = QStringLiteral("x");
        QCOMPARE(field.isMissing(), missing);
        field.conversionFailed = true;
        QCOMPARE(field.isMissing(), true);
        QCOMPARE(field.isNotApplicable(), false);
    }
}

void tst_CSProDataImport::notApplicable_data()
{
    missing_data();
}

void tst_CSProDataImport::notApplicable()
{
    QFETCH(QString, code);
    QFETCH(QString, value);
    QFETCH(bool, missing);
    for (int type : { 1, 2, 3 }) {
        TCSProDataImport importer;
        TCSProItem item;
        item.notApplicableCode = code;
        TCSProVariable field(&importer);
        field.item = &item;
        field.fieldType = type;
        field.length = 4;
        field.setAsString(value);
        QCOMPARE(field.isNotApplicable(), missing);
        QCOMPARE(field.isMissing(), false);
        field.notApplicableValue = QStringLiteral("x");
        QCOMPARE(field.isNotApplicable(), missing);
    }
}

void tst_CSProDataImport::blank_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("blank");

    row("nothing", "", true);
    row("blanks", "   ", true);
    row("tab", "\t", true);
    row("no-break space", QStringLiteral("\u00a0"), true);
    row("value", "1", false);
    row("value among blanks", "  1", false);
    row("blanks as far as the length", "    1", true);
}

void tst_CSProDataImport::blank()
{
    QFETCH(QString, value);
    QFETCH(bool, blank);
    TCSProDataImport importer;
    TCSProItem item;
    TCSProVariable field(&importer);
    QCOMPARE(field.isBlank(), true);
    field.item = &item;
    field.fieldType = 3;
    field.length = 4;
    field.setAsString(value);
    QCOMPARE(field.isBlank(), blank);
}

void tst_CSProDataImport::specialTextsKeepTheNumbers_data()
{
    QTest::addColumn<QString>("value");
    row("missing", "9");
    row("not applicable", "8");
    row("blank", " ");
    row("nothing", "");
}

void tst_CSProDataImport::specialTextsKeepTheNumbers()
{
    QFETCH(QString, value);
    for (int type : { 0, 1, 2, 3 }) {
        TCSProDataImport importer;
        TCSProItem item;
        item.missingCode = QStringLiteral("9");
        item.notApplicableCode = QStringLiteral("8");
        TCSProVariable field(&importer);
        field.item = &item;
        field.fieldType = type;
        field.length = 1;
        field.realValue = 5.5;
        field.integerValue = 6;
        field.setAsString(value);
        QCOMPARE(field.realValue, 5.5);
        QCOMPARE(field.integerValue, 6.0);
        QCOMPARE(textOf(field), value);
    }
}

void tst_CSProDataImport::aFailedConversion_data()
{
    QTest::addColumn<int>("failure");
    row("standard exception", 1);
    row("error object", 2);
    row("anything else", 3);
}

void tst_CSProDataImport::aFailedConversion()
{
    QFETCH(int, failure);
    TCSProDataImport importer;
    TCSProItem item;
    for (bool flag : { false, true }) {
        FailingVariable field(&importer);
        field.item = &item;
        field.fieldType = 1;
        field.length = 4;
        field.realValue = 5.5;
        field.integerValue = 6;
        field.conversionFailed = flag;
        field.failure = failure;
        field.setAsString("12");
        QCOMPARE(textOf(field), QString("12"));
        QCOMPARE(field.conversionFailed, flag);
        // A field that counts as missing is not even looked at.
        QCOMPARE(field.integerValue, flag ? 6.0 : 0.0);
        QCOMPARE(field.realValue, flag ? 5.5 : NoValue);

        field.conversionFailed = false;
        field.setAsStringChar(L"12");
        QCOMPARE(field.conversionFailed, true);
        QCOMPARE(field.integerValue, 0.0);
    }
}

void tst_CSProDataImport::conversionFailedIsLeftAlone()
{
    TCSProDataImport importer;
    TCSProItem item;
    TCSProVariable field(&importer);
    field.item = &item;
    field.fieldType = 1;
    field.length = 3;
    field.missingValue = QStringLiteral("99");
    field.conversionFailed = true;
    field.integerValue = 6;
    field.setAsString("12");
    QCOMPARE(field.conversionFailed, true);
    QCOMPARE(textOf(field), QString("12"));
    QCOMPARE(field.integerValue, 6.0);
    QCOMPARE(field.getAsString(), QString("99"));
    QCOMPARE(field.getAsInteger(), 99);
    field.conversionFailed = false;
    field.setAsString("abc");
    QCOMPARE(field.conversionFailed, false);
    QCOMPARE(field.getAsString(), QString("0"));
}

void tst_CSProDataImport::specialTextsAsText()
{
    const Opened importer("[Item]\nName=A\nLen=2\n[ValueSet]\nValue=1;x\nValue=99;m\n"
                          "Name=MISSING ,Special\nValue=88;n\nName=NOTAPPL ,Special\n");
    TCSProVariable* field = importer.variable(0);
    field->setAsString("99");
    QCOMPARE(field->getAsString(), QString("99"));
    QCOMPARE(field->getAsInteger(), 99);
    QCOMPARE(field->getAsFloat(), 99.0);
    field->setAsString("1");
    QCOMPARE(field->getAsString(), QString("1"));
    QVERIFY(!field->isMissing());
    field->setAsString("88");
    QCOMPARE(field->getAsString(), QString("88"));
    QVERIFY(field->isNotApplicable());
    // The number is that of the assignment before.
    QCOMPARE(field->getAsInteger(), 1);
    field->setAsString("  ");
    QCOMPARE(field->getAsString(), QString());
    QVERIFY(field->isBlank());
}

void tst_CSProDataImport::openReadMakesTheGroupsItMisses()
{
    const DictionaryFile file(twoRecordTypes);
    TCSProDataImport importer;
    delete importer.groups;
    importer.groups = nullptr;
    importer.openRead(file.path());
    QVERIFY(importer.groups);
    QCOMPARE(*importer.groups, (QStringList { "HOUSE=1", "PERSON=2" }));
}

QTEST_MAIN(tst_CSProDataImport)

#include "tst_CSProDataImport.moc"
