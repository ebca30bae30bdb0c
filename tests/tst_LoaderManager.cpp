#include "DebugLines.h"
#include "ErrorOf.h"

#include <model_Tessel/DataImport.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/LoaderManager.h>

#include <QLoggingCategory>
#include <QtTest>

#include <memory>
#include <type_traits>

struct TDataProviderProperties {
    int untouched = 7;
};

namespace {

class Importer : public TDataImport {
public:
    QString getDataProviderId() override
    {
        return "id";
    }
    QString getDataProviderType() override
    {
        return "TYPE";
    }
};

} // namespace

class tst_LoaderManager : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void constructor();
    void destructorKeepsTheList();

    void withoutRegistry_data();
    void withoutRegistry();
    void withoutList();
    void initInstallsAnEmptyRegistry();
    void initReplacesTheRegistry();
    void destroyDoesNothing();
    void registerStoresNothing();
    void isTypeRegisterComparesExactly_data();
    void isTypeRegisterComparesExactly();

    void getDataClassLoaderFails_data();
    void getDataClassLoaderFails();
    void getDataClassLoaderForgetsTheNames();
    void getDataClassLoaderWorksWithoutRegistry();
    void getDataClassLoaderLogs();
    void getDataClassLoaderIsSilentWhenLoggingIsOff();

    void registerIOFormatDoesNothing();
};

void tst_LoaderManager::initTestCase()
{
    QVERIFY2(!pLoaderManager, "There is no registry before the first initialisation");
}

void tst_LoaderManager::init()
{
    pLoaderManager = nullptr;
}

void tst_LoaderManager::constructor()
{
    static_assert(std::is_base_of<QObject, TLoaderManager>::value, "hosts use it as a QObject");
    const TLoaderManager manager;
    QVERIFY(!manager.parent());
    QCOMPARE(manager.metaObject(), &QObject::staticMetaObject);
    QVERIFY(manager.formatNames);
    QVERIFY(manager.formatNames->isEmpty());
    QVERIFY(!pLoaderManager);
}

void tst_LoaderManager::destructorKeepsTheList()
{
    auto* manager = new TLoaderManager;
    const std::unique_ptr<QList<QString>> formats(manager->formatNames);
    formats->append("CSPRO");
    delete manager;
    QCOMPARE(*formats, QList<QString>({ "CSPRO" }));
}

void tst_LoaderManager::withoutRegistry_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("CSPro") << "CSPRO";
    QTest::newRow("empty") << "";
    QTest::newRow("unknown") << "ODS";
}

void tst_LoaderManager::withoutRegistry()
{
    QFETCH(QString, name);
    const auto asked = errorOf([&] { IsTypeRegister(name); });
    QVERIFY(asked);
    QCOMPARE(asked->className, QString("DataImport"));
    QCOMPARE(asked->code, 106);
    QCOMPARE(asked->text, QString());
    QCOMPARE(asked->line, 0);

    TLoaderManager other;
    TDataProviderProperties properties;
    const auto registered = errorOf([&] { other.RegisterLoader(&properties); });
    QVERIFY(registered);
    QCOMPARE(registered->className, QString("DataImport"));
    QCOMPARE(registered->code, 106);
    QCOMPARE(registered->text, QString());
    QVERIFY(!pLoaderManager);
}

void tst_LoaderManager::withoutList()
{
    TLoaderManager::InitDataClassLoader();
    delete pLoaderManager->formatNames;
    pLoaderManager->formatNames = nullptr;
    const auto asked = errorOf([] { IsTypeRegister("CSPRO"); });
    QVERIFY(asked);
    QCOMPARE(asked->code, 106);
    const auto registered = errorOf([] { pLoaderManager->RegisterLoader(nullptr); });
    QVERIFY(registered);
    QCOMPARE(registered->code, 106);
}

void tst_LoaderManager::initInstallsAnEmptyRegistry()
{
    TLoaderManager::InitDataClassLoader();
    QVERIFY(pLoaderManager);
    QVERIFY(pLoaderManager->formatNames->isEmpty());
    for (const QString name : { "CSPRO", "CSV", "SSPS", "SPSS", "STATA", "NONE", "" })
        QCOMPARE(IsTypeRegister(name), false);
}

void tst_LoaderManager::initReplacesTheRegistry()
{
    TLoaderManager::InitDataClassLoader();
    TLoaderManager* first = pLoaderManager;
    first->formatNames->append("CSPRO");
    QVERIFY(IsTypeRegister("CSPRO"));
    TLoaderManager::InitDataClassLoader();
    QVERIFY(pLoaderManager != first);
    QVERIFY(!IsTypeRegister("CSPRO"));
    QCOMPARE(*first->formatNames, QList<QString>({ "CSPRO" }));
}

void tst_LoaderManager::destroyDoesNothing()
{
    TLoaderManager::DestroyDataClassLoader();
    QVERIFY(!pLoaderManager);
    TLoaderManager::InitDataClassLoader();
    TLoaderManager* manager = pLoaderManager;
    manager->formatNames->append("CSPRO");
    TLoaderManager::DestroyDataClassLoader();
    QCOMPARE(pLoaderManager, manager);
    QVERIFY(IsTypeRegister("CSPRO"));
}

void tst_LoaderManager::registerStoresNothing()
{
    TLoaderManager::InitDataClassLoader();
    TLoaderManager* manager = pLoaderManager;
    TDataProviderProperties properties;
    manager->RegisterLoader(&properties);
    manager->RegisterLoader(&properties);
    manager->RegisterLoader(nullptr);
    QCOMPARE(pLoaderManager, manager);
    QVERIFY(manager->formatNames->isEmpty());
    QCOMPARE(properties.untouched, 7);
    QVERIFY(!IsTypeRegister("CSPRO"));
}

void tst_LoaderManager::isTypeRegisterComparesExactly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");

    QTest::newRow("first") << "CSPRO" << true;
    QTest::newRow("last") << "STATA" << true;
    QTest::newRow("other case") << "cspro" << false;
    QTest::newRow("part of a name") << "CSP" << false;
    QTest::newRow("name with a blank") << "CSPRO " << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("other") << "SPSS" << false;
}

void tst_LoaderManager::isTypeRegisterComparesExactly()
{
    QFETCH(QString, name);
    TLoaderManager::InitDataClassLoader();
    *pLoaderManager->formatNames << "CSPRO"
                                 << "STATA";
    QTEST(IsTypeRegister(name), "found");
}

void tst_LoaderManager::getDataClassLoaderFails_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("CSPro") << "CSPRO";
    QTest::newRow("Stata") << "STATA";
    QTest::newRow("unknown") << "ods \u00e9";
    QTest::newRow("empty") << "";
}

void tst_LoaderManager::getDataClassLoaderFails()
{
    QFETCH(QString, name);
    TLoaderManager::InitDataClassLoader();
    TLoaderManager* before = pLoaderManager;
    TDataProviderProperties properties;
    before->RegisterLoader(&properties);
    const DebugLines debugLines;
    const auto error = errorOf([&] { GetDataClassLoader(name); });
    QVERIFY(error);
    QCOMPARE(error->className, QString("DataImport"));
    QCOMPARE(error->code, 107);
    QCOMPARE(error->text, name);
    QCOMPARE(error->line, 0);
    QVERIFY(pLoaderManager);
    QVERIFY(pLoaderManager != before);
    QVERIFY(pLoaderManager->formatNames->isEmpty());
}

void tst_LoaderManager::getDataClassLoaderForgetsTheNames()
{
    TLoaderManager::InitDataClassLoader();
    pLoaderManager->formatNames->append("STATA");
    const DebugLines debugLines;
    const auto error = errorOf([] { GetDataClassLoader("STATA"); });
    QVERIFY(error);
    QCOMPARE(error->code, 107);
    QVERIFY(!IsTypeRegister("STATA"));
}

void tst_LoaderManager::getDataClassLoaderWorksWithoutRegistry()
{
    const DebugLines debugLines;
    const auto error = errorOf([] { GetDataClassLoader("CSPRO"); });
    QVERIFY(error);
    QCOMPARE(error->code, 107);
    QVERIFY(pLoaderManager);
    QVERIFY(!IsTypeRegister("CSPRO"));
}

void tst_LoaderManager::getDataClassLoaderLogs()
{
    const DebugLines debugLines;
    const auto error = errorOf([] { GetDataClassLoader("CSPRO"); });
    QVERIFY(error);
    QCOMPARE(debugLines.lines(),
        QStringList({ "GetDataClassLoader - In", "GetDataClassLoader - 2 -1",
            "GetDataClassLoader - 4", quoted(error->getErrorMessage()) }));
}

void tst_LoaderManager::getDataClassLoaderIsSilentWhenLoggingIsOff()
{
    QLoggingCategory::setFilterRules("default.debug=false");
    const DebugLines debugLines;
    const auto error = errorOf([] { GetDataClassLoader("CSPRO"); });
    QLoggingCategory::setFilterRules(QString());
    QVERIFY(error);
    QCOMPARE(debugLines.lines(), QStringList());
}

void tst_LoaderManager::registerIOFormatDoesNothing()
{
    Importer importer;
    importer.registerIOFormat();
    QVERIFY(!pLoaderManager);
    TLoaderManager::InitDataClassLoader();
    importer.registerIOFormat();
    QVERIFY(pLoaderManager->formatNames->isEmpty());
    QVERIFY(importer.fields->isEmpty());
}

QTEST_APPLESS_MAIN(tst_LoaderManager)

#include "tst_LoaderManager.moc"
