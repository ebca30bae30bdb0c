#pragma once

#include <model_Tessel/CSProFieldFiller_p.h>
#include <model_Tessel/CSProLengthRange_p.h>

#include <optional>
#include <tuple>

/*
 * Fields as their dictionary has them: scaled values, ranges that the columns hold, labels in the
 * chosen language. Special values are in no range; several value sets are alternatives, of which
 * the first with numbers has the bounds.
 */
class CSProWrittenFields final : public CSProFieldFiller {
public:
    explicit CSProWrittenFields(const TCSPro& dictionary);

protected:
    void describe(TCSProVariable& field, const TCSProItem& item) override;
    void summarize(const QList<TCSProValueSet*>& valueSets) override;
    void bound(TCSProVariable& field) const override;

private:
    void takeLengthRange(TCSProVariable& field, const TCSProItem& item);
    void addEntries(const TCSProValueSet& valueSet);
    bool takeNumber(QString& code);
    void widen(double number);

    const TCSPro& m_dictionary;
    // The length range that was made last, and what it was made of.
    std::optional<CSProLengthRange> m_range;
    std::tuple<int, int, bool> m_width;
    double m_min = 0;
    double m_max = 0;
    bool m_hasBounds = false;
    bool m_isBounded = false; // by an earlier set
};
