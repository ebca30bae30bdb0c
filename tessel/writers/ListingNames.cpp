#include "writers/ListingNames.h"

#include "text/ShownText.h"

QString nameOf(ListingKind kind)
{
    switch (kind) {
    case ListingKind::CSPro:
        return QStringLiteral("cspro");
    case ListingKind::Spss:
        return QStringLiteral("spss");
    case ListingKind::Stata:
        break;
    }
    return QStringLiteral("stata");
}

QString nameOf(ValueType type)
{
    switch (type) {
    case ValueType::Integer:
        return QStringLiteral("integer");
    case ValueType::Real:
        return QStringLiteral("real");
    case ValueType::String:
        break;
    }
    return QStringLiteral("string");
}

QString nameOf(Measure measure)
{
    switch (measure) {
    case Measure::Nominal:
        return QStringLiteral("nominal");
    case Measure::Ordinal:
        return QStringLiteral("ordinal");
    case Measure::Scale:
        return QStringLiteral("scale");
    case Measure::Untold:
        break;
    }
    return QString();
}

QString nameOf(SpecialCode special)
{
    switch (special) {
    case SpecialCode::Missing:
        return QStringLiteral("missing");
    case SpecialCode::NotApplicable:
        return QStringLiteral("not applicable");
    case SpecialCode::Refused:
        return QStringLiteral("refused");
    case SpecialCode::Default:
        return QStringLiteral("default");
    case SpecialCode::None:
        break;
    }
    return QString();
}

QString nameOf(RangeSource source)
{
    switch (source) {
    case RangeSource::Length:
        return QStringLiteral("length");
    case RangeSource::ValueSet:
        return QStringLiteral("value set");
    case RangeSource::Untold:
        break;
    }
    return QString();
}

QString nameOf(DecimalPoint point)
{
    switch (point) {
    case DecimalPoint::Implied:
        return QStringLiteral("implied");
    case DecimalPoint::InData:
        return QStringLiteral("data");
    case DecimalPoint::Untold:
        break;
    }
    return QString();
}

QString shownDecimals(int decimals, DecimalPoint point)
{
    switch (point) {
    case DecimalPoint::Implied:
        return QStringLiteral("%1 implied").arg(decimals);
    case DecimalPoint::InData:
        return QStringLiteral("%1 in data").arg(decimals);
    case DecimalPoint::Untold:
        break;
    }
    return shownNumber(decimals);
}

QString shownLabel(const ListedCode& entry)
{
    return entry.isSpecial() ? QStringLiteral("%1 [%2]").arg(entry.label, nameOf(entry.special))
                             : entry.label;
}
