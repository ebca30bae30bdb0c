// Items of CSPro dictionaries as they are written: occurrences, subitems and their parents.
#include "CSProDictionaries.h"

#include <QLoggingCategory>

class tst_CSProWrittenItems : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void occurrences();
    void repeatedSubItems();
    void parents();
};

void tst_CSProWrittenItems::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProWrittenItems::occurrences()
{
    const Model model(Reading::AsWritten,
        dictionary("[Item]\nLabel=Wives\nName=A\nStart=2\nLen=2\nOccurrences=12\nZeroFill=Yes\n"
                   "Decimal=1\nDecimalChar=Yes\nOccurrenceLabel=1,First\nOccurrenceLabel=3:Third\n"
                   "OccurenceLabel=12, Last, of all \n"));
    QCOMPARE(model.parser.getItemsCount(), 12);
    for (int number = 1; number <= 12; ++number) {
        const TCSProItem& item = *model.parser.getItem(number - 1);
        QCOMPARE(item.name, "A_" + QString::number(number));
        QCOMPARE(item.dictionaryName, QStringLiteral("A"));
        QCOMPARE(item.label, QStringLiteral("Wives"));
        QCOMPARE(item.occurrence, number);
        QCOMPARE(item.start, 2 + (number - 1) * 2);
        QCOMPARE(item.len, 2);
        QCOMPARE(item.decimal, 1);
        QVERIFY(item.hasDecimalChar);
        QVERIFY(item.isZeroFill);
        QCOMPARE(model.variable(item.name).start, item.start);
    }
    QCOMPARE(model.parser.getItem(0)->detail().occurrenceLabel, QStringLiteral("First"));
    QCOMPARE(model.parser.getItem(1)->detail().occurrenceLabel, QString());
    QCOMPARE(model.parser.getItem(2)->detail().occurrenceLabel, QStringLiteral("Third"));
    QCOMPARE(model.parser.getItem(11)->detail().occurrenceLabel, QStringLiteral("Last, of all"));
    QCOMPARE(model.parser.getItem(0)->detail().occurrenceLabels.size(), 12);
    QCOMPARE(problemsOf(model.parser), QStringList());

    const Model record(Reading::AsWritten,
        "[Record]\nName=R\nRecordTypeValue='1'\nMaxRecords=3\nOccurrenceLabel=2,Second\n");
    QCOMPARE(record.parser.getRecord(0)->occurrenceLabels.toList(),
        (QStringList { QString(), "Second" }));
}

void tst_CSProWrittenItems::repeatedSubItems()
{
    const Model model(Reading::AsWritten,
        dictionary("[Item]\nName=P\nStart=10\nLen=6\nOccurrences=2\nOccurrenceLabel=2,Second\n"
                   "[Item]\nName=S\nStart=11\nLen=2\nItemType=SubItem\n[ValueSet]\nName=V\n"
                   "Value=9;None\nName=MISSING,Special\n"
                   "[Item]\nName=T\nStart=13\nLen=1\nOccurrences=3\nItemType=SubItem\n"
                   "[Item]\nName=Q\nStart=22\nLen=4\n"
                   "[Item]\nName=U\nStart=23\nLen=1\nOccurrences=2\nItemType=SubItem\n"
                   "[Item]\nName=W\nStart=25\nLen=1\nItemType=SubItem\n"));
    QCOMPARE(namesOf(model.parser),
        (QStringList { "P_1", "P_2", "S_1", "S_2", "T_1_1", "T_1_2", "T_1_3", "T_2_1", "T_2_2",
            "T_2_3", "Q", "U_1", "U_2", "W" }));
    QVector<int> starts;
    QStringList parents;
    QVector<int> numbers;
    for (const TCSProItem* item : qAsConst(*model.parser.items)) {
        starts.append(item->start);
        parents.append(item->detail().parent ? item->detail().parent->name : QStringLiteral("-"));
        numbers.append(item->occurrence);
    }
    QCOMPARE(starts, (QVector<int> { 10, 16, 11, 17, 13, 14, 15, 19, 20, 21, 22, 23, 24, 25 }));
    QCOMPARE(parents,
        (QStringList { "-", "-", "P_1", "P_2", "P_1", "P_1", "P_1", "P_2", "P_2", "P_2", "-", "Q",
            "Q", "Q" }));
    QCOMPARE(numbers, (QVector<int> { 1, 2, 1, 2, 1, 2, 3, 4, 5, 6, 0, 1, 2, 0 }));
    QCOMPARE(model.item("S_2").detail().occurrenceLabel, QStringLiteral("Second"));
    for (const char* name : { "S_1", "S_2" }) {
        QCOMPARE(model.item(name).getCount(), 1);
        QCOMPARE(model.item(name).missingCode, QStringLiteral("9"));
    }
    QCOMPARE(model.item("P_2").getCount(), 0);
}

void tst_CSProWrittenItems::parents()
{
    const Model model(Reading::AsWritten,
        dictionary("[Item]\nName=A\nStart=2\nLen=4\n[Item]\nName=B\nStart=2\nLen=2\n"
                   "ItemType=SubItem\n[Item]\nName=C\nStart=4\nLen=2\nItemType=SubItem\n"
                   "[Item]\nName=D\nStart=6\nLen=4\n[Item]\nName=E\nStart=6\nLen=2\n"
                   "ItemType=SubItem\n"));
    QCOMPARE(model.item("A").detail().parent, nullptr);
    QCOMPARE(model.item("B").detail().parent, &model.item("A"));
    QCOMPARE(model.item("C").detail().parent, &model.item("A"));
    QCOMPARE(model.item("D").detail().parent, nullptr);
    QCOMPARE(model.item("E").detail().parent, &model.item("D"));
}

QTEST_GUILESS_MAIN(tst_CSProWrittenItems)
#include "tst_CSProWrittenItems.moc"
