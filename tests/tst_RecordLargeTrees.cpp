#include "RecordTrees.h"

#include <model_Tessel/QuestIndex.h>
#include <model_Tessel/Record.h>

#include <QRandomGenerator>
#include <QThread>
#include <QtTest>

#include <functional>
#include <memory>
#include <vector>

namespace {

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

class tst_RecordLargeTrees : public QObject {
    Q_OBJECT

private slots:
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

void tst_RecordLargeTrees::randomTreesAreWalked()
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

void tst_RecordLargeTrees::randomTreesAreSearched()
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

void tst_RecordLargeTrees::randomTreesAreChecked()
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

void tst_RecordLargeTrees::bigTreeIsWalked_data()
{
    bigTreeShapes();
}

void tst_RecordLargeTrees::bigTreeIsWalked()
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

void tst_RecordLargeTrees::bigTreeIsSearched_data()
{
    bigTreeShapes();
}

void tst_RecordLargeTrees::bigTreeIsSearched()
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

void tst_RecordLargeTrees::bigTreeIsChecked_data()
{
    bigTreeShapes();
}

void tst_RecordLargeTrees::bigTreeIsChecked()
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

QTEST_APPLESS_MAIN(tst_RecordLargeTrees)

#include "tst_RecordLargeTrees.moc"
