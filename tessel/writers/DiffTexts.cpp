#include "writers/DiffTexts.h"

#include "text/ShownText.h"
#include "writers/ListingNames.h"

#include <algorithm>
#include <iterator>

namespace {

struct PropertyNames {
    DifferingProperty property;
    const char* name; // for programs
    const char* shown;
};

constexpr PropertyNames propertyNames[] = { { DifferingProperty::RecordTypeStart, "recordTypeStart",
                                                "first column of the record type" },
    { DifferingProperty::RecordTypeLength, "recordTypeLength", "length of the record type" },
    { DifferingProperty::Name, "name", "name" }, { DifferingProperty::Label, "label", "label" },
    { DifferingProperty::RecordType, "recordType", "record type" },
    { DifferingProperty::Maximum, "maximum", "maximum" },
    { DifferingProperty::Level, "level", "level" },
    { DifferingProperty::Record, "record", "record" },
    { DifferingProperty::Start, "start", "first column" },
    { DifferingProperty::Type, "type", "type" }, { DifferingProperty::Length, "length", "length" },
    { DifferingProperty::Decimals, "decimals", "decimals" },
    { DifferingProperty::DecimalChar, "decimalChar", "decimal point in the data" },
    { DifferingProperty::Occurrences, "occurrences", "occurrences" },
    { DifferingProperty::OccurrenceLabel, "occurrenceLabel", "label of the occurrence" },
    { DifferingProperty::Missing, "missing", "missing codes" },
    { DifferingProperty::NotApplicable, "notApplicable", "not-applicable code" },
    { DifferingProperty::Special, "special", "special" } };

const PropertyNames* namesOf(DifferingProperty property)
{
    const auto* const found = std::find_if(std::begin(propertyNames), std::end(propertyNames),
        [property](const PropertyNames& names) { return names.property == property; });
    return found == std::end(propertyNames) ? nullptr : found;
}

QString shownName(DifferingProperty property)
{
    const PropertyNames* const names = namesOf(property);
    return names ? QLatin1String(names->shown) : QString();
}

// The words for each kind of value.
struct ValueText {
    QString operator()(std::monostate /*none*/) const
    {
        return QString();
    }

    QString operator()(const QString& text) const
    {
        return text;
    }

    QString operator()(int number) const
    {
        return QString::number(number);
    }

    QString operator()(bool isSo) const
    {
        return isSo ? QStringLiteral("yes") : QStringLiteral("no");
    }

    QString operator()(ValueType type) const
    {
        return nameOf(type);
    }

    QString operator()(SpecialCode special) const
    {
        return nameOf(special);
    }
};

QString quoted(const QString& text)
{
    return text.isNull() ? QStringLiteral("none") : QLatin1Char('"') + text + QLatin1Char('"');
}

QString orNone(const QString& text)
{
    return text.isNull() ? QStringLiteral("none") : text;
}

QString subjectOf(const Difference& difference)
{
    if (difference.variable.isNull()) {
        return difference.record.isNull() ? QStringLiteral("dictionary")
                                          : QStringLiteral("record ") + difference.record;
    }
    return difference.record.isNull() ? difference.variable
                                      : difference.record + QLatin1Char('.') + difference.variable;
}

QString codeOf(const Difference& difference)
{
    return difference.highCode.isNull() ? shownCode(difference.code)
                                        : difference.code + QLatin1Char(':') + difference.highCode;
}

bool isLabel(DifferingProperty property)
{
    return property == DifferingProperty::Label || property == DifferingProperty::OccurrenceLabel;
}

bool isCode(DifferingProperty property)
{
    return property == DifferingProperty::Missing || property == DifferingProperty::NotApplicable;
}

QString shown(DifferingProperty property, const QString& text)
{
    if (isLabel(property))
        return quoted(text);
    return isCode(property) && !text.isNull() && text.trimmed().isEmpty()
        ? QLatin1Char('\'') + text + QLatin1Char('\'')
        : orNone(text);
}

QString changeText(const Difference& difference)
{
    const DifferingProperty property = difference.property;
    return QStringLiteral("%1 %2 -> %3")
        .arg(shownName(property), shown(property, textOf(difference.before)),
            shown(property, textOf(difference.after)));
}

QString placeOf(const PropertyValue& record)
{
    const QString name = textOf(record);
    return name.isNull() ? QStringLiteral("the identification items") : name;
}

QString ofSet(const Difference& difference, bool tellsSet)
{
    return tellsSet && !difference.valueSet.isNull() ? QLatin1String(" of ") + difference.valueSet
                                                     : QString();
}

QString eventText(const Difference& difference, bool tellsSet)
{
    switch (difference.kind) {
    case DifferenceKind::RecordAdded:
    case DifferenceKind::VariableAdded:
        return QStringLiteral("added");
    case DifferenceKind::RecordRemoved:
    case DifferenceKind::VariableRemoved:
        return QStringLiteral("removed");
    case DifferenceKind::ValueAdded:
        return QStringLiteral("value %1 %2%3 added")
            .arg(codeOf(difference), quoted(textOf(difference.after)), ofSet(difference, tellsSet));
    case DifferenceKind::ValueRemoved:
        return QStringLiteral("value %1 %2%3 removed")
            .arg(
                codeOf(difference), quoted(textOf(difference.before)), ofSet(difference, tellsSet));
    case DifferenceKind::ValueChanged:
        return QStringLiteral("value %1%2: %3")
            .arg(codeOf(difference), ofSet(difference, tellsSet), changeText(difference));
    case DifferenceKind::Renamed:
        return QStringLiteral("renamed %1").arg(textOf(difference.after));
    case DifferenceKind::Moved:
        if (difference.property == DifferingProperty::Record) {
            return QStringLiteral("moved from %1 to %2")
                .arg(placeOf(difference.before), placeOf(difference.after));
        }
        return QStringLiteral("moved, ") + changeText(difference);
    default:
        return changeText(difference);
    }
}

// Long lists of codes that are not in a row show where they begin and end.
QString spansText(QStringList spans)
{
    constexpr int MostSpans = 8;
    if (spans.size() > MostSpans) {
        const QString last = spans.constLast();
        spans = spans.mid(0, MostSpans - 2);
        spans.append({ QStringLiteral("..."), last });
    }
    return spans.join(QLatin1String(", "));
}

QString foldedText(const DifferenceRun& run, bool tellsSet)
{
    const Difference& first = *run.constFirst();
    const QString event = first.kind == DifferenceKind::ValueAdded ? QStringLiteral("added")
                                                                   : QStringLiteral("removed");
    return QStringLiteral("%1 values%2 %3: %4")
        .arg(QString::number(run.size()), ofSet(first, tellsSet), event, spansText(codeSpans(run)));
}

} // namespace

QString nameOf(DifferenceKind kind)
{
    switch (kind) {
    case DifferenceKind::DictionaryChanged:
        return QStringLiteral("dictionary-changed");
    case DifferenceKind::RecordAdded:
        return QStringLiteral("record-added");
    case DifferenceKind::RecordRemoved:
        return QStringLiteral("record-removed");
    case DifferenceKind::RecordChanged:
        return QStringLiteral("record-changed");
    case DifferenceKind::VariableAdded:
        return QStringLiteral("variable-added");
    case DifferenceKind::VariableRemoved:
        return QStringLiteral("variable-removed");
    case DifferenceKind::Renamed:
        return QStringLiteral("variable-renamed");
    case DifferenceKind::Moved:
        return QStringLiteral("variable-moved");
    case DifferenceKind::Retyped:
        return QStringLiteral("variable-retyped");
    case DifferenceKind::Resized:
        return QStringLiteral("variable-resized");
    case DifferenceKind::Relabelled:
        return QStringLiteral("variable-relabelled");
    case DifferenceKind::ValueAdded:
        return QStringLiteral("value-added");
    case DifferenceKind::ValueRemoved:
        return QStringLiteral("value-removed");
    case DifferenceKind::ValueChanged:
        return QStringLiteral("value-changed");
    case DifferenceKind::MissingChanged:
        return QStringLiteral("missing-changed");
    case DifferenceKind::NotApplicableChanged:
        break;
    }
    return QStringLiteral("not-applicable-changed");
}

QString nameOf(DifferingProperty property)
{
    const PropertyNames* const names = namesOf(property);
    return names ? QLatin1String(names->name) : QString();
}

QString textOf(const PropertyValue& value)
{
    return std::visit(ValueText(), value);
}

QString textOf(const Difference& difference)
{
    return subjectOf(difference) + QLatin1String(": ") + eventText(difference, false);
}

QString textOf(const DifferenceRun& run, bool tellsSet)
{
    const Difference& first = *run.constFirst();
    if (run.size() > 1)
        return foldedText(run, tellsSet);
    const bool isOfRecord = first.variable.isNull() && first.property == DifferingProperty::None;
    return (isOfRecord ? QStringLiteral("record ") : QString()) + eventText(first, tellsSet);
}

QString summaryOf(
    const QVector<Difference>& differences, const QString& before, const QString& after)
{
    if (differences.isEmpty())
        return QStringLiteral("No differences between %1 and %2.").arg(before, after);
    const int breaking = countBreaking(differences);
    return QStringLiteral("%1 from %2 to %3; %4 data that fits %2.")
        .arg(plural(differences.size(), QStringLiteral("difference")), before, after,
            breaking == 0 ? QStringLiteral("none breaks")
                          : QStringLiteral("%1 of them can break").arg(breaking));
}
