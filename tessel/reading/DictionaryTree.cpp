#include "reading/DictionaryTree.h"

#include "reading/CSProFile.h"
#include "reading/ReadListing.h"
#include "reading/StatFile.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/StatInput.h>
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
    QList<TCSProValueSet*> lastSets; // which occurrences share
    VariableFacts lastFacts;
    for (const TCSProItem* item : qAsConst(*dictionary.items)) {
        if (item->occurrence <= 1 || *item->valueSets != lastSets)
            lastFacts = factsOf(*item);
        lastSets = *item->valueSets;
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

DictionaryPointer readStatTree(const QString& path, FileKind kind, bool asWritten,
    const QVector<LookupDictionary>& lookups, TreeFacts& facts, bool& isPartial)
{
    TStatInput input;
    TStatFileDescription file;
    if (!describeStatFile(path, kind, input, file, isPartial))
        return nullptr;
    if (asWritten) {
        DictionaryPointer tree(buildDictionary(file, lookups));
        facts = factsOfVariables(file, *tree->getRoot());
        return tree;
    }
    const auto importer = importStatFile(file, input, isPartial);
    return DictionaryPointer(importer ? buildDictionary(*importer, lookups) : nullptr);
}

} // namespace

DictionaryPointer readTree(const QString& path, const InputOptions& options,
    const QVector<LookupDictionary>& lookups, TreeFacts& facts, bool& isPartial)
{
    InputFile file(path);
    if (!file.open())
        return nullptr;
    const FileKind kind = kindOfInput(file, options);
    if (kind != FileKind::CSPro)
        return readStatTree(path, kind, options.dictionary.asWritten, lookups, facts, isPartial);
    DictionaryText text;
    if (!readDictionaryText(file, options.dictionary, text))
        return nullptr;
    const auto importer = openDictionary(path, text, options.dictionary);
    if (!importer)
        return nullptr;
    DictionaryPointer tree(buildDictionary(*importer, lookups));
    if (options.dictionary.asWritten)
        facts = factsOfItems(*importer->dictionary, *tree->getRoot());
    return tree;
}
