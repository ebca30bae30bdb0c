#pragma once

#include <tessel_data/DataSelection.h>
#include <tessel_data/DataSource.h>

#include <memory>

namespace tessel {

/*!
 * A part of another source: the cases, records and variables of a selection, for any consumer. Its
 * dictionary has what is taken, cases are numbered anew, and its counts tell what is left out. What
 * the other source rejects has no identification to choose by and stays.
 */
class TESSEL_DATA_EXPORT SelectedSource : public DataSource {
public:
    /*! Throws DataError when \a selection does not fit the data. */
    SelectedSource(std::unique_ptr<DataSource> source, const DataSelection& selection);
    ~SelectedSource() override;

    const DataDictionary& dictionary() const override;
    void read(BatchSink& sink) override;
    qint64 size() const override;
    bool countsRows() const override;
    const std::vector<SourceFile>& files() const override;
    bool hasCases() const override;
    bool hasWidths() const override;
    bool knowsPartlySaved() const override;

private:
    Q_DISABLE_COPY(SelectedSource)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
