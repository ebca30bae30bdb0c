#pragma once

#include <tessel_data/tessel_data_global.h>

#include <QString>

#include <string_view>

namespace tessel {

/*! What a value is; the lowest three bits of its state. */
enum class ValueKind : quint8 {
    Blank = 0, /*!< nothing; no number in SPSS and Stata */
    Number = 1, /*!< exact: the number times 10 to the variable's decimals */
    Real = 2, /*!< a double, of SPSS and Stata files only */
    Text = 3, /*!< without trailing blanks */
    NotANumber = 4, /*!< a text where a number is due */
    Unfit = 5, /*!< a number with more digits or decimals than fit; it has its text */
};

/*! The special values of a dictionary. */
enum class Special : quint8 { None = 0, Missing = 1, NotApplicable = 2, Refused = 3, Default = 4 };

/*! True for special values that mean that there is none. */
constexpr bool isMissing(Special special)
{
    return special == Special::Missing || special == Special::NotApplicable
        || special == Special::Refused;
}

/*! Kind of a value and what its codes say of it, in one byte. */
class ValueState {
public:
    constexpr ValueState() = default;
    /*! A state of these parts. */
    constexpr explicit ValueState(ValueKind kind, Special special = Special::None,
        bool isOutside = false, bool isOutOfRange = false)
        : m_bits(quint8(quint8(kind) | (quint8(special) << 3) | (isOutside ? OutsideBit : 0)
            | (isOutOfRange ? RangeBit : 0)))
    {
    }

    /*! What was read. */
    constexpr ValueKind kind() const
    {
        return ValueKind(m_bits & 7);
    }
    /*! The special value that the code stands for; its number or text is there as well. */
    constexpr Special special() const
    {
        return Special((m_bits >> 3) & 7);
    }
    /*! The variable has codes, and this is none of them. */
    constexpr bool isOutside() const
    {
        return (m_bits & OutsideBit) != 0;
    }
    /*! Outside, and below the lowest or above the highest code. */
    constexpr bool isOutOfRange() const
    {
        return (m_bits & RangeBit) != 0;
    }
    /*! True for the same state. */
    friend constexpr bool operator==(ValueState first, ValueState second)
    {
        return first.m_bits == second.m_bits;
    }
    /*! False for the same state. */
    friend constexpr bool operator!=(ValueState first, ValueState second)
    {
        return first.m_bits != second.m_bits;
    }

private:
    static constexpr quint8 OutsideBit = 64;
    static constexpr quint8 RangeBit = 128;

    quint8 m_bits = 0;
};

/*! How far the reading of a number went. */
enum class NumberStatus : quint8 { Blank, Number, NotANumber, Unfit };

/*!
 * Reads \a text as CSPro reads a numeric field of \a decimals decimal places: blanks, a sign that
 * blanks may follow, digits with at most one point or comma. Without one the last digits are the
 * decimals. \a number is the value times 10 to the decimals. At most 18 digits fit.
 */
TESSEL_DATA_EXPORT NumberStatus readNumber(std::string_view text, int decimals, qint64& number);

/*! As readNumber(), but without a point the number is whole, as the codes of a dictionary are. */
TESSEL_DATA_EXPORT NumberStatus readCode(std::string_view text, int decimals, qint64& number);

/*! \a number, which is scaled by 10 to the \a decimals, with its point. */
TESSEL_DATA_EXPORT QString numberText(qint64 number, int decimals);

/*!
 * \a number as the shortest text that stands for no other double; whole ones without an exponent
 * as far as 17 digits.
 */
TESSEL_DATA_EXPORT QString realText(double number);

/*! 10 to the \a exponent, from 0 to 18. */
TESSEL_DATA_EXPORT qint64 powerOfTen(int exponent);

} // namespace tessel
