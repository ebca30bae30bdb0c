#pragma once

#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/StatInput.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <readstat.h>

#include <memory>

/*!
 * \file StatRows.h
 * What the rows of an SPSS or Stata file tell of its variables.
 */

/*! The codes of a value set, as rows have them. */
class MODEL_TESSEL_EXPORT TStatCodes {
public:
    /*! Numbers count as such and as texts; blanks at the end of a text do not count. */
    explicit TStatCodes(const QStringList& codes);

    /*! True for one of the codes. */
    bool contains(readstat_value_t value) const;

private:
    QSet<double> m_numbers;
    QSet<QByteArray> m_texts;
};

/*! A variable whose values are compared with codes, and what came of it. */
struct TStatCodedVariable {
    QString name; /*!< the variable at this position is passed over when it has another name */
    std::shared_ptr<const TStatCodes> codes; /*!< may be shared; null: it is passed over */
    bool hasValues = false; /*!< besides missing ones */
    bool hasOthers = false; /*!< values that are no codes */

    /*! True when the rows hold codes and missing values only, and at least one code. */
    bool hasOnlyCodes() const
    {
        return hasValues && !hasOthers;
    }
};

/*!
 * Reads the rows of the opened file \a input and compares their values with the codes of
 * \a variables, which stand in the order of the file. A blank text is missing.
 *
 * False when the rows were not read to their end, as they are damaged or more than would take some
 * seconds; what \a variables say is then worth nothing. Why a file can be read no further
 * describeFailure() tells. Nothing is printed.
 */
MODEL_TESSEL_EXPORT bool compareRows(
    TStatInput& input, TStatFileKind kind, QVector<TStatCodedVariable>& variables);
