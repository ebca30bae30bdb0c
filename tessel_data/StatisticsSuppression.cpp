#include <tessel_data/StatisticsReport.h>

namespace tessel {

void StatisticsReport::suppress(qint64 fewest)
{
    hiddenBelow = fewest;
}

} // namespace tessel
