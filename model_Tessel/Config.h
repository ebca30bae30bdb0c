#pragma once

#include <model_Tessel/Entity.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QString>
#include <QStringList>

/*! The database that is generated, and its source. */
class MODEL_TESSEL_EXPORT ConfigDb {
public:
    ConfigDb();

    QString getName() const;
    void setName(const QString& text);
    QString getFolder() const;
    void setFolder(const QString& text);
    QString getProject() const;
    void setProject(const QString& text);
    QString getSourceFile() const;
    void setSourceFile(const QString& text);
    QString getGenerationType() const;
    void setGenerationType(const QString& text);
    const QString& getFileFilter() const;
    void setFileFilter(const QString& text);
    const QString& getSelectFilter() const;
    void setSelectFilter(const QString& text);
    const QString& getFilter() const;
    void setFilter(const QString& text);

private:
    QString m_name;
    QString m_folder;
    QString m_project;
    QString m_sourceFile;
    QString m_generationType;
    QString m_fileFilter;
    QString m_selectFilter;
    QString m_filter;
};

/*! Options of a database generation. */
class MODEL_TESSEL_EXPORT ConfigOptions {
public:
    ConfigOptions();

    bool getCreateNotAppMissingInRange() const;
    void setCreateNotAppMissingInRange(bool value);
    bool getCreateNoRanges() const;
    void setCreateNoRanges(bool value);

private:
    bool m_createNotAppMissingInRange = false;
    bool m_createNoRanges = false;
};

/*!
 * How one entity is generated, and which of its variables.
 *
 * Ownership: the list comes with the record and outlives it; a setter deletes nothing, and a copy
 * shares the list.
 */
class MODEL_TESSEL_EXPORT ConfigEntities {
public:
    ConfigEntities();

    QString getName() const;
    void setName(const QString& text);
    QString getRecType() const;
    void setRecType(const QString& text);
    bool getCreateCompound() const;
    void setCreateCompound(bool value);
    bool getAllVariables() const;
    void setAllVariables(bool value);
    bool getCheckSequence() const;
    void setCheckSequence(bool value);
    bool getCreateSDC() const;
    void setCreateSDC(bool value);
    bool getCheckDelete() const;
    void setCheckDelete(bool value);
    bool getCheckSelectable() const;
    void setCheckSelectable(bool value);
    QStringList* getVariables() const;
    void setVariables(QStringList* value);
    void addVariables(const QString& variable);

private:
    QString m_name;
    QString m_recType; /*!< record type in the source */
    bool m_createCompound = false;
    bool m_allVariables = false;
    bool m_checkSequence = false;
    bool m_createSDC = false;
    bool m_checkDelete = false;
    bool m_checkSelectable = false;
    QStringList* m_variables = new QStringList; /*!< names, in order */
};

/*!
 * The settings of one database generation.
 *
 * Ownership: the objects come with the record and outlive it; setters delete nothing, and a copy
 * shares them.
 */
class MODEL_TESSEL_EXPORT Config {
public:
    Config();

    ConfigDb* getDataBase() const;
    void setDataBase(ConfigDb* value);
    ConfigOptions* getOptions() const;
    void setOptions(ConfigOptions* value);
    QList<ConfigEntities*>* getEntities() const;
    void setEntities(QList<ConfigEntities*>* value);
    void addEntities(ConfigEntities* entity);

private:
    ConfigDb* m_dataBase = new ConfigDb;
    ConfigOptions* m_options = new ConfigOptions;
    QList<ConfigEntities*>* m_entities = new QList<ConfigEntities*>; /*!< in order */
};

/*!
 * The settings of splitting and sampling a database.
 *
 * Ownership: the entities come with the record and outlive it; setters delete nothing, and a copy
 * shares them.
 */
class MODEL_TESSEL_EXPORT ConfigToolsSplit {
public:
    ConfigToolsSplit();

    const QString& getFileName() const;
    void setFileName(const QString& text);
    const QString& getFolder() const;
    void setFolder(const QString& text);
    bool getOptionDownload() const;
    void setOptionDownload(bool value);
    TOxEntity* getEntitySelect() const;
    void setEntitySelect(TOxEntity* value);
    bool getOptionSampling() const;
    void setOptionSampling(bool value);
    double getFactor() const;
    void setFactor(double value);
    bool getRadioOutEveryX() const;
    void setRadioOutEveryX(bool value);
    bool getChkRestartSampling() const;
    void setChkRestartSampling(bool value);
    TOxEntity* getEntitySampling() const;
    void setEntitySampling(TOxEntity* value);
    TOxEntity* getEntityRestartSampling() const;
    void setEntityRestartSampling(TOxEntity* value);
    bool getChkMultidiciplinaryEntities() const;
    void setChkMultidiciplinaryEntities(bool value);

private:
    QString m_fileName;
    QString m_folder;
    bool m_optionDownload = false;
    TOxEntity* m_entitySelect = new TOxEntity;
    bool m_optionSampling = false;
    double m_factor = 0.0;
    bool m_radioOutEveryX = false;
    bool m_chkRestartSampling = false;
    TOxEntity* m_entitySampling = new TOxEntity;
    TOxEntity* m_entityRestartSampling = new TOxEntity;
    bool m_chkMultidiciplinaryEntities = false;
};

/*! The databases that the extension of one by another reads. */
class MODEL_TESSEL_EXPORT ConfigToolsExtend {
public:
    ConfigToolsExtend();

    const QString& getUrlPrimaryBd() const;
    void setUrlPrimaryBd(const QString& text);
    const QString& getUrlSecondaryBd() const;
    void setUrlSecondaryBd(const QString& text);

private:
    QString m_urlPrimaryBd;
    QString m_urlSecondaryBd;
};

/*! The files of a conversion to JSON. */
class MODEL_TESSEL_EXPORT ConfigWipxToJson {
public:
    ConfigWipxToJson();

    const QString& getInputFile() const;
    void setInputFile(const QString& text);
    const QString& getOutputFile() const;
    void setOutputFile(const QString& text);

private:
    QString m_inputFile;
    QString m_outputFile;
};

/*! How a CSV data source is laid out. */
class MODEL_TESSEL_EXPORT MetadataDataSource {
public:
    MetadataDataSource();

    bool getCsvHasHeader() const;
    void setCsvHasHeader(bool value);
    QString getCsvSeparator() const;
    void setCsvSeparator(const QString& text);
    QStringList getCsvFields() const;
    void setCsvFields(const QStringList& value);
    void addCsvFields(QString& field);

private:
    bool m_csvHasHeader = false;
    QString m_csvSeparator;
    QStringList m_csvFields; /*!< names, in order */
};

/*!
 * The data source of a dictionary.
 *
 * Ownership: the metadata come with the record and outlive it; setters delete nothing, and a copy
 * shares them.
 */
class MODEL_TESSEL_EXPORT Datasource {
public:
    Datasource();

    QString getType() const;
    void setType(const QString& text);
    QString getFile() const;
    void setFile(const QString& text);
    MetadataDataSource* getMetadataDataSource() const;
    void setMetadataDataSource(MetadataDataSource* value);

private:
    QString m_type;
    QString m_file;
    MetadataDataSource* m_metadataDataSource = new MetadataDataSource;
};

/*! A lookup file that a dictionary refers to. */
class MODEL_TESSEL_EXPORT LookupDictionary {
public:
    LookupDictionary();

    QString getName() const;
    void setName(const QString& text);
    QString getLabel() const;
    void setLabel(const QString& text);
    QString getFile() const;
    void setFile(const QString& text);
    QString getSeparator() const;
    void setSeparator(const QString& text);

private:
    QString m_name;
    QString m_label;
    QString m_file;
    QString m_separator;
};

/*!
 * Where a dictionary came from, and its lookup files.
 *
 * Ownership: the objects come with the record and outlive it; setters delete nothing, and a copy
 * shares them.
 */
class MODEL_TESSEL_EXPORT MetadataDictionary {
public:
    MetadataDictionary();

    Datasource* getDatasource() const;
    void setDatasource(Datasource* value);
    QList<LookupDictionary*>* getLookUp() const;
    void setLookUp(QList<LookupDictionary*>* value);
    void addLookUp(LookupDictionary* lookup);

private:
    Datasource* m_datasource = new Datasource;
    QList<LookupDictionary*>* m_lookUp = new QList<LookupDictionary*>; /*!< in order */
};

/*!
 * The dictionary that a database is generated from: a tree of entities and what is known of its
 * source.
 *
 * Ownership: the objects come with the record and outlive it; setters delete nothing, and a copy
 * shares them.
 */
class MODEL_TESSEL_EXPORT Dictionary {
public:
    Dictionary();

    TOxEntity* getRoot() const;
    void setRoot(TOxEntity* value);
    MetadataDictionary* getMetadataDictionary() const;
    void setMetadataDictionary(MetadataDictionary* value);

private:
    TOxEntity* m_root = new TOxEntity;
    MetadataDictionary* m_metadataDictionary = new MetadataDictionary;
};
