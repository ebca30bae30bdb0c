#pragma once

#include <tessel_data/DataSource.h>

#include <functional>

namespace tessel {

/*! Does something with the batches of a source: checks, counts, loads or writes them. */
class TESSEL_DATA_EXPORT DataConsumer {
public:
    virtual ~DataConsumer();

    /*! Gets each batch once, in order; may throw, which ends the run. */
    virtual void take(const DataBatch& batch) = 0;
    /*! Everything was read: \a source has its counts. Not called after a cancel or an error. */
    virtual void finish(const DataSource& source) = 0;
    /*! finish() that asks \a goesOn now and then where it takes long; false when that said no. */
    virtual bool finishWhile(const DataSource& source, const std::function<bool()>& goesOn);
};

/*!
 * Called now and then with what is done and the size, which is -1 when unknown; false cancels.
 */
using DataProgress = std::function<bool(qint64 done, qint64 size)>;

/*!
 * Reads \a source on a thread of its own while \a consumer works on this one, a few batches behind;
 * the order stays. False when \a progress cancelled. What either throws comes out here.
 */
TESSEL_DATA_EXPORT bool runPipeline(
    DataSource& source, DataConsumer& consumer, const DataProgress& progress = {});

} // namespace tessel
