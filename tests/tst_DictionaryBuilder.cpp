#include "BareField.h"
#include "BuiltDictionaries.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/Variable.h>

#include <QLoggingCategory>
#include <QtTest>

#include <memory>
#include <utility>
#include <vector>

namespace {

class Field : public BareField {
public:
    Field(const QString& fieldName, const QString& group)
        : BareField(nullptr)
        , m_group(group)
    {
        name = fieldName;
        fieldType = IntegerType;
    }

    QString getGroup() override
    {
        return m_group;
    }

private:
    QString m_group;
};

// An importer with record types of its own.
class Importer : public TDataImport {
public:
    explicit Importer(const QString& type, std::vector<std::pair<QString, QString>> groups = {})
        : m_type(type)
        , m_groups(std::move(groups))
    {
    }
    ~Importer() override
    {
        qDeleteAll(*fields);
        delete fields;
    }

    QString getDataProviderId() override
    {
        return m_type + "_id";
    }
    QString getDataProviderType() override
    {
        return m_type;
    }
    int getGroupCount() override
    {
        return static_cast<int>(m_groups.size());
    }
    QString getGroupName(int index) override
    {
        return m_groups.at(static_cast<std::size_t>(index)).first;
    }
    QString getGroupValue(int index) override
    {
        return m_groups.at(static_cast<std::size_t>(index)).second;
    }

private:
    QString m_type;
    std::vector<std::pair<QString, QString>> m_groups;
};

// The dictionary of one field alone.
DictionaryPointer buildField(const std::function<void(TOxSourceField&)>& describe)
{
    Provider provider;
    describe(provider.add("F"));
    return build(provider);
}

const TOxVariable& onlyVariable(const DictionaryPointer& dictionary)
{
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    if (variables.size() != 1)
        qFatal("There is not one variable");
    return *variables.first();
}

} // namespace

class tst_DictionaryBuilder : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void dataSource_data();
    void dataSource();
    void dataSourceOfAnUnlistedType();
    void rootName_data();
    void rootName();
    void rootWithoutDictionary();

    void lookups();
    void lookupsAreCopies();

    void recordsWithoutTypes();
    void recordsOfOneName();
    void recordNamedAsTheCommonOne();

    void fieldsOfOtherKinds();

    void groupsOfAnImporter();
    void recordsThatFieldsName();
    void providerWithoutAnything();
    void describesFields();
    void codeNumbers_data();
    void codeNumbers();
    void joinedLabels_data();
    void joinedLabels();
    void joinedLabelsAreShared();
    void manyFieldsShareALongText();
    void minimumAndMaximum_data();
    void minimumAndMaximum();
    void manyFields();
};

void tst_DictionaryBuilder::initTestCase()
{
    QLoggingCategory::setFilterRules("default.debug=false");
}

void tst_DictionaryBuilder::dataSource_data()
{
    QTest::addColumn<QString>("layoutFile");
    QTest::addColumn<QString>("dataFile");
    QTest::addColumn<QString>("file");

    QTest::newRow("data and layout") << "census.dcf"
                                     << "census.dat"
                                     << "census.dat";
    QTest::newRow("layout alone") << "census.dcf"
                                  << ""
                                  << "census.dcf";
    QTest::newRow("data alone") << ""
                                << "census.csv"
                                << "census.csv";
    QTest::newRow("neither") << ""
                             << ""
                             << "";
}

void tst_DictionaryBuilder::dataSource()
{
    QFETCH(QString, layoutFile);
    QFETCH(QString, dataFile);
    Provider provider;
    provider.setDataProviderType("CSV");
    provider.setLayoutFileName(layoutFile);
    provider.setDataFileName(dataFile);
    const DictionaryPointer dictionary = build(provider);
    const MetadataDictionary& metadata = *dictionary->getMetadataDictionary();
    QCOMPARE(metadata.getDatasource()->getType(), QString("CSV"));
    QTEST(metadata.getDatasource()->getFile(), "file");
    QVERIFY(metadata.getDatasource()->getMetadataDataSource());
    QVERIFY(metadata.getLookUp()->isEmpty());
}

void tst_DictionaryBuilder::dataSourceOfAnUnlistedType()
{
    Importer importer("SPSS");
    Provider provider;
    provider.genericGetFieldsFrom(&importer);
    QCOMPARE(provider.getDataProviderType(), QString());
    const DictionaryPointer spss = build(provider);
    QCOMPARE(spss->getMetadataDictionary()->getDatasource()->getType(), QString("SPSS"));

    provider.setDataProviderType("STATA");
    const DictionaryPointer stata = build(provider);
    QCOMPARE(stata->getMetadataDictionary()->getDatasource()->getType(), QString("STATA"));
}

void tst_DictionaryBuilder::rootName_data()
{
    QTest::addColumn<QString>("layoutFile");
    QTest::addColumn<QString>("dataFile");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("name");

    QTest::newRow("layout file") << "/data/pop.2020.dcf"
                                 << "a.dat"
                                 << "id"
                                 << "pop.2020";
    QTest::newRow("data file") << ""
                               << "survey.sav"
                               << "id"
                               << "survey";
    QTest::newRow("identifier") << ""
                                << ""
                                << "STATA_x"
                                << "STATA_x";
    QTest::newRow("nothing") << ""
                             << ""
                             << ""
                             << "";
}

void tst_DictionaryBuilder::rootName()
{
    QFETCH(QString, layoutFile);
    QFETCH(QString, dataFile);
    QFETCH(QString, id);
    Provider provider;
    provider.setLayoutFileName(layoutFile);
    provider.setDataFileName(dataFile);
    provider.setDataProviderId(id);
    provider.setDataProviderLabel("A survey");
    const DictionaryPointer dictionary = build(provider);
    QTEST(dictionary->getRoot()->getName(), "name");
    QCOMPARE(dictionary->getRoot()->getLabel(), QString("A survey"));
}

void tst_DictionaryBuilder::rootWithoutDictionary()
{
    const auto source = openText("[Dictionary]\nLabel=No name\n[Record]\nName=R\n");
    QCOMPARE(source->dictionary->getRoot()->getName(), QString("made"));
    QCOMPARE(source->dictionary->getRoot()->getLabel(), QString("No name"));
}

void tst_DictionaryBuilder::lookups()
{
    LookupDictionary places;
    places.setName("AREA_CODE");
    LookupDictionary assets;
    assets.setName("ASSET");
    LookupDictionary second;
    second.setName("LANGUAGE_2");
    LookupDictionary unused;
    unused.setName("area_code");
    CSProSource source(census);
    source.build({ places, assets, second, unused });
    QStringList marked;
    for (const TOxVariable* candidate : allVariables(*source.dictionary)) {
        if (candidate->getMetadataVariables()->getLookup())
            marked << candidate->getName();
    }
    QCOMPARE(marked,
        QStringList({ "AREA_CODE", "ASSET_1", "ASSET_2", "ASSET_3", "ASSET_4", "LANGUAGE_2" }));

    Provider provider;
    provider.add("A");
    provider.add("AREA_CODE");
    const DictionaryPointer dictionary(buildDictionary(provider, { places }));
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    QVERIFY(!variables.at(0)->getMetadataVariables()->getLookup());
    QVERIFY(variables.at(1)->getMetadataVariables()->getLookup());
}

void tst_DictionaryBuilder::lookupsAreCopies()
{
    QVector<LookupDictionary> given(2);
    given[0].setName("AREA_CODE");
    given[0].setLabel("Places");
    given[0].setFile("places.csv");
    given[0].setSeparator(",");
    given[1].setName("JOB");
    const Provider provider;
    const DictionaryPointer dictionary(buildDictionary(provider, given));
    given[0].setName("changed");
    const QList<LookupDictionary*>& taken = *dictionary->getMetadataDictionary()->getLookUp();
    QCOMPARE(taken.size(), 2);
    QCOMPARE(taken.at(0)->getName(), QString("AREA_CODE"));
    QCOMPARE(taken.at(0)->getLabel(), QString("Places"));
    QCOMPARE(taken.at(0)->getFile(), QString("places.csv"));
    QCOMPARE(taken.at(0)->getSeparator(), QString(","));
    QCOMPARE(taken.at(1)->getName(), QString("JOB"));
}

void tst_DictionaryBuilder::recordsWithoutTypes()
{
    const auto source = openText("[Dictionary]\nName=D\nRecordTypeLen=0\n"
                                 "[IdItems]\n[Item]\nName=ID\nStart=1\nLen=4\n"
                                 "[Record]\nName=PERSON\n[Item]\nName=SEX\nStart=5\nLen=1\n");
    for (const TOxSourceField* field : qAsConst(*source->provider.fields))
        QCOMPARE(field->record, QString());
    const TOxEntity& root = *source->dictionary->getRoot();
    QCOMPARE(names(*root.getVariables()), QStringList({ "ID" }));
    QCOMPARE(names(*root.getChildren()), QStringList({ "PERSON" }));
    const TOxEntity& person = *root.getChildren()->first();
    QCOMPARE(names(*person.getVariables()), QStringList({ "SEX" }));
    QCOMPARE(person.getRecType(), QString());
    QCOMPARE(
        person.getVariables()->first()->getMetadataVariables()->getRecord(), QString("PERSON"));
    QCOMPARE(root.getVariables()->first()->getMetadataVariables()->getRecord(), QString());
}

void tst_DictionaryBuilder::recordsOfOneName()
{
    const auto source = openText("[Dictionary]\nName=D\n"
                                 "[Record]\nName=R\nRecordTypeValue='1'\n[Item]\nName=A\nLen=1\n"
                                 "[Record]\nName=R\nRecordTypeValue='2'\n[Item]\nName=B\nLen=1\n");
    const QList<TOxEntity*>& records = *source->dictionary->getRoot()->getChildren();
    QCOMPARE(names(records), QStringList({ "R", "R" }));
    QCOMPARE(names(*records.at(0)->getVariables()), QStringList({ "A" }));
    QCOMPARE(names(*records.at(1)->getVariables()), QStringList({ "B" }));
    QCOMPARE(records.at(1)->getVariables()->first()->getRecType(), QString("2"));

    source->provider.add("C", "R");
    source->build();
    QCOMPARE(names(*source->dictionary->getRoot()->getChildren()->at(0)->getVariables()),
        QStringList({ "A", "C" }));
}

void tst_DictionaryBuilder::recordNamedAsTheCommonOne()
{
    const auto source = openText("[Dictionary]\nName=D\n"
                                 "[IdItems]\n[Item]\nName=ID\nLen=4\n"
                                 "[Record]\nName=Common\nRecordTypeValue='1'\n"
                                 "[Item]\nName=A\nLen=1\n");
    source->provider.add("B", "Common");
    source->build();
    const TOxEntity& root = *source->dictionary->getRoot();
    QCOMPARE(names(*root.getVariables()), QStringList({ "ID" }));
    QCOMPARE(names(*root.getChildren()->first()->getVariables()), QStringList({ "A", "B" }));
}

void tst_DictionaryBuilder::fieldsOfOtherKinds()
{
    CSProSource source(census);
    TDataImport& importer = source.importer;
    const std::unique_ptr<Field> plain(new Field("PLAIN", "PERSON"));
    const std::unique_ptr<TCSProVariable> withoutItem(new TCSProVariable(&importer));
    withoutItem->name = "WITHOUT_ITEM";
    withoutItem->group = "PERSON";
    importer.addField(plain.get());
    importer.addField(withoutItem.get());
    for (const QString name : { "PLAIN", "WITHOUT_ITEM" })
        source.provider.add(name, "PERSON").valueLabels = "1 One\t";
    source.build();
    for (const QString name : { "PLAIN", "WITHOUT_ITEM" }) {
        QCOMPARE(labels(variable(*source.dictionary, name)), QString("1=One"));
        QCOMPARE(variable(*source.dictionary, name).getEntity(), QString("PERSON"));
    }
}

void tst_DictionaryBuilder::groupsOfAnImporter()
{
    Importer importer("CSV", { { "HOUSE", "H" }, { "PERSON", "P" }, { "PERSON", "Q" } });
    importer.addField(new Field("ID", ""));
    importer.addField(new Field("SEX", "PERSON"));
    importer.addField(new Field("TRIP_DAY", "TRIP"));
    importer.addField(new Field("ROOMS", "HOUSE"));
    importer.addField(new Field("TRIP_TIME", "TRIP"));
    Provider provider;
    static_cast<TDataImport&>(importer).getDictionary(provider.fields);
    provider.setImportData(&importer);
    provider.setDataProviderId("id");
    const DictionaryPointer dictionary = build(provider);
    const TOxEntity& root = *dictionary->getRoot();
    QCOMPARE(names(*root.getVariables()), QStringList({ "ID" }));
    const QList<TOxEntity*>& entities = *root.getChildren();
    QCOMPARE(names(entities), QStringList({ "HOUSE", "PERSON", "PERSON", "TRIP" }));
    QStringList recTypes;
    for (const TOxEntity* entity : entities) {
        recTypes << entity->getRecType();
        QCOMPARE(entity->getLevel(), 1);
        QCOMPARE(entity->parent(), QString("id"));
    }
    QCOMPARE(recTypes, QStringList({ "H", "P", "Q", "" }));
    QCOMPARE(names(*entities.at(0)->getVariables()), QStringList({ "ROOMS" }));
    QCOMPARE(names(*entities.at(1)->getVariables()), QStringList({ "SEX" }));
    QVERIFY(entities.at(2)->getVariables()->isEmpty());
    QCOMPARE(names(*entities.at(3)->getVariables()), QStringList({ "TRIP_DAY", "TRIP_TIME" }));
    const TOxVariable& rooms = *entities.at(0)->getVariables()->first();
    QCOMPARE(rooms.getRecType(), QString("H"));
    QCOMPARE(rooms.getEntity(), QString("HOUSE"));
    QCOMPARE(rooms.getMetadataVariables()->getRecord(), QString("HOUSE"));
    QCOMPARE(rooms.getDataProvider(), QString("CSV_id"));
}

void tst_DictionaryBuilder::recordsThatFieldsName()
{
    Provider provider;
    provider.add("A", "R2");
    provider.add("B");
    provider.add("C", "r2");
    provider.add("D", "R2");
    const DictionaryPointer dictionary = build(provider);
    const TOxEntity& root = *dictionary->getRoot();
    QCOMPARE(names(*root.getVariables()), QStringList({ "B" }));
    QCOMPARE(names(*root.getChildren()), QStringList({ "R2", "r2" }));
    QCOMPARE(names(*root.getChildren()->first()->getVariables()), QStringList({ "A", "D" }));
    QCOMPARE(root.getChildren()->first()->getRecType(), QString());
}

void tst_DictionaryBuilder::providerWithoutAnything()
{
    Provider provider;
    const DictionaryPointer empty = build(provider);
    delete provider.fields;
    provider.fields = nullptr;
    const DictionaryPointer withoutList = build(provider);
    for (const Dictionary* dictionary : { empty.get(), withoutList.get() }) {
        QCOMPARE(dictionary->getRoot()->getName(), QString());
        QVERIFY(dictionary->getRoot()->getChildren()->isEmpty());
        QVERIFY(dictionary->getRoot()->getVariables()->isEmpty());
        const Datasource& source = *dictionary->getMetadataDictionary()->getDatasource();
        QCOMPARE(source.getType(), QString());
        QCOMPARE(source.getFile(), QString());
    }
}

void tst_DictionaryBuilder::describesFields()
{
    const DictionaryPointer dictionary = buildField([](TOxSourceField& field) {
        field.fieldLabel = "A label (with brackets)";
        field.setFieldType("REAL");
        field.start = 12;
        field.length = 7;
        field.decimals = 3;
        field.missingValue = "99.5";
        field.notApplicableValue = "-8";
        field.dataProviderId = "STATA_a.dta";
    });
    const TOxVariable& found = onlyVariable(dictionary);
    QCOMPARE(found.getName(), QString("F"));
    QCOMPARE(found.getField(), QString("F"));
    QCOMPARE(found.getLabel(), QString("A label (with brackets)"));
    QCOMPARE(found.getVarType(), QString("REAL"));
    QCOMPARE(found.getStart(), 12);
    QCOMPARE(found.getSize(), 7);
    QCOMPARE(found.getDecimals(), 3);
    QCOMPARE(found.getMissing(), 99.5);
    QCOMPARE(found.getNotappl(), -8.0);
    QCOMPARE(found.getDataProvider(), QString("STATA_a.dta"));
    QCOMPARE(found.getDocumentation(), QString());
    QCOMPARE(found.getEntity(), QString());
    QCOMPARE(found.getMetadataVariables()->getField(), QString("F"));
    QCOMPARE(found.getMetadataVariables()->getRecord(), QString());
    QCOMPARE(found.getMetadataVariables()->getStart(), 12);
    QCOMPARE(found.getMetadataVariables()->getLength(), 7);
}

void tst_DictionaryBuilder::codeNumbers_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<double>("number");

    QTest::newRow("integer") << "99" << 99.0;
    QTest::newRow("zeros on the left") << "009" << 9.0;
    QTest::newRow("blanks on the left") << " 9" << 9.0;
    QTest::newRow("real") << "99.9" << 99.9;
    QTest::newRow("negative") << "-1" << -1.0;
    QTest::newRow("twelve digits") << "120030003999" << 120030003999.0;
    QTest::newRow("none") << "" << 0.0;
    QTest::newRow("blanks") << "  " << 0.0;
    QTest::newRow("a letter") << "Z " << 0.0;
    QTest::newRow("a number and more") << "9Z" << 0.0;
    QTest::newRow("comma") << "9,5" << 0.0;
    QTest::newRow("no number by name") << "nan" << 0.0;
    QTest::newRow("infinite by name") << "inf" << 0.0;
    QTest::newRow("too large") << "1e400" << 0.0;
}

void tst_DictionaryBuilder::codeNumbers()
{
    QFETCH(QString, code);
    QFETCH(double, number);
    const DictionaryPointer missing =
        buildField([&code](TOxSourceField& field) { field.missingValue = code; });
    QCOMPARE(onlyVariable(missing).getMissing(), number);
    QCOMPARE(onlyVariable(missing).getNotappl(), 0.0);
    const DictionaryPointer notApplicable =
        buildField([&code](TOxSourceField& field) { field.notApplicableValue = code; });
    QCOMPARE(onlyVariable(notApplicable).getNotappl(), number);
    QCOMPARE(onlyVariable(notApplicable).getMissing(), 0.0);
}

void tst_DictionaryBuilder::joinedLabels_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("labels");

    QTest::newRow("none") << ""
                          << "";
    QTest::newRow("one") << "1 Male\t"
                         << "1=Male";
    QTest::newRow("two") << "1 Male\t2 Female\t"
                         << "1=Male|2=Female";
    QTest::newRow("blanks in a label") << "1 Never married \t"
                                       << "1=Never married ";
    QTest::newRow("without a label") << "1 \t2\t"
                                     << "1=|2=";
    QTest::newRow("without a code") << " Blank\t"
                                    << "=Blank";
    QTest::newRow("without an end") << "1 Male\t2 Female"
                                    << "1=Male|2=Female";
    QTest::newRow("real code") << "1.500000 Half\t"
                               << "1.500000=Half";
    QTest::newRow("newlines for tabs") << "1 Male\n2 Female\n"
                                       << "1=Male|2=Female";
    QTest::newRow("a newline in a label") << "1 Never\nmarried\t2 Married\t"
                                          << "1=Never\nmarried|2=Married";
    QTest::newRow("empty entries") << "\t1 Male\t\t"
                                   << "1=Male";
}

void tst_DictionaryBuilder::joinedLabels()
{
    QFETCH(QString, text);
    const DictionaryPointer dictionary =
        buildField([&text](TOxSourceField& field) { field.valueLabels = text; });
    QTEST(labels(onlyVariable(dictionary)), "labels");
}

void tst_DictionaryBuilder::joinedLabelsAreShared()
{
    Provider provider;
    const QString shared = "1 Yes\t2 No\t";
    for (const QString name : { "A", "B", "C" })
        provider.add(name).valueLabels = name == "B" ? "1 One\t" : shared;
    provider.add("D");
    provider.add("E");
    const DictionaryPointer dictionary = build(provider);
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    const auto list = [&variables](int i) { return variables.at(i)->getValueLabelElementList(); };
    QCOMPARE(list(2), list(0));
    QCOMPARE(labels(*variables.at(2)), QString("1=Yes|2=No"));
    QCOMPARE(labels(*variables.at(1)), QString("1=One"));
    QVERIFY(list(3) != list(4));
}

// Were the text read for each field, this would not end.
void tst_DictionaryBuilder::manyFieldsShareALongText()
{
    constexpr int Codes = 200'000;
    QStringList entries;
    for (int code = 0; code < Codes; ++code)
        entries << QString::number(code) + " Label";
    const QString text = entries.join('\t');
    Provider provider;
    for (int i = 0; i < 50'000; ++i)
        provider.add("F").valueLabels = text;
    const DictionaryPointer dictionary = build(provider);
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    QCOMPARE(variables.last()->getValueLabelElementList()->size(), Codes);
    QCOMPARE(variables.last()->getValueLabelElementList(),
        variables.first()->getValueLabelElementList());
}

void tst_DictionaryBuilder::minimumAndMaximum_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max");
    QTest::addColumn<QString>("ranges");

    QTest::newRow("integer") << "INTEGER"
                             << "0"
                             << "99"
                             << "0..99";
    QTest::newRow("real") << "REAL"
                          << "-0.5"
                          << "1e+06"
                          << "-0.5..1000000";
    QTest::newRow("one value") << "INTEGER"
                               << "7"
                               << "7"
                               << "7..7";
    QTest::newRow("no maximum") << "INTEGER"
                                << "0"
                                << ""
                                << "";
    QTest::newRow("no minimum") << "INTEGER"
                                << ""
                                << "9"
                                << "";
    QTest::newRow("neither") << "INTEGER"
                             << ""
                             << ""
                             << "";
    QTest::newRow("text") << "STRING"
                          << "0"
                          << "99999"
                          << "";
    QTest::newRow("no type") << ""
                             << "0"
                             << "9"
                             << "0..9";
    QTest::newRow("infinite") << "REAL"
                              << "0"
                              << "inf"
                              << "";
}

void tst_DictionaryBuilder::minimumAndMaximum()
{
    QFETCH(QString, type);
    QFETCH(QString, min);
    QFETCH(QString, max);
    const DictionaryPointer dictionary = buildField([&](TOxSourceField& field) {
        field.setFieldType(type);
        field.minValue = min;
        field.maxValue = max;
        field.valueLabels = "5 Five\t"; // is no range
    });
    QTEST(ranges(onlyVariable(dictionary)), "ranges");
    QCOMPARE(labels(onlyVariable(dictionary)), QString("5=Five"));
}

void tst_DictionaryBuilder::manyFields()
{
    Provider provider;
    for (int i = 0; i < 100'000; ++i)
        provider.add(QString::number(i), QString::number(i / 2));
    const DictionaryPointer dictionary = build(provider);
    const QList<TOxEntity*>& entities = *dictionary->getRoot()->getChildren();
    QCOMPARE(entities.size(), 50'000);
    for (int i = 0; i < entities.size(); ++i) {
        const QList<TOxVariable*>& variables = *entities.at(i)->getVariables();
        QCOMPARE(variables.size(), 2);
        QCOMPARE(variables.at(1)->getName(), QString::number(2 * i + 1));
    }
}

QTEST_GUILESS_MAIN(tst_DictionaryBuilder)

#include "tst_DictionaryBuilder.moc"
