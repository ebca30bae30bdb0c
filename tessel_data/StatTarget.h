#pragma once

#include <tessel_data/ConversionTarget.h>

#include <memory>

namespace tessel {

/*!
 * SPSS and Stata files, through libreadstat. Rows are kept in files without names in the same
 * folder until all are there, as a file begins with their number and the widths of its variables.
 */
class TESSEL_DATA_EXPORT StatTarget : public ConversionTarget {
public:
    /*! Files in \a folder, which is made when it is missing; \a mayReplace those that are there. */
    StatTarget(const QString& folder, ConversionFormat format, bool mayReplace);
    ~StatTarget() override;

    /*!
     * How many bytes the variables of a Stata file may have that hold texts of more than 2,045
     * bytes, as these wait in memory: 1 GiB, or \a bytes; 0: any number.
     */
    void setLongTextBound(qint64 bytes);

    ConversionFormat format() const override;
    QString name() const override;
    void begin(const ConversionPlan& plan) override;
    void append(int file, const ConversionRows& rows) override;
    const std::vector<std::vector<ConversionCounts>>& counts() const override;
    const std::vector<qint64>& rows() const override;
    bool finish(const std::function<bool()>& goesOn) override;
    void abandon() noexcept override;

private:
    Q_DISABLE_COPY(StatTarget)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
