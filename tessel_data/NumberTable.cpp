#include <tessel_data/NumberTable_p.h>

#include <algorithm>

namespace tessel {

NumberTable::NumberTable(int decimals)
    : m_isReal(decimals < 0)
    , m_scale(m_isReal ? 1 : double(powerOfTen(decimals)))
{
}

bool NumberTable::add(double number, double weight, NumberRoom& room)
{
    if (number >= 0 && number < double(SmallNumbers) && number == std::floor(number))
        return addSmall(std::size_t(number), weight);
    qint64 key = 0;
    std::memcpy(&key, &number, sizeof key);
    return addLarge(key, weight, room);
}

bool NumberTable::addLarge(qint64 key, double weight, NumberRoom& room)
{
    const auto found = m_large.find(key);
    if (found != m_large.end()) {
        found->second.add(weight);
        return true;
    }
    if (m_large.size() >= room.distinct || (room.left == 0 && m_large.size() >= Fewest))
        return false;
    m_large[key].add(weight);
    room.left -= room.left > 0 ? 1 : 0;
    return true;
}

double NumberTable::numberOf(qint64 key) const
{
    if (!m_isReal)
        return double(key) / m_scale;
    double number = 0;
    std::memcpy(&number, &key, sizeof number);
    return number;
}

std::vector<CountedNumber> NumberTable::take(NumberRoom& room)
{
    std::vector<CountedNumber> all;
    all.reserve(m_small.size() + m_large.size());
    for (std::size_t i = 0; i < m_small.size(); ++i) {
        if (m_small[i].count > 0)
            all.push_back({ double(i) / m_scale, qint64(i), m_small[i] });
    }
    for (const auto& [key, tally] : m_large)
        all.push_back({ numberOf(key), key, tally });
    room.left += m_large.size();
    std::vector<Tally>().swap(m_small);
    std::unordered_map<qint64, Tally>().swap(m_large);
    std::sort(
        all.begin(), all.end(), [this](const CountedNumber& first, const CountedNumber& second) {
            return m_isReal ? first.number < second.number : first.key < second.key;
        });
    return all;
}

} // namespace tessel
