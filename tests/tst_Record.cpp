#include <model_Tessel/QuestIndex.h>
#include <model_Tessel/Record.h>

#include <QRandomGenerator>
#include <QThread>
#include <QtTest>

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

// Declared only by the library; here it is anything that has an address.
class TOxRecordReference { };

namespace {

// Owns records, whose tree is linked here without the walks of addChild() and addBrother().
class Tree {
public:
    Tree() = default;
    ~Tree()
    {
        for (const TOxRecord& record : m_records)
            delete record.references;
    }

    TOxRecord& add(const QString& name = QString())
    {
        m_records.emplace_back();
        m_records.back().name = name;
        return m_records.back();
    }
    // The first child of parent.
    TOxRecord& addFirst(TOxRecord& parent, const QString& name = QString())
    {
        TOxRecord& record = add(name);
        record.parent = &parent;
        record.nextBrother = parent.firstChild;
        parent.firstChild = &record;
        return record;
    }
    // The brother next to record.
    TOxRecord& addNext(TOxRecord& brother, const QString& name = QString())
    {
        TOxRecord& record = add(name);
        record.parent = brother.parent;
        record.nextBrother = brother.nextBrother;
        brother.nextBrother = &record;
        return record;
    }

    TOxRecord& root()
    {
        return m_records.front();
    }
    std::deque<TOxRecord>& records()
    {
        return m_records;
    }

private:
    Q_DISABLE_COPY(Tree)

    std::deque<TOxRecord> m_records;
};

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

// An index of lines whose type is their first character.
class Index : public TQuestIndex {
public:
    explicit Index(const QStringList& questionnaire = QStringList(), const QString& text = "text")
    {
        recordTypeLength = 1;
        status = Untouched;
        recordText = text;
        *lines = questionnaire;
    }

    static constexpr int Untouched = 99;
};

// A record that looks for its own type.
TOxRecord& typed(TOxRecord& record, const QString& type)
{
    record.recordType = type;
    record.keyRecord = &record;
    return record;
}

QString copies(int count, const QString& text = "text")
{
    return QString(text + "\r\n").repeated(count);
}

// The search in its plain recursive form, which the library must agree with.
TOxRecord* recursiveSearch(TOxRecord* record, const QString& name)
{
    if (record->name == name)
        return record;
    if (name == "Common" && record->name == "COMMON")
        return record;
    if (record->firstChild) {
        if (record->firstChild->name == name)
            return record->firstChild;
        if (TOxRecord* found = recursiveSearch(record->firstChild, name))
            return found;
    }
    if (record->nextBrother) {
        if (record->nextBrother->name == name)
            return record->nextBrother;
        return recursiveSearch(record->nextBrother, name);
    }
    return nullptr;
}

// The two checks in their plain recursive form.
QString recursiveCheck(const TOxRecord* record, TQuestIndex* index, const QString& parentKey)
{
    const QString type = record->keyRecord->recordType;
    QString result;
    for (int i = 0; i < index->countLines(); ++i) {
        const QString line = index->lines->at(i);
        if (index->getRecordValue(i) != type)
            continue;
        if (record->keyRecord->getParentKeyValue(line) != parentKey)
            continue;
        const QString key = record->keyRecord->getKeyValue(line);
        const QString assembled = record->assembleRecord(index, key);
        if (assembled.isEmpty())
            return QString();
        result += assembled + "\r\n";
        if (record->firstChild) {
            const QString sub = recursiveCheck(record->firstChild, index, key);
            if (!sub.isEmpty())
                result += sub;
        }
    }
    if (record->nextBrother) {
        const QString sub = recursiveCheck(record->nextBrother, index, parentKey);
        if (!sub.isEmpty())
            result += sub;
    }
    return result;
}

QString recursiveCheck(const TOxRecord* record, TQuestIndex* index)
{
    const QString type = record->keyRecord->recordType;
    const int n = index->countRecords(type);
    QString result;
    for (int i = 0; i < n; ++i) {
        const QString s = index->getRecordString(type, i);
        if (s.isEmpty()) {
            index->status = 6;
            return QString();
        }
        const QString key = record->keyRecord->getKeyValue(s);
        const QString assembled = record->assembleRecord(index, key);
        if (assembled.isEmpty())
            return QString();
        result += assembled + "\r\n";
        if (record->firstChild) {
            const QString sub = recursiveCheck(record->firstChild, index, key);
            if (!sub.isEmpty())
                result += sub;
        }
    }
    return result;
}

void recursiveWalk(const TOxRecord* record, std::vector<const TOxRecord*>& records)
{
    records.push_back(record);
    if (record->firstChild)
        recursiveWalk(record->firstChild, records);
    if (record->nextBrother)
        recursiveWalk(record->nextBrother, records);
}

QString oneOf(const QStringList& texts, QRandomGenerator& random)
{
    return texts.at(random.bounded(texts.size()));
}

// A tree of up to maxCount records in any shape, whose names and types often meet.
void grow(Tree& tree, int maxCount, QRandomGenerator& random)
{
    const QStringList someNames = { "A", "B", "C", "Common", "COMMON", "common", "" };
    const QStringList someTypes = { "", "1", "2", "12", "3" };
    const int count = 1 + random.bounded(maxCount);
    for (int i = 0; i < count; ++i) {
        TOxRecord* other = i == 0 ? nullptr : &tree.records()[random.bounded(i)];
        TOxRecord& record = !other   ? tree.add()
            : random.bounded(2) == 0 ? tree.addFirst(*other)
                                     : tree.addNext(*other);
        record.name = oneOf(someNames, random);
        record.recordType = oneOf(someTypes, random);
        record.keyRecord = random.bounded(2) == 0 ? &record : &tree.root();
    }
}

constexpr int ManyRecords = 100000;

struct BigTree {
    Tree tree;
    std::vector<const TOxRecord*> order; // every record, parents before children
};

std::unique_ptr<BigTree> bigTree(const QString& shape)
{
    auto big = std::make_unique<BigTree>();
    Tree& tree = big->tree;
    auto visit = [&big](TOxRecord& record) -> TOxRecord& {
        big->order.push_back(&record);
        return record;
    };
    TOxRecord* last = &visit(tree.add());
    if (shape == "children of one") {
        last = &visit(tree.addFirst(*last));
        while (big->order.size() < ManyRecords)
            last = &visit(tree.addNext(*last));
    } else if (shape == "brothers of the root") {
        while (big->order.size() < ManyRecords)
            last = &visit(tree.addNext(*last));
    } else if (shape == "each below the one before") {
        while (big->order.size() < ManyRecords)
            last = &visit(tree.addFirst(*last));
    } else if (shape == "each below the one before, with a brother") {
        std::vector<TOxRecord*> brothers;
        while (big->order.size() + brothers.size() < ManyRecords) {
            last = &visit(tree.addFirst(*last));
            brothers.push_back(&tree.addNext(*last));
        }
        big->order.insert(big->order.end(), brothers.rbegin(), brothers.rend());
    } else {
        qFatal("No such shape");
    }
    for (std::size_t i = 0; i < big->order.size(); ++i)
        const_cast<TOxRecord*>(big->order[i])->name = QString::number(i);
    return big;
}

void bigTreeShapes()
{
    QTest::addColumn<QString>("shape");

    for (const char* shape : { "children of one", "brothers of the root",
             "each below the one before", "each below the one before, with a brother" })
        QTest::newRow(shape) << shape;
}

// Runs job where a recursion over many records would overflow the stack at once.
void runOnSmallStack(const std::function<void()>& job)
{
    const std::unique_ptr<QThread> thread(QThread::create(job));
    thread->setStackSize(256 * 1024);
    thread->start();
    thread->wait();
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

    void randomTreesAreWalked();
    void randomTreesAreSearched();
    void randomTreesAreChecked();

    void bigTreeIsWalked_data();
    void bigTreeIsWalked();
    void bigTreeIsSearched_data();
    void bigTreeIsSearched();
    void bigTreeIsChecked_data();
    void bigTreeIsChecked();
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

void tst_Record::checkRootAndChild()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    typed(tree.addFirst(root), "2");
    Index index({ "1 household", "2 person", "2 person" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(3));
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_Record::checkRepeatsChildrenForEveryLine()
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

void tst_Record::checkSkipsBrothersOfTheRoot()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    typed(tree.addNext(root), "2");
    Index index({ "1", "2", "2" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(1));
    QCOMPARE(root.checkQuestionnaire(&index, QString()), copies(3));
}

void tst_Record::checkWalksBrothersBelowTheRoot()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    TOxRecord& first = typed(tree.addFirst(root), "9"); // finds nothing, and its brothers still do
    TOxRecord& second = typed(tree.addNext(first), "2");
    typed(tree.addNext(second), "3");
    Index index({ "1", "1", "2", "3", "3", "3" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(2 + 2 * (1 + 3)));
}

void tst_Record::checkSkipsChildrenOfRecordsWithoutLines()
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

void tst_Record::checkLooksForTheTypeOfTheKeyRecord()
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

void tst_Record::checkWithoutKeyRecord()
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

void tst_Record::checkWithoutLines()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "");
    typed(tree.addFirst(root), "");
    Index index;
    QCOMPARE(root.checkQuestionnaire(&index), QString());
    QCOMPARE(root.checkQuestionnaire(&index, QString()), QString());
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_Record::checkEmptyType()
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

void tst_Record::checkEmptyTypeBelowTheRoot()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    TOxRecord& child = typed(tree.addFirst(root), "");
    Index index({ "1", "", "" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(3));
    QCOMPARE(child.checkQuestionnaire(&index, QString()), copies(2));
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_Record::checkEmptyText_data()
{
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("lines of the root") << QStringList({ "1", "2" });
    QTest::newRow("lines of the child only") << QStringList({ "2" });
    QTest::newRow("lines of nobody") << QStringList({ "9" });
}

void tst_Record::checkEmptyText()
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

void tst_Record::checkWithParentKey_data()
{
    QTest::addColumn<QString>("parentKey");
    QTest::addColumn<int>("lines");

    QTest::newRow("null, as the key of every line") << QString() << 5;
    QTest::newRow("empty, as the key of every line") << "" << 5;
    QTest::newRow("another") << "1" << 0;
    QTest::newRow("a blank") << " " << 0;
}

void tst_Record::checkWithParentKey()
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

void tst_Record::checkIgnoresReferences()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    TOxRecordReference reference;
    root.addRecordReferenceToList(&reference);
    Index index({ "1", "", "" });
    QCOMPARE(root.checkQuestionnaire(&index), copies(1));
    QCOMPARE(index.status, static_cast<int>(Index::Untouched));
}

void tst_Record::checkLeavesTheIndex()
{
    Tree tree;
    TOxRecord& root = typed(tree.add(), "1");
    const QStringList lines = { "1", "2", "1" };
    Index index(lines, "a\r\nb");
    QCOMPARE(root.checkQuestionnaire(&index), copies(2, "a\r\nb"));
    QCOMPARE(*index.lines, lines);
    QCOMPARE(index.recordText, QString("a\r\nb"));
}

void tst_Record::checkOfMoreThanATextHolds()
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

void tst_Record::randomTreesAreWalked()
{
    QRandomGenerator random(1);
    for (int round = 0; round < 1000; ++round) {
        Tree tree;
        grow(tree, 20, random);
        std::vector<const TOxRecord*> expected;
        recursiveWalk(&tree.root(), expected);
        std::vector<const TOxRecord*> walked;
        for (const TOxRecord* record = &tree.root(); record; record = record->preOrderNext())
            walked.push_back(record);
        QVERIFY2(walked == expected, qPrintable(QString("round %1").arg(round)));
    }
}

void tst_Record::randomTreesAreSearched()
{
    QRandomGenerator random(2);
    for (int round = 0; round < 1000; ++round) {
        Tree tree;
        grow(tree, 20, random);
        for (TOxRecord& from : tree.records()) {
            for (const QString name : { "A", "B", "C", "Common", "COMMON", "common", "", "X" }) {
                QVERIFY2(from.retrieveRecord(name) == recursiveSearch(&from, name),
                    qPrintable(QString("%1 in round %2").arg(name).arg(round)));
            }
        }
    }
}

void tst_Record::randomTreesAreChecked()
{
    QRandomGenerator random(3);
    int filled = 0;
    int failed = 0;
    for (int round = 0; round < 3000; ++round) {
        Tree tree;
        grow(tree, 9, random);
        Index index({}, oneOf({ "T", "two\r\nlines", "12", "" }, random));
        index.recordTypeStart = random.bounded(2);
        index.recordTypeLength = random.bounded(3);
        for (int lines = random.bounded(5); lines > 0; --lines)
            *index.lines << oneOf({ "", "1", "2", "12", "x1", "x2", "x12", "3333" }, random);
        Index other(*index.lines, index.recordText);
        other.recordTypeStart = index.recordTypeStart;
        other.recordTypeLength = index.recordTypeLength;

        const QByteArray where = "round " + QByteArray::number(round);
        for (const TOxRecord& from : tree.records()) {
            const QString result = from.checkQuestionnaire(&index);
            QVERIFY2(result == recursiveCheck(&from, &other), where.constData());
            QVERIFY2(index.status == other.status, where.constData());
            filled += !result.isEmpty();
            failed += index.status == 6;
            index.status = other.status = Index::Untouched;
            for (const QString parentKey : { "", "1" }) {
                QVERIFY2(from.checkQuestionnaire(&index, parentKey)
                        == recursiveCheck(&from, &other, parentKey),
                    where.constData());
                QVERIFY2(index.status == Index::Untouched, where.constData());
            }
        }
    }
    QVERIFY(filled > 1000);
    QVERIFY(failed > 1000);
}

void tst_Record::bigTreeIsWalked_data()
{
    bigTreeShapes();
}

void tst_Record::bigTreeIsWalked()
{
    QFETCH(QString, shape);
    const auto big = bigTree(shape);
    std::vector<const TOxRecord*> walked;
    runOnSmallStack([&] {
        for (const TOxRecord* record = &big->tree.root(); record; record = record->preOrderNext())
            walked.push_back(record);
    });
    QVERIFY(walked == big->order);
}

void tst_Record::bigTreeIsSearched_data()
{
    bigTreeShapes();
}

void tst_Record::bigTreeIsSearched()
{
    QFETCH(QString, shape);
    const auto big = bigTree(shape);
    const TOxRecord* last = nullptr;
    const TOxRecord* middle = nullptr;
    const TOxRecord* missing = &big->tree.root();
    runOnSmallStack([&] {
        last = big->tree.root().retrieveRecord(big->order.back()->name);
        middle = big->tree.root().retrieveRecord(big->order[ManyRecords / 2]->name);
        missing = big->tree.root().retrieveRecord("Common");
    });
    QCOMPARE(last, big->order.back());
    QCOMPARE(middle, big->order[ManyRecords / 2]);
    QVERIFY(!missing);
}

void tst_Record::bigTreeIsChecked_data()
{
    bigTreeShapes();
}

void tst_Record::bigTreeIsChecked()
{
    QFETCH(QString, shape);
    const auto big = bigTree(shape);
    TOxRecord& root = big->tree.root();
    for (TOxRecord& record : big->tree.records())
        record.keyRecord = &root;
    root.recordType = "1";
    Index index({ "1", "2" });
    QString checked;
    QString below;
    runOnSmallStack([&] {
        below = root.checkQuestionnaire(&index);
        checked = root.checkQuestionnaire(&index, QString());
    });
    QVERIFY(checked == copies(static_cast<int>(big->order.size())));
    QVERIFY(below == (shape == "brothers of the root" ? copies(1) : checked));
}

QTEST_APPLESS_MAIN(tst_Record)

#include "tst_Record.moc"
