#include "DataRows.h"

#include <tessel_data/CSProDbSource.h>
#include <tessel_data/StatSource.h>

#include <random>

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
    void bothZeros();
    void levels();
    void generated();
    void manyVariables();
    void cancel();

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
                              << QStringList { "2 0 [] '3zz'", "3 1 [] '1'",
                                     "4 2 [] PLACE '1zz01'" };
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

// 0 and -0 are one value.
void TestDataChecker::bothZeros()
{
    DataDictionary dictionary;
    DataVariable variable;
    variable.type = DataVariable::Type::Real;
    variable.record = 0;
    dictionary.variables.push_back(variable);
    DataRecord record;
    record.columns.append(0);
    dictionary.records.push_back(record);
    DataBatch batch;
    for (const double number : { 0.0, -0.0, 1.0 }) {
        const quint32 cell = batch.addCells(1);
        batch.setReal(cell, ValueState(ValueKind::Real), number);
        batch.records.push_back({ 1, 0, 0, 0, cell, {} });
    }
    Checker checker(dictionary);
    checker.take(batch);
    checker.finish(CSProTextSource(m_dictionary, {}));
    QCOMPARE(checker.report().columns.front().distinct, 2LL);
}

void TestDataChecker::levels()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
        "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=2\nLen=1\n\n"
        "[Record]\nName=HOUSE\nRecordTypeValue='1'\nRequired=No\n\n"
        "[Item]\nName=ROOF\nStart=5\nLen=1\n\n"
        "[Level]\nName=L2\n\n[IdItems]\n\n[Item]\nName=W\nStart=3\nLen=1\n\n"
        "[Record]\nName=WOMAN\nRecordTypeValue='2'\nRequired=No\n\n"
        "[Item]\nName=KIDS\nStart=5\nLen=1\n\n"
        "[Level]\nName=L3\n\n[IdItems]\n\n[Item]\nName=B\nStart=4\nLen=1\n\n"
        "[Record]\nName=BIRTH\nRecordTypeValue='3'\n\n[Item]\nName=YEAR\nStart=5\nLen=1\n\n";
    const DataDictionary levels =
        DataDictionary::fromFile(writeFile(m_folder, QStringLiteral("levels.dcf"), dictionary));
    CSProTextSource source(levels,
        { writeFile(m_folder, QStringLiteral("levels.dat"),
            "11  1\n211 2\n31111\n31121\n212 1\n31311\n22 11\n12  1\n23 11\n22111\n") });
    QStringList found;
    CheckOptions options;
    options.onProblem = [&](const DataProblem& problem) {
        found.append(shownProblem(problem, levels));
    };
    Checker checker(source.dictionary(), options);
    QVERIFY(runPipeline(source, checker));
    const QString orphan = kindText(ProblemKind::LevelWithoutParent);
    QVERIFY2(found.contains(QStringLiteral("6 %1 [1] BIRTH").arg(orphan)),
        qPrintable(found.join(QLatin1Char('\n')))); // woman 3 has no record
    QVERIFY(found.contains(QStringLiteral("9 %1 [3] WOMAN").arg(orphan))); // no house
    QVERIFY(checker.report().addsUp);
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

QTEST_GUILESS_MAIN(TestDataChecker)
#include "tst_DataChecker.moc"
