#pragma once

#include <tessel_data/CodePlaces_p.h>
#include <tessel_data/FrequentCodes_p.h>
#include <tessel_data/NumberSummary_p.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <tuple>

namespace tessel {

// What the collectors of all variables share.
struct CollectorShare {
    explicit CollectorShare(const DataDictionary& data)
        : dictionary(data)
    {
    }

    // Variables of the same value sets share what is made of these.
    std::shared_ptr<const CodePlaces> codesOf(int valueSet, const DataVariable& variable);

    const DataDictionary& dictionary;
    std::map<std::tuple<int, int, int>, std::shared_ptr<const CodePlaces>> codes;
    NumberRoom room;
    std::size_t pointLimit = 2048; // of quantiles that are not exact
    std::size_t outsideCodes = 1000; // of one variable
    std::size_t outsideBytes = 8'388'608; // left for those of all variables
};

// Makes the figures of one variable, or of the occurrences of one item.
class VariableCollector {
public:
    // occurrences: how many are counted together; 0: the variable alone.
    VariableCollector(CollectorShare& share, int variable, int occurrences);

    // A value of a batch, which weighs weight.
    void add(const DataBatch& batch, quint32 cell, double weight);
    VariableStatistics finish(bool isWeighted, int shownCodes);
    // Different numbers and points that are kept.
    std::size_t keptCount() const;

private:
    static constexpr std::size_t SpecialCount = std::size_t(Special::Default) + 1;

    struct Set {
        int index;
        std::shared_ptr<const CodePlaces> codes;
        std::vector<Tally> tallies; // by place, the rest behind them
    };

    void addBlank(const DataBatch& batch, quint32 cell, double weight);
    void addText(std::string_view text, double weight);
    void addOutside(const DataBatch& batch, quint32 cell, double weight);
    void addRest(StatisticsKind kind, double weight);
    Tally& tallyOf(StatisticsKind kind)
    {
        return m_kinds[std::size_t(kind)];
    }
    template <typename Number> void addNumber(Number number, Special special, double weight);
    void empty(NumberTable& table, bool isSpecial);
    void countCodes(const std::vector<CountedNumber>& numbers);
    void countBlanks();
    VariableStatistics counted(bool isWeighted) const;
    StatisticsValueSet cellsOf(const Set& set, bool isWeighted) const;
    QVector<StatisticsCode> outsideCodes(int shownCodes) const;
    QVector<StatisticsCode> missingKinds(bool isWeighted) const;
    void addNumbers(VariableStatistics& result, bool isWeighted) const;
    QString textOf(const NumberSummary::End& end) const;

    CollectorShare& m_share;
    const DataVariable& m_variable;
    int m_index;
    int m_occurrences;
    bool m_isReal;
    bool m_isQuantity;
    std::array<Tally, StatisticsKindCount> m_kinds;
    Tally m_outside;
    std::array<Tally, SpecialCount> m_blanks; // by what they mean
    std::map<char, Tally> m_missingKinds;
    NumberTable m_values;
    NumberTable m_specials;
    NumberSummary m_numbers;
    FrequentCodes<qint64> m_outsideNumbers; // or the bits of doubles
    FrequentCodes<std::string> m_outsideTexts;
    std::vector<Set> m_sets;
};

} // namespace tessel
