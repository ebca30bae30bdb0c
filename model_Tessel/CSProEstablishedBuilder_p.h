#pragma once

#include <model_Tessel/CSProBuilder_p.h>

#include <functional>

/*
 * Builds what hosts rely on: occurrences named by the character of their number, one checked and
 * sorted value set for each item.
 */
class CSProEstablishedBuilder final : public CSProBuilder {
public:
    // Asks what becomes of decimal codes; the answer is the model's decimalButton.
    using DecimalQuestion = std::function<void(const CSProProblem&)>;

    CSProEstablishedBuilder(CSProModel& model, CSProFindings& findings, DecimalQuestion ask);

    void addValueSet(ValueSetPointer valueSet) override;
    bool ignoresValueSets() const override;

protected:
    void placeItem(ItemPointer item) override;

private:
    static TCSProItem* makeOccurrence(const TCSProItem& item, int number);
    bool acceptsCodes(TCSProValueSet& valueSet);
    bool settleDecimalCodes(TCSProValueSet& valueSet);
    bool attach(TCSProValueSet* valueSet);
    bool attachToOccurrences(TCSProValueSet* valueSet);

    DecimalQuestion m_ask;
};
