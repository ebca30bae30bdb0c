#include "reading/LabelledValues.h"

#include "reading/ReadInput.h"

#include <model_Tessel/StatInput.h>
#include <model_Tessel/StatRows.h>

#include <QHash>

#include <memory>

namespace {

std::shared_ptr<const TStatCodes> codesOf(const ListedValueSet& valueSet)
{
    QStringList codes;
    codes.reserve(valueSet.codes.size());
    for (const ListedCode& entry : valueSet.codes)
        codes.append(entry.code);
    return std::make_shared<const TStatCodes>(codes);
}

// Variables of one label set share its codes.
QVector<TStatCodedVariable> codedVariables(const Listing& listing)
{
    QHash<const ListedCode*, std::shared_ptr<const TStatCodes>> known;
    QVector<TStatCodedVariable> variables;
    variables.reserve(listing.fields.size());
    for (const ListedField& field : listing.fields) {
        TStatCodedVariable variable;
        variable.name = field.name;
        if (field.valueLabelCount() > 0) {
            const ListedValueSet& valueSet = field.valueSets.constFirst();
            std::shared_ptr<const TStatCodes>& codes = known[valueSet.codes.constData()];
            if (!codes)
                codes = codesOf(valueSet);
            variable.codes = codes;
        }
        variables.append(variable);
    }
    return variables;
}

} // namespace

bool findListedValues(Listing& listing)
{
    if (listing.hasRecords() || !listing.input)
        return true;
    QVector<TStatCodedVariable> variables = codedVariables(listing);
    const auto kind =
        listing.kind == ListingKind::Spss ? TStatFileKind::Spss : TStatFileKind::Stata;
    const bool isRead = compareRows(*listing.input, kind, variables);
    const QString failure = describeFailure(*listing.input);
    if (!failure.isNull())
        listing.isPartial = !failInput(listing.file, 0, failure);
    if (!isRead)
        return false;
    for (int i = 0; i < listing.fields.size(); ++i)
        listing.fields[i].areValuesListed = variables.at(i).hasOnlyCodes();
    return true;
}
