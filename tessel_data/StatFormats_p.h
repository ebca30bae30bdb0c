#pragma once

#include <tessel_data/ConversionPlan.h>

#include <model_Tessel/StatDictionary.h>

namespace tessel {

/* How a file is to show the values of a variable, and in which unit they are written. */
struct StatFormat {
    QString format; // empty: that of the type
    ConversionUnit unit = ConversionUnit::AsIs;
    bool isHeld = true; // false: it shows them otherwise than the source
    int width = 0; // columns that it takes
};

/* Of a variable of CSPro data. */
StatFormat formatOf(const DataVariable& variable, ConversionFormat target);

/* True for formats of numbers that stand for days or times. */
bool isDateFormat(const QString& format, TStatFileKind kind);

/* Of a variable of an SPSS or Stata file. */
StatFormat formatOf(
    const TStatVariableDescription& source, TStatFileKind kind, ConversionFormat target);

} // namespace tessel
