// Reads files of real surveys and other programs. They are kept apart from the sources:
// TESSEL_CORPUS names the folder whose sub-folders "sav" and "dta" hold them.
#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatDictionary.h>

#include "StatFiles.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

namespace {

// Files that libreadstat refuses; all others are read whole.
const QStringList refusedFiles { QStringLiteral("encrypted-hotel.sav"),
    QStringLiteral("malformed-CVE-2017-10791.sav") };

// A file as other readers show it: PSPP for .sav, R's readers for .dta. Blanks at the end of a
// label are left out, as libreadstat cuts them off, and so is the ".0" of formats other than F.
struct Sample {
    const char* file;
    const char* label;
    int rows;
    // Name, label, format, missing values (.sav) and value labels, with "|" between them.
    std::vector<const char*> variables;
};

// clang-format off
const std::vector<Sample> samples {
    { "haven-missings.sav", "", 5,
        {
            u8"IndividualId|Individual ID|F8.0||",
            u8"Missing1|3 discrete missing values (with labels)|F8.0|5; 8; 9|0=No; 1=Yes; 5=I don't have TV; 8=Don't know; 9=Missing (on paper form)",
            u8"Missing2|Missing values as a range (with labels)|F8.0|7 THRU 9|0=No; 1=Yes; 7=I don't have videogames; 8=Don't know; 9=Missing (on paper form)",
            u8"Missing3|Missing values with no labels|F8.0|7; 8|1=Item A; 2=Item B; 3=Item C",
            u8"Missing4|Declared and system missing values|F8.0|9|1=Item A; 2=Item B; 9=Missing",
            u8"Missing5|Missing values not in observations|F8.0|7; 8|1=Item A; 2=Item B; 9=Missing",
            u8"Missing6|Missing values a range and a discrete valie|F8.0|8 THRU 9; 5|1=Item A; 2=Item B",
        } },
    { "missing_char.sav", "", 2,
        {
            u8"mychar||A8|Z|a=labeled",
        } },
    { "simple_alltypes.sav", "", 6,
        {
            u8"x|Numeric variable with value labels|F6.0|7; 8; 99|1=red; 2=green; 3=blue",
            u8"y|Date variable|ADATE10||",
            u8"z|Numberic variable with missing value range|F6.2|-999 THRU 0; 999|999=skipped",
            u8"str|40 character string|A40||",
            u8"bool1|Response #1|F6.2||",
            u8"bool2|Response #2|F6.2||",
            u8"bool3|Response #3|F6.2||",
            u8"ca_subvar_1||A1||a=a; b=b; c=c; d=d",
            u8"ca_subvar_2||A1||a=a; b=b; c=c; d=d",
            u8"ca_subvar_3||A1||a=a; b=b; c=c; d=d",
            u8"date||SDATE10||",
            u8"quarter||QYR8||",
        } },
    { "greetings.sav", "File created by user 'Administrator' at Thu Jan 17 16:35:14 2013", 12,
        {
            u8"line||F8.2|0 THRU 9|",
            u8"Bondjoû||A20|¡Hola!|Thai=สวัสดี",
            u8"greeting|السلام عليكم|A50||",
        } },
    { "spssio_test.sav", "This is a file label", 9,
        {
            u8"ID||N6||",
            u8"Age|How old are you?|F3.0|0 THRU 18|27=27 y.o.; 34=34 y.o.; 50=50 y.o.",
            u8"Region|What region do you live|F8.2||",
            u8"Income1||F8.2|LOWEST THRU -1|",
            u8"Income2||F8.2|LOWEST THRU -1; 999|",
            u8"Income3||F8.2|999; 888; 777|",
            u8"AvgIncome||F8.2||",
            u8"MaxIncome||F8.2||",
            u8"AGE2||F8.2||",
            u8"AGE3||F8.2||",
            u8"SEX||F8.2||",
            u8"V1||F8.2||",
            u8"V2||F8.2||",
            u8"V3||F8.2||",
            u8"someDate||ADATE40||",
            u8"aShortStringVar|Some mysterious short stringVar|A1|x; y|x=someValue label",
            u8"aLongStringVar|Some mysterious long stringVar|A100||",
            u8"weightVar||F8.2||",
            u8"YEAR_|YEAR, not periodic|F8.0||",
            u8"QUARTER_|QUARTER, period 4|F1.0||",
            u8"MONTH_|MONTH, period 12|F2.0||",
            u8"DATE_|Date.  Format:  \"MMM YYYY\"|A8||",
        } },
    { "hotel.sav", "", 17,
        {
            u8"v1|I am satisfied with the level of service|F8.0||1=Strongly Disagree; 2=Disagree; 3=No Opinion; 4=Agree; 5=Strongly Agree",
            u8"v2|The value for money was good|F8.0||1=Strongly Disagree; 2=Disagree; 3=No Opinion; 4=Agree; 5=Strongly Agree",
            u8"v3|The staff were slow in responding|F8.0||1=Strongly Disagree; 2=Disagree; 3=No Opinion; 4=Agree; 5=Strongly Agree",
            u8"v4|My concerns were dealt with in an efficient manner|F8.0||1=Strongly Disagree; 2=Disagree; 3=No Opinion; 4=Agree; 5=Strongly Agree",
            u8"v5|There was too much noise in the rooms|F8.0||1=Strongly Disagree; 2=Disagree; 3=No Opinion; 4=Agree; 5=Strongly Agree",
        } },
    { "personnel.sav", "", 56,
        {
            u8"firstname||A20||",
            u8"lastname||A20||",
            u8"sex||F1.0||0=Male; 1=Female",
            u8"dob|Date of birth|SDATE10||",
            u8"occupation||A20||",
            u8"salary|Annual salary before tax|DOLLAR12||",
        } },
    { "sample.sav", "", 5,
        {
            u8"mychar|character|A1||",
            u8"mynum|numeric|F8.2||",
            u8"mydate|date|EDATE10||",
            u8"dtime|datetime|DATETIME20||",
            u8"mylabl|labeled|F8.2||1=Male; 2=Female",
            u8"myord|ordinal|F8.2||1=low; 2=medium; 3=high",
            u8"mytime|time|TIME8||",
        } },
    { "haven-umlauts.sav", "", 4,
        {
            u8"var1|This is an ä-umlaut|F8.0||1=the ä umlaut; 2=the ü umlaut; 3=the ö umlaut",
        } },
    { "haven-labelled-str.sav", "", 2,
        {
            u8"gender||A1||F=Female; M=Male",
        } },
    { "longstringvaluerecord.sav", "COMMAND CENTER PROJECT : 3860", 19,
        {
            u8"Q2|This is a sample question with longass text|A26||ABCDEFGHIJKLMNOPQRSTUVWXYZ=Long Label; 123456798asdf352asd4f968ad=Longer Label",
            u8"Q1|What is your gender?|A26||1=Male; 3=Other; ABCDEFGHIJKLMNOPQRSTUVWZYX=Female",
        } },
    { "tegulu.sav", "", 1,
        {
            u8"record|record : Record number|F7.0||",
            u8"Q16br9oe_Q24br9oe||A512||",
        } },
    { "auto8.dta", "1978 Automobile Data", 74,
        {
            u8"make|Make and Model|%-18s|",
            u8"price|Price|%8.0gc|",
            u8"mpg|Mileage (mpg)|%8.0g|",
            u8"rep78|Repair Record 1978|%8.0g|",
            u8"headroom|Headroom (in.)|%6.1f|",
            u8"trunk|Trunk space (cu. ft.)|%8.0g|",
            u8"weight|Weight (lbs.)|%8.0gc|",
            u8"length|Length (in.)|%8.0g|",
            u8"turn|Turn Circle (ft.)|%8.0g|",
            u8"displacement|Displacement (cu. in.)|%8.0g|",
            u8"gear_ratio|Gear Ratio|%6.2f|",
            u8"foreign|Car type|%8.0g|0=Domestic; 1=Foreign",
            u8"testmiss||%9.0g|",
        } },
    { "stata8mac.dta", "", 7,
        {
            u8"race||%9.0g|1=white; 2=black; 3=hispanic; 4=asian",
            u8"number||%9.0g|",
        } },
    { "datefactor.dta", "", 30,
        {
            u8"hlth159|YOUR HEALTH IN GENERAL|%10.2f|1=EXCELLENT; 2=VERY GOOD; 3=GOOD; 4=FAIR; 5=POOR",
            u8"id||%9.0g|",
            u8"adate||%d|",
        } },
    { "stata4_115.dta", "", 10,
        {
            u8"fully_labeled|A fully labeled variable.|%8.0g|1=one; 2=two; 3=three; 4=four; 5=five; 6=six; 7=seven; 8=eight; 9=nine; 10=ten",
            u8"fully_labeled2|Another fully labeled variable.|%9.0g|1=one; 2=two; 3=three; 4=four; 5=five; 6=six; 7=seven; 8=eight; 9=nine; 10=ten",
            u8"incompletely_labeled|A labeled variable where some labels are missing.|%12.0g|1=one; 2=two; 3=three; 10=ten",
            u8"labeled_with_missings|A labeled variable with missing values.|%8.0g|1=one; 2=two; 3=three; 4=four; 5=five; 6=six; 7=seven; 8=eight; 9=nine; 10=ten",
            u8"float_labelled|A labeled floating point variable.|%9.0g|1=one; 2=two; 3=three; 4=four; 5=five; 6=six; 7=seven; 8=eight; 9=nine; 10=ten",
        } },
    { "OneVarTwoValLabels.dta", "", 0,
        {
            u8"female||%9.0g|0=Male; 1=Female",
        } },
    { "haven-tagged-na-int.dta", "", 8,
        {
            u8"x||%9.0g|.a=apple; .z=.zebra",
        } },
    { "alltypes.dta", "", 3,
        {
            u8"vbyte||%14.0g|1=A; .a=Tagged missing",
            u8"vint||%14.0g|1=A; .a=Tagged missing",
            u8"vlong||%14.0g|1=A; .a=Tagged missing",
            u8"vfloat||%14.0g|1=A; .a=Tagged missing",
            u8"vdouble||%14.0g|1=A; .a=Tagged missing",
            u8"vstr||%9s|",
            u8"vstrL||%9s|",
            u8"vdate||%td|",
            u8"vtime||%tc|",
        } },
    { "encode.dta", "", 6,
        {
            u8"num|äöüß|%8.0g|1=ä; 2=ö; 3=ü; 4=ß; 5=€; 6=Œ",
            u8"chr|äöüß|%9s|",
        } },
    { "statacar.dta", "", 8,
        {
            u8"id|Numeric ID|%8.0g|",
            u8"brand|Brand of car|%20s|",
            u8"model|Car model|%20s|",
            u8"type|Car classification|%13.0g|-2147483647=min; 1=Off-Road; 2=Roadster; 3=City car; 4=Family car; 2147483620=max",
            u8"hp|Horse Power|%8.0g|",
            u8"max|Maximum speed|%10.0g|",
            u8"mileage||%9.0g|",
            u8"ecar||%8.0g|",
            u8"ldate|Launch date|%tbsp500|",
            u8"ldatecal|Launch date (calendar)|%td|",
            u8"modelStrL||%9s|",
        } },
    { "titanic.dta", "Population at Risk and Death Rates for an Unusual Episode", 2201,
        {
            u8"class|class (ticket)|%9.0g|1=1st class; 2=2nd class; 3=3rd class; 4=crew",
            u8"age|Age (Child vs Adult)|%10.0g|0=child; 1=adults",
            u8"sex|Gender|%8.0g|0=women; 1=man",
            u8"survived|Survived|%8.0g|0=no; 1=yes",
        } },
    { "sample.dta", "", 5,
        {
            u8"mychar|character|%-1s|",
            u8"mynum|numeric|%16.2f|",
            u8"mydate|date|%td|",
            u8"dtime|datetime|%tc|",
            u8"mylabl|labeled|%16.0f|1=Male; 2=Female",
            u8"myord|ordinal|%16.0f|1=low; 2=medium; 3=high",
            u8"mytime|time|%tcHH:MM:SS|",
        } },
    { "stata14_118.dta", "This is a  Ünicode data label", 5,
        {
            u8"Things|Here are some things|%9s|",
            u8"Cities|Here are some cities|%9s|",
            u8"Unicode_Cities_Strl|Here are some strls with Ünicode chars|%9s|",
            u8"Ints|int data|%9.0g|",
            u8"Floats|float data|%9.0g|",
            u8"Bytes|byte data|%17.0g|0=option a; 1=option b Ünicode",
            u8"Longs|long data|%9.0g|",
        } },
};
// clang-format on

QString shownRange(const TStatMissingRange& range)
{
    if (range.low.text == range.high.text)
        return range.low.text;
    const QString low =
        range.low.text == QLatin1String("-inf") ? QStringLiteral("LOWEST") : range.low.text;
    return low + QLatin1String(" THRU ") + range.high.text;
}

QString shownVariable(const TStatFileDescription& description,
    const TStatVariableDescription& variable, TStatFileKind kind)
{
    QStringList cells { variable.name, variable.label, variable.format };
    if (kind == TStatFileKind::Spss) {
        QStringList missing;
        for (const TStatMissingRange& range : variable.missingRanges)
            missing.append(shownRange(range));
        cells.append(missing.join(QLatin1String("; ")));
    }
    QStringList labels;
    if (variable.labelSet >= 0) {
        for (const TStatLabelledValue& entry : description.labelSets.at(variable.labelSet).labels)
            labels.append(entry.value.text + QLatin1Char('=') + entry.label);
    }
    cells.append(labels.join(QLatin1String("; ")));
    return cells.join(QLatin1Char('|'));
}

std::unique_ptr<TDataImport> newImporter(const QString& file, TStatFileKind kind)
{
    if (kind == TStatFileKind::Spss)
        return std::make_unique<TSPSSDataImport>(file);
    return std::make_unique<TSTATADataImport>(file);
}

// The code that an SPSS field shows for a value of the file; null when it shows none.
QString spssCode(const TStatValue& value)
{
    if (value.type == READSTAT_TYPE_STRING)
        return value.text;
    const double whole = std::trunc(value.number);
    if (value.isSystemMissing || std::abs(whole) > std::numeric_limits<int>::max())
        return QString::number(std::numeric_limits<int>::min());
    return whole == -1 ? QString() : QString::number(whole, 'f', 0);
}

// The code that a Stata field shows: missing values are the largest integers.
QString stataCode(const TStatValue& value)
{
    constexpr int SystemMissing = 2147483621;
    if (value.isSystemMissing)
        return QString::number(SystemMissing);
    if (value.tag != '\0')
        return QString::number(SystemMissing + 1 + value.tag - 'a');
    return value.number == -1 ? QString() : value.text;
}

QString expectedValueLabels(const QVector<TStatLabelledValue>& labels, TStatFileKind kind)
{
    QString text;
    for (const TStatLabelledValue& entry : labels) {
        const bool isSpss = kind == TStatFileKind::Spss;
        const QString code = isSpss ? spssCode(entry.value) : stataCode(entry.value);
        if (code.isNull())
            continue;
        text += code + QLatin1Char(' ')
            + (isSpss ? entry.label : QString::fromLatin1(entry.label.toUtf8()))
            + QLatin1Char('\t');
    }
    return text;
}

// libreadstat tells the label set of a long string only together with the labels themselves.
bool losesItsLabels(const TStatVariableDescription& variable, TStatFileKind kind)
{
    constexpr int LongestShortString = 8;
    const bool isLong =
        variable.type == READSTAT_TYPE_STRING && variable.storageWidth > LongestShortString;
    return variable.labelSet < 0 || (kind == TStatFileKind::Spss && isLong);
}

// ---- damaged copies

constexpr int CutsOfAFile = 12;
constexpr int FlipsOfAFile = 40;
constexpr qint64 LargestDamaged = 3'000;

// The copies are the same in every run.
QByteArray damaged(const QByteArray& bytes, int variant, QRandomGenerator& random)
{
    if (variant < CutsOfAFile)
        return bytes.left(random.bounded(bytes.size()));
    QByteArray copy = bytes;
    for (int flip = (variant - CutsOfAFile) % 5; flip >= 0; --flip) {
        const int position = random.bounded(copy.size());
        copy[position] = static_cast<char>(copy.at(position) ^ (1 << random.bounded(8)));
    }
    return copy;
}

// Reads the files of a folder from that index on, and tells before and after each.
int readFiles(const QString& folder, int first)
{
    const QStringList names = QDir(folder).entryList(QDir::Files, QDir::Name);
    for (int index = first; index < names.size(); ++index) {
        const QString file = QDir(folder).filePath(names.at(index));
        std::printf("begin %d\n", index);
        std::fflush(stdout);
        const TStatFileDescription description = readStatDescription(file, kindOf(file));
        newImporter(file, kindOf(file))->openFile();
        std::printf("end %d %d\n", index, description.outcome.error);
        std::fflush(stdout);
    }
    return 0;
}

int childMain(const QStringList& arguments)
{
    if (arguments.value(0) == QLatin1String("die"))
        std::abort();
    return readFiles(arguments.value(1), arguments.value(2).toInt());
}

bool hasDied(const ChildResult& child)
{
    return child.hasCrashed || !child.hasFinished || child.exitCode != 0;
}

} // namespace

class TestStatCorpus : public QObject {
    Q_OBJECT

private slots:
    void everyFileIsReadOrRefused_data();
    void everyFileIsReadOrRefused();
    void otherReadersShowTheSame_data();
    void otherReadersShowTheSame();
    void importersKeepWhatTheyShould_data();
    void importersKeepWhatTheyShould();
    void damagedLabelsLeaveTheVariables();
    void notesOfAStataFile();
    void notesOfAnSpssFile();
    void whatTheFieldsShow_data();
    void whatTheFieldsShow();
    void damagedFilesAreAccountedFor();
};

void TestStatCorpus::everyFileIsReadOrRefused_data()
{
    SKIP_WITHOUT_SAMPLES();
    QTest::addColumn<QString>("file");
    const QStringList paths = samplePaths();
    QVERIFY(paths.size() >= 60);
    for (const QString& file : paths)
        QTest::newRow(qPrintable(QFileInfo(file).fileName())) << file;
}

void TestStatCorpus::everyFileIsReadOrRefused()
{
    QFETCH(QString, file);
    const TStatFileDescription description = readStatDescription(file, kindOf(file));
    if (refusedFiles.contains(QFileInfo(file).fileName())) {
        QVERIFY(!description.isWhole());
        QCOMPARE(description.outcome.error, READSTAT_ERROR_PARSE);
        QVERIFY(!description.outcome.errorText.isEmpty());
        QVERIFY(description.variables.isEmpty() == !description.variablesOutcome.isWhole());
        return;
    }
    QCOMPARE(description.outcome.error, READSTAT_OK);
    QVERIFY(description.isWhole());
    QVERIFY(description.outcome.errorText.isEmpty() && description.outcome.errorDetails.isEmpty());
    QVERIFY(!description.variables.isEmpty());
    for (const TStatVariableDescription& variable : description.variables) {
        QVERIFY(!variable.name.isEmpty());
        QVERIFY(!variable.format.isEmpty());
        QVERIFY(!variable.name.contains(QChar::ReplacementCharacter));
        QVERIFY(!variable.label.contains(QChar::ReplacementCharacter));
    }
}

void TestStatCorpus::otherReadersShowTheSame_data()
{
    SKIP_WITHOUT_SAMPLES();
    QTest::addColumn<int>("sample");
    for (std::size_t index = 0; index < samples.size(); ++index)
        QTest::newRow(samples[index].file) << static_cast<int>(index);
}

void TestStatCorpus::otherReadersShowTheSame()
{
    QFETCH(int, sample);
    const Sample& expected = samples[static_cast<std::size_t>(sample)];
    const QString name = QString::fromLatin1(expected.file);
    const TStatFileKind kind = kindOf(name);
    const TStatFileDescription description =
        readStatDescription(sampleFolder(name.right(3)).filePath(name), kind);
    QVERIFY(description.isWhole());
    QCOMPARE(description.fileLabel, QString::fromUtf8(expected.label));
    QCOMPARE(description.rowCount, qint64(expected.rows));
    QStringList shown;
    for (const TStatVariableDescription& variable : description.variables)
        shown.append(shownVariable(description, variable, kind));
    QStringList lines;
    for (const char* line : expected.variables)
        lines.append(QString::fromUtf8(line));
    QCOMPARE(shown, lines);
}

void TestStatCorpus::importersKeepWhatTheyShould_data()
{
    everyFileIsReadOrRefused_data();
}

// The fields of the importers against the file as it is written.
void TestStatCorpus::importersKeepWhatTheyShould()
{
    QFETCH(QString, file);
    const TStatFileKind kind = kindOf(file);
    const TStatFileDescription description = readStatDescription(file, kind);
    const std::unique_ptr<TDataImport> importer = newImporter(file, kind);
    QVERIFY(importer->openFile());
    QCOMPARE(importer->fields->size(), description.variables.size());
    for (int index = 0; index < description.variables.size(); ++index) {
        const TStatVariableDescription& variable = description.variables.at(index);
        const TGenericField* field = importer->getField(index);
        QCOMPARE(field->name, variable.name);
        QCOMPARE(field->label,
            kind == TStatFileKind::Spss ? variable.label
                                        : QString::fromLatin1(variable.label.toUtf8()));
        QCOMPARE(field->valueLabels,
            losesItsLabels(variable, kind)
                ? QString()
                : expectedValueLabels(description.labelSets.at(variable.labelSet).labels, kind));
        QCOMPARE(field->fieldType == 3, variable.type == READSTAT_TYPE_STRING);
    }
}

void TestStatCorpus::damagedLabelsLeaveTheVariables()
{
    SKIP_WITHOUT_SAMPLES();
    const TStatFileDescription description =
        readStatDescription(sampleFolder(QStringLiteral("sav"))
                                .filePath(QStringLiteral("malformed-CVE-2017-10791.sav")),
            TStatFileKind::Spss);
    QVERIFY(!description.isWhole());
    QCOMPARE(description.outcome.error, READSTAT_ERROR_PARSE);
    QVERIFY(description.variablesOutcome.isWhole());
    QVERIFY(description.variablesOutcome.errorText.isEmpty());
    QCOMPARE(description.variables.size(), 4);
    QVERIFY(description.labelSets.isEmpty());
}

void TestStatCorpus::notesOfAStataFile()
{
    SKIP_WITHOUT_SAMPLES();
    const TStatFileDescription description = readStatDescription(
        sampleFolder(QStringLiteral("dta")).filePath(QStringLiteral("titanic.dta")),
        TStatFileKind::Stata);
    QCOMPARE(description.notes,
        QStringList({ QStringLiteral("Report on the Loss of the (S.S.) (1990) British Board of "
                                     "Trade Inquiry Report (reprint), Gloucester, UK: Allan "
                                     "Sutton Publishing."),
            QStringLiteral("placed at http://amstat.org/publications/jse/archive.htm by Robert "
                           "Dawson") }));
}

void TestStatCorpus::notesOfAnSpssFile()
{
    SKIP_WITHOUT_SAMPLES();
    const TStatFileDescription description = readStatDescription(
        sampleFolder(QStringLiteral("sav")).filePath(QStringLiteral("sample.sav")),
        TStatFileKind::Spss);
    QCOMPARE(description.notes,
        QStringList({ QStringLiteral("some test text as notes"),
            QStringLiteral("   (Entered 15-Aug-2018)"), QStringLiteral("some other comments"),
            QStringLiteral("   (Entered 15-Aug-2018)") }));
}

void TestStatCorpus::whatTheFieldsShow_data()
{
    SKIP_WITHOUT_SAMPLES();
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("minValue");
    QTest::addColumn<QString>("maxValue");
    QTest::addColumn<QString>("valueLabels");

    const auto row = [](const char* file, const char* name) -> QTestData& {
        return QTest::addRow("%s, %s", file, name)
            << QString::fromLatin1(file) << QString::fromUtf8(name);
    };
    const auto text = [](const char* utf8) { return QString::fromUtf8(utf8); };
    row("haven-missings.sav", "Missing1")
        << 1 << 8 << text("0") << text("9")
        << text("0 No\t1 Yes\t5 I don't have TV\t8 Don't know\t9 Missing (on paper form)\t");
    row("simple_alltypes.sav", "z")
        << 1 << 6 << text("999") << text("999") << text("999 skipped\t");
    row("simple_alltypes.sav", "y") << 1 << 0 << text("0") << text("") << text("");
    row("simple_alltypes.sav", "str") << 3 << 4 << text("") << text("") << text("");
    row("simple_alltypes.sav", "ca_subvar_2")
        << 3 << 1 << text("") << text("") << text("a a\tb b\tc c\td d\t");
    row("greetings.sav", u8"Bondjoû") << 3 << 2 << text("") << text("") << text("");
    row("spssio_test.sav", "someDate") << 1 << 0 << text("0") << text("") << text("");
    row("spssio_test.sav", "Age") << 1 << 3 << text("27") << text("50")
                                  << text("27 27 y.o.\t34 34 y.o.\t50 50 y.o.\t");
    row("auto8.dta", "make") << 3 << 19 << text("0") << QString(19, QLatin1Char('9')) << text("");
    row("auto8.dta", "foreign") << 1 << 1 << text("0") << text("1")
                                << text("0 Domestic\t1 Foreign\t");
    row("auto8.dta", "headroom") << 2 << 4 << text("0") << text("9999") << text("");
    row("encode.dta", "num") << 1 << 2 << text("1") << text("6")
                             << QString::fromLatin1(u8"1 ä\t2 ö\t3 ü\t4 ß\t5 €\t6 Œ\t");
    row("alltypes.dta", "vdouble")
        << 2 << 8 << text("1") << text("2.14748e+09") << text("1 A\t2147483622 Tagged missing\t");
    row("alltypes.dta", "vstrL") << 3 << 0 << text("0") << text("") << text("");
    row("statacar.dta", "type")
        << 1 << 4 << text("-2.14748e+09") << text("2.14748e+09")
        << text("-2147483647 min\t1 Off-Road\t2 Roadster\t3 City car\t4 Family car\t"
                "2147483620 max\t");
}

void TestStatCorpus::whatTheFieldsShow()
{
    QFETCH(QString, file);
    QFETCH(QString, name);
    QFETCH(int, type);
    QFETCH(int, length);
    QFETCH(QString, minValue);
    QFETCH(QString, maxValue);
    QFETCH(QString, valueLabels);
    const std::unique_ptr<TDataImport> importer =
        newImporter(sampleFolder(file.right(3)).filePath(file), kindOf(file));
    QVERIFY(importer->openFile());
    const TGenericField* field = importer->fieldByName(name);
    QVERIFY(field);
    QCOMPARE(field->fieldType, type);
    QCOMPARE(field->length, length);
    QCOMPARE(field->minValue, minValue);
    QCOMPARE(field->maxValue, maxValue);
    QCOMPARE(field->valueLabels, valueLabels);
}

// libreadstat itself may die of a damaged file; what matters is that its death is seen.
void TestStatCorpus::damagedFilesAreAccountedFor()
{
    SKIP_WITHOUT_SAMPLES();
    QVERIFY(hasDied(runChild({ QStringLiteral("die") })));

    const QTemporaryDir folder;
    QVERIFY(folder.isValid());
    QRandomGenerator random(20'101);
    int count = 0;
    for (const QString& path : samplePaths()) {
        QFile original(path);
        if (original.size() > LargestDamaged || !original.open(QIODevice::ReadOnly))
            continue;
        const QByteArray bytes = original.readAll();
        for (int variant = 0; variant < CutsOfAFile + FlipsOfAFile; ++variant) {
            QFile copy(folder.filePath(
                QStringLiteral("%1.%2").arg(count++, 5, 10, QLatin1Char('0')).arg(path.right(3))));
            QVERIFY(copy.open(QIODevice::WriteOnly));
            copy.write(damaged(bytes, variant, random));
        }
    }
    QVERIFY(count > 500);

    int next = 0;
    int deaths = 0;
    int refused = 0;
    while (next < count) {
        const ChildResult child =
            runChild({ QStringLiteral("read"), folder.path(), QString::number(next) }, 60'000);
        int begun = next - 1;
        int ended = next - 1;
        const QList<QByteArray> lines = child.output.split('\n');
        for (const QByteArray& line : lines) {
            const QList<QByteArray> words = line.split(' ');
            if (words.value(0) == "begin") {
                begun = words.value(1).toInt();
                QCOMPARE(begun, ended + 1);
            } else if (words.value(0) == "end") {
                ended = words.value(1).toInt();
                QCOMPARE(ended, begun);
                refused += words.value(2).toInt() == READSTAT_OK ? 0 : 1;
            }
        }
        // A child lives until it has read the last file, or dies within the one it began.
        QCOMPARE(hasDied(child), ended != count - 1);
        if (hasDied(child)) {
            QCOMPARE(begun, ended + 1);
            ++deaths;
        }
        next = begun + 1;
    }
    QVERIFY(refused > 0);
    qInfo("%d damaged files: %d refused, %d times the reader died", count, refused, deaths);
}

STAT_TEST_MAIN(TestStatCorpus, childMain)
#include "tst_StatCorpus.moc"
