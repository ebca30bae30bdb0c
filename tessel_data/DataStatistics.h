#pragma once

#include <tessel_data/Pipeline.h>
#include <tessel_data/StatisticsReport.h>

#include <QPair>
#include <QString>

#include <memory>

namespace tessel {

/*! Which figures are made of data. */
struct StatisticsOptions {
    /*!
     * NAME or RECORD.NAME of a number that weighs rows: of their record, of one above that there is
     * once for them, or an identification item; empty: nothing weighs.
     */
    QString weight;
    QVector<QPair<QString, QString>> crosses; /*!< variables whose codes are crossed, as above */
    bool hasEachOccurrence = false; /*!< also each occurrence of repeated items by itself */
    int shownOutsideCodes = 10;
    int distinctLimit = 50'000; /*!< different numbers of a variable that are kept */
};

/*!
 * Makes figures of data in one pass, in memory that does not grow with them: frequencies, missing
 * values, moments, quartiles, histograms and cross tables, unweighted and weighted.
 */
class TESSEL_DATA_EXPORT DataStatistics : public DataConsumer {
public:
    /*!
     * Keeps a reference to \a source, which is the one that is read. Throws DataError when
     * \a options do not fit its dictionary.
     */
    explicit DataStatistics(const DataSource& source, const StatisticsOptions& options = {});
    ~DataStatistics() override;

    void take(const DataBatch& batch) override;
    void finish(const DataSource& source) override;

    /*! Complete after finish(). */
    const StatisticsReport& report() const;

private:
    Q_DISABLE_COPY(DataStatistics)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
