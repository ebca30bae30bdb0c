#include <tessel_data/DataSource.h>

namespace tessel {

BatchSink::~BatchSink() = default;

DataSource::~DataSource() = default;

SourceCounts DataSource::counts() const
{
    SourceCounts total;
    for (const SourceFile& file : files())
        total += file.counts;
    return total;
}

} // namespace tessel
