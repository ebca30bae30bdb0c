#include <model_Tessel/CSProSection_p.h>

#include <algorithm>

CSProKeyLine splitKeyLine(QStringView text, int number)
{
    const auto equals = text.indexOf(QLatin1Char('='));
    if (equals < 0)
        return { QStringView(), text, number };
    return { text.left(equals).trimmed(), text.mid(equals + 1).trimmed(), number };
}

CSProKeyFinder::CSProKeyFinder(std::initializer_list<QLatin1String> keys)
    : m_keys(keys)
{
    unsigned bit = 1;
    for (const QLatin1String& key : keys) {
        m_byFirstLetter[static_cast<unsigned char>(key.at(0).toLatin1())] |= bit;
        m_all |= bit;
        bit <<= 1;
    }
}

CSProKeyFinder::Values CSProKeyFinder::findAnywhere(const CSProSection& section) const
{
    Values found;
    unsigned missing = m_all;
    for (std::size_t number = 0; number < section.lines.size() && missing != 0; ++number) {
        const QStringView line = section.lines[number];
        for (int i = 0; i < line.size(); ++i) {
            const ushort letter = line[i].unicode();
            unsigned candidates = letter < m_byFirstLetter.size() ? m_byFirstLetter[letter] : 0;
            candidates &= missing;
            for (std::size_t key = 0; candidates != 0; ++key, candidates >>= 1) {
                if ((candidates & 1U) != 0 && line.mid(i).startsWith(m_keys[key])) {
                    found.value[key] = csproValue(line);
                    found.line[key] = section.lineNumber(number);
                    missing &= ~(1U << key);
                }
            }
        }
    }
    return found;
}

CSProKeyFinder::Values CSProKeyFinder::findWhole(
    const CSProSection& section, std::size_t count) const
{
    Values found;
    for (std::size_t number = 0; number < count; ++number) {
        if (isComment(section.lines[number]))
            continue;
        const CSProKeyLine line = splitKeyLine(section.lines[number], section.lineNumber(number));
        const auto key = std::find_if(m_keys.begin(), m_keys.end(),
            [&](QLatin1String name) { return line.key.compare(name, Qt::CaseInsensitive) == 0; });
        const auto index = static_cast<std::size_t>(key - m_keys.begin());
        if (key == m_keys.end()) {
            found.others.push_back(line);
        } else if (found.line[index] == 0) {
            found.value[index] = line.value;
            found.line[index] = line.number;
        } else {
            found.repeated.push_back(line);
        }
    }
    return found;
}

QStringView csproValue(QStringView line)
{
    const auto equals = line.indexOf(QLatin1Char('='));
    if (equals < 0 || line.indexOf(QLatin1Char('='), equals + 1) >= 0)
        return {};
    return line.mid(equals + 1);
}

int csproNumber(QStringView value, int defaultValue)
{
    if (value.isEmpty())
        return defaultValue;
    bool isNumber = false;
    const int number = value.toString().toInt(&isNumber);
    return isNumber ? number : defaultValue;
}
