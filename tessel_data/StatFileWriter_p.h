#pragma once

#include <tessel_data/StatColumn_p.h>

#include <QByteArrayList>

#include <functional>
#include <map>
#include <memory>
#include <readstat.h>
#include <tuple>
#include <vector>

namespace tessel {

/* Writes one SPSS or Stata file through libreadstat. Throws DataError. */
class StatFileWriter {
public:
    /* Into the open file descriptor, which is called path in messages. */
    StatFileWriter(const ConversionPlan& plan, const ConversionFile& file,
        const std::vector<StatColumn>& columns, int descriptor, const QString& path);

    /* Writes all of the spool's rows; false when goesOn says so. */
    bool write(RowSpool& spool, qint64 rows, const std::function<bool()>& goesOn);

private:
    struct Column {
        readstat_variable_t* variable = nullptr;
        ConversionColumn::Type type = ConversionColumn::Type::Double;
        double missingBase = 0; // of SPSS
    };

    void addColumns();
    void addColumn(std::size_t index);
    void setMissing(std::size_t index);
    void setKinds(std::size_t index);
    readstat_label_set_t* labelSet(std::size_t index);
    void addStringRefs(RowSpool& spool, qint64 rows);
    void begin(qint64 rows);
    void writeValue(std::size_t index, const RowSpool::Value& value);
    void writeMissing(std::size_t index, char tag);
    void check(readstat_error_t error, const QString& about = QString());
    ssize_t take(const char* bytes, std::size_t size);
    bool flush();
    static ssize_t onData(const void* data, size_t size, void* context);

    struct WriterDeleter {
        void operator()(readstat_writer_t* writer) const
        {
            readstat_writer_free(writer);
        }
    };

    const ConversionPlan& m_plan;
    const ConversionFile& m_file;
    const std::vector<StatColumn>& m_columns;
    int m_descriptor;
    QString m_path;
    bool m_isStata;
    std::unique_ptr<readstat_writer_t, WriterDeleter> m_writer;
    std::vector<Column> m_written;
    // By set of the plan, first code of missing kinds, those without a label, and length of texts.
    std::map<std::tuple<int, double, quint32, bool>, readstat_label_set_t*> m_labelSets;
    QByteArrayList m_missingTexts; // libreadstat keeps no copies
    int m_nextRef = 0;
    std::string m_buffer;
    int m_error = 0; // of writing
};

} // namespace tessel
