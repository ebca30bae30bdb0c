#pragma once

#include "listing/Listing.h"

#include <QString>
#include <QVector>

#include <variant>

enum class DifferenceKind {
    DictionaryChanged,
    RecordAdded,
    RecordRemoved,
    RecordChanged,
    VariableAdded,
    VariableRemoved,
    Renamed,
    Moved,
    Retyped,
    Resized,
    Relabelled,
    ValueAdded,
    ValueRemoved,
    ValueChanged,
    MissingChanged,
    NotApplicableChanged
};

/*! What of a dictionary, record, variable or code changed. */
enum class DifferingProperty {
    None, /*!< all of it */
    RecordTypeStart,
    RecordTypeLength,
    Name,
    Label,
    RecordType,
    Maximum,
    Level,
    Record,
    Start,
    Type,
    Length,
    Decimals,
    DecimalChar,
    Occurrences,
    OccurrenceLabel,
    Missing,
    NotApplicable,
    Special
};

/*! What a property was or is; a null text, like nothing at all, stands for none. */
using PropertyValue = std::variant<std::monostate, QString, int, bool, ValueType, SpecialCode>;

/*! One difference between two dictionaries, and what it does to data that fits the first. */
struct Difference {
    DifferenceKind kind = DifferenceKind::VariableAdded;
    bool breaks = false; /*!< data that fits the first dictionary may not fit the second */
    QString record; /*!< as the first names it, of additions the second; null: no record */
    QString variable; /*!< null: of the record, or of the dictionary */
    QString valueSet; /*!< that a value stands in; null: it has no name */
    QString code; /*!< of a value; of a range: its low bound */
    QString highCode; /*!< null: no range */
    DifferingProperty property = DifferingProperty::None;
    PropertyValue before;
    PropertyValue after;
};
