#pragma once

#include "listing/Listing.h"

#include <QHash>
#include <QString>

class TOxVariable;

/*! What is known of a variable and the model of the tree has no place for. */
struct VariableFacts {
    RangeSource rangeSource = RangeSource::Untold;
    QString rangeValueSet; /*!< name of the value set that has the ranges; null: none has */
    DecimalPoint decimalPoint = DecimalPoint::Untold;
};

/*! Those of the variables of a tree that was read as it was written. */
using TreeFacts = QHash<const TOxVariable*, VariableFacts>;
