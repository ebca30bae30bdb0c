#include <tessel_data/UniqueNames.h>

namespace tessel {

QString visibleText(const QString& text)
{
    QString result = text;
    for (int i = 0; i < result.size(); ++i) {
        const QChar character = result.at(i);
        const ushort code = character.unicode();
        const bool isPair = character.isHighSurrogate() && i + 1 < result.size()
            && result.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (code < 0x20 && code != '\t' && code != '\n' && code != '\r')
            result[i] = QChar(ushort(0x2400 + code)); // its picture among the control pictures
        else if (character.isSurrogate() || code >= 0xFFFE || (code >= 0x7F && code < 0xA0))
            result[i] = QChar::ReplacementCharacter;
    }
    return result;
}

QString UniqueNames::keyOf(const QString& name) const
{
    return m_differ == Qt::CaseSensitive ? name : name.toCaseFolded();
}

QString UniqueNames::take(const QString& wanted)
{
    const QString key = keyOf(wanted);
    QString name = wanted;
    int number = m_lastNumbers.value(key, 1);
    while (m_lastNumbers.contains(keyOf(name)))
        name = wanted + QLatin1Char('_') + QString::number(++number);
    m_lastNumbers[key] = number;
    m_lastNumbers.insert(keyOf(name), 1);
    return name;
}

} // namespace tessel
