#include "listing/DataFigures.h"

namespace {

// Identification items, and the variables of files without records, are in none.
QString keyOf(const QString& record, const QString& item, int occurrence)
{
    return QStringLiteral("%1.%2.%3").arg(record, item).arg(occurrence);
}

QString recordOf(const DataFigures& figures, const tessel::VariableStatistics& variable)
{
    const bool hasNone = variable.record < 0 || figures.dictionary.description;
    return hasNone ? QString() : figures.dictionary.records[std::size_t(variable.record)].name;
}

} // namespace

FieldFigures::FieldFigures(const DataFigures& figures)
{
    for (const tessel::VariableStatistics& variable : figures.report.variables) {
        const tessel::DataVariable& named =
            figures.dictionary.variables[std::size_t(variable.variable)];
        const QString record = recordOf(figures, variable);
        if (!variable.isOccurrence)
            m_together.insert(keyOf(record, named.itemName, 0), &variable);
        if (variable.occurrences == 0)
            m_alone.insert(keyOf(record, named.itemName, named.occurrence), &variable);
    }
}

const tessel::VariableStatistics* FieldFigures::of(const ListedField& field) const
{
    return m_together.value(keyOf(field.record, field.item, 0));
}

const tessel::VariableStatistics* FieldFigures::ofOne(const ListedField& field) const
{
    return m_alone.value(keyOf(field.record, field.item, field.occurrence));
}
