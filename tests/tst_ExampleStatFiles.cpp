// The SPSS and Stata files of the example census: what they say, and that the program beside them
// still writes the same.
#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatDictionary.h>

#include "StatFiles.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace {

const char* const fileNames[] = { "household.sav", "household.dta", "person.sav", "person.dta" };

QString example(const QString& name)
{
    return QDir(QStringLiteral(TESSEL_EXAMPLES)).filePath(name);
}

// ---- descriptions

TStatFileDescription described(const QString& path)
{
    return readStatDescription(path, kindOf(path));
}

TStatVariableDescription variableOf(const TStatFileDescription& file, const QString& name)
{
    const auto found = std::find_if(file.variables.cbegin(), file.variables.cend(),
        [&](const TStatVariableDescription& variable) { return variable.name == name; });
    return found == file.variables.cend() ? TStatVariableDescription() : *found;
}

QStringList namesOf(const TStatFileDescription& file)
{
    QStringList names;
    for (const TStatVariableDescription& variable : file.variables)
        names.append(variable.name);
    return names;
}

// "code=label", one for each label of the variable.
QStringList labelsOf(const TStatFileDescription& file, const TStatVariableDescription& variable)
{
    QStringList labels;
    if (variable.labelSet < 0)
        return labels;
    for (const TStatLabelledValue& entry : file.labelSets.at(variable.labelSet).labels)
        labels.append(entry.value.text + QLatin1Char('=') + entry.label);
    return labels;
}

// "low" or "low..high", one for each range.
QStringList missingOf(const TStatVariableDescription& variable)
{
    QStringList missing;
    for (const TStatMissingRange& range : variable.missingRanges) {
        const bool isSingle = range.low.text == range.high.text;
        missing.append(isSingle ? range.low.text
                                : QString(range.low.text + QLatin1String("..") + range.high.text));
    }
    return missing;
}

// All that the description says, a line for the file and one for each variable.
QStringList linesOf(const TStatFileDescription& file)
{
    QStringList lines { QStringLiteral("%1|%2|%3|%4|%5|%6")
                            .arg(file.fileLabel, file.encoding)
                            .arg(file.formatVersion)
                            .arg(file.rowCount)
                            .arg(file.labelSets.size())
                            .arg(file.notes.join(QLatin1Char(';'))) };
    for (const TStatVariableDescription& variable : file.variables) {
        lines.append(QStringLiteral("%1|%2|%3|%4|%5|%6|%7")
                         .arg(variable.name, variable.label, variable.format, variable.labelSetName)
                         .arg(variable.type)
                         .arg(variable.storageWidth)
                         .arg(variable.userWidth)
            + QStringLiteral("|%1|%2|%3|")
                  .arg(variable.displayWidth)
                  .arg(variable.measure)
                  .arg(variable.alignment)
            + missingOf(variable).join(QLatin1Char(';')) + QLatin1Char('|')
            + labelsOf(file, variable).join(QLatin1Char(';')));
    }
    return lines;
}

// ---- rows

// The values of a file as text; "." and ".a" to ".z" are missing, and "*" follows a value that is
// declared as missing.
using Rows = QVector<QStringList>;

QString textOf(const readstat_value_t& value, readstat_variable_t* variable)
{
    if (readstat_value_is_tagged_missing(value))
        return QLatin1Char('.') + QString(QLatin1Char(readstat_value_tag(value)));
    if (readstat_value_is_system_missing(value))
        return QStringLiteral(".");
    const bool isText = readstat_value_type_class(value) == READSTAT_TYPE_CLASS_STRING;
    const QString text = isText ? QString::fromUtf8(readstat_string_value(value))
                                : QString::number(readstat_double_value(value), 'g', 12);
    return readstat_value_is_defined_missing(value, variable) ? QString(text + QLatin1Char('*'))
                                                              : text;
}

int onVariable(int, readstat_variable_t*, const char*, void*)
{
    return READSTAT_HANDLER_OK; // libreadstat gives no values of variables that nobody asks for
}

int onValue(int row, readstat_variable_t* variable, readstat_value_t value, void* context)
{
    auto& rows = *static_cast<Rows*>(context);
    if (row == rows.size())
        rows.append(QStringList());
    rows.last().append(textOf(value, variable));
    return READSTAT_HANDLER_OK;
}

// None when the file cannot be read.
Rows rowsOf(const QString& path)
{
    const std::unique_ptr<readstat_parser_t, decltype(&readstat_parser_free)> parser(
        readstat_parser_init(), readstat_parser_free);
    readstat_set_variable_handler(parser.get(), onVariable);
    readstat_set_value_handler(parser.get(), onValue);
    const auto parse =
        kindOf(path) == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
    Rows rows;
    const readstat_error_t result = parse(parser.get(), QFile::encodeName(path).constData(), &rows);
    return result == READSTAT_OK ? rows : Rows();
}

// ---- the program

struct Result {
    int exitCode = -1;
    QString output; // of both streams
};

Result runProgram(const QStringList& arguments, const QString& timeZone = QStringLiteral("UTC"))
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TZ"), timeZone);
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(TESSEL_WRITE_STATFILES), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return { process.exitCode(), QString::fromUtf8(process.readAll()) };
}

void addFiles()
{
    QTest::addColumn<QString>("name");
    for (const char* name : fileNames)
        QTest::newRow(name) << QString::fromLatin1(name);
}

// The field of the row's name against the row.
template <typename Importer> void compareField(const QString& file)
{
    Importer importer(example(file));
    QVERIFY(importer.openFile());
    QCOMPARE(importer.fields->size(), described(example(file)).variables.size());
    const TGenericField* field = importer.fieldByName(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(field);
    QTEST(field->label, "label");
    QTEST(field->fieldType, "fieldType");
    QTEST(field->length, "length");
    QTEST(field->valueLabels, "valueLabels");
    QTEST(field->minValue, "minValue");
    QTEST(field->maxValue, "maxValue");
}

} // namespace

class TestExampleStatFiles : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void programTellsWhatIsWrong_data();
    void programTellsWhatIsWrong();
    void writtenFilesAreTheCommittedOnes_data();
    void writtenFilesAreTheCommittedOnes();
    void everyRunGivesTheSameBytes_data();
    void everyRunGivesTheSameBytes();

    void fileSaysWhatItIs_data();
    void fileSaysWhatItIs();
    void variablesInOrder_data();
    void variablesInOrder();
    void variableAsWritten_data();
    void variableAsWritten();
    void spssMeasures_data();
    void spssMeasures();
    void valueLabels_data();
    void valueLabels();
    void spssMissingValues_data();
    void spssMissingValues();
    void stataHasNoRangesOfMissingValues_data();
    void stataHasNoRangesOfMissingValues();
    void rowValues_data();
    void rowValues();
    void missingValuesAreTaggedInStata();

    void spssFields_data();
    void spssFields();
    void stataFields_data();
    void stataFields();

private:
    QTemporaryDir m_written;
};

void TestExampleStatFiles::initTestCase()
{
    QVERIFY(m_written.isValid());
    const Result result = runProgram({ example(QStringLiteral("census.dcf")),
        example(QStringLiteral("census.dat")), m_written.path() });
    QCOMPARE(result.output, QString());
    QCOMPARE(result.exitCode, 0);
}

void TestExampleStatFiles::programTellsWhatIsWrong_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("text");
    const QString dictionary = example(QStringLiteral("census.dcf"));
    const QString data = example(QStringLiteral("census.dat"));
    const QString places = example(QStringLiteral("places.csv"));
    const QString folder = m_written.path();
    const QString nowhere = m_written.filePath(QStringLiteral("nowhere"));
    QTest::newRow("no arguments") << QStringList() << 2 << QStringLiteral("usage: ");
    QTest::newRow("no dictionary") << QStringList { nowhere, data, folder } << 1
                                   << QString(nowhere + QLatin1String(": cannot be read"));
    QTest::newRow("another dictionary") << QStringList { places, data,
        folder } << 1 << QString(places + QLatin1String(": has no record HOUSEHOLD"));
    QTest::newRow("no data") << QStringList { dictionary, nowhere, folder } << 1
                             << QString(nowhere + QLatin1String(": No such file or directory"));
    QTest::newRow("no folder") << QStringList { dictionary, data, nowhere } << 1
                               << QString(nowhere + QLatin1String("/household.sav: No such file"));
}

void TestExampleStatFiles::programTellsWhatIsWrong()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, text);
    const Result result = runProgram(arguments);
    QTEST(result.exitCode, "exitCode");
    QVERIFY2(result.output.contains(text), qPrintable(result.output));
}

void TestExampleStatFiles::writtenFilesAreTheCommittedOnes_data()
{
    addFiles();
}

void TestExampleStatFiles::writtenFilesAreTheCommittedOnes()
{
    QFETCH(QString, name);
    const QString written = m_written.filePath(name);
    QCOMPARE(linesOf(described(written)), linesOf(described(example(name))));
    QCOMPARE(rowsOf(written), rowsOf(example(name)));
}

void TestExampleStatFiles::everyRunGivesTheSameBytes_data()
{
    addFiles();
}

void TestExampleStatFiles::everyRunGivesTheSameBytes()
{
    QFETCH(QString, name);
    const QTemporaryDir again;
    const Result result = runProgram({ example(QStringLiteral("census.dcf")),
                                         example(QStringLiteral("census.dat")), again.path() },
        QStringLiteral("Asia/Tokyo"));
    QCOMPARE(result.exitCode, 0);
    QFile first(m_written.filePath(name));
    QFile second(again.filePath(name));
    QVERIFY(first.open(QIODevice::ReadOnly) && second.open(QIODevice::ReadOnly));
    QVERIFY(first.readAll() == second.readAll());
}

void TestExampleStatFiles::fileSaysWhatItIs_data()
{
    QTest::addColumn<QString>("fileLabel");
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<int>("formatVersion");
    QTest::addColumn<qint64>("rowCount");
    QTest::addColumn<int>("labelSets");
    const QString households =
        QStringLiteral("Population and housing census of Velmora: Household");
    const QString persons = QStringLiteral("Population and housing census of Velmora: Person");
    QTest::newRow("household.sav")
        << households << QStringLiteral("UTF-8") << 2 << qint64(1000) << 13;
    QTest::newRow("household.dta") << households << QString() << 118 << qint64(1000) << 12;
    QTest::newRow("person.sav") << persons << QStringLiteral("UTF-8") << 2 << qint64(4299) << 12;
    QTest::newRow("person.dta") << persons << QString() << 118 << qint64(4299) << 11;
}

void TestExampleStatFiles::fileSaysWhatItIs()
{
    const QString path = example(QString::fromLatin1(QTest::currentDataTag()));
    const TStatFileDescription file = described(path);
    QVERIFY(file.isWhole());
    QTEST(file.fileLabel, "fileLabel");
    QTEST(file.encoding, "encoding");
    QTEST(file.formatVersion, "formatVersion");
    QTEST(file.rowCount, "rowCount");
    QTEST(file.labelSets.size(), "labelSets");
    QCOMPARE(qint64(rowsOf(path).size()), file.rowCount);
}

void TestExampleStatFiles::variablesInOrder_data()
{
    addFiles();
}

void TestExampleStatFiles::variablesInOrder()
{
    QFETCH(QString, name);
    const QString households =
        QStringLiteral("PROVINCE DISTRICT EA HOUSEHOLD_NUMBER AREA_CODE VISIT_DATE VISIT_DAY "
                       "START_HOUR START_MINUTE PERSONS URBAN_RURAL ALTITUDE WALLS ROOMS "
                       "WATER_SOURCE WATER_HOURS ASSET_1 ASSET_2 ASSET_3 ASSET_4 LAND_SHARE INCOME "
                       "FOOD_SHORTAGE DEATH_SEX_1 DEATH_SEX_2 DEATH_SEX_3 DEATH_AGE_1 DEATH_AGE_2 "
                       "DEATH_AGE_3 HOUSEHOLD_WEIGHT PHONE REMARKS");
    const QString persons =
        QStringLiteral("PROVINCE DISTRICT EA HOUSEHOLD_NUMBER LINE_NUMBER GIVEN_NAME FAMILY_NAME "
                       "RELATIONSHIP SEX BIRTH_YEAR BIRTH_MONTH BIRTH_DAY AGE PERSON_WEIGHT "
                       "LANGUAGE_1 LANGUAGE_2 LANGUAGE_3 EARLIER_PROVINCE EDUCATION MARITAL_STATUS "
                       "OCCUPATION WORK_HOURS");
    QCOMPARE(namesOf(described(example(name))).join(QLatin1Char(' ')),
        name.startsWith(QLatin1String("person")) ? persons : households);
}

void TestExampleStatFiles::variableAsWritten_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("format");
    QTest::addColumn<quint64>("storageWidth");
    QTest::addColumn<int>("displayWidth");
    const auto add = [](const char* name, const char* file, const char* label, readstat_type_t type,
                         const char* format, quint64 storageWidth, int displayWidth) {
        QTest::newRow(
            qPrintable(QString(QLatin1String(name) + QLatin1Char(' ') + QLatin1String(file))))
            << QString::fromLatin1(file) << QString::fromUtf8(label) << int(type)
            << QString::fromLatin1(format) << storageWidth << displayWidth;
    };
    constexpr auto Text = READSTAT_TYPE_STRING;
    constexpr auto Double = READSTAT_TYPE_DOUBLE;

    add("PROVINCE", "household.sav", "Province", Double, "F2.0", 8, 8);
    add("PROVINCE", "household.dta", "Province", READSTAT_TYPE_INT8, "%8.0g", 1, 8);
    add("EA", "household.sav", "Enumeration area", Double, "F4.0", 8, 8);
    add("EA", "household.dta", "Enumeration area", READSTAT_TYPE_INT16, "%8.0g", 2, 8);
    add("AREA_CODE", "household.sav", "Area code", Double, "F9.0", 8, 9);
    add("AREA_CODE", "household.dta", "Area code", READSTAT_TYPE_INT32, "%12.0g", 4, 12);
    add("VISIT_DATE", "household.sav", "Date of the visit", Double, "SDATE10", 8, 10);
    add("VISIT_DATE", "household.dta", "Date of the visit", READSTAT_TYPE_INT32, "%td", 4, 0);
    add("WATER_HOURS", "household.sav", "Hours of running water on a usual day", Double, "F4.1", 8,
        8);
    add("WATER_HOURS", "household.dta", "Hours of running water on a usual day", Double, "%4.1f", 8,
        4);
    add("ASSET_3", "household.sav", "Things that the household owns: Refrigerator", Double, "F1.0",
        8, 8);
    add("ASSET_3", "household.dta", "Things that the household owns: Refrigerator",
        READSTAT_TYPE_INT8, "%8.0g", 1, 8);
    add("LAND_SHARE", "household.sav", "Share of the farmed land that the household owns", Double,
        "F4.2", 8, 8);
    add("LAND_SHARE", "household.dta", "Share of the farmed land that the household owns", Double,
        "%4.2f", 8, 4);
    add("FOOD_SHORTAGE", "household.sav",
        "During the past twelve months, was there a day on which any member of this household went "
        "to sleep hungry because there was not enough food or money to buy it?",
        Double, "F1.0", 8, 8);
    add("FOOD_SHORTAGE", "household.dta",
        "During the past twelve months, was there a day on which any member of this house",
        READSTAT_TYPE_INT8, "%8.0g", 1, 8);
    add("HOUSEHOLD_WEIGHT", "household.sav", "Weight of the household", Double, "F8.4", 8, 8);
    add("HOUSEHOLD_WEIGHT", "household.dta", "Weight of the household", Double, "%8.4f", 8, 8);
    add("PHONE", "household.sav", "Telephone number", Double, "F12.0", 8, 12);
    add("PHONE", "household.dta", "Telephone number", Double, "%12.0f", 8, 12);
    add("REMARKS", "household.sav", "Remarks of the enumerator", Text, "A60", 64, 40);
    add("REMARKS", "household.dta", "Remarks of the enumerator", Text, "%-60s", 61, -60);
    add("GIVEN_NAME", "person.sav", "Given name", Text, "A15", 16, 15);
    add("GIVEN_NAME", "person.dta", "Given name", Text, "%-15s", 16, -15);
    add("BIRTH_YEAR", "person.sav", "Year of birth", Double, "F4.0", 8, 8);
    add("BIRTH_YEAR", "person.dta", "Year of birth", READSTAT_TYPE_INT16, "%8.0g", 2, 8);
    add("OCCUPATION", "person.sav", "Main occupation", Text, "A3", 8, 8);
    add("OCCUPATION", "person.dta", "Main occupation", Text, "%-3s", 4, -3);
    add("PERSON_WEIGHT", "person.sav", "Weight of the person", Double, "F6.2", 8, 8);
    add("PERSON_WEIGHT", "person.dta", "Weight of the person", Double, "%6.2f", 8, 6);
}

void TestExampleStatFiles::variableAsWritten()
{
    QFETCH(QString, file);
    const QString name =
        QString::fromLatin1(QTest::currentDataTag()).section(QLatin1Char(' '), 0, 0);
    const TStatVariableDescription variable = variableOf(described(example(file)), name);
    QTEST(variable.label, "label");
    QTEST(int(variable.type), "type");
    QTEST(variable.format, "format");
    QTEST(variable.storageWidth, "storageWidth");
    QTEST(variable.displayWidth, "displayWidth");
}

void TestExampleStatFiles::spssMeasures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("measure");
    QTest::newRow("EA") << QStringLiteral("household.sav") << int(READSTAT_MEASURE_NOMINAL);
    QTest::newRow("WALLS") << QStringLiteral("household.sav") << int(READSTAT_MEASURE_NOMINAL);
    QTest::newRow("ROOMS") << QStringLiteral("household.sav") << int(READSTAT_MEASURE_SCALE);
    QTest::newRow("LAND_SHARE") << QStringLiteral("household.sav") << int(READSTAT_MEASURE_SCALE);
    QTest::newRow("GIVEN_NAME") << QStringLiteral("person.sav") << int(READSTAT_MEASURE_NOMINAL);
    QTest::newRow("AGE") << QStringLiteral("person.sav") << int(READSTAT_MEASURE_SCALE);
}

void TestExampleStatFiles::spssMeasures()
{
    QFETCH(QString, file);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    QTEST(int(variableOf(described(example(file)), name).measure), "measure");
}

void TestExampleStatFiles::valueLabels_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("labels");
    const auto add = [](const char* name, const char* file, const char* labels) {
        QTest::newRow(
            qPrintable(QString(QLatin1String(name) + QLatin1Char(' ') + QLatin1String(file))))
            << QString::fromLatin1(file) << QString::fromUtf8(labels);
    };
    const char* const provinces = "11=Alta Ría|12=Bassemer|21=Côte-d'Ivry|22=Dolmark|31=Étang Noir|"
                                  "40=Isles of Fenn";
    add("PROVINCE", "household.sav", provinces);
    add("PROVINCE", "household.dta", provinces);
    add("EARLIER_PROVINCE", "person.sav", provinces);
    add("EARLIER_PROVINCE", "person.dta", provinces);
    add("DISTRICT", "household.sav", "");
    add("DISTRICT", "household.dta", "");
    add("VISIT_DAY", "household.sav",
        "1=First team|3=First team|5=First team|2=Second team|4=Second team");
    add("WALLS", "household.sav",
        "11=Concrete|12=Stone|13=Baked brick|21=Timber|22=Bamboo or reed|31=Earth|"
        "96=Other; not listed above|99=Not stated");
    add("WALLS", "household.dta",
        "11=Concrete|12=Stone|13=Baked brick|21=Timber|22=Bamboo or reed|31=Earth|"
        "96=Other; not listed above|.a=Not stated");
    add("WATER_SOURCE", "household.sav",
        "A=Piped into the dwelling|B=Public tap|C1=Protected well|C2=Open well|"
        "D=River, lake or spring|X=Other|Z=Not stated");
    add("WATER_SOURCE", "household.dta", "");
    add("WATER_HOURS", "household.sav", "0=No running water|99.9=Not stated");
    add("WATER_HOURS", "household.dta", "0=No running water|.a=Not stated|.b=Not applicable");
    add("LAND_SHARE", "household.sav",
        "0.25=One quarter|0.5=One half|0.75=Three quarters|1=The whole");
    add("LAND_SHARE", "household.dta", "1=The whole|.b=Not applicable");
    add("INCOME", "household.sav", "999998=Refused|999999=Not stated");
    add("INCOME", "household.dta", ".a=Not stated|.c=Refused");
    add("ASSET_4", "household.sav", "1=Yes|2=No|9=Not stated");
    add("DEATH_SEX_3", "household.dta", "1=Male|2=Female");
    add("AGE", "person.sav", "99=Not stated");
    add("AGE", "person.dta", ".a=Not stated");
    add("MARITAL_STATUS", "person.sav",
        "1=Never married|2=Married|3=Living together|4=Divorced or separated|5=Widowed|"
        "9=Not stated");
    add("MARITAL_STATUS", "person.dta",
        "1=Never married|2=Married|3=Living together|4=Divorced or separated|5=Widowed|"
        ".a=Not stated|.b=Not applicable");
    add("OCCUPATION", "person.sav",
        "A=Farming and fishing|B1=Mining|B2=Manufacturing|C=Building|"
        "D10=Wholesale and retail trade|D20=Transport|E=Teaching|F=Health care|G=Public service|"
        "X=Other|Z=Not stated|=Not applicable");
}

void TestExampleStatFiles::valueLabels()
{
    QFETCH(QString, file);
    const QString name =
        QString::fromLatin1(QTest::currentDataTag()).section(QLatin1Char(' '), 0, 0);
    const TStatFileDescription description = described(example(file));
    const TStatVariableDescription variable = variableOf(description, name);
    QCOMPARE(variable.name, name);
    QTEST(labelsOf(description, variable).join(QLatin1Char('|')), "labels");
}

void TestExampleStatFiles::spssMissingValues_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("missing");
    const QString households = QStringLiteral("household.sav");
    const QString persons = QStringLiteral("person.sav");
    QTest::newRow("PROVINCE") << households << QString();
    QTest::newRow("LAND_SHARE") << households << QString();
    QTest::newRow("WALLS") << households << QStringLiteral("99");
    QTest::newRow("WATER_HOURS") << households << QStringLiteral("99.9");
    QTest::newRow("WATER_SOURCE") << households << QStringLiteral("Z");
    QTest::newRow("INCOME") << households << QStringLiteral("999998|999999");
    QTest::newRow("BIRTH_YEAR") << persons << QStringLiteral("9999");
    QTest::newRow("OCCUPATION") << persons << QStringLiteral("Z|");
    QTest::newRow("WORK_HOURS") << persons << QStringLiteral("999.9");
}

void TestExampleStatFiles::spssMissingValues()
{
    QFETCH(QString, file);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    const TStatVariableDescription variable = variableOf(described(example(file)), name);
    QCOMPARE(variable.name, name);
    QTEST(missingOf(variable).join(QLatin1Char('|')), "missing");
}

void TestExampleStatFiles::stataHasNoRangesOfMissingValues_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("household.dta") << QStringLiteral("household.dta");
    QTest::newRow("person.dta") << QStringLiteral("person.dta");
}

void TestExampleStatFiles::stataHasNoRangesOfMissingValues()
{
    QFETCH(QString, name);
    const TStatFileDescription file = described(example(name));
    for (const TStatVariableDescription& variable : file.variables)
        QVERIFY2(variable.missingRanges.isEmpty(), qPrintable(variable.name));
}

void TestExampleStatFiles::rowValues_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("values");
    const auto add = [](const char* file, int row, const char* values) {
        QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(QLatin1String(file)).arg(row)))
            << QString::fromLatin1(file) << row << QString::fromUtf8(values);
    };
    add("household.sav", 0,
        "11|1|1|1|110010001|13915152000|3|15|7|5|1|391|96|2|A|20.5|1|2|2|1|.|38200|2|.|.|.|.|.|.|"
        "8.9477|210646892247|");
    add("household.dta", 0,
        "11|1|1|1|110010001|23280|3|15|7|5|1|391|96|2|A|20.5|1|2|2|1|.b|38200|2|.|.|.|.|.|.|"
        "8.9477|210646892247|");
    add("person.sav", 0, "11|1|1|1|1|César|Jönsson|1|1|1965|11|22|57|8.95|1|.|.|11|3|2|A|61");
    add("person.sav", 1, "11|1|1|1|2|Grażyna|Jönsson|2|2|1968|12|99*|54|8.95|1|.|.|11|1|2|B2|16");
    add("person.dta", 1, "11|1|1|1|2|Grażyna|Jönsson|2|2|1968|12|.a|54|8.95|1|.b|.b|11|1|2|B2|16");
}

void TestExampleStatFiles::rowValues()
{
    QFETCH(QString, file);
    QFETCH(int, row);
    QTEST(rowsOf(example(file)).value(row).join(QLatin1Char('|')), "values");
}

// Both kinds of file have the same rows, so a value declared as missing in one is a tag in the
// other.
void TestExampleStatFiles::missingValuesAreTaggedInStata()
{
    for (const QString& name : { QStringLiteral("household"), QStringLiteral("person") }) {
        const QString spssPath = example(name + QLatin1String(".sav"));
        const Rows spss = rowsOf(spssPath);
        const Rows stata = rowsOf(example(name + QLatin1String(".dta")));
        const TStatFileDescription description = described(spssPath);
        QCOMPARE(spss.size(), stata.size());
        int tags = 0;
        for (int row = 0; row < spss.size(); ++row) {
            for (int column = 0; column < spss.at(row).size(); ++column) {
                const QString& one = spss.at(row).at(column);
                const QString& other = stata.at(row).at(column);
                const TStatVariableDescription& variable = description.variables.at(column);
                if (variable.type == READSTAT_TYPE_STRING) {
                    QCOMPARE(QString(one).remove(QLatin1Char('*')), other);
                } else if (one.endsWith(QLatin1Char('*'))) {
                    const bool isRefused = one == QLatin1String("999998*");
                    QCOMPARE(other, isRefused ? QStringLiteral(".c") : QStringLiteral(".a"));
                    ++tags;
                } else if (one == QLatin1String(".")) {
                    QVERIFY(other == QLatin1String(".") || other == QLatin1String(".b"));
                } else if (!variable.format.startsWith(QLatin1String("SDATE"))) {
                    QCOMPARE(other, one);
                }
            }
        }
        QVERIFY(tags > 100);
    }
}

void TestExampleStatFiles::spssFields_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("fieldType");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("valueLabels");
    QTest::addColumn<QString>("minValue");
    QTest::addColumn<QString>("maxValue");
    QTest::newRow("PROVINCE") << QStringLiteral("household.sav") << QStringLiteral("Province")
                              << int(TGenericField::IntegerType) << 2
                              << QStringLiteral(
                                     "11 Alta Ría\t12 Bassemer\t21 Côte-d'Ivry\t22 Dolmark\t"
                                     "31 Étang Noir\t40 Isles of Fenn\t")
                              << QStringLiteral("11") << QStringLiteral("40");
    // libreadstat tells no number of decimals, so all numbers count as whole ones.
    QTest::newRow("WATER_HOURS") << QStringLiteral("household.sav")
                                 << QStringLiteral("Hours of running water on a usual day")
                                 << int(TGenericField::IntegerType) << 4
                                 << QStringLiteral("0 No running water\t99 Not stated\t")
                                 << QStringLiteral("0") << QStringLiteral("99");
    QTest::newRow("ALTITUDE") << QStringLiteral("household.sav")
                              << QStringLiteral("Altitude of the dwelling in metres")
                              << int(TGenericField::IntegerType) << 5 << QString()
                              << QStringLiteral("0") << QStringLiteral("99999");
    QTest::newRow("FAMILY_NAME") << QStringLiteral("person.sav") << QStringLiteral("Family name")
                                 << int(TGenericField::StringType) << 1 << QString() << QString()
                                 << QString();
}

void TestExampleStatFiles::spssFields()
{
    QFETCH(QString, file);
    compareField<TSPSSDataImport>(file);
}

void TestExampleStatFiles::stataFields_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("fieldType");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("valueLabels");
    QTest::addColumn<QString>("minValue");
    QTest::addColumn<QString>("maxValue");
    // The importer takes labels of Stata files for Latin-1.
    QTest::newRow("PROVINCE") << QStringLiteral("household.dta") << QStringLiteral("Province")
                              << int(TGenericField::IntegerType) << 1
                              << QString::fromLatin1(
                                     u8"11 Alta Ría\t12 Bassemer\t21 Côte-d'Ivry\t22 Dolmark\t"
                                     u8"31 Étang Noir\t40 Isles of Fenn\t")
                              << QStringLiteral("11") << QStringLiteral("40");
    QTest::newRow("PHONE") << QStringLiteral("household.dta") << QStringLiteral("Telephone number")
                           << int(TGenericField::RealType) << 8 << QString() << QStringLiteral("0")
                           << QStringLiteral("99999999");
    QTest::newRow("SEX") << QStringLiteral("person.dta") << QStringLiteral("Sex")
                         << int(TGenericField::IntegerType) << 1
                         << QStringLiteral("1 Male\t2 Female\t") << QStringLiteral("1")
                         << QStringLiteral("2");
    QTest::newRow("FAMILY_NAME") << QStringLiteral("person.dta") << QStringLiteral("Family name")
                                 << int(TGenericField::StringType) << 16 << QString()
                                 << QStringLiteral("0") << QStringLiteral("9999999999999999");
}

void TestExampleStatFiles::stataFields()
{
    QFETCH(QString, file);
    compareField<TSTATADataImport>(file);
}

QTEST_GUILESS_MAIN(TestExampleStatFiles)

#include "tst_ExampleStatFiles.moc"
