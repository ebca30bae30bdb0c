#pragma once

#include <model_Tessel/CSProDataImport.h>

#include <memory>

class TCSProValueSet;
class TValueSetItem;

/*
 * Fills fields with what their items say, in the way of one reading. Occurrences share their value
 * sets, so the texts of one are the texts of all.
 */
class CSProFieldFiller {
public:
    static std::unique_ptr<CSProFieldFiller> create(const TCSPro& dictionary);
    virtual ~CSProFieldFiller();

    void fill(TCSProVariable& field, const TCSProItem& item);

protected:
    CSProFieldFiller() = default;

    // Decimals, and the range of a number that no value set bounds.
    virtual void describe(TCSProVariable& field, const TCSProItem& item) = 0;
    // Takes labels and bounds from the value sets of the items that follow.
    virtual void summarize(const QList<TCSProValueSet*>& valueSets) = 0;
    virtual void bound(TCSProVariable& field) const = 0;

    int m_fieldType = TGenericField::NoType; // of the fields that the value sets are of
    QString m_labels;

private:
    Q_DISABLE_COPY(CSProFieldFiller)

    QList<TCSProValueSet*> m_valueSets; // that were summarized last
};
