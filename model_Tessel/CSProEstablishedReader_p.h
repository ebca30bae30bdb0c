#pragma once

#include <model_Tessel/CSProTextReader_p.h>

/*
 * Reads lines as hosts have relied on so far: a key's word anywhere in a line answers for the key.
 */
class CSProEstablishedReader final : public CSProTextReader {
public:
    using CSProTextReader::CSProTextReader;

protected:
    Values find(const CSProKeyFinder& keys, const CSProSection& section) override;
    Defaults defaults() const override;
    QString recordTypeValue(const QString& text) const override;
    void fillValueSet(const CSProSection& section, TCSProValueSet& valueSet) override;
};

// Stores the values of an entry whose code holds several as entries of their own.
void storeSeparately(TCSProValueSet& valueSet, const TValueSetItem& entry);
