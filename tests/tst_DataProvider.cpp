#include "BareField.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DataImport.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/GenericField.h>
#include <model_Tessel/LoaderManager.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

namespace {

class Field : public BareField {
public:
    explicit Field(const QString& fieldName)
        : BareField(nullptr)
    {
        name = fieldName;
    }
};

// An importer of any type, with one field and a dictionary of its own for layout sources.
class Importer : public TDataImport {
public:
    using TDataImport::getDictionary;

    explicit Importer(const QString& providerType)
        : type(providerType)
    {
        addField(&m_field);
    }
    ~Importer() override
    {
        delete fields;
    }

    QString getDataProviderId() override
    {
        return type + "_id";
    }
    QString getDataProviderType() override
    {
        return type;
    }
    void getDictionary(QList<TOxSourceField*>* list, QStringList* layoutSources) override
    {
        layoutLists.append(layoutSources);
        auto* field = new TOxSourceField;
        field->fieldName = "FROM_LAYOUT";
        list->append(field);
    }
    int getRecordTypeStart() override
    {
        return 3;
    }
    int getRecordTypeSize() override
    {
        return 2;
    }

    QString type;
    QList<QStringList*> layoutLists; // what the overload for layout sources got

private:
    Field m_field = Field("FROM_FIELDS");
};

// A provider that deletes what it was filled with.
class Provider : public TOxDataProvider {
public:
    ~Provider() override
    {
        qDeleteAll(*fields);
        if (recordTree)
            delete recordTree->references;
        delete recordTree;
    }

    TOxSourceField& add(const QString& name, const QString& record = QString())
    {
        auto* field = new TOxSourceField;
        field->fieldName = name;
        field->record = record;
        fields->append(field);
        return *field;
    }
    QStringList fieldNames() const
    {
        QStringList names;
        for (const TOxSourceField* field : qAsConst(*fields))
            names << field->fieldName;
        return names;
    }
};

// A root with two children, whose codes are "A", "B" and "C".
class ThreeRecords {
public:
    ThreeRecords()
    {
        for (TOxRecord* record : { &root, &first, &second }) {
            const QChar code = QLatin1Char(static_cast<char>('A' + m_lists.size()));
            record->recordType = code;
            record->recordChar = code.toLower();
            m_lists.emplace_back(record->references);
        }
        root.addChild(&first);
        root.addChild(&second);
    }

    TOxRecord root;
    TOxRecord first;
    TOxRecord second;

private:
    std::vector<std::unique_ptr<QList<TOxRecordReference*>>> m_lists;
};

int codeOf(const std::function<void()>& call, QString* text = nullptr)
{
    try {
        call();
    } catch (OxErrorManager* thrown) {
        const std::unique_ptr<OxErrorManager> error(thrown);
        if (text)
            *text = error->text;
        return error->code;
    }
    return 0;
}

} // namespace

class tst_DataProvider : public QObject {
    Q_OBJECT

private slots:
    void init();

    void defaults();
    void fieldsStandInDeclarationOrder();
    void destructorLeavesTheFields();
    void plainAccessors();
    void recordTypesStay();
    void fileNames();
    void setDataProviderType_data();
    void setDataProviderType();
    void setDataProviderTypeOfAddedNames();

    void getField_data();
    void getField();
    void getFieldTakesTheFirst();
    void getFieldFromRecord_data();
    void getFieldFromRecord();
    void fieldsOfAMissingList();
    void getRecord();
    void getRecordWithoutTree();

    void openDataProvider_data();
    void openDataProvider();
    void closeDataProvider();

    void getRecordTypeValue_data();
    void getRecordTypeValue();
    void getRecordType_data();
    void getRecordType();
    void getRecordTypeTakesTheFirstInPreOrder();
    void getRecordTypeWithoutTree();

    void findFieldWithoutRegistry();
    void findFieldInTheEmptyRegistry();
    void findFieldOfAnAddedType();

    void genericGetFields();
    void genericGetFieldsOfTypes_data();
    void genericGetFieldsOfTypes();
    void genericGetFieldsOfUnknownTypeKeepsTheOlder();
    void genericGetFieldsTwice();
    void genericGetFieldsOfCSPro();
};

void tst_DataProvider::init()
{
    pLoaderManager = nullptr;
}

void tst_DataProvider::defaults()
{
    static_assert(std::has_virtual_destructor<TOxDataProvider>::value, "hosts derive from it");
    const TOxDataProvider provider;
    QVERIFY(!provider.importData);
    QVERIFY(!provider.recordTree);
    QVERIFY(provider.fields);
    QVERIFY(provider.fields->isEmpty());
    QVERIFY(provider.layoutSources);
    QVERIFY(provider.layoutSources->isEmpty());
    QCOMPARE(*provider.providerTypeNames, QStringList({ "NONE", "CSPRO", "CSV", "SSPS", "STATA" }));
    for (const QString& text :
        { provider.recordTypeValue, provider.currentLine, provider.recordTypeChar,
            provider.alternateFile, provider.dataProviderId, provider.dataProviderLabel,
            provider.dataProviderTypeName, provider.layoutFileName, provider.dataFileName })
        QCOMPARE(text, QString());
    QCOMPARE(provider.dataProviderTypeIndex, 0);
    QCOMPARE(provider.recordTypeStart, 0);
    QCOMPARE(provider.recordTypeSize, 0);
    QCOMPARE(provider.recordTypes, 0);
    QCOMPARE(provider.references, 0);
    QVERIFY(provider.recordTypeList.isEmpty());
}

void tst_DataProvider::fieldsStandInDeclarationOrder()
{
    const TOxDataProvider p;
    const std::vector<const void*> addresses = { &p.importData, &p.recordTypeValue, &p.currentLine,
        &p.recordTypeChar, &p.alternateFile, &p.recordTree, &p.fields, &p.dataProviderId,
        &p.dataProviderLabel, &p.dataProviderTypeIndex, &p.dataProviderTypeName, &p.recordTypeStart,
        &p.recordTypeSize, &p.layoutFileName, &p.dataFileName, &p.recordTypes, &p.references,
        &p.recordTypeList, &p.layoutSources, &p.providerTypeNames };
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_DataProvider::destructorLeavesTheFields()
{
    TOxSourceField field;
    field.fieldName = "AGE";
    TOxRecord tree;
    const std::unique_ptr<QList<TOxRecordReference*>> references(tree.references);
    auto* provider = new TOxDataProvider;
    provider->fields->append(&field);
    provider->recordTree = &tree;
    delete provider;
    QCOMPARE(field.fieldName, QString("AGE"));
    QVERIFY(!tree.firstChild);
}

void tst_DataProvider::plainAccessors()
{
    Importer importer("CSV");
    TOxDataProvider provider;
    provider.setDataProviderId("id");
    provider.setDataProviderLabel("label");
    provider.setRecordTypeStart(4);
    provider.setRecordTypeSize(2);
    provider.setReferences(7);
    provider.setImportData(&importer);
    provider.recordTypeList << "1"
                            << "2";
    QCOMPARE(provider.getDataProviderId(), QString("id"));
    QCOMPARE(provider.dataProviderId, QString("id"));
    QCOMPARE(provider.getDataProviderLabel(), QString("label"));
    QCOMPARE(provider.dataProviderLabel, QString("label"));
    QCOMPARE(provider.getRecordTypeStart(), 4);
    QCOMPARE(provider.recordTypeStart, 4);
    QCOMPARE(provider.getRecordTypeSize(), 2);
    QCOMPARE(provider.recordTypeSize, 2);
    QCOMPARE(provider.getReferences(), 7);
    QCOMPARE(provider.references, 7);
    QCOMPARE(provider.getImportData(), &importer);
    QCOMPARE(provider.importData, &importer);
    QCOMPARE(provider.getRecordTypeList(), QStringList({ "1", "2" }));
}

void tst_DataProvider::recordTypesStay()
{
    TOxDataProvider provider;
    provider.setRecordTypes(5);
    QCOMPARE(provider.getRecordTypes(), 0);
    provider.recordTypes = 3;
    provider.setRecordTypes(5);
    QCOMPARE(provider.getRecordTypes(), 3);
}

void tst_DataProvider::fileNames()
{
    TOxDataProvider provider;
    provider.setLayoutFileName("dir/layout.dcf");
    provider.setDataFileName("dir/data.dat");
    QCOMPARE(provider.layoutFileName, QString("dir/layout.dcf"));
    QCOMPARE(provider.dataFileName, QString("dir/data.dat"));
    QCOMPARE(provider.getLayoutFileName(), QDir::toNativeSeparators("dir/layout.dcf"));
    QCOMPARE(provider.getDataFileName(), QDir::toNativeSeparators("dir/data.dat"));

    provider.setLayoutFileName("DIR/layout.dcf");
    provider.setDataFileName("DIR/data.dat");
    QCOMPARE(provider.layoutFileName, QString("DIR/layout.dcf"));
    QCOMPARE(provider.dataFileName, QString("DIR/data.dat"));

    provider.setLayoutFileName(QString());
    provider.setDataFileName(QString());
    QCOMPARE(provider.getLayoutFileName(), QString());
    QCOMPARE(provider.getDataFileName(), QString());
}

void tst_DataProvider::setDataProviderType_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");

    QTest::newRow("CSPRO") << "CSPRO" << 1;
    QTest::newRow("CSV") << "CSV" << 2;
    QTest::newRow("SSPS, as the list has it") << "SSPS" << 3;
    QTest::newRow("STATA") << "STATA" << 4;
    QTest::newRow("SPSS, not in the list") << "SPSS" << 0;
    QTest::newRow("NONE") << "NONE" << 0;
    QTest::newRow("other case") << "Csv" << 0;
    QTest::newRow("empty") << "" << 0;
}

void tst_DataProvider::setDataProviderType()
{
    QFETCH(QString, name);
    QFETCH(int, index);
    TOxDataProvider provider;
    provider.setDataProviderType(name);
    QCOMPARE(provider.getDataProviderTypeIndex(), index);
    QCOMPARE(provider.dataProviderTypeIndex, index);
    QCOMPARE(provider.getDataProviderType(), index > 0 ? name : QString());

    TOxDataProvider older;
    older.setDataProviderType("STATA");
    older.setDataProviderType(name);
    QCOMPARE(older.getDataProviderTypeIndex(), index > 0 ? index : 4);
    QCOMPARE(older.getDataProviderType(), index > 0 ? name : QString("STATA"));
}

void tst_DataProvider::setDataProviderTypeOfAddedNames()
{
    TOxDataProvider provider;
    provider.providerTypeNames->append("ODS");
    provider.setDataProviderType("ODS");
    QCOMPARE(provider.getDataProviderTypeIndex(), 5);
    QCOMPARE(provider.getDataProviderType(), QString("ODS"));
}

void tst_DataProvider::getField_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");

    QTest::newRow("first") << "AGE" << 0;
    QTest::newRow("last") << "SEX" << 2;
    QTest::newRow("other case") << "age" << -1;
    QTest::newRow("missing") << "NAME" << -1;
    QTest::newRow("empty, as one field's name") << "" << 1;
}

void tst_DataProvider::getField()
{
    QFETCH(QString, name);
    QFETCH(int, index);
    Provider provider;
    provider.add("AGE");
    provider.add("");
    provider.add("SEX");
    QCOMPARE(provider.getField(name), index < 0 ? nullptr : provider.fields->at(index));
    QCOMPARE(provider.getFieldName(name), index < 0 ? QString() : name);
}

void tst_DataProvider::getFieldTakesTheFirst()
{
    Provider provider;
    TOxSourceField& first = provider.add("AGE", "PERSON");
    provider.add("AGE");
    QCOMPARE(provider.getField("AGE"), &first);
}

void tst_DataProvider::getFieldFromRecord_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("record");
    QTest::addColumn<int>("index");

    QTest::newRow("first of its record") << "ID"
                                         << "HOUSING" << 0;
    QTest::newRow("later of its record") << "ID"
                                         << "PERSON" << 1;
    QTest::newRow("record in the other case") << "ID"
                                              << "person" << 1;
    QTest::newRow("field's record in lower case") << "AGE"
                                                  << "PERSON" << 2;
    QTest::newRow("name in the other case") << "id"
                                            << "PERSON" << -1;
    QTest::newRow("other record, field of any record") << "ID"
                                                       << "DEATH" << 3;
    QTest::newRow("no record, field of any record") << "ID"
                                                    << "" << 3;
    QTest::newRow("no record, field of one record") << "AGE"
                                                    << "" << -1;
    QTest::newRow("other record, field of one record") << "AGE"
                                                       << "HOUSING" << -1;
    QTest::newRow("field of any record comes first") << "SEX"
                                                     << "PERSON" << 4;
    QTest::newRow("missing field") << "NAME"
                                   << "PERSON" << -1;
    QTest::newRow("upper case of another length") << "STREET"
                                                  << "STRASSE" << 6;
}

void tst_DataProvider::getFieldFromRecord()
{
    QFETCH(QString, name);
    QFETCH(QString, record);
    QFETCH(int, index);
    Provider provider;
    provider.add("ID", "HOUSING");
    provider.add("ID", "PERSON");
    provider.add("AGE", "person");
    provider.add("ID");
    provider.add("SEX");
    provider.add("SEX", "PERSON");
    provider.add("STREET", "Stra\u00dfe");
    QCOMPARE(provider.getFieldFromRecord(name, record),
        index < 0 ? nullptr : provider.fields->at(index));
}

void tst_DataProvider::fieldsOfAMissingList()
{
    TOxDataProvider provider;
    delete provider.fields;
    provider.fields = nullptr;
    QVERIFY(!provider.getField("AGE"));
    QCOMPARE(provider.getFieldName("AGE"), QString());
    QVERIFY(!provider.getFieldFromRecord("AGE", "PERSON"));
}

void tst_DataProvider::getRecord()
{
    TOxRecord root;
    TOxRecord child;
    const std::unique_ptr<QList<TOxRecordReference*>> lists[] = {
        std::unique_ptr<QList<TOxRecordReference*>>(root.references),
        std::unique_ptr<QList<TOxRecordReference*>>(child.references)
    };
    root.name = "HOUSING";
    child.name = "COMMON";
    root.addChild(&child);
    TOxDataProvider provider;
    provider.recordTree = &root;
    QCOMPARE(provider.getRecord("HOUSING"), &root);
    QCOMPARE(provider.getRecord("COMMON"), &child);
    QCOMPARE(provider.getRecord("Common"), &child);
    QVERIFY(!provider.getRecord("housing"));
    QVERIFY(!provider.getRecord("PERSON"));
}

void tst_DataProvider::getRecordWithoutTree()
{
    const TOxDataProvider provider;
    QVERIFY(!provider.getRecord("HOUSING"));
    QVERIFY(!provider.getRecord(QString()));
}

void tst_DataProvider::openDataProvider_data()
{
    QTest::addColumn<QString>("dataFile");
    QTest::addColumn<QString>("alternateFile");
    QTest::addColumn<bool>("opened");

    QTest::newRow("data file") << "data.dat"
                               << "" << true;
    QTest::newRow("alternate file") << ""
                                    << "other.dat" << true;
    QTest::newRow("both") << "data.dat"
                          << "other.dat" << true;
    QTest::newRow("neither") << ""
                             << "" << false;
}

void tst_DataProvider::openDataProvider()
{
    QFETCH(QString, dataFile);
    QFETCH(QString, alternateFile);
    TOxDataProvider provider;
    provider.dataFileName = dataFile;
    provider.alternateFile = alternateFile;
    ErrorNumber = 42;
    QTEST(provider.openDataProvider(), "opened");
    QCOMPARE(ErrorNumber, 0);
}

void tst_DataProvider::closeDataProvider()
{
    TOxDataProvider provider;
    provider.dataFileName = "data.dat";
    ErrorNumber = 42;
    QCOMPARE(provider.closeDataProvider(), false);
    QCOMPARE(provider.dataFileName, QString("data.dat"));
    QCOMPARE(ErrorNumber, 42);
    ErrorNumber = 0;
}

void tst_DataProvider::getRecordTypeValue_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("value");

    constexpr int most = std::numeric_limits<int>::max();
    QTest::newRow("begins one behind the column") << 1 << 1 << "12345"
                                                  << "2";
    QTest::newRow("column 0") << 0 << 2 << "12345"
                              << "12";
    QTest::newRow("up to the end") << 3 << 2 << "12345"
                                   << "45";
    QTest::newRow("last column, cut short") << 4 << 2 << "12345"
                                            << "5";
    QTest::newRow("last column, one character") << 5 << 1 << "12345"
                                                << "";
    QTest::newRow("beyond the line, nothing of it") << 3 << 4 << "12345"
                                                    << "";
    QTest::newRow("no size") << 1 << 0 << "12345"
                             << "";
    QTest::newRow("empty line") << 1 << 1 << ""
                                << "";
    QTest::newRow("empty line, no position") << 0 << 0 << ""
                                             << "";
    QTest::newRow("last start and largest size") << most << most << "12345"
                                                 << "";
}

void tst_DataProvider::getRecordTypeValue()
{
    QFETCH(int, start);
    QFETCH(int, size);
    QFETCH(QString, line);
    TOxDataProvider provider;
    provider.recordTypeStart = start;
    provider.recordTypeSize = size;
    provider.currentLine = line;
    QTEST(provider.getRecordTypeValue(), "value");
    QCOMPARE(provider.recordTypeValue, QString());
}

void tst_DataProvider::getRecordType_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("character");

    const QString none = QChar(255);
    QTest::newRow("root") << "xA"
                          << "A"
                          << "a";
    QTest::newRow("child") << "xB"
                           << "B"
                           << "b";
    QTest::newRow("brother of the child") << "xC"
                                          << "C"
                                          << "c";
    QTest::newRow("unknown") << "xZ"
                             << "Z" << none;
    QTest::newRow("other case") << "xb"
                                << "b" << none;
    QTest::newRow("line too short") << ""
                                    << "" << none;
}

void tst_DataProvider::getRecordType()
{
    QFETCH(QString, line);
    ThreeRecords records;
    TOxDataProvider provider;
    provider.recordTree = &records.root;
    provider.recordTypeStart = 1;
    provider.recordTypeSize = 1;
    provider.recordTypeValue = "older";
    provider.recordTypeChar = "o";
    provider.currentLine = line;
    QTEST(provider.getRecordType(), "character");
    QTEST(provider.recordTypeChar, "character");
    QTEST(provider.recordTypeValue, "value");
}

void tst_DataProvider::getRecordTypeTakesTheFirstInPreOrder()
{
    ThreeRecords records;
    TOxRecord grandchild;
    const std::unique_ptr<QList<TOxRecordReference*>> list(grandchild.references);
    grandchild.recordType = "C";
    grandchild.recordChar = "g";
    records.first.addChild(&grandchild);
    TOxDataProvider provider;
    provider.recordTree = &records.root;
    provider.recordTypeSize = 1;
    provider.currentLine = "C";
    QCOMPARE(provider.getRecordType(), QString("g"));
    records.first.name = "C"; // a name is no code
    QCOMPARE(provider.getRecordType(), QString("g"));
    records.root.recordType.clear();
    records.root.recordChar.clear();
    provider.currentLine.clear();
    QCOMPARE(provider.getRecordType(), QString());
    QCOMPARE(provider.recordTypeChar, QString());
}

void tst_DataProvider::getRecordTypeWithoutTree()
{
    TOxDataProvider provider;
    provider.recordTypeSize = 1;
    provider.currentLine = "A";
    QCOMPARE(provider.getRecordType(), QString(QChar(255)));
    QCOMPARE(provider.recordTypeChar, QString(QChar(255)));
    QCOMPARE(provider.recordTypeValue, QString("A"));
}

void tst_DataProvider::findFieldWithoutRegistry()
{
    Importer importer("CSV");
    Provider provider;
    provider.genericGetFieldsFrom(&importer);
    QCOMPARE(codeOf([&] { provider.findField("FROM_LAYOUT", "PERSON"); }), 106);
    QVERIFY(!pLoaderManager);
}

void tst_DataProvider::findFieldInTheEmptyRegistry()
{
    TLoaderManager::InitDataClassLoader();
    const TLoaderManager* registry = pLoaderManager;
    Importer importer("STATA");
    Provider provider;
    provider.genericGetFieldsFrom(&importer);
    QVERIFY(!provider.findField("FROM_FIELDS", "PERSON"));
    QVERIFY(!provider.findField("FROM_FIELDS", QString()));
    QCOMPARE(pLoaderManager, registry);
}

void tst_DataProvider::findFieldOfAnAddedType()
{
    TLoaderManager::InitDataClassLoader();
    pLoaderManager->formatNames->append("STATA");
    const TLoaderManager* registry = pLoaderManager;
    TOxDataProvider provider;
    QVERIFY(!provider.findField("AGE", "PERSON"));
    provider.setDataProviderType("STATA");
    QString text;
    QCOMPARE(codeOf([&] { provider.findField("AGE", "PERSON"); }, &text), 107);
    QCOMPARE(text, QString("STATA"));
    QVERIFY(pLoaderManager != registry);
}

void tst_DataProvider::genericGetFields()
{
    Importer importer("STATA");
    importer.sourceName = "layout.dcf";
    importer.dataSourceName = "data.dat";
    Provider provider;
    provider.genericGetFieldsFrom(&importer);
    QCOMPARE(provider.getDataProviderId(), QString("STATA_id"));
    QCOMPARE(provider.getDataProviderType(), QString("STATA"));
    QCOMPARE(provider.getDataProviderTypeIndex(), 4);
    QCOMPARE(provider.getImportData(), &importer);
    QCOMPARE(provider.fieldNames(), QStringList({ "FROM_FIELDS" }));
    QCOMPARE(provider.getRecordTypeStart(), 3);
    QCOMPARE(provider.getRecordTypeSize(), 2);
    QCOMPARE(provider.getLayoutFileName(), QString("layout.dcf"));
    QCOMPARE(provider.getDataFileName(), QString("data.dat"));
    QVERIFY(provider.recordTree);
    QVERIFY(!provider.recordTree->firstChild);
    QVERIFY(!provider.recordTree->nextBrother);
    QCOMPARE(provider.recordTree->name, QString());
    QCOMPARE(provider.getRecordTypes(), 0);
    QCOMPARE(provider.getDataProviderLabel(), QString());
}

void tst_DataProvider::genericGetFieldsOfTypes_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("fromLayout");

    QTest::newRow("CSV, from its layout") << "CSV" << 2 << true;
    QTest::newRow("CSV in the other case") << "csv" << 0 << false;
    QTest::newRow("CSPro") << "CSPRO" << 1 << false;
    QTest::newRow("SPSS, without a type") << "SPSS" << 0 << false;
    QTest::newRow("Stata") << "STATA" << 4 << false;
    QTest::newRow("none") << "NONE" << 0 << false;
}

void tst_DataProvider::genericGetFieldsOfTypes()
{
    QFETCH(QString, type);
    QFETCH(bool, fromLayout);
    Importer importer(type);
    Provider provider;
    provider.genericGetFieldsFrom(&importer);
    QTEST(provider.getDataProviderTypeIndex(), "index");
    QCOMPARE(provider.fieldNames(), QStringList({ fromLayout ? "FROM_LAYOUT" : "FROM_FIELDS" }));
    QCOMPARE(importer.layoutLists,
        fromLayout ? QList<QStringList*>({ provider.layoutSources }) : QList<QStringList*>());
}

void tst_DataProvider::genericGetFieldsOfUnknownTypeKeepsTheOlder()
{
    Importer importer("SPSS");
    Provider provider;
    provider.setDataProviderType("CSV");
    provider.genericGetFieldsFrom(&importer);
    QCOMPARE(provider.getDataProviderType(), QString("CSV"));
    QCOMPARE(provider.getDataProviderId(), QString("SPSS_id"));
    QCOMPARE(provider.fieldNames(), QStringList({ "FROM_LAYOUT" }));
}

void tst_DataProvider::genericGetFieldsTwice()
{
    Importer first("STATA");
    Importer second("CSV");
    second.sourceName = "second.csv";
    Provider provider;
    provider.genericGetFieldsFrom(&first);
    const std::unique_ptr<TOxSourceField> older(provider.fields->first());
    const std::unique_ptr<TOxRecord> olderTree(provider.recordTree);
    const std::unique_ptr<QList<TOxRecordReference*>> olderList(olderTree->references);
    provider.genericGetFieldsFrom(&second);
    QCOMPARE(older->fieldName, QString("FROM_FIELDS"));
    QCOMPARE(provider.fieldNames(), QStringList({ "FROM_LAYOUT" }));
    QVERIFY(provider.recordTree != olderTree.get());
    QCOMPARE(provider.getImportData(), &second);
    QCOMPARE(provider.getLayoutFileName(), QString("second.csv"));
    QCOMPARE(provider.getDataProviderType(), QString("CSV"));
}

void tst_DataProvider::genericGetFieldsOfCSPro()
{
    const QTemporaryDir directory;
    QVERIFY(directory.isValid());
    const QString path = directory.filePath("survey.dcf");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Dictionary]\nName=SURVEY\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
               "[Record]\nName=HOUSING\nRecordTypeValue='1'\n\n"
               "[Item]\nName=RENT\nStart=2\nLen=6\nDecimal=2\n\n"
               "[Record]\nName=PERSON\nRecordTypeValue='2'\n\n"
               "[Item]\nName=AGE\nStart=2\nLen=3\n\n");
    file.close();

    TCSProDataImport importer(path);
    QVERIFY(importer.openFile());
    Provider provider;
    provider.genericGetFieldsFrom(&importer);
    QCOMPARE(provider.getDataProviderTypeIndex(), 1);
    QCOMPARE(provider.getDataProviderId(), "CSPRO_" + path);
    QCOMPARE(provider.getLayoutFileName(), QDir::toNativeSeparators(path));
    QCOMPARE(provider.getRecordTypeStart(), 1);
    QCOMPARE(provider.getRecordTypeSize(), 1);
    QCOMPARE(provider.fieldNames(), QStringList({ "RENT", "AGE" }));
    QCOMPARE(provider.getField("RENT")->decimals, 0);
    QCOMPARE(provider.getFieldFromRecord("AGE", "Person"), provider.fields->at(1));
    QVERIFY(!provider.getFieldFromRecord("AGE", "HOUSING"));
    provider.currentLine = "1200";
    QCOMPARE(provider.getRecordTypeValue(), QString("2"));
}

QTEST_MAIN(tst_DataProvider)

#include "tst_DataProvider.moc"
