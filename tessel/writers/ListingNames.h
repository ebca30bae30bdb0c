#pragma once

#include "listing/Listing.h"

#include <QString>

/*! What the enumerations of a listing are called in every output; null where nothing is told. */

/*! "cspro", "spss" or "stata". */
QString nameOf(ListingKind kind);

/*! "integer", "real" or "string". */
QString nameOf(ValueType type);

/*! "nominal", "ordinal" or "scale". */
QString nameOf(Measure measure);

/*! "missing", "not applicable", "refused" or "default". */
QString nameOf(SpecialCode special);

/*! "length" or "value set". */
QString nameOf(RangeSource source);

/*! "implied" or "data". */
QString nameOf(DecimalPoint point);

/*! \a decimals, and where their point stands when that is told; empty for none. */
QString shownDecimals(int decimals, DecimalPoint point);

/*! The label of \a entry, and behind it what else the code stands for. */
QString shownLabel(const ListedCode& entry);
