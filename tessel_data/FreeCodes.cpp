#include <tessel_data/FreeCodes_p.h>

#include <cmath>

namespace tessel {

double FreeCodes::first() const
{
    constexpr double mostExact = 9007199254740992; // whole numbers up to it are doubles
    for (int block = 0; block < Blocks; ++block) {
        if ((m_taken & (quint64(1) << block)) == 0)
            return m_first + block * Count;
    }
    const double above = std::floor(m_high) + 1;
    if (above + Count <= mostExact)
        return above;
    const double below = std::ceil(m_low) - Count;
    return below >= -mostExact ? below : std::numeric_limits<double>::quiet_NaN();
}

} // namespace tessel
