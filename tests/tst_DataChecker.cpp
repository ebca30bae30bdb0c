#include "DataRows.h"

#include <tessel_data/CSProDbSource.h>
#include <tessel_data/StatSource.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>

Q_DECLARE_METATYPE(tessel::SourceCounts)

using namespace tessel;

namespace {

QString shownProblem(const DataProblem& problem, const DataDictionary& dictionary)
{
    QString text =
        QStringLiteral("%1 %2 [%3]").arg(problem.line).arg(int(problem.kind)).arg(problem.caseKey);
    if (problem.record >= 0)
        text += QLatin1Char(' ') + dictionary.records[std::size_t(problem.record)].name;
    if (problem.variable >= 0)
        text += QLatin1Char(' ') + dictionary.variables[std::size_t(problem.variable)].name;
    if (!problem.value.isEmpty())
        text += QLatin1String(" '") + problem.value + QLatin1Char('\'');
    if (problem.otherFile >= 0)
        text += QStringLiteral(" (%1)").arg(problem.otherLine);
    return text;
}

QString kindText(ProblemKind kind)
{
    return QString::number(int(kind));
}

// Where a problem is: kind, file and line, case, and the case that it repeats.
QString placeOf(const DataProblem& problem)
{
    QString text = QStringLiteral("%1 %2:%3 #%4 [%5]")
                       .arg(problemKindName(problem.kind))
                       .arg(problem.file)
                       .arg(problem.line)
                       .arg(problem.caseNumber)
                       .arg(problem.caseKey);
    if (problem.otherFile >= 0)
        text += QStringLiteral(" %1:%2 #%3")
                    .arg(problem.otherFile)
                    .arg(problem.otherLine)
                    .arg(problem.otherCase);
    return text;
}

// A source that does what a test wants.
class OddSource : public DataSource {
public:
    explicit OddSource(
        const DataDictionary& dictionary, const std::function<void(BatchSink&)>& read = {})
        : m_dictionary(dictionary)
        , m_read(read)
    {
    }
    const DataDictionary& dictionary() const override
    {
        return m_dictionary;
    }
    void read(BatchSink& sink) override
    {
        m_read(sink);
    }
    qint64 size() const override
    {
        return -1;
    }
    bool countsRows() const override
    {
        return false;
    }
    const std::vector<SourceFile>& files() const override
    {
        return sourceFiles;
    }
    bool hasCases() const override
    {
        return true;
    }

    std::vector<SourceFile> sourceFiles = std::vector<SourceFile>(1);

private:
    const DataDictionary& m_dictionary;
    std::function<void(BatchSink&)> m_read;
};

// A case as a CSPro DB has it.
void beginCase(DataBatch& batch, const char* key, bool isPartlySaved)
{
    DataBatch::Case begun;
    begun.number = qint64(batch.cases.size());
    begun.firstRecord = quint32(batch.records.size());
    begun.line = begun.number + 1;
    begun.key = batch.keep(key);
    begun.uuid = batch.keep("uuid");
    begun.isPartlySaved = isPartlySaved;
    batch.cases.push_back(begun);
}

// A record of the last case, whose values are all 1.
void addRecord(DataBatch& batch, const DataDictionary& dictionary, int record)
{
    const int count = dictionary.records[std::size_t(record)].columns.size();
    const quint32 cell = batch.addCells(std::size_t(count));
    for (int c = 0; c < count; ++c)
        batch.set(cell + quint32(c), ValueState(ValueKind::Number), 1);
    const DataBatch::Case& begun = batch.cases.back();
    batch.records.push_back({ begun.line, begun.number, 0, record, cell, {} });
}

QStringList placesOf(const DataDictionary& dictionary, const DataBatch& batch)
{
    QStringList places;
    CheckOptions options;
    options.onProblem = [&](const DataProblem& problem) { places.append(placeOf(problem)); };
    Checker checker(dictionary, options);
    checker.take(batch);
    checker.finish(OddSource(dictionary));
    places.sort();
    return places;
}

// Women with letters for identification, and their children; the first level has no record.
QByteArray womenDictionary()
{
    return "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
           "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=2\nLen=1\n\n"
           "[Level]\nName=L2\n\n[IdItems]\n\n[Item]\nName=W\nStart=3\nLen=1\n"
           "DataType=Alpha\n\n"
           "[Record]\nName=WOMAN\nRecordTypeValue='2'\n\n"
           "[Item]\nName=AGE\nStart=4\nLen=1\n\n"
           "[Record]\nName=CHILD\nRecordTypeValue='3'\nRequired=No\nMaxRecords=9\n\n"
           "[Item]\nName=YEAR\nStart=4\nLen=1\n\n";
}

} // namespace

class TestDataChecker : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void problems_data();
    void problems();
    void columns();
    void samplesAndStrictness();
    void distinct();
    void largeSums();
    void levels();
    void levelWithoutRecords();
    void blankDeeperItem();
    void places();
    void casesOfDatabases();
    void changedFile();
    void countsThatLie_data();
    void countsThatLie();
    void longTexts();
    void tolerated();
    void levelsOfRows();
    void generated();
    void manyVariables();
    void distinctOfManyVariables();
    void cancel();
    void cancelWithoutData();
    void failureBehindData();

private:
    CheckReport check(const QByteArray& text, const CheckOptions& options = {});

    QTemporaryDir m_folder;
    DataDictionary m_dictionary;
};

void TestDataChecker::initTestCase()
{
    m_dictionary = DataDictionary::fromFile(
        writeFile(m_folder, QStringLiteral("survey.dcf"), surveyDictionary()));
}

CheckReport TestDataChecker::check(const QByteArray& text, const CheckOptions& options)
{
    CSProTextSource source(m_dictionary, { writeFile(m_folder, QStringLiteral("d.dat"), text) });
    Checker checker(source.dictionary(), options);
    if (!runPipeline(source, checker))
        qFatal("cancelled");
    return checker.report();
}

void TestDataChecker::problems_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("expected");
    const auto kind = [](ProblemKind of) { return kindText(of); };
    QTest::newRow("none") << QByteArray("10101 3  250A \n20101 33Anna\n") << QStringList();
    QTest::newRow("values")
        << QByteArray("10101 6  2x0A \n20101130\n20101 33\n10102 11.234\n")
        << QStringList { "1 " + kind(ProblemKind::OutsideValueSet) + " [0101] HOUSE ROOMS '6'",
               "1 " + kind(ProblemKind::NotANumber) + " [0101] HOUSE WEIGHT '  2x0'",
               "2 " + kind(ProblemKind::OutOfRange) + " [0101] PERSON AGE '130'",
               "4 " + kind(ProblemKind::UnfitNumber) + " [0102] HOUSE WEIGHT '1.234'" };
    QTest::newRow("missing record")
        << QByteArray("20101 33\n10102\n")
        << QStringList { "1 " + kind(ProblemKind::MissingRecord) + " [0101] HOUSE" };
    QTest::newRow("too many records")
        << QByteArray("10101\n10101\n20101 3\n20101 3\n20101 3\n20101 3\n")
        << QStringList { "2 " + kind(ProblemKind::TooManyRecords) + " [0101] HOUSE",
               "3 " + kind(ProblemKind::NotANumber) + " [0101] PERSON AGE ' 3'",
               "4 " + kind(ProblemKind::NotANumber) + " [0101] PERSON AGE ' 3'",
               "5 " + kind(ProblemKind::NotANumber) + " [0101] PERSON AGE ' 3'",
               "6 " + kind(ProblemKind::NotANumber) + " [0101] PERSON AGE ' 3'",
               "6 " + kind(ProblemKind::TooManyRecords) + " [0101] PERSON" };
    QTest::newRow("duplicate") << QByteArray("10101\n10102\n10101\n")
                               << QStringList { "3 " + kind(ProblemKind::DuplicateCase)
                                      + " [0101] (1)" };
    QTest::newRow("scattered") << QByteArray("10101\n10102\n20101 33\n")
                               << QStringList { "3 " + kind(ProblemKind::MissingRecord)
                                          + " [0101] HOUSE",
                                      "3 " + kind(ProblemKind::ScatteredCase) + " [0101] (1)" };
    QTest::newRow("blank identification") << QByteArray(
        "101  \n") << QStringList { "1 " + kind(ProblemKind::IdBlank) + " [01  ] HOUSE NUMBER" };
    QTest::newRow("no identification at all") << QByteArray(
        "1    \n") << QStringList { "1 " + kind(ProblemKind::BlankIdentification) + " [] HOUSE" };
    QTest::newRow("rejected") << QByteArray("10101\n3zz\n1\n1zz01\n")
                              << QStringList { "2 0 [] '3zz'", "3 1 [] HOUSE '1'",
                                     "4 2 [] HOUSE PLACE '1zz01'" };
    QTest::newRow("rejected, of a known case")
        << QByteArray("10101\n30107\n") << QStringList { "2 0 [0107] '30107'" };
    QTest::newRow("parts of lines")
        << QByteArray("10101 3       a b  \n20101 33a\x01"
                      "b\n20101 33\xC3\xA9\n20101 33\xE9\n")
        << QStringList { "1 " + kind(ProblemKind::TextBeyondRecord) + " [0101] HOUSE 'a b'",
               "2 " + kind(ProblemKind::ControlCharacters)
                   + " [0101] PERSON NAME 'a\x01"
                     "b'",
               "4 " + kind(ProblemKind::OtherEncoding) + " [0101] PERSON NAME 'é'" };
    QTest::newRow("other bytes of a rejected line")
        << QByteArray("10101\n20101 33\xC3\xA9\n9xx01 ab\xE9 z\n")
        << QStringList { "3 " + kind(ProblemKind::OtherEncoding) + " [] 'abé'",
               "3 " + kind(ProblemKind::UnknownRecordType) + " [] '9xx01 abé z'" };
    QTest::newRow("scattered, then repeated")
        << QByteArray("20101 33\n10102\n10101\n10103\n10101\n")
        << QStringList { "1 " + kind(ProblemKind::MissingRecord) + " [0101] HOUSE",
               "3 " + kind(ProblemKind::ScatteredCase) + " [0101] (1)",
               "5 " + kind(ProblemKind::DuplicateCase) + " [0101] (1)" };
}

void TestDataChecker::problems()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, expected);
    QStringList found;
    CheckOptions options;
    options.onProblem = [&](const DataProblem& problem) {
        found.append(shownProblem(problem, m_dictionary));
    };
    const CheckReport report = check(text, options);
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    QCOMPARE(found, expected);
    QVERIFY(report.addsUp);
    QCOMPARE(report.isClean(true), expected.isEmpty());
    qint64 total = 0;
    for (const qint64 count : report.problemCounts)
        total += count;
    QCOMPARE(total, qint64(expected.size()));
}

void TestDataChecker::columns()
{
    const CheckReport report = check("10101 3  250A \n20101 33Anna\n20101999Bob\n20101   Bob\n"
                                     "10102 6 -125CC\n20102200\n20102 xx\n10103 6\n10104 8\n");
    const auto column = [&](const char* name) {
        for (const ColumnReport& found : report.columns) {
            const auto& variable = m_dictionary.variables[std::size_t(found.variable)];
            if (variable.name == QLatin1String(name))
                return found;
        }
        return ColumnReport();
    };
    const ColumnReport age = column("AGE");
    QCOMPARE(age.rows, 5LL);
    QCOMPARE(age.values, 2LL); // what is outside is a value
    QCOMPARE(age.missing, 1LL);
    QCOMPARE(age.notApplicable, 1LL);
    QCOMPARE(age.notANumber, 1LL);
    QCOMPARE(age.outside, 1LL);
    QCOMPARE(age.outOfRange, 1LL);
    QCOMPARE(age.lowest, QStringLiteral("33"));
    QCOMPARE(age.highest, QStringLiteral("200"));
    QCOMPARE(age.mean, 116.5);
    const ColumnReport rooms = column("ROOMS");
    QCOMPARE(rooms.outside, 3LL);
    QCOMPARE(rooms.outOfRange, 0LL);
    QCOMPARE(rooms.outsideCodes.size(), 2);
    QCOMPARE(rooms.outsideCodes.at(0).code, QStringLiteral("6"));
    QCOMPARE(rooms.outsideCodes.at(0).count, 2LL);
    QCOMPARE(rooms.distinct, 3LL);
    const ColumnReport weight = column("WEIGHT");
    QCOMPARE(weight.blank, 2LL);
    QCOMPARE(weight.lowest, QStringLiteral("-1.25"));
    QCOMPARE(weight.mean, 0.625);
    const ColumnReport name = column("NAME");
    QCOMPARE(name.values, 3LL);
    QCOMPARE(name.distinct, 2LL);
    QVERIFY(!name.hasNumbers);
    QCOMPARE(column("KIND").outsideCodes.at(0).code, QStringLiteral("CC"));
}

void TestDataChecker::samplesAndStrictness()
{
    QByteArray text;
    for (int i = 10; i < 30; ++i)
        text += "101" + QByteArray::number(i) + " 6\n";
    CheckOptions options;
    options.samplesPerKind = 3;
    const CheckReport report = check(text, options);
    QCOMPARE(report.samples.size(), std::size_t(3));
    QCOMPARE(report.samples[2].line, 3LL);
    QCOMPARE(report.problemCount(ProblemKind::OutsideValueSet), 20LL);
    QVERIFY(report.isClean());
    QVERIFY(!report.isClean(true));
}

void TestDataChecker::distinct()
{
    QByteArray text;
    for (int i = 0; i < 5000; ++i)
        text += "101" + QByteArray::number(10 + i % 90) + " 1" + QByteArray::number(10000 + i % 700)
            + "\n";
    CheckOptions options;
    options.distinctLimit = 700;
    CheckReport report = check(text, options);
    QCOMPARE(report.columns.at(3).distinct, 700LL);
    QVERIFY(report.columns.at(3).hasAllDistinct);
    options.distinctLimit = 699;
    report = check(text, options);
    QVERIFY(!report.columns.at(3).hasAllDistinct);
    QCOMPARE(report.columns.at(3).distinct, 699LL);
}

// The sum is more than 64 bits hold, and the last numbers count as well.
void TestDataChecker::largeSums()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n\n"
        "[Level]\nName=L\n\n[IdItems]\n\n[Item]\nName=ID\nStart=1\nLen=1\n\n"
        "[Record]\nName=R\nRecordTypeValue=''\nMaxRecords=99\n\n"
        "[Item]\nName=V\nStart=2\nLen=18\n\n";
    const QByteArray text =
        QByteArray("1999999999999999999\n").repeated(30) + "1               -31\n";
    CSProTextSource source(DataDictionary::fromBytes(dictionary, QStringLiteral("large")),
        { writeFile(m_folder, QStringLiteral("large.dat"), text) });
    Checker checker(source.dictionary());
    QVERIFY(runPipeline(source, checker));
    const ColumnReport& column = checker.report().columns.at(1);
    QCOMPARE(column.highest, QStringLiteral("999999999999999999"));
    QCOMPARE(column.lowest, QStringLiteral("-31"));
    QCOMPARE(column.mean, 30e18 / 31);
}

void TestDataChecker::levels()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
        "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=2\nLen=1\n\n"
        "[Record]\nName=HOUSE\nRecordTypeValue='1'\n\n"
        "[Item]\nName=ROOF\nStart=5\nLen=1\n\n"
        "[Level]\nName=L2\n\n[IdItems]\n\n[Item]\nName=W\nStart=3\nLen=1\n\n"
        "[Record]\nName=WOMAN\nRecordTypeValue='2'\n\n"
        "[Item]\nName=KIDS\nStart=5\nLen=1\n\n"
        "[Level]\nName=L3\n\n[IdItems]\n\n[Item]\nName=B\nStart=4\nLen=1\n\n"
        "[Record]\nName=BIRTH\nRecordTypeValue='3'\n\n[Item]\nName=YEAR\nStart=5\nLen=1\n\n";
    const QString data = writeFile(m_folder, QStringLiteral("levels.dat"),
        "11  1\n211 2\n31111\n31121\n212 1\n31311\n22 11\n12  1\n23 11\n22111\n");
    QStringList found;
    const auto check = [&](const QByteArray& text) {
        CSProTextSource source(DataDictionary::fromBytes(text, QStringLiteral("levels")), { data });
        CheckOptions options;
        options.onProblem = [&](const DataProblem& problem) {
            found.append(shownProblem(problem, source.dictionary()));
        };
        Checker checker(source.dictionary(), options);
        if (!runPipeline(source, checker))
            qFatal("cancelled");
        return checker.report();
    };
    const CheckReport report = check(dictionary);
    const QString orphan = kindText(ProblemKind::LevelWithoutParent);
    QVERIFY2(found.contains(QStringLiteral("6 %1 [1] BIRTH").arg(orphan)),
        qPrintable(found.join(QLatin1Char('\n')))); // woman 3 has no record
    QVERIFY(found.contains(QStringLiteral("9 %1 [3] WOMAN").arg(orphan))); // no house
    QVERIFY(report.addsUp);
    // What need not be there is not missed.
    QByteArray optional = dictionary;
    optional.replace("='1'\n", "='1'\nRequired=No\n").replace("='2'\n", "='2'\nRequired=No\n");
    QCOMPARE(check(optional).problemCount(ProblemKind::LevelWithoutParent), 0LL);
}

// Rows of a database have their row of the level above, even when that has no record.
void TestDataChecker::levelsOfRows()
{
    DataDictionary dictionary;
    for (int level = 1; level <= 3; ++level) {
        DataVariable id;
        id.name = QStringLiteral("ID%1").arg(level);
        id.level = level;
        dictionary.ids.append(int(dictionary.variables.size()));
        dictionary.variables.push_back(id);
        DataRecord record;
        record.name = QStringLiteral("RECORD%1").arg(level);
        record.level = level;
        record.idCount = level;
        record.columns = dictionary.ids;
        dictionary.records.push_back(record);
    }
    DataBatch batch;
    const TextRef uuid = batch.keep("uuid");
    batch.cases.push_back({ 0, 0, 0, 1, batch.keep("1"), uuid, false });
    for (const int record : { 0, 2 }) {
        const quint32 cell = batch.addCells(std::size_t(record) + 1);
        for (int c = 0; c <= record; ++c)
            batch.set(cell + quint32(c), ValueState(ValueKind::Number), 1);
        batch.records.push_back({ 1, 0, 0, record, cell, {} });
    }
    QStringList found;
    CheckOptions options;
    options.onProblem = [&](const DataProblem& problem) {
        found.append(shownProblem(problem, dictionary));
    };
    dictionary.records[2].firstColumn = 3;
    dictionary.records[1].firstColumn = 1;
    Checker checker(dictionary, options);
    checker.take(batch);
    checker.finish(CSProTextSource(m_dictionary, {}));
    QCOMPARE(found,
        QStringList {
            QStringLiteral("1 %1 [1] RECORD2").arg(kindText(ProblemKind::MissingRecord)) });
}

void TestDataChecker::levelWithoutRecords()
{
    const DataDictionary women =
        DataDictionary::fromBytes(womenDictionary(), QStringLiteral("women.dcf"));
    const auto found = [&](const QByteArray& lines) {
        QStringList places;
        CSProTextSource source(women, { writeFile(m_folder, QStringLiteral("women.dat"), lines) });
        CheckOptions options;
        options.onProblem = [&](const DataProblem& problem) { places.append(placeOf(problem)); };
        Checker checker(source.dictionary(), options);
        runPipeline(source, checker);
        return places;
    };
    QCOMPARE(found("21A1\n31A1\n31A2\n21B1\n"), QStringList());
    QCOMPARE(found("21A1\n31B1\n"), QStringList { QStringLiteral("missing-record 0:2 #1 [1]") });
    DataBatch batch;
    beginCase(batch, "1", true);
    addRecord(batch, women, 1);
    QCOMPARE(
        placesOf(women, batch), QStringList { QStringLiteral("partly-saved-case 0:1 #1 [1]") });
}

// A record without any identification is told once, but its deeper items by themselves.
void TestDataChecker::blankDeeperItem()
{
    const DataDictionary women =
        DataDictionary::fromBytes(womenDictionary(), QStringLiteral("women.dcf"));
    CSProTextSource source(women, { writeFile(m_folder, QStringLiteral("w.dat"), "2  1\n") });
    Checker checker(source.dictionary());
    QVERIFY(runPipeline(source, checker));
    QCOMPARE(checker.report().problemCount(ProblemKind::BlankIdentification), 1LL);
    QCOMPARE(checker.report().problemCount(ProblemKind::IdBlank), 1LL);
    QCOMPARE(checker.report().samples.front().variable, 1);
}

// Of two files, each with cases and lines of its own.
void TestDataChecker::places()
{
    const QString first = writeFile(m_folder, QStringLiteral("1.dat"), "10101 6\n20101130\n9zz\n");
    const QString second = writeFile(
        m_folder, QStringLiteral("2.dat"), "10102 3       zz\n9zz\n10102 6\n10101\n20103\n1    \n");
    CSProTextSource source(m_dictionary, { first, second });
    QStringList found;
    CheckOptions options;
    options.onProblem = [&](const DataProblem& problem) { found.append(placeOf(problem)); };
    Checker checker(source.dictionary(), options);
    QVERIFY(runPipeline(source, checker));
    found.sort();
    QStringList expected { "outside-value-set 0:1 #1 [0101]", "out-of-range 0:2 #1 [0101]",
        "unknown-record-type 0:3 #0 []", "text-beyond-record 1:1 #2 [0102]",
        "unknown-record-type 1:2 #0 []", "outside-value-set 1:3 #2 [0102]",
        "too-many-records 1:3 #2 [0102]", "duplicate-case 1:4 #3 [0101] 0:1 #1",
        "missing-record 1:5 #4 [0103]", "blank-identification 1:6 #5 []" };
    expected.sort();
    QCOMPARE(found, expected);
    QVERIFY(checker.report().addsUp);
}

// A case that is partly saved lacks nothing; two cases of one name are never parts of one.
void TestDataChecker::casesOfDatabases()
{
    DataBatch batch;
    beginCase(batch, "0101", false);
    addRecord(batch, m_dictionary, 0);
    beginCase(batch, "0101", true);
    addRecord(batch, m_dictionary, 1);
    QCOMPARE(placesOf(m_dictionary, batch),
        (QStringList { "duplicate-case 0:2 #2 [0101] 0:1 #1", "partly-saved-case 0:2 #2 [0101]" }));
}

void TestDataChecker::changedFile()
{
    OddSource source(m_dictionary);
    source.sourceFiles.resize(3);
    source.sourceFiles[1].changedWhileRead = true;
    Checker checker(m_dictionary);
    checker.finish(source);
    QCOMPARE(checker.report().samples.size(), std::size_t(1));
    QCOMPARE(placeOf(checker.report().samples.front()), QStringLiteral("file-changed 1:0 #0 []"));
    QVERIFY(!checker.report().isClean());
}

void TestDataChecker::countsThatLie_data()
{
    QTest::addColumn<SourceCounts>("counts");
    const auto add = [](const char* name, qint64 lines, qint64 records, qint64 rejected,
                         qint64 cases, qint64 casesRead) {
        SourceCounts counts;
        counts.lines = lines;
        counts.records = records;
        counts.rejectedLines = rejected;
        counts.cases = cases;
        counts.casesRead = casesRead;
        QTest::newRow(name) << counts;
    };
    add("true", 2, 1, 1, 1, 1);
    add("a record too many", 3, 2, 1, 1, 1);
    add("a rejected line too many", 3, 1, 2, 1, 1);
    add("a case too many", 2, 1, 1, 2, 2);
    add("a line that went nowhere", 3, 1, 1, 1, 1);
    add("a case that went nowhere", 2, 1, 1, 1, 2);
}

// Data are clean only when the source counted what the check took.
void TestDataChecker::countsThatLie()
{
    QFETCH(SourceCounts, counts);
    DataBatch batch;
    beginCase(batch, "0101", false);
    addRecord(batch, m_dictionary, 0);
    batch.told.push_back({ LineProblem::UnknownRecordType, 0, -1, 2, -1, {} });
    OddSource source(m_dictionary);
    source.sourceFiles.front().counts = counts;
    Checker checker(m_dictionary);
    checker.take(batch);
    checker.finish(source);
    QCOMPARE(checker.report().addsUp, QByteArray(QTest::currentDataTag()) == QByteArray("true"));
}

// Characters count, not bytes.
void TestDataChecker::longTexts()
{
    CheckOptions options;
    options.longestText = 3;
    const CheckReport report =
        check("10101 1     \u00E9\u00E9\n9\u00E9\u00E9\u00E9\u00E9\n", options);
    QCOMPARE(report.samples.front().value, QStringLiteral("9\u00E9\u00E9"));
    QCOMPARE(report.samples.back().value, QStringLiteral("\u00E9\u00E9"));
}

void TestDataChecker::tolerated()
{
    QStringList names;
    for (int kind = 0; kind < ProblemKindCount; ++kind) {
        if (isTolerated(ProblemKind(kind)))
            names.append(problemKindName(ProblemKind(kind)));
    }
    QCOMPARE(names,
        (QStringList {
            "special-without-code", "blank-id-item", "out-of-range", "outside-value-set" }));
}

// Lines of any bytes: the counts add up, and a value is counted once.
void TestDataChecker::generated()
{
    std::mt19937 random(11);
    const QByteArray bytes = QByteArray("0123456789  121212 .,-+~x\n\n\n\r\0\xC3\xA9\xFF", 33);
    for (int round = 0; round < 200; ++round) {
        QByteArray text;
        for (int i = int(random() % 2000); i > 0; --i) {
            text += bytes.at(int(random() % unsigned(bytes.size())));
            if (random() % 9 == 0)
                text += random() % 2 ? "\n10101 3" : "\n20101 33";
        }
        const CheckReport report = check(text);
        QVERIFY(report.addsUp);
        QVERIFY(report.counts.addUp());
    }
}

// 50,000 items in one line.
void TestDataChecker::manyVariables()
{
    constexpr int count = 50'000;
    QByteArray text = "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\n"
                      "RecordTypeLen=0\n\n[Level]\nName=L\n\n[IdItems]\n\n[Item]\nName=ID\n"
                      "Start=1\nLen=1\n\n[Record]\nName=R\nRecordTypeValue=''\n\n";
    for (int i = 0; i < count; ++i) {
        const QByteArray number = QByteArray::number(i);
        text += "[Item]\nName=V" + number + "\nStart=" + QByteArray::number(i + 2) + "\nLen=1\n\n";
    }
    const DataDictionary dictionary = DataDictionary::fromBytes(text, QStringLiteral("many"));
    const QByteArray line = '1' + QByteArray(count - 1, '7') + "x\n";
    CSProTextSource source(dictionary, { writeFile(m_folder, QStringLiteral("m.dat"), line) });
    Checker checker(source.dictionary());
    QVERIFY(runPipeline(source, checker));
    const CheckReport& report = checker.report();
    QVERIFY(report.addsUp);
    QCOMPARE(report.columns.size(), std::size_t(count + 1));
    QCOMPARE(report.problemCount(ProblemKind::NotANumber), 1LL);
    QCOMPARE(report.columns.back().notANumber, 1LL);
    QCOMPARE(report.columns[1].highest, QStringLiteral("7"));
}

// Memory for different values is shared by all columns.
void TestDataChecker::distinctOfManyVariables()
{
    constexpr int count = 1999;
    QByteArray text = "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\n"
                      "RecordTypeLen=0\n\n[Level]\nName=L\n\n[IdItems]\n\n[Item]\nName=ID\n"
                      "Start=1\nLen=6\n\n[Record]\nName=R\nRecordTypeValue=''\n\n";
    for (int i = 0; i < count; ++i) {
        const QByteArray number = QByteArray::number(i);
        text += "[Item]\nName=V" + number + "\nStart=" + QByteArray::number(7 + i) + "\nLen=1\n\n";
    }
    QByteArray lines;
    for (int i = 0; i < 600; ++i)
        lines += QByteArray::number(100'000 + i) + '\n';
    CSProTextSource source(DataDictionary::fromBytes(text, QStringLiteral("distinct")),
        { writeFile(m_folder, QStringLiteral("distinct.dat"), lines) });
    Checker checker(source.dictionary());
    QVERIFY(runPipeline(source, checker));
    const ColumnReport& column = checker.report().columns.front();
    QVERIFY(!column.hasAllDistinct);
    QCOMPARE(column.distinct, 500LL);
}

void TestDataChecker::cancel()
{
    std::vector<std::unique_ptr<DataSource>> sources;
    sources.push_back(std::make_unique<CSProTextSource>(
        m_dictionary, QStringList { writeFile(m_folder, QStringLiteral("c.dat"), "10101\n") }));
    for (const char* name : { "/cases_schema2.csdb", "/cases_schema3.csdb" })
        sources.push_back(std::make_unique<CSProDbSource>(QStringLiteral(TESSEL_TEST_DATA) + name));
    sources.push_back(std::make_unique<StatSource>(
        QStringLiteral(TESSEL_EXAMPLES "/person.sav"), TStatFileKind::Spss));
    sources.push_back(std::make_unique<StatSource>(
        QStringLiteral(TESSEL_EXAMPLES "/person.dta"), TStatFileKind::Stata));
    for (const auto& source : sources) {
        RowCollector rows(source->dictionary());
        QVERIFY(!runPipeline(*source, rows, [](qint64, qint64) { return false; }));
        QVERIFY(!rows.isFinished);
        QVERIFY(rows.rows.isEmpty());
    }
}

// A source that waits for data, as a pipe does, is told to stop.
void TestDataChecker::cancelWithoutData()
{
    constexpr int most = 1000; // rounds, so that the test ends in any case
    int rounds = 0;
    OddSource source(m_dictionary, [&rounds](BatchSink& sink) {
        while (rounds < most && sink.goesOn()) {
            ++rounds;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    });
    RowCollector rows(m_dictionary);
    QVERIFY(!runPipeline(source, rows, [](qint64, qint64) { return false; }));
    QVERIFY(rounds < most);
    QVERIFY(!rows.isFinished);
}

// What was read before a failure is taken first.
void TestDataChecker::failureBehindData()
{
    std::atomic<bool> isFilled { false };
    struct Slow : DataConsumer {
        explicit Slow(const std::atomic<bool>& flag)
            : isFilled(flag)
        {
        }
        void take(const DataBatch&) override
        {
            while (!isFilled)
                std::this_thread::yield();
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            ++batches;
        }
        void finish(const DataSource&) override
        {
        }
        const std::atomic<bool>& isFilled;
        int batches = 0;
    } slow(isFilled);
    OddSource source(m_dictionary, [&](BatchSink& sink) {
        for (int i = 0; i < 3; ++i) {
            beginCase(sink.batch(), "0101", false);
            sink.deliver();
        }
        isFilled = true;
        throw std::runtime_error("the disk fails");
    });
    QVERIFY_EXCEPTION_THROWN(runPipeline(source, slow), std::runtime_error);
    QCOMPARE(slow.batches, 3);
}

QTEST_GUILESS_MAIN(TestDataChecker)
#include "tst_DataChecker.moc"
