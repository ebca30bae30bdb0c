#include <model_Tessel/DictionaryBuilder.h>

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DictionaryBuilder_p.h>

Dictionary* buildDictionary(
    const TOxDataProvider& provider, const QVector<LookupDictionary>& lookups)
{
    const auto* cspro = dynamic_cast<const TCSProDataImport*>(provider.getImportData());
    if (cspro && cspro->dictionary)
        return buildCSProTree(provider, *cspro->dictionary, lookups).release();
    return DictionaryTreeBuilder(provider, lookups).build().release();
}

Dictionary* buildDictionary(TDataImport& importer, const QVector<LookupDictionary>& lookups)
{
    return buildDictionary(ImportedFields(importer), lookups);
}

Dictionary* buildDictionary(
    const TStatFileDescription& file, const QVector<LookupDictionary>& lookups)
{
    return buildStatTree(file, lookups).release();
}
