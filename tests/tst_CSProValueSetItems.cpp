#include "AddRow.h"
#include "CSProTexts.h"
#include "ValueSetEntries.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QtTest>

#include <stdexcept>
#include <vector>

class tst_CSProValueSetItems : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void theSetOfAnItem_data();
    void theSetOfAnItem();
    void occurrencesShareTheirSet();
    void theFirstItemOfTheFileGivesItsSetToItsLastOccurrence();
    void onlyOccurrencesInARowShareTheirSet();
    void theWalkOverOccurrencesBeginsAtTheLastItem();
    void theWalkOverOccurrencesWalkedAgain();
    void aSecondSetIsPassedOver_data();
    void aSecondSetIsPassedOver();
    void manySetsThatArePassedOver_data();
    void manySetsThatArePassedOver();
    void aSetBeforeAnyItem();
    void aDroppedSetLeavesRoomForTheNext();
};

void tst_CSProValueSetItems::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProValueSetItems::theSetOfAnItem_data()
{
    QTest::addColumn<QString>("dataType");
    QTest::addColumn<QStringList>("entries");

    row("numeric", "Numeric", QStringList { "1|a", "2|b", "9|c" });
    row("alphanumeric", "Alpha", QStringList { "9|c", "1|a", "2|b" });
}

void tst_CSProValueSetItems::theSetOfAnItem()
{
    QFETCH(QString, dataType);
    QFETCH(QStringList, entries);
    TCSPro parser;
    parse(parser, dictionary(dataType, "Value=2;b\nValue=1;a\nValue=9;c"));
    QCOMPARE(parser.lastItem->getCount(), 1);
    QCOMPARE(entriesOf(parser), entries);
    const TCSProValueSet* set = parser.lastItem->getValueSet(0);
    QCOMPARE(set->name, QString("V"));
    QCOMPARE(set->label, QString("The codes"));
    QCOMPARE(set->isNumeric, dataType == QLatin1String("Numeric"));
}

void tst_CSProValueSetItems::occurrencesShareTheirSet()
{
    TCSPro parser;
    parse(parser,
        "[Item]\nName=X\n[Item]\nName=A\nOccurrences=3\n[Item]\nName=B\nOccurrences=2\n"
        "[ValueSet]\nName=V\nValue=1;a\n[Item]\nName=C\nOccurrences=3\n[ValueSet]\nName=W\n"
        "Value=1;a");
    QCOMPARE(parser.getItemsCount(), 9);
    for (int index : { 0, 1, 2, 3 })
        QVERIFY(!parser.getItem(index)->getHasValueSet());
    TCSProValueSet* const ofB = parser.getItem(4)->getValueSet(0);
    TCSProValueSet* const ofC = parser.getItem(6)->getValueSet(0);
    QCOMPARE(ofB->name, QString("V"));
    QCOMPARE(ofC->name, QString("W"));
    for (int index : { 4, 5, 6, 7, 8 }) {
        TCSProItem* item = parser.getItem(index);
        QCOMPARE(item->getCount(), 1);
        QCOMPARE(item->getValueSet(0), index < 6 ? ofB : ofC);
    }
    // Each item has a list of its own.
    parser.getItem(6)->valueSets->clear();
    QVERIFY(!parser.getItem(6)->getHasValueSet());
    QVERIFY(parser.getItem(7)->getHasValueSet());
}

void tst_CSProValueSetItems::theFirstItemOfTheFileGivesItsSetToItsLastOccurrence()
{
    TCSPro parser;
    parse(parser, "[Item]\nName=A\nOccurrences=3\n[ValueSet]\nName=V\nValue=1;a");
    QVERIFY(!parser.getItem(0)->getHasValueSet());
    QVERIFY(!parser.getItem(1)->getHasValueSet());
    QVERIFY(parser.getItem(2)->getHasValueSet());
}

// The walk from the last item back ends at the first one that is no occurrence.
void tst_CSProValueSetItems::onlyOccurrencesInARowShareTheirSet()
{
    TCSPro parser;
    parse(parser, "[Item]\nName=A\n[Item]\nName=B\n[Item]\nName=C\n[Item]\nName=D\nOccurrences=2");
    parser.getItem(1)->firstOccurrenceIndex = parser.lastItem->firstOccurrenceIndex;
    parse(parser, "[ValueSet]\nName=V\nValue=1;a");
    QList<bool> described;
    for (const TCSProItem* item : qAsConst(*parser.items))
        described.append(item->getHasValueSet());
    QCOMPARE(described, (QList<bool> { false, false, false, true, true }));
}

// Where a host put another item behind the one added last, nobody gets the set.
void tst_CSProValueSetItems::theWalkOverOccurrencesBeginsAtTheLastItem()
{
    TCSPro parser;
    parse(parser, "[Item]\nName=A\n[Item]\nName=B\nOccurrences=2");
    TCSProItem other;
    parser.items->append(&other);
    parse(parser, "[ValueSet]\nName=V\nValue=1;a");
    for (const TCSProItem* item : qAsConst(*parser.items))
        QVERIFY(!item->getHasValueSet());

    // The item added last need not be among them.
    other.firstOccurrenceIndex = parser.lastItem->firstOccurrenceIndex;
    TCSProItem* last = parser.items->takeAt(2);
    QCOMPARE(last, parser.lastItem);
    parse(parser, "[ValueSet]\nName=V\nValue=1;a");
    QVERIFY(!last->getHasValueSet());
    QVERIFY(!parser.getItem(0)->getHasValueSet());
    QCOMPARE(parser.getItem(1)->getCount(), 1);
    QCOMPARE(other.getCount(), 1);
    QCOMPARE(other.getValueSet(0), parser.getItem(1)->getValueSet(0));
    parser.items->append(last);
}

// Any list of items, any of them added last, against the walk as it is told.
void tst_CSProValueSetItems::theWalkOverOccurrencesWalkedAgain()
{
    QRandomGenerator random(5);
    int described = 0;
    for (int run = 0; run < 3000; ++run) {
        std::vector<TCSProItem> items(static_cast<std::size_t>(1 + random.bounded(6)));
        TCSProValueSet older;
        TCSPro parser;
        for (TCSProItem& item : items) {
            item.firstOccurrenceIndex = random.bounded(3);
            if (random.bounded(8) == 0)
                item.addValueSet(&older);
            if (random.bounded(8) != 0)
                parser.items->append(&item);
        }
        TCSProItem& last = items[static_cast<std::size_t>(random.bounded(int(items.size())))];
        parser.lastItem = &last;
        parser.lastItemNumeric = true;

        QList<const TCSProItem*> expected;
        if (!last.getHasValueSet() && last.firstOccurrenceIndex == 0) {
            expected.append(&last);
        } else if (!last.getHasValueSet()) {
            for (int i = parser.items->size() - 1; i >= 0; --i) {
                TCSProItem* item = parser.items->at(i);
                if (item->firstOccurrenceIndex != last.firstOccurrenceIndex)
                    break;
                if (!item->getHasValueSet())
                    expected.prepend(item);
            }
        }

        QStringList lines { "[ValueSet]", "Name=V", "Value=1;a" };
        int index = 0;
        parser.processValueSet(&lines, index);
        QList<const TCSProItem*> found;
        const TCSProValueSet* set = nullptr;
        for (TCSProItem& item : items) {
            if (!item.getHasValueSet() || item.getValueSet(0) == &older)
                continue;
            found.append(&item);
            QVERIFY(!set || set == item.getValueSet(0));
            set = item.getValueSet(0);
            QCOMPARE(item.getCount(), 1);
        }
        QCOMPARE(found, expected);
        described += found.isEmpty() ? 0 : 1;
        for (TCSProItem& item : items)
            delete item.valueSets;
    }
    QVERIFY(described > 100);
}

void tst_CSProValueSetItems::aSecondSetIsPassedOver_data()
{
    QTest::addColumn<QString>("second");
    QTest::addColumn<QStringList>("itemNames");

    row("complete", "[ValueSet]\nName=W\nValue=2;b\nValue=8;c\nName=MISSING ,Special",
        QStringList { "A" });
    row("with codes that would be asked about", "[ValueSet]\nValue=1.5;b", QStringList { "A" });
    row("with codes that are no numbers", "[ValueSet]\nValue=X;b", QStringList { "A" });
    row("a third one too", "[ValueSet]\nValue=2;b\n[ValueSet]\nValue=3;c", QStringList { "A" });
    // The lines of a set that is not read are left to the loop over all lines, which trims them.
    row("an indented header in it opens a section", "[ValueSet]\nName=W\n  [Item]\nName=B",
        QStringList { "A", "B" });
}

void tst_CSProValueSetItems::aSecondSetIsPassedOver()
{
    QFETCH(QString, second);
    QFETCH(QStringList, itemNames);
    TCSPro parser;
    parser.setDecimalQuestion(
        [](const CSProProblem&) -> int { throw std::logic_error("nothing to ask about"); });
    parse(parser, dictionary("Numeric", "Value=1;a\n") + second);
    QStringList names;
    for (const TCSProItem* item : qAsConst(*parser.items))
        names.append(item->name);
    QCOMPARE(names, itemNames);
    TCSProItem* item = parser.getItem(0);
    QCOMPARE(item->getCount(), 1);
    QCOMPARE(entriesOf(*item->getValueSet(0)), QStringList { "1|a" });
    QCOMPARE(item->getValueSet(0)->name, QString("V"));
    QCOMPARE(item->missingCode, QString());
}

void tst_CSProValueSetItems::manySetsThatArePassedOver_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<int>("ignored"); // of one round of lines

    row("headers alone", "  [ValueSet]\n", 1);
    row("with names and values", " [ValueSet]\nName=W\nValue=1;a\n", 1);
    row("with other headers between", "\t[Other]\n [ValueSet]\nValue=1;a\n", 1);
    row("after lines that are no headers", "Value=1;a\nName=W\n  [ValueSet]\n", 1);
}

/*
 * Each indented header is one to the loop over all lines, behind which the whole rest of the file
 * stands as one section. Were that read for each of them, this would run for hours.
 */
void tst_CSProValueSetItems::manySetsThatArePassedOver()
{
    QFETCH(QString, lines);
    QFETCH(int, ignored);
    constexpr int rounds = 400'000;
    TCSPro parser;
    parse(parser, dictionary("Numeric", "Value=1;a\n[ValueSet]\n") + lines.repeated(rounds));
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(parser.getItem(0)->getCount(), 1);
    QCOMPARE(entriesOf(parser), QStringList { "1|a" });
    QCOMPARE(parser.problems().size(), 1 + ignored * rounds);
    for (const CSProProblem& problem : parser.problems())
        QCOMPARE(problem.kind, CSProProblem::Kind::ValueSetIgnored);
}

void tst_CSProValueSetItems::aSetBeforeAnyItem()
{
    TCSPro parser;
    parse(parser,
        "[ValueSet]\nName=V\nValue=X;a\nName=MISSING ,Special\nValue=1;b\n[Item]\nName=A\n"
        "[ValueSet]\nName=W\nValue=2;c");
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(entriesOf(parser), QStringList { "2|c" });
    QCOMPARE(parser.lastItem->missingCode, QString());
}

void tst_CSProValueSetItems::aDroppedSetLeavesRoomForTheNext()
{
    TCSPro parser;
    parse(parser,
        dictionary("Numeric", "Value=X;a\n[ValueSet]\nName=W\nValue=2;c\n[ValueSet]\nValue=3;d"));
    QCOMPARE(entriesOf(parser), QStringList { "2|c" });
    QCOMPARE(parser.lastItem->getValueSet(0)->name, QString("W"));
}

QTEST_MAIN(tst_CSProValueSetItems)

#include "tst_CSProValueSetItems.moc"
