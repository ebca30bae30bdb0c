#include <tessel_data/DataSelection.h>

#include <tessel_data/DataError.h>
#include <tessel_data/NearestNames_p.h>

#include <QSet>

namespace tessel {

namespace {

[[noreturn]] void fail(const QString& text)
{
    throw DataError(DataError::Code::UnfitSelection, QString(), text);
}

QStringList recordNames(const DataDictionary& dictionary)
{
    QStringList names;
    for (const DataRecord& record : dictionary.records)
        names.append(record.name);
    return names;
}

int recordOf(const DataDictionary& dictionary, const QString& name)
{
    const QStringList names = recordNames(dictionary);
    const int record = names.indexOf(name);
    if (record < 0) {
        fail(QStringLiteral("there is no record '%1'%2").arg(name, nearestNamesText(name, names)));
    }
    return record;
}

// Columns of a record that a name stands for: a variable, or an item with all its occurrences.
QVector<int> columnsCalled(const DataDictionary& dictionary, int record, const QString& name)
{
    QVector<int> found;
    const int count = dictionary.records[std::size_t(record)].columns.size();
    for (int c = 0; c < count; ++c) {
        const DataVariable& variable = dictionary.variable(record, c);
        if (variable.name == name || variable.itemName == name)
            found.append(c);
    }
    return found;
}

QStringList variableNames(const DataDictionary& dictionary, const QVector<int>& records)
{
    QStringList names;
    for (const int record : records) {
        const int count = dictionary.records[std::size_t(record)].columns.size();
        for (int c = 0; c < count; ++c) {
            const DataVariable& variable = dictionary.variable(record, c);
            names.append(variable.name);
            names.append(variable.itemName);
        }
    }
    names.removeDuplicates();
    return names;
}

[[noreturn]] void failVariable(
    const DataDictionary& dictionary, const QVector<int>& records, const QString& name)
{
    QStringList places;
    for (const int record : records)
        places.append(dictionary.records[std::size_t(record)].name);
    fail(QStringLiteral("there is no variable '%1' in %2%3")
             .arg(name, places.join(QLatin1String(", ")),
                 nearestNamesText(name, variableNames(dictionary, records))));
}

void needWholeItem(const DataVariable& variable, const QString& name)
{
    if (variable.occurrence > 0 && variable.itemName != name) {
        fail(
            QStringLiteral("'%1' is one occurrence; where repeated items have tables of their own, "
                           "take the item, %2")
                .arg(name, variable.itemName));
    }
}

template <typename IsTaken>
SelectedColumns columnsOf(const DataDictionary& dictionary, int record, const IsTaken& isTaken)
{
    SelectedColumns result;
    result.isTaken = true;
    const int count = dictionary.records[std::size_t(record)].columns.size();
    for (int c = 0; c < count; ++c) {
        if (isTaken(c))
            result.columns.append(c);
    }
    return result;
}

// Adds a name to the records that have it; false when none has.
bool addName(const DataDictionary& dictionary, const QVector<int>& records, const QString& name,
    QVector<SelectedRecord>& selected)
{
    bool isKnown = false;
    for (int i = 0; i < records.size(); ++i) {
        if (columnsCalled(dictionary, records.at(i), name).isEmpty())
            continue;
        isKnown = true;
        selected[i].variables.append(name);
    }
    return isKnown;
}

// As addName(), of a name with its record in front.
bool addExactName(const DataDictionary& dictionary, const QVector<int>& records,
    const QString& name, QVector<SelectedRecord>& selected)
{
    for (int i = 0; i < records.size(); ++i) {
        const QString prefix = selected.at(i).name + QLatin1Char('.');
        if (!name.startsWith(prefix))
            continue;
        const QString own = name.mid(prefix.size());
        if (columnsCalled(dictionary, records.at(i), own).isEmpty())
            failVariable(dictionary, { records.at(i) }, own);
        selected[i].variables.append(own);
        return true;
    }
    return false;
}

} // namespace

bool DataSelection::isAll() const
{
    return records.isEmpty() && where.isEmpty() && sample <= 0 && every == 0;
}

void DataSelection::chooseRecords(const DataDictionary& dictionary, const QStringList& names)
{
    QVector<SelectedRecord> chosen;
    for (const QString& name : names) {
        recordOf(dictionary, name);
        SelectedRecord record;
        record.name = name;
        for (const SelectedRecord& before : qAsConst(records)) {
            if (before.name == name)
                record = before;
        }
        chosen.append(record);
    }
    records = chosen;
}

void DataSelection::chooseVariables(const DataDictionary& dictionary, const QStringList& names)
{
    if (records.isEmpty())
        chooseRecords(dictionary, recordNames(dictionary));
    QVector<int> indexes;
    for (SelectedRecord& record : records) {
        indexes.append(recordOf(dictionary, record.name));
        record.hasAllVariables = false;
        record.variables.clear();
    }
    for (const QString& name : names) {
        if (!addName(dictionary, indexes, name, records)
            && !addExactName(dictionary, indexes, name, records))
            failVariable(dictionary, indexes, name);
    }
}

QVector<SelectedColumns> DataSelection::columns(const DataDictionary& dictionary) const
{
    QVector<SelectedColumns> result(int(dictionary.records.size()));
    if (records.isEmpty()) {
        for (int r = 0; r < result.size(); ++r)
            result[r] = columnsOf(dictionary, r, [](int) { return true; });
    }
    for (const SelectedRecord& record : records) {
        const int index = recordOf(dictionary, record.name);
        const int idCount = dictionary.records[std::size_t(index)].idCount;
        QSet<int> named;
        for (const QString& name : record.variables) {
            const QVector<int> found = columnsCalled(dictionary, index, name);
            if (found.isEmpty())
                failVariable(dictionary, { index }, name);
            if (needsWholeItems)
                needWholeItem(dictionary.variable(index, found.first()), name);
            for (const int column : found)
                named.insert(column);
        }
        result[index] = columnsOf(dictionary, index, [&](int column) {
            return record.hasAllVariables || column < idCount || named.contains(column);
        });
    }
    return result;
}

DataDictionary selectedDictionary(
    const DataDictionary& dictionary, const QVector<SelectedColumns>& columns)
{
    DataDictionary result = dictionary;
    result.records.clear();
    for (DataVariable& variable : result.variables)
        variable.record = -1;
    int firstColumn = 0;
    for (int r = 0; r < columns.size(); ++r) {
        if (!columns.at(r).isTaken)
            continue;
        DataRecord record = dictionary.records[std::size_t(r)];
        record.columns.clear();
        for (const int column : columns.at(r).columns) {
            const int variable = dictionary.records[std::size_t(r)].columns.at(column);
            record.columns.append(variable);
            if (column >= record.idCount)
                result.variables[std::size_t(variable)].record = int(result.records.size());
        }
        record.firstColumn = firstColumn;
        firstColumn += record.columns.size();
        result.records.push_back(std::move(record));
    }
    return result;
}

} // namespace tessel
