#include "CSProDictionaries.h"

#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/DictionaryRelease.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/Variable.h>

#include <QPointer>
#include <QThread>

#include <functional>
#include <memory>

namespace {

// A text that entities share as their name; it is shared no more once all of them are deleted.
class Mark {
public:
    TOxEntity* newEntity() const
    {
        auto* entity = new TOxEntity;
        entity->setName(m_text);
        return entity;
    }
    bool isShared() const
    {
        return !m_text.isDetached();
    }

private:
    const QString m_text { 5, QLatin1Char('x') };
};

// Runs job where a recursion over many entities would overflow the stack at once.
void runOnSmallStack(const std::function<void()>& job)
{
    const std::unique_ptr<QThread> thread(QThread::create(job));
    thread->setStackSize(256 * 1024);
    thread->start();
    thread->wait();
}

// The objects that a dictionary was read into, each null once it was deleted.
struct ReadObjects {
    explicit ReadObjects(const TCSPro& dictionary)
    {
        for (TCSProItem* item : qAsConst(*dictionary.items)) {
            add(item);
            for (TCSProValueSet* valueSet : qAsConst(*item->valueSets)) {
                add(valueSet);
                for (TValueSetItem* entry : qAsConst(*valueSet->items))
                    add(entry);
            }
        }
    }

    void add(QObject* object)
    {
        pointers.append(object);
    }

    int alive() const
    {
        return int(std::count_if(pointers.begin(), pointers.end(),
            [](const QPointer<QObject>& object) { return !object.isNull(); }));
    }

    QVector<QPointer<QObject>> pointers;
};

// Three occurrences that share a set of two values, and an item whose set is linked to another's.
QString sharedAndLinked()
{
    return dictionary("[Item]\nName=A\nStart=2\nLen=1\nOccurrences=3\n"
                      "[ValueSet]\nName=AV\nValue=1;One\nValue=2;Two\n"
                      "[Item]\nName=B\nStart=6\nLen=1\n"
                      "[ValueSet]\nName=BV\nLink=L\nValue=1;One\n"
                      "[Item]\nName=C\nStart=7\nLen=1\n"
                      "[ValueSet]\nName=CV\nLink=L\n");
}

void load(TCSPro& dictionary, Reading reading, const QString& text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    dictionary.setReading(reading);
    dictionary.loadFromStr(&lines);
}

} // namespace

Q_DECLARE_METATYPE(Reading)

class tst_DictionaryRelease : public QObject {
    Q_OBJECT

private slots:
    void nothing();
    void whatHostsChanged();
    void sharedObjects();
    void deepTree();
    void searchResult();

    void model_data();
    void model();
    void modelWithoutItems();
    void modelTwice();
    void modelKeepsWhatWasTakenOut();
};

void tst_DictionaryRelease::nothing()
{
    releaseDictionary(nullptr);
    releaseEntity(nullptr);
    DictionaryPointer dictionary(new Dictionary);
    releaseEntity(dictionary->getRoot());
    dictionary->setRoot(nullptr);
    dictionary.reset();
    QVERIFY(!dictionary);
}

void tst_DictionaryRelease::whatHostsChanged()
{
    const Mark mark;
    auto* root = mark.newEntity();
    auto* child = mark.newEntity();
    root->addChildren(child);
    root->addChildren(nullptr);
    root->addVariables(nullptr);
    auto* changed = new TOxVariable;
    delete changed->getMetadataVariables()->getRange();
    delete changed->getMetadataVariables();
    changed->setMetadataVariables(nullptr);
    delete changed->getValueLabelElementList();
    changed->setValueLabelElementList(nullptr);
    child->addVariables(changed);
    delete child->getChildren();
    child->setChildren(nullptr);
    QVERIFY(mark.isShared());
    releaseEntity(root);
    QVERIFY(!mark.isShared());

    DictionaryPointer dictionary(new Dictionary);
    Datasource* source = dictionary->getMetadataDictionary()->getDatasource();
    delete source->getMetadataDataSource();
    source->setMetadataDataSource(nullptr);
    delete source;
    dictionary->getMetadataDictionary()->setDatasource(nullptr);
    delete dictionary->getMetadataDictionary()->getLookUp();
    dictionary->getMetadataDictionary()->setLookUp(nullptr);
    dictionary.reset();
    dictionary.reset(new Dictionary);
    delete dictionary->getMetadataDictionary()->getDatasource()->getMetadataDataSource();
    delete dictionary->getMetadataDictionary()->getDatasource();
    delete dictionary->getMetadataDictionary()->getLookUp();
    delete dictionary->getMetadataDictionary();
    dictionary->setMetadataDictionary(nullptr);
    dictionary.reset();
    QVERIFY(!dictionary);
}

void tst_DictionaryRelease::sharedObjects()
{
    const Mark mark;
    auto* root = mark.newEntity();
    auto* variable = new TOxVariable;
    variable->addValueLabelElement(new ValueLabelElement);
    variable->getMetadataVariables()->addItemRange(new Range);
    root->addVariables(variable);
    root->addVariables(new TOxVariable(*variable));
    auto* other = new TOxVariable;
    delete other->getMetadataVariables()->getRange();
    other->getMetadataVariables()->setRange(variable->getMetadataVariables()->getRange());
    root->addVariables(other);
    auto* child = mark.newEntity();
    root->addChildren(child);
    child->addChildren(mark.newEntity());
    child->addVariables(new TOxVariable);
    root->addChildren(new TOxEntity(*child)); // its lists are those of the child
    QVERIFY(mark.isShared());
    releaseEntity(root);
    QVERIFY(!mark.isShared());
}

void tst_DictionaryRelease::deepTree()
{
    constexpr int Depth = 100'000;
    const Mark mark;
    auto* root = mark.newEntity();
    TOxEntity* last = root;
    for (int i = 1; i < Depth; ++i) {
        auto* child = mark.newEntity();
        last->addChildren(child);
        last = child;
    }
    QVERIFY(mark.isShared());
    runOnSmallStack([root] { releaseEntity(root); });
    QVERIFY(!mark.isShared());
}

void tst_DictionaryRelease::searchResult()
{
    const DictionaryPointer dictionary(new Dictionary);
    dictionary->getRoot()->addChildren(new TOxEntity);
    TOxEntity* notFound = dictionary->getRoot()->findEntity("TRIP");
    QCOMPARE(notFound->getName(), QString("nullEntity"));
    releaseEntity(notFound);
    QCOMPARE(dictionary->getRoot()->getChildren()->size(), 1);
}

void tst_DictionaryRelease::model_data()
{
    QTest::addColumn<Reading>("reading");

    row("as written", Reading::AsWritten);
    row("established", Reading::Established);
}

void tst_DictionaryRelease::model()
{
    QFETCH(const Reading, reading);
    TCSPro dictionary;
    load(dictionary, reading, sharedAndLinked());
    const ReadObjects objects(dictionary);
    QVERIFY(objects.pointers.size() > 10);
    QCOMPARE(objects.alive(), objects.pointers.size());
    releaseModel(dictionary);
    QCOMPARE(objects.alive(), 0);
    QVERIFY(!dictionary.items && !dictionary.records && !dictionary.commonRecord);
    QVERIFY(!dictionary.lastItem && !dictionary.currentRecord);
    QVERIFY(dictionary.recordsByValue.empty());
}

void tst_DictionaryRelease::modelWithoutItems()
{
    TCSPro dictionary;
    releaseModel(dictionary);
    QVERIFY(!dictionary.items && !dictionary.commonRecord);
}

void tst_DictionaryRelease::modelTwice()
{
    TCSPro dictionary;
    load(dictionary, Reading::AsWritten, sharedAndLinked());
    releaseModel(dictionary);
    releaseModel(dictionary);
    QVERIFY(!dictionary.items);
}

void tst_DictionaryRelease::modelKeepsWhatWasTakenOut()
{
    TCSPro dictionary;
    load(dictionary, Reading::AsWritten, sharedAndLinked());
    const std::unique_ptr<TCSProItem> kept(dictionary.items->takeLast());
    const std::unique_ptr<TCSProRecord> record(dictionary.records->takeLast());
    const std::unique_ptr<QList<TCSProValueSet*>> sets(kept->valueSets);
    const std::unique_ptr<TCSProValueSet> set(sets->takeLast());
    const std::unique_ptr<QList<TValueSetItem*>> entries(set->items);
    releaseModel(dictionary);
    QCOMPARE(kept->name, QString("C"));
    QCOMPARE(record->name, QString("R"));
    QCOMPARE(set->name, QString("CV"));
}

QTEST_MAIN(tst_DictionaryRelease)

#include "tst_DictionaryRelease.moc"
