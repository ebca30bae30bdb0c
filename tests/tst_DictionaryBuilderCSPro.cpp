#include "BuiltDictionaries.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/Variable.h>

#include <QLoggingCategory>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace {

std::unique_ptr<CSProSource> openCensus(CSProReading reading = CSProReading::AsWritten)
{
    auto source = std::make_unique<CSProSource>(census, reading);
    source->build();
    return source;
}

} // namespace

class tst_DictionaryBuilderCSPro : public QObject {
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
};

void tst_DictionaryBuilderCSPro::initTestCase()
{
    QLoggingCategory::setFilterRules("default.debug=false");
}

void tst_DictionaryBuilderCSPro::censusEntities()
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

void tst_DictionaryBuilderCSPro::censusVariables_data()
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

void tst_DictionaryBuilderCSPro::censusVariables()
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

void tst_DictionaryBuilderCSPro::censusPlaces_data()
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

void tst_DictionaryBuilderCSPro::censusPlaces()
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

void tst_DictionaryBuilderCSPro::censusCodes_data()
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

void tst_DictionaryBuilderCSPro::censusCodes()
{
    const auto source = openCensus();
    const TOxVariable& found = variable(*source->dictionary, QTest::currentDataTag());
    QTEST(labels(found), "labels");
    QTEST(ranges(found), "ranges");
}

void tst_DictionaryBuilderCSPro::censusVariablesAreTheFields_data()
{
    QTest::addColumn<bool>("asWritten");

    QTest::newRow("as written") << true;
    QTest::newRow("established") << false;
}

void tst_DictionaryBuilderCSPro::censusVariablesAreTheFields()
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

void tst_DictionaryBuilderCSPro::censusCanBeSearched()
{
    const auto source = openCensus();
    TOxEntity& root = *source->dictionary->getRoot();
    QCOMPARE(root.findEntity("PERSON"), root.getChildren()->at(1));
    QCOMPARE(root.findEntity("CENSUS_DICT"), &root);
}

void tst_DictionaryBuilderCSPro::censusAsEstablished()
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

void tst_DictionaryBuilderCSPro::censusSharesLabels()
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

void tst_DictionaryBuilderCSPro::censusSharesRanges()
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

void tst_DictionaryBuilderCSPro::recordWithoutItems()
{
    const auto source = openText("[Dictionary]\nName=D\n"
                                 "[Record]\nName=EMPTY\nRecordTypeValue='1'\n"
                                 "[Record]\nName=R\nRecordTypeValue='2'\n[Item]\nName=A\nLen=1\n");
    const QList<TOxEntity*>& records = *source->dictionary->getRoot()->getChildren();
    QCOMPARE(names(records), QStringList({ "EMPTY", "R" }));
    QCOMPARE(records.at(0)->getRecType(), QString("1"));
    QVERIFY(records.at(0)->getVariables()->isEmpty());
}

void tst_DictionaryBuilderCSPro::notesAndLevels()
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

void tst_DictionaryBuilderCSPro::languages()
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

void tst_DictionaryBuilderCSPro::firstValueSetWithValues()
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

void tst_DictionaryBuilderCSPro::rangesWithoutOrdinaryCodes()
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

void tst_DictionaryBuilderCSPro::codesThatAreNoNumbers()
{
    const auto source = openText("[Dictionary]\nName=D\n[Record]\nName=R\nRecordTypeValue='1'\n"
                                 "[Item]\nName=A\nLen=2\n"
                                 "[ValueSet]\nName=V\nValue=1;One\nValue=X;Letter\nValue=3:Y;Half\n"
                                 "Value=5:6;Whole\n");
    const TOxVariable& found = variable(*source->dictionary, "A");
    QCOMPARE(labels(found), QString("1=One|X=Letter|3:Y=Half|5:6=Whole"));
    QCOMPARE(ranges(found), QString("1..1 5..6"));
}

void tst_DictionaryBuilderCSPro::manyOccurrencesShareManyCodes()
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

void tst_DictionaryBuilderCSPro::hostsMayReorderFields()
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

void tst_DictionaryBuilderCSPro::hostsMayRemoveFields()
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

void tst_DictionaryBuilderCSPro::hostsMayAddFields()
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

void tst_DictionaryBuilderCSPro::hostsMayRenameFields()
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

void tst_DictionaryBuilderCSPro::fieldsOfOneNameInTwoRecords()
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

void tst_DictionaryBuilderCSPro::importerWithoutAProvider()
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

void tst_DictionaryBuilderCSPro::unopenedImporter()
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

QTEST_GUILESS_MAIN(tst_DictionaryBuilderCSPro)

#include "tst_DictionaryBuilderCSPro.moc"
