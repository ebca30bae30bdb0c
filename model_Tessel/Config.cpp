#include <model_Tessel/Config.h>

ConfigDb::ConfigDb() = default;

ConfigOptions::ConfigOptions() = default;

ConfigEntities::ConfigEntities() = default;

Config::Config() = default;

ConfigToolsSplit::ConfigToolsSplit() = default;

ConfigToolsExtend::ConfigToolsExtend() = default;

ConfigWipxToJson::ConfigWipxToJson() = default;

MetadataDataSource::MetadataDataSource() = default;

Datasource::Datasource() = default;

LookupDictionary::LookupDictionary() = default;

MetadataDictionary::MetadataDictionary() = default;

Dictionary::Dictionary() = default;

// clang-format off
QString ConfigDb::getName() const { return m_name; }
void ConfigDb::setName(const QString& text) { m_name = text; }
QString ConfigDb::getFolder() const { return m_folder; }
void ConfigDb::setFolder(const QString& text) { m_folder = text; }
QString ConfigDb::getProject() const { return m_project; }
void ConfigDb::setProject(const QString& text) { m_project = text; }
QString ConfigDb::getSourceFile() const { return m_sourceFile; }
void ConfigDb::setSourceFile(const QString& text) { m_sourceFile = text; }
QString ConfigDb::getGenerationType() const { return m_generationType; }
void ConfigDb::setGenerationType(const QString& text) { m_generationType = text; }
const QString& ConfigDb::getFileFilter() const { return m_fileFilter; }
void ConfigDb::setFileFilter(const QString& text) { m_fileFilter = text; }
const QString& ConfigDb::getSelectFilter() const { return m_selectFilter; }
void ConfigDb::setSelectFilter(const QString& text) { m_selectFilter = text; }
const QString& ConfigDb::getFilter() const { return m_filter; }
void ConfigDb::setFilter(const QString& text) { m_filter = text; }

bool ConfigOptions::getCreateNotAppMissingInRange() const { return m_createNotAppMissingInRange; }
void ConfigOptions::setCreateNotAppMissingInRange(bool value) { m_createNotAppMissingInRange = value; }
bool ConfigOptions::getCreateNoRanges() const { return m_createNoRanges; }
void ConfigOptions::setCreateNoRanges(bool value) { m_createNoRanges = value; }

QString ConfigEntities::getName() const { return m_name; }
void ConfigEntities::setName(const QString& text) { m_name = text; }
QString ConfigEntities::getRecType() const { return m_recType; }
void ConfigEntities::setRecType(const QString& text) { m_recType = text; }
bool ConfigEntities::getCreateCompound() const { return m_createCompound; }
void ConfigEntities::setCreateCompound(bool value) { m_createCompound = value; }
bool ConfigEntities::getAllVariables() const { return m_allVariables; }
void ConfigEntities::setAllVariables(bool value) { m_allVariables = value; }
bool ConfigEntities::getCheckSequence() const { return m_checkSequence; }
void ConfigEntities::setCheckSequence(bool value) { m_checkSequence = value; }
bool ConfigEntities::getCreateSDC() const { return m_createSDC; }
void ConfigEntities::setCreateSDC(bool value) { m_createSDC = value; }
bool ConfigEntities::getCheckDelete() const { return m_checkDelete; }
void ConfigEntities::setCheckDelete(bool value) { m_checkDelete = value; }
bool ConfigEntities::getCheckSelectable() const { return m_checkSelectable; }
void ConfigEntities::setCheckSelectable(bool value) { m_checkSelectable = value; }
QStringList* ConfigEntities::getVariables() const { return m_variables; }
void ConfigEntities::setVariables(QStringList* value) { m_variables = value; }
void ConfigEntities::addVariables(const QString& variable) { m_variables->append(variable); }

ConfigDb* Config::getDataBase() const { return m_dataBase; }
void Config::setDataBase(ConfigDb* value) { m_dataBase = value; }
ConfigOptions* Config::getOptions() const { return m_options; }
void Config::setOptions(ConfigOptions* value) { m_options = value; }
QList<ConfigEntities*>* Config::getEntities() const { return m_entities; }
void Config::setEntities(QList<ConfigEntities*>* value) { m_entities = value; }
void Config::addEntities(ConfigEntities* entity) { m_entities->append(entity); }

const QString& ConfigToolsSplit::getFileName() const { return m_fileName; }
void ConfigToolsSplit::setFileName(const QString& text) { m_fileName = text; }
const QString& ConfigToolsSplit::getFolder() const { return m_folder; }
void ConfigToolsSplit::setFolder(const QString& text) { m_folder = text; }
bool ConfigToolsSplit::getOptionDownload() const { return m_optionDownload; }
void ConfigToolsSplit::setOptionDownload(bool value) { m_optionDownload = value; }
TOxEntity* ConfigToolsSplit::getEntitySelect() const { return m_entitySelect; }
void ConfigToolsSplit::setEntitySelect(TOxEntity* value) { m_entitySelect = value; }
bool ConfigToolsSplit::getOptionSampling() const { return m_optionSampling; }
void ConfigToolsSplit::setOptionSampling(bool value) { m_optionSampling = value; }
double ConfigToolsSplit::getFactor() const { return m_factor; }
void ConfigToolsSplit::setFactor(double value) { m_factor = value; }
bool ConfigToolsSplit::getRadioOutEveryX() const { return m_radioOutEveryX; }
void ConfigToolsSplit::setRadioOutEveryX(bool value) { m_radioOutEveryX = value; }
bool ConfigToolsSplit::getChkRestartSampling() const { return m_chkRestartSampling; }
void ConfigToolsSplit::setChkRestartSampling(bool value) { m_chkRestartSampling = value; }
TOxEntity* ConfigToolsSplit::getEntitySampling() const { return m_entitySampling; }
void ConfigToolsSplit::setEntitySampling(TOxEntity* value) { m_entitySampling = value; }
TOxEntity* ConfigToolsSplit::getEntityRestartSampling() const { return m_entityRestartSampling; }
void ConfigToolsSplit::setEntityRestartSampling(TOxEntity* value) { m_entityRestartSampling = value; }
bool ConfigToolsSplit::getChkMultidiciplinaryEntities() const { return m_chkMultidiciplinaryEntities; }
void ConfigToolsSplit::setChkMultidiciplinaryEntities(bool value) { m_chkMultidiciplinaryEntities = value; }

const QString& ConfigToolsExtend::getUrlPrimaryBd() const { return m_urlPrimaryBd; }
void ConfigToolsExtend::setUrlPrimaryBd(const QString& text) { m_urlPrimaryBd = text; }
const QString& ConfigToolsExtend::getUrlSecondaryBd() const { return m_urlSecondaryBd; }
void ConfigToolsExtend::setUrlSecondaryBd(const QString& text) { m_urlSecondaryBd = text; }

const QString& ConfigWipxToJson::getInputFile() const { return m_inputFile; }
void ConfigWipxToJson::setInputFile(const QString& text) { m_inputFile = text; }
const QString& ConfigWipxToJson::getOutputFile() const { return m_outputFile; }
void ConfigWipxToJson::setOutputFile(const QString& text) { m_outputFile = text; }

bool MetadataDataSource::getCsvHasHeader() const { return m_csvHasHeader; }
void MetadataDataSource::setCsvHasHeader(bool value) { m_csvHasHeader = value; }
QString MetadataDataSource::getCsvSeparator() const { return m_csvSeparator; }
void MetadataDataSource::setCsvSeparator(const QString& text) { m_csvSeparator = text; }
QStringList MetadataDataSource::getCsvFields() const { return m_csvFields; }
void MetadataDataSource::setCsvFields(const QStringList& value) { m_csvFields = value; }
void MetadataDataSource::addCsvFields(QString& field) { m_csvFields.append(field); }

QString Datasource::getType() const { return m_type; }
void Datasource::setType(const QString& text) { m_type = text; }
QString Datasource::getFile() const { return m_file; }
void Datasource::setFile(const QString& text) { m_file = text; }
MetadataDataSource* Datasource::getMetadataDataSource() const { return m_metadataDataSource; }
void Datasource::setMetadataDataSource(MetadataDataSource* value) { m_metadataDataSource = value; }

QString LookupDictionary::getName() const { return m_name; }
void LookupDictionary::setName(const QString& text) { m_name = text; }
QString LookupDictionary::getLabel() const { return m_label; }
void LookupDictionary::setLabel(const QString& text) { m_label = text; }
QString LookupDictionary::getFile() const { return m_file; }
void LookupDictionary::setFile(const QString& text) { m_file = text; }
QString LookupDictionary::getSeparator() const { return m_separator; }
void LookupDictionary::setSeparator(const QString& text) { m_separator = text; }

Datasource* MetadataDictionary::getDatasource() const { return m_datasource; }
void MetadataDictionary::setDatasource(Datasource* value) { m_datasource = value; }
QList<LookupDictionary*>* MetadataDictionary::getLookUp() const { return m_lookUp; }
void MetadataDictionary::setLookUp(QList<LookupDictionary*>* value) { m_lookUp = value; }
void MetadataDictionary::addLookUp(LookupDictionary* lookup) { m_lookUp->append(lookup); }

TOxEntity* Dictionary::getRoot() const { return m_root; }
void Dictionary::setRoot(TOxEntity* value) { m_root = value; }
MetadataDictionary* Dictionary::getMetadataDictionary() const { return m_metadataDictionary; }
void Dictionary::setMetadataDictionary(MetadataDictionary* value) { m_metadataDictionary = value; }
// clang-format on
