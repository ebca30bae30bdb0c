#include "RecordTrees.h"

#include <model_Tessel/QuestIndex.h>
#include <model_Tessel/Record.h>

#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace {

/*
 *     A
 *     +-- B
 *     |   +-- C
 *     |   +-- D
 *     +-- E
 *     |   +-- F
 *     |       +-- G
 *     +-- H
 */
class SmallTree : public Tree {
public:
    SmallTree()
    {
        for (const QString name : { "A", "B", "C", "D", "E", "F", "G", "H" })
            add(name);
        record('A').addChild(&record('B'));
        record('B').addChild(&record('C'));
        record('B').addChild(&record('D'));
        record('A').addChild(&record('E'));
        record('E').addChild(&record('F'));
        record('F').addChild(&record('G'));
        record('A').addChild(&record('H'));
    }

    TOxRecord& record(char name)
    {
        return records()[static_cast<std::size_t>(name - 'A')];
    }
};

QString names(const std::vector<const TOxRecord*>& records)
{
    QString result;
    for (const TOxRecord* record : records)
        result += record->name;
    return result;
}

QString childrenOf(const TOxRecord& parent)
{
    QString result;
    for (const TOxRecord* child = parent.firstChild; child; child = child->nextBrother)
        result += child->name;
    return result;
}

QString walk(const TOxRecord& start)
{
    std::vector<const TOxRecord*> records;
    for (const TOxRecord* record = &start; record; record = record->preOrderNext())
        records.push_back(record);
    return names(records);
}

} // namespace

class tst_Record : public QObject {
    Q_OBJECT

private slots:
    void defaults();
    void fieldsStandInDeclarationOrder();
    void destructorLeavesTheTree();
    void nodeCaption_data();
    void nodeCaption();

    void addChild();
    void addBrother();
    void addBrotherOfRoot();
    void addChildGetsTheParentOfItsBrothers();
    void insertChild_data();
    void insertChild();
    void insertChildBeforeAStranger_data();
    void insertChildBeforeAStranger();
    void deleteChild_data();
    void deleteChild();
    void deleteChildLeavesOthers_data();
    void deleteChildLeavesOthers();
    void deleteChildTakesTheFirstOfAName();

    void preOrderNext();
    void preOrderNextOfLast();
    void preOrderNextLeavesTheSubtree();
    void preOrderNextFollowsTheParentLink();
    void preOrderNextBrother_data();
    void preOrderNextBrother();

    void retrieveRecord_data();
    void retrieveRecord();
    void retrieveRecordStaysBelowAndBehind_data();
    void retrieveRecordStaysBelowAndBehind();
    void retrieveRecordCommon_data();
    void retrieveRecordCommon();
    void retrieveRecordOrder();

    void keyValuesAreEmpty();
    void assembleRecordOfReferences_data();
    void assembleRecordOfReferences();
    void assembleRecordWithKey();
    void references();
};

void tst_Record::defaults()
{
    static_assert(std::has_virtual_destructor<TOxRecord>::value, "hosts derive from it");
    const TOxRecord record;
    QCOMPARE(record.name, QString());
    QCOMPARE(record.label, QString());
    QCOMPARE(record.recordType, QString());
    QCOMPARE(record.recordChar, QString());
    QVERIFY(!record.firstChild);
    QVERIFY(!record.parent);
    QVERIFY(!record.nextBrother);
    QVERIFY(!record.keyRecord);
    QVERIFY(record.references);
    QVERIFY(record.references->isEmpty());
}

void tst_Record::fieldsStandInDeclarationOrder()
{
    const TOxRecord r;
    const std::vector<const void*> addresses = { &r.name, &r.label, &r.recordType, &r.recordChar,
        &r.firstChild, &r.parent, &r.nextBrother, &r.references, &r.keyRecord };
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_Record::destructorLeavesTheTree()
{
    Tree tree;
    TOxRecord& child = tree.add("child");
    TOxRecord& brother = tree.add("brother");
    TOxRecordReference reference;
    auto* record = new TOxRecord;
    record->addChild(&child);
    record->addBrother(&brother);
    record->addRecordReferenceToList(&reference);
    const std::unique_ptr<QList<TOxRecordReference*>> references(record->references);
    delete record;
    QCOMPARE(child.name, QString("child"));
    QCOMPARE(brother.name, QString("brother"));
    QCOMPARE(references->size(), 1);
}

void tst_Record::nodeCaption_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("caption");

    QTest::newRow("name and label") << "HOUSING"
                                    << "Housing unit"
                                    << "HOUSING (Housing unit)";
    QTest::newRow("no label") << "HOUSING"
                              << ""
                              << "HOUSING";
    QTest::newRow("no name") << ""
                             << "Housing unit"
                             << " (Housing unit)";
    QTest::newRow("neither") << ""
                             << ""
                             << "";
    QTest::newRow("blank label") << "HOUSING"
                                 << " "
                                 << "HOUSING ( )";
    QTest::newRow("placeholder in the label") << "A%1"
                                              << "50%2"
                                              << "A%1 (50%2)";
}

void tst_Record::nodeCaption()
{
    QFETCH(QString, name);
    QFETCH(QString, label);
    Tree tree;
    TOxRecord& record = tree.add(name);
    record.label = label;
    QTEST(record.nodeCaption(), "caption");
}

void tst_Record::addChild()
{
    Tree tree;
    TOxRecord& parent = tree.add();
    TOxRecord* children[] = { &tree.add("1"), &tree.add("2"), &tree.add("3") };
    for (TOxRecord* child : children) {
        parent.addChild(child);
        QCOMPARE(child->parent, &parent);
    }
    QCOMPARE(parent.firstChild, children[0]);
    QCOMPARE(childrenOf(parent), QString("123"));
    QVERIFY(!parent.nextBrother);
}

void tst_Record::addBrother()
{
    SmallTree tree;
    TOxRecord& added = tree.add("X");
    tree.record('B').addBrother(&added);
    QCOMPARE(childrenOf(tree.root()), QString("BEHX"));
    QCOMPARE(added.parent, &tree.root());
}

void tst_Record::addBrotherOfRoot()
{
    SmallTree tree;
    TOxRecord& added = tree.add("X");
    added.parent = &tree.record('G');
    tree.root().addBrother(&added);
    QCOMPARE(tree.root().nextBrother, &added);
    QVERIFY(!added.parent);
}

void tst_Record::addChildGetsTheParentOfItsBrothers()
{
    SmallTree tree;
    tree.record('H').parent = &tree.record('G');
    TOxRecord& added = tree.add("X");
    tree.root().addChild(&added);
    QCOMPARE(childrenOf(tree.root()), QString("BEHX"));
    QCOMPARE(added.parent, &tree.record('G'));
}

void tst_Record::insertChild_data()
{
    QTest::addColumn<char>("before");
    QTest::addColumn<QString>("children");

    QTest::newRow("before the first") << 'B' << "XBEH";
    QTest::newRow("before the second") << 'E' << "BXEH";
    QTest::newRow("before the last") << 'H' << "BEXH";
}

void tst_Record::insertChild()
{
    QFETCH(char, before);
    SmallTree tree;
    TOxRecord& added = tree.add("X");
    tree.root().insertChild(&tree.record(before), &added);
    QTEST(childrenOf(tree.root()), "children");
    QCOMPARE(added.parent, &tree.root());
    QCOMPARE(added.nextBrother, &tree.record(before));
}

void tst_Record::insertChildBeforeAStranger_data()
{
    QTest::addColumn<char>("into");
    QTest::addColumn<char>("before");

    QTest::newRow("before a grandchild") << 'A' << 'C';
    QTest::newRow("before the record itself") << 'B' << 'B';
    QTest::newRow("before a brother") << 'B' << 'E';
    QTest::newRow("before the parent") << 'B' << 'A';
    QTest::newRow("before nothing") << 'A' << '\0';
    QTest::newRow("before nothing, in a leaf") << 'C' << '\0';
    QTest::newRow("in a leaf") << 'C' << 'D';
}

void tst_Record::insertChildBeforeAStranger()
{
    QFETCH(char, into);
    QFETCH(char, before);
    SmallTree tree;
    TOxRecord& added = tree.add("X");
    tree.record(into).insertChild(before ? &tree.record(before) : nullptr, &added);
    QCOMPARE(walk(tree.root()), QString("ABCDEFGH"));
    QVERIFY(!tree.record('C').firstChild);
    QVERIFY(!added.parent);
    QVERIFY(!added.nextBrother);
}

void tst_Record::deleteChild_data()
{
    QTest::addColumn<char>("name");
    QTest::addColumn<bool>("flag");
    QTest::addColumn<QString>("children");

    for (const bool flag : { false, true }) {
        const char* suffix = flag ? ", with the flag" : "";
        QTest::addRow("first%s", suffix) << 'B' << flag << "EH";
        QTest::addRow("middle%s", suffix) << 'E' << flag << "BH";
        QTest::addRow("last%s", suffix) << 'H' << flag << "BE";
    }
}

void tst_Record::deleteChild()
{
    QFETCH(char, name);
    QFETCH(bool, flag);
    SmallTree tree;
    TOxRecord& child = tree.record(name);
    const QString grandchildren = childrenOf(child);
    tree.root().deleteChild(QString(QLatin1Char(name)), flag);
    QTEST(childrenOf(tree.root()), "children");
    QVERIFY(!child.nextBrother);
    QCOMPARE(child.parent, &tree.root());
    QCOMPARE(childrenOf(child), grandchildren);
}

void tst_Record::deleteChildLeavesOthers_data()
{
    QTest::addColumn<char>("from");
    QTest::addColumn<QString>("name");

    QTest::newRow("grandchild") << 'A' << "C";
    QTest::newRow("great-grandchild") << 'A' << "G";
    QTest::newRow("the record itself") << 'A' << "A";
    QTest::newRow("the record itself, a first child") << 'B' << "B";
    QTest::newRow("brother") << 'B' << "E";
    QTest::newRow("child of a brother") << 'B' << "F";
    QTest::newRow("record of another branch") << 'E' << "C";
    QTest::newRow("missing") << 'A' << "X";
    QTest::newRow("missing, from a leaf") << 'H' << "X";
}

void tst_Record::deleteChildLeavesOthers()
{
    QFETCH(char, from);
    QFETCH(QString, name);
    for (const bool flag : { false, true }) {
        SmallTree tree;
        tree.record(from).deleteChild(name, flag);
        QCOMPARE(walk(tree.root()), QString("ABCDEFGH"));
        QCOMPARE(childrenOf(tree.root()), QString("BEH"));
        QCOMPARE(childrenOf(tree.record('B')), QString("CD"));
    }
}

void tst_Record::deleteChildTakesTheFirstOfAName()
{
    SmallTree tree;
    tree.record('H').name = "B";
    tree.root().deleteChild("B", false);
    QCOMPARE(childrenOf(tree.root()), QString("EB"));

    tree.record('G').name = "B"; // now found first, and no child of the root
    tree.root().deleteChild("B", false);
    QCOMPARE(childrenOf(tree.root()), QString("EB"));
}

void tst_Record::preOrderNext()
{
    SmallTree tree;
    QCOMPARE(walk(tree.root()), QString("ABCDEFGH"));
}

void tst_Record::preOrderNextOfLast()
{
    SmallTree tree;
    QVERIFY(!tree.record('H').preOrderNext());
    Tree alone;
    QVERIFY(!alone.add().preOrderNext());
}

void tst_Record::preOrderNextLeavesTheSubtree()
{
    SmallTree tree;
    QCOMPARE(walk(tree.record('B')), QString("BCDEFGH"));
    QCOMPARE(walk(tree.record('G')), QString("GH"));
    tree.addNext(tree.root(), "X");
    QCOMPARE(walk(tree.root()), QString("ABCDEFGHX"));
}

void tst_Record::preOrderNextFollowsTheParentLink()
{
    SmallTree tree;
    tree.record('D').parent = &tree.record('G');
    QCOMPARE(tree.record('D').preOrderNext(), &tree.record('H'));
    tree.record('D').parent = nullptr;
    QVERIFY(!tree.record('D').preOrderNext());
}

void tst_Record::preOrderNextBrother_data()
{
    QTest::addColumn<char>("from");
    QTest::addColumn<char>("next");

    QTest::newRow("own brother, not the child") << 'B' << 'E';
    QTest::newRow("brother of a leaf") << 'C' << 'D';
    QTest::newRow("brother of the parent") << 'D' << 'E';
    QTest::newRow("brother of the parent's parent") << 'G' << 'H';
    QTest::newRow("none for the last") << 'H' << '\0';
    QTest::newRow("none for the root") << 'A' << '\0';
}

void tst_Record::preOrderNextBrother()
{
    QFETCH(char, from);
    QFETCH(char, next);
    SmallTree tree;
    QCOMPARE(tree.record(from).preOrderNextBrother(), next ? &tree.record(next) : nullptr);
}

void tst_Record::retrieveRecord_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");

    for (const char* name : { "A", "B", "C", "D", "E", "F", "G", "H" })
        QTest::addRow("record %s", name) << name << true;
    QTest::newRow("other case") << "a" << false;
    QTest::newRow("missing") << "X" << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("part of no name") << "AB" << false;
}

void tst_Record::retrieveRecord()
{
    QFETCH(QString, name);
    QFETCH(bool, found);
    SmallTree tree;
    TOxRecord* expected = found ? &tree.record(name.at(0).toLatin1()) : nullptr;
    QCOMPARE(tree.root().retrieveRecord(name), expected);
}

void tst_Record::retrieveRecordStaysBelowAndBehind_data()
{
    QTest::addColumn<char>("from");
    QTest::addColumn<QString>("found");

    QTest::newRow("first child, its brothers too") << 'B' << "BCDEFGH";
    QTest::newRow("last child") << 'D' << "D";
    QTest::newRow("middle") << 'E' << "EFGH";
    QTest::newRow("last brother") << 'H' << "H";
}

void tst_Record::retrieveRecordStaysBelowAndBehind()
{
    QFETCH(char, from);
    SmallTree tree;
    QString found;
    for (const TOxRecord& record : tree.records()) {
        if (tree.record(from).retrieveRecord(record.name))
            found += record.name;
    }
    QTEST(found, "found");
}

void tst_Record::retrieveRecordCommon_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<bool>("found");

    QTest::newRow("Common finds COMMON") << "COMMON"
                                         << "Common" << true;
    QTest::newRow("COMMON does not find Common") << "Common"
                                                 << "COMMON" << false;
    QTest::newRow("Common finds Common") << "Common"
                                         << "Common" << true;
    QTest::newRow("COMMON finds COMMON") << "COMMON"
                                         << "COMMON" << true;
    QTest::newRow("common does not find COMMON") << "COMMON"
                                                 << "common" << false;
    QTest::newRow("Common does not find common") << "common"
                                                 << "Common" << false;
    QTest::newRow("Common with a blank") << "COMMON"
                                         << "Common " << false;
}

void tst_Record::retrieveRecordCommon()
{
    QFETCH(QString, name);
    QFETCH(QString, wanted);
    QFETCH(bool, found);
    for (const char place : { 'A', 'B', 'D', 'G', 'H' }) {
        SmallTree tree;
        tree.record(place).name = name;
        QCOMPARE(tree.root().retrieveRecord(wanted), found ? &tree.record(place) : nullptr);
    }
}

void tst_Record::retrieveRecordOrder()
{
    SmallTree tree;
    tree.record('G').name = "H";
    QCOMPARE(tree.root().retrieveRecord("H"), &tree.record('G'));
    tree.record('D').name = "COMMON";
    tree.record('E').name = "Common";
    QCOMPARE(tree.root().retrieveRecord("Common"), &tree.record('D'));
    QCOMPARE(tree.record('C').retrieveRecord("Common"), &tree.record('D'));
    QCOMPARE(tree.record('E').retrieveRecord("Common"), &tree.record('E'));
}

void tst_Record::keyValuesAreEmpty()
{
    Tree tree;
    TOxRecord& record = tree.add("1");
    record.recordType = "1";
    record.keyRecord = &record;
    QCOMPARE(record.getKeyValue("1abc"), QString());
    QCOMPARE(record.getParentKeyValue("1abc"), QString());
}

void tst_Record::assembleRecordOfReferences_data()
{
    QTest::addColumn<int>("references");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<int>("status");

    const int same = Index::Untouched;
    QTest::newRow("two lines without a type") << 1 << QStringList({ "", "1", "" }) << 4;
    QTest::newRow("three references") << 3 << QStringList({ "", "" }) << 4;
    QTest::newRow("one line without a type") << 1 << QStringList({ "", "1", "2" }) << same;
    QTest::newRow("all lines with a type") << 1 << QStringList({ "1", "1", "1" }) << same;
    QTest::newRow("no lines") << 1 << QStringList() << same;
    QTest::newRow("no references") << 0 << QStringList({ "", "", "" }) << same;
}

void tst_Record::assembleRecordOfReferences()
{
    QFETCH(int, references);
    QFETCH(QStringList, lines);
    Tree tree;
    TOxRecord& record = tree.add();
    TOxRecordReference reference;
    for (int i = 0; i < references; ++i)
        record.addRecordReferenceToList(&reference);
    Index index(lines);
    QCOMPARE(record.assembleRecord(&index), QString());
    QTEST(index.status, "status");
}

void tst_Record::assembleRecordWithKey()
{
    Tree tree;
    TOxRecord& record = tree.add();
    TOxRecordReference reference;
    record.addRecordReferenceToList(&reference);
    Index index({ "", "" }, "the text");
    QCOMPARE(record.assembleRecord(&index, "key"), QString("the text"));
    QCOMPARE(record.assembleRecord(&index, QString()), QString("the text"));
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
    index.recordText.clear();
    QCOMPARE(record.assembleRecord(&index, "key"), QString());
}

void tst_Record::references()
{
    Tree tree;
    TOxRecord& record = tree.add();
    TOxRecordReference a;
    TOxRecordReference b;
    TOxRecordReference c;
    for (TOxRecordReference* reference : { &a, &b, &a })
        record.addRecordReferenceToList(reference);
    QCOMPARE(*record.references, QList<TOxRecordReference*>({ &a, &b, &a }));
    record.removeRecordReferenceFromList(&a);
    QCOMPARE(*record.references, QList<TOxRecordReference*>({ &b, &a }));
    record.removeRecordReferenceFromList(&c);
    QCOMPARE(*record.references, QList<TOxRecordReference*>({ &b, &a }));
    record.removeRecordReferenceFromList(&a);
    record.removeRecordReferenceFromList(&b);
    QVERIFY(record.references->isEmpty());
}

QTEST_APPLESS_MAIN(tst_Record)

#include "tst_Record.moc"
