#pragma once

#include <tessel_data/DataSource.h>

#include <model_Tessel/StatDictionary.h>

#include <memory>

struct DictionaryFile;

namespace tessel {

/*!
 * The rows of an SPSS or Stata file, through libreadstat. Numbers are doubles; system missing is
 * Blank, user-defined missing values are special, and Stata's tagged ones are Blank and special,
 * with their letter as the number.
 */
class TESSEL_DATA_EXPORT StatSource : public DataSource {
public:
    /*! Reads the dictionary of \a path; throws DataError. */
    StatSource(const QString& path, TStatFileKind kind);
    /*!
     * The rows of \a file, which readDictionaryFile() opened; throws DataError where it is not
     * whole or of another kind. Takes part in its \c input.
     */
    explicit StatSource(const DictionaryFile& file);
    ~StatSource() override;

    /*! The dictionary of the data. */
    const DataDictionary& dictionary() const override;
    void read(BatchSink& sink) override;
    qint64 size() const override;
    bool countsRows() const override;
    const std::vector<SourceFile>& files() const override;
    bool hasCases() const override;

private:
    Q_DISABLE_COPY(StatSource)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
