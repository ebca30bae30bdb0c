#include "writers/SetupPlan.h"

#include <tessel_data/UniqueNames.h>

namespace {

bool isBesideComment(QChar character)
{
    return character == QLatin1Char('/') || character == QLatin1Char('*');
}

} // namespace

bool isStataSpecial(const QString& text, int place)
{
    const QChar character = text.at(place);
    if (isBesideComment(character)) {
        return (place > 0 && isBesideComment(text.at(place - 1)))
            || (place + 1 < text.size() && isBesideComment(text.at(place + 1)));
    }
    return character.unicode() < 0x20 || QStringLiteral("\"`$\\").contains(character);
}

int spssWidth(int columns)
{
    constexpr int bytesOfCharacter = 4;
    constexpr int most = 32'767;
    return columns > most / bytesOfCharacter ? most : columns * bytesOfCharacter;
}

QString setupNumber(qint64 code, int decimals)
{
    return tessel::numberText(code, decimals);
}

QString setupComment(const QString& text)
{
    constexpr int longest = 200;
    const QString plain = QStringLiteral(" .,-_:()");
    QString result = tessel::visibleText(text).simplified().left(longest);
    result.replace(QLatin1Char(';'), QLatin1Char(','));
    result.remove(QLatin1Char('\'')).remove(QLatin1Char('"'));
    for (QChar& character : result) {
        if (!character.isLetterOrNumber() && !plain.contains(character))
            character = QLatin1Char('?');
    }
    return result;
}
