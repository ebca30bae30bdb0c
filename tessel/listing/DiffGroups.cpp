#include "listing/DiffGroups.h"

#include <QHash>
#include <QPair>
#include <QSet>

#include <algorithm>
#include <limits>

namespace {

// Fewer are told one by one.
constexpr int ShortestRun = 4;

// Null and empty names are different ones.
using NameKey = QPair<bool, QString>;

NameKey keyOf(const QString& name)
{
    return { name.isNull(), name };
}

// Puts runs together where they stand first.
class VariableGroup {
public:
    explicit VariableGroup(const QString& name)
        : m_name(name)
    {
    }

    void add(const Difference& difference);
    VariableDifferences result() const;

private:
    QString m_name;
    QVector<DifferenceRun> m_runs;
    QHash<QPair<int, QString>, int> m_open; // runs of values by kind and value set
};

void VariableGroup::add(const Difference& difference)
{
    const bool isRun = difference.kind == DifferenceKind::ValueAdded
        || difference.kind == DifferenceKind::ValueRemoved;
    const QPair<int, QString> key { int(difference.kind), difference.valueSet };
    const int known = isRun ? m_open.value(key, -1) : -1;
    if (known >= 0) {
        m_runs[known].append(&difference);
        return;
    }
    if (isRun)
        m_open.insert(key, m_runs.size());
    m_runs.append({ &difference });
}

VariableDifferences VariableGroup::result() const
{
    VariableDifferences result { m_name, {} };
    for (const DifferenceRun& run : m_runs) {
        if (run.size() >= ShortestRun) {
            result.runs.append(run);
            continue;
        }
        for (const Difference* difference : run)
            result.runs.append({ difference });
    }
    return result;
}

class RecordGroup {
public:
    explicit RecordGroup(const QString& name)
        : m_name(name)
    {
    }

    void add(const Difference& difference)
    {
        const int next = m_variables.size();
        const int index = m_indexes.value(keyOf(difference.variable), next);
        if (index == next) {
            m_indexes.insert(keyOf(difference.variable), next);
            m_variables.append(VariableGroup(difference.variable));
        }
        m_variables[index].add(difference);
    }

    RecordDifferences result() const
    {
        RecordDifferences result { m_name, {} };
        for (const VariableGroup& variable : m_variables)
            result.variables.append(variable.result());
        return result;
    }

private:
    QString m_name;
    QVector<VariableGroup> m_variables;
    QHash<NameKey, int> m_indexes;
};

QString codeOf(const Difference& difference)
{
    return difference.highCode.isNull() ? difference.code
                                        : difference.code + QLatin1Char(':') + difference.highCode;
}

bool isNext(const Difference& difference, const Difference& next)
{
    bool isNumber = false;
    bool isNextNumber = false;
    const qlonglong number = difference.code.toLongLong(&isNumber);
    const qlonglong nextNumber = next.code.toLongLong(&isNextNumber);
    return difference.highCode.isNull() && next.highCode.isNull() && isNumber && isNextNumber
        && number < std::numeric_limits<qlonglong>::max() && nextNumber == number + 1;
}

} // namespace

bool VariableDifferences::haveSeveralSets() const
{
    QSet<QString> names;
    for (const DifferenceRun& run : runs) {
        if (!run.constFirst()->code.isNull())
            names.insert(run.constFirst()->valueSet);
    }
    return names.size() > 1;
}

QVector<RecordDifferences> groupDifferences(const QVector<Difference>& differences, bool breaking)
{
    QVector<RecordGroup> groups;
    QHash<NameKey, int> indexes;
    for (const Difference& difference : differences) {
        if (difference.breaks != breaking)
            continue;
        const int next = groups.size();
        const int index = indexes.value(keyOf(difference.record), next);
        if (index == next) {
            indexes.insert(keyOf(difference.record), next);
            groups.append(RecordGroup(difference.record));
        }
        groups[index].add(difference);
    }
    QVector<RecordDifferences> records;
    for (const RecordGroup& group : qAsConst(groups))
        records.append(group.result());
    return records;
}

int countBreaking(const QVector<Difference>& differences)
{
    return int(std::count_if(differences.cbegin(), differences.cend(),
        [](const Difference& difference) { return difference.breaks; }));
}

QStringList codeSpans(const DifferenceRun& run)
{
    QStringList spans;
    int first = 0;
    for (int i = 1; i <= run.size(); ++i) {
        if (i < run.size() && isNext(*run.at(i - 1), *run.at(i)))
            continue;
        // Two in a row are no longer one by one.
        if (i - first > 2) {
            spans.append(run.at(first)->code + QLatin1String(" to ") + run.at(i - 1)->code);
        } else {
            for (int j = first; j < i; ++j)
                spans.append(codeOf(*run.at(j)));
        }
        first = i;
    }
    return spans;
}
