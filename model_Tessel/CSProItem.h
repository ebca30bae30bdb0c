#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QObject>
#include <QString>
#include <QVector>

#include <memory>

class TCSProItem;
class TCSProRecord;
class TCSProValueSet;

/*! What a dictionary that is read as written says of an item, or of an occurrence, besides. */
struct CSProItemDetail {
    int level = 0; /*!< level of the questionnaire, from 1; 0: not read */
    QString refusedCode; /*!< code of a refused answer; empty: none */
    QString note;
    QString occurrenceLabel; /*!< of an occurrence */
    QVector<QString> occurrenceLabels; /*!< of the item, from the first occurrence on */
    TCSProItem* parent = nullptr; /*!< item that a subitem describes columns of; not owned */
    QString contentType; /*!< of a binary item, for example "image"; empty: text */
};

/*!
 * One item of a CSPro dictionary, or one occurrence of a repeated item.
 *
 * Format: section "[Item]" of a CSPro data dictionary, text form.
 * Ownership: made by TCSPro and never deleted by the library, as are the value sets.
 */
class MODEL_TESSEL_EXPORT TCSProItem : public QObject {
public:
    TCSProItem();
    ~TCSProItem() override;

    /*! Number of value sets, also stored in \c valueSetCount. */
    int getCount();
    /*! True when the item has a value set. */
    bool getHasValueSet() const;
    /*! Value set \a index, from 0; the index is not checked. */
    TCSProValueSet* getValueSet(int index) const;
    /*!
     * The value set that bounds the numbers of the item: the first with an ordinary code that is a
     * number. Null when there is none.
     */
    const TCSProValueSet* boundingValueSet() const;
    /*! Gives the item its value set; a second one is ignored. */
    void addValueSet(TCSProValueSet* valueSet);

    /*! What is said besides; nothing under the established reading, which pays nothing for it. */
    const CSProItemDetail& detail() const;
    /*! The same, to be changed; made when it is first asked for. */
    CSProItemDetail& editDetail();

    int valueSetCount = 0; /*!< what getCount() returned last */
    QString label;
    QString missingCode; /*!< code of the missing value, with its blanks; empty: none */
    QString name; /*!< of an occurrence: ends in "_" and the character whose code is its number */
    QString notApplicableCode; /*!< code of the not-applicable value; empty: none */
    int isAlpha = 0; /*!< 1: alphanumeric, 0: numeric */
    int decimal = 0; /*!< implied decimal places */
    int isSubItem = 0; /*!< 1: describes columns of the item before it */
    int len = 0; /*!< width in columns, of one occurrence */
    int occurrences = 1;
    int start = 1; /*!< first column in the data line, from 1 */
    bool hasDecimalChar = false; /*!< the data carry the decimal point */
    bool isZeroFill = false;
    int firstOccurrenceIndex = 0; /*!< of an occurrence: index of the first one among all items */
    TCSProRecord* record = nullptr; /*!< record that holds the item; not owned */
    QList<TCSProValueSet*>* valueSets; /*!< at most one, unless read as written */

    QString dictionaryName; /*!< \c name without what marks an occurrence */
    int occurrence = 0; /*!< number of the occurrence, from 1; 0 for an item that is not repeated */
    int sourceLine = 0; /*!< line of the item's header in the dictionary, from 1; 0: unknown */

private:
    Q_DISABLE_COPY(TCSProItem)

    std::unique_ptr<CSProItemDetail> m_detail; // null: nothing is said
};

/*!
 * One record of a CSPro dictionary. It does not hold its items: those link to it.
 *
 * Format: section "[Record]" of a CSPro data dictionary, text form.
 */
class MODEL_TESSEL_EXPORT TCSProRecord {
public:
    /*! Does nothing. */
    void addItem(TCSProItem* item);
    /*! 1, always. */
    int getCount() const;
    /*! Null, always. */
    TCSProItem* getItem(int index) const;

    QString label;
    QString name;
    QString recordTypeValue; /*!< code in the data line, without its quotes */
    QString required; /*!< "Required" as written */
    int maxRecords = 100; /*!< most records of this type in one case */
    int recordLen = 0; /*!< last column of the record */

    int level = 0; /*!< level of the questionnaire, from 1; 0: not read */
    QString note;
    QVector<QString> occurrenceLabels; /*!< from the first record of its type on */
    int sourceLine = 0; /*!< line of the record's header in the dictionary, from 1; 0: unknown */
};
