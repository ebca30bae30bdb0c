#pragma once

#include <QString>

/*!
 * What a reader of a CSPro dictionary should know about how it was read: something was passed over,
 * dropped or changed although the dictionary was loaded without an error.
 *
 * Format: CSPro data dictionary (.dcf), text form and JSON.
 */
struct CSProProblem {
    /*! What happened. */
    enum class Kind {
        ItemWithoutLength, /*!< the item has no "Len", or none above 0; \c text: its length */
        ItemWithoutStart, /*!< the item is taken to start at column 1 */
        ItemDropped, /*!< "Occurrences" is 0 or less; \c text: that number */
        RecordTypeRepeated, /*!< \c text: the record-type value that an earlier record has too */
        ValueSetIgnored, /*!< the item has a value set already */
        ValueSetWithoutItem, /*!< no item stands before the value set */
        ValueSetOnLastOccurrence, /*!< the other occurrences of the item were left without it */
        DecimalCodesDropped, /*!< the value set was dropped; \c text: its first decimal code */
        DecimalCodesConverted, /*!< codes became 0; \c text: the first decimal code */
        CodesNotInteger, /*!< the value set was dropped; \c text: its first code that is no integer
                          */
        TooManyItems, /*!< loading ended here; \c text: the limit */
        UnknownSection, /*!< \c text: its header */
        UnknownKey, /*!< \c text: the key */
        LineWithoutKey, /*!< \c text: the line */
        LineOutsideSection, /*!< the first such line; \c text: the line */
        RepeatedKey, /*!< the first line with the key stands; \c text: the key */
        NotANumber, /*!< a number is missing or malformed, so the line says nothing; \c text: the
                       value */
        UnknownWord, /*!< a key's default stands; \c text: the value */
        UnknownSpecial, /*!< the value stays ordinary; \c text: the value */
        UnclosedQuote, /*!< the code was taken to its end; \c text: the value */
        RangeReversed, /*!< the lower bound is the higher; \c text: the range */
        CodeNotANumber, /*!< of a numeric item; it was kept; \c text: the code */
        SubItemWithoutParent, /*!< no item stands before the subitem */
        LinkWithoutValues, /*!< no set with values has the link; \c text: the link */
        InvalidJson, /*!< loading ended here; \c text: what is wrong */
        WrongJsonType, /*!< a member was passed over; \c text: its path */
    };

    Kind kind = Kind::ItemWithoutLength;
    int line = 0; /*!< line of the text or of the section's header, from 1; 0: unknown (JSON) */
    QString name; /*!< name of the item or record concerned */
    QString valueSet; /*!< name of the value set concerned; empty when there is none */
    QString text; /*!< see the kinds */
};
