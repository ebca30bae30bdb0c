#pragma once

#include <tessel_data/ConversionTarget.h>

#include <memory>

namespace tessel {

/*!
 * CSV files in UTF-8 as RFC 4180 has them, and beside them a description of them, datapackage.json,
 * as Data Package has it, version 2: types, labels, missing values and keys.
 */
class TESSEL_DATA_EXPORT CsvTarget : public ConversionTarget {
public:
    /*!
     * Files in \a folder, which is made when it is missing, of data that \a dictionary describes,
     * as ConversionPlan::csv says. With \a mayReplace they take the places of files that are there.
     */
    CsvTarget(const QString& folder, const DataDictionary& dictionary, bool mayReplace);
    ~CsvTarget() override;

    ConversionFormat format() const override;
    QString name() const override;
    void begin(const ConversionPlan& plan) override;
    void append(int file, const ConversionRows& rows) override;
    const std::vector<std::vector<ConversionCounts>>& counts() const override;
    const std::vector<qint64>& rows() const override;
    bool finish(const std::function<bool()>& goesOn) override;
    void abandon() noexcept override;

private:
    Q_DISABLE_COPY(CsvTarget)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
