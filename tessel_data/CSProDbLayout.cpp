#include <tessel_data/CSProDbLayout_p.h>

namespace tessel {

QString CSProDbLayout::levelTable(int level)
{
    return QStringLiteral("level-%1").arg(level);
}

QString CSProDbLayout::idOf(const QString& table)
{
    return table + QLatin1String("-id");
}

QString CSProDbLayout::tableAbove(int level)
{
    return level == 1 ? QStringLiteral("cases") : levelTable(level - 1);
}

QString CSProDbLayout::idAbove(int level)
{
    return level == 1 ? QStringLiteral("id") : idOf(levelTable(level - 1));
}

QString CSProDbLayout::linkOf(int level)
{
    return level == 1 ? QStringLiteral("case-id") : idAbove(level);
}

QString CSProDbLayout::tableOf(const DataRecord& record)
{
    return record.name.toLower();
}

QString CSProDbLayout::columnOf(const DataVariable& variable)
{
    const QString name = variable.itemName.toLower();
    return variable.occurrence > 0 ? QStringLiteral("%1(%2)").arg(name).arg(variable.occurrence)
                                   : name;
}

QHash<QString, QSet<QString>> CSProDbLayout::columnsOf(const DataDictionary& dictionary)
{
    QHash<QString, QSet<QString>> columns;
    const auto addLevel = [&columns](int level) {
        columns[levelTable(level)] += { idOf(levelTable(level)), linkOf(level) };
    };
    for (const int id : dictionary.ids) {
        const DataVariable& variable = dictionary.variables[std::size_t(id)];
        addLevel(variable.level);
        columns[levelTable(variable.level)].insert(columnOf(variable));
    }
    for (std::size_t r = 0; r < dictionary.records.size(); ++r) {
        const DataRecord& record = dictionary.records[r];
        const QString table = tableOf(record);
        for (int level = 1; level <= record.level; ++level)
            addLevel(level);
        columns[table] += { idOf(table), idOf(levelTable(record.level)) };
        for (int c = record.idCount; c < record.columns.size(); ++c)
            columns[table].insert(columnOf(dictionary.variable(int(r), c)));
    }
    return columns;
}

namespace {

class ItemCollector {
public:
    ItemCollector(const DataDictionary& dictionary, const DataDictionary& ofFile)
        : m_ofFile(ofFile)
        , m_known(CSProDbLayout::columnsOf(dictionary))
    {
    }

    bool isKnown(const QString& table) const
    {
        return m_known.contains(table);
    }
    void add(const QString& table, const QString& record, const DataVariable& variable)
    {
        const bool isPart = variable.isSubItem && variable.parent >= 0
            && has(table, m_ofFile.variables[std::size_t(variable.parent)]);
        if (variable.type == DataVariable::Type::Binary || isPart || has(table, variable))
            return;
        const QString name = variable.itemName + QLatin1String(" of ") + record;
        auto place = m_places.find(table + QLatin1Char('.') + name);
        if (place == m_places.end()) {
            place = m_places.insert(table + QLatin1Char('.') + name, items.size());
            items.append({ table, name, {} });
        }
        items[*place].columns.append(CSProDbLayout::columnOf(variable));
    }

    QVector<CSProDbLeftOut::Item> items;

private:
    bool has(const QString& table, const DataVariable& variable) const
    {
        const auto known = m_known.constFind(table);
        return known != m_known.constEnd() && known->contains(CSProDbLayout::columnOf(variable));
    }

    const DataDictionary& m_ofFile;
    QHash<QString, QSet<QString>> m_known; // columns of the other dictionary
    QHash<QString, int> m_places; // among the items
};

} // namespace

CSProDbLeftOut::CSProDbLeftOut(const DataDictionary& dictionary, const DataDictionary& ofFile)
{
    ItemCollector collector(dictionary, ofFile);
    for (const int id : ofFile.ids) {
        const DataVariable& variable = ofFile.variables[std::size_t(id)];
        const QString level = QStringLiteral("level %1").arg(variable.level);
        collector.add(CSProDbLayout::levelTable(variable.level), level, variable);
    }
    for (std::size_t r = 0; r < ofFile.records.size(); ++r) {
        const DataRecord& record = ofFile.records[r];
        const QString table = CSProDbLayout::tableOf(record);
        if (!collector.isKnown(table)) {
            records.append(record);
            continue;
        }
        for (int c = record.idCount; c < record.columns.size(); ++c)
            collector.add(table, record.name, ofFile.variable(int(r), c));
    }
    items = collector.items;
}

} // namespace tessel
