#include <tessel_data/DataSource.h>

namespace tessel {

BatchSink::~BatchSink() = default;

bool BatchSink::goesOn()
{
    return true;
}

DataSource::~DataSource() = default;

bool DataSource::knowsPartlySaved() const
{
    return true;
}

bool DataSource::hasWidths() const
{
    return false;
}

SourceCounts DataSource::counts() const
{
    SourceCounts total;
    for (const SourceFile& file : files())
        total += file.counts;
    return total;
}

} // namespace tessel
