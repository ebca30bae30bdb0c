#include <tessel_data/DataValue.h>

#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tessel {

namespace {

// So many digits fit an int64 whatever they are.
constexpr int MostDigits = 18;

constexpr std::array<qint64, MostDigits + 1> powersOfTen()
{
    std::array<qint64, MostDigits + 1> powers {};
    qint64 power = 1;
    for (int exponent = 0; exponent < MostDigits; ++exponent, power *= 10)
        powers[std::size_t(exponent)] = power;
    powers[MostDigits] = power;
    return powers;
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

const char* skipBlanks(const char* at, const char* end)
{
    while (at != end && *at == ' ')
        ++at;
    return at;
}

// The digits of a number: what they are without the point, and how many stand behind it.
struct Digits {
    qint64 number = 0;
    int count = 0; // without leading zeros
    int decimals = 0;
    bool hasPoint = false;
    bool isAny = false;
};

// False when something else stands among them.
bool readDigits(const char* at, const char* end, Digits& digits)
{
    for (; at != end; ++at) {
        if (isDigit(*at)) {
            digits.isAny = true;
            digits.decimals += digits.hasPoint ? 1 : 0;
            if (digits.count > 0 || *at != '0')
                ++digits.count;
            if (digits.count <= MostDigits)
                digits.number = digits.number * 10 + (*at - '0');
        } else if ((*at == '.' || *at == ',') && !digits.hasPoint) {
            digits.hasPoint = true;
        } else {
            return false;
        }
    }
    return digits.isAny;
}

// Brings the digits to so many decimals; false when that does not go without loss.
bool rescale(Digits& digits, int decimals)
{
    if (digits.count > MostDigits)
        return false;
    for (; digits.decimals > decimals && digits.number % 10 == 0; --digits.decimals)
        digits.number /= 10;
    if (digits.decimals > decimals)
        return false;
    const int factor = decimals - digits.decimals;
    if (digits.number == 0 || factor == 0)
        return true;
    if (factor > MostDigits || digits.number > powerOfTen(MostDigits) / powerOfTen(factor))
        return false;
    digits.number *= powerOfTen(factor);
    return true;
}

NumberStatus read(std::string_view text, int decimals, bool isImplied, qint64& number)
{
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* at = skipBlanks(begin, end);
    if (at == end)
        return NumberStatus::Blank;
    const bool isNegative = *at == '-';
    if (isNegative || *at == '+')
        at = skipBlanks(at + 1, end);
    Digits digits;
    if (!readDigits(at, end, digits))
        return NumberStatus::NotANumber;
    if (!digits.hasPoint && isImplied)
        digits.decimals = decimals;
    if (!rescale(digits, decimals))
        return NumberStatus::Unfit;
    number = isNegative ? -digits.number : digits.number;
    return NumberStatus::Number;
}

} // namespace

qint64 powerOfTen(int exponent)
{
    static constexpr std::array<qint64, MostDigits + 1> powers = powersOfTen();
    return powers[std::size_t(std::clamp(exponent, 0, MostDigits))];
}

NumberStatus readNumber(std::string_view text, int decimals, qint64& number)
{
    return read(text, decimals, true, number);
}

NumberStatus readCode(std::string_view text, int decimals, qint64& number)
{
    return read(text, decimals, false, number);
}

QString numberText(qint64 number, int decimals)
{
    if (decimals <= 0)
        return QString::number(number);
    const bool isNegative = number < 0;
    QString digits = QString::number(isNegative ? 0 - quint64(number) : quint64(number));
    digits = digits.rightJustified(decimals + 1, QLatin1Char('0'));
    digits.insert(digits.size() - decimals, QLatin1Char('.'));
    return isNegative ? QLatin1Char('-') + digits : digits;
}

QString realText(double number)
{
    constexpr double mostWhole = 1e17;
    if (number == 0)
        return QStringLiteral("0"); // -0 as well
    if (std::abs(number) < mostWhole && number == std::nearbyint(number))
        return QString::number(number, 'f', 0);
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

} // namespace tessel
