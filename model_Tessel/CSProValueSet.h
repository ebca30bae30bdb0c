#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

/*!
 * One entry of a value set: a code, or one bound of a range, and its label.
 *
 * Format: a "Value=" line of a CSPro data dictionary, text form.
 */
class MODEL_TESSEL_EXPORT TValueSetItem : public QObject {
public:
    TValueSetItem();
    ~TValueSetItem() override;

    QString label;
    QString code; /*!< starts as the character of code 3 */
    int type = 0; /*!< 0 ordinary, 1 missing, 2 not applicable, 3 refused, 4 default */
    bool special = false; /*!< describes a special value */

private:
    Q_DISABLE_COPY(TValueSetItem)
};

/*! What a dictionary that is read as written says of an entry besides its code and its label. */
struct CSProValueDetail {
    QString highCode; /*!< upper bound of a range whose lower is the code; null: no range */
    bool isFurtherCode = false; /*!< another code of the value that the entry before it is of */
    QString note; /*!< of the value, as are those below */
    QString image; /*!< path as written, relative to the dictionary */
    QString textColor; /*!< as written */

    /*! True with a note, an image or a colour. */
    bool hasRemarks() const
    {
        return !note.isEmpty() || !image.isEmpty() || !textColor.isEmpty();
    }
    /*! True when nothing is said. */
    bool isEmpty() const
    {
        return highCode.isNull() && !isFurtherCode && !hasRemarks();
    }
};

/*!
 * The codes of an item with their labels.
 *
 * Format: section "[ValueSet]" of a CSPro data dictionary, text form.
 * Ownership: entries are never deleted by the library.
 */
class MODEL_TESSEL_EXPORT TCSProValueSet : public QObject {
    Q_OBJECT

public:
    TCSProValueSet();
    ~TCSProValueSet() override;

    /*! Appends \a item. */
    void addItem(TValueSetItem* item);
    /*! Number of entries. */
    int getCount() const;
    /*! Entry \a index, from 0; the index is not checked. */
    TValueSetItem* getValueSetItem(int index) const;
    /*!
     * Inserts \a item before position \a index, from 0 to the number of entries; throws an error
     * object of code 211 when it cannot.
     */
    void setValueSetItem(int index, TValueSetItem* item);

    /*!
     * Mode 0: false when a code is decimal; mode 1: false when a code is not an integer; true in
     * any other mode and for a set that is not numeric. Throws an error object of code 101.
     */
    bool validateItems(int mode);
    /*! Gives every entry of a numeric set whose code is not an integer the code "0". */
    void itemsAsNumberZero();
    /*! Rounds every decimal code of a numeric set. */
    void itemsAsInteger();
    /*!
     * Sorts the entries in place: numeric sets by CompareCodesNumeric(), others by CompareCodes().
     * Neither is an order, so what comes out depends on what goes in; O(n log n) all the same.
     */
    void sortItems();

    /*! What is said of \a entry; empty for most entries, and for all under the established reading.
     */
    const CSProValueDetail& detail(const TValueSetItem* entry) const;
    /*! True when something is said of some entry. */
    bool hasDetails() const;
    /*! Sets what detail() tells of \a entry; an empty one changes nothing. */
    void setDetail(const TValueSetItem* entry, const CSProValueDetail& detail);
    /*! Takes over the entries of \a valueSet, which stays their owner. */
    void shareEntries(TCSProValueSet* valueSet);
    /*! The set whose entries this one shares; null: they are its own. */
    TCSProValueSet* linkedSet() const;
    /*! Sets with the same link have the same values; empty: none. */
    QString link() const;
    /*! Sets what link() tells. */
    void setLink(const QString& link);
    /*! Note of the set; empty: none. */
    QString note() const;
    /*! Sets what note() tells. */
    void setNote(const QString& note);

    QString label;
    QString name;
    QString reservedText;
    bool isNumeric = true; /*!< false for the set of an alphanumeric item */
    QList<TValueSetItem*>* items;

    int sourceLine = 0; /*!< line of the set's header in the dictionary, from 1; 0: unknown */

private:
    Q_DISABLE_COPY(TCSProValueSet)

    struct Detail;
    Detail& editDetail();

    std::unique_ptr<Detail> m_detail; // null: nothing is said
};

/*! True when \a text reads as a decimal int. */
MODEL_TESSEL_EXPORT bool IsNumeric2(const QString& text);
/*! True when \a text is digits, one point and digits, of which either may be missing. */
MODEL_TESSEL_EXPORT bool IsDecimal(const QString& text);
/*! Three-way comparison of the codes of two TValueSetItem; -1 when either is null. */
MODEL_TESSEL_EXPORT int CompareCodes(void* first, void* second);
/*!
 * True when the code of TValueSetItem \a first is the smaller number; also when either is null or
 * not an integer.
 */
MODEL_TESSEL_EXPORT bool CompareCodesNumeric(void* first, void* second);
