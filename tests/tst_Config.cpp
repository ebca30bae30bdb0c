#include "RecordFields.h"

#include <model_Tessel/Config.h>
#include <model_Tessel/model_Tessel.h>

#include <QtTest>

#include <type_traits>

namespace {

Owned own(const TOxEntity& entity)
{
    return ownedBy(entity, &TOxEntity::getChildren, &TOxEntity::getVariables);
}

Owned own(const ConfigEntities& entities)
{
    return ownedBy(entities, &ConfigEntities::getVariables);
}

Owned own(const Config& config)
{
    return ownedBy(config, &Config::getDataBase, &Config::getOptions, &Config::getEntities);
}

Owned own(const Datasource& source)
{
    return ownedBy(source, &Datasource::getMetadataDataSource);
}

// Objects that are held by others come before those others.
Owned operator+(Owned inner, const Owned& outer)
{
    inner.insert(inner.end(), outer.begin(), outer.end());
    return inner;
}

Owned own(const ConfigToolsSplit& split)
{
    return own(*split.getEntitySelect()) + own(*split.getEntitySampling())
        + own(*split.getEntityRestartSampling())
        + ownedBy(split, &ConfigToolsSplit::getEntitySelect, &ConfigToolsSplit::getEntitySampling,
            &ConfigToolsSplit::getEntityRestartSampling);
}

Owned own(const MetadataDictionary& metadata)
{
    return own(*metadata.getDatasource())
        + ownedBy(metadata, &MetadataDictionary::getDatasource, &MetadataDictionary::getLookUp);
}

Owned own(const Dictionary& dictionary)
{
    return own(*dictionary.getRoot()) + own(*dictionary.getMetadataDictionary())
        + ownedBy(dictionary, &Dictionary::getRoot, &Dictionary::getMetadataDictionary);
}

template <typename Record> RecordFields<Record> fieldsOf()
{
    static_assert(!std::is_polymorphic_v<Record>, "a plain record");
    return RecordFields<Record>([](const Record& record) { return own(record); });
}

bool isNewEntity(const TOxEntity& entity)
{
    return entity.getName().isEmpty() && entity.getChildren()->isEmpty()
        && entity.getVariables()->isEmpty();
}

} // namespace

class tst_Config : public QObject {
    Q_OBJECT

private slots:
    void fieldsOfConfig();
    void fieldsOfConfigDb();
    void fieldsOfConfigOptions();
    void fieldsOfConfigEntities();
    void fieldsOfConfigToolsSplit();
    void fieldsOfConfigToolsExtend();
    void fieldsOfConfigWipxToJson();
    void fieldsOfDictionary();
    void fieldsOfMetadataDictionary();
    void fieldsOfDatasource();
    void fieldsOfMetadataDataSource();
    void fieldsOfLookupDictionary();

    void newConfig();
    void newConfigToolsSplit();
    void newDictionary();
    void addAppends();
    void csvFields();
    void copiesShareObjects();
    void moduleHoldsNothing();
};

void tst_Config::fieldsOfConfig()
{
    using C = Config;
    auto fields = fieldsOf<C>();
    fields.addObject("dataBase", &C::getDataBase, &C::setDataBase,
        [](const ConfigDb& dataBase) { return dataBase.getName().isEmpty(); });
    fields.addObject("options", &C::getOptions, &C::setOptions,
        [](const ConfigOptions& options) { return !options.getCreateNoRanges(); });
    fields.addList("entities", &C::getEntities, &C::setEntities);
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfConfigDb()
{
    using C = ConfigDb;
    RecordFields<C> fields;
    fields.add<QString>("name", &C::getName, &C::setName, "");
    fields.add<QString>("folder", &C::getFolder, &C::setFolder, "");
    fields.add<QString>("project", &C::getProject, &C::setProject, "");
    fields.add<QString>("sourceFile", &C::getSourceFile, &C::setSourceFile, "");
    fields.add<QString>("generationType", &C::getGenerationType, &C::setGenerationType, "");
    fields.add<const QString&>("fileFilter", &C::getFileFilter, &C::setFileFilter, "");
    fields.add<const QString&>("selectFilter", &C::getSelectFilter, &C::setSelectFilter, "");
    fields.add<const QString&>("filter", &C::getFilter, &C::setFilter, "");
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfConfigOptions()
{
    using C = ConfigOptions;
    RecordFields<C> fields;
    fields.add<bool>("createNotAppMissingInRange", &C::getCreateNotAppMissingInRange,
        &C::setCreateNotAppMissingInRange, false);
    fields.add<bool>("createNoRanges", &C::getCreateNoRanges, &C::setCreateNoRanges, false);
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfConfigEntities()
{
    using C = ConfigEntities;
    auto fields = fieldsOf<C>();
    fields.add<QString>("name", &C::getName, &C::setName, "");
    fields.add<QString>("recType", &C::getRecType, &C::setRecType, "");
    fields.add<bool>("createCompound", &C::getCreateCompound, &C::setCreateCompound, false);
    fields.add<bool>("allVariables", &C::getAllVariables, &C::setAllVariables, false);
    fields.add<bool>("checkSequence", &C::getCheckSequence, &C::setCheckSequence, false);
    fields.add<bool>("createSDC", &C::getCreateSDC, &C::setCreateSDC, false);
    fields.add<bool>("checkDelete", &C::getCheckDelete, &C::setCheckDelete, false);
    fields.add<bool>("checkSelectable", &C::getCheckSelectable, &C::setCheckSelectable, false);
    fields.addList("variables", &C::getVariables, &C::setVariables);
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfConfigToolsSplit()
{
    using C = ConfigToolsSplit;
    auto fields = fieldsOf<C>();
    fields.add<const QString&>("fileName", &C::getFileName, &C::setFileName, "");
    fields.add<const QString&>("folder", &C::getFolder, &C::setFolder, "");
    fields.add<bool>("optionDownload", &C::getOptionDownload, &C::setOptionDownload, false);
    fields.addObject("entitySelect", &C::getEntitySelect, &C::setEntitySelect, isNewEntity);
    fields.add<bool>("optionSampling", &C::getOptionSampling, &C::setOptionSampling, false);
    fields.add<double>("factor", &C::getFactor, &C::setFactor, 0.0);
    fields.add<bool>("radioOutEveryX", &C::getRadioOutEveryX, &C::setRadioOutEveryX, false);
    fields.add<bool>(
        "chkRestartSampling", &C::getChkRestartSampling, &C::setChkRestartSampling, false);
    fields.addObject("entitySampling", &C::getEntitySampling, &C::setEntitySampling, isNewEntity);
    fields.addObject("entityRestartSampling", &C::getEntityRestartSampling,
        &C::setEntityRestartSampling, isNewEntity);
    fields.add<bool>("chkMultidiciplinaryEntities", &C::getChkMultidiciplinaryEntities,
        &C::setChkMultidiciplinaryEntities, false);
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfConfigToolsExtend()
{
    using C = ConfigToolsExtend;
    RecordFields<C> fields;
    fields.add<const QString&>("urlPrimaryBd", &C::getUrlPrimaryBd, &C::setUrlPrimaryBd, "");
    fields.add<const QString&>("urlSecondaryBd", &C::getUrlSecondaryBd, &C::setUrlSecondaryBd, "");
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfConfigWipxToJson()
{
    using C = ConfigWipxToJson;
    RecordFields<C> fields;
    fields.add<const QString&>("inputFile", &C::getInputFile, &C::setInputFile, "");
    fields.add<const QString&>("outputFile", &C::getOutputFile, &C::setOutputFile, "");
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfDictionary()
{
    using D = Dictionary;
    auto fields = fieldsOf<D>();
    fields.addObject("root", &D::getRoot, &D::setRoot, isNewEntity);
    fields.addObject("metadataDictionary", &D::getMetadataDictionary, &D::setMetadataDictionary,
        [](const MetadataDictionary& metadata) { return metadata.getLookUp()->isEmpty(); });
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfMetadataDictionary()
{
    using M = MetadataDictionary;
    auto fields = fieldsOf<M>();
    fields.addObject("datasource", &M::getDatasource, &M::setDatasource,
        [](const Datasource& source) { return source.getType().isEmpty(); });
    fields.addList("lookUp", &M::getLookUp, &M::setLookUp);
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfDatasource()
{
    using D = Datasource;
    auto fields = fieldsOf<D>();
    fields.add<QString>("type", &D::getType, &D::setType, "");
    fields.add<QString>("file", &D::getFile, &D::setFile, "");
    fields.addObject("metadataDataSource", &D::getMetadataDataSource, &D::setMetadataDataSource,
        [](const MetadataDataSource& metadata) { return metadata.getCsvFields().isEmpty(); });
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfMetadataDataSource()
{
    using M = MetadataDataSource;
    RecordFields<M> fields;
    fields.add<bool>("csvHasHeader", &M::getCsvHasHeader, &M::setCsvHasHeader, false);
    fields.add<QString>("csvSeparator", &M::getCsvSeparator, &M::setCsvSeparator, "");
    fields.add<QStringList>("csvFields", &M::getCsvFields, &M::setCsvFields, {}, { "A", "B" });
    fields.check();
    fields.checkCopies();
}

void tst_Config::fieldsOfLookupDictionary()
{
    using L = LookupDictionary;
    RecordFields<L> fields;
    fields.add<QString>("name", &L::getName, &L::setName, "");
    fields.add<QString>("label", &L::getLabel, &L::setLabel, "");
    fields.add<QString>("file", &L::getFile, &L::setFile, "");
    fields.add<QString>("separator", &L::getSeparator, &L::setSeparator, "");
    fields.check();
    fields.checkCopies();
}

void tst_Config::newConfig()
{
    const Config config;
    const Owned owned = own(config);
    const ConfigDb& dataBase = *config.getDataBase();
    for (const QString& text : { dataBase.getName(), dataBase.getFolder(), dataBase.getProject(),
             dataBase.getSourceFile(), dataBase.getGenerationType(), dataBase.getFileFilter(),
             dataBase.getSelectFilter(), dataBase.getFilter() })
        QCOMPARE(text, QString());
    QVERIFY(!config.getOptions()->getCreateNotAppMissingInRange());
    QVERIFY(!config.getOptions()->getCreateNoRanges());
    QVERIFY(config.getEntities()->isEmpty());
}

void tst_Config::newConfigToolsSplit()
{
    const ConfigToolsSplit split;
    const Owned owned = own(split);
    QVERIFY(split.getEntitySelect() != split.getEntitySampling());
    QVERIFY(split.getEntitySampling() != split.getEntityRestartSampling());
    QVERIFY(split.getEntityRestartSampling() != split.getEntitySelect());
}

void tst_Config::newDictionary()
{
    const Dictionary dictionary;
    const Owned owned = own(dictionary);
    const Datasource& source = *dictionary.getMetadataDictionary()->getDatasource();
    QCOMPARE(source.getFile(), QString());
    QVERIFY(!source.getMetadataDataSource()->getCsvHasHeader());
    QCOMPARE(source.getMetadataDataSource()->getCsvSeparator(), QString());
}

void tst_Config::addAppends()
{
    ConfigEntities person;
    ConfigEntities household;
    const Owned ownedByEntities = own(person) + own(household);
    person.addVariables("SEX");
    person.addVariables("AGE");
    person.addVariables("SEX");
    QCOMPARE(*person.getVariables(), QStringList({ "SEX", "AGE", "SEX" }));
    QVERIFY(household.getVariables()->isEmpty());

    Config config;
    const Owned ownedByConfig = own(config);
    config.addEntities(&person);
    config.addEntities(&household);
    config.addEntities(&person);
    QCOMPARE(*config.getEntities(), QList<ConfigEntities*>({ &person, &household, &person }));

    MetadataDictionary metadata;
    const Owned ownedByMetadata = own(metadata);
    LookupDictionary places;
    LookupDictionary jobs;
    metadata.addLookUp(&places);
    metadata.addLookUp(&jobs);
    QCOMPARE(*metadata.getLookUp(), QList<LookupDictionary*>({ &places, &jobs }));
}

void tst_Config::csvFields()
{
    MetadataDataSource metadata;
    QString name = "A";
    metadata.addCsvFields(name);
    name = "B";
    metadata.addCsvFields(name);
    QCOMPARE(name, QString("B"));
    QCOMPARE(metadata.getCsvFields(), QStringList({ "A", "B" }));
    QStringList copied = metadata.getCsvFields();
    copied.append("C");
    QCOMPARE(metadata.getCsvFields(), QStringList({ "A", "B" }));

    MetadataDataSource copy = metadata;
    copy.addCsvFields(name);
    QCOMPARE(metadata.getCsvFields().size(), 2);
    metadata.setCsvFields({ "X" });
    QCOMPARE(metadata.getCsvFields(), QStringList({ "X" }));
    QCOMPARE(copy.getCsvFields(), QStringList({ "A", "B", "B" }));
}

void tst_Config::copiesShareObjects()
{
    const Config config;
    const Owned ownedByConfig = own(config);
    Config copy = config;
    copy.getDataBase()->setName("census");
    copy.addEntities(nullptr);
    QCOMPARE(config.getDataBase()->getName(), QString("census"));
    QCOMPARE(config.getEntities()->size(), 1);

    const Dictionary dictionary;
    const Owned ownedByDictionary = own(dictionary);
    const Dictionary other = dictionary;
    other.getRoot()->setName("CENSUS");
    other.getMetadataDictionary()->getDatasource()->setFile("census.dat");
    QCOMPARE(dictionary.getRoot()->getName(), QString("CENSUS"));
    QCOMPARE(dictionary.getMetadataDictionary()->getDatasource()->getFile(), QString("census.dat"));
}

void tst_Config::moduleHoldsNothing()
{
    static_assert(std::is_empty_v<Model_Tessel>, "it is the library as one object");
    const Model_Tessel module;
    QCOMPARE(sizeof(module), std::size_t(1));
}

QTEST_APPLESS_MAIN(tst_Config)

#include "tst_Config.moc"
