// Figures of data by hand: frequencies, kinds of missing values, moments, weights and cross tables.
#include "Figures.h"

#include <tessel_data/DataError.h>
#include <tessel_data/SelectedSource.h>
#include <tessel_data/VariableCollector_p.h>

using namespace tessel;

namespace {

// Households of a place and persons in them, as surveyDictionary() has them.
QByteArray surveyLines()
{
    return "10101 3 1.50A \n"
           "20101 34ANNA  \n"
           "20101999BEN   \n"
           "20101   CARL  \n"
           "10102 9 2.00BB\n"
           "20102 34DORA  \n"
           "20102x1 EMIL  \n"
           "10201 6  .25CC\n"
           "20201121FRED  \n";
}

const VariableStatistics& of(const StatisticsReport& report, const QString& name)
{
    const DataDictionary dictionary = DataDictionary::fromBytes(surveyDictionary(), "d.dcf");
    for (const VariableStatistics& one : report.variables) {
        if (dictionary.variables[std::size_t(one.variable)].name == name)
            return one;
    }
    qFatal("no variable %s", qPrintable(name));
}

StatisticsReport surveyFigures(const StatisticsOptions& options = {})
{
    return figuresOf(surveyDictionary(), surveyLines(), options);
}

// A case of two levels: households, women with letters, and their children.
QByteArray levelsDictionary()
{
    return "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
           "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=2\nLen=1\n\n"
           "[ValueSet]\nName=H_VS1\nValue=1;One\nValue=2;Two\n\n"
           "[Record]\nName=HOUSE\nRecordTypeValue='1'\nMaxRecords=1\n\n"
           "[Item]\nName=HW\nStart=4\nLen=1\n\n"
           "[Level]\nName=L2\n\n[IdItems]\n\n[Item]\nName=W\nStart=3\nLen=1\n"
           "DataType=Alpha\n\n[ValueSet]\nName=W_VS1\nValue='a';A\nValue='b';B\n\n"
           "[Record]\nName=WOMAN\nRecordTypeValue='2'\nMaxRecords=1\n\n"
           "[Item]\nName=WW\nStart=4\nLen=1\n\n"
           "[Record]\nName=CHILD\nRecordTypeValue='3'\nMaxRecords=9\n\n"
           "[Item]\nName=SEX\nStart=4\nLen=1\n\n"
           "[ValueSet]\nName=SEX_VS1\nValue=1;Boy\nValue=2;Girl\n";
}

// A mean and the like of numbers that are kept one by one.
QString plainMoments(std::vector<std::pair<double, double>> rows)
{
    std::sort(rows.begin(), rows.end());
    long double weight = 0;
    long double sum = 0;
    for (const auto& row : rows) {
        weight += row.second;
        sum += row.first * row.second;
    }
    long double squares = 0;
    for (const auto& row : rows)
        squares += (row.first - sum / weight) * (row.first - sum / weight) * row.second;
    const auto quantile = [&](long double share) {
        long double below = 0;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            below += rows[i].second;
            if (std::abs(double(below - share * weight)) < 1e-9 && i + 1 < rows.size())
                return (rows[i].first + rows[i + 1].first) / 2;
            if (below > share * weight)
                return rows[i].first;
        }
        return rows.back().first;
    };
    const auto text = [](double number) { return QString::number(number, 'g', 12); };
    return QStringList { text(double(sum / weight)),
        text(double(std::sqrt(double(squares / (weight - 1))))), text(quantile(0.25L)),
        text(quantile(0.5L)), text(quantile(0.75L)) }
        .join(' ');
}

} // namespace

class tst_DataStatistics : public QObject {
    Q_OBJECT

private slots:
    void frequencies();
    void kinds();
    void occurrences();
    void stataKinds();
    void weightOfTheCase();
    void casesAcrossBatches();
    void weightOfTheRecord();
    void unusableWeights();
    void crosses();
    void crossedIds();
    void levels();
    void unfitOptions_data();
    void unfitOptions();
    void largeSums();
    void nothing();
    void selected();
    void manyNumbers();
    void hostileNumbers();
    void recount_data();
    void recount();
};

void tst_DataStatistics::frequencies()
{
    const StatisticsReport report = surveyFigures();
    QVERIFY(report.addsUp);
    QCOMPARE(shownCell(report.cases), QString("3"));
    QCOMPARE(shownCell(report.records[0].rows), QString("3"));
    QCOMPARE(shownCell(report.records[1].rows), QString("6"));
    const VariableStatistics& rooms = of(report, "ROOMS");
    QCOMPARE(rooms.valueSets.size(), std::size_t(2));
    QCOMPARE(shownCells(rooms.valueSets[0].codes), QString("1 0 1")); // 1:5, 7, 9
    QCOMPARE(shownCell(rooms.valueSets[0].rest), QString("1"));
    QCOMPARE(shownCells(rooms.valueSets[1].codes), QString("3"));
    QCOMPARE(shownCell(rooms.outside), QString("1"));
    QCOMPARE(rooms.outsideCodes.size(), 1);
    QCOMPARE(rooms.outsideCodes.first().code, QString("6"));
    QVERIFY(rooms.hasAllOutsideCodes);
    QCOMPARE(shownCells(of(report, "KIND").valueSets[0].codes), QString("1 1"));
    QCOMPARE(of(report, "KIND").outsideCodes.first().code, QString("CC"));
    QCOMPARE(shownMoments(of(report, "WEIGHT").moments), QString("1.25 0.901387818866 0.25 1.5 2"));
}

void tst_DataStatistics::kinds()
{
    const StatisticsReport report = surveyFigures();
    const VariableStatistics& age = of(report, "AGE");
    QCOMPARE(shownCells(age.kinds), QString("3 1 1 0 0 0 1 0"));
    QCOMPARE(shownCells(age.valueSets[0].codes), QString("2 1 1"));
    QCOMPARE(shownCell(age.valueSets[0].rest), QString("2"));
    QCOMPARE(age.lowest, QString("34"));
    QCOMPARE(age.highest, QString("121"));
    QCOMPARE(shownCell(age.lowestCell), QString("2"));
    QVERIFY(age.isQuantity);
    QVERIFY(!of(report, "PLACE").isQuantity);
}

// Occurrences together make one entry, and each its own where that is wanted.
void tst_DataStatistics::occurrences()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n\n"
        "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=1\nLen=1\n\n"
        "[Record]\nName=R\n\n[Item]\nName=TOY\nStart=2\nLen=2\nOccurrences=3\n\n"
        "[Item]\nName=COLOUR\nStart=2\nLen=1\nItemType=SubItem\n\n"
        "[ValueSet]\nName=COLOUR_VS1\nValue=1;Red\nValue=2;Blue\n";
    const QByteArray lines = "1112112\n221    \n3111111\n";
    const StatisticsReport together = figuresOf(dictionary, lines);
    QCOMPARE(together.variables.size(), std::size_t(3)); // H, TOY, COLOUR
    const VariableStatistics& colour = together.variables[2];
    QCOMPARE(colour.occurrences, 3);
    QVERIFY(!colour.isOccurrence);
    QCOMPARE(shownCell(colour.total), QString("9"));
    QCOMPARE(shownCells(colour.valueSets[0].codes), QString("5 2"));
    QCOMPARE(shownCell(colour.of(StatisticsKind::Blank)), QString("2"));
    StatisticsOptions options;
    options.hasEachOccurrence = true;
    const StatisticsReport each = figuresOf(dictionary, lines, options);
    QCOMPARE(each.variables.size(), std::size_t(9));
    QCOMPARE(shownCells(each.variables[5].valueSets[0].codes), QString("5 2"));
    QVERIFY(each.variables[6].isOccurrence);
    QCOMPARE(shownCells(each.variables[6].valueSets[0].codes), QString("2 1"));
    QCOMPARE(shownCells(each.variables[7].valueSets[0].codes), QString("1 1"));
    QCOMPARE(shownCells(each.variables[8].valueSets[0].codes), QString("2 0"));
    StatisticsReport hidden = each;
    hidden.suppress(2);
    QCOMPARE(hidden.variables.size(), std::size_t(3));
}

// Blanks of Stata may be of a kind that has a label.
void tst_DataStatistics::stataKinds()
{
    DataDictionary dictionary;
    dictionary.hasMissingKinds = true;
    dictionary.valueSets.push_back({ "L", {},
        { { "1", {}, "One", Special::None }, { ".b", {}, "Refused", Special::Missing } }, {} });
    DataVariable variable;
    variable.name = variable.itemName = "X";
    variable.type = DataVariable::Type::Real;
    variable.record = 0;
    variable.valueSets = { 0 };
    dictionary.variables.push_back(variable);
    DataRecord record;
    record.columns = { 0 };
    dictionary.records.push_back(record);
    DataBatch batch;
    const quint32 first = batch.addCells(5);
    batch.setReal(first, ValueState(ValueKind::Real), 1);
    batch.set(first + 1, ValueState(ValueKind::Blank, Special::Missing), 'b');
    batch.set(first + 2, ValueState(ValueKind::Blank, Special::Missing), 'b');
    batch.set(first + 3, ValueState(ValueKind::Blank, Special::Missing), 'a');
    batch.set(first + 4, ValueState(ValueKind::Blank));
    CollectorShare share(dictionary);
    VariableCollector collector(share, 0, 0);
    for (quint32 cell = first; cell < first + 5; ++cell)
        collector.add(batch, cell, 0);
    const VariableStatistics figures = collector.finish(false, 10);
    QCOMPARE(shownCells(figures.kinds), QString("1 3 0 0 0 1 0 0"));
    QCOMPARE(figures.missingKinds.size(), 2);
    QCOMPARE(figures.missingKinds.at(0).code, QString(".a"));
    QCOMPARE(shownCell(figures.missingKinds.at(1).cell), QString("2"));
    QCOMPARE(shownCells(figures.valueSets[0].codes), QString("1 2"));
    QCOMPARE(shownCell(figures.valueSets[0].rest), QString("2"));
}

// Persons weigh what their household does, wherever its record stands in the case.
void tst_DataStatistics::weightOfTheCase()
{
    StatisticsOptions options;
    options.weight = "WEIGHT";
    const StatisticsReport report = surveyFigures(options);
    const VariableStatistics& age = of(report, "AGE");
    QVERIFY(age.isWeighted);
    QCOMPARE(shownCells(age.valueSets[0].codes), QString("2/3.5 1/1.5 1/1.5"));
    QCOMPARE(shownMoments(age.weightedMoments), QString("39.8 25.3420240277 34 34 34"));
    QCOMPARE(shownCell(age.total), QString("6/8.75"));
    QCOMPARE(shownCell(of(report, "PLACE").total), QString("3/3.75"));
    const QByteArray swapped = "20101 34ANNA  \n10101 3 1.50A \n20102 50BERT  \n";
    options.weight = "HOUSE.WEIGHT";
    const StatisticsReport other = figuresOf(surveyDictionary(), swapped, options);
    QCOMPARE(shownCell(of(other, "AGE").total), QString("2/1.5"));
    QCOMPARE(other.records[1].absentWeights, 1LL);
}

// Enough cases for several batches; each household stands behind its persons.
void tst_DataStatistics::casesAcrossBatches()
{
    QByteArray lines;
    double weight = 0;
    for (int house = 0; house < 10'000; ++house) {
        const QByteArray key = QByteArray::number(house).rightJustified(4, '0');
        for (int person = 0; person < 3; ++person)
            lines += '2' + key + " 34ANNA  \n";
        lines += '1' + key + " 3 " + QByteArray::number(house % 10) + ".50A \n";
        weight += 3 * (house % 10 + 0.5);
    }
    StatisticsOptions options;
    options.weight = "WEIGHT";
    options.crosses = { { "KIND", "AGE" } };
    const StatisticsReport report = figuresOf(surveyDictionary(), lines, options);
    QVERIFY(report.addsUp);
    QCOMPARE(report.records[1].withoutWeight(), 0LL);
    QCOMPARE(shownCell(of(report, "AGE").total), QStringLiteral("30000/%1").arg(weight));
    QCOMPARE(shownCell(report.crosses[0].cell(0, 0)), QStringLiteral("30000/%1").arg(weight));
    QCOMPARE(shownCell(report.cases), QString("10000"));
}

// Households are not weighed by what their persons weigh.
void tst_DataStatistics::weightOfTheRecord()
{
    StatisticsOptions options;
    options.weight = "AGE";
    const StatisticsReport report = surveyFigures(options);
    QVERIFY(of(report, "NAME").isWeighted && !of(report, "ROOMS").isWeighted);
    QVERIFY(!report.records[0].isWeighted && report.records[1].isWeighted);
    QCOMPARE(shownCell(of(report, "NAME").total), QString("6/189"));
    QCOMPARE(report.records[1].missingWeights, 2LL);
    QCOMPARE(report.records[1].unreadableWeights, 1LL);
    QCOMPARE(report.records[1].withoutWeight(), 3LL);
}

void tst_DataStatistics::unusableWeights()
{
    StatisticsOptions options;
    options.weight = "WEIGHT";
    const StatisticsReport report = figuresOf(surveyDictionary(),
        "10101 3-1.50A \n10102 3     A \n10103 3 x   A \n10104 3    0A \n10105 3 2.00A \n",
        options);
    QCOMPARE(report.records[0].negativeWeights, 1LL);
    QCOMPARE(report.records[0].missingWeights, 1LL);
    QCOMPARE(report.records[0].unreadableWeights, 1LL);
    QCOMPARE(shownCell(of(report, "ROOMS").valueSets[0].codes[0]), QString("5/2"));
    QCOMPARE(shownMoments(of(report, "ROOMS").weightedMoments), QString("3 0 3 3 3"));
}

void tst_DataStatistics::crosses()
{
    StatisticsOptions options;
    options.weight = "WEIGHT";
    options.crosses = { { "ROOMS", "KIND" }, { "ROOMS", "AGE" }, { "AGE", "ROOMS" } };
    const StatisticsReport report = surveyFigures(options);
    const CrossTable& own = report.crosses[0]; // 1:5, 7, 9, others by A, BB, others
    QCOMPARE(own.lineCount, 4);
    QCOMPARE(own.columnCount, 3);
    QCOMPARE(shownCells(own.cells), QString("1/1.5 0 0 0 0 0 0 1/2 0 0 0 1/0.25"));
    const CrossTable& persons = report.crosses[1];
    QCOMPARE(persons.record, 1);
    QCOMPARE(shownCells(persons.lineTotals), QString("3/4.5 0 2/4 1/0.25"));
    QCOMPARE(shownCells(persons.columnTotals), QString("2/3.5 1/1.5 1/1.5 2/2.25"));
    QCOMPARE(shownCell(persons.total), QString("6/8.75"));
    QCOMPARE(shownCells(report.crosses[2].columnTotals), shownCells(persons.lineTotals));
}

void tst_DataStatistics::crossedIds()
{
    StatisticsOptions options;
    options.crosses = { { "H", "W" }, { "W", "SEX" } };
    const StatisticsReport report =
        figuresOf(levelsDictionary(), "11 5\n21a1\n31a1\n31a2\n21b1\n31b2\n12 5\n22a1\n", options);
    QCOMPARE(report.crosses[0].record, -1);
    QCOMPARE(shownCells(report.crosses[0].cells), QString("1 1 0 1 0 0 0 0 0"));
    QCOMPARE(shownCells(report.crosses[1].cells), QString("1 1 0 0 1 0 0 0 0"));
}

// Identification items of lower levels count once for each of their nodes, which weigh what a
// record of theirs says.
void tst_DataStatistics::levels()
{
    StatisticsOptions options;
    options.weight = "WW";
    options.crosses = { { "HW", "SEX" } };
    const QByteArray lines = "11 5\n31a1\n21a3\n31a2\n21b1\n31b2\n12 7\n22a2\n32a1\n32a1\n";
    QByteArray dictionary = levelsDictionary();
    dictionary.replace("Name=HW\nStart=4\nLen=1\n",
        "Name=HW\nStart=4\nLen=1\n\n[ValueSet]\nName=HW_VS1\nValue=5;Five\nValue=7;Seven\n");
    const StatisticsReport report = figuresOf(dictionary, lines, options);
    QCOMPARE(shownCell(report.cases), QString("2"));
    const VariableStatistics& women = report.variables[1];
    QCOMPARE(women.record, -1);
    QCOMPARE(shownCells(women.valueSets[0].codes), QString("2/5 1"));
    QVERIFY(!report.variables[0].isWeighted); // a house has several women
    const VariableStatistics& sex = report.variables.back();
    QCOMPARE(shownCells(sex.valueSets[0].codes), QString("3/7 2/4"));
    QCOMPARE(shownCells(report.crosses[0].cells), QString("1/3 2/4 0 2/4 0 0 0 0 0"));
}

void tst_DataStatistics::unfitOptions_data()
{
    QTest::addColumn<QString>("weight");
    QTest::addColumn<QString>("crossed");
    QTest::addColumn<QString>("text");
    QTest::newRow("no such weight") << "WEIHGT"
                                    << ""
                                    << "there is no variable 'WEIHGT'";
    QTest::newRow("a text") << "KIND"
                            << ""
                            << "weight: 'KIND' is no number";
    QTest::newRow("other record") << "PERSON.WEIGHT"
                                  << ""
                                  << "no variable 'PERSON.WEIGHT'";
    QTest::newRow("no codes") << ""
                              << "WEIGHT"
                              << "'WEIGHT' has no value set";
    QTest::newRow("no such variable") << ""
                                      << "ROOM"
                                      << "there is no variable 'ROOM'";
}

void tst_DataStatistics::unfitOptions()
{
    QFETCH(QString, weight);
    QFETCH(QString, crossed);
    QFETCH(QString, text);
    StatisticsOptions options;
    options.weight = weight;
    if (!crossed.isEmpty())
        options.crosses = { { "AGE", crossed } };
    try {
        surveyFigures(options);
    } catch (const DataError& error) {
        QVERIFY2(error.text.contains(text), qPrintable(error.text));
        return;
    }
    QFAIL("no error");
}

// Sums of numbers of eighteen digits fit no 64 bits, and squares not 128.
void tst_DataStatistics::largeSums()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n\n"
        "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=1\nLen=2\n\n"
        "[Record]\nName=R\n\n[Item]\nName=N\nStart=3\nLen=18\n";
    QByteArray lines;
    for (int i = 10; i < 40; ++i)
        lines += QByteArray::number(i) + QByteArray::number(999999999999999000LL + i % 10) + '\n';
    const VariableStatistics number = figuresOf(dictionary, lines).variables[1];
    QCOMPARE(numberOf(number.moments.mean), 999999999999999004.5);
    QCOMPARE(number.lowest, QString("999999999999999000"));
    QCOMPARE(number.highest, QString("999999999999999009"));
    QCOMPARE(shownCell(number.highestCell), QString("3"));
    // Weights that a sum of doubles would lose.
    ExactSum sum;
    sum.add(1e16);
    for (int i = 0; i < 10'000; ++i)
        sum.add(0.1);
    sum.add(-1e16);
    QCOMPARE(sum.value(), 1000.0);
}

void tst_DataStatistics::nothing()
{
    StatisticsOptions options;
    options.weight = "WEIGHT";
    options.crosses = { { "ROOMS", "AGE" } };
    StatisticsReport report = figuresOf(surveyDictionary(), {}, options);
    QVERIFY(report.addsUp);
    for (const VariableStatistics& variable : report.variables) {
        QVERIFY(variable.total.isZero() && !variable.hasNumbers && variable.histogram.empty());
        QCOMPARE(shownMoments(variable.moments), QString("- - - - -"));
    }
    QVERIFY(report.crosses[0].total.isZero());
    report.suppress(10);
    QVERIFY(report.crosses[0].total.isZero());
    QVERIFY(!report.find(1000));
}

void tst_DataStatistics::selected()
{
    const QTemporaryDir folder;
    DataSelection selection;
    selection.where = "PLACE=1";
    selection.chooseRecords(DataDictionary::fromBytes(surveyDictionary(), "d"), { "PERSON" });
    SelectedSource source(
        std::make_unique<CSProTextSource>(DataDictionary::fromBytes(surveyDictionary(), "d.dcf"),
            QStringList { writeFile(folder, "data.dat", surveyLines()) }),
        selection);
    DataStatistics statistics(source);
    runPipeline(source, statistics);
    const StatisticsReport& report = statistics.report();
    QVERIFY(report.addsUp);
    QCOMPARE(shownCell(report.cases), QString("2"));
    QCOMPARE(shownCell(of(report, "AGE").total), QString("5"));
}

// What cannot be kept is summed up: sums stay exact, quartiles are as near as they say.
void tst_DataStatistics::manyNumbers()
{
    DataDictionary dictionary;
    DataVariable variable;
    variable.record = 0;
    variable.type = DataVariable::Type::Number;
    variable.decimals = 1;
    dictionary.variables.push_back(variable);
    CollectorShare share(dictionary);
    share.room.distinct = 1000;
    share.pointLimit = 256;
    VariableCollector collector(share, 0, 0);
    constexpr int count = 300'000;
    std::size_t most = 0;
    DataBatch batch;
    const quint32 cell = batch.addCells(1);
    quint32 state = 1;
    std::vector<std::pair<double, double>> rows;
    for (int i = 0; i < count; ++i) {
        state = state * 1664525 + 1013904223;
        const qint64 number = state >> 12; // about a million
        batch.set(cell, ValueState(ValueKind::Number), number);
        collector.add(batch, cell, 2);
        rows.emplace_back(double(number) / 10, 2);
        most = std::max(most, collector.keptCount());
    }
    QVERIFY2(most < 10'000, qPrintable(QString::number(most)));
    const VariableStatistics figures = collector.finish(true, 5);
    std::sort(rows.begin(), rows.end());
    const QStringList weighted = plainMoments(rows).split(' ');
    QCOMPARE(shownMoments(figures.weightedMoments).split(' ').mid(0, 2), weighted.mid(0, 2));
    const double error = figures.moments.quartileError;
    QVERIFY2(error > 0 && error < 0.03, qPrintable(QString::number(error)));
    const auto placeOf = [&](double value) {
        const auto found = std::lower_bound(rows.begin(), rows.end(), std::make_pair(value, 0.0));
        return double(found - rows.begin()) / count;
    };
    const double margin = error + 1e-4;
    QVERIFY(std::abs(placeOf(numberOf(figures.moments.lowerQuartile)) - 0.25) <= margin);
    QVERIFY(std::abs(placeOf(numberOf(figures.moments.median)) - 0.5) <= margin);
    QVERIFY(std::abs(placeOf(numberOf(figures.weightedMoments.upperQuartile)) - 0.75) <= margin);
    qint64 bars = 0;
    for (const StatisticsBin& bin : figures.histogram) {
        bars += countOf(bin.cell);
        const auto first = std::lower_bound(rows.begin(), rows.end(), std::make_pair(bin.low, 0.0));
        const auto end = std::lower_bound(rows.begin(), rows.end(), std::make_pair(bin.high, 0.0));
        QCOMPARE(countOf(bin.cell), qint64(end - first));
    }
    QCOMPARE(bars, qint64(count));
    QVERIFY(figures.histogram.size() <= 20 && figures.histogram.size() >= 5);
    QCOMPARE(figures.lowest.toDouble(), rows.front().first);
    QCOMPARE(figures.highest.toDouble(), rows.back().first);
}

void tst_DataStatistics::hostileNumbers()
{
    DataDictionary dictionary;
    DataVariable variable;
    variable.record = 0;
    variable.type = DataVariable::Type::Real;
    dictionary.variables.push_back(variable);
    const double infinite = std::numeric_limits<double>::infinity();
    const double largest = std::numeric_limits<double>::max();
    for (const std::vector<double>& numbers : { std::vector<double> { infinite, -infinite, 1, 2 },
             { largest, -largest, 0 }, { 5e-324, -5e-324 }, { 1e18, 1e18 + 1024, -0.0, 0 },
             { largest, 1 }, { 1e-300, 2e-300, 3 } }) {
        CollectorShare share(dictionary);
        share.room.distinct = 1; // each in a portion of its own
        share.room.left = 0;
        for (const bool isSmall : { true, false }) {
            if (!isSmall)
                share.room = NumberRoom();
            VariableCollector collector(share, 0, 0);
            DataBatch batch;
            const quint32 cell = batch.addCells(1);
            for (const double number : numbers) {
                batch.setReal(cell, ValueState(ValueKind::Real), number);
                collector.add(batch, cell, number);
            }
            const VariableStatistics figures = collector.finish(false, 5);
            qint64 bars = 0;
            for (const StatisticsBin& bin : figures.histogram) {
                QVERIFY(bin.low < bin.high);
                bars += countOf(bin.cell);
            }
            const qint64 finite = countOf(figures.of(StatisticsKind::Valid));
            QVERIFY(bars == 0 || bars == finite);
            QCOMPARE(
                finite + countOf(figures.of(StatisticsKind::NotANumber)), qint64(numbers.size()));
            const auto& moments = figures.moments;
            QVERIFY(moments.median && (!moments.mean || std::isfinite(numberOf(moments.mean))));
        }
    }
}

void tst_DataStatistics::recount_data()
{
    QTest::addColumn<uint>("seed");
    for (uint seed = 1; seed <= 12; ++seed)
        QTest::addRow("%u", seed) << seed;
}

// Generated survey lines against a plain recount of their columns.
void tst_DataStatistics::recount()
{
    QFETCH(uint, seed);
    quint32 state = seed;
    const auto next = [&](quint32 below) {
        state = state * 1664525 + 1013904223;
        return int((state >> 8) % below);
    };
    QByteArray lines;
    std::vector<std::pair<double, double>> ages;
    std::vector<std::pair<double, double>> plainAges;
    QMap<int, qint64> rooms;
    double weightOfAges = 0;
    qint64 missing = 0;
    qint64 blank = 0;
    for (int house = 0; house < 90; ++house) {
        const QByteArray key = "01" + QByteArray::number(house).rightJustified(2, '0');
        const int room = 1 + next(9);
        const int weight = next(400); // hundredths
        ++rooms[room];
        lines += '1' + key + QByteArray::number(room).rightJustified(2)
            + QByteArray::number(weight / 100.0, 'f', 2).rightJustified(5) + "A \n";
        for (int person = next(4); person > 0; --person) {
            const int kind = next(10);
            const int age = next(121);
            lines += '2' + key
                + (kind == 0        ? "999"
                        : kind == 1 ? "   "
                                    : QByteArray::number(age).rightJustified(3))
                + "NAME  \n";
            missing += kind == 0 ? 1 : 0;
            blank += kind == 1 ? 1 : 0;
            if (kind <= 1)
                continue;
            plainAges.emplace_back(age, 1);
            if (weight > 0)
                ages.emplace_back(age, weight / 100.0);
            weightOfAges += weight / 100.0;
        }
    }
    StatisticsOptions options;
    options.weight = "WEIGHT";
    options.distinctLimit = seed % 2 == 0 ? 50'000 : 300; // none is above
    const StatisticsReport report = figuresOf(surveyDictionary(), lines, options);
    const VariableStatistics& age = of(report, "AGE");
    QCOMPARE(countOf(age.of(StatisticsKind::Valid)), qint64(plainAges.size()));
    QVERIFY(std::abs(weightOf(age.of(StatisticsKind::Valid)) - weightOfAges) < 1e-9);
    QCOMPARE(countOf(age.of(StatisticsKind::Missing)), missing);
    QCOMPARE(countOf(age.of(StatisticsKind::NotApplicable)), blank);
    QCOMPARE(shownMoments(age.moments), plainMoments(plainAges));
    QCOMPARE(shownMoments(age.weightedMoments), plainMoments(ages));
    qint64 few = 0;
    for (int room = 1; room <= 5; ++room)
        few += rooms.value(room);
    const StatisticsValueSet& codes = of(report, "ROOMS").valueSets[0];
    QCOMPARE(countOf(codes.codes[0]), few);
    QCOMPARE(countOf(codes.codes[1]), rooms.value(7));
    QCOMPARE(countOf(codes.rest), rooms.value(6) + rooms.value(8));
}

QTEST_GUILESS_MAIN(tst_DataStatistics)
#include "tst_DataStatistics.moc"
