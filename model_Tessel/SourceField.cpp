#include <model_Tessel/SourceField.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/GenericField.h>

namespace {

constexpr int LastProviderType = 4;

} // namespace

TOxSourceField::TOxSourceField()
    : providerTypeNames(new QStringList(ProviderTypeNames))
{
}

TOxSourceField::~TOxSourceField()
{
    delete providerTypeNames;
}

QString TOxSourceField::getFieldType() const
{
    return fieldTypeName;
}

void TOxSourceField::setFieldType(const QString& name)
{
    fieldTypeName = name;
}

int TOxSourceField::getFieldTypeIndex() const
{
    return fieldTypeIndex;
}

bool TOxSourceField::isString() const
{
    return fieldTypeIndex == TGenericField::StringType;
}

QString TOxSourceField::getDataProviderType() const
{
    return dataProviderTypeName;
}

int TOxSourceField::getDataProviderTypeIndex() const
{
    return dataProviderTypeIndex;
}

void TOxSourceField::setDataProviderType(const QString& name)
{
    const int index = providerTypeNames->indexOf(name);
    if (index < 1 || index > LastProviderType)
        return;
    dataProviderTypeIndex = index;
    dataProviderTypeName = name;
}

QString TOxSourceField::getStringValue(const QString& line)
{
    // Kept: the column counts from 1 and is taken as an index from 0, so the cut begins one later.
    QString value = line.mid(start, length);
    lastValueMatches = value == compareValue;
    return value;
}
