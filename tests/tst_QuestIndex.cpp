#include <model_Tessel/QuestIndex.h>

#include <QtTest>

#include <limits>

#include <algorithm>
#include <functional>
#include <type_traits>
#include <vector>

class tst_QuestIndex : public QObject {
    Q_OBJECT

private slots:
    void defaults();
    void fieldsStandInDeclarationOrder();
    void countLines();
    void getRecordValue_data();
    void getRecordValue();
    void countRecords_data();
    void countRecords();
    void getRecordString_data();
    void getRecordString();
    void questionsLeaveTheStatus();
};

void tst_QuestIndex::defaults()
{
    static_assert(std::has_virtual_destructor<TQuestIndex>::value, "hosts derive from it");
    const TQuestIndex index;
    QCOMPARE(index.recordTypeStart, 0);
    QCOMPARE(index.recordTypeLength, 0);
    QCOMPARE(index.status, 0);
    QCOMPARE(index.recordText, QString());
    QVERIFY(index.lines);
    QVERIFY(index.lines->isEmpty());
    QCOMPARE(index.countLines(), 0);
    const TQuestIndex other;
    QVERIFY(other.lines != index.lines);
}

void tst_QuestIndex::fieldsStandInDeclarationOrder()
{
    const TQuestIndex i;
    const std::vector<const void*> addresses = { &i.recordTypeStart, &i.recordTypeLength, &i.status,
        &i.recordText, &i.lines };
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_QuestIndex::countLines()
{
    TQuestIndex index;
    *index.lines << "1"
                 << ""
                 << "1";
    QCOMPARE(index.countLines(), 3);
    index.lines->clear();
    QCOMPARE(index.countLines(), 0);
}

void tst_QuestIndex::getRecordValue_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("value");

    QTest::newRow("first column") << 0 << 1 << 0 << "A";
    QTest::newRow("columns counted from 0") << 1 << 2 << 0 << "BC";
    QTest::newRow("last line") << 0 << 2 << 2 << "AB";
    QTest::newRow("line ends with the code") << 3 << 2 << 0 << "DE";
    QTest::newRow("line ends within the code") << 4 << 2 << 0 << "E";
    QTest::newRow("line ends before the code") << 5 << 2 << 0 << "";
    QTest::newRow("line far too short") << 9 << 2 << 0 << "";
    QTest::newRow("empty line") << 0 << 1 << 1 << "";
    QTest::newRow("length 0") << 1 << 0 << 0 << "";
    QTest::newRow("before the first line") << 0 << 1 << -1 << "";
    QTest::newRow("behind the last line") << 0 << 1 << 3 << "";
    QTest::newRow("far behind the last line") << 0 << 1 << 1000 << "";
}

void tst_QuestIndex::getRecordValue()
{
    QFETCH(int, start);
    QFETCH(int, length);
    QFETCH(int, line);
    TQuestIndex index;
    index.recordTypeStart = start;
    index.recordTypeLength = length;
    *index.lines << "ABCDE"
                 << ""
                 << "ABxy";
    QTEST(index.getRecordValue(line), "value");
}

void tst_QuestIndex::countRecords_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("count");

    QTest::newRow("some") << 1 << "b" << 2;
    QTest::newRow("one") << 1 << "a" << 1;
    QTest::newRow("other case") << 1 << "B" << 1;
    QTest::newRow("none") << 1 << "c" << 0;
    QTest::newRow("longer than the code") << 1 << "b1" << 0;
    QTest::newRow("shortened code is another") << 2 << "b" << 0;
    QTest::newRow("empty type, one line too short") << 1 << "" << 1;
    QTest::newRow("null type, one line too short") << 1 << QString() << 1;
    QTest::newRow("length 0, every type is empty") << 0 << "" << 5;
    QTest::newRow("length 0, no line has a type") << 0 << "b" << 0;
}

void tst_QuestIndex::countRecords()
{
    QFETCH(int, length);
    QFETCH(QString, type);
    TQuestIndex index;
    index.recordTypeStart = 1;
    index.recordTypeLength = length;
    *index.lines << "0a1"
                 << "0b1"
                 << "0"
                 << "0B1"
                 << "0b2";
    QTEST(index.countRecords(type), "count");
}

void tst_QuestIndex::getRecordString_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("n");
    QTest::addColumn<QString>("found");

    QTest::newRow("first") << "b" << 0 << "b";
    QTest::newRow("second") << "b" << 1 << "b";
    QTest::newRow("as many as there are") << "b" << 2 << "";
    QTest::newRow("far more") << "b" << 100 << "";
    QTest::newRow("before the first") << "b" << -1 << "";
    QTest::newRow("the smallest number there is") << "b" << std::numeric_limits<int>::min() << "";
    QTest::newRow("the largest number there is") << "b" << std::numeric_limits<int>::max() << "";
    QTest::newRow("no such type") << "c" << 0 << "";
    QTest::newRow("other case") << "A" << 0 << "";
    QTest::newRow("empty type") << "" << 0 << "";
}

void tst_QuestIndex::getRecordString()
{
    QFETCH(QString, type);
    QFETCH(int, n);
    QFETCH(QString, found);
    TQuestIndex index;
    index.recordTypeStart = 1;
    index.recordTypeLength = 1;
    *index.lines << "0a1"
                 << "0b1"
                 << "0b2"
                 << "0";
    QCOMPARE(index.getRecordString(type, n), found);
    if (n == 0)
        QCOMPARE(index.getRecordString(type), found);
}

void tst_QuestIndex::questionsLeaveTheStatus()
{
    TQuestIndex index;
    index.recordTypeLength = 1;
    index.status = 9;
    *index.lines << "1"
                 << "";
    index.countRecords("");
    index.getRecordString("");
    index.getRecordString("2", 3);
    QCOMPARE(index.status, 9);
}

QTEST_APPLESS_MAIN(tst_QuestIndex)

#include "tst_QuestIndex.moc"
