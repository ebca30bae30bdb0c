#include "text/ShownText.h"

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

QString shownDecimals(int decimals, const QString& point)
{
    if (point.isNull())
        return shownNumber(decimals);
    const bool isInData = point == QLatin1String("data");
    return QString::number(decimals)
        + (isInData ? QLatin1String(" in data") : QLatin1String(" implied"));
}

QString printable(const QString& text)
{
    QString result = text;
    for (QChar& character : result) {
        const ushort code = character.unicode();
        if (code < 0x20) // its picture among the control pictures
            character = QChar(ushort(0x2400 + code));
        else if (code >= 0x7F && code < 0xA0)
            character = QChar::ReplacementCharacter;
    }
    return result;
}
