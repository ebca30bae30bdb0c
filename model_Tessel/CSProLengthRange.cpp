#include <model_Tessel/CSProLengthRange_p.h>

#include <model_Tessel/CSProItem.h>
#include <model_Tessel/UtilStrings.h>

#include <algorithm>

namespace {

// Nines in all digits, of which the last decimals stand behind the point.
QString largest(int digits, int decimals)
{
    if (digits <= 0)
        return QStringLiteral("0");
    if (decimals == 0)
        return StringOfChar('9', digits);
    const int before = digits - decimals;
    const QString whole = before > 0 ? StringOfChar('9', before) : QStringLiteral("0");
    return whole + QLatin1Char('.') + StringOfChar('0', -before)
        + StringOfChar('9', std::min(digits, decimals));
}

} // namespace

CSProLengthRange::CSProLengthRange(const TCSProItem& item)
{
    const int decimals = std::clamp(item.decimal, 0, CSProMostColumns);
    const bool hasPoint = item.hasDecimalChar && decimals > 0;
    const int digits = std::clamp(item.len, 0, CSProMostColumns) - (hasPoint ? 1 : 0);
    // A point that is written stands behind the columns that are left, an implied one where it is.
    const auto largestOf = [&](int count) {
        return largest(count, hasPoint ? std::clamp(count, 0, decimals) : decimals);
    };
    highest = largestOf(digits);
    const bool hasSign = digits > 1;
    lowest = hasSign ? QLatin1Char('-') + largestOf(digits - 1) : QStringLiteral("0");
}
