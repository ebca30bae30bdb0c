#include <model_Tessel/DataImport.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>
#include <model_Tessel/GenericField.h>
#include <model_Tessel/SourceField.h>

#include <QDir>
#include <QFileInfo>

namespace {

QString fieldTypeName(int fieldType)
{
    switch (fieldType) {
    case TGenericField::IntegerType:
        return TypeNameInteger;
    case TGenericField::RealType:
        return TypeNameReal;
    case TGenericField::StringType:
        return TypeNameString;
    default:
        return QLatin1String("");
    }
}

} // namespace

TDataImport::TDataImport()
    : fields(new QList<TGenericField*>)
{
}

TDataImport::TDataImport(const QString& sourceName)
    : sourceName(sourceName)
    , fields(new QList<TGenericField*>)
{
}

// Kept: the list of fields and the fields stay alive for the hosts that hold them.
TDataImport::~TDataImport() = default;

bool TDataImport::openFile()
{
    return false;
}

void TDataImport::getDictionary(QList<TOxSourceField*>* list, QStringList* layoutSources)
{
    Q_UNUSED(list)
    Q_UNUSED(layoutSources)
}

QStringList* TDataImport::selectLayoutSource()
{
    TESSEL_DEBUG << "DataImport - selectLayoutSource";
    auto* names = new QStringList;
    openFile();
    names->reserve(fields->size());
    for (const TGenericField* field : qAsConst(*fields))
        names->append(field->name);
    return names;
}

bool TDataImport::isMultiple()
{
    return false;
}

int TDataImport::getGroupCount()
{
    return 0;
}

QString TDataImport::getGroupName(int index)
{
    Q_UNUSED(index)
    return QLatin1String("");
}

QString TDataImport::getGroupValue(int index)
{
    Q_UNUSED(index)
    return QLatin1String("");
}

int TDataImport::getRecordTypeIndex(QString value)
{
    Q_UNUSED(value)
    return -1;
}

QString TDataImport::getRecordTypeCurrent()
{
    return QLatin1String("");
}

QStringList* TDataImport::getLayoutSource()
{
    return new QStringList;
}

int TDataImport::getRecordTypeStart()
{
    return 0;
}

int TDataImport::getRecordTypeSize()
{
    return 0;
}

void TDataImport::getDictionary(QList<TOxSourceField*>* list)
{
    for (int index = 0; index < fields->size(); ++index) {
        TGenericField* field = getField(index);
        auto* sourceField = new TOxSourceField;
        sourceField->decimals = field->decimals.toInt();
        sourceField->start = field->start;
        sourceField->length = field->length;
        sourceField->setFieldType(fieldTypeName(field->fieldType));
        sourceField->fieldName = field->name;
        sourceField->fieldLabel = field->label;
        sourceField->dataProviderId = getDataProviderId();
        sourceField->setDataProviderType(getDataProviderType());
        sourceField->record = field->getGroup();
        TESSEL_DEBUG << "getDictionary FIELDS";
        TESSEL_DEBUG << "mySF->fieldName" << sourceField->fieldName;
        TESSEL_DEBUG << "mySF->FieldType" << sourceField->getFieldType();
        TESSEL_DEBUG << "mySF->DataProviderType" << sourceField->getDataProviderType();
        TESSEL_DEBUG << "\n\n\n";
        sourceField->valueLabels = field->valueLabels;
        sourceField->minValue = field->minValue;
        sourceField->maxValue = field->maxValue;
        sourceField->notApplicableValue = field->notApplicableValue;
        sourceField->missingValue = field->missingValue;
        list->append(sourceField);
    }
}

void TDataImport::initDataImport()
{
    getDataProviderType();
}

void TDataImport::registerIOFormat()
{
}

// Kept: the old list stays alive for the hosts that hold it.
void TDataImport::openDataImport()
{
    fields = new QList<TGenericField*>;
    fieldsByName.clear();
}

bool TDataImport::closeDataImport()
{
    return true;
}

void TDataImport::addField(TGenericField* field)
{
    fields->append(field);
    fieldsByName[field->name] = field;
}

TGenericField* TDataImport::fieldByName(const QString& name) const
{
    const auto found = fieldsByName.find(name);
    return found == fieldsByName.end() ? nullptr : found->second;
}

TGenericField* TDataImport::getField(int index) const
{
    return fields->value(index, nullptr);
}

QString TDataImport::getSourceName() const
{
    return sourceName;
}

void TDataImport::setSourceName(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    sourceName = QFileInfo::exists(absolute) ? absolute : QString();
}

QString TDataImport::getDataSourceName() const
{
    return dataSourceName;
}

void TDataImport::setDataSourceName(const QString& path)
{
    const QFileInfo info(path);
    dataSourceName = info.absoluteFilePath();
    if (QFileInfo::exists(dataSourceName))
        return;
    // Kept: no separator stands between directory and name.
    const QString folder =
        sourceName.isEmpty() ? QDir::currentPath() : QFileInfo(sourceName).absolutePath();
    const QString beside = folder + info.fileName();
    if (QFileInfo::exists(beside))
        dataSourceName = beside;
}
