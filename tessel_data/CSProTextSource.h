#pragma once

#include <tessel_data/DataSource.h>

#include <QStringList>

#include <memory>

namespace tessel {

/*!
 * CSPro data as text, in one file or many: UTF-8 with or without a byte-order mark, or
 * Windows-1252; lines that end in LF, CRLF or CR. A case may not go on in the next file. Without a
 * mark, and unless it is given, the first line with other than ASCII characters tells the encoding
 * of its file.
 */
class TESSEL_DATA_EXPORT CSProTextSource : public DataSource {
public:
    /*!
     * Opens the \a paths one after the other, "-" being standard input; throws DataError. An
     * \a encoding that is given holds for files without a byte-order mark.
     */
    CSProTextSource(const DataDictionary& dictionary, const QStringList& paths,
        LineEncoding encoding = LineEncoding::Unknown);
    ~CSProTextSource() override;

    /*! The dictionary of the data. */
    const DataDictionary& dictionary() const override;
    void read(BatchSink& sink) override;
    qint64 size() const override;
    bool countsRows() const override;
    const std::vector<SourceFile>& files() const override;
    bool hasCases() const override;
    bool hasWidths() const override;
    bool knowsPartlySaved() const override;

private:
    Q_DISABLE_COPY(CSProTextSource)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
