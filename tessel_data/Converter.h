#pragma once

#include <tessel_data/ConversionTarget.h>
#include <tessel_data/Pipeline.h>

#include <memory>

namespace tessel {

/*! What was converted. */
struct TESSEL_DATA_EXPORT ConversionReport {
    std::vector<qint64> rows; /*!< by file of the plan */
    std::vector<std::vector<ConversionCounts>> counts; /*!< by file and column */
    SourceCounts read;
    std::vector<SourceFile> files; /*!< that were read */
    qint64 rejects = 0; /*!< lines that have no place in any file */
    qint64 surplusRecords =
        0; /*!< merged: records that a case has more than once, and should not */

    /*! True when something of the data was lost. */
    bool hasLosses() const;
};

/*!
 * Hands the rows of a source to a target, as planned. finish() throws DataError when what arrived
 * is not what was read.
 */
class TESSEL_DATA_EXPORT Converter : public DataConsumer {
public:
    /*! All three stay as long as the converter. */
    Converter(const DataSource& source, ConversionTarget& target, const ConversionPlan& plan);
    ~Converter() override;

    void take(const DataBatch& batch) override;
    /*! Checks what arrived; the target is not yet finished. */
    void finish(const DataSource& source) override;

    /*! What was converted so far. */
    const ConversionReport& report() const;

private:
    Q_DISABLE_COPY(Converter)

    class Job;
    std::unique_ptr<Job> m_job;
};

/*!
 * True when no value of \a source is wider than its item, and all of its files hold ASCII alone, so
 * that widths are known before the first row. Reads the files, as far as they can be read again.
 */
TESSEL_DATA_EXPORT bool hasByteWidths(const DataSource& source);

/*! How data are converted, beside the plan. */
struct ConversionRun {
    bool isStrict = false; /*!< when anything is lost no file is made, and DataError thrown */
    DataConsumer* beside = nullptr; /*!< gets all batches, too; null: none */
    DataProgress progress; /*!< may be empty */
};

/*!
 * Reads \a source into \a target, from begin() to finish(). False, with nothing left behind, when
 * the progress cancelled; throws DataError, with nothing left behind either.
 */
TESSEL_DATA_EXPORT bool convertData(DataSource& source, ConversionTarget& target,
    const ConversionPlan& plan, ConversionReport& report, const ConversionRun& run = {});

} // namespace tessel
