#pragma once

#include <tessel_data/ConversionTarget.h>
#include <tessel_data/RowSpool_p.h>

#include <limits>

namespace tessel {

/* A column of an SPSS or Stata file: takes its values into a spool and keeps in mind what it needs.
 */
class StatColumn {
public:
    StatColumn(const ConversionColumn& column, ConversionFormat format);

    void addNumber(RowSpool& spool, qint64 number)
    {
        addWhole(spool, number);
    }
    void add(RowSpool& spool, const DataBatch& batch, quint32 cell, ConversionCounts& counts);

    /* What the file needs, when all values are there. */
    ConversionColumn::Type type() const;
    int textBytes() const;
    /* Kinds of missing values that are there: bit 0 for 'a'. */
    quint32 kinds() const
    {
        return m_kinds;
    }
    /* Their first code in an SPSS file. */
    double missingBase() const;

    /* The number that a value of the spool stands for. */
    double numberOf(const RowSpool::Value& value) const;

private:
    void addWhole(RowSpool& spool, qint64 number)
    {
        m_low = std::min(m_low, number);
        m_high = std::max(m_high, number);
        spool.addWhole(number);
    }
    void addMissing(RowSpool& spool, char tag);
    void addExact(RowSpool& spool, qint64 number, Special special, ConversionCounts& counts);
    void addReal(RowSpool& spool, double number, Special special, ConversionCounts& counts);
    void addUnfit(RowSpool& spool, std::string_view text, ConversionCounts& counts);
    void addText(RowSpool& spool, std::string_view text, ConversionCounts& counts);
    char tagOf(double number) const;
    bool isHeld(double number) const;

    const ConversionColumn& m_column;
    bool m_isStata;
    std::size_t m_mostBytes; // of a text; 0: any number
    bool m_hasTags = false;
    qint64 m_low = std::numeric_limits<qint64>::max(); // of whole numbers, as they are scaled
    qint64 m_high = std::numeric_limits<qint64>::min();
    double m_lowReal = std::numeric_limits<double>::infinity();
    double m_highReal = -std::numeric_limits<double>::infinity();
    bool m_hasFractions = false;
    std::size_t m_bytes = 0;
    quint32 m_kinds = 0;
    std::string m_text;
};

} // namespace tessel
