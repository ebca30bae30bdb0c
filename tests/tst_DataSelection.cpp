// Parts of data, compared with what the test itself takes of the lines.
#include "DataRows.h"

#include <tessel_data/CSProDbSource.h>
#include <tessel_data/CaseFilter.h>
#include <tessel_data/DataError.h>
#include <tessel_data/SelectedSource.h>
#include <tessel_data/StatSource.h>

#include <QRandomGenerator>
#include <QSet>

#include <algorithm>

using namespace tessel;

namespace {

const QStringList surveyLines { "10101 2  123A ", "20101 30Ann   ", "2010199 Bob   ", "", "~0101",
    "30102", "10102 4  456BB", "201021000Cid  ", "10203 5  789A  beyond", "2a203 10Dan   ",
    "20203 11Eve   ", "11104 1    1A " };

DataDictionary survey()
{
    return DataDictionary::fromBytes(surveyDictionary(), QStringLiteral("survey.dcf"));
}

struct Part {
    QStringList rows;
    QStringList keys;
    QStringList told;
    SourceCounts counts;
    CheckReport check;
};

// Also passes through the library's check, which says whether all adds up.
class Watcher : public DataConsumer {
public:
    explicit Watcher(const DataDictionary& dictionary)
        : rows(dictionary)
        , checker(dictionary)
    {
    }
    void take(const DataBatch& batch) override
    {
        rows.take(batch);
        checker.take(batch);
    }
    void finish(const DataSource& source) override
    {
        checker.finish(source);
    }

    RowCollector rows;
    Checker checker;
};

Part partOf(std::unique_ptr<DataSource> whole, const DataSelection& selection)
{
    SelectedSource source(std::move(whole), selection);
    Watcher watcher(source.dictionary());
    runPipeline(source, watcher);
    return { watcher.rows.rows, watcher.rows.keys, watcher.rows.told, source.counts(),
        watcher.checker.report() };
}

class TextData {
public:
    QString add(const QStringList& lines)
    {
        const QString name = QStringLiteral("%1.dat").arg(m_paths.size());
        m_paths.append(writeFile(m_folder, name, lines.join(QLatin1Char('\n')).toUtf8() + '\n'));
        return m_paths.last();
    }
    std::unique_ptr<DataSource> source() const
    {
        return std::make_unique<CSProTextSource>(survey(), m_paths);
    }

private:
    QTemporaryDir m_folder;
    QStringList m_paths;
};

Part partOf(const QStringList& lines, const DataSelection& selection)
{
    TextData data;
    data.add(lines);
    return partOf(data.source(), selection);
}

DataSelection where(const QString& condition)
{
    DataSelection selection;
    selection.where = condition;
    return selection;
}

DataSelection sampleOf(double share, quint32 seed)
{
    DataSelection selection;
    selection.sample = share;
    selection.seed = seed;
    return selection;
}

QString mistakeOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const DataError& error) {
        return error.code == DataError::Code::UnfitSelection ? error.text : error.file;
    }
    return QString();
}

QStringList columnNames(const DataDictionary& dictionary)
{
    QStringList names;
    for (std::size_t r = 0; r < dictionary.records.size(); ++r) {
        for (int c = 0; c < dictionary.records[r].columns.size(); ++c)
            names.append(dictionary.records[r].name + QLatin1Char('.')
                + dictionary.variable(int(r), c).name);
    }
    return names;
}

// Households with their persons, some lines of which are rejected, deleted or blank.
QStringList generatedLines(int households, quint32 seed)
{
    QRandomGenerator random(seed);
    QStringList lines;
    for (int h = 0; h < households; ++h) {
        const QString key = QString::number(h).rightJustified(4, QLatin1Char('0'));
        lines.append(QLatin1Char('1') + key + QStringLiteral(" 3  100A "));
        for (int p = int(random.bounded(4)); p > 0; --p)
            lines.append(QLatin1Char('2') + key
                + QString::number(random.bounded(121)).rightJustified(3) + QStringLiteral("Name"));
        if (random.bounded(20) == 0)
            lines.append(QStringLiteral("9 what is this"));
        if (random.bounded(20) == 0)
            lines.append(QStringLiteral("   "));
        if (random.bounded(20) == 0)
            lines.append(QStringLiteral("~") + key);
    }
    return lines;
}

} // namespace

class tst_DataSelection : public QObject {
    Q_OBJECT

private slots:
    void everything();
    void records();
    void variables();
    void exactVariables();
    void recordsThenVariables();
    void mistakes_data();
    void mistakes();
    void occurrences();
    void conditions_data();
    void conditions();
    void conditionMistakes_data();
    void conditionMistakes();
    void textConditions();
    void toldStays();
    void toldRecord();
    void severalFiles();
    void every();
    void sampleIsKnown();
    void sampleOfAnyOrder();
    void sampleShare();
    void generated();
    void databases_data();
    void databases();
    void rows();
    void rowMistakes();
};

void tst_DataSelection::everything()
{
    TextData data;
    data.add(surveyLines);
    const auto source = data.source();
    RowCollector whole(source->dictionary());
    runPipeline(*source, whole);
    const Part part = partOf(surveyLines, {});
    QCOMPARE(part.rows, whole.rows);
    QCOMPARE(part.keys, whole.keys);
    QCOMPARE(part.told, whole.told);
    QCOMPARE(part.counts.leftOutLines, 0LL);
    QVERIFY(part.check.addsUp);
    QVERIFY(DataSelection().isAll());
}

void tst_DataSelection::records()
{
    DataSelection selection;
    selection.chooseRecords(survey(), { QStringLiteral("PERSON") });
    QVERIFY(!selection.isAll());
    const Part part = partOf(surveyLines, selection);
    QCOMPARE(part.rows,
        (QStringList { "0 2 PERSON: 1 1 30 \"Ann\" \"An\"", "0 3 PERSON: 1 1 !99  \"Bob\" \"Bo\"",
            "1 8 PERSON: 1 2 100 \"0Cid\" \"0C\"", "2 11 PERSON: 2 3 11 \"Eve\" \"Ev\"" }));
    QCOMPARE(part.keys, (QStringList { "0101", "0102", "0203", "1104" })); // one has no person
    QCOMPARE(part.counts.lines, qint64(surveyLines.size()));
    QCOMPARE(part.counts.records, 4LL);
    QCOMPARE(part.counts.leftOutLines, 4LL);
    QCOMPARE(part.counts.leftOutCases, 0LL);
    QCOMPARE(part.counts.rejectedLines, 2LL);
    QVERIFY(part.check.addsUp);
    QCOMPARE(part.check.problemCount(ProblemKind::MissingRecord), 0LL);
}

void tst_DataSelection::variables()
{
    DataSelection selection;
    selection.chooseVariables(survey(), { QStringLiteral("KIND"), QStringLiteral("NAME") });
    const DataDictionary part = selectedDictionary(survey(), selection.columns(survey()));
    QCOMPARE(columnNames(part),
        (QStringList { "HOUSE.PLACE", "HOUSE.NUMBER", "HOUSE.KIND", "PERSON.PLACE", "PERSON.NUMBER",
            "PERSON.NAME" }));
    QCOMPARE(part.columnCount(), 6);
    QCOMPARE(part.records[1].firstColumn, 3);
    QCOMPARE(part.records[1].idCount, 2);
    QCOMPARE(partOf(surveyLines, selection).rows.mid(0, 3),
        (QStringList {
            "0 1 HOUSE: 1 1 \"A\"", "0 2 PERSON: 1 1 \"Ann\"", "0 3 PERSON: 1 1 \"Bob\"" }));
}

void tst_DataSelection::exactVariables()
{
    DataSelection selection;
    selection.chooseVariables(survey(), { "PERSON.AGE", "PERSON.PLACE", "HOUSE.ROOMS" });
    QCOMPARE(columnNames(selectedDictionary(survey(), selection.columns(survey()))),
        (QStringList { "HOUSE.PLACE", "HOUSE.NUMBER", "HOUSE.ROOMS", "PERSON.PLACE",
            "PERSON.NUMBER", "PERSON.AGE" }));
}

void tst_DataSelection::recordsThenVariables()
{
    DataSelection selection;
    selection.records = { { QStringLiteral("PERSON"), false, { QStringLiteral("AGE") } } };
    selection.chooseRecords(survey(), { QStringLiteral("HOUSE"), QStringLiteral("PERSON") });
    QCOMPARE(selection.records.size(), 2);
    QVERIFY(selection.records.at(0).hasAllVariables);
    QCOMPARE(selection.records.at(1).variables, QStringList { "AGE" });
    selection.chooseRecords(survey(), { QStringLiteral("HOUSE") });
    QCOMPARE(mistakeOf([&] { selection.chooseVariables(survey(), { QStringLiteral("AGE") }); }),
        QStringLiteral("there is no variable 'AGE' in HOUSE; there are PLACE, NUMBER, ROOMS, "
                       "WEIGHT, KIND"));
}

void tst_DataSelection::mistakes_data()
{
    QTest::addColumn<QStringList>("records");
    QTest::addColumn<QStringList>("variables");
    QTest::addColumn<QString>("mistake");
    QTest::newRow("record") << QStringList { "PERSONS" } << QStringList {}
                            << "there is no record 'PERSONS'; did you mean PERSON?";
    QTest::newRow("other case") << QStringList { "house" } << QStringList {}
                                << "there is no record 'house'; did you mean HOUSE?";
    QTest::newRow("far record") << QStringList { "X" } << QStringList {}
                                << "there is no record 'X'; there are HOUSE, PERSON";
    QTest::newRow("swapped") << QStringList {} << QStringList { "GAE" }
                             << "there is no variable 'GAE' in HOUSE, PERSON; did you mean AGE?";
    QTest::newRow("far variable")
        << QStringList { "PERSON" } << QStringList { "PERSON.ROOMS" }
        << "there is no variable 'ROOMS' in PERSON; there are PLACE, NUMBER, AGE, NAME, FIRST";
}

void tst_DataSelection::mistakes()
{
    QFETCH(QStringList, records);
    QFETCH(QStringList, variables);
    QFETCH(QString, mistake);
    DataSelection selection;
    QCOMPARE(mistakeOf([&] {
        selection.chooseRecords(survey(), records);
        selection.chooseVariables(survey(), variables);
    }),
        mistake);
    DataSelection given;
    given.records = { { records.value(0, QStringLiteral("PERSON")), false, variables } };
    QVERIFY(!mistakeOf([&] { SelectedSource(TextData().source(), given); }).isEmpty());
}

void tst_DataSelection::occurrences()
{
    const DataDictionary dictionary = DataDictionary::fromBytes(surveyDictionary()
            + "\n[Item]\nLabel=Job\nName=JOB\nStart=15\nLen=1\nOccurrences=3\n"
              "DataType=Numeric\n",
        QStringLiteral("d.dcf"));
    const auto columns = [&](const QString& name, bool needsWholeItems) {
        DataSelection selection;
        selection.needsWholeItems = needsWholeItems;
        selection.chooseVariables(dictionary, { name });
        return columnNames(selectedDictionary(dictionary, selection.columns(dictionary))).mid(4);
    };
    QCOMPARE(
        columns("JOB", true), (QStringList { "PERSON.JOB_1", "PERSON.JOB_2", "PERSON.JOB_3" }));
    QCOMPARE(columns("JOB_2", false), QStringList { "PERSON.JOB_2" });
    QCOMPARE(mistakeOf([&] { columns("JOB_2", true); }),
        QStringLiteral("'JOB_2' is one occurrence; where repeated items have tables of their own, "
                       "take the item, JOB"));
}

void tst_DataSelection::conditions_data()
{
    QTest::addColumn<QString>("condition");
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("value") << "PLACE=2" << QStringList { "0203" };
    QTest::newRow("zero-filled") << "PLACE=02" << QStringList { "0203" };
    QTest::newRow("values") << "NUMBER = 1, 4" << QStringList { "0101", "1104" };
    QTest::newRow("range") << "PLACE=2..11" << QStringList { "0203", "1104" };
    QTest::newRow("range and value") << "NUMBER=1,3..4" << QStringList { "0101", "0203", "1104" };
    QTest::newRow("both") << "PLACE=1 and NUMBER=2..9" << QStringList { "0102" };
    QTest::newRow("none") << "PLACE=3" << QStringList {};
    QTest::newRow("blank") << "PLACE=\"\"" << QStringList {};
}

void tst_DataSelection::conditions()
{
    QFETCH(QString, condition);
    QFETCH(QStringList, keys);
    const Part part = partOf(surveyLines, where(condition));
    QCOMPARE(part.keys, keys);
    QCOMPARE(part.counts.cases, qint64(keys.size()));
    QCOMPARE(part.counts.leftOutCases, qint64(4 - keys.size()));
    QCOMPARE(part.counts.rejectedLines, 2LL);
    QVERIFY(part.check.addsUp);
}

void tst_DataSelection::conditionMistakes_data()
{
    QTest::addColumn<QString>("condition");
    QTest::addColumn<QString>("mistake");
    const QString form =
        "it is to be NAME=VALUE, with several values as VALUE,VALUE and a range as "
        "LOW..HIGH";
    QTest::newRow("no sign") << "PLACE" << form;
    QTest::newRow("no name") << "=1" << form;
    QTest::newRow("no value") << "PLACE=" << form;
    QTest::newRow("empty value") << "PLACE=1,,2"
                                 << "a value is missing; \"\" stands for a blank";
    QTest::newRow("unknown") << "PLACES=1"
                             << "there is no identification item 'PLACES'; did you mean PLACE?";
    QTest::newRow("no identification")
        << "AGE=1"
        << "cases are chosen by their identification, which 'AGE' is no item of; there are PLACE, "
           "NUMBER";
    QTest::newRow("text") << "PLACE=x"
                          << "'x' is no value of PLACE, a number of 2 columns";
    QTest::newRow("too long") << "PLACE=100"
                              << "'100' is no value of PLACE, a number of 2 columns";
    QTest::newRow("decimals") << "PLACE=1.5"
                              << "'1.5' is no value of PLACE, a number of 2 columns";
    QTest::newRow("open range") << "PLACE=1.."
                                << "'' is no value of PLACE, a number of 2 columns";
    QTest::newRow("backwards") << "PLACE=9..1"
                               << "the range '9..1' ends before it begins";
    QTest::newRow("open quote") << "PLACE=\"1"
                                << "a quote is not closed";
}

void tst_DataSelection::conditionMistakes()
{
    QFETCH(QString, condition);
    QFETCH(QString, mistake);
    QCOMPARE(mistakeOf([&] { SelectedSource(TextData().source(), where(condition)); }),
        QStringLiteral("condition '%1': %2").arg(condition, mistake));
}

// Texts have no ranges and no more characters than their item.
void tst_DataSelection::textConditions()
{
    const DataDictionary dictionary = DataDictionary::fromBytes(
        "[Dictionary]\nVersion=CSPro 7.7\n"
        "Name=D\nRecordTypeStart=0\nRecordTypeLen=0\n\n[Level]\nName=L\n\n[IdItems]\n\n"
        "[Item]\nName=TOWN\nLabel=Town\nStart=1\nLen=4\nDataType=Alpha\n\n[Record]\nName=R\n"
        "Label=R\n\n[Item]\nName=V\nLabel=V\nStart=5\nLen=1\n",
        QStringLiteral("d.dcf"));
    const auto mistake = [&](const char* condition) {
        return mistakeOf(
            [&] { CaseFilter(dictionary, where(QString::fromUtf8(condition)), true); });
    };
    for (const char* fit : { "TOWN=ABCD,b", "TOWN=\"a..b\"", "TOWN=\"ab    \"",
             "TOWN=\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F" })
        QCOMPARE(mistake(fit), QString());
    QCOMPARE(mistake("TOWN=A..C"),
        QStringLiteral("condition 'TOWN=A..C': TOWN is a text, which has no ranges; a text with "
                       "'..' in it stands in quotes"));
    QCOMPARE(mistake("TOWN=ABCDE"),
        QStringLiteral("condition 'TOWN=ABCDE': 'ABCDE' is no value of TOWN, a text of 4 columns"));
}

// What is told of a line goes with the line; what is rejected stays.
void tst_DataSelection::toldStays()
{
    const auto beyond = QStringLiteral("9:%1").arg(int(LineProblem::TextBeyondRecord));
    const QStringList rejected { QStringLiteral("6:%1").arg(int(LineProblem::UnknownRecordType)),
        QStringLiteral("10:%1").arg(int(LineProblem::IdNotANumber)) };
    QCOMPARE(partOf(surveyLines, where("PLACE=2")).told,
        (QStringList { rejected.first(), beyond, rejected.last() }));
    QCOMPARE(partOf(surveyLines, where("PLACE=1")).told, rejected);
    DataSelection selection;
    selection.chooseRecords(survey(), { QStringLiteral("PERSON") });
    QCOMPARE(partOf(surveyLines, selection).told, rejected);
}

// Each file has counts of its own, and what is told of a line stays with its file.
// Records are numbered as the part has them.
void tst_DataSelection::toldRecord()
{
    TextData data;
    data.add({ "10101 2  123A ", "20101 30Ann   beyond" });
    DataSelection persons;
    persons.chooseRecords(survey(), { QStringLiteral("PERSON") });
    SelectedSource source(data.source(), persons);
    QVector<int> records;
    CheckOptions options;
    options.onProblem = [&](const DataProblem& problem) {
        if (problem.kind == ProblemKind::TextBeyondRecord)
            records.append(problem.record);
    };
    Checker checker(source.dictionary(), options);
    QVERIFY(runPipeline(source, checker));
    QCOMPARE(source.dictionary().records.size(), std::size_t(1));
    QCOMPARE(records, QVector<int> { 0 });
}

void tst_DataSelection::severalFiles()
{
    TextData data;
    data.add({ "10101 2  123A  beyond", "10102 4" });
    data.add({ "10103 2", "20103 30Ann", "10104 4", "20104 31Bob" });
    SelectedSource source(data.source(), where(QStringLiteral("NUMBER=3")));
    Watcher watcher(source.dictionary());
    QVERIFY(runPipeline(source, watcher));
    QVERIFY(watcher.checker.report().addsUp);
    QCOMPARE(watcher.rows.keys, QStringList { QStringLiteral("0103") });
    QCOMPARE(watcher.rows.told, QStringList());
    const SourceCounts& first = source.files()[0].counts;
    const SourceCounts& second = source.files()[1].counts;
    QCOMPARE(first.leftOutLines, 2LL);
    QCOMPARE(first.leftOutCases, 2LL);
    QCOMPARE(first.records, 0LL);
    QCOMPARE(second.leftOutLines, 2LL);
    QCOMPARE(second.leftOutCases, 1LL);
    QCOMPARE(second.records, 2LL);
    QVERIFY(first.addUp() && second.addUp());
}

void tst_DataSelection::every()
{
    DataSelection selection;
    selection.every = 2;
    QCOMPARE(partOf(surveyLines, selection).keys, (QStringList { "0102", "1104" }));
    selection.every = 3;
    QCOMPARE(partOf(surveyLines, selection).keys, QStringList { "0203" });
    selection.every = 2;
    selection.where = QStringLiteral("NUMBER=2..4");
    QCOMPARE(partOf(surveyLines, selection).keys, QStringList { "0203" });
}

// Users take a sample again years later.
void tst_DataSelection::sampleIsKnown()
{
    const QStringList keys = partOf(generatedLines(40, 1), sampleOf(0.2, 1)).keys;
    QCOMPARE(
        keys.join(QLatin1Char(' ')), QStringLiteral("0002 0004 0006 0008 0026 0028 0036 0038"));
}

void tst_DataSelection::sampleOfAnyOrder()
{
    const QStringList lines = generatedLines(3000, 2);
    QStringList expected = partOf(lines, sampleOf(0.1, 7)).keys;
    expected.sort();
    QVERIFY(expected.size() > 200);
    // Households, a line and those behind it, in another order and in several files.
    QVector<QStringList> households;
    for (const QString& line : lines) {
        if (line.startsWith(QLatin1Char('1')))
            households.append(QStringList());
        households.last().append(line);
    }
    std::shuffle(households.begin(), households.end(), QRandomGenerator(3));
    TextData data;
    for (int first = 0; first < households.size(); first += 700) {
        QStringList batch;
        for (const QStringList& household : households.mid(first, 700))
            batch += household;
        data.add(batch);
    }
    QStringList keys = partOf(data.source(), sampleOf(0.1, 7)).keys;
    keys.sort();
    QCOMPARE(keys, expected);
}

void tst_DataSelection::sampleShare()
{
    const QStringList lines = generatedLines(10000, 4);
    QSet<QString> all;
    for (quint32 seed = 1; seed <= 5; ++seed) {
        const QStringList keys = partOf(lines, sampleOf(0.1, seed)).keys;
        QVERIFY2(keys.size() > 880 && keys.size() < 1120, qPrintable(QString::number(keys.size())));
        for (const QString& key : keys)
            all.insert(key);
    }
    QVERIFY(all.size() > 3500); // other seeds take other cases: 1 - 0.9^5 of them
    QCOMPARE(partOf(lines, sampleOf(1, 1)).keys.size(), 10000);
}

void tst_DataSelection::generated()
{
    const QStringList lines = generatedLines(9999, 5) + generatedLines(9999, 6);
    QRandomGenerator random(7);
    for (int round = 0; round < 6; ++round) {
        const int low = int(random.bounded(50));
        const int high = low + int(random.bounded(50));
        const int number = int(random.bounded(100));
        const bool hasHouses = random.bounded(2) == 0;
        QStringList rows;
        int rejected = 0;
        int line = 0;
        for (const QString& text : lines) {
            ++line;
            rejected += text.startsWith(QLatin1Char('9')) ? 1 : 0;
            const bool isHouse = text.startsWith(QLatin1Char('1'));
            if (!text.startsWith(QLatin1Char('2')) && !(isHouse && hasHouses))
                continue;
            const int place = text.midRef(1, 2).toInt();
            if (place < low || place > high || text.midRef(3, 2).toInt() == number)
                continue;
            rows.append(
                QStringLiteral("%1 %2: %3").arg(line).arg(isHouse ? "HOUSE" : "PERSON").arg(place));
        }
        DataSelection selection = where(QStringLiteral("PLACE=%1..%2").arg(low).arg(high));
        if (number > 0)
            selection.where += QStringLiteral(" and NUMBER=0..%1").arg(number - 1);
        if (number > 0 && number < 99)
            selection.where += QStringLiteral(",%1..99").arg(number + 1);
        if (number == 0)
            selection.where += QStringLiteral(" and NUMBER=1..99");
        if (!hasHouses)
            selection.chooseRecords(survey(), { QStringLiteral("PERSON") });
        selection.chooseVariables(survey(), { QStringLiteral("PLACE") });
        const Part part = partOf(lines, selection);
        QStringList found;
        for (const QString& row : part.rows) // without the case, and the identification but PLACE
            found.append(row.section(QLatin1Char(' '), 1, 3));
        QCOMPARE(found, rows);
        QCOMPARE(part.counts.rejectedLines, qint64(rejected));
        QCOMPARE(part.counts.lines, qint64(lines.size()));
        QVERIFY(part.check.addsUp);
    }
}

void tst_DataSelection::databases_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("text") << "/cases_schema2.csdb";
    QTest::newRow("tables") << "/cases_schema3.csdb";
}

void tst_DataSelection::databases()
{
    QFETCH(QString, name);
    const QString path = QStringLiteral(TESSEL_TEST_DATA) + name;
    const Part part =
        partOf(std::make_unique<CSProDbSource>(path), where(QStringLiteral("NUMBER=2..9")));
    QCOMPARE(part.keys, (QStringList { "0102", "0103" }));
    QCOMPARE(part.counts.casesRead, 4LL);
    QCOMPARE(part.counts.deletedCases, 1LL);
    QCOMPARE(part.counts.leftOutCases, 1LL);
    QCOMPARE(part.counts.partlySavedCases, 1LL);
    QVERIFY(part.check.addsUp);
    const Part first =
        partOf(std::make_unique<CSProDbSource>(path), where(QStringLiteral("NUMBER=1")));
    QCOMPARE(first.keys, QStringList { "0101" });
    QCOMPARE(first.counts.partlySavedCases, 0LL);
    QVERIFY(first.check.addsUp);
}

// Each row is a case, chosen by any variable.
void tst_DataSelection::rows()
{
    const auto source = [] {
        return std::make_unique<StatSource>(
            QStringLiteral(TESSEL_EXAMPLES "/person.sav"), TStatFileKind::Spss);
    };
    const Part whole = partOf(source(), {});
    DataSelection ages;
    ages.chooseVariables(source()->dictionary(), { QStringLiteral("AGE") });
    const auto agesOf = [&](const DataSelection& selection) {
        QVector<double> numbers;
        for (const QString& row : partOf(source(), selection).rows)
            numbers.append(row.section(QLatin1Char(' '), 3).toDouble());
        return numbers;
    };
    QVector<double> expected;
    for (const double age : agesOf(ages)) {
        if ((age >= 20 && age <= 30) || age == 40)
            expected.append(age);
    }
    QVERIFY(expected.size() > 100);
    DataSelection chosen = ages;
    chosen.where = QStringLiteral("AGE=20..30,40");
    QCOMPARE(agesOf(chosen), expected);
    DataSelection third;
    third.every = 3;
    const Part part = partOf(source(), third);
    QCOMPARE(part.rows.size(), whole.rows.size() / 3);
    QCOMPARE(part.rows.at(1), whole.rows.at(5));
    QVERIFY(part.check.addsUp);
    QCOMPARE(partOf(source(), sampleOf(0.2, 3)).rows, partOf(source(), sampleOf(0.2, 3)).rows);
    QVERIFY(partOf(source(), sampleOf(0.2, 3)).rows != partOf(source(), sampleOf(0.2, 4)).rows);
}

void tst_DataSelection::rowMistakes()
{
    const auto mistake = [](const QString& condition) {
        return mistakeOf([&] {
            SelectedSource(std::make_unique<StatSource>(
                               QStringLiteral(TESSEL_EXAMPLES "/person.sav"), TStatFileKind::Spss),
                where(condition));
        });
    };
    QCOMPARE(mistake("AGES=1"),
        QStringLiteral("condition 'AGES=1': there is no variable 'AGES'; did you mean AGE?"));
    QCOMPARE(mistake("AGE=old"),
        QStringLiteral("condition 'AGE=old': 'old' is no value of AGE, a number"));
}

QTEST_GUILESS_MAIN(tst_DataSelection)
#include "tst_DataSelection.moc"
