#pragma once

#include "listing/Listing.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <map>

class TOxLookupValue;

/*! A key or code for which a lookup and a variable do not agree. */
struct LabelDifference {
    QString key; /*!< of the lookup, or else the variable's code */
    QString text; /*!< in the lookup */
    QString label; /*!< of the variable */
};

/*! How the keys of a lookup compare with the value labels of a variable. */
struct LabelComparison {
    QString file;
    QString variable;
    QVector<LabelDifference> keysWithoutLabel;
    QVector<LabelDifference> labelsWithoutKey;
    QVector<LabelDifference> differentTexts;

    bool isEqual() const
    {
        return keysWithoutLabel.isEmpty() && labelsWithoutKey.isEmpty() && differentTexts.isEmpty();
    }
};

/*! A file with the variable that a lookup is compared with. */
struct LabelSource {
    QString file; /*!< empty: none */
    QString variable; /*!< name, in any case */
    QByteArray encoding; /*!< of a CSPro dictionary, name of the codec; empty: it is found */
};

/*!
 * Finds the variable of \a source. False, and told, when the file cannot be read or has no such
 * variable with value labels.
 */
bool readVariable(const LabelSource& source, ListedField& variable);

/*!
 * Compares the keys with the first value set of \a variable. Codes of a number compare as numbers,
 * so that 01 is 1; blanks at the ends do not count. A key within a range has a label, whose text is
 * not compared. The empty key stands for no record.
 */
LabelComparison compareLabels(
    const std::map<QString, TOxLookupValue*>& values, const ListedField& variable);
