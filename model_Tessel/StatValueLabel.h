#pragma once

#include <cstddef>

/*!
 * One value label of an SPSS or Stata file, as libreadstat reports it.
 *
 * A value of -1 (or -1.0) cannot be told from one that was never set.
 * Ownership: the records that an importer makes, and their texts, belong to the importer and live
 * until its label sets are emptied.
 */
struct TStatValueLabel {
    double numValue = -1.0; /*!< the value when it is of floating type; -1.0: unset */
    int intValue = -1; /*!< the value when it is of integer type; -1: unset */
    char* strValue = nullptr; /*!< the value when it is a string: null-terminated UTF-8 */
    std::size_t strLength = 0; /*!< bytes of \c strValue, without the null */
    char* label =
        nullptr; /*!< the label: null-terminated, in the encoding of libreadstat's texts */
    std::size_t labelLength = 0; /*!< bytes of \c label, without the null */
};
