#pragma once

#include <model_Tessel/CSProBuilder_p.h>

#include <QHash>

/*
 * Builds what a dictionary says: occurrences with their numbers and labels, subitems with their
 * parents, all value sets with all codes in their order, links between them, special codes.
 */
class CSProWrittenBuilder final : public CSProBuilder {
public:
    CSProWrittenBuilder(CSProModel& model, CSProFindings& findings);

    void addValueSet(ValueSetPointer valueSet) override;
    bool ignoresValueSets() const override;
    void finishItem() override;

protected:
    void placeItem(ItemPointer item) override;
    void passOverItem(const TCSProItem& item) override;

private:
    // True for a subitem whose item stands before it in the record.
    bool hasParent(const TCSProItem& item) const;
    void appendOccurrences(const TCSProItem& item, int parents);
    TCSProItem* makeOccurrence(const TCSProItem& item, int ofParent, int number) const;
    void nameOccurrence(TCSProItem& occurrence, const TCSProItem& item, int number) const;
    void nameOccurrenceOfParent(
        TCSProItem& occurrence, const TCSProItem& item, int ofParent, int number) const;
    void shareLinkedValues(TCSProValueSet& valueSet);
    void reportOddCodes(const TCSProValueSet& valueSet);
    void takeSpecialCodes(const TCSProValueSet& valueSet);

    int m_groupStart = 0; // index of the first field of the item added last
    bool m_isFinished = true; // its occurrences share its value sets
    // The last item that is no subitem: its record, and its fields among all items.
    TCSProRecord* m_parentRecord = nullptr;
    int m_parentStart = 0;
    int m_parentCount = 0;
    QHash<QString, TCSProValueSet*> m_links; // first set with values of each link
};
