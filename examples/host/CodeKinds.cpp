#include "CodeKinds.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/DictionaryFile.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/StatDictionary.h>

#include <QCoreApplication>

#include <algorithm>
#include <memory>

namespace {

QString text(const char* source)
{
    return QCoreApplication::translate("CodeKinds", source);
}

QString kindOf(const TValueSetItem& entry)
{
    if (!entry.special)
        return {};
    switch (entry.type) {
    case 1:
        return text("missing");
    case 2:
        return text("not applicable");
    case 3:
        return text("refused");
    default:
        return text("default");
    }
}

// The variables of an entity stand in the order of the items of its record, and have the labels of
// their first value set with values.
CodeKinds kindsOf(const TCSPro& cspro, const TOxEntity& root)
{
    QHash<const TCSProRecord*, const TOxEntity*> entities;
    for (int i = 0; i < cspro.records->size(); ++i)
        entities.insert(cspro.records->at(i), root.getChildren()->at(i));
    QHash<const TOxEntity*, int> counts;
    CodeKinds kinds;
    for (const TCSProItem* item : qAsConst(*cspro.items)) {
        const TOxEntity* const entity = entities.value(item->record, &root);
        const TOxVariable* const variable = entity->getVariables()->at(counts[entity]++);
        const auto found = std::find_if(item->valueSets->cbegin(), item->valueSets->cend(),
            [](const TCSProValueSet* set) { return !set->items->isEmpty(); });
        if (found == item->valueSets->cend())
            continue;
        const TCSProValueSet* const set = (*found)->linkedSet() ? (*found)->linkedSet() : *found;
        kinds.insert(variable, [set](int label) { return kindOf(*set->items->at(label)); });
    }
    return kinds;
}

CodeKinds kindsOf(const TStatFileDescription& description, const TOxEntity& root)
{
    const auto file = std::make_shared<const TStatFileDescription>(description);
    CodeKinds kinds;
    for (int i = 0; i < file->variables.size(); ++i) {
        if (file->variables.at(i).labelSet < 0)
            continue;
        kinds.insert(root.getVariables()->at(i), [file, i](int label) {
            const TStatVariableDescription& variable = file->variables.at(i);
            const TStatLabelSet& set = file->labelSets.at(variable.labelSet);
            return variable.isMissing(set.labels.at(label).value) ? text("missing") : QString();
        });
    }
    return kinds;
}

} // namespace

CodeKinds codeKinds(const DictionaryFile& file, const TOxEntity& root)
{
    if (const TCSProDataImport* importer = file.csproImporter())
        return kindsOf(*importer->dictionary, root);
    return file.description ? kindsOf(*file.description, root) : CodeKinds();
}
