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

CSProKeyFinder::Lines CSProKeyFinder::find(const CSProSection& section) const
{
    Lines found {};
    unsigned missing = m_all;
    for (const QStringView line : section) {
        if (missing == 0)
            break;
        for (int i = 0; i < line.size(); ++i) {
            const ushort letter = line[i].unicode();
            unsigned candidates = letter < m_byFirstLetter.size() ? m_byFirstLetter[letter] : 0;
            candidates &= missing;
            for (int key = 0; candidates != 0; ++key, candidates >>= 1) {
                if ((candidates & 1U) != 0 && line.mid(i).startsWith(m_keys[key])) {
                    found[key] = line;
                    missing &= ~(1U << key);
                }
            }
        }
    }
    return found;
}

QString csproValue(QStringView line)
{
    const auto equals = line.indexOf(QLatin1Char('='));
    if (equals < 0 || line.indexOf(QLatin1Char('='), equals + 1) >= 0)
        return QString();
    return line.mid(equals + 1).toString();
}

int csproNumber(QStringView line, int defaultValue)
{
    if (line.isEmpty())
        return defaultValue;
    bool isNumber = false;
    const int number = csproValue(line).toInt(&isNumber);
    return isNumber ? number : defaultValue;
}
