#pragma once

#include <tessel_data/DataSource.h>

#include <QStringList>

#include <memory>

namespace tessel {

/*!
 * CSPro data as text, in one file or many: UTF-8 with or without a byte-order mark, or
 * Windows-1252; lines that end in LF, CRLF or CR. A case may not go on in the next file.
 */
class TESSEL_DATA_EXPORT CSProTextSource : public DataSource {
public:
    /*! Opens the \a paths one after the other, "-" being standard input; throws DataError. */
    CSProTextSource(const DataDictionary& dictionary, const QStringList& paths);
    ~CSProTextSource() override;

    /*! The dictionary of the data. */
    const DataDictionary& dictionary() const override;
    void read(BatchSink& sink) override;
    qint64 size() const override;
    bool countsRows() const override;
    const std::vector<SourceFile>& files() const override;
    bool hasCases() const override;
    bool hasWidths() const override;

private:
    Q_DISABLE_COPY(CSProTextSource)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
