#include "ShownText.h"

QString plural(qint64 count, const QString& one, const QString& several)
{
    const QString many = several.isNull() ? one + QLatin1Char('s') : several;
    return QStringLiteral("%1 %2").arg(QString::number(count), count == 1 ? one : many);
}

QString shownCode(const QString& code)
{
    const bool needsQuotes = code.isEmpty() || code.contains(QLatin1Char(' '));
    return needsQuotes ? QLatin1Char('\'') + code + QLatin1Char('\'') : code;
}

QString shownNumber(int number)
{
    return number == 0 ? QString() : QString::number(number);
}
