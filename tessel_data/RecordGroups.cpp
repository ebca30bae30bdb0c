#include <tessel_data/RecordGroups_p.h>

#include <QHash>

namespace tessel {

namespace {

// The variable whose columns an item is part of, or itself.
int rootOf(const DataDictionary& dictionary, int variable)
{
    const auto at = [&](int index) -> const DataVariable& {
        return dictionary.variables[std::size_t(index)];
    };
    while (at(variable).isSubItem && at(variable).parent >= 0)
        variable = at(variable).parent;
    return variable;
}

RecordGroup mainGroup(
    const DataDictionary& dictionary, int record, bool hasRepeatTables, int language)
{
    const DataRecord& source = dictionary.records[std::size_t(record)];
    RecordGroup group;
    group.name = source.name;
    group.label = dictionary.labelText(source.label, language);
    group.places.append(QVector<int>());
    for (int c = 0; c < source.columns.size(); ++c) {
        const DataVariable& variable = dictionary.variable(record, c);
        if (hasRepeatTables && c >= source.idCount && variable.occurrence > 0)
            continue;
        group.places.first().append(c);
        group.columnNames.append(variable.name);
    }
    return group;
}

// The item that a repeated variable belongs to.
const DataVariable& repeatedItem(const DataDictionary& dictionary, int index)
{
    const DataVariable& root = dictionary.variables[std::size_t(rootOf(dictionary, index))];
    return root.occurrence > 0 ? root : dictionary.variables[std::size_t(index)];
}

void addPlace(RecordGroup& group, const DataVariable& variable, int occurrence, int place)
{
    while (group.places.size() < occurrence)
        group.places.append(QVector<int>());
    group.places[occurrence - 1].append(place);
    if (occurrence == 1) {
        const int prefix = variable.itemName.size() + 2; // "_1"
        group.columnNames.append(variable.itemName + variable.name.mid(prefix));
    }
}

QVector<RecordGroup> repeatGroups(const DataDictionary& dictionary, int record, int language)
{
    const DataRecord& source = dictionary.records[std::size_t(record)];
    QVector<RecordGroup> groups;
    QHash<QString, int> known;
    for (int c = source.idCount; c < source.columns.size(); ++c) {
        const DataVariable& variable = dictionary.variable(record, c);
        if (variable.occurrence == 0)
            continue;
        const DataVariable& item = repeatedItem(dictionary, source.columns.at(c));
        if (!known.contains(item.itemName)) {
            known.insert(item.itemName, groups.size());
            groups.append(
                { item.itemName, dictionary.labelText(item.label, language), true, {}, {} });
        }
        addPlace(groups[known.value(item.itemName)], variable, item.occurrence, c);
    }
    return groups;
}

} // namespace

QVector<RecordGroup> recordGroups(
    const DataDictionary& dictionary, int record, bool hasRepeatTables, int language)
{
    QVector<RecordGroup> groups { mainGroup(dictionary, record, hasRepeatTables, language) };
    if (hasRepeatTables)
        groups += repeatGroups(dictionary, record, language);
    return groups;
}

} // namespace tessel
