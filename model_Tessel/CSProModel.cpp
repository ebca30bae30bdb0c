#include <model_Tessel/CSProModel.h>

CSProModel::CSProModel()
    : commonRecord(new TCSProRecord)
    , records(new QList<TCSProRecord*>)
    , items(new QList<TCSProItem*>)
    , currentRecord(commonRecord)
{
    commonRecord->name = QStringLiteral("Common");
    commonRecord->recordTypeValue = QStringLiteral("_COMMON_");
}
