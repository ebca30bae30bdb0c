#include "BareField.h"

#include <model_Tessel/DataImport.h>
#include <model_Tessel/GenericField.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <type_traits>
#include <vector>

namespace {

// A field that counts its kind's deaths.
class Field : public BareField {
public:
    explicit Field(const QString& fieldName)
        : BareField(nullptr)
    {
        name = fieldName;
    }
    ~Field() override
    {
        ++destroyed;
    }

    static int destroyed;
};

int Field::destroyed = 0;

// The smallest importer: the base's behaviour with the two answers it demands.
class Importer : public TDataImport {
public:
    using TDataImport::TDataImport;

    QString getDataProviderId() override
    {
        return QStringLiteral("id");
    }
    QString getDataProviderType() override
    {
        ++typeQuestions;
        return QStringLiteral("TYPE");
    }

    int typeQuestions = 0;
};

QStringList steps;

void recordStep(QtMsgType, const QMessageLogContext&, const QString& text)
{
    steps.append(text);
}

// An importer that finds its fields when it is opened.
class OpeningImporter : public Importer {
public:
    bool openFile() override
    {
        steps.append(QStringLiteral("openFile"));
        openDataImport();
        for (Field& field : found)
            addField(&field);
        return result;
    }

    bool result = true;
    Field found[3] = { Field(QStringLiteral("B")), Field(QStringLiteral("A")),
        Field(QStringLiteral("B")) };
};

} // namespace

class tst_DataImport : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void defaultConstructor();
    void constructorWithName_data();
    void constructorWithName();
    void fieldsStandInDeclarationOrder();
    void virtualDefaults();
    void groupDefaults_data();
    void groupDefaults();
    void getDictionaryDoesNothing();
    void layoutSourceIsNewEachTime();

    void initDataImportAsksForTheType();
    void openDataImportStartsAfresh();
    void openDataImportLeavesTheOldList();
    void closeDataImport();
    void destructorLeavesFields();

    void addField();
    void addFieldOfTheSameName();
    void addFieldIndexesTheNameOfThatMoment();
    void fieldByName_data();
    void fieldByName();
    void getField_data();
    void getField();

    void setSourceName_data();
    void setSourceName();
    void setSourceNameForgetsTheOlder();
    void setDataSourceName_data();
    void setDataSourceName();
    void setDataSourceNameOfRelativeSource();
    void setDataSourceNameWithoutASource_data();
    void setDataSourceNameWithoutASource();

    void selectLayoutSourceListsTheNames();
    void selectLayoutSourceOfClosedImporter();
    void selectLayoutSourceLogsFirst();

private:
    void create(const QString& path) const;
    QString inRoot(const QString& path) const;

    QString workingDirectory;
    std::unique_ptr<QTemporaryDir> directory;
};

// Every test runs in an empty directory of its own.
void tst_DataImport::init()
{
    workingDirectory = QDir::currentPath();
    directory = std::make_unique<QTemporaryDir>();
    QVERIFY2(directory->isValid(), qPrintable(directory->errorString()));
    QVERIFY(QDir::setCurrent(directory->path()));
    steps.clear();
}

void tst_DataImport::cleanup()
{
    QVERIFY(QDir::setCurrent(workingDirectory));
    directory.reset();
}

// Makes an empty file, and the directories on the way to it.
void tst_DataImport::create(const QString& path) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.errorString()));
}

// Absolute path of a relative one; the current directory has no symbolic links in its path.
QString tst_DataImport::inRoot(const QString& path) const
{
    return QDir::currentPath() + QLatin1Char('/') + path;
}

void tst_DataImport::defaultConstructor()
{
    const Importer importer;
    QVERIFY(importer.auxName.isEmpty());
    QVERIFY(importer.sourceName.isEmpty());
    QVERIFY(importer.getSourceName().isEmpty());
    QVERIFY(importer.dataSourceName.isEmpty());
    QVERIFY(importer.getDataSourceName().isEmpty());
    QVERIFY(importer.fields);
    QVERIFY(importer.fields->isEmpty());
    QVERIFY(importer.fieldsByName.empty());
    QVERIFY(importer.extraList.isEmpty());
    QCOMPARE(importer.typeQuestions, 0);

    static_assert(std::is_abstract<TDataImport>::value);
    static_assert(std::has_virtual_destructor<TDataImport>::value);
    static_assert(std::is_same<decltype(importer.fields), QList<TGenericField*>*>::value);
    static_assert(
        std::is_same<decltype(importer.fieldsByName), std::map<QString, TGenericField*>>::value);
    static_assert(std::is_same<decltype(importer.importRatio), double>::value);
    static_assert(sizeof(importer.importSlotA) == 8 && sizeof(importer.importSlotB) == 8
        && sizeof(importer.importSlotC) == 8 && sizeof(importer.importSlotD) == 8
        && sizeof(importer.importSlotE) == 8 && sizeof(importer.importSlotF) == 8);
}

void tst_DataImport::constructorWithName_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("bare name of no file") << "census.dcf";
    QTest::newRow("bare name of a file") << "there.dcf";
    QTest::newRow("relative path") << "../x/./census.dcf";
    QTest::newRow("absolute path of no file") << "/no/such/census.dcf";
    QTest::newRow("empty") << "";
}

void tst_DataImport::constructorWithName()
{
    QFETCH(QString, name);

    create(QStringLiteral("there.dcf"));
    const Importer importer(name);
    QCOMPARE(importer.sourceName, name);
    QCOMPARE(importer.getSourceName(), name);
    QVERIFY(importer.auxName.isEmpty());
    QVERIFY(importer.dataSourceName.isEmpty());
    QVERIFY(importer.fields);
    QVERIFY(importer.fields->isEmpty());
    QVERIFY(importer.fieldsByName.empty());
    QVERIFY(importer.extraList.isEmpty());
    QCOMPARE(importer.importSlotA, 0);
    QCOMPARE(importer.importSlotB, 0);
    QCOMPARE(importer.importSlotC, 0);
    QCOMPARE(importer.importSlotD, 0);
    QCOMPARE(importer.typeQuestions, 0);
}

void tst_DataImport::fieldsStandInDeclarationOrder()
{
    const Importer i;
    const std::vector<const void*> addresses = { &i.auxName, &i.sourceName, &i.importSlotA,
        &i.importRatio, &i.importSlotB, &i.fields, &i.dataSourceName, &i.importSlotC,
        &i.importSlotE, &i.importSlotF, &i.fieldsByName, &i.importSlotD, &i.extraList };
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_DataImport::virtualDefaults()
{
    Importer importer;
    TDataImport& base = importer;
    QCOMPARE(base.openFile(), false);
    QCOMPARE(base.isMultiple(), false);
    QCOMPARE(base.getGroupCount(), 0);
    QVERIFY(base.getRecordTypeCurrent().isEmpty());
    QCOMPARE(base.getRecordTypeStart(), 0);
    QCOMPARE(base.getRecordTypeSize(), 0);
    QCOMPARE(base.getDataProviderId(), QStringLiteral("id"));
    QCOMPARE(base.getDataProviderType(), QStringLiteral("TYPE"));
}

void tst_DataImport::groupDefaults_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("value");

    QTest::newRow("first") << 0 << "1";
    QTest::newRow("later") << 5 << "H";
    QTest::newRow("negative") << -1 << "-1";
    QTest::newRow("empty value") << 1 << "";
}

void tst_DataImport::groupDefaults()
{
    QFETCH(int, index);
    QFETCH(QString, value);

    Importer importer;
    TDataImport& base = importer;
    QVERIFY(base.getGroupName(index).isEmpty());
    QVERIFY(base.getGroupValue(index).isEmpty());
    QCOMPARE(base.getRecordTypeIndex(value), -1);
}

void tst_DataImport::getDictionaryDoesNothing()
{
    Importer importer;
    Field field(QStringLiteral("A"));
    importer.addField(&field);
    QList<TOxSourceField*> list = { nullptr };
    QStringList layoutSources = { "A" };
    static_cast<TDataImport&>(importer).getDictionary(&list, &layoutSources);
    QCOMPARE(list.size(), 1);
    QVERIFY(!list.first());
    QCOMPARE(layoutSources, QStringList({ "A" }));
    importer.getDictionary(nullptr, nullptr);
    QCOMPARE(importer.fields->size(), 1);
}

void tst_DataImport::layoutSourceIsNewEachTime()
{
    Importer importer;
    Field field(QStringLiteral("A"));
    importer.addField(&field);
    const std::unique_ptr<QStringList> first(importer.getLayoutSource());
    const std::unique_ptr<QStringList> second(importer.getLayoutSource());
    QVERIFY(first && second);
    QVERIFY(first != second);
    QVERIFY(first->isEmpty());
    first->append(QStringLiteral("x"));
    QVERIFY(second->isEmpty());
}

void tst_DataImport::initDataImportAsksForTheType()
{
    Importer importer(QStringLiteral("a.dcf"));
    importer.initDataImport();
    QCOMPARE(importer.typeQuestions, 1);
    QCOMPARE(importer.sourceName, QStringLiteral("a.dcf"));
    QVERIFY(importer.auxName.isEmpty());
    QVERIFY(importer.fields->isEmpty());
}

void tst_DataImport::openDataImportStartsAfresh()
{
    Importer importer(QStringLiteral("a.dcf"));
    importer.dataSourceName = QStringLiteral("a.dat");
    Field first(QStringLiteral("A"));
    Field second(QStringLiteral("B"));
    importer.addField(&first);
    importer.addField(&second);
    const int destroyed = Field::destroyed;

    importer.openDataImport();
    QVERIFY(importer.fields);
    QVERIFY(importer.fields->isEmpty());
    QVERIFY(importer.fieldsByName.empty());
    QVERIFY(!importer.fieldByName(QStringLiteral("A")));
    QCOMPARE(Field::destroyed, destroyed);
    QCOMPARE(first.name, QStringLiteral("A"));
    QCOMPARE(importer.sourceName, QStringLiteral("a.dcf"));
    QCOMPARE(importer.dataSourceName, QStringLiteral("a.dat"));

    // The importer is as good as new.
    importer.addField(&second);
    QCOMPARE(importer.fields->size(), 1);
    QCOMPARE(importer.fieldByName(QStringLiteral("B")), static_cast<TGenericField*>(&second));
    importer.openDataImport();
    importer.openDataImport();
    QVERIFY(importer.fields->isEmpty());
    QCOMPARE(Field::destroyed, destroyed);
}

// Hosts that took the list keep it.
void tst_DataImport::openDataImportLeavesTheOldList()
{
    Importer importer;
    Field field(QStringLiteral("A"));
    importer.addField(&field);
    const std::unique_ptr<QList<TGenericField*>> old(importer.fields);
    importer.openDataImport();
    const std::unique_ptr<QList<TGenericField*>> current(importer.fields);
    QVERIFY(current != old);
    QVERIFY(current->isEmpty());
    QCOMPARE(*old, QList<TGenericField*>({ &field }));
    importer.addField(&field);
    QCOMPARE(old->size(), 1);
}

void tst_DataImport::closeDataImport()
{
    Importer importer(QStringLiteral("a.dcf"));
    QCOMPARE(importer.closeDataImport(), true);
    Field field(QStringLiteral("A"));
    importer.addField(&field);
    QCOMPARE(importer.closeDataImport(), true);
    QCOMPARE(importer.fields->size(), 1);
    QCOMPARE(importer.fieldByName(QStringLiteral("A")), static_cast<TGenericField*>(&field));
    QCOMPARE(importer.sourceName, QStringLiteral("a.dcf"));
}

// Hosts hold list and fields longer than their importer.
void tst_DataImport::destructorLeavesFields()
{
    const auto field = std::make_unique<Field>(QStringLiteral("A"));
    const int destroyed = Field::destroyed;
    std::unique_ptr<TDataImport> importer = std::make_unique<Importer>();
    importer->addField(field.get());
    const std::unique_ptr<QList<TGenericField*>> fields(importer->fields);
    importer.reset();
    QCOMPARE(Field::destroyed, destroyed);
    QCOMPARE(fields->size(), 1);
    QCOMPARE(fields->first(), static_cast<TGenericField*>(field.get()));
    QCOMPARE(field->name, QStringLiteral("A"));
}

void tst_DataImport::addField()
{
    Importer importer;
    Field z(QStringLiteral("Z"));
    Field a(QStringLiteral("A"));
    Field unnamed { QString() };
    for (Field* field : { &z, &a, &unnamed })
        importer.addField(field);
    QCOMPARE(*importer.fields, QList<TGenericField*>({ &z, &a, &unnamed }));
    const std::map<QString, TGenericField*> index = { { QStringLiteral("Z"), &z },
        { QStringLiteral("A"), &a }, { QString(), &unnamed } };
    QVERIFY(importer.fieldsByName == index);
}

void tst_DataImport::addFieldOfTheSameName()
{
    Importer importer;
    Field first(QStringLiteral("A"));
    Field other(QStringLiteral("B"));
    Field second(QStringLiteral("A"));
    for (Field* field : { &first, &other, &second })
        importer.addField(field);
    QCOMPARE(*importer.fields, QList<TGenericField*>({ &first, &other, &second }));
    QCOMPARE(importer.fieldByName(QStringLiteral("A")), static_cast<TGenericField*>(&second));
    QCOMPARE(importer.fieldByName(QStringLiteral("B")), static_cast<TGenericField*>(&other));
    QCOMPARE(int(importer.fieldsByName.size()), 2);

    // One field twice is two entries as well.
    importer.addField(&first);
    QCOMPARE(importer.fields->size(), 4);
    QCOMPARE(importer.fieldByName(QStringLiteral("A")), static_cast<TGenericField*>(&first));
}

void tst_DataImport::addFieldIndexesTheNameOfThatMoment()
{
    Importer importer;
    Field field(QStringLiteral("OLD"));
    importer.addField(&field);
    field.name = QStringLiteral("NEW");
    QCOMPARE(importer.fieldByName(QStringLiteral("OLD")), static_cast<TGenericField*>(&field));
    QVERIFY(!importer.fieldByName(QStringLiteral("NEW")));
}

void tst_DataImport::fieldByName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");

    QTest::newRow("first") << "SEX" << 0;
    QTest::newRow("same letters in lower case") << "sex" << 1;
    QTest::newRow("last") << "SEX_2" << 2;
    QTest::newRow("start of a name") << "SE" << -1;
    QTest::newRow("mixed case") << "Sex" << -1;
    QTest::newRow("blank behind it") << "SEX " << -1;
    QTest::newRow("unknown") << "AGE" << -1;
    QTest::newRow("empty") << "" << -1;
}

void tst_DataImport::fieldByName()
{
    QFETCH(QString, name);
    QFETCH(int, index);

    Field fields[] = { Field(QStringLiteral("SEX")), Field(QStringLiteral("sex")),
        Field(QStringLiteral("SEX_2")) };
    Importer importer;
    QVERIFY(!importer.fieldByName(name));
    for (Field& field : fields)
        importer.addField(&field);
    TGenericField* const expected = index < 0 ? nullptr : &fields[index];
    QCOMPARE(importer.fieldByName(name), expected);
    // A search adds nothing to the index.
    QCOMPARE(int(importer.fieldsByName.size()), 3);
}

void tst_DataImport::getField_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("isThere");

    QTest::newRow("first") << 0 << true;
    QTest::newRow("middle") << 1 << true;
    QTest::newRow("last") << 2 << true;
    QTest::newRow("right behind the last") << 3 << false;
    QTest::newRow("above the count") << 4 << false;
    QTest::newRow("far above the count") << 1000000 << false;
    QTest::newRow("negative") << -1 << false;
}

void tst_DataImport::getField()
{
    QFETCH(int, index);
    QFETCH(bool, isThere);

    Field fields[] = { Field(QStringLiteral("B")), Field(QStringLiteral("A")),
        Field(QStringLiteral("B")) };
    Importer importer;
    for (Field& field : fields)
        importer.addField(&field);
    TGenericField* const expected = isThere ? &fields[index] : nullptr;
    QCOMPARE(importer.getField(index), expected);
    QVERIFY(!Importer().getField(1));
}

void tst_DataImport::setSourceName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isAbsolute");
    QTest::addColumn<QString>("stored");

    QTest::newRow("bare name") << "census.dcf" << false << "census.dcf";
    QTest::newRow("relative path") << "a/b/dict.dcf" << false << "a/b/dict.dcf";
    QTest::newRow("absolute path") << "a/b/dict.dcf" << true << "a/b/dict.dcf";
    QTest::newRow("name with blanks and accents") << QString::fromUtf8(
        "a/mi c\u00f3digo.dcf") << false << QString::fromUtf8("a/mi c\u00f3digo.dcf");
    QTest::newRow("no such file") << "none.dcf" << false << "";
    QTest::newRow("no such absolute file") << "a/none.dcf" << true << "";
    QTest::newRow("no such directory") << "c/dict.dcf" << false << "";
    QTest::newRow("file of another directory") << "dict.dcf" << false << "";
}

void tst_DataImport::setSourceName()
{
    QFETCH(QString, path);
    QFETCH(bool, isAbsolute);
    QFETCH(QString, stored);

    create(QStringLiteral("census.dcf"));
    create(QStringLiteral("a/b/dict.dcf"));
    create(QString::fromUtf8("a/mi c\u00f3digo.dcf"));
    Importer importer;
    importer.setSourceName(isAbsolute ? inRoot(path) : path);
    const QString expected = stored.isEmpty() ? QString() : inRoot(stored);
    QCOMPARE(importer.sourceName, expected);
    QCOMPARE(importer.getSourceName(), expected);
    QVERIFY(importer.dataSourceName.isEmpty());
}

void tst_DataImport::setSourceNameForgetsTheOlder()
{
    create(QStringLiteral("census.dcf"));
    Importer importer(QStringLiteral("given.dcf"));
    importer.setSourceName(QStringLiteral("census.dcf"));
    QCOMPARE(importer.sourceName, inRoot(QStringLiteral("census.dcf")));
    importer.setSourceName(QStringLiteral("none.dcf"));
    QVERIFY(importer.sourceName.isEmpty());
}

void tst_DataImport::setDataSourceName_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isAbsolute");
    QTest::addColumn<QString>("stored");

    const auto row = [](const char* name, const QStringList& files, const char* path,
                         bool isAbsolute, const char* stored) {
        QTest::newRow(name) << files << QString::fromUtf8(path) << isAbsolute
                            << QString::fromUtf8(stored);
    };
    // The dictionary is a/b/dict.dcf in every row.
    row("file in the working directory", { "data.dat" }, "data.dat", false, "data.dat");
    row("file by a relative path", { "c/data.dat" }, "c/data.dat", false, "c/data.dat");
    row("file by an absolute path", { "c/data.dat" }, "c/data.dat", true, "c/data.dat");
    row("file that is there wins over the joined name", { "data.dat", "a/bdata.dat" }, "data.dat",
        false, "data.dat");
    row("directory and name joined", { "a/bdata.dat" }, "data.dat", false, "a/bdata.dat");
    row("only the name of a relative path is joined", { "a/bdata.dat" }, "c/d/data.dat", false,
        "a/bdata.dat");
    row("only the name of an absolute path is joined", { "a/bdata.dat" }, "c/data.dat", true,
        "a/bdata.dat");
    row("extension is part of the joined name", { "a/bdata", "a/bdata.dat.gz" }, "data.dat", false,
        "data.dat");
    row("file beside the dictionary is not tried", { "a/b/data.dat" }, "data.dat", false,
        "data.dat");
    row("file beside the dictionary's directory is not tried", { "a/data.dat" }, "data.dat", false,
        "data.dat");
    row("joined name in the working directory is not tried", { "bdata.dat" }, "data.dat", false,
        "data.dat");
    row("nothing there", {}, "data.dat", false, "data.dat");
    row("nothing there by a relative path", {}, "c/data.dat", false, "c/data.dat");
    row("nothing there by an absolute path", {}, "c/data.dat", true, "c/data.dat");
}

void tst_DataImport::setDataSourceName()
{
    QFETCH(QStringList, files);
    QFETCH(QString, path);
    QFETCH(bool, isAbsolute);
    QFETCH(QString, stored);

    create(QStringLiteral("a/b/dict.dcf"));
    for (const QString& file : qAsConst(files))
        create(file);
    Importer importer;
    importer.setSourceName(QStringLiteral("a/b/dict.dcf"));
    importer.setDataSourceName(isAbsolute ? inRoot(path) : path);
    QCOMPARE(importer.dataSourceName, inRoot(stored));
    QCOMPARE(importer.getDataSourceName(), inRoot(stored));
    QCOMPARE(importer.sourceName, inRoot(QStringLiteral("a/b/dict.dcf")));

    // A later name takes the place of an earlier one, whether its file is there or not.
    importer.setDataSourceName(QStringLiteral("later.dat"));
    QCOMPARE(importer.dataSourceName, inRoot(QStringLiteral("later.dat")));
}

// The dictionary need not exist, and its directory is made absolute before the name is joined.
void tst_DataImport::setDataSourceNameOfRelativeSource()
{
    create(QStringLiteral("a/bdata.dat"));
    Importer importer(QStringLiteral("a/b/none.dcf"));
    importer.setDataSourceName(QStringLiteral("data.dat"));
    QCOMPARE(importer.dataSourceName, inRoot(QStringLiteral("a/bdata.dat")));
    QCOMPARE(importer.sourceName, QStringLiteral("a/b/none.dcf"));
}

void tst_DataImport::setDataSourceNameWithoutASource_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("stored"); // seen from the working directory

    const auto row = [](const char* name, const QStringList& files, const char* path,
                         const char* stored) {
        QTest::newRow(name) << files << QString::fromUtf8(path) << QString::fromUtf8(stored);
    };
    row("a file", { "a/data.dat" }, "data.dat", "a/data.dat");
    row("a file by its path", { "a/c/data.dat" }, "c/data.dat", "a/c/data.dat");
    row("no file", {}, "data.dat", "a/data.dat");
    row("no file by that path, one of the name", { "a/data.dat" }, "c/data.dat", "a/c/data.dat");
    row("working directory and name joined", { "adata.dat" }, "c/data.dat", "adata.dat");
}

// The working directory, a here, stands for the dictionary's.
void tst_DataImport::setDataSourceNameWithoutASource()
{
    QFETCH(QStringList, files);
    QFETCH(QString, path);
    QFETCH(QString, stored);
    for (const QString& file : qAsConst(files))
        create(file);
    const QString root = QDir::currentPath();
    QVERIFY(QDir().mkpath(QStringLiteral("a")));
    QVERIFY(QDir::setCurrent(QStringLiteral("a")));
    Importer importer;
    importer.setDataSourceName(path);
    QCOMPARE(importer.dataSourceName, root + QLatin1Char('/') + stored);
    QVERIFY(importer.sourceName.isEmpty());
}

void tst_DataImport::selectLayoutSourceListsTheNames()
{
    for (bool result : { true, false }) {
        OpeningImporter importer;
        importer.result = result;
        QTest::ignoreMessage(QtDebugMsg, "DataImport - selectLayoutSource");
        const std::unique_ptr<QStringList> names(importer.selectLayoutSource());
        QVERIFY(names);
        QCOMPARE(*names, QStringList({ "B", "A", "B" }));
        QCOMPARE(steps.count(QStringLiteral("openFile")), 1);
        steps.clear();

        QTest::ignoreMessage(QtDebugMsg, "DataImport - selectLayoutSource");
        const std::unique_ptr<QStringList> again(importer.selectLayoutSource());
        QVERIFY(again != names);
        QCOMPARE(*again, *names);
        steps.clear();
    }
}

// A source that cannot be opened has the fields that it had.
void tst_DataImport::selectLayoutSourceOfClosedImporter()
{
    Importer importer;
    QTest::ignoreMessage(QtDebugMsg, "DataImport - selectLayoutSource");
    std::unique_ptr<QStringList> names(importer.selectLayoutSource());
    QVERIFY(names);
    QVERIFY(names->isEmpty());

    Field field(QStringLiteral("A"));
    Field unnamed { QString() };
    importer.addField(&field);
    importer.addField(&unnamed);
    field.name = QStringLiteral("RENAMED");
    QTest::ignoreMessage(QtDebugMsg, "DataImport - selectLayoutSource");
    names.reset(importer.selectLayoutSource());
    QCOMPARE(*names, QStringList({ "RENAMED", "" }));
    QCOMPARE(importer.fields->size(), 2);
}

void tst_DataImport::selectLayoutSourceLogsFirst()
{
    OpeningImporter importer;
    const QtMessageHandler previous = qInstallMessageHandler(recordStep);
    const std::unique_ptr<QStringList> names(importer.selectLayoutSource());
    qInstallMessageHandler(previous);
    QCOMPARE(steps, QStringList({ "DataImport - selectLayoutSource", "openFile" }));
    QCOMPARE(names->size(), 3);
}

QTEST_GUILESS_MAIN(tst_DataImport)

#include "tst_DataImport.moc"
