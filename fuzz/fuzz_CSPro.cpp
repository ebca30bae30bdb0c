// Feeds bytes to the reader of CSPro dictionaries and to the importer over it, and tears down what
// they made, as a host does.
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QLoggingCategory>
#include <QSet>

#include <cstddef>
#include <cstdint>

namespace {

void tearDown(TCSProDataImport& importer)
{
    QSet<TCSProValueSet*> valueSets;
    for (TCSProItem* item : qAsConst(*importer.dictionary->items)) {
        for (TCSProValueSet* valueSet : qAsConst(*item->valueSets))
            valueSets.insert(valueSet);
        delete item->valueSets;
        delete item;
    }
    for (TCSProValueSet* valueSet : qAsConst(valueSets)) {
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

    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QStringList lines = text.split(QLatin1Char('\n'));
    TCSProDataImport importer;
    importer.dictionary = new TCSPro;
    importer.dictionary->setDecimalQuestion([](const CSProProblem& problem) {
        return int(problem.line % 2 == 0 ? QMessageBox::Yes : QMessageBox::No);
    });
    try {
        importer.dictionary->loadFromStr(&lines);
        importer.copyDataFromDictionary();
    } catch (OxErrorManager* error) {
        delete error;
    }
    tearDown(importer);
    return 0;
}
