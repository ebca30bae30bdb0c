// Small cells are hidden, and nobody can work them out from what is told.
#include "Figures.h"

#include <tessel_data/CrossSuppression_p.h>

#include <random>

using namespace tessel;

namespace {

/*
 * What somebody works out who knows sums of unknown figures: each line is a sum of figures with
 * their signs, which is known. Tells for each whether it is determined.
 */
class Attack {
public:
    explicit Attack(std::size_t figures)
        : m_count(figures)
    {
    }

    void know(const std::vector<int>& line)
    {
        m_lines.emplace_back(line.begin(), line.end());
    }

    std::vector<bool> determined()
    {
        std::size_t done = 0;
        for (std::size_t column = 0; column < m_count && done < m_lines.size(); ++column)
            done += eliminate(column, done) ? 1 : 0;
        std::vector<bool> result(m_count);
        for (const auto& line : m_lines) {
            const auto isOther = [](double factor) { return std::abs(factor) > 1e-9; };
            const auto first = std::find_if(line.begin(), line.end(), isOther);
            if (first != line.end() && std::count_if(line.begin(), line.end(), isOther) == 1)
                result[std::size_t(first - line.begin())] = true;
        }
        return result;
    }

private:
    bool eliminate(std::size_t column, std::size_t done)
    {
        std::size_t pivot = done;
        while (pivot < m_lines.size() && std::abs(m_lines[pivot][column]) < 1e-9)
            ++pivot;
        if (pivot == m_lines.size())
            return false;
        std::swap(m_lines[pivot], m_lines[done]);
        for (std::size_t other = 0; other < m_lines.size(); ++other) {
            const double factor = m_lines[other][column] / m_lines[done][column];
            for (std::size_t c = 0; other != done && c < m_count; ++c)
                m_lines[other][c] -= factor * m_lines[done][c];
        }
        return true;
    }

    std::size_t m_count;
    std::vector<std::vector<double>> m_lines;
};

CrossTable tableOf(int lines, int columns, const std::vector<qint64>& counts)
{
    CrossTable table;
    table.lineCount = lines;
    table.columnCount = columns;
    table.lineTotals.resize(std::size_t(lines));
    table.columnTotals.resize(std::size_t(columns));
    for (int i = 0; i < lines * columns; ++i) {
        const StatisticsCell cell(counts[std::size_t(i)], double(counts[std::size_t(i)]));
        table.cells.push_back(cell);
        table.lineTotals[std::size_t(i / columns)] += cell;
        table.columnTotals[std::size_t(i % columns)] += cell;
        table.total += cell;
    }
    return table;
}

// All cells of a table with its totals, line by line.
std::vector<StatisticsCell> allCells(const CrossTable& table)
{
    std::vector<StatisticsCell> cells;
    for (int line = 0; line < table.lineCount; ++line) {
        for (int column = 0; column < table.columnCount; ++column)
            cells.push_back(table.cell(line, column));
        cells.push_back(table.lineTotals[std::size_t(line)]);
    }
    cells.insert(cells.end(), table.columnTotals.begin(), table.columnTotals.end());
    cells.push_back(table.total);
    return cells;
}

// Hidden cells that follow from the table.
int workedOut(const CrossTable& table)
{
    const std::vector<StatisticsCell> cells = allCells(table);
    const int width = table.columnCount + 1;
    const int height = table.lineCount + 1;
    Attack attack(cells.size());
    const auto knowSum = [&](int first, int step, int count) {
        std::vector<int> line(cells.size());
        for (int i = 0; i < count; ++i)
            line[std::size_t(first + i * step)] = i + 1 == count ? -1 : 1;
        attack.know(line);
    };
    for (int line = 0; line < height; ++line)
        knowSum(line * width, 1, width);
    for (int column = 0; column < width; ++column)
        knowSum(column, width, height);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        std::vector<int> line(cells.size());
        line[i] = 1;
        if (!cells[i].isHidden())
            attack.know(line);
    }
    const std::vector<bool> determined = attack.determined();
    int found = 0;
    for (std::size_t i = 0; i < cells.size(); ++i)
        found += cells[i].isHidden() && determined[i] ? 1 : 0;
    return found;
}

bool hasSmall(const std::vector<StatisticsCell>& cells, qint64 fewest)
{
    return std::any_of(cells.begin(), cells.end(),
        [&](const StatisticsCell& cell) { return countOf(cell) > 0 && countOf(cell) < fewest; });
}

// One record with a code, a second value set over it, an age and an amount.
QByteArray codesDictionary()
{
    return "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
           "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=2\nLen=4\n\n"
           "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=1\n\n"
           "[Item]\nName=SEX\nStart=6\nLen=1\n\n"
           "[ValueSet]\nName=SEX_VS1\nValue=1;Man\nValue=2;Woman\nValue=3;Other\n"
           "Value=8;Special\nName=REFUSED,Special\nValue=9;None\nName=MISSING,Special\n\n"
           "[Item]\nName=AREA\nStart=7\nLen=1\n\n"
           "[ValueSet]\nName=AREA_VS1\nValue=1;Town\nValue=2;Village\nValue=3;Farm\n\n"
           "[ValueSet]\nName=AREA_VS2\nValue=1;Urban\nValue=2:3;Rural\n\n"
           "[Item]\nName=AMOUNT\nStart=8\nLen=4\n";
}

struct Person {
    char sex;
    char area;
    int amount;
};

QByteArray linesOf(const std::vector<Person>& persons)
{
    QByteArray lines;
    int number = 0;
    for (const Person& person : persons) {
        lines += '1' + QByteArray::number(++number).rightJustified(4, '0') + person.sex
            + person.area + QByteArray::number(person.amount).rightJustified(4) + '\n';
    }
    return lines;
}

std::vector<Person> times(int count, Person person)
{
    return std::vector<Person>(std::size_t(count), person);
}

std::vector<Person> operator+(std::vector<Person> first, const std::vector<Person>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

StatisticsReport hiddenFigures(const std::vector<Person>& persons, qint64 fewest)
{
    StatisticsOptions options;
    options.crosses = { { "SEX", "AREA" } };
    StatisticsReport report = figuresOf(codesDictionary(), linesOf(persons), options);
    report.suppress(fewest);
    return report;
}

// SEX, AREA and AMOUNT stand behind the identification item.
enum Place { Sex = 1, Area, Amount };

QString codesOf(const StatisticsReport& report, Place place)
{
    const StatisticsValueSet& set = report.variables[place].valueSets.front();
    return shownCells(set.codes) + QStringLiteral(" | ") + shownCell(set.rest);
}

} // namespace

class tst_DataSuppression : public QObject {
    Q_OBJECT

private slots:
    void oneSmallCode();
    void smallKind();
    void fewTogether();
    void outsideCodes();
    void furtherValueSets();
    void numbers();
    void fewRows();
    void hiddenCell();
    void crossTable();
    void generatedTables();
    void generatedVariables();
};

void tst_DataSuppression::oneSmallCode()
{
    const auto persons =
        times(20, { '1', '1', 1 }) + times(30, { '2', '1', 1 }) + times(3, { '3', '1', 1 });
    const StatisticsReport plain = hiddenFigures(persons, 0);
    QCOMPARE(codesOf(plain, Sex), QString("20 30 3 0 0 | 0"));
    QCOMPARE(
        shownMoments(plain.variables[Sex].moments), QString("1.67924528302 0.580900656993 1 2 2"));
    const StatisticsReport hidden = hiddenFigures(persons, 5);
    QCOMPARE(hidden.hiddenBelow, 5LL);
    QCOMPARE(codesOf(hidden, Sex), QString("# 30 # 0 0 | 0"));
    QCOMPARE(shownCells(hidden.variables[Sex].kinds), QString("53 0 0 0 0 0 0 0"));
    // With the mean the two hidden codes could be worked out.
    QCOMPARE(shownMoments(hidden.variables[Sex].moments), QString("- - - - -"));
    QCOMPARE(codesOf(hiddenFigures(persons, 3), Sex), QString("20 30 3 0 0 | 0"));
    QCOMPARE(codesOf(hiddenFigures(persons, 4), Sex), QString("# 30 # 0 0 | 0"));
    QCOMPARE(codesOf(hiddenFigures(persons, 1), Sex), QString("20 30 3 0 0 | 0"));
}

// Those refused are few, so that the valid ones would tell of them, and a code of these ones.
void tst_DataSuppression::smallKind()
{
    const auto persons =
        times(20, { '1', '1', 1 }) + times(30, { '2', '1', 1 }) + times(2, { '8', '1', 1 });
    const StatisticsReport hidden = hiddenFigures(persons, 5);
    QCOMPARE(shownCells(hidden.variables[Sex].kinds), QString("# 0 0 # 0 0 0 0"));
    QCOMPARE(codesOf(hidden, Sex), QString("# 30 0 # 0 | 0"));
    const auto more = persons + times(7, { '9', '1', 1 });
    const StatisticsReport other = hiddenFigures(more, 5);
    QCOMPARE(shownCells(other.variables[Sex].kinds), QString("50 # 0 # 0 0 0 0"));
    QCOMPARE(codesOf(other, Sex), QString("20 30 0 # # | 0"));
    QCOMPARE(shownMoments(other.variables[Sex].moments).left(4), QString("1.6 "));
}

// Two hidden cells of one person each are told by their sum.
void tst_DataSuppression::fewTogether()
{
    const auto persons =
        times(20, { '1', '1', 1 }) + times(1, { '2', '1', 1 }) + times(1, { '3', '1', 1 });
    QCOMPARE(codesOf(hiddenFigures(persons, 5), Sex), QString("# # # 0 0 | 0"));
}

void tst_DataSuppression::outsideCodes()
{
    const auto persons = times(20, { '1', '1', 1 }) + times(20, { '2', '1', 1 })
        + times(9, { '4', '1', 1 }) + times(8, { '5', '1', 1 }) + times(2, { '6', '1', 1 });
    const StatisticsReport hidden = hiddenFigures(persons, 5);
    const VariableStatistics& sex = hidden.variables[Sex];
    QCOMPARE(shownCell(sex.outside), QString("19"));
    QCOMPARE(sex.outsideCodes.size(), 1); // 5 is hidden with 6
    QCOMPARE(sex.outsideCodes.first().code, QString("4"));
    QVERIFY(!sex.hasAllOutsideCodes);
    const auto few =
        times(20, { '1', '1', 1 }) + times(20, { '2', '1', 1 }) + times(2, { '6', '1', 1 });
    const VariableStatistics less = hiddenFigures(few, 5).variables[Sex];
    QVERIFY(less.outside.isHidden() && less.valueSets.front().rest.isHidden());
    QVERIFY(less.outsideCodes.isEmpty());
}

// Urban is Town, so that the second set would tell of what the first hides.
void tst_DataSuppression::furtherValueSets()
{
    const auto persons =
        times(20, { '1', '1', 1 }) + times(20, { '1', '2', 1 }) + times(3, { '1', '3', 1 });
    const StatisticsReport hidden = hiddenFigures(persons, 5);
    QCOMPARE(codesOf(hidden, Area), QString("# 20 # | 0"));
    QCOMPARE(shownCells(hidden.variables[Area].valueSets[1].codes), QString("# #"));
    const auto enough =
        times(20, { '1', '1', 1 }) + times(20, { '1', '2', 1 }) + times(5, { '1', '3', 1 });
    QCOMPARE(
        shownCells(hiddenFigures(enough, 5).variables[Area].valueSets[1].codes), QString("20 25"));
}

void tst_DataSuppression::numbers()
{
    const auto persons = times(9, { '1', '1', 10 }) + times(12, { '1', '1', 20 })
        + times(7, { '1', '1', 30 }) + times(1, { '1', '1', 99 });
    const StatisticsReport plain = hiddenFigures(persons, 0);
    QCOMPARE(shownBins(plain.variables[Amount].histogram).section(' ', 0, 2),
        QString("10:15=9 15:20=0 20:25=12"));
    const VariableStatistics amount = hiddenFigures(persons, 5).variables[Amount];
    QCOMPARE(amount.lowest, QString("10"));
    QCOMPARE(shownCell(amount.lowestCell), QString("9"));
    QVERIFY(amount.highest.isNull() && amount.highestCell.isHidden());
    QCOMPARE(shownCells(amount.kinds).left(2), QString("29"));
    QCOMPARE(shownNumber(amount.moments.median), QString("20"));
    QString bins = shownBins(amount.histogram);
    QCOMPARE(bins.count('#'), 2); // 99, and 30 with it
    QVERIFY(bins.contains("30:35=#") && bins.endsWith("95:100=#"));
}

void tst_DataSuppression::fewRows()
{
    const StatisticsReport hidden = hiddenFigures(times(4, { '1', '1', 10 }), 5);
    QCOMPARE(shownCell(hidden.variables[Sex].total), QString("4"));
    QCOMPARE(shownCells(hidden.variables[Sex].kinds), QString("# # # # # # # #"));
    QCOMPARE(codesOf(hidden, Sex), QString("# # # # # | #"));
    QVERIFY(hidden.variables[Amount].lowest.isNull());
    QCOMPARE(shownMoments(hidden.variables[Amount].moments), QString("- - - - -"));
    QVERIFY(hidden.crosses.front().total.isHidden());
    const StatisticsReport none = hiddenFigures({}, 5);
    QCOMPARE(shownCells(none.variables[Sex].kinds), QString("0 0 0 0 0 0 0 0"));
}

void tst_DataSuppression::hiddenCell()
{
    StatisticsCell cell(3, 4.5);
    QCOMPARE(cell.count(), std::optional<qint64>(3));
    cell.hide();
    QVERIFY(cell.isHidden() && !cell.isZero() && !cell.count() && !cell.weight());
    StatisticsCell sum(1, 1);
    sum += cell;
    QVERIFY(sum.isHidden());
}

void tst_DataSuppression::crossTable()
{
    const auto persons = times(20, { '1', '1', 1 }) + times(9, { '1', '2', 1 })
        + times(30, { '2', '1', 1 }) + times(2, { '2', '2', 1 }) + times(8, { '2', '3', 1 });
    const StatisticsReport plain = hiddenFigures(persons, 0);
    QCOMPARE(shownCells(plain.crosses[0].lineTotals), QString("29 40 0 0 0 0"));
    QCOMPARE(shownCells(plain.crosses[0].columnTotals), QString("50 11 8 0"));
    const CrossTable hidden = hiddenFigures(persons, 5).crosses[0];
    QVERIFY(hidden.cell(1, 1).isHidden());
    QCOMPARE(shownCells(hidden.lineTotals), QString("29 40 0 0 0 0"));
    QCOMPARE(shownCells(hidden.columnTotals), QString("50 11 8 0"));
    QCOMPARE(workedOut(hidden), 0);
}

void tst_DataSuppression::generatedTables()
{
    std::mt19937 random(3);
    int hiddenTables = 0;
    for (int round = 0; round < 400; ++round) {
        const int lines = 1 + int(random() % 5);
        const int columns = 1 + int(random() % 5);
        std::vector<qint64> counts;
        for (int i = 0; i < lines * columns; ++i)
            counts.push_back(random() % 3 == 0 ? 0 : qint64(random() % (random() % 2 ? 8 : 60)));
        CrossTable table = tableOf(lines, columns, counts);
        CrossSuppression suppression(table, 5);
        const bool areTotalsTold =
            round % 2 == 0 && !hasSmall(table.lineTotals, 5) && !hasSmall(table.columnTotals, 5);
        if (areTotalsTold) {
            suppression.keepLineTotals();
            suppression.keepColumnTotals();
        }
        suppression.run();
        suppression.apply(table);
        QVERIFY(!hasSmall(allCells(table), 5));
        QCOMPARE(workedOut(table), 0);
        const auto isHidden = [](const StatisticsCell& cell) { return cell.isHidden(); };
        if (areTotalsTold && !table.total.isHidden()) {
            QVERIFY(std::none_of(table.lineTotals.begin(), table.lineTotals.end(), isHidden));
            QVERIFY(std::none_of(table.columnTotals.begin(), table.columnTotals.end(), isHidden));
        }
        hiddenTables += table.total.isHidden() ? 1 : 0;
    }
    QVERIFY2(hiddenTables < 40, "most tables are to be of use still");
}

// Kinds and codes are told together: nothing hidden follows from all of it.
void tst_DataSuppression::generatedVariables()
{
    std::mt19937 random(4);
    for (int round = 0; round < 300; ++round) {
        std::vector<Person> persons;
        for (const char code : { '1', '2', '3', '8', '9', ' ', 'x', '7' }) {
            const auto count = int(random() % 3 == 0 ? random() % 6 : random() % 40);
            persons = persons + times(random() % 3 == 0 ? 0 : count, { code, '1', 1 });
        }
        const VariableStatistics sex = hiddenFigures(persons, 5).variables[Sex];
        const StatisticsValueSet& set = sex.valueSets.front();
        std::vector<StatisticsCell> cells(sex.kinds.begin(), sex.kinds.end());
        const std::size_t firstCode = cells.size();
        cells.insert(cells.end(), set.codes.begin(), set.codes.end());
        cells.push_back(sex.outside);
        QVERIFY(persons.size() < 5 || !hasSmall(cells, 5));
        Attack attack(cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i) {
            std::vector<int> line(cells.size());
            line[i] = 1;
            if (!cells[i].isHidden())
                attack.know(line);
        }
        std::vector<int> total(cells.size());
        std::fill(total.begin(), total.begin() + std::ptrdiff_t(firstCode), 1);
        attack.know(total);
        for (std::size_t kind = 0; kind < StatisticsKindCount; ++kind) {
            std::vector<int> line(cells.size());
            line[kind] = -1;
            for (std::size_t i = 0; i < set.codes.size(); ++i)
                line[firstCode + i] = set.kinds[i] == StatisticsKind(kind) ? 1 : 0;
            line.back() = kind == 0 ? 1 : 0;
            if (kind < std::size_t(StatisticsKind::Default))
                attack.know(line);
        }
        const std::vector<bool> determined = attack.determined();
        for (std::size_t i = 0; persons.size() >= 5 && i < cells.size(); ++i)
            QVERIFY(!cells[i].isHidden() || !determined[i]);
    }
}

QTEST_GUILESS_MAIN(tst_DataSuppression)
#include "tst_DataSuppression.moc"
