#include <tessel_data/DataSource.h>

namespace tessel {

BatchSink::~BatchSink() = default;

bool BatchSink::goesOn()
{
    return true;
}

DataSource::~DataSource() = default;

SourceCounts DataSource::counts() const
{
    SourceCounts total;
    for (const SourceFile& file : files())
        total += file.counts;
    return total;
}

} // namespace tessel
