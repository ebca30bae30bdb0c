// Figures of census data against those of R and PSPP.
#include "Figures.h"
#include "ReadRecords.h"

#include <cmath>

using namespace tessel;

namespace {

// Items before others have letters of several bytes, which columns of other programs may count.
QByteArray plainLetters(const QByteArray& utf8)
{
    QByteArray result;
    for (const char byte : utf8.startsWith("\xEF\xBB\xBF") ? utf8.mid(3) : utf8) {
        const auto value = uchar(byte);
        if (value < 0x80)
            result += byte;
        else if (value >= 0xC0)
            result += 'x';
    }
    return result;
}

struct Census {
    DataDictionary dictionary;
    QString data;
    QTemporaryDir folder;

    const DataVariable& variable(const QString& name) const
    {
        for (const DataVariable& one : dictionary.variables) {
            if (one.name == name)
                return one;
        }
        qFatal("no variable %s", qPrintable(name));
    }

    StatisticsReport figures(const QString& weight)
    {
        StatisticsOptions options;
        options.weight = weight;
        CSProTextSource source(dictionary, { data });
        DataStatistics statistics(source, options);
        runPipeline(source, statistics);
        return statistics.report();
    }

    const VariableStatistics& of(const StatisticsReport& report, const QString& name) const
    {
        return *report.find(int(&variable(name) - dictionary.variables.data()));
    }
};

// The lines of a record alone: others may have texts where it has numbers.
QByteArray linesOf(const Census& census, const DataRecord& record)
{
    QFile file(census.data);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(census.data));
    QByteArray lines;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QByteArray type =
            line.mid(census.dictionary.recordTypeStart, census.dictionary.recordTypeWidth);
        if (type == record.typeCode.toLatin1())
            lines += line + '\n';
    }
    return lines;
}

QStringList missingCodes(const DataDictionary& dictionary, const DataVariable& variable)
{
    QStringList codes;
    if (variable.valueSets.isEmpty())
        return codes;
    for (const DataCode& code :
        dictionary.valueSets[std::size_t(variable.valueSets.first())].codes) {
        if (code.special != Special::None && !code.code.trimmed().isEmpty())
            codes.append(code.code.trimmed());
    }
    return codes;
}

bool isNear(double first, double second, double margin = 1e-10)
{
    return std::abs(first - second) <= margin * std::max(1.0, std::abs(second));
}

std::vector<double> numbersOf(const QByteArray& line)
{
    std::vector<double> numbers;
    for (const QByteArray& text : line.simplified().split(' '))
        numbers.push_back(text.toDouble());
    return numbers;
}

void compareMoments(const StatisticsMoments& moments, const std::vector<double>& expected)
{
    QVERIFY2(isNear(numberOf(moments.mean), expected.at(1)), qPrintable(shownMoments(moments)));
    QVERIFY2(
        isNear(numberOf(moments.deviation), expected.at(2)), qPrintable(shownMoments(moments)));
    QCOMPARE(numberOf(moments.lowerQuartile), expected.at(3));
    QCOMPARE(numberOf(moments.median), expected.at(4));
    QCOMPARE(numberOf(moments.upperQuartile), expected.at(5));
}

} // namespace

class tst_DataFiguresCompared : public QObject {
    Q_OBJECT

private slots:
    void withR_data();
    void withR();
    void withPspp_data();
    void withPspp();

private:
    void addRows() const;
    void open(Census& census) const;
};

void tst_DataFiguresCompared::addRows() const
{
    QTest::addColumn<QString>("path"); // without ending
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("weight");
    const QString example = QStringLiteral(TESSEL_EXAMPLES "/census");
    QTest::newRow("age") << example << "AGE"
                         << "PERSON_WEIGHT";
    QTest::newRow("hours") << example << "WORK_HOURS"
                           << "PERSON_WEIGHT";
    QTest::newRow("sex") << example << "SEX"
                         << "PERSON_WEIGHT";
    QTest::newRow("income") << example << "INCOME"
                            << "HOUSEHOLD_WEIGHT";
    QTest::newRow("rooms") << example << "ROOMS"
                           << "HOUSEHOLD_WEIGHT";
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        return;
    const QString popstan =
        qEnvironmentVariable("TESSEL_CORPUS") + "/cspro-json/popstan-census-full";
    QTest::newRow("popstan age") << popstan << "P04_AGE"
                                 << "P02_REL";
    QTest::newRow("popstan occupation") << popstan << "P15_OCC"
                                        << "P04_AGE";
    QTest::newRow("popstan rooms") << popstan << "H05_ROOMS"
                                   << "H02_WALL";
}

void tst_DataFiguresCompared::open(Census& census) const
{
    QFETCH(QString, path);
    census.dictionary = DataDictionary::fromFile(path + ".dcf");
    QFile file(path + ".dat");
    QVERIFY(file.open(QIODevice::ReadOnly));
    census.data = writeFile(census.folder, "census.dat", plainLetters(file.readAll()));
}

void tst_DataFiguresCompared::withR_data()
{
    addRows();
}

void tst_DataFiguresCompared::withR()
{
    QFETCH(QString, variable);
    QFETCH(QString, weight);
    if (rscript().isEmpty())
        QSKIP("R is not installed");
    Census census;
    open(census);
    const DataVariable& item = census.variable(variable);
    const DataVariable& weights = census.variable(weight);
    const DataRecord& record = census.dictionary.records[std::size_t(item.record)];
    QStringList arguments { TESSEL_TEST_DATA "/figures.R", census.data, record.typeCode };
    for (const DataVariable* one : { &item, &weights }) {
        for (const int number : { one->start + 1, one->width, one->decimals })
            arguments.append(QString::number(number));
    }
    arguments.append(
        (missingCodes(census.dictionary, item) + missingCodes(census.dictionary, weights))
            .join(','));
    const Outcome outcome = runIn(census.folder.path(), rscript(), arguments);
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QList<QByteArray> lines = outcome.output.trimmed().split('\n');
    const StatisticsReport report = census.figures(weight);
    const VariableStatistics& figures = census.of(report, variable);
    const std::vector<double> plain = numbersOf(lines.takeFirst());
    const std::vector<double> weighted = numbersOf(lines.takeFirst());
    const StatisticsCell& valid = figures.of(StatisticsKind::Valid);
    QCOMPARE(double(countOf(valid)), plain.at(0));
    QVERIFY(isNear(weightOf(valid), weighted.at(0)));
    compareMoments(figures.moments, plain);
    compareMoments(figures.weightedMoments, weighted);
    if (figures.isQuantity)
        return;
    const StatisticsValueSet& set = figures.valueSets.front();
    const auto& codes = census.dictionary.valueSets[std::size_t(set.valueSet)].codes;
    int found = 0;
    for (int i = 0; i < codes.size(); ++i) {
        for (const QByteArray& line : qAsConst(lines)) {
            const std::vector<double> row = numbersOf(line);
            if (codes.at(i).code.toDouble() != row.at(0) || codes.at(i).code.trimmed().isEmpty())
                continue;
            ++found;
            QCOMPARE(double(countOf(set.codes[std::size_t(i)])), row.at(1));
            QVERIFY(isNear(weightOf(set.codes[std::size_t(i)]), row.at(2)));
        }
    }
    QVERIFY(found > 1);
}

void tst_DataFiguresCompared::withPspp_data()
{
    addRows();
}

void tst_DataFiguresCompared::withPspp()
{
    QFETCH(QString, variable);
    QFETCH(QString, weight);
    const QString pspp = QStandardPaths::findExecutable("pspp");
    if (pspp.isEmpty())
        QSKIP("PSPP is not installed");
    Census census;
    open(census);
    const DataVariable& item = census.variable(variable);
    const DataVariable& weights = census.variable(weight);
    const DataRecord& record = census.dictionary.records[std::size_t(item.record)];
    const auto columns = [](const DataVariable& one) {
        return QStringLiteral("%1-%2 (%3)")
            .arg(one.start + 1)
            .arg(one.start + one.width)
            .arg(one.decimals);
    };
    writeFile(census.folder, "rows.dat", linesOf(census, record));
    QString program = QStringLiteral("DATA LIST FILE='rows.dat' FIXED NOTABLE /x %1 w %2.\n")
                          .arg(columns(item), columns(weights));
    for (const QString& code : missingCodes(census.dictionary, item))
        program += QStringLiteral("RECODE x (%1=SYSMIS).\n").arg(code);
    for (const QString& code : missingCodes(census.dictionary, weights))
        program += QStringLiteral("RECODE w (%1=SYSMIS).\n").arg(code);
    program += "COMPUTE one = 1.\nSELECT IF NOT SYSMIS(x) AND NOT SYSMIS(w) AND w > 0.\n"
               "WEIGHT BY w.\n"
               "EXAMINE x /PERCENTILES(25,50,75)=AEMPIRICAL /STATISTICS=NONE.\n"
               "AGGREGATE OUTFILE=* /BREAK=one /m=MEAN(x) /s=SD(x) /n=N(x).\n"
               "FORMATS m s n (F40.16).\nPRINT OUTFILE='out.txt' /n m s.\nEXECUTE.\n";
    writeFile(census.folder, "p.sps", program.toUtf8());
    const Outcome outcome = runIn(census.folder.path(), pspp, { "-O", "format=csv", "p.sps" });
    QVERIFY2(outcome.status == 0, outcome.output.constData());
    QFile file(census.folder.filePath("out.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const std::vector<double> numbers = numbersOf(file.readAll());
    QCOMPARE(numbers.size(), std::size_t(3));
    const StatisticsReport report = census.figures(weight);
    const VariableStatistics& figures = census.of(report, variable);
    const StatisticsMoments& moments = figures.weightedMoments;
    QVERIFY(isNear(weightOf(figures.of(StatisticsKind::Valid)), numbers.at(0)));
    QVERIFY2(isNear(numberOf(moments.mean), numbers.at(1)), qPrintable(shownMoments(moments)));
    QVERIFY2(isNear(numberOf(moments.deviation), numbers.at(2), 1e-9),
        qPrintable(shownMoments(moments)));
    const int percentiles = outcome.output.indexOf("Weighted Average");
    QVERIFY(percentiles > 0);
    const QList<QByteArray> shown = outcome.output.mid(percentiles).split('\n').first().split(',');
    QVERIFY(isNear(numberOf(moments.lowerQuartile), shown.at(1).toDouble(), 0.006));
    QVERIFY(isNear(numberOf(moments.median), shown.at(2).toDouble(), 0.006));
    QVERIFY(isNear(numberOf(moments.upperQuartile), shown.at(3).toDouble(), 0.006));
}

QTEST_GUILESS_MAIN(tst_DataFiguresCompared)
#include "tst_DataFiguresCompared.moc"
