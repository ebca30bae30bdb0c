#pragma once

#include <model_Tessel/model_Tessel_global.h>

/*!
 * How a CSPro dictionary is read: one flag for each rule that decides differently when a dictionary
 * is read as it was written than hosts have relied on so far.
 *
 * With all flags off, the default everywhere, nothing changes for an existing host.
 */
struct CSProReadingRules {
    /*! A line answers for a key when its whole key, in any case, is that; its value keeps every
     * "=". */
    bool wholeKeys = false;
    /*! A key that is missing has the format's default: 1 for MaxRecords, 0 for the record type. */
    bool formatDefaults = false;
    /*!
     * A code in quotes, ' or ", is one code with the blanks and separators in it. With this rule or
     * one of the next two, value lines are cut into codes one by one.
     */
    bool quotedCodes = false;
    /*! A range is one entry with two bounds. */
    bool ranges = false;
    /*! Each of several codes on one line is an entry, on the last line of a set too. */
    bool severalCodes = false;
    /*!
     * "Name=WORD,Special" makes the value before it special: MISSING, NOTAPPL, REFUSED or DEFAULT.
     * The entry stays in the set, marked; it counts in no range, and every occurrence has its code.
     */
    bool specials = false;
    /*! All value sets of an item are kept; otherwise the first. */
    bool allValueSets = false;
    /*! Decimal codes of an item with decimals need no question and stay as they are. */
    bool decimalCodes = false;
    /*! A value set is kept whatever its codes are. */
    bool keptValueSets = false;
    /*! Entries stay in the order of the dictionary. */
    bool writtenOrder = false;
    /*! Occurrences carry their number in digits, their labels and all settings of their item. */
    bool occurrenceNumbers = false;
    /*! A subitem of a repeated item occurs with it. */
    bool repeatedSubItems = false;
    /*!
     * Real values without a point in the text are scaled by the implied decimals, and the field's
     * \c decimals text is their number in digits.
     */
    bool scaledValues = false;
    /*!
     * A number that no value set bounds has the range that its columns hold: decimals count, and a
     * sign and a point that is in the data take a column each.
     */
    bool lengthRanges = false;
    /*! Levels, notes, relations, parents of subitems, links between value sets and images are read.
     */
    bool structure = false;
    /*! Languages are read; the texts of a label stand apart, see TCSPro::labelText(). */
    bool languages = false;
    /*!
     * Without a codec of its own a file is decoded by its byte-order mark, else as UTF-8 when it is
     * valid, else as Windows-1252.
     */
    bool foundEncoding = false;
    /*!
     * A carriage return alone ends a line; otherwise carriage returns go wherever they stand in a
     * file.
     */
    bool allLineEnds = false;
    /*!
     * A file that begins with "{" is read as a JSON dictionary of CSPro 8 and later. What the JSON
     * says of keys, codes, specials, structure and languages is read with it; the other rules hold
     * as for text.
     */
    bool json = false;

    /*! The rules that hosts have relied on so far: the default everywhere. */
    static constexpr CSProReadingRules established()
    {
        return {};
    }

    /*! The rules that read what the dictionary says. */
    static constexpr CSProReadingRules asWritten()
    {
        CSProReadingRules rules;
        rules.formatDefaults = true;
        rules.wholeKeys = rules.quotedCodes = rules.ranges = rules.severalCodes = true;
        rules.specials = rules.allValueSets = rules.decimalCodes = rules.keptValueSets = true;
        rules.writtenOrder = rules.occurrenceNumbers = rules.repeatedSubItems = true;
        rules.scaledValues = rules.lengthRanges = rules.structure = rules.languages = true;
        rules.foundEncoding = rules.allLineEnds = rules.json = true;
        return rules;
    }
};
