// Feeds bytes to the reader of CSPro dictionaries, to the importer over it and to the builder of
// trees, and tears down what they made, as a host does.
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>

#include <QLoggingCategory>
#include <QSet>
#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>

namespace {

void buildTree(TCSProDataImport& importer)
{
    TOxDataProvider provider;
    provider.genericGetFieldsFrom(&importer);
    const DictionaryPointer tree(buildDictionary(provider));
    qDeleteAll(*provider.fields);
    delete provider.recordTree->references;
    delete provider.recordTree;
}

void tearDown(TCSProDataImport& importer)
{
    QSet<TCSProValueSet*> valueSets; // linked sets share the entries of another
    for (TCSProItem* item : qAsConst(*importer.dictionary->items)) {
        for (TCSProValueSet* valueSet : qAsConst(*item->valueSets))
            valueSets.insert(valueSet);
        delete item->valueSets;
        delete item;
    }
    for (TCSProValueSet* valueSet : qAsConst(valueSets)) {
        if (!valueSet->linkedSet)
            qDeleteAll(*valueSet->items);
        delete valueSet->items;
        delete valueSet;
    }
    qDeleteAll(*importer.dictionary->records);
    delete importer.dictionary->records;
    delete importer.dictionary->items;
    delete importer.dictionary->commonRecord;
    delete importer.dictionary;
    qDeleteAll(*importer.fields);
    delete importer.fields;
    delete importer.groups;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool isQuiet = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        return true;
    }();
    Q_UNUSED(isQuiet)

    // The first byte chooses the rules, so that one corpus serves both.
    const bool asWritten = size > 0 && data[0] != ' ';
    QTemporaryFile file;
    if (!file.open() || file.write(reinterpret_cast<const char*>(data), qint64(size)) < 0)
        return 0;
    file.close();
    TCSProDataImport importer(file.fileName());
    if (asWritten)
        importer.setReadingRules(CSProReadingRules::asWritten());
    importer.setDecimalQuestion([](const CSProProblem& problem) {
        return int(problem.line % 2 == 0 ? QMessageBox::Yes : QMessageBox::No);
    });
    try {
        importer.openFile();
        buildTree(importer);
    } catch (OxErrorManager* error) {
        delete error;
    }
    tearDown(importer);
    return 0;
}
