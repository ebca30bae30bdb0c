#include "RecordTrees.h"

#include <model_Tessel/QuestIndex.h>
#include <model_Tessel/Record.h>

#include <QtTest>

#include <new>

namespace {

// A record that looks for its own type.
TOxRecord& typed(TOxRecord& record, const QString& type)
{
    record.recordType = type;
    record.keyRecord = &record;
    return record;
}

} // namespace

class tst_RecordCheck : public QObject {
    Q_OBJECT

private slots:
    void checkRootAndChild();
    void checkRepeatsChildrenForEveryLine();
    void checkSkipsBrothersOfTheRoot();
    void checkWalksBrothersBelowTheRoot();
    void checkSkipsChildrenOfRecordsWithoutLines();
    void checkLooksForTheTypeOfTheKeyRecord();
    void checkWithoutKeyRecord();
    void checkWithoutLines();
    void checkEmptyType();
    void checkEmptyTypeBelowTheRoot();
    void checkEmptyText_data();
    void checkEmptyText();
    void checkWithParentKey_data();
    void checkWithParentKey();
    void checkIgnoresReferences();
    void checkLeavesTheIndex();
    void checkOfMoreThanATextHolds();
};

void tst_RecordCheck::checkRootAndChild()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    typed(tree.addFirst(root), "2");
    Index index({ "1 household", "2 person", "2 person" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(3));
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_RecordCheck::checkRepeatsChildrenForEveryLine()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    TOxRecord& child = typed(tree.addFirst(root), "2");
    typed(tree.addFirst(child), "3");
    Index index({ "1", "2", "2", "2", "1", "3", "3" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(2 + 2 * 3 + 2 * 3 * 2));
    QCOMPARE(root.checkQuestionnaire(&index, QString()), copies(2 + 2 * 3 + 2 * 3 * 2));
    QCOMPARE(child.checkQuestionnaire(&index), copies(3 + 3 * 2));
}

void tst_RecordCheck::checkSkipsBrothersOfTheRoot()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    typed(tree.addNext(root), "2");
    Index index({ "1", "2", "2" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(1));
    QCOMPARE(root.checkQuestionnaire(&index, QString()), copies(3));
}

void tst_RecordCheck::checkWalksBrothersBelowTheRoot()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    TOxRecord& first = typed(tree.addFirst(root), "9"); // finds nothing, and its brothers still do
    TOxRecord& second = typed(tree.addNext(first), "2");
    typed(tree.addNext(second), "3");
    Index index({ "1", "1", "2", "3", "3", "3" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(2 + 2 * (1 + 3)));
}

void tst_RecordCheck::checkSkipsChildrenOfRecordsWithoutLines()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    TOxRecord& child = typed(tree.addFirst(root), "9");
    typed(tree.addFirst(child), "2");
    Index index({ "1", "2", "2" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(1));
    QCOMPARE(child.checkQuestionnaire(&index), QString());
    QCOMPARE(child.checkQuestionnaire(&index, QString()), QString());
}

void tst_RecordCheck::checkLooksForTheTypeOfTheKeyRecord()
{
    Tree tree;
    TOxRecord& root = tree.add();
    TOxRecord& key = tree.add();
    root.recordType = "1";
    root.keyRecord = &key;
    key.recordType = "2";
    Index index({ "1", "2", "2" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(2));
    QCOMPARE(root.checkQuestionnaire(&index, QString()), copies(2));
}

void tst_RecordCheck::checkWithoutKeyRecord()
{
    Tree tree;
    TOxRecord& root = tree.add();
    typed(tree.addFirst(root), "1");
    typed(tree.addNext(root), "1");
    Index index({ "1", "" });
    QCOMPARE(root.checkQuestionnaire(&index), QString());
    QCOMPARE(root.checkQuestionnaire(&index, QString()), copies(1));
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_RecordCheck::checkWithoutLines()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "");
    typed(tree.addFirst(root), "");
    Index index;
    QCOMPARE(root.checkQuestionnaire(&index), QString());
    QCOMPARE(root.checkQuestionnaire(&index, QString()), QString());
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_RecordCheck::checkEmptyType()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "");
    typed(tree.addFirst(root), "1");
    Index index({ "1", "" });
    QCOMPARE(root.checkQuestionnaire(&index), QString());
    QCOMPARE(index.status, 6);

    Index everyTypeIsEmpty({ "1", "2" });
    everyTypeIsEmpty.recordTypeLength = 0;
    QCOMPARE(root.checkQuestionnaire(&everyTypeIsEmpty), QString());
    QCOMPARE(everyTypeIsEmpty.status, 6);

    Index withoutText({ "1", "" }, QString());
    QCOMPARE(root.checkQuestionnaire(&withoutText), QString());
    QCOMPARE(withoutText.status, 6);

    Index noneWithoutType({ "1", "2" });
    QCOMPARE(root.checkQuestionnaire(&noneWithoutType), QString());
    QCOMPARE(noneWithoutType.status, static_cast<int>(Index::Untouched));
}

void tst_RecordCheck::checkEmptyTypeBelowTheRoot()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    TOxRecord& child = typed(tree.addFirst(root), "");
    Index index({ "1", "", "" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(3));
    QCOMPARE(child.checkQuestionnaire(&index, QString()), copies(2));
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_RecordCheck::checkEmptyText_data()
{
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("lines of the root") << QStringList({ "1", "2" });
    QTest::newRow("lines of the child only") << QStringList({ "2" });
    QTest::newRow("lines of nobody") << QStringList({ "9" });
}

void tst_RecordCheck::checkEmptyText()
{
    QFETCH(QStringList, lines);
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    typed(tree.addNext(typed(tree.addFirst(root), "9")), "2");
    Index index(lines, QString());
    QCOMPARE(root.checkQuestionnaire(&index), QString());
    QCOMPARE(root.checkQuestionnaire(&index, QString()), QString());
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_RecordCheck::checkWithParentKey_data()
{
    QTest::addColumn<QString>("parentKey");
    QTest::addColumn<int>("lines");

    QTest::newRow("null, as the key of every line") << QString() << 5;
    QTest::newRow("empty, as the key of every line") << "" << 5;
    QTest::newRow("another") << "1" << 0;
    QTest::newRow("a blank") << " " << 0;
}

void tst_RecordCheck::checkWithParentKey()
{
    QFETCH(QString, parentKey);
    QFETCH(int, lines);
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    typed(tree.addFirst(root), "2");
    typed(tree.addNext(root), "2");
    Index index({ "1", "2", "9", "1" });
    QCOMPARE(root.checkQuestionnaire(&index, parentKey), copies(lines));
}

void tst_RecordCheck::checkIgnoresReferences()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    TOxRecordReference reference;
    root.addRecordReferenceToList(&reference);
    Index index({ "1", "", "" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(1));
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_RecordCheck::checkLeavesTheIndex()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    const QStringList lines = { "1", "2", "1" };
    Index index(lines, "a\r\nb");
    QCOMPARE(root.checkQuestionnaire(&index), copies(2, "a\r\nb"));
    QCOMPARE(*index.lines, lines);
    QCOMPARE(index.recordText, QString("a\r\nb"));
}

void tst_RecordCheck::checkOfMoreThanATextHolds()
{
    Tree tree;
    TOxRecord* last = &typed(tree.add(), "1");
    for (int depth = 1; depth < 100; ++depth)
        last = &typed(tree.addFirst(*last), "1");
    Index index({ "1", "1" });
    QVERIFY_EXCEPTION_THROWN(tree.root().checkQuestionnaire(&index), std::bad_alloc);
    QVERIFY_EXCEPTION_THROWN(tree.root().checkQuestionnaire(&index, QString()), std::bad_alloc);
    index.recordText.clear();
    QCOMPARE(tree.root().checkQuestionnaire(&index), QString());
    QCOMPARE(tree.root().checkQuestionnaire(&index, QString()), QString());
}

QTEST_APPLESS_MAIN(tst_RecordCheck)

#include "tst_RecordCheck.moc"
