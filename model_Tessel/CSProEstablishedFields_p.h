#pragma once

#include <model_Tessel/CSProFieldFiller_p.h>

/*
 * Fields as hosts have relied on so far: values are not scaled, ranges start at 0, and all value
 * sets count, their first and last entry first.
 */
class CSProEstablishedFields final : public CSProFieldFiller {
protected:
    void describe(TCSProVariable& field, const TCSProItem& item) override;
    void summarize(const QList<TCSProValueSet*>& valueSets) override;
    void bound(TCSProVariable& field) const override;

private:
    void startBounds(const TCSProValueSet& first);
    void addEntries(const TCSProValueSet& valueSet);
    void addEntry(const TValueSetItem& entry);
    void addLabel(const QString& code, const QString& label);

    double m_min = 0;
    double m_max = 0;
    bool m_hasHighest = false; // otherwise the value sets tell the lowest alone
    QString m_lowest;
    QString m_highest;
};
