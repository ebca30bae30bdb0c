#include "RecordFields.h"

#include <model_Tessel/Entity.h>
#include <model_Tessel/Variable.h>

#include <QRandomGenerator>
#include <QThread>
#include <QtTest>

#include <deque>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

namespace {

const QString notFoundName = QStringLiteral("nullEntity");

Owned own(const TOxEntity& entity)
{
    return ownedBy(entity, &TOxEntity::getChildren, &TOxEntity::getVariables);
}

// Kept: the base has no virtual destructor.
QT_WARNING_PUSH
QT_WARNING_DISABLE_GCC("-Wnon-virtual-dtor")
QT_WARNING_DISABLE_CLANG("-Wnon-virtual-dtor")
class Derived : public TOxEntity {
public:
    std::string toString() const override
    {
        return "derived";
    }
};
QT_WARNING_POP

// Owns entities with their lists.
class Tree {
public:
    Tree() = default;
    ~Tree()
    {
        for (const TOxEntity& entity : m_entities)
            own(entity);
    }

    TOxEntity& add(const QString& name, TOxEntity* parent = nullptr)
    {
        m_entities.emplace_back();
        TOxEntity& entity = m_entities.back();
        entity.setName(name);
        if (parent)
            parent->addChildren(&entity);
        return entity;
    }
    TOxEntity& root()
    {
        return m_entities.front();
    }
    std::deque<TOxEntity>& entities()
    {
        return m_entities;
    }
    bool contains(const TOxEntity* entity) const
    {
        return std::any_of(m_entities.begin(), m_entities.end(),
            [entity](const TOxEntity& member) { return &member == entity; });
    }

private:
    Q_DISABLE_COPY(Tree)

    std::deque<TOxEntity> m_entities;
};

// What a search found: an entity of the tree, or a new one, which is deleted with its lists.
class Found {
public:
    Found(const Tree& tree, TOxEntity* entity)
        : m_entity(entity)
    {
        if (tree.contains(entity))
            return;
        m_owned = own(*entity);
        m_notFound.reset(entity);
    }

    bool isOfTree() const
    {
        return !m_notFound;
    }
    TOxEntity* operator->() const
    {
        return m_entity;
    }
    const TOxEntity* get() const
    {
        return m_entity;
    }

private:
    TOxEntity* m_entity;
    Owned m_owned;
    std::unique_ptr<TOxEntity> m_notFound;
};

// The search in its plain recursive form: an entity of the tree, or null for a new one.
TOxEntity* recursiveSearch(TOxEntity* entity, const QString& name)
{
    if (entity->getName() == name)
        return entity;
    for (TOxEntity* child : *entity->getChildren()) {
        TOxEntity* found = recursiveSearch(child, name);
        if ((found ? found->getName() : notFoundName) == name)
            return found;
    }
    return nullptr;
}

// Parents are marked by their depth: "A", "-B", "--C" are a chain, two of one depth are brothers.
void plant(Tree& tree, const QStringList& lines)
{
    std::vector<TOxEntity*> parents;
    for (const QString& line : lines) {
        const int depth = line.lastIndexOf('-') + 1;
        parents.resize(static_cast<std::size_t>(depth));
        parents.push_back(&tree.add(line.mid(depth), depth > 0 ? parents.back() : nullptr));
    }
}

constexpr int ManyEntities = 100'000;

// Runs job where a recursion over many entities would overflow the stack at once.
void runOnSmallStack(const std::function<void()>& job)
{
    const std::unique_ptr<QThread> thread(QThread::create(job));
    thread->setStackSize(256 * 1024);
    thread->start();
    thread->wait();
}

} // namespace

class tst_Entity : public QObject {
    Q_OBJECT

private slots:
    void fields();
    void copiesShareTheLists();
    void destructorLeavesTheLists();
    void addAppends();
    void toStringIsTheNameInUtf8_data();
    void toStringIsTheNameInUtf8();
    void toStringIsVirtual();

    void findEntity_data();
    void findEntity();
    void findOwnName();
    void findNothing();
    void findNullEntity_data();
    void findNullEntity();
    void findLooksAtTheListsAsTheyAre();
    void randomTreesAreSearched();
    void bigTreeIsSearched_data();
    void bigTreeIsSearched();
};

void tst_Entity::fields()
{
    using E = TOxEntity;
    RecordFields<E> fields(own);
    fields.add<QString>("name", &E::getName, &E::setName, "");
    fields.add<QString>("alias", &E::getAlias, &E::setAlias, "");
    fields.add<QString>("label", &E::getLabel, &E::setLabel, "");
    fields.add<bool>("selectable", &E::getSelectable, &E::setSelectable, false);
    fields.add<QString>("refCode", &E::getRefCode, &E::setRefCode, "");
    fields.add<QString>("refLabel", &E::getRefLabel, &E::setRefLabel, "");
    fields.add<int>("tag", &E::getTag, &E::setTag, 0);
    fields.addList<QList<TOxEntity*>>("children", &E::getChildren, &E::setChildren);
    fields.addList<QList<TOxVariable*>>("variables", &E::getVariables, &E::setVariables);
    fields.add<int>("level", &E::getLevel, &E::setLevel, 0);
    fields.add<bool>("compound", &E::getCompound, &E::setCompound, false);
    fields.add<bool>("sequence", &E::getSequence, &E::setSequence, false);
    fields.add<bool>("sdc", &E::getSdc, &E::setSdc, false);
    fields.add<QString>("recType", &E::getRecType, &E::setRecType, "");
    fields.add<QString>(
        "documentationEntity", &E::getDocumentationEntity, &E::setDocumentationEntity, "");
    fields.add<QString>("weightVariable", &E::getWeightVariable, &E::setWeightVariable, "");
    fields.add<bool>("sensitiveEntity", &E::getSensitiveEntity, &E::setSensitiveEntity, false);
    fields.add<bool>("isvirtual", &E::getIsvirtual, &E::setIsvirtual, false);
    fields.add<const QString&>("parent", &E::parent, &E::setParent, "");
    fields.add<const QString&>("path", &E::getPath, &E::setPath, "");
    fields.add<qint64>("nrElements", &E::getNrElements, &E::setNrElements, 0);
    fields.add<bool>("checkDelete", &E::getCheckDelete, &E::setCheckDelete, false);
    fields.check();
    fields.checkCopies();
}

void tst_Entity::copiesShareTheLists()
{
    TOxEntity entity;
    const Owned owned = own(entity);
    TOxEntity copy = entity;
    QCOMPARE(copy.getChildren(), entity.getChildren());
    QCOMPARE(copy.getVariables(), entity.getVariables());
    copy.addChildren(&entity);
    QCOMPARE(*entity.getChildren(), QList<TOxEntity*>({ &entity }));
}

void tst_Entity::destructorLeavesTheLists()
{
    TOxVariable variable;
    const Owned ownedByVariable = ownedBy(
        variable, &TOxVariable::getValueLabelElementList, &TOxVariable::getMetadataVariables);
    const std::unique_ptr<QList<Range*>> ranges(variable.getMetadataVariables()->getRange());
    TOxEntity child;
    const Owned ownedByChild = own(child);
    Owned owned;
    QList<TOxEntity*>* children = nullptr;
    QList<TOxVariable*>* variables = nullptr;
    {
        TOxEntity entity;
        owned = own(entity);
        children = entity.getChildren();
        variables = entity.getVariables();
        entity.addChildren(&child);
        entity.addVariables(&variable);
    }
    QCOMPARE(*children, QList<TOxEntity*>({ &child }));
    QCOMPARE(*variables, QList<TOxVariable*>({ &variable }));
}

void tst_Entity::addAppends()
{
    TOxEntity entity;
    const Owned owned = own(entity);
    auto* first = otherValue<TOxEntity*>();
    entity.addChildren(first);
    entity.addChildren(&entity);
    entity.addChildren(first);
    QCOMPARE(*entity.getChildren(), QList<TOxEntity*>({ first, &entity, first }));
    auto* variable = otherValue<TOxVariable*>();
    entity.addVariables(nullptr);
    entity.addVariables(variable);
    QCOMPARE(*entity.getVariables(), QList<TOxVariable*>({ nullptr, variable }));
}

void tst_Entity::toStringIsTheNameInUtf8_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QString() << QByteArray();
    QTest::newRow("ASCII") << "PERSON" << QByteArray("PERSON");
    QTest::newRow("two bytes") << QString(QChar(0xE9)) << QByteArray("\xC3\xA9");
    QTest::newRow("four bytes") << QString::fromUcs4(U"\U0001F3E0")
                                << QByteArray("\xF0\x9F\x8F\xA0");
}

void tst_Entity::toStringIsTheNameInUtf8()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    TOxEntity entity;
    const Owned owned = own(entity);
    entity.setName(name);
    entity.setLabel("label");
    QCOMPARE(QByteArray::fromStdString(entity.toString()), bytes);
}

void tst_Entity::toStringIsVirtual()
{
    const Derived derived;
    const TOxEntity& entity = derived;
    const Owned owned = own(entity);
    QCOMPARE(entity.toString(), std::string("derived"));
}

void tst_Entity::findEntity_data()
{
    QTest::addColumn<QStringList>("tree");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("found"); // line of the tree, -1 for none

    const QStringList census = { "CENSUS", "-HOUSEHOLD", "--PERSON", "---JOB", "--DEATH", "-PLACE",
        "--DEATH" };
    QTest::newRow("the root") << census << "CENSUS" << 0;
    QTest::newRow("a child") << census << "PLACE" << 5;
    QTest::newRow("the deepest") << census << "JOB" << 3;
    QTest::newRow("the earlier of two") << census << "DEATH" << 4;
    QTest::newRow("no such name") << census << "LIVESTOCK" << -1;
    QTest::newRow("other case") << census << "Person" << -1;
    QTest::newRow("part of a name") << census << "PERS" << -1;
    QTest::newRow("empty") << census << "" << -1;
    QTest::newRow("an empty name is a name") << QStringList({ "A", "-B", "-" }) << "" << 2;
    QTest::newRow("the root before a child") << QStringList({ "A", "-A" }) << "A" << 0;
    QTest::newRow("deep in an earlier branch before shallow in a later one")
        << QStringList({ "R", "-A", "--B", "---X", "-X" }) << "X" << 3;
    QTest::newRow("a parent before its child") << QStringList({ "R", "-X", "--X" }) << "X" << 1;
    QTest::newRow("the last of many brothers")
        << QStringList({ "R", "-A", "-B", "-C", "-D", "-E" }) << "E" << 5;
    QTest::newRow("an entity alone") << QStringList({ "R" }) << "X" << -1;
}

void tst_Entity::findEntity()
{
    QFETCH(QStringList, tree);
    QFETCH(QString, name);
    QFETCH(int, found);
    Tree planted;
    plant(planted, tree);
    const Found result(planted, planted.root().findEntity(name));
    QCOMPARE(result.isOfTree(), found >= 0);
    if (found >= 0)
        QCOMPARE(result.get(), &planted.entities()[static_cast<std::size_t>(found)]);
    else
        QCOMPARE(result->getName(), notFoundName);
}

void tst_Entity::findOwnName()
{
    TOxEntity entity;
    const Owned owned = own(entity);
    entity.setName("R");
    entity.addChildren(nullptr); // not looked at
    QCOMPARE(entity.findEntity("R"), &entity);
}

void tst_Entity::findNothing()
{
    Tree tree;
    plant(tree, { "R", "-A" });
    const Found first(tree, tree.root().findEntity("X"));
    const Found second(tree, tree.root().findEntity("X"));
    QVERIFY(!first.isOfTree());
    QVERIFY(first.get() != second.get());
    QCOMPARE(first->getName(), notFoundName);
    QVERIFY(first->getChildren()->isEmpty());
    QVERIFY(first->getVariables()->isEmpty());
    QCOMPARE(first->getLabel(), QString());
}

void tst_Entity::findNullEntity_data()
{
    QTest::addColumn<QStringList>("tree");
    QTest::addColumn<int>("found"); // line of the tree, -1 for none

    QTest::newRow("nobody") << QStringList({ "R", "-A", "--B", "-C" }) << -1;
    QTest::newRow("alone") << QStringList({ "R" }) << -1;
    QTest::newRow("the root") << QStringList({ "nullEntity", "-nullEntity" }) << 0;
    QTest::newRow("the first child") << QStringList({ "R", "-nullEntity", "-A" }) << 1;
    QTest::newRow("the first child's first child")
        << QStringList({ "R", "-A", "--nullEntity", "-nullEntity" }) << 2;
    QTest::newRow("behind a first child, which ends the search")
        << QStringList({ "R", "-A", "-nullEntity" }) << -1;
    QTest::newRow("behind a first grandchild, which ends the search")
        << QStringList({ "R", "-A", "--B", "--nullEntity", "-nullEntity" }) << -1;
}

void tst_Entity::findNullEntity()
{
    QFETCH(QStringList, tree);
    QFETCH(int, found);
    Tree planted;
    plant(planted, tree);
    const Found result(planted, planted.root().findEntity(notFoundName));
    QCOMPARE(result->getName(), notFoundName);
    QCOMPARE(result.isOfTree(), found >= 0);
    if (found >= 0)
        QCOMPARE(result.get(), &planted.entities()[static_cast<std::size_t>(found)]);
}

void tst_Entity::findLooksAtTheListsAsTheyAre()
{
    Tree tree;
    plant(tree, { "R", "-A" });
    TOxEntity& other = tree.add("B");
    QList<TOxEntity*>* const before = tree.root().getChildren();
    QList<TOxEntity*> after = { &other };
    tree.root().setChildren(&after);
    QCOMPARE(tree.root().findEntity("B"), &other);
    const Found removed(tree, tree.root().findEntity("A"));
    QVERIFY(!removed.isOfTree());
    other.setName("C");
    QCOMPARE(tree.root().findEntity("C"), &other);
    tree.root().setChildren(before);
    QCOMPARE(before->size(), 1);
}

void tst_Entity::randomTreesAreSearched()
{
    const QStringList names = { "A", "B", "C", "D", notFoundName, "" };
    QRandomGenerator random(1);
    int foundOnes = 0;
    for (int round = 0; round < 2000; ++round) {
        Tree tree;
        for (int count = 1 + random.bounded(12); count > 0; --count) {
            const int size = static_cast<int>(tree.entities().size());
            TOxEntity* parent = size == 0
                ? nullptr
                : &tree.entities()[static_cast<std::size_t>(random.bounded(size))];
            tree.add(names.at(random.bounded(names.size())), parent);
        }
        for (const QString& name : names) {
            const TOxEntity* expected = recursiveSearch(&tree.root(), name);
            const Found found(tree, tree.root().findEntity(name));
            QVERIFY2(expected ? found.get() == expected : !found.isOfTree(),
                qPrintable(QString("%1 in round %2").arg(name).arg(round)));
            foundOnes += found.isOfTree() ? 1 : 0;
        }
    }
    QVERIFY(foundOnes > 1000);
}

void tst_Entity::bigTreeIsSearched_data()
{
    QTest::addColumn<int>("brothers"); // below each parent; the next ones hang below the last

    QTest::newRow("each below the one before") << 1;
    QTest::newRow("each below the last of two") << 2;
    QTest::newRow("children of one") << ManyEntities;
}

void tst_Entity::bigTreeIsSearched()
{
    QFETCH(int, brothers);
    Tree tree;
    TOxEntity* parent = &tree.add("0");
    for (int i = 1; i < ManyEntities; ++i) {
        TOxEntity& entity = tree.add(QString::number(i), parent);
        if (i % brothers == 0)
            parent = &entity;
    }
    const TOxEntity* last = nullptr;
    const TOxEntity* middle = nullptr;
    TOxEntity* missing = nullptr;
    TOxEntity* nullEntity = nullptr;
    runOnSmallStack([&] {
        last = tree.root().findEntity(QString::number(ManyEntities - 1));
        middle = tree.root().findEntity(QString::number(ManyEntities / 2));
        missing = tree.root().findEntity("missing");
        nullEntity = tree.root().findEntity(notFoundName);
    });
    QCOMPARE(last, &tree.entities().back());
    QCOMPARE(middle, &tree.entities()[ManyEntities / 2]);
    QVERIFY(!Found(tree, missing).isOfTree());
    QVERIFY(!Found(tree, nullEntity).isOfTree());
}

QTEST_APPLESS_MAIN(tst_Entity)

#include "tst_Entity.moc"
