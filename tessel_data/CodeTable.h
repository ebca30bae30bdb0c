#pragma once

#include <tessel_data/DataValue.h>

#include <QByteArray>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tessel {

/*!
 * The codes of a variable, made ready for looking up values of any number: the first code that fits
 * a value stands for it. Const members may be called from several threads at once.
 */
class TESSEL_DATA_EXPORT CodeTable {
public:
    /*! What the table says of a value. */
    struct Match {
        bool isCode = false;
        Special special = Special::None;
        int entry = -1; /*!< number that the code was added with */
    };

    /*! Numbers from \c low to \c high that one code stands for. */
    template <typename Number> struct Segment {
        Number low;
        Number high;
        Special special;
        int entry;
    };

    /*! \name Codes in the order of the dictionary; finish() after the last. */
    /*! @{ */
    /*! Adds the numbers from \a low to \a high. */
    void addNumbers(qint64 low, qint64 high, Special special, int entry);
    /*! Adds the real numbers from \a low to \a high. */
    void addReals(double low, double high, Special special, int entry);
    /*! Adds the text \a code. */
    void addText(std::string_view code, Special special, int entry);
    /*! Adds the code of blanks. */
    void addBlank(Special special, int entry);
    /*! Makes the table ready for looking up. */
    void finish();
    /*! @} */

    /*! True when no code was added. */
    bool isEmpty() const;
    /*! True when it says which values there are: it has other codes than those of special values.
     */
    bool isClosed() const
    {
        return m_hasReals || m_hasTexts || m_lowest <= m_highest;
    }
    /*! What the table says of a blank. */
    const Match& blank() const;
    /*! What the table says of a number. */
    Match find(qint64 number) const;
    /*! What the table says of a real number. */
    Match find(double number) const;
    /*! What the table says of a text. */
    Match find(std::string_view text) const;

    /*! State of a number. */
    ValueState stateOf(qint64 number) const
    {
        const quint64 place = quint64(number) - quint64(m_denseLow);
        return place < m_dense.size() ? m_dense[place] : stateOfRare(number);
    }
    /*! State of a real number. */
    ValueState stateOf(double number) const;
    /*! State of a text. */
    ValueState stateOf(std::string_view text) const;
    /*! State of a blank. */
    ValueState stateOfBlank() const;

    /*! \name What was added, after finish(): disjoint and in order; of texts the first of each. */
    /*! @{ */
    /*! Numbers. */
    const std::vector<Segment<qint64>>& numbers() const
    {
        return m_numbers;
    }
    /*! Real numbers. */
    const std::vector<Segment<double>>& reals() const
    {
        return m_reals;
    }
    /*! Texts. */
    const std::unordered_map<std::string_view, Match>& texts() const
    {
        return m_texts;
    }
    /*! @} */

private:
    template <typename Number> static void sweep(std::vector<Segment<Number>>& segments);
    template <typename Number>
    static const Segment<Number>* segmentOf(
        const std::vector<Segment<Number>>& segments, Number number);
    ValueState stateOfRare(qint64 number) const;
    ValueState stateOfSegment(qint64 number) const;
    void fillDense();

    std::vector<Segment<qint64>> m_numbers; // after finish(): disjoint, in order
    std::vector<Segment<double>> m_reals;
    std::unordered_map<std::string_view, Match> m_texts;
    std::vector<std::unique_ptr<std::string>> m_textStore; // what the keys above view
    Match m_blank;
    std::vector<ValueState> m_dense; // states of the numbers from m_denseLow on
    qint64 m_denseLow = 0;
    bool m_hasReals = false; // other than special ones
    bool m_hasTexts = false;
    qint64 m_lowest = 0; // of the codes that are not special
    qint64 m_highest = -1;
};

} // namespace tessel
