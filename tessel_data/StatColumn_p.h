#pragma once

#include <tessel_data/ConversionTarget.h>
#include <tessel_data/FreeCodes_p.h>
#include <tessel_data/RowSpool_p.h>

#include <limits>

namespace tessel {

/*
 * A column of an SPSS or Stata file: makes its values ready for a sink, which is a RowSpool or a
 * StatFileWriter, and keeps in mind what it needs.
 */
class StatColumn {
public:
    /* isSettled: what is planned is wide enough. */
    StatColumn(const ConversionColumn& column, ConversionFormat format, bool isSettled = false);

    /* Codes that kinds of missing values cannot have. */
    void takeLabels(const ConversionLabelSet& labels);

    /* True when a file may be begun before all values are there. */
    static bool mayBeSettled(const ConversionColumn& column);

    template <typename Sink> void addNumber(Sink& sink, qint64 number)
    {
        addWhole(sink, number);
    }
    template <typename Sink>
    void add(Sink& sink, const DataBatch& batch, quint32 cell, ConversionCounts& counts)
    {
        const ValueState state = batch.states[cell];
        if (state == ValueState(ValueKind::Number) && isPlain(batch.numbers[cell]))
            addWhole(sink, batch.numbers[cell]);
        else if (state == ValueState())
            sink.addMissing();
        else
            addOther(sink, batch, cell, counts);
    }

    /* What the file needs, when all values are there. */
    ConversionColumn::Type type() const;
    int textBytes() const;
    /* The most characters of a text that has more bytes than planned; 0: none has. */
    int textCharacters() const
    {
        return int(m_characters);
    }
    /* Of all texts together. */
    qint64 allTextBytes() const
    {
        return m_allBytes;
    }
    /* Kinds of missing values that are there: bit 0 for 'a'. */
    quint32 kinds() const
    {
        return m_kinds;
    }
    /* Those that are there or have a label. */
    quint32 codedKinds() const
    {
        return m_kinds | m_labelledKinds;
    }
    /* The code of 'a' in an SPSS file; not a number when none is free. */
    double missingBase() const
    {
        return m_free.first();
    }

    /* What a whole number stands for, which is scaled. */
    double numberOf(qint64 number) const
    {
        return isExact(number) ? double(number) / m_scale : scaled(number);
    }

private:
    template <typename Sink> void addWhole(Sink& sink, qint64 number)
    {
        if (!m_isSettled) {
            m_low = std::min(m_low, number);
            m_high = std::max(m_high, number);
        }
        sink.addWhole(number);
    }
    static bool isExact(qint64 number)
    {
        return number <= MostExact && number >= -MostExact;
    }
    bool isPlain(qint64 number) const
    {
        return number <= m_mostPlain && number >= -m_mostPlain;
    }
    template <typename Sink> void addMissing(Sink& sink, char tag);
    template <typename Sink>
    void addExact(Sink& sink, qint64 number, Special special, ConversionCounts& counts);
    template <typename Sink>
    void addReal(Sink& sink, double number, Special special, ConversionCounts& counts);
    template <typename Sink>
    void addUnfit(Sink& sink, std::string_view text, ConversionCounts& counts);
    template <typename Sink>
    void addText(Sink& sink, std::string_view text, ConversionCounts& counts);
    template <typename Sink>
    void addOther(Sink& sink, const DataBatch& batch, quint32 cell, ConversionCounts& counts);
    double scaled(qint64 number) const;
    bool isGivenBack(qint64 number) const;
    static constexpr qint64 MostExact = qint64(1) << 53; // as a double
    static constexpr qint64 MostDecimal = 1'000'000'000'000'000; // scaled: 15 digits

    char tagOf(double number) const;
    bool isHeld(double number) const;

    const ConversionColumn& m_column;
    bool m_isStata;
    bool m_isSettled;
    qint64 m_mostPlain; // all up to it are exact
    double m_scale; // of whole numbers
    std::size_t m_mostBytes; // of a text; 0: any number
    bool m_hasTags = false;
    qint64 m_low = std::numeric_limits<qint64>::max(); // of whole numbers, as they are scaled
    qint64 m_high = std::numeric_limits<qint64>::min();
    bool m_hasFractions = false;
    std::size_t m_bytes = 0;
    std::size_t m_characters = 0;
    qint64 m_allBytes = 0;
    quint32 m_kinds = 0;
    quint32 m_labelledKinds = 0;
    FreeCodes m_free; // in an SPSS file, for kinds
    std::string m_text;
};

} // namespace tessel
