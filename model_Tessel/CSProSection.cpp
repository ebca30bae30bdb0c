#include <model_Tessel/CSProSection_p.h>

CSProKeyFinder::CSProKeyFinder(std::initializer_list<QLatin1String> keys)
{
    unsigned bit = 1;
    auto* place = m_keys.begin();
    for (const QLatin1String& key : keys) {
        *place++ = key;
        m_byFirstLetter[static_cast<unsigned char>(key.at(0).toLatin1())] |= bit;
        m_all |= bit;
        bit <<= 1;
    }
}

CSProKeyFinder::Lines CSProKeyFinder::find(const QStringList& section) const
{
    Lines found {};
    unsigned missing = m_all;
    for (const QString& line : section) {
        if (missing == 0)
            break;
        const QChar* text = line.constData();
        const int size = line.size();
        for (int i = 0; i < size; ++i) {
            const ushort letter = text[i].unicode();
            if (letter >= m_byFirstLetter.size() || (m_byFirstLetter[letter] & missing) == 0)
                continue;
            const QStringView rest(text + i, size - i);
            for (int key = 0; key < MaxKeys; ++key) {
                const unsigned bit = 1U << key;
                if ((m_byFirstLetter[letter] & missing & bit) != 0 && rest.startsWith(m_keys[key])) {
                    found[key] = &line;
                    missing &= ~bit;
                }
            }
        }
    }
    return found;
}

QString csproValue(const QString* line)
{
    if (!line)
        return QString();
    const int equals = line->indexOf(QLatin1Char('='));
    if (equals < 0 || line->indexOf(QLatin1Char('='), equals + 1) >= 0)
        return QString();
    return line->mid(equals + 1);
}

int csproNumber(const QString* line, int defaultValue)
{
    bool isNumber = false;
    const int number = csproValue(line).toInt(&isNumber);
    return isNumber ? number : defaultValue;
}
