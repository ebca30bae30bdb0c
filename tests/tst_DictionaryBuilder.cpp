#include "BareField.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/Variable.h>

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace {

// A provider that deletes what it was filled with.
class Provider : public TOxDataProvider {
public:
    ~Provider() override
    {
        if (fields)
            qDeleteAll(*fields);
        if (recordTree)
            delete recordTree->references;
        delete recordTree;
    }

    TOxSourceField& add(const QString& name, const QString& record = QString(),
        const QString& type = TypeNameInteger)
    {
        auto* field = new TOxSourceField;
        field->fieldName = name;
        field->record = record;
        field->setFieldType(type);
        fields->append(field);
        return *field;
    }
};

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

// A CSPro dictionary opened the way a host does, and the dictionary built from its fields.
class CSProSource {
public:
    explicit CSProSource(const QString& path, CSProReading reading = CSProReading::AsWritten)
        : importer(path)
    {
        importer.setReading(reading);
        importer.setTextCodec("UTF-8");
        importer.setDecimalQuestion(
            [](const CSProProblem&) { return static_cast<int>(QMessageBox::NoToAll); });
        importer.openFile();
        provider.genericGetFieldsFrom(&importer);
    }

    void build(const QVector<LookupDictionary>& lookups = {})
    {
        dictionary.reset(buildDictionary(provider, lookups));
    }

    TCSProDataImport importer;
    Provider provider;
    DictionaryPointer dictionary;
};

class TemporaryDictionary {
public:
    explicit TemporaryDictionary(const QByteArray& sections)
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(sections) != sections.size())
            qFatal("The dictionary cannot be written");
    }

    QString path() const
    {
        return m_folder.filePath("made.dcf");
    }

private:
    QTemporaryDir m_folder;
};

std::unique_ptr<CSProSource> openText(
    const QByteArray& sections, CSProReading reading = CSProReading::AsWritten)
{
    const TemporaryDictionary file(sections);
    auto source = std::make_unique<CSProSource>(file.path(), reading);
    source->build();
    return source;
}

const QString census = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");

std::unique_ptr<CSProSource> openCensus(CSProReading reading = CSProReading::AsWritten)
{
    auto source = std::make_unique<CSProSource>(census, reading);
    source->build();
    return source;
}

DictionaryPointer build(const TOxDataProvider& provider)
{
    return DictionaryPointer(buildDictionary(provider));
}

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

QStringList names(const QList<TOxEntity*>& entities)
{
    QStringList result;
    for (const TOxEntity* entity : entities)
        result << entity->getName();
    return result;
}

QStringList names(const QList<TOxVariable*>& variables)
{
    QStringList result;
    for (const TOxVariable* variable : variables)
        result << variable->getName();
    return result;
}

QList<TOxVariable*> allVariables(const Dictionary& dictionary)
{
    QList<TOxVariable*> variables = *dictionary.getRoot()->getVariables();
    for (const TOxEntity* entity : *dictionary.getRoot()->getChildren())
        variables += *entity->getVariables();
    return variables;
}

const TOxVariable& variable(const Dictionary& dictionary, const QString& name)
{
    for (const TOxVariable* candidate : allVariables(dictionary)) {
        if (candidate->getName() == name)
            return *candidate;
    }
    qFatal("There is no variable %s", qPrintable(name));
}

QString labels(const TOxVariable& variable)
{
    QStringList texts;
    for (const ValueLabelElement* element : *variable.getValueLabelElementList())
        texts << element->getValue() + "=" + element->getLabel();
    return texts.join("|");
}

QString ranges(const TOxVariable& variable)
{
    QStringList texts;
    for (const Range* range : *variable.getMetadataVariables()->getRange()) {
        texts << QString("%1..%2")
                     .arg(range->getRangeMin(), 0, 'g', 15)
                     .arg(range->getRangeMax(), 0, 'g', 15);
    }
    return texts.join(" ");
}

TStatValue statNumber(double number)
{
    TStatValue value;
    value.number = number;
    value.text = QString::number(number);
    return value;
}

TStatValue statText(const QString& text)
{
    TStatValue value;
    value.type = READSTAT_TYPE_STRING;
    value.text = text;
    return value;
}

TStatFileDescription statDescription()
{
    TStatFileDescription file;
    file.path = "folder/wave.2.sav";
    file.fileLabel = "Second wave";
    return file;
}

TStatVariableDescription& addVariable(TStatFileDescription& file, const QString& name,
    const QString& format, readstat_type_t type = READSTAT_TYPE_DOUBLE)
{
    TStatVariableDescription variable;
    variable.name = name;
    variable.type = type;
    variable.format = format;
    file.variables.append(variable);
    return file.variables.last();
}

} // namespace

Q_DECLARE_METATYPE(TStatMissingRange)

class tst_DictionaryBuilder : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void censusEntities();
    void censusVariables_data();
    void censusVariables();
    void censusPlaces_data();
    void censusPlaces();
    void censusCodes_data();
    void censusCodes();
    void censusVariablesAreTheFields_data();
    void censusVariablesAreTheFields();
    void censusCanBeSearched();
    void censusAsEstablished();
    void censusSharesLabels();
    void censusSharesRanges();

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
    void recordWithoutItems();
    void notesAndLevels();
    void languages();
    void firstValueSetWithValues();
    void rangesWithoutOrdinaryCodes();
    void codesThatAreNoNumbers();
    void manyOccurrencesShareManyCodes();

    void hostsMayReorderFields();
    void hostsMayRemoveFields();
    void hostsMayAddFields();
    void hostsMayRenameFields();
    void fieldsOfOneNameInTwoRecords();
    void importerWithoutAProvider();
    void unopenedImporter();
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

    void statFile();
    void statFileVariables();
    void statFileLabels();
    void statFileBounds_data();
    void statFileBounds();
    void statFileLookups();
    void statFileOfManyVariables();
};

void tst_DictionaryBuilder::initTestCase()
{
    QLoggingCategory::setFilterRules("default.debug=false");
}

void tst_DictionaryBuilder::censusEntities()
{
    const auto source = openCensus();
    const TOxEntity& root = *source->dictionary->getRoot();
    QCOMPARE(root.getName(), QString("CENSUS_DICT"));
    QCOMPARE(root.getLabel(), QString("Population and housing census of Velmora"));
    QCOMPARE(root.getRecType(), QString());
    QCOMPARE(root.getLevel(), 0);
    QCOMPARE(root.parent(), QString());
    const QList<TOxEntity*>& records = *root.getChildren();
    QCOMPARE(names(records), QStringList({ "HOUSEHOLD", "PERSON", "LIVESTOCK" }));
    const QStringList recordLabels = { "Household", "Person", "Livestock" };
    const QStringList recTypes = { "1", "2", "3" };
    const QList<int> counts = { 32, 20, 9 };
    for (int i = 0; i < records.size(); ++i) {
        const TOxEntity& record = *records.at(i);
        QCOMPARE(record.getLabel(), recordLabels.at(i));
        QCOMPARE(record.getRecType(), recTypes.at(i));
        QCOMPARE(record.getVariables()->size(), counts.at(i));
        QCOMPARE(record.parent(), QString("CENSUS_DICT"));
        QCOMPARE(record.getLevel(), 1);
        QVERIFY(record.getChildren()->isEmpty());
    }
    QCOMPARE(names(*root.getVariables()),
        QStringList({ "PROVINCE", "DISTRICT", "EA", "HOUSEHOLD_NUMBER" }));
    QCOMPARE(names(*records.at(2)->getVariables()),
        QStringList({ "ANIMAL", "ANIMAL_COUNT", "SOLD_1", "SOLD_2", "SOLD_3", "SOLD_4", "MILK",
            "VACCINATED", "ANIMAL_OTHER" }));
}

void tst_DictionaryBuilder::censusVariables_data()
{
    QTest::addColumn<QString>("entity");
    QTest::addColumn<QString>("recType");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("documentation");
    QTest::addColumn<double>("missing");
    QTest::addColumn<double>("notappl");
    QTest::addColumn<int>("decimals");

    const QString root = "CENSUS_DICT";
    QTest::newRow("PROVINCE") << root << ""
                              << "INTEGER"
                              << "Province"
                              << "" << 0.0 << 0.0 << 0;
    QTest::newRow("AREA_CODE") << "HOUSEHOLD"
                               << "1"
                               << "INTEGER"
                               << "Area code"
                               << "Province, district and enumeration area, one behind the "
                                  "other.\nThe names of the areas are in places.csv."
                               << 0.0 << 0.0 << 0;
    QTest::newRow("WALLS") << "HOUSEHOLD"
                           << "1"
                           << "INTEGER"
                           << "Main material of the outer walls"
                           << "" << 99.0 << 0.0 << 0;
    QTest::newRow("WATER_SOURCE") << "HOUSEHOLD"
                                  << "1"
                                  << "STRING"
                                  << "Main source of drinking water"
                                  << "" << 0.0 << 0.0 << 0;
    QTest::newRow("WATER_HOURS") << "HOUSEHOLD"
                                 << "1"
                                 << "REAL"
                                 << "Hours of running water on a usual day"
                                 << "" << 99.9 << 0.0 << 1;
    QTest::newRow("ASSET_2") << "HOUSEHOLD"
                             << "1"
                             << "INTEGER"
                             << "Things that the household owns (Television)"
                             << "" << 9.0 << 0.0 << 0;
    QTest::newRow("DEATH_AGE_3") << "HOUSEHOLD"
                                 << "1"
                                 << "INTEGER"
                                 << "Age at death (Third death)"
                                 << "" << 99.0 << 0.0 << 0;
    QTest::newRow("HOUSEHOLD_WEIGHT") << "HOUSEHOLD"
                                      << "1"
                                      << "REAL"
                                      << "Weight of the household"
                                      << "" << 0.0 << 0.0 << 4;
    QTest::newRow("PHONE") << "HOUSEHOLD"
                           << "1"
                           << "REAL"
                           << "Telephone number"
                           << "" << 0.0 << 0.0 << 0;
    QTest::newRow("BIRTH_YEAR") << "PERSON"
                                << "2"
                                << "INTEGER"
                                << "Year of birth"
                                << "" << 9999.0 << 0.0 << 0;
    QTest::newRow("WORK_HOURS") << "PERSON"
                                << "2"
                                << "REAL"
                                << "Hours worked last week"
                                << "" << 999.9 << 0.0 << 1;
    QTest::newRow("ANIMAL_OTHER") << "LIVESTOCK"
                                  << "3"
                                  << "STRING"
                                  << "Other kind of animal"
                                  << "" << 0.0 << 0.0 << 0;
}

void tst_DictionaryBuilder::censusVariables()
{
    const auto source = openCensus();
    const QString name = QTest::currentDataTag();
    const TOxVariable& found = variable(*source->dictionary, name);
    QTEST(found.getEntity(), "entity");
    QTEST(found.getRecType(), "recType");
    QTEST(found.getVarType(), "type");
    QTEST(found.getLabel(), "label");
    QTEST(QString(found.getDocumentation()).replace("\r\n", "\n"), "documentation");
    QTEST(found.getMissing(), "missing");
    QTEST(found.getNotappl(), "notappl");
    QTEST(found.getDecimals(), "decimals");
    QCOMPARE(found.getField(), name);
    QCOMPARE(found.getDataProvider(), "CSPRO_" + census);
    QCOMPARE(found.getLevel(), 1);
    QCOMPARE(found.getChecked(), 0);
    QCOMPARE(found.getAlias(), QString());
    QCOMPARE(found.getVarWipChoice().getField(), QString());
    QVERIFY(!found.getMetadataVariables()->getLookup());
}

void tst_DictionaryBuilder::censusPlaces_data()
{
    QTest::addColumn<QString>("record");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("size");

    QTest::newRow("PROVINCE") << "Common" << 2 << 2;
    QTest::newRow("HOUSEHOLD_NUMBER") << "Common" << 11 << 3;
    QTest::newRow("AREA_CODE") << "HOUSEHOLD" << 14 << 9;
    QTest::newRow("ASSET_4") << "HOUSEHOLD" << 57 << 1;
    QTest::newRow("DEATH_2") << "HOUSEHOLD" << 71 << 3;
    QTest::newRow("DEATH_AGE_3") << "HOUSEHOLD" << 75 << 2;
    QTest::newRow("REMARKS") << "HOUSEHOLD" << 96 << 60;
    QTest::newRow("FAMILY_NAME") << "PERSON" << 31 << 15;
    QTest::newRow("SOLD_2") << "LIVESTOCK" << 22 << 3;
}

void tst_DictionaryBuilder::censusPlaces()
{
    const auto source = openCensus();
    const QString name = QTest::currentDataTag();
    const TOxVariable& found = variable(*source->dictionary, name);
    const MetadataVariables& metadata = *found.getMetadataVariables();
    QTEST(metadata.getRecord(), "record");
    QTEST(metadata.getStart(), "start");
    QTEST(metadata.getLength(), "size");
    QTEST(found.getStart(), "start");
    QTEST(found.getSize(), "size");
    QCOMPARE(metadata.getField(), name);
}

void tst_DictionaryBuilder::censusCodes_data()
{
    QTest::addColumn<QString>("labels");
    QTest::addColumn<QString>("ranges");

    QTest::newRow("PROVINCE") << "11=Alta Ría|12=Bassemer|21=Côte-d'Ivry|22=Dolmark|31=Étang Noir|"
                                 "40=Isles of Fenn"
                              << "11..11 12..12 21..21 22..22 31..31 40..40";
    QTest::newRow("DISTRICT") << "1:9="
                              << "1..9";
    QTest::newRow("EA") << ""
                        << "-999..9999";
    QTest::newRow("VISIT_DAY") << "1=First team|3=First team|5=First team|2=Second team|"
                                  "4=Second team|6:7=Weekend team"
                               << "1..1 3..3 5..5 2..2 4..4 6..7";
    QTest::newRow("ALTITUDE") << "-50:3000="
                              << "-50..3000";
    QTest::newRow("WALLS") << "11=Concrete|12=Stone|13=Baked brick|21=Timber|22=Bamboo or reed|"
                              "31=Earth|96=Other; not listed above|99=Not stated"
                           << "11..11 12..12 13..13 21..21 22..22 31..31 96..96";
    QTest::newRow("WATER_SOURCE") << "A =Piped into the dwelling|B =Public tap|C1=Protected well|"
                                     "C2=Open well|D =River, lake or spring|X =Other|Z =Not stated"
                                  << "";
    QTest::newRow("WATER_HOURS") << "0.0=No running water|0.5:24.0=Hours|99.9=Not stated|"
                                    "    =Not applicable"
                                 << "0..0 0.5..24";
    QTest::newRow("LAND_SHARE") << "0.25=One quarter|0.50=One half|0.75=Three quarters|"
                                   "1.00=The whole|   =Not applicable"
                                << "0.25..0.25 0.5..0.5 0.75..0.75 1..1";
    QTest::newRow("INCOME") << "0:900000=Crowns|999998=Refused|999999=Not stated"
                            << "0..900000";
    QTest::newRow("PHONE") << ""
                           << "-99999999999..999999999999";
    QTest::newRow("HOUSEHOLD_WEIGHT") << ""
                                      << "-99.9999..999.9999";
    QTest::newRow("REMARKS") << ""
                             << "";
    QTest::newRow("AGE") << "0:95=Age in years|99=Not stated"
                         << "0..95";
    QTest::newRow("EARLIER_PROVINCE")
        << "11=Alta Ría|12=Bassemer|21=Côte-d'Ivry|22=Dolmark|31=Étang Noir|40=Isles of Fenn"
        << "11..11 12..12 21..21 22..22 31..31 40..40";
    QTest::newRow("EDUCATION") << "0=None|1=Primary|2=Lower secondary|3=Upper secondary|4=Higher|"
                                  "9=Not stated| =Not applicable"
                               << "0..0 1..1 2..2 3..3 4..4";
    QTest::newRow("SOLD_3") << "0:900=Animals|999=Not stated"
                            << "0..900";
}

void tst_DictionaryBuilder::censusCodes()
{
    const auto source = openCensus();
    const TOxVariable& found = variable(*source->dictionary, QTest::currentDataTag());
    QTEST(labels(found), "labels");
    QTEST(ranges(found), "ranges");
}

void tst_DictionaryBuilder::censusVariablesAreTheFields_data()
{
    QTest::addColumn<bool>("asWritten");

    QTest::newRow("as written") << true;
    QTest::newRow("established") << false;
}

void tst_DictionaryBuilder::censusVariablesAreTheFields()
{
    QFETCH(bool, asWritten);
    const auto source = openCensus(asWritten ? CSProReading::AsWritten : CSProReading::Established);
    const QList<TOxVariable*> variables = allVariables(*source->dictionary);
    QCOMPARE(variables.size(), source->provider.fields->size());
    QSet<QString> seen;
    for (int i = 0; i < variables.size(); ++i) {
        const TOxVariable& built = *variables.at(i);
        const TOxSourceField& field = *source->provider.fields->at(i);
        QCOMPARE(built.getField(), field.fieldName);
        QCOMPARE(built.getMetadataVariables()->getField(), field.fieldName);
        QCOMPARE(built.getMetadataVariables()->getRecord(), field.record);
        QCOMPARE(built.getMetadataVariables()->getStart(), field.start);
        QCOMPARE(built.getMetadataVariables()->getLength(), field.length);
        QCOMPARE(built.getStart(), field.start);
        QCOMPARE(built.getSize(), field.length);
        QCOMPARE(built.getVarType(), field.getFieldType());
        seen.insert(built.getName());
    }
    QCOMPARE(seen.size(), variables.size());
}

void tst_DictionaryBuilder::censusCanBeSearched()
{
    const auto source = openCensus();
    TOxEntity& root = *source->dictionary->getRoot();
    QCOMPARE(root.findEntity("PERSON"), root.getChildren()->at(1));
    QCOMPARE(root.findEntity("CENSUS_DICT"), &root);
}

void tst_DictionaryBuilder::censusAsEstablished()
{
    const auto source = openCensus(CSProReading::Established);
    const Dictionary& dictionary = *source->dictionary;
    QCOMPARE(dictionary.getRoot()->getName(), QString("CENSUS_DICT"));
    QCOMPARE(names(*dictionary.getRoot()->getChildren()),
        QStringList({ "HOUSEHOLD", "PERSON", "LIVESTOCK" }));
    QCOMPARE(names(*dictionary.getRoot()->getVariables()),
        QStringList({ "PROVINCE", "DISTRICT", "EA", "HOUSEHOLD_NUMBER" }));

    const TOxVariable& asset = variable(dictionary, "ASSET_2");
    QCOMPARE(asset.getField(), QString("ASSET_") + QChar(2));
    QCOMPARE(asset.getMetadataVariables()->getField(), QString("ASSET_") + QChar(2));
    QCOMPARE(asset.getLabel(), QString("Things that the household owns"));
    QCOMPARE(variable(dictionary, "HOUSEHOLD_WEIGHT").getDecimals(), 4);

    const TOxVariable& province = variable(dictionary, "PROVINCE");
    QCOMPARE(labels(province).left(27), QString("11=Alta Ría|12=Bassemer|21="));
    QCOMPARE(ranges(province), QString("11..40")); // bounds of ranges are not told from codes
    const TOxVariable& age = variable(dictionary, "BIRTH_YEAR");
    QCOMPARE(labels(age), QString("1927=Year|2023=Year|9999=Not stated"));
    QCOMPARE(ranges(age), QString("1927..9999"));
}

void tst_DictionaryBuilder::censusSharesLabels()
{
    const auto source = openCensus();
    const auto list = [&source](const QString& name) {
        return variable(*source->dictionary, name).getValueLabelElementList();
    };
    QCOMPARE(list("ASSET_4"), list("ASSET_1"));
    QCOMPARE(list("DEATH_AGE_3"), list("DEATH_AGE_1"));
    QCOMPARE(list("EARLIER_PROVINCE"), list("PROVINCE"));
    QVERIFY(list("AGE") != list("DEATH_AGE_1"));
    QVERIFY(list("EA") != list("PHONE")); // both empty
}

void tst_DictionaryBuilder::censusSharesRanges()
{
    const auto source = openCensus();
    const auto list = [&source](const QString& name) {
        return variable(*source->dictionary, name).getMetadataVariables()->getRange();
    };
    QCOMPARE(list("ASSET_4"), list("ASSET_1"));
    QCOMPARE(list("EARLIER_PROVINCE"), list("PROVINCE"));
    QVERIFY(list("DEATH_2") != list("DEATH_1")); // of minimum and maximum
    QCOMPARE(ranges(variable(*source->dictionary, "DEATH_2")), QString("-99..999"));
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

void tst_DictionaryBuilder::recordWithoutItems()
{
    const auto source = openText("[Dictionary]\nName=D\n"
                                 "[Record]\nName=EMPTY\nRecordTypeValue='1'\n"
                                 "[Record]\nName=R\nRecordTypeValue='2'\n[Item]\nName=A\nLen=1\n");
    const QList<TOxEntity*>& records = *source->dictionary->getRoot()->getChildren();
    QCOMPARE(names(records), QStringList({ "EMPTY", "R" }));
    QCOMPARE(records.at(0)->getRecType(), QString("1"));
    QVERIFY(records.at(0)->getVariables()->isEmpty());
}

void tst_DictionaryBuilder::notesAndLevels()
{
    const auto source =
        openText("[Dictionary]\nName=D\nNote=Of the dictionary\n"
                 "[Level]\nName=L1\n[IdItems]\n[Item]\nName=ID1\nLen=4\n"
                 "[Record]\nName=R1\nRecordTypeValue='1'\n[Item]\nName=A\nLen=1\nNote=Of A\n"
                 "[Level]\nName=L2\n[IdItems]\n[Item]\nName=ID2\nLen=4\n"
                 "[Record]\nName=R2\nNote=Of R2\nRecordTypeValue='2'\n[Item]\nName=B\nLen=1\n");
    const TOxEntity& root = *source->dictionary->getRoot();
    QCOMPARE(root.getDocumentationEntity(), QString("Of the dictionary"));
    QCOMPARE(root.getLevel(), 0);
    QCOMPARE(names(*root.getVariables()), QStringList({ "ID1", "ID2" }));
    QCOMPARE(root.getVariables()->at(0)->getLevel(), 1);
    QCOMPARE(root.getVariables()->at(1)->getLevel(), 2);
    const TOxEntity& first = *root.getChildren()->at(0);
    const TOxEntity& second = *root.getChildren()->at(1);
    QCOMPARE(first.getLevel(), 1);
    QCOMPARE(first.getDocumentationEntity(), QString());
    QCOMPARE(first.getVariables()->first()->getDocumentation(), QString("Of A"));
    QCOMPARE(second.getLevel(), 2);
    QCOMPARE(second.getDocumentationEntity(), QString("Of R2"));
    QCOMPARE(second.getVariables()->first()->getLevel(), 2);
    QCOMPARE(second.getVariables()->first()->getDocumentation(), QString());
}

void tst_DictionaryBuilder::languages()
{
    const TemporaryDictionary file(
        "[Dictionary]\nName=D\nLabel=Census|Censo\n[Languages]\nEN=English\nES=Spanish\n"
        "[Record]\nName=R\nLabel=Person|Persona\nRecordTypeValue='1'\n"
        "[Item]\nName=SEX\nLabel=Sex|Sexo\nLen=1\nOccurrences=2\n"
        "OccurrenceLabel=1,First|Primera\nOccurrenceLabel=2,Second|Segunda\n"
        "[ValueSet]\nName=V\nValue=1;Male|Hombre\nValue=2;Female|Mujer\n");
    CSProSource source(file.path());
    QCOMPARE(source.importer.dictionary->languages().size(), 2);
    QVERIFY(source.importer.dictionary->setLanguage("ES"));
    source.build();
    const TOxEntity& root = *source.dictionary->getRoot();
    QCOMPARE(root.getLabel(), QString("Censo"));
    QCOMPARE(root.getChildren()->first()->getLabel(), QString("Persona"));
    const TOxVariable& second = variable(*source.dictionary, "SEX_2");
    QCOMPARE(second.getLabel(), QString("Sex (Segunda)")); // the field was made before the choice
    QCOMPARE(labels(second), QString("1=Hombre|2=Mujer"));
}

void tst_DictionaryBuilder::firstValueSetWithValues()
{
    const auto source = openText("[Dictionary]\nName=D\n[Record]\nName=R\nRecordTypeValue='1'\n"
                                 "[Item]\nName=A\nLen=2\n"
                                 "[ValueSet]\nName=EMPTY\nLink=7\n"
                                 "[ValueSet]\nName=V1\nValue=1:5;Low\nValue=9;Missing\n"
                                 "Name=MISSING,Special\n"
                                 "[ValueSet]\nName=V2\nValue=1;One\nValue=20;Twenty\n");
    const TOxVariable& found = variable(*source->dictionary, "A");
    QCOMPARE(labels(found), QString("1:5=Low|9=Missing"));
    QCOMPARE(ranges(found), QString("1..5"));
    QCOMPARE(found.getMissing(), 9.0);
}

void tst_DictionaryBuilder::rangesWithoutOrdinaryCodes()
{
    const auto source =
        openText("[Dictionary]\nName=D\n[Record]\nName=R\nRecordTypeValue='1'\n"
                 "[Item]\nName=A\nLen=2\nOccurrences=2\n"
                 "[ValueSet]\nName=V\nLink=7\nValue=99;Missing\nName=MISSING,Special\n"
                 "Value='  ';Not applicable\nName=NOTAPPL,Special\n"
                 "[Item]\nName=B\nLen=3\n[ValueSet]\nName=W\nLink=7\n");
    for (const QString name : { "A_1", "A_2", "B" }) {
        const TOxVariable& found = variable(*source->dictionary, name);
        QCOMPARE(labels(found), QString("99=Missing|  =Not applicable"));
        QCOMPARE(ranges(found), QString(name == "B" ? "-99..999" : "-9..99"));
        QCOMPARE(found.getMissing(), 99.0);
        QCOMPARE(found.getNotappl(), 0.0);
    }
}

void tst_DictionaryBuilder::codesThatAreNoNumbers()
{
    const auto source = openText("[Dictionary]\nName=D\n[Record]\nName=R\nRecordTypeValue='1'\n"
                                 "[Item]\nName=A\nLen=2\n"
                                 "[ValueSet]\nName=V\nValue=1;One\nValue=X;Letter\nValue=3:Y;Half\n"
                                 "Value=5:6;Whole\n");
    const TOxVariable& found = variable(*source->dictionary, "A");
    QCOMPARE(labels(found), QString("1=One|X=Letter|3:Y=Half|5:6=Whole"));
    QCOMPARE(ranges(found), QString("1..1 5..6"));
}

void tst_DictionaryBuilder::manyOccurrencesShareManyCodes()
{
    QByteArray text = "[Dictionary]\nName=D\n[Record]\nName=R\nRecordTypeValue='1'\n"
                      "[Item]\nName=A\nLen=5\nOccurrences=2000\n[ValueSet]\nName=V\n";
    for (int code = 0; code < 5000; ++code)
        text += "Value=" + QByteArray::number(code) + ";L\n";
    const auto source = openText(text);
    const QList<TOxVariable*>& variables =
        *source->dictionary->getRoot()->getChildren()->first()->getVariables();
    QCOMPARE(variables.size(), 2000);
    QSet<const void*> lists;
    for (const TOxVariable* occurrence : variables) {
        lists.insert(occurrence->getValueLabelElementList());
        lists.insert(occurrence->getMetadataVariables()->getRange());
    }
    QCOMPARE(lists.size(), 2);
    QCOMPARE(variables.last()->getValueLabelElementList()->size(), 5000);
    QCOMPARE(variables.last()->getMetadataVariables()->getRange()->size(), 5000);
}

void tst_DictionaryBuilder::hostsMayReorderFields()
{
    CSProSource source(census);
    std::reverse(source.provider.fields->begin(), source.provider.fields->end());
    source.build();
    const TOxEntity& root = *source.dictionary->getRoot();
    QCOMPARE(names(*root.getVariables()),
        QStringList({ "HOUSEHOLD_NUMBER", "EA", "DISTRICT", "PROVINCE" }));
    QCOMPARE(root.getChildren()->at(1)->getVariables()->first()->getName(), QString("WORK_HOURS"));
    const TOxVariable& found = variable(*source.dictionary, "ASSET_2");
    QCOMPARE(found.getLabel(), QString("Things that the household owns (Television)"));
    QCOMPARE(labels(found), QString("1=Yes|2=No|9=Not stated"));
}

void tst_DictionaryBuilder::hostsMayRemoveFields()
{
    CSProSource source(census);
    for (const int index : { 20, 4, 0 })
        delete source.provider.fields->takeAt(index);
    source.build();
    QCOMPARE(allVariables(*source.dictionary).size(), 62);
    QCOMPARE(names(*source.dictionary->getRoot()->getVariables()),
        QStringList({ "DISTRICT", "EA", "HOUSEHOLD_NUMBER" }));
    QCOMPARE(labels(variable(*source.dictionary, "SEX")), QString("1=Male|2=Female"));
    QCOMPARE(
        labels(variable(*source.dictionary, "EARLIER_PROVINCE")).left(11), QString("11=Alta Ría"));
}

void tst_DictionaryBuilder::hostsMayAddFields()
{
    CSProSource source(census);
    source.provider.add("OF_PERSON", "PERSON");
    source.provider.add("OF_ALL", "Common");
    source.provider.add("OF_NONE");
    source.provider.add("OF_ANOTHER", "TRIP");
    source.build();
    const TOxEntity& root = *source.dictionary->getRoot();
    QCOMPARE(names(*root.getVariables()).mid(4), QStringList({ "OF_ALL", "OF_NONE" }));
    QCOMPARE(
        names(*root.getChildren()), QStringList({ "HOUSEHOLD", "PERSON", "LIVESTOCK", "TRIP" }));
    const TOxVariable& added = *root.getChildren()->at(1)->getVariables()->last();
    QCOMPARE(added.getName(), QString("OF_PERSON"));
    QCOMPARE(added.getRecType(), QString("2"));
    QCOMPARE(added.getEntity(), QString("PERSON"));
    QCOMPARE(names(*root.getChildren()->at(3)->getVariables()), QStringList({ "OF_ANOTHER" }));
}

void tst_DictionaryBuilder::hostsMayRenameFields()
{
    CSProSource source(census);
    TOxSourceField& field = *source.provider.getField("WALLS");
    field.fieldName = "MATERIAL";
    source.build();
    const TOxVariable& found = variable(*source.dictionary, "MATERIAL");
    QCOMPARE(found.getEntity(), QString("HOUSEHOLD"));
    QCOMPARE(found.getField(), QString("MATERIAL"));
    // What the field itself says: its text joins the labels of both value sets.
    QCOMPARE(found.getValueLabelElementList()->size(), field.valueLabels.count('\t'));
    QCOMPARE(labels(found).left(11), QString("11=Concrete"));
    QCOMPARE(ranges(found), QString("11..96"));
}

void tst_DictionaryBuilder::fieldsOfOneNameInTwoRecords()
{
    const auto source =
        openText("[Dictionary]\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n[Record]\nName="
                 "R1\nRecordTypeValue='1'\n"
                 "[Item]\nName=A\nStart=2\nLen=1\n[ValueSet]\nName=V1\nValue=1;One\n"
                 "[Record]\nName=R2\nRecordTypeValue='2'\n"
                 "[Item]\nName=A\nStart=5\nLen=1\n[ValueSet]\nName=V2\nValue=2;Two\n");
    const auto check = [&source] {
        const QList<TOxEntity*>& records = *source->dictionary->getRoot()->getChildren();
        const TOxVariable& first = *records.at(0)->getVariables()->first();
        const TOxVariable& second = *records.at(1)->getVariables()->first();
        QCOMPARE(labels(first), QString("1=One"));
        QCOMPARE(first.getStart(), 2);
        QCOMPARE(labels(second), QString("2=Two"));
        QCOMPARE(second.getStart(), 5);
    };
    check();
    std::reverse(source->provider.fields->begin(), source->provider.fields->end());
    source->build();
    check();
}

void tst_DictionaryBuilder::importerWithoutAProvider()
{
    TCSProDataImport importer(TESSEL_EXAMPLES "/census.dcf");
    importer.setReading(CSProReading::AsWritten);
    importer.openFile();
    LookupDictionary places;
    places.setName("PROVINCE");
    const DictionaryPointer dictionary(buildDictionary(importer, { places }));
    QCOMPARE(dictionary->getRoot()->getName(), QString("CENSUS_DICT"));
    QCOMPARE(dictionary->getRoot()->getChildren()->size(), 3);
    const TOxVariable& province = *dictionary->getRoot()->getVariables()->first();
    QCOMPARE(province.getName(), QString("PROVINCE"));
    QVERIFY(province.getMetadataVariables()->getLookup());
    QCOMPARE(province.getValueLabelElementList()->size(), 6);
}

void tst_DictionaryBuilder::unopenedImporter()
{
    TCSProDataImport importer("/data/never.dcf");
    Provider provider;
    provider.genericGetFieldsFrom(&importer);
    provider.add("A");
    const DictionaryPointer dictionary = build(provider);
    QCOMPARE(dictionary->getRoot()->getName(), QString("never"));
    QVERIFY(dictionary->getRoot()->getChildren()->isEmpty());
    QCOMPARE(names(*dictionary->getRoot()->getVariables()), QStringList({ "A" }));
    QCOMPARE(dictionary->getMetadataDictionary()->getDatasource()->getType(), QString("CSPRO"));
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

void tst_DictionaryBuilder::statFile()
{
    TStatFileDescription file = statDescription();
    file.rowCount = 1234;
    file.notes = QStringList { "First", "Second" };
    const DictionaryPointer dictionary(buildDictionary(file));
    const TOxEntity& root = *dictionary->getRoot();
    QCOMPARE(root.getName(), QString("wave.2"));
    QCOMPARE(root.getLabel(), QString("Second wave"));
    QCOMPARE(root.getDocumentationEntity(), QString("First\nSecond"));
    QCOMPARE(root.getNrElements(), qint64(1234));
    QVERIFY(root.getChildren()->isEmpty());
    const Datasource& source = *dictionary->getMetadataDictionary()->getDatasource();
    QCOMPARE(source.getType(), QString("SPSS"));
    QCOMPARE(source.getFile(), QDir::toNativeSeparators("folder/wave.2.sav"));
    file.kind = TStatFileKind::Stata;
    file.rowCount = -1; // not told
    const DictionaryPointer other(buildDictionary(file));
    QCOMPARE(other->getMetadataDictionary()->getDatasource()->getType(), QString("STATA"));
    QCOMPARE(other->getRoot()->getNrElements(), qint64(0));
}

void tst_DictionaryBuilder::statFileVariables()
{
    TStatFileDescription file = statDescription();
    TStatVariableDescription& weight = addVariable(file, "WEIGHT", "F12.3");
    weight.label = "Weight";
    weight.missingRanges = { { statNumber(90), statNumber(98) },
        { statNumber(99.5), statNumber(99.5) }, { statNumber(7), statNumber(7) } };
    addVariable(file, "ID", "F10.0");
    TStatVariableDescription& name = addVariable(file, "NAME", "A300", READSTAT_TYPE_STRING);
    name.userWidth = 300;
    name.missingRanges = { { statText("NA"), statText("NA") } };
    const DictionaryPointer dictionary(buildDictionary(file));
    QStringList variables;
    for (const TOxVariable* variable : *dictionary->getRoot()->getVariables()) {
        variables << QString("%1 %2 %3 %4 %5 %6 %7")
                         .arg(variable->getName(), variable->getLabel(), variable->getVarType())
                         .arg(variable->getSize())
                         .arg(variable->getDecimals())
                         .arg(variable->getStart())
                         .arg(variable->getMissing());
        QCOMPARE(variable->getField(), variable->getName());
        QCOMPARE(variable->getEntity(), QString("wave.2"));
        QCOMPARE(variable->getDataProvider(), QString("SPSS_folder/wave.2.sav"));
        QCOMPARE(variable->getMetadataVariables()->getLength(), variable->getSize());
        QVERIFY(variable->getMetadataVariables()->getRange()->isEmpty());
    }
    QCOMPARE(variables,
        QStringList({ "WEIGHT Weight REAL 12 3 0 99.5", "ID  INTEGER 10 0 0 0",
            "NAME  STRING 300 0 0 0" }));
}

void tst_DictionaryBuilder::statFileLabels()
{
    TStatFileDescription file = statDescription();
    file.labelSets = { { "A",
                           { { statText("a b"), "Code with a blank" }, { statText(""), "" },
                               { statText("LONGER THAN EIGHT"), "Long\tlabel\n" } } },
        { "B", { { statNumber(0.5), "Half" }, { statNumber(-1), "Minus one" } } },
        { "unused", {} } };
    addVariable(file, "TEXT", "A20", READSTAT_TYPE_STRING).labelSet = 0;
    addVariable(file, "FIRST", "F4.1").labelSet = 1;
    addVariable(file, "NONE", "F4.1");
    addVariable(file, "SECOND", "F1.0").labelSet = 1;
    addVariable(file, "EMPTY", "F1.0").labelSet = 2;
    const DictionaryPointer dictionary(buildDictionary(file));
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    QCOMPARE(labels(*variables.at(0)),
        QString("a b=Code with a blank|=|LONGER THAN EIGHT=Long\tlabel\n"));
    QCOMPARE(labels(*variables.at(1)), QString("0.5=Half|-1=Minus one"));
    QCOMPARE(labels(*variables.at(2)), QString());
    QCOMPARE(
        variables.at(3)->getValueLabelElementList(), variables.at(1)->getValueLabelElementList());
    QCOMPARE(labels(*variables.at(4)), QString());
    QVERIFY(
        variables.at(2)->getValueLabelElementList() != variables.at(4)->getValueLabelElementList());
}

void tst_DictionaryBuilder::statFileBounds_data()
{
    QTest::addColumn<QVector<TStatMissingRange>>("missing");
    QTest::addColumn<QString>("expected");
    using Ranges = QVector<TStatMissingRange>;
    QTest::newRow("none missing") << Ranges() << "-2..99";
    QTest::newRow("highest missing") << Ranges({ { statNumber(99), statNumber(99) } }) << "-2..8.5";
    QTest::newRow("range missing") << Ranges({ { statNumber(5), statNumber(100) } }) << "-2..1";
    QTest::newRow("one left") << Ranges({ { statNumber(1), statNumber(100) } }) << "";
    QTest::newRow("all missing") << Ranges({ { statNumber(-10), statNumber(100) } }) << "";
}

void tst_DictionaryBuilder::statFileBounds()
{
    QFETCH(QVector<TStatMissingRange>, missing);
    QFETCH(QString, expected);
    TStatFileDescription file = statDescription();
    TStatLabelledValue tagged { statNumber(1000), "Tagged" };
    tagged.value.tag = 'a';
    file.labelSets = { { "A",
        { { statNumber(1), "One" }, { statNumber(99), "Unknown" }, tagged,
            { statNumber(-2), "Minus two" }, { statNumber(8.5), "More" } } } };
    TStatVariableDescription& first = addVariable(file, "FIRST", "F4.1");
    first.labelSet = 0;
    first.missingRanges = missing;
    TStatVariableDescription& second = addVariable(file, "SECOND", "F4.1");
    second.labelSet = 0;
    TStatVariableDescription& text = addVariable(file, "TEXT", "A4", READSTAT_TYPE_STRING);
    text.labelSet = 0;
    TStatVariableDescription& scale = addVariable(file, "SCALE", "F4.1");
    scale.labelSet = 0;
    scale.measure = READSTAT_MEASURE_SCALE;
    const DictionaryPointer dictionary(buildDictionary(file));
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    QCOMPARE(ranges(*variables.at(0)), expected);
    QCOMPARE(ranges(*variables.at(1)), QString("-2..99")); // its missing values are its own
    QCOMPARE(ranges(*variables.at(2)), QString());
    QCOMPARE(ranges(*variables.at(3)), QString());
}

void tst_DictionaryBuilder::statFileLookups()
{
    TStatFileDescription file = statDescription();
    addVariable(file, "PLACE", "F4.0");
    addVariable(file, "OTHER", "F4.0");
    LookupDictionary places;
    places.setName("PLACE");
    const DictionaryPointer dictionary(buildDictionary(file, { places }));
    QCOMPARE(dictionary->getMetadataDictionary()->getLookUp()->size(), 1);
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    QVERIFY(variables.at(0)->getMetadataVariables()->getLookup());
    QVERIFY(!variables.at(1)->getMetadataVariables()->getLookup());
}

// Were labels or bounds made for each variable, this would not end.
void tst_DictionaryBuilder::statFileOfManyVariables()
{
    TStatFileDescription file = statDescription();
    TStatLabelSet set;
    for (int code = 0; code < 50'000; ++code)
        set.labels.append({ statNumber(code), "Label" });
    file.labelSets = { set };
    for (int i = 0; i < 20'000; ++i) {
        TStatVariableDescription& variable = addVariable(file, QString("V%1").arg(i), "F5.0");
        variable.labelSet = 0;
        variable.missingRanges = { { statNumber(99), statNumber(99) } };
    }
    const DictionaryPointer dictionary(buildDictionary(file));
    QCOMPARE(dictionary->getRoot()->getVariables()->size(), 20'000);
    QCOMPARE(ranges(*dictionary->getRoot()->getVariables()->last()), QString("0..49999"));
}

QTEST_GUILESS_MAIN(tst_DictionaryBuilder)

#include "tst_DictionaryBuilder.moc"
