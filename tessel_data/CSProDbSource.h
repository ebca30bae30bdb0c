#pragma once

#include <tessel_data/DataSource.h>

#include <memory>

namespace tessel {

/*!
 * The cases of a CSPro DB (.csdb), of schema 2 (cases as text) or 3 (cases in tables), in their
 * order. Deleted cases are passed over and counted; every other row is read, or rejected and told.
 * The line of a record is the number of its case's row. The file is opened for reading only, and
 * nothing is left beside it.
 */
class TESSEL_DATA_EXPORT CSProDbSource : public DataSource {
public:
    /*! Reads the cases of \a path as its own dictionary says; throws DataError. */
    explicit CSProDbSource(const QString& path, ValueSetChoice choice = ValueSetChoice::First);
    /*!
     * As above, with another dictionary. What the file's own one has and \a dictionary lacks is
     * told: the rows of records as rejected ones, items with the number of their values.
     */
    CSProDbSource(const QString& path, const DataDictionary& dictionary);
    ~CSProDbSource() override;

    /*! The dictionary of the data. */
    const DataDictionary& dictionary() const override;
    void read(BatchSink& sink) override;
    qint64 size() const override;
    bool countsRows() const override;
    const std::vector<SourceFile>& files() const override;
    bool hasCases() const override;

    /*! 2 or 3. */
    int schemaVersion() const;

private:
    Q_DISABLE_COPY(CSProDbSource)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
