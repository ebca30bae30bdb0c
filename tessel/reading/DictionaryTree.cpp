#include "reading/DictionaryTree.h"

#include "reading/InputDictionary.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/Variable.h>

#include <QHash>

namespace {

bool hasRanges(const TOxVariable& variable)
{
    return !variable.getMetadataVariables()->getRange()->isEmpty();
}

VariableFacts factsOf(const TCSProItem& item)
{
    VariableFacts facts;
    if (item.isAlpha != 0)
        return facts;
    if (item.decimal > 0) {
        facts.decimalPoint = item.hasDecimalChar ? DecimalPoint::InData : DecimalPoint::Implied;
    }
    const TCSProValueSet* valueSet = item.boundingValueSet();
    facts.rangeSource = valueSet ? RangeSource::ValueSet : RangeSource::Length;
    facts.rangeValueSet = valueSet ? valueSet->name : QString();
    return facts;
}

// The variables of an entity stand in the order of the items of its record.
TreeFacts factsOfItems(const TCSPro& dictionary, const TOxEntity& root)
{
    QHash<const TCSProRecord*, const TOxEntity*> entities { { dictionary.commonRecord, &root } };
    for (int i = 0; i < dictionary.records->size(); ++i)
        entities.insert(dictionary.records->at(i), root.getChildren()->at(i));
    TreeFacts facts;
    QHash<const TOxEntity*, int> counts;
    VariableFacts lastFacts; // those of all occurrences, which share their value sets
    for (const TCSProItem* item : qAsConst(*dictionary.items)) {
        if (item->occurrence <= 1)
            lastFacts = factsOf(*item);
        const TOxEntity* entity = entities.value(item->record, &root);
        facts.insert(entity->getVariables()->value(counts[entity]++), lastFacts);
    }
    return facts;
}

// Their ranges come of their labels alone.
TreeFacts factsOfVariables(const TStatFileDescription& file, const TOxEntity& root)
{
    TreeFacts facts;
    for (int i = 0; i < file.variables.size(); ++i) {
        const TOxVariable* variable = root.getVariables()->at(i);
        if (!hasRanges(*variable))
            continue;
        const QString& set = file.labelSets.at(file.variables.at(i).labelSet).name;
        facts.insert(variable, { RangeSource::ValueSet, set, DecimalPoint::Untold });
    }
    return facts;
}

TreeFacts factsOfFile(const DictionaryFile& file, const TOxEntity& root)
{
    if (const TCSProDataImport* importer = file.csproImporter())
        return factsOfItems(*importer->dictionary, root);
    return factsOfVariables(*file.description, root);
}

} // namespace

DictionaryPointer readTree(const QString& path, const InputOptions& options,
    const QVector<LookupDictionary>& lookups, TreeFacts& facts, bool& isPartial)
{
    const InputDictionary input = readInputDictionary(path, options);
    const DictionaryFile& file = input.file;
    DictionaryPointer tree = file.buildTree(lookups);
    if (tree && options.dictionary.asWritten)
        facts = factsOfFile(file, *tree->getRoot());
    isPartial = tree && !file.isWhole();
    return tree;
}
