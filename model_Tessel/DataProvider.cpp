#include <model_Tessel/DataProvider.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/DataImport.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/LoaderManager.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>

#include <QDir>

namespace {

constexpr ushort NoRecordChar = 255;

} // namespace

TOxDataProvider::TOxDataProvider()
    : fields(new QList<TOxSourceField*>)
    , layoutSources(new QStringList)
    , providerTypeNames(new QStringList(ProviderTypeNames))
{
}

TOxDataProvider::~TOxDataProvider()
{
    delete fields;
    delete layoutSources;
    delete providerTypeNames;
}

QString TOxDataProvider::getDataProviderId() const
{
    return dataProviderId;
}

void TOxDataProvider::setDataProviderId(const QString& id)
{
    dataProviderId = id;
}

QString TOxDataProvider::getDataProviderLabel() const
{
    return dataProviderLabel;
}

void TOxDataProvider::setDataProviderLabel(const QString& label)
{
    dataProviderLabel = label;
}

QString TOxDataProvider::getDataProviderType() const
{
    return dataProviderTypeName;
}

int TOxDataProvider::getDataProviderTypeIndex() const
{
    return dataProviderTypeIndex;
}

void TOxDataProvider::setDataProviderType(const QString& name)
{
    const int index = providerTypeNames->indexOf(name);
    if (index < 1)
        return;
    dataProviderTypeIndex = index;
    dataProviderTypeName = name;
}

int TOxDataProvider::getRecordTypeStart() const
{
    return recordTypeStart;
}

void TOxDataProvider::setRecordTypeStart(int start)
{
    recordTypeStart = start;
}

int TOxDataProvider::getRecordTypeSize() const
{
    return recordTypeSize;
}

void TOxDataProvider::setRecordTypeSize(int size)
{
    recordTypeSize = size;
}

int TOxDataProvider::getRecordTypes() const
{
    return recordTypes;
}

void TOxDataProvider::setRecordTypes(int count)
{
    Q_UNUSED(count) // kept: hosts rely on a count of 0
}

QStringList TOxDataProvider::getRecordTypeList() const
{
    return recordTypeList;
}

int TOxDataProvider::getReferences() const
{
    return references;
}

void TOxDataProvider::setReferences(int count)
{
    references = count;
}

TDataImport* TOxDataProvider::getImportData() const
{
    return importData;
}

void TOxDataProvider::setImportData(TDataImport* importer)
{
    importData = importer;
}

QString TOxDataProvider::getLayoutFileName() const
{
    return QDir::toNativeSeparators(layoutFileName);
}

void TOxDataProvider::setLayoutFileName(const QString& name)
{
    layoutFileName = name;
}

QString TOxDataProvider::getDataFileName() const
{
    return QDir::toNativeSeparators(dataFileName);
}

void TOxDataProvider::setDataFileName(const QString& name)
{
    dataFileName = name;
}

TOxSourceField* TOxDataProvider::getField(const QString& name) const
{
    if (!fields)
        return nullptr;
    for (TOxSourceField* field : qAsConst(*fields)) {
        if (field->fieldName == name)
            return field;
    }
    return nullptr;
}

QString TOxDataProvider::getFieldName(const QString& name) const
{
    const TOxSourceField* field = getField(name);
    return field ? field->fieldName : QLatin1String("");
}

TOxSourceField* TOxDataProvider::getFieldFromRecord(
    const QString& name, const QString& record) const
{
    if (!fields)
        return nullptr;
    const QString upperRecord = record.toUpper();
    for (TOxSourceField* field : qAsConst(*fields)) {
        if (field->fieldName != name)
            continue;
        if (field->record.isEmpty() || field->record.toUpper() == upperRecord)
            return field;
    }
    return nullptr;
}

TOxRecord* TOxDataProvider::getRecord(const QString& name) const
{
    return recordTree ? recordTree->retrieveRecord(name) : nullptr;
}

TGenericField* TOxDataProvider::findField(const QString& name, const QString& record) const
{
    Q_UNUSED(record)
    if (!IsTypeRegister(dataProviderTypeName))
        return nullptr;
    const TDataImport* importer = GetDataClassLoader(dataProviderTypeName);
    return importer ? importer->fieldByName(name) : nullptr;
}

bool TOxDataProvider::openDataProvider()
{
    ErrorNumber = 0;
    return !dataFileName.isEmpty() || !alternateFile.isEmpty();
}

bool TOxDataProvider::closeDataProvider()
{
    return false;
}

QString TOxDataProvider::getRecordTypeValue() const
{
    if (qint64(recordTypeStart) + recordTypeSize - 1 > currentLine.size())
        return QLatin1String("");
    // Kept: the column counts from 1 and is taken as an index from 0, so the cut begins one later.
    return currentLine.mid(recordTypeStart, recordTypeSize);
}

QString TOxDataProvider::getRecordType()
{
    recordTypeChar = QChar(NoRecordChar);
    recordTypeValue = getRecordTypeValue();
    for (const TOxRecord* record = recordTree; record; record = record->preOrderNext()) {
        if (record->recordType == recordTypeValue) {
            recordTypeChar = record->recordChar;
            break;
        }
    }
    return recordTypeChar;
}

void TOxDataProvider::genericGetFieldsFrom(TDataImport* importer)
{
    dataProviderId = importer->getDataProviderId();
    setDataProviderType(importer->getDataProviderType());
    importData = importer;
    // Kept: hosts hold the source fields of the old list.
    delete fields;
    fields = new QList<TOxSourceField*>;
    if (dataProviderTypeName == QLatin1String("CSV"))
        importer->getDictionary(fields, layoutSources);
    else
        importer->getDictionary(fields);
    recordTypeStart = importer->getRecordTypeStart();
    recordTypeSize = importer->getRecordTypeSize();
    recordTree = new TOxRecord;
    setLayoutFileName(importer->getSourceName());
    setDataFileName(importer->getDataSourceName());
}
