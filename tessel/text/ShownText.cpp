#include "text/ShownText.h"

#include <model_Tessel/ProblemText.h>

#include <QLocale>

namespace {

bool isControl(ushort code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

QChar pictureOf(ushort control)
{
    constexpr ushort FirstPicture = 0x2400;
    return control < 0x20 ? QChar(ushort(FirstPicture + control)) : QChar::ReplacementCharacter;
}

// Marks, embeddings, overrides and isolates of bidirectional text.
bool turnsDirection(ushort code)
{
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

bool isPair(const QString& text, int index)
{
    return text.at(index).isHighSurrogate() && index + 1 < text.size()
        && text.at(index + 1).isLowSurrogate();
}

} // namespace

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

QString printable(const QString& text)
{
    QString result = text;
    for (int i = 0; i < result.size(); ++i) {
        const ushort code = result.at(i).unicode();
        if (isPair(result, i))
            ++i;
        else if (isControl(code))
            result[i] = pictureOf(code);
        else if (turnsDirection(code) || QChar::isSurrogate(code))
            result[i] = QChar::ReplacementCharacter;
    }
    return result;
}

QString shortened(const QString& text)
{
    return quotedText(text);
}

QString grouped(qint64 count)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(count);
}
