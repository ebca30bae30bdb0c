// Figures of data by hand: frequencies, kinds of missing values, moments, weights and cross tables.
#include "Figures.h"

#include <tessel_data/DataError.h>

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

} // namespace

class tst_DataStatistics : public QObject {
    Q_OBJECT

private slots:
    void frequencies();
    void kinds();
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

QTEST_GUILESS_MAIN(tst_DataStatistics)
#include "tst_DataStatistics.moc"
