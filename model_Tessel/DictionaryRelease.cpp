#include <model_Tessel/DictionaryRelease.h>

#include <model_Tessel/CSProModel.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Config.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/Variable.h>

#include <QSet>

#include <algorithm>
#include <vector>

namespace {

// Deletes what records hold; what several share is deleted once.
class Release {
public:
    void releaseTree(TOxEntity* top)
    {
        std::vector<TOxEntity*> pending = { top };
        while (!pending.empty()) {
            const std::unique_ptr<TOxEntity> entity(pending.back());
            pending.pop_back();
            if (!entity)
                continue;
            releaseList(
                entity->getChildren(), [&pending](TOxEntity* child) { pending.push_back(child); });
            releaseList(entity->getVariables(),
                [this](TOxVariable* variable) { releaseVariable(variable); });
        }
    }

private:
    void releaseVariable(TOxVariable* variable)
    {
        if (!variable)
            return;
        releaseList(variable->getValueLabelElementList(), std::default_delete<ValueLabelElement>());
        MetadataVariables* metadata = variable->getMetadataVariables();
        if (isFirst(metadata)) {
            releaseList(metadata->getRange(), std::default_delete<Range>());
            delete metadata;
        }
        delete variable;
    }

    template <typename Object, typename Job> void releaseList(QList<Object*>* list, Job job)
    {
        if (!isFirst(list))
            return;
        std::for_each(list->cbegin(), list->cend(), job);
        delete list;
    }

    bool isFirst(const void* object)
    {
        const int count = m_released.size();
        if (object)
            m_released.insert(object);
        return m_released.size() > count;
    }

    QSet<const void*> m_released;
};

void releaseItems(const QList<TCSProItem*>& items)
{
    QSet<TCSProValueSet*> valueSets;
    for (TCSProItem* item : items) {
        for (TCSProValueSet* valueSet : qAsConst(*item->valueSets))
            valueSets.insert(valueSet);
        delete item->valueSets;
        delete item;
    }
    for (TCSProValueSet* valueSet : qAsConst(valueSets)) {
        if (!valueSet->linkedSet())
            qDeleteAll(*valueSet->items);
        delete valueSet->items;
        delete valueSet;
    }
}

} // namespace

void releaseEntity(TOxEntity* entity)
{
    Release().releaseTree(entity);
}

void releaseDictionary(Dictionary* dictionary)
{
    if (!dictionary)
        return;
    releaseEntity(dictionary->getRoot());
    if (const MetadataDictionary* metadata = dictionary->getMetadataDictionary()) {
        if (const Datasource* source = metadata->getDatasource()) {
            delete source->getMetadataDataSource();
            delete source;
        }
        if (const QList<LookupDictionary*>* lookups = metadata->getLookUp()) {
            qDeleteAll(*lookups);
            delete lookups;
        }
        delete metadata;
    }
    delete dictionary;
}

void releaseModel(CSProModel& model)
{
    if (model.items)
        releaseItems(*model.items);
    if (model.records)
        qDeleteAll(*model.records);
    delete model.items;
    delete model.records;
    delete model.commonRecord;
    model.items = nullptr;
    model.records = nullptr;
    model.recordsByValue.clear();
    model.commonRecord = model.currentRecord = nullptr;
    model.lastItem = nullptr;
}
