#include <tessel_data/StatFormats_p.h>

#include <QDate>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace tessel {

namespace {

constexpr int MostDigits = 40; // that a format of SPSS shows
constexpr int MostDecimals = 16;
constexpr int WidestText = 244; // on the screen
constexpr double SecondsPerDay = 86400;
constexpr double MillisecondsPerSecond = 1000;

// Seconds from the first day of SPSS to that of Stata.
double firstSecondOfStata()
{
    static const double seconds =
        double(QDate(1582, 10, 14).daysTo(QDate(1960, 1, 1))) * SecondsPerDay;
    return seconds;
}

StatFormat numberFormat(int width, int decimals, ConversionFormat target)
{
    const int shown = std::clamp(decimals, 0, MostDecimals);
    const int columns = std::clamp(width, shown > 0 ? shown + 2 : 1, MostDigits);
    const QString size = QStringLiteral("%1.%2").arg(columns).arg(shown);
    StatFormat result;
    result.width = columns;
    result.format = target == ConversionFormat::Spss ? QLatin1Char('F') + size
                                                     : QLatin1Char('%') + size + QLatin1Char('f');
    return result;
}

// SPSS shows texts in their width.
StatFormat textFormat(int width, ConversionFormat target)
{
    StatFormat result;
    result.width = std::clamp(width, 1, WidestText);
    if (target == ConversionFormat::Stata)
        result.format = QStringLiteral("%-%1s").arg(result.width);
    return result;
}

QString lettersOf(const QString& format)
{
    int size = 0;
    while (size < format.size() && !format.at(size).isDigit())
        ++size;
    return format.left(size).toUpper();
}

StatFormat dateFormat(const char* format, ConversionUnit unit, int width, bool isHeld = true)
{
    StatFormat result;
    result.format = QLatin1String(format);
    result.unit = unit;
    result.width = width;
    result.isHeld = isHeld;
    return result;
}

StatFormat stataOfSpss(const TStatVariableDescription& source)
{
    const QString letters = lettersOf(source.format);
    const auto isOneOf = [&](std::initializer_list<const char*> names) {
        return std::any_of(names.begin(), names.end(),
            [&](const char* name) { return letters == QLatin1String(name); });
    };
    if (isOneOf({ "DATE", "ADATE", "EDATE", "SDATE", "JDATE" }))
        return dateFormat(
            "%td", ConversionUnit::SecondsToDays, 9, letters == QLatin1String("DATE"));
    if (isOneOf({ "MOYR", "QYR", "WKYR" }))
        return dateFormat("%td", ConversionUnit::SecondsToDays, 9, false);
    if (isOneOf({ "DATETIME", "YMDHMS" })) {
        return dateFormat(
            "%tc", ConversionUnit::SecondsToMilliseconds, 18, letters == QLatin1String("DATETIME"));
    }
    if (letters == QLatin1String("TIME"))
        return dateFormat("%tcHH:MM:SS", ConversionUnit::TimeToMilliseconds, 8);
    StatFormat result =
        numberFormat(source.width(TStatFileKind::Spss), source.decimals(), ConversionFormat::Stata);
    result.isHeld = isOneOf({ "F", "N", "" });
    if (letters == QLatin1String("COMMA")) {
        result.format += QLatin1Char('c');
        result.isHeld = true;
    }
    return result;
}

// Of "%-td..." and "%d" that they are days, else what stands behind "%t".
QString timeKind(const QString& format)
{
    QString plain = format;
    plain.remove(QLatin1Char('-'));
    if (plain.startsWith(QLatin1String("%d")))
        return QStringLiteral("d");
    return plain.startsWith(QLatin1String("%t")) ? plain.mid(2, 1) : QString();
}

StatFormat spssOfStata(const TStatVariableDescription& source)
{
    const QString kind = timeKind(source.format);
    const QString plain = QString(source.format).remove(QLatin1Char('-'));
    const QString shown = source.format.section(QLatin1String("tc"), 1);
    const bool isTime = kind == QLatin1String("c") && shown == QLatin1String("HH:MM:SS");
    if (kind == QLatin1String("d")) {
        return dateFormat("DATE11", ConversionUnit::DaysToSeconds, 11,
            plain == QLatin1String("%td") || plain == QLatin1String("%d"));
    }
    if (isTime) {
        return dateFormat("TIME8", ConversionUnit::TimeToSeconds, 8);
    }
    if (kind == QLatin1String("c")) {
        return dateFormat(
            "DATETIME24.3", ConversionUnit::MillisecondsToSeconds, 24, shown.isEmpty());
    }
    const bool isGeneral = source.format.contains(QLatin1Char('g'));
    const bool isWhole = source.type == READSTAT_TYPE_INT8 || source.type == READSTAT_TYPE_INT16
        || source.type == READSTAT_TYPE_INT32;
    const int decimals = isGeneral && !isWhole ? 2 : source.decimals();
    StatFormat result =
        numberFormat(source.width(TStatFileKind::Stata), decimals, ConversionFormat::Spss);
    result.isHeld = kind.isEmpty() && (isWhole || !isGeneral);
    if (source.format.endsWith(QLatin1String("fc")))
        result.format.replace(0, 1, QLatin1String("COMMA"));
    return result;
}

} // namespace

double converted(double number, ConversionUnit unit)
{
    const double first = firstSecondOfStata();
    switch (unit) {
    case ConversionUnit::AsIs:
        break;
    case ConversionUnit::SecondsToDays:
        return (number - first) / SecondsPerDay;
    case ConversionUnit::SecondsToMilliseconds:
        return std::round((number - first) * MillisecondsPerSecond);
    case ConversionUnit::DaysToSeconds:
        return number * SecondsPerDay + first;
    case ConversionUnit::MillisecondsToSeconds:
        return (number + first * MillisecondsPerSecond) / MillisecondsPerSecond;
    case ConversionUnit::TimeToMilliseconds:
        return std::round(number * MillisecondsPerSecond);
    case ConversionUnit::TimeToSeconds:
        return number / MillisecondsPerSecond;
    }
    return number;
}

bool isDateFormat(const QString& format, TStatFileKind kind)
{
    static const QSet<QString> names { QStringLiteral("DATE"), QStringLiteral("ADATE"),
        QStringLiteral("EDATE"), QStringLiteral("SDATE"), QStringLiteral("JDATE"),
        QStringLiteral("MOYR"), QStringLiteral("QYR"), QStringLiteral("WKYR"),
        QStringLiteral("DATETIME"), QStringLiteral("YMDHMS"), QStringLiteral("TIME"),
        QStringLiteral("MTIME"), QStringLiteral("DTIME"), QStringLiteral("WKDAY"),
        QStringLiteral("MONTH") };
    return kind == TStatFileKind::Spss ? names.contains(lettersOf(format))
                                       : !timeKind(format).isEmpty();
}

StatFormat formatOf(const DataVariable& variable, ConversionFormat target)
{
    if (variable.type == DataVariable::Type::Text || variable.type == DataVariable::Type::Binary)
        return textFormat(variable.width, target);
    const bool hasPoint = variable.decimals > 0 && !variable.hasDecimalMark;
    return numberFormat(variable.width + (hasPoint ? 1 : 0), variable.decimals, target);
}

StatFormat formatOf(
    const TStatVariableDescription& source, TStatFileKind kind, ConversionFormat target)
{
    const bool isSame = target == ConversionFormat::Csv
        || (kind == TStatFileKind::Spss) == (target == ConversionFormat::Spss);
    const bool keepsFormat = isSame && target == ConversionFormat::Stata;
    if (source.isString() && target != ConversionFormat::Csv && !keepsFormat)
        return textFormat(source.width(kind), target);
    if (!isSame)
        return target == ConversionFormat::Stata ? stataOfSpss(source) : spssOfStata(source);
    StatFormat result;
    result.format = source.format;
    result.width = source.width(kind);
    return result;
}

} // namespace tessel
