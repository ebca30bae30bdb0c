#include "AddRow.h"
#include "ValueSetEntries.h"

#include <model_Tessel/BoundedSort_p.h>
#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/*
 * std::sort over a list with guards on both sides. Returns false, and leaves the list alone, when
 * the algorithm compares a guard, which is where it would leave the list.
 */
template <typename List, typename Compare>
bool sortedInside(List& list, const typename List::value_type& guard, Compare before)
{
    using Element = typename List::value_type;
    struct LeftList { };
    constexpr int guards = 4;
    std::vector<Element> padded(guards, guard);
    padded.insert(padded.end(), list.begin(), list.end());
    padded.insert(padded.end(), guards, guard);
    try {
        std::sort(padded.begin() + guards, padded.end() - guards,
            [&](const Element& first, const Element& second) -> bool {
                if (first == guard || second == guard)
                    throw LeftList();
                return before(first, second);
            });
    } catch (const LeftList&) {
        return false;
    }
    std::copy(padded.begin() + guards, padded.end() - guards, list.begin());
    return true;
}

bool isPermutation(QList<TValueSetItem*> first, QList<TValueSetItem*> second)
{
    std::sort(first.begin(), first.end(), std::less<>());
    std::sort(second.begin(), second.end(), std::less<>());
    return first == second;
}

} // namespace

class tst_CSProValueSetSort : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void sortsNumbers_data();
    void sortsNumbers();
    void sortsNumbersAsStdSort_data();
    void sortsNumbersAsStdSort();
    void sortsFewTextsIntoTheirReverse_data();
    void sortsFewTextsIntoTheirReverse();
    void sortsTextsAsStdSort_data();
    void sortsTextsAsStdSort();
    void sortKeepsEveryEntry_data();
    void sortKeepsEveryEntry();
    void sortsManyTextsInTime_data();
    void sortsManyTextsInTime();
    void boundedSortComparesLittle_data();
    void boundedSortComparesLittle();
};

void tst_CSProValueSetSort::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProValueSetSort::sortsNumbers_data()
{
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QStringList>("sorted");

    row("no entry", QStringList(), QStringList());
    row("one entry", QStringList { "5" }, QStringList { "5" });
    row("in order", QStringList { "1", "2", "9" }, QStringList { "1", "2", "9" });
    row("by number, not by text", QStringList { "10", "9", "100", "-1" },
        QStringList { "-1", "9", "10", "100" });
    row("as written", QStringList { "+3", "002", "1" }, QStringList { "1", "002", "+3" });
    row("ends of the range", QStringList { "2147483647", "0", "-2147483648" },
        QStringList { "-2147483648", "0", "2147483647" });
}

void tst_CSProValueSetSort::sortsNumbers()
{
    QFETCH(QStringList, codes);
    QFETCH(QStringList, sorted);
    OwnedValueSet set(codes);
    QList<TValueSetItem*>* const list = set.items;
    set.sortItems();
    QCOMPARE(codesOf(set), sorted);
    QCOMPARE(set.items, list);
}

void tst_CSProValueSetSort::sortsNumbersAsStdSort_data()
{
    QTest::addColumn<int>("differentCodes");
    QTest::addColumn<int>("odd"); // of a hundred codes, how many are no integer
    row("all alike", 1, 0);
    row("two codes", 2, 0);
    row("many of each", 7, 0);
    row("some of each", 100, 0);
    row("hardly any twice", 1'000'000, 0);
    row("few that are no integer", 1000, 3);
    row("many that are no integer", 5, 12);
}

// Which of two entries with one number comes first depends on every single step of the sort.
void tst_CSProValueSetSort::sortsNumbersAsStdSort()
{
    QFETCH(int, differentCodes);
    QFETCH(int, odd);
    QRandomGenerator random(static_cast<quint32>(differentCodes + odd));
    const QStringList oddCodes { "x", "", "1.5", "9999999999", "null" };
    const QStringList forms { "%1", "%1", "%1", "%1", " %1", "%1 ", "\t%1" };
    int compared = 0;
    int comparedLong = 0;
    for (int turn = 0; turn < 400; ++turn) {
        const int size = turn < 200 ? random.bounded(60) : random.bounded(600);
        OwnedValueSet set;
        for (int i = 0; i < size; ++i) {
            if (random.bounded(100) >= odd) {
                const int number = random.bounded(differentCodes) - differentCodes / 2;
                set.add(forms.at(random.bounded(forms.size())).arg(number));
                continue;
            }
            const QString& code = oddCodes.at(random.bounded(oddCodes.size()));
            if (code == QLatin1String("null"))
                set.addItem(nullptr);
            else
                set.add(code);
        }
        const QList<TValueSetItem*> before = *set.items;
        TValueSetItem guard;
        QList<TValueSetItem*> wanted = before;
        const bool stayedInside = sortedInside(wanted, &guard,
            [](TValueSetItem* a, TValueSetItem* b) { return CompareCodesNumeric(a, b); });
        set.sortItems();
        QVERIFY(isPermutation(*set.items, before));
        if (!stayedInside)
            continue;
        QCOMPARE(*set.items, wanted);
        ++compared;
        comparedLong += size > 16 ? 1 : 0;
    }
    if (odd == 0)
        QCOMPARE(compared, 400);
    QVERIFY2(comparedLong > 10, qPrintable(QString::number(comparedLong)));
}

void tst_CSProValueSetSort::sortsFewTextsIntoTheirReverse_data()
{
    QTest::addColumn<int>("size");
    for (int size = 0; size <= 16; ++size)
        QTest::addRow("%d codes", size) << size;
}

void tst_CSProValueSetSort::sortsFewTextsIntoTheirReverse()
{
    QFETCH(int, size);
    QStringList codes;
    for (int i = 0; i < size; ++i)
        codes.append(QString::number((i * 7) % 17));
    OwnedValueSet set(codes, false);
    set.sortItems();
    std::reverse(codes.begin(), codes.end());
    QCOMPARE(codesOf(set), codes);
}

void tst_CSProValueSetSort::sortsTextsAsStdSort_data()
{
    QTest::addColumn<int>("differentCodes");
    QTest::addColumn<int>("mostEntries");
    QTest::addColumn<int>("nulls"); // of a hundred entries
    row("one code", 1, 500, 0);
    row("two codes, short lists", 2, 40, 0);
    row("two codes", 2, 500, 0);
    row("three codes", 3, 500, 0);
    row("five codes", 5, 300, 0);
    row("ten codes", 10, 100, 0);
    row("as many codes as entries, short lists", 20, 24, 0);
    row("two codes, long lists", 2, 4000, 0);
    row("two codes and some nulls", 2, 60, 3);
}

void tst_CSProValueSetSort::sortsTextsAsStdSort()
{
    QFETCH(int, differentCodes);
    QFETCH(int, mostEntries);
    QFETCH(int, nulls);
    QRandomGenerator random(static_cast<quint32>(differentCodes * 1000 + mostEntries));
    int compared = 0;
    int comparedLong = 0;
    const int turns = mostEntries > 1000 ? 60 : 600;
    for (int turn = 0; turn < turns; ++turn) {
        const int size = random.bounded(mostEntries) + 1;
        OwnedValueSet set(QStringList(), false);
        // Runs of one code as well as codes drawn one by one.
        const int longestRun = random.bounded(4) + 1;
        while (set.getCount() < size) {
            const QString code = QString::number(random.bounded(differentCodes));
            for (int run = random.bounded(longestRun) + 1; run > 0; --run) {
                if (random.bounded(100) < nulls)
                    set.addItem(nullptr);
                else
                    set.add(code);
            }
        }
        const QList<TValueSetItem*> before = *set.items;
        TValueSetItem guard;
        QList<TValueSetItem*> wanted = before;
        const bool stayedInside = sortedInside(wanted, &guard,
            [](TValueSetItem* a, TValueSetItem* b) { return CompareCodes(a, b) != 0; });
        set.sortItems();
        QVERIFY(isPermutation(*set.items, before));
        if (!stayedInside)
            continue;
        QCOMPARE(*set.items, wanted);
        ++compared;
        comparedLong += size > 16 ? 1 : 0;
    }
    QVERIFY2(compared > turns / 50, qPrintable(QString::number(compared)));
    QVERIFY2(comparedLong > 0, qPrintable(QString::number(comparedLong)));
}

void tst_CSProValueSetSort::sortKeepsEveryEntry_data()
{
    QTest::addColumn<bool>("numeric");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("nulls"); // of a hundred entries
    for (bool numeric : { false, true }) {
        const char* const kind = numeric ? "numbers" : "texts";
        for (int size : { 16, 17, 18, 31, 33, 100, 1000 }) {
            for (int nulls : { 0, 20, 100 })
                QTest::addRow("%d %s, %d%% null", size, kind, nulls) << numeric << size << nulls;
        }
    }
}

// Different codes and nulls, with which the sort would leave the list if it could.
void tst_CSProValueSetSort::sortKeepsEveryEntry()
{
    QFETCH(bool, numeric);
    QFETCH(int, size);
    QFETCH(int, nulls);
    QRandomGenerator random(static_cast<quint32>(size));
    for (int turn = 0; turn < 20; ++turn) {
        OwnedValueSet set(QStringList(), numeric);
        for (int i = 0; i < size; ++i) {
            if (random.bounded(100) < nulls)
                set.addItem(nullptr);
            else
                set.add(QString::number(i * 7919 % 10007) + (i % 3 == 0 ? "x" : ""));
        }
        const QList<TValueSetItem*> before = *set.items;
        set.sortItems();
        QVERIFY(isPermutation(*set.items, before));
    }
}

void tst_CSProValueSetSort::sortsManyTextsInTime_data()
{
    QTest::addColumn<int>("different");
    row("all different", 20'000);
    row("each a hundred times", 200);
    row("two codes", 2);
}

void tst_CSProValueSetSort::sortsManyTextsInTime()
{
    QFETCH(int, different);
    OwnedValueSet set(QStringList(), false);
    for (int i = 0; i < 20'000; ++i)
        set.add(QString::number(i * 7919 % different));
    const QList<TValueSetItem*> before = *set.items;
    QElapsedTimer timer;
    timer.start();
    set.sortItems();
    QVERIFY2(timer.elapsed() < 30'000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(isPermutation(*set.items, before));
}

void tst_CSProValueSetSort::boundedSortComparesLittle_data()
{
    QTest::addColumn<int>("different");
    QTest::addColumn<bool>("shuffled");
    for (int different : { 1, 2, 10, 100, 1000, 100'000 }) {
        QTest::addRow("%d different, shuffled", different) << different << true;
        QTest::addRow("%d different, in turn", different) << different << false;
    }
}

// As many comparisons as std::sort where that stays inside the list, O(n log n) where it does not.
void tst_CSProValueSetSort::boundedSortComparesLittle()
{
    QFETCH(int, different);
    QFETCH(bool, shuffled);
    for (int size : { 1000, 3000, 10'000 }) {
        QRandomGenerator random(5);
        std::vector<int> list;
        for (int i = 0; i < size; ++i)
            list.push_back(shuffled ? random.bounded(different) : i % different);
        std::vector<int> wanted = list;
        std::vector<int> all = list;

        qint64 comparisons = 0;
        const auto before = [&](int first, int second) {
            ++comparisons;
            return first != second;
        };
        const bool stayedInside = sortedInside(wanted, -1, before);
        const qint64 ofStdSort = comparisons;
        comparisons = 0;
        boundedSort(list, before);
        if (stayedInside) {
            QVERIFY(list == wanted);
            QCOMPARE(comparisons, ofStdSort);
        } else {
            const auto most = static_cast<qint64>(16 * size * std::log2(size));
            QVERIFY2(comparisons < most, qPrintable(QString::number(comparisons)));
        }
        std::sort(list.begin(), list.end());
        std::sort(all.begin(), all.end());
        QVERIFY(list == all);
    }
}

QTEST_MAIN(tst_CSProValueSetSort)

#include "tst_CSProValueSetSort.moc"
