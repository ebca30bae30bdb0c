#pragma once

#include <tessel_data/DataBatch.h>

#include <QString>
#include <QVector>

#include <array>
#include <optional>
#include <vector>

namespace tessel {

/*! How many values there are, and how much they weigh together; or that this is not told. */
class TESSEL_DATA_EXPORT StatisticsCell {
public:
    StatisticsCell() = default;
    /*! \a count values of the weight \a weight, which is their number where nothing weighs. */
    StatisticsCell(qint64 count, double weight)
        : m_count(count)
        , m_weight(weight)
    {
    }

    /*! True when too few values are in it to be told; its numbers are gone. */
    bool isHidden() const
    {
        return m_isHidden;
    }
    /*! How many values; nothing where that is hidden. */
    std::optional<qint64> count() const
    {
        return m_isHidden ? std::nullopt : std::optional<qint64>(m_count);
    }
    /*! What they weigh; nothing where that is hidden. */
    std::optional<double> weight() const
    {
        return m_isHidden ? std::nullopt : std::optional<double>(m_weight);
    }
    /*! True when it is told that there is no value. */
    bool isZero() const
    {
        return !m_isHidden && m_count == 0;
    }
    /*! Forgets the numbers. */
    void hide();
    /*! Adds what \a other has; the sum with a hidden cell is hidden. */
    StatisticsCell& operator+=(const StatisticsCell& other);

private:
    qint64 m_count = 0;
    double m_weight = 0;
    bool m_isHidden = false;
};

/*! What a value is counted as. */
enum class StatisticsKind {
    Valid, /*!< neither blank nor special, and of the variable's type */
    Missing,
    NotApplicable,
    Refused,
    Default,
    Blank, /*!< without a special code; no number at all in SPSS and Stata */
    NotANumber, /*!< a text where a number is due; infinite numbers */
    Unfit, /*!< a number with more digits or decimals than its item */
};

constexpr std::size_t StatisticsKindCount = std::size_t(StatisticsKind::Unfit) + 1;

/*! Name of a kind in files, for example "not-applicable". */
TESSEL_DATA_EXPORT QString statisticsKindName(StatisticsKind kind);

/*! What stands for a code outside the value set, or for a kind of missing values of Stata. */
struct StatisticsCode {
    QString code; /*!< as it stands in the data; of a kind ".a" to ".z" */
    StatisticsCell cell;
    qint64 uncertain = 0; /*!< as many more there may be, where not all codes were counted */
};

/*!
 * Mean, standard deviation and quartiles of the values that count: neither special nor missing.
 * Nothing stands where there are too few values, or where it is hidden.
 *
 * Weights count how often a row stands for others: the squares' sum is divided by the sum of the
 * weights less 1, as SPSS does. A quartile is the smallest value that so many of the values do not
 * exceed, or the mean of it and the next, where these are exactly as many (the second of the nine
 * definitions that R has; AEMPIRICAL of SPSS).
 */
struct StatisticsMoments {
    std::optional<double> mean;
    std::optional<double> deviation; /*!< of a sample: divided by one less */
    std::optional<double> lowerQuartile;
    std::optional<double> median;
    std::optional<double> upperQuartile;
    /*!
     * 0: the quartiles are exact. Else there were too many different values to keep, and what
     * stands is a value whose place among them is as near to the quartile's as this share.
     */
    double quartileError = 0;
};

/*! A bar of a histogram. */
struct StatisticsBin {
    double low = 0; /*!< included */
    double high = 0; /*!< not included */
    StatisticsCell cell;
};

/*! How often the codes of one value set come, in the order of its codes. */
struct StatisticsValueSet {
    int valueSet = 0; /*!< index in DataDictionary::valueSets */
    std::vector<StatisticsCell> codes; /*!< by code, those of special values too */
    std::vector<StatisticsKind> kinds; /*!< what values of each code are counted as */
    StatisticsCell rest; /*!< values and blanks that none of the codes stands for */
};

/*!
 * What a variable holds; the occurrences of a repeated item together, or one of them. Of an
 * identification item each case counts once, of others each row.
 */
struct VariableStatistics {
    int record = 0; /*!< index in the dictionary; -1: an identification item */
    int variable = 0; /*!< index in the dictionary; of several occurrences the first */
    int occurrences = 0; /*!< that are counted together; 0: the variable alone */
    bool isOccurrence = false; /*!< a single one, which is counted in those together as well */
    bool isWeighted = false; /*!< false: the weights of cells and moments are mere counts */
    bool isQuantity =
        false; /*!< its numbers measure something, so that they may be shown as such */

    StatisticsCell total; /*!< the sum of all kinds; never hidden */
    std::array<StatisticsCell, StatisticsKindCount> kinds; /*!< by kind */
    QVector<StatisticsCode> missingKinds; /*!< of Stata, of those missing: ".a" to ".z" */
    StatisticsCell outside; /*!< of those valid: in no code of the value set */
    QVector<StatisticsCode> outsideCodes; /*!< of them the most frequent ones, unweighted */
    bool hasAllOutsideCodes = true; /*!< false: there are more */
    std::vector<StatisticsValueSet> valueSets; /*!< in the order of the variable's */

    bool hasNumbers = false; /*!< there are numbers, hidden or not; the next are theirs */
    QString lowest; /*!< null: hidden */
    QString highest; /*!< null: hidden */
    StatisticsCell lowestCell; /*!< values that are the lowest; unweighted */
    StatisticsCell highestCell;
    StatisticsMoments moments;
    StatisticsMoments weightedMoments; /*!< where isWeighted */
    std::vector<StatisticsBin> histogram; /*!< of quantities, without gaps; empty: none */

    /*! Values of a kind. */
    const StatisticsCell& of(StatisticsKind kind) const
    {
        return kinds[std::size_t(kind)];
    }
};

/*! The rows of a record, and what became of their weights. */
struct RecordStatistics {
    StatisticsCell rows;
    bool isWeighted = false; /*!< the weight can be found for these rows */
    /*! \name Rows that weigh nothing, as their weight cannot be used. */
    /*! @{ */
    qint64 negativeWeights = 0;
    qint64 missingWeights = 0; /*!< blank, or a special value */
    qint64 unreadableWeights = 0; /*!< no number, or an infinite one */
    qint64 absentWeights = 0; /*!< the case has no record with the weight */
    /*! @} */

    /*! Rows that weigh nothing for any of these reasons. */
    qint64 withoutWeight() const
    {
        return negativeWeights + missingWeights + unreadableWeights + absentWeights;
    }
};

/*!
 * How often the codes of two variables come together, for each row of the lower record. Its lines
 * and columns are the codes of the first value set of the two, in their order, and behind them all
 * that has no code.
 */
struct TESSEL_DATA_EXPORT CrossTable {
    int first = 0; /*!< variable of the lines: index in the dictionary */
    int second = 0; /*!< of the columns */
    int firstValueSet = 0; /*!< index in DataDictionary::valueSets */
    int secondValueSet = 0;
    int record = 0; /*!< whose rows are counted; -1: cases, as both are identification items */
    bool isWeighted = false;
    int lineCount = 0; /*!< codes, and one more */
    int columnCount = 0;
    std::vector<StatisticsCell> cells; /*!< line by line */
    std::vector<StatisticsCell> lineTotals;
    std::vector<StatisticsCell> columnTotals;
    StatisticsCell total;

    /*! The cell of a line and a column. */
    const StatisticsCell& cell(int line, int column) const
    {
        return cells[std::size_t(line) * std::size_t(columnCount) + std::size_t(column)];
    }
};

/*! What data hold: figures of all their variables. */
struct TESSEL_DATA_EXPORT StatisticsReport {
    SourceCounts counts;
    std::vector<SourceFile> files;
    bool addsUp = false; /*!< what was counted is what was read, and that equals its parts */
    bool hasCases = true;
    StatisticsCell cases; /*!< that have a record; without weights */
    int weight = -1; /*!< variable that weighs: index in the dictionary; -1: none */
    std::vector<RecordStatistics> records; /*!< by record */
    /*!
     * Identification items, then the variables record by record in the order of the dictionary;
     * occurrences together, behind them one by one where that was wanted.
     */
    std::vector<VariableStatistics> variables;
    std::vector<CrossTable> crosses;
    qint64 hiddenBelow = 0; /*!< cells of fewer values are hidden; 0: none */

    /*! Figures of variable \a variable, of all its occurrences; null: not there. */
    const VariableStatistics* find(int variable) const;

    /*!
     * Hides what fewer than \a fewest values are in, in all figures, for good: cells with at least
     * one, and as many others as it takes that none follows from totals; the lowest and highest
     * value where few have it; means and quartiles where codes would follow from them; further
     * value sets and histograms where they would tell of others. Single occurrences go. A zero
     * stays, rows of records are told always, and counts of unusable weights are for who makes the
     * figures.
     */
    void suppress(qint64 fewest);
};

} // namespace tessel
