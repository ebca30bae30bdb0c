#pragma once

#include <tessel_data/DataBatch.h>
#include <tessel_data/DataSelection.h>

#include <memory>

namespace tessel {

/*!
 * Says of each case, in the order of the source, whether a selection takes it: conditions first,
 * then the sample or each so many-th of those that fulfil them. Where a source has no cases, each
 * row is one.
 *
 * Conditions are NAME=VALUE,LOW..HIGH and so on, joined by " and ". Values in quotes are texts as
 * they stand, "" is a blank. NAME is an identification item of the case, without cases any
 * variable.
 *
 * A sample depends on the identification and the seed alone, so that the same seed takes the same
 * cases in whatever order they come; rows without cases go by their numbers.
 */
class TESSEL_DATA_EXPORT CaseFilter {
public:
    /*! Throws DataError when \a selection does not fit \a dictionary, which stays as it is. */
    CaseFilter(const DataDictionary& dictionary, const DataSelection& selection, bool hasCases);
    ~CaseFilter();

    /*! True for a case that is taken; \a first is a record of it, or null. */
    bool takesCase(
        const DataBatch& batch, const DataBatch::Case& begun, const DataBatch::Record* first);
    /*! True for a row that is taken, where there are no cases. */
    bool takesRow(const DataBatch& batch, const DataBatch::Record& row);

private:
    Q_DISABLE_COPY(CaseFilter)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
