#include <tessel_data/ConversionLimits_p.h>

namespace tessel {

// libreadstat does not read the last byte of a text of 32,767 bytes.
const ConversionLimits& limitsOf(ConversionFormat format)
{
    static const ConversionLimits spss { ".sav", StatProgram::Spss, { 64, true }, 80, true, 0,
        32766, 0 };
    static const ConversionLimits stata { ".dta", StatProgram::Stata, { 80, false }, 67784, false,
        9999, 0, 32767 };
    static const ConversionLimits csv { ".csv", StatProgram::R, {}, 0, false, 0, 0, 0 };
    if (format == ConversionFormat::Csv)
        return csv;
    return format == ConversionFormat::Spss ? spss : stata;
}

QString withoutNulls(QString text)
{
    return text.replace(QChar(u'\0'), QChar(u'\u2400'));
}

FittedText fitted(const QString& text, StatLimit limit)
{
    using Reason = ConversionNote::Reason;
    const QString shown = withoutNulls(text);
    const QString cut = statText(shown, limit);
    if (cut != shown)
        return { cut, Reason::TooLong };
    return { cut, shown != text ? Reason::NotAllowed : Reason::None };
}

} // namespace tessel
