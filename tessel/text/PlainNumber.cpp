#include "text/PlainNumber.h"

namespace {

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

} // namespace

QString plainNumber(const QString& text)
{
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    int start = isNegative || text.startsWith(QLatin1Char('+')) ? 1 : 0;
    int end = text.size();
    int point = text.indexOf(QLatin1Char('.'));
    if (point < 0)
        point = end;
    int digits = 0;
    for (int i = start; i < end; ++i) {
        if (isDigit(text.at(i)))
            ++digits;
        else if (i != point)
            return QString();
    }
    if (digits == 0)
        return QString();
    while (start < point && text.at(start) == QLatin1Char('0'))
        ++start;
    while (end > point && (text.at(end - 1) == QLatin1Char('0') || end - 1 == point))
        --end;
    if (start == end)
        return QStringLiteral("0");
    QString number = text.mid(start, end - start);
    if (start == point)
        number.prepend(QLatin1Char('0'));
    return isNegative ? QLatin1Char('-') + number : number;
}

QString numberKey(const QString& code)
{
    const QString trimmed = code.trimmed();
    const QString number = plainNumber(trimmed);
    return number.isNull() ? trimmed : number;
}
