#pragma once

#include <tessel_data/DataBatch.h>
#include <tessel_data/DataDictionary.h>

#include <vector>

namespace tessel {

/*! Takes the batches of a source, in order. */
class TESSEL_DATA_EXPORT BatchSink {
public:
    virtual ~BatchSink();

    /*! The batch to fill; stays the same until deliver(). */
    virtual DataBatch& batch() = 0;
    /*! Hands the batch on, so that batch() is an empty one; false: the source is to stop. */
    virtual bool deliver() = 0;
    /*! False: nothing more is wanted. For a source that waits for its input. */
    virtual bool goesOn();
};

/*!
 * Cases and records from any kind of file, as one stream.
 *
 * Threads: read() may run on a thread of its own; the other members are for before and after it.
 */
class TESSEL_DATA_EXPORT DataSource {
public:
    virtual ~DataSource();

    /*! The dictionary of the data. */
    virtual const DataDictionary& dictionary() const = 0;
    /*!
     * Reads all there is and hands it to \a sink, batch by batch; throws DataError. Once for each
     * source.
     */
    virtual void read(BatchSink& sink) = 0;
    /*! Bytes, or rows, that doneBytes of the batches runs up to; -1: not known. */
    virtual qint64 size() const = 0;
    /*! True when size() counts rows, false when it counts bytes. */
    virtual bool countsRows() const = 0;
    /*! What was read; complete when read() has returned. */
    virtual const std::vector<SourceFile>& files() const = 0;
    /*! True when the source knows its cases: no SPSS or Stata file does. */
    virtual bool hasCases() const = 0;
    /*! True when no value can be wider than its item, as in lines of columns. */
    virtual bool hasWidths() const;
    /*! True when the source says of its cases whether they were saved before they were complete. */
    virtual bool knowsPartlySaved() const;

    /*! Counts of all files together. */
    SourceCounts counts() const;
};

} // namespace tessel
