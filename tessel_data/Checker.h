#pragma once

#include <tessel_data/CheckReport.h>
#include <tessel_data/Pipeline.h>

#include <functional>
#include <memory>

namespace tessel {

/*! How data are checked. */
struct CheckOptions {
    int samplesPerKind = 5; /*!< problems of one kind that the report shows */
    int distinctLimit = 1000; /*!< different values that are counted; fewer with many variables */
    int shownOutsideCodes = 5;
    int longestText = 200; /*!< characters of a value, line or key that a problem tells */
    /*! Gets every problem, not only the first few; may be empty. */
    std::function<void(const DataProblem&)> onProblem;
};

/*! Compares data with their dictionary: values, cases and the shape of the questionnaire. */
class TESSEL_DATA_EXPORT Checker : public DataConsumer {
public:
    /*! Keeps a reference to \a dictionary, which is that of the source. */
    explicit Checker(const DataDictionary& dictionary, const CheckOptions& options = {});
    ~Checker() override;

    void take(const DataBatch& batch) override;
    void finish(const DataSource& source) override;
    bool finishWhile(const DataSource& source, const std::function<bool()>& goesOn) override;

    /*! Complete after finish(). */
    const CheckReport& report() const;

private:
    Q_DISABLE_COPY(Checker)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
