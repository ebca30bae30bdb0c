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

QString shownCodes(const QString& codes)
{
    return codes.isNull() || codes.contains(QLatin1String(", ")) ? codes : shownCode(codes);
}

QString joinedCodes(const QStringList& codes)
{
    if (codes.size() == 1)
        return codes.constFirst();
    QStringList texts;
    for (const QString& code : codes)
        texts.append(shownCode(code));
    return texts.isEmpty() ? QString() : texts.join(QLatin1String(", "));
}

QString shownNumber(int number)
{
    return number == 0 ? QString() : QString::number(number);
}
